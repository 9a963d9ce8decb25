// Types that follow from CSN.1 descriptions: each rule by itself, and whole elements.

#include <gtest/gtest.h>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "compiler/csn/csn_compiler.h"
#include "compiler/csn_type_text.h"
#include "families/family.h"
#include "reference/csn_grammar.h"

namespace quorvane::compiler {
namespace {

using reference::Grammar;

/// The members of the structure with the rules `rules`.
std::string Members(const std::string& rules, std::set<std::string> enumerations = {}) {
    const Grammar grammar(rules, std::move(enumerations));
    return grammar.Errors().empty() ? MembersText(*grammar.Types().type) : grammar.Errors();
}

TEST(CsnTypes, NamesAreSpelledForTheCatalogue) {
    EXPECT_EQ(Members("< t > ::= < UMTS 3.84 Mcps TDD : bit > < 8-PSK Struct : bit > "
                      "< GEA/1 : bit > < NC_ NON_DRX : bit > < Other : bit [as p3G_own] > ;"),
              "  GEA_1: integer 1\n"
              "  NC__NON_DRX: integer 1\n"
              "  UMTS_3_84_Mcps_TDD: integer 1\n"
              "  _8_PSK_Struct: integer 1\n"
              "  p3G_own: integer 1\n");
}

TEST(CsnTypes, MembersAreSortedByTheBytesOfTheirNames) {
    EXPECT_EQ(Members("< t > ::= < b : bit > < a_ : bit > < _ : bit > < B : bit > < a : bit > "
                      "< aA : bit > < 9 x : bit > ;"),
              "  B: integer 1\n  _: integer 1\n  _9_x: integer 1\n  a: integer 1\n"
              "  aA: integer 1\n  a_: integer 1\n  b: integer 1\n");
}

TEST(CsnTypes, GroupsAndRulesAreFlattened) {
    EXPECT_EQ(Members("< t > ::= { < a : bit > { < b : bit > } } < r > ;\n"
                      "< r > ::= < c : bit > & { < d : bit > } ;"),
              "  a: integer 1\n  b: integer 1\n  c: integer 1\n  d: integer 1\n");
}

TEST(CsnTypes, AFieldWithFieldsInsideIsAnInlineStruct) {
    EXPECT_EQ(Members("< t > ::= < g : < a : bit > < r > > ;\n< r > ::= < h : < b : bit > > ;"),
              "  g: struct T_g\n"
              "    a: integer 1\n"
              "    h: struct T_g_h\n"
              "      b: integer 1\n");
}

TEST(CsnTypes, ConcatenationAdds) {
    EXPECT_EQ(Members("< t > ::= < a : bit > < b : bit > < a : bit > ;"),
              "  a: sequence T_a 2 of integer 1\n  b: integer 1\n");
}

TEST(CsnTypes, AlternativesTakeTheSmallerAndTheLargerCount) {
    EXPECT_EQ(Members("< t > ::= { 0 < a : bit > < b : bit > < c : bit > < c : bit > "
                      "| 1 < b : bit > < c : bit > } ;"),
              "  a: integer 1 optional\n  b: integer 1\n  c: sequence T_c 2 of integer 1\n");
}

TEST(CsnTypes, RepetitionsMultiply) {
    EXPECT_EQ(Members("< t > ::= < n : bit (2) > < a : bit > * 4 { < b : bit > * 2 } * 3 "
                      "{ 1 < c : bit > } ** 0 < d : bit > * (val(n)) < e : bit > * (2..5) "
                      "< f : bit > * (0..1) < g : bit > * 1 ;"),
              "  a: sequence T_a 4 of integer 1\n  b: sequence T_b 6 of integer 1\n"
              "  c: sequence T_c 20 of integer 1\n  d: sequence T_d 20 of integer 1\n"
              "  e: sequence T_e 5 of integer 1\n  f: integer 1 optional\n  g: integer 1\n"
              "  n: integer 8\n");
}

TEST(CsnTypes, ASequenceIsNeverOptional) {
    EXPECT_EQ(Members("< t > ::= { 0 | 1 < a : bit > * 3 } ;"),
              "  a: sequence T_a 3 of integer 1\n");
}

TEST(CsnTypes, WhatATruncationHoldsIsOptional) {
    EXPECT_EQ(Members("< t > ::= < a : bit > { < b : bit > < c : bit > < c : bit > } // ;"),
              "  a: integer 1\n  b: integer 1 optional\n  c: sequence T_c 2 of integer 1\n");
}

TEST(CsnTypes, AnErrorBranchIsAnAlternativeOfSixtyFourBits) {
    EXPECT_EQ(Members("< t > ::= < a : bit > { < b : bit > ! < e : bit ** > } ;"),
              "  a: integer 1\n  b: integer 1 optional\n  e: binary 64 optional\n");
    EXPECT_EQ(Members("< t > ::= { 1 ! read < e : bit (2) > } ;"), "  e: binary 64 optional\n");
}

TEST(CsnTypes, ARepeatedGroupGivesFlatSequences) {
    EXPECT_EQ(Members("< t > ::= { 1 < a : bit > { 0 | 1 < b : bit (3) > } } ** 0 ;"),
              "  a: sequence T_a 20 of integer 1\n  b: sequence T_b 20 of integer 8\n");
}

TEST(CsnTypes, ARepeatedStructIsOneSequence) {
    EXPECT_EQ(Members("< t > ::= { 1 < g : < a : bit > { 0 | 1 < b : bit > } > } ** 0 ;"),
              "  g: sequence T_g 20 of struct T_g_data\n"
              "    a: integer 1\n    b: integer 1 optional\n");
}

TEST(CsnTypes, ARecursionIsFlattenedOnceAndUnbounded) {
    EXPECT_EQ(Members("< t > ::= < g : < r > > ;\n"
                      "< r > ::= < a : bit > < s : < b : bit > > { 0 | 1 < r > } ;"),
              "  g: struct T_g\n"
              "    a: sequence T_g_a 20 of integer 1\n"
              "    s: sequence T_g_s 20 of struct T_g_s_data\n"
              "      b: integer 1\n");
    EXPECT_EQ(Members("< t > ::= < r > < s > ;\n< r > ::= < a : bit > { 0 | 1 < s > } ;\n"
                      "< s > ::= < b : bit > { 0 | 1 < r > } ;"),
              "  a: sequence T_a 20 of integer 1\n  b: sequence T_b 20 of integer 1\n");
}

TEST(CsnTypes, WidthsDecideOverValues) {
    EXPECT_EQ(Members("< t > ::= < a : bit > < b : bit (2) > < c : octet > < d : bit (9) > "
                      "< e : bit (32) > < f : bit (33) > < g : bit ** > ;"),
              "  a: integer 1\n  b: integer 8\n  c: integer 8\n  d: integer 9\n  e: integer 32\n"
              "  f: fixed binary 33\n  g: binary 64\n");
    EXPECT_EQ(Members("< t > ::= < a : 0101 > < b : { 01 | 10 } > < c : { 0 | 10 } > "
                      "< d : bit (3) exclude 000 > < e : bit (5) in 1..30 > "
                      "< f : bit (4) = { 0000 | 0010 } > < g : { bit (4) } * 3 > ;"),
              "  a: integer 8\n  b: integer 8\n  c: binary 64\n  d: integer 8\n  e: integer 8\n"
              "  f: integer 8\n  g: integer 12\n");
}

TEST(CsnTypes, UnnamedBitsGiveNoMember) {
    EXPECT_EQ(Members("< t > ::= 1 bit (3) L < a : bit > bit ** = < no string > ;"),
              "  a: integer 1\n");
}

TEST(CsnTypes, LAndHWithANameIsTheRawBit) {
    EXPECT_EQ(Members("< t > ::= < a : { L | H } > < b : { 0 | 1 } > ;"),
              "  a: integer 1\n  b: integer 1\n");
}

TEST(CsnTypes, AMarkOfNoBitsHasWidthZero) {
    EXPECT_EQ(Members("< t > ::= { L < LL detected : null > | H } ;"),
              "  LL_detected: integer 0 optional\n");
}

TEST(CsnTypes, OccurrencesOfOneNameAreOneMember) {
    // The wider occurrence decides over the type; each has a tag of its own.
    const Grammar widths("< t > ::= { 0 < r : bit (6) > | 1 < r : bit (12) > } ;");
    EXPECT_EQ(MembersText(*widths.Types().type), "  r: integer 12\n");
    ASSERT_EQ(widths.Types().fields.size(), 2U);
    EXPECT_EQ(widths.Types().fields[0].width, 6);
    EXPECT_EQ(widths.Types().fields[1].width, 12);
    EXPECT_EQ(Members("< t > ::= < g : < a : bit > < b : bit > > { 0 | 1 < g : < b : bit > > } ;"),
              "  g: sequence T_g 2 of struct T_g_data\n"
              "    a: integer 1 optional\n    b: integer 1\n");
}

TEST(CsnTypes, AnnotationsChangeTheOutcomeVisibly) {
    EXPECT_EQ(Members("< t > ::= < a : bit (3) [integer 3] > < b : bit (8) [binary 8] > "
                      "< c : bit ** [binary 4792] > < d : bit (16) [fixed 16] > "
                      "{ 1 < e : bit [most 64] > } ** 0 < f : bit [optional] > "
                      "{ 0 | 1 < g : bit [mandatory] > } < h : bit (4) [enum E, as H] > ;"),
              "  H: enumerated T_H\n  a: integer 3\n  b: binary 8\n  c: binary 4792\n"
              "  d: fixed binary 16\n  e: sequence T_e 64 of integer 1\n"
              "  f: integer 1 optional\n  g: integer 1\n");
}

TEST(CsnTypes, AnEnumerationKeepsTheWidthOfItsInteger) {
    const Grammar grammar("< t > ::= < a : bit [enum E] > < b : bit (4) [enum F] > ;");
    const TypeModel& type = *grammar.Types().type;
    EXPECT_EQ(type.elements[0].type->size, 1U);
    EXPECT_EQ(type.elements[0].type->enumeration->name, "E");
    EXPECT_EQ(type.elements[1].type->size, 8U);
    EXPECT_EQ(type.elements[1].type->enumeration->name, "F");
}

TEST(CsnTypes, AnEnumerationMayHaveTheNameOfAFieldsPlace) {
    EXPECT_EQ(Members("< t > ::= < words : bit (2) > < g : < r > > < h : < r > > < E : bit > "
                      "{ 1 < words list : bit (3) > } ** 0 < words as E : bit [enum E] > ;\n"
                      "< r > ::= < words : bit > < other : bit > ;",
                      {"T_words", "T_words_as_E", "T_words_list_data", "T_g_words"}),
              "  E: integer 1\n"
              "  g: struct T_g\n    other: integer 1\n    words: enumerated T_g_words\n"
              "  h: struct T_h\n    other: integer 1\n    words: integer 1\n"
              "  words: enumerated T_words\n"
              "  words_as_E: enumerated T_words_as_E\n"
              "  words_list: sequence T_words_list 20 of enumerated T_words_list_data\n");
}

// ---- Rows ----------------------------------------------------------------------------------

using Row = csn::CsnFieldRow;

TEST(CsnTypes, RowsSayWhereFieldsGo) {
    const Grammar grammar(
        "< t > ::= < z : bit (3) > { 1 < g : < y : bit ** [binary 40] > > } * (0..3) "
        "{ 0 | 1 < m : null > } < f : bit (40) > ;");
    const compiler::CsnStructureTypes& types = grammar.Types();
    ASSERT_EQ(types.paths, (std::vector<std::string>{"z", "g[]", "m", "f", "g[].y"}));
    const std::vector<Row>& rows = types.fields;
    EXPECT_EQ(rows[0].kind, Row::Kind::kInteger);
    EXPECT_EQ(rows[0].element, 3);  // f, g, m, z
    EXPECT_EQ(rows[0].width, 3);
    EXPECT_FALSE(rows[0].optional);
    EXPECT_EQ(rows[1].kind, Row::Kind::kStruct);
    EXPECT_EQ(rows[1].element, 1);
    EXPECT_EQ(rows[1].bound, 3);
    EXPECT_EQ(rows[1].width, 1);
    EXPECT_EQ(rows[2].kind, Row::Kind::kMarker);
    EXPECT_EQ(rows[2].element, 2);
    EXPECT_TRUE(rows[2].optional);
    EXPECT_EQ(rows[3].kind, Row::Kind::kBinary);
    EXPECT_EQ(rows[3].element, 0);
    EXPECT_EQ(rows[3].mostBits, 40U);
    EXPECT_TRUE(rows[3].fixed);
    EXPECT_EQ(rows[4].kind, Row::Kind::kBinary);
    EXPECT_EQ(rows[4].element, 0);
    EXPECT_EQ(rows[4].mostBits, 40U);
    EXPECT_FALSE(rows[4].fixed);
}

TEST(CsnTypes, TagsOfAStructureAreOneRange) {
    const Grammar grammar(
        "structure A \"x\" ; < a > ::= < x : bit > < g : < y : bit > > < z : bit > ;\n"
        "structure B \"x\" ; < b > ::= < x : bit > ;");
    EXPECT_EQ(grammar.Types(0).rootTag, 1);
    EXPECT_EQ(grammar.Types(1).rootTag, 2);
    EXPECT_EQ(grammar.Types(0).firstTag, 3);
    EXPECT_EQ(grammar.Types(0).paths, (std::vector<std::string>{"x", "g", "z", "g.y"}));
    EXPECT_EQ(grammar.Types(1).firstTag, 7);
}

// ---- Whole elements --------------------------------------------------------------------------

/// The structures of a family as a list, in the order of `expected`.
std::string Listed(const families::Family& family, const std::string& expected) {
    const Grammar grammar(family);
    std::string text = grammar.Errors();
    std::istringstream lines(expected);
    for (std::string line; std::getline(lines, line);) {
        for (std::size_t index = 0; line[0] != ' ' && index < grammar.StructureCount(); ++index) {
            const TypeModel& type = *grammar.Types(index).type;
            text += type.name == line ? line + "\n" + MembersText(type) : "";
        }
    }
    return text;
}

TEST(CsnTypes, ElementsOfTheFamilies) {
    for (const families::Family* family : families::AllFamilies()) {
        if (family->codec.structures.empty()) {
            continue;
        }
        const std::string path = "tests/compiler/csn_types/" + std::string(family->name) + ".txt";
        const std::string expected = SourceText(path);
        EXPECT_TRUE(!expected.empty() && Listed(*family, expected) == expected) << path;
    }
}

}  // namespace
}  // namespace quorvane::compiler
