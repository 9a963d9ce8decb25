// Members that are a sequence or single against the rule, of several widths, in error branches:
// their types, and records in both directions over bits put together by hand.

#include <gtest/gtest.h>
#include <string>

#include "compiler/csn_codec.h"
#include "compiler/csn_type_text.h"

namespace quorvane::compiler {
namespace {

using reference::Grammar;

std::string Members(const std::string& rules) {
    const Grammar grammar(rules);
    return grammar.Errors().empty() ? MembersText(*grammar.Types().type) : grammar.Errors();
}

// ---- Sequences and single members against the rule --------------------------------------------

TEST(CsnMembers, AMemberThatStandsOnceAsASequence) {
    const std::string rules = "< t > ::= { 0 | 1 < a : bit (4) [most 2] > } < b : bit > ;";
    EXPECT_EQ(Members(rules), "  a: sequence T_a 2 of integer 8\n  b: integer 1\n");
    CsnCodec codec(rules);
    EXPECT_EQ(codec.Decode("1 0101 1"), "6: a=[5] b=1");
    EXPECT_EQ(codec.Member(0).cells[0].location, 0U);  // as other items
    EXPECT_EQ(codec.Encode(), "101011");
    EXPECT_EQ(codec.Decode("0 1"), "2: a=[] b=1");
    EXPECT_EQ(codec.Encode(), "01");
}

TEST(CsnMembers, OnlyTheFirstItemHasAPlace) {
    CsnCodec codec("< t > ::= < a : bit (4) [most 2] > { 0 | 1 < b : bit (4) [most 2] > } ;");
    ASSERT_EQ(codec.Decode("0101 1 0011"), "9: a=[5] b=[3]");
    bits::Cell items[2] = {};
    items[0].number = 9;
    items[1].number = 6;
    codec.Member(0).cells = items;
    codec.Member(0).number = 2;
    EXPECT_EQ(codec.Encode(), "100110011");
}

TEST(CsnMembers, AMemberThatStandsTwiceAsASingleOne) {
    const std::string rules =
        "< t > ::= { 0 | 1 < a : bit (4) [single] > } { 0 | 1 < a : bit (4) > } < b : bit > ;";
    EXPECT_EQ(Members(rules), "  a: integer 8 optional\n  b: integer 1\n");
    CsnCodec codec(rules);
    EXPECT_EQ(codec.Decode("1 0101 0 1"), "7: a=5 b=1");
    EXPECT_EQ(codec.Decode("1 0101 1 1001 1"), "11: a=9 b=1");  // the later one
    EXPECT_EQ(codec.Member(0).location, 6U << 16 | 4U);
    EXPECT_EQ(codec.Encode(), "11001110011");  // in both places
    EXPECT_EQ(codec.Decode("0 0 1"), "3: b=1");
    EXPECT_EQ(codec.Encode(), "001");
    // Its places may have different widths.
    CsnCodec widths("< t > ::= < a : bit (2) [single] > < a : bit (4) > ;");
    EXPECT_EQ(widths.Decode("11 0010"), "6: a=2");
    EXPECT_EQ(widths.Encode(), "100010");
    CsnCodec repeated("< t > ::= { < a : bit (2) [single] > } * 3 ;");
    EXPECT_EQ(repeated.Decode("11 00 10"), "6: a=2");
    EXPECT_EQ(repeated.Encode(), "101010");
}

// Nothing is left of a struct that stood in an earlier place.
TEST(CsnMembers, ASingleStruct) {
    const std::string rules =
        "< t > ::= < g : < r > [single] > < g : < r > > ;\n"
        "< r > ::= { 0 | 1 < a : bit (2) > } < b : bit > ;";
    EXPECT_EQ(Members(rules), "  g: struct T_g\n    a: integer 8 optional\n    b: integer 1\n");
    CsnCodec codec(rules);
    EXPECT_EQ(codec.Decode("1 10 1  0 0"), "6: g={ b=0 }");
    EXPECT_EQ(codec.Encode(), "0000");
    EXPECT_EQ(codec.Decode("0 0  1 10 1"), "6: g={ a=2 b=1 }");
    EXPECT_EQ(codec.Encode(), "11011101");
}

// ---- Several widths ----------------------------------------------------------------------------

// In a sequence the items are counted over all widths.
TEST(CsnMembers, ItemsOfSeveralWidths) {
    const std::string rules =
        "< t > ::= { 1 { 0 < r : bit (6) > | 1 < r : bit (12) > } } ** 0 < e : bit > ;";
    EXPECT_EQ(Members(rules), "  e: integer 1\n  r: sequence T_r 20 of integer 12\n");
    CsnCodec codec(rules);
    const std::string bits = "10 000111 11 100000000001 10 101010 10 000001 0 1";
    EXPECT_EQ(codec.Decode(bits), "40: e=1 r=[7 2049 42 1]");
    EXPECT_EQ(codec.Decode("11 100000000001 0 0"), "16: e=0 r=[2049]");
    EXPECT_EQ(codec.Encode(), "1000000100");  // by the first way to write an item
}

TEST(CsnMembers, EachPlaceIsWrittenAtItsOwnWidth) {
    CsnCodec codec(
        "< t > ::= < r : bit (3) > < r : { 0000 | 1000 | 0101 } > < r : bit (3) > < r : 11 > ;");
    EXPECT_EQ(codec.Decode("101 1000 110 11"), "12: r=[5 8 6 3]");
    EXPECT_EQ(codec.Encode(), "101100011011");
    CsnCodec lists(
        "< t > ::= { 1 < g : { 0 < r : bit (2) > } ** 1 > | 0 < g : { 0 < r : bit (4) > } ** 1 > } "
        "* "
        "2 ;");
    EXPECT_EQ(lists.Decode("1 0 11 0 01 1  0 0 0110 0 1111 1"), "20: g=[{ r=[3 1] } { r=[6 15] }]");
}

TEST(CsnMembers, AChoiceOfWidthsTakesTheFirstThatTheRecordFits) {
    CsnCodec codec("< t > ::= { 0 < r : bit (6) > | 1 < r : bit (12) > } ;");
    EXPECT_EQ(codec.Decode("0 000111"), "7: r=7");
    EXPECT_EQ(codec.Encode(), "0000111");
    EXPECT_EQ(codec.Decode("1 000000000111"), "13: r=7");
}

// ---- Error branches ----------------------------------------------------------------------------

TEST(CsnMembers, OneBitInAnErrorBranchIsAnInteger) {
    const std::string rules =
        "< t > ::= { 1 < a : bit > ! < Ignore : bit = < no string > > } < b : bit > ;";
    EXPECT_EQ(Members(rules),
              "  Ignore: integer 1 optional\n  a: integer 1 optional\n  b: integer 1\n");
    CsnCodec codec(rules);
    EXPECT_EQ(codec.Decode("0 1"), "2: Ignore=0 b=1");
    EXPECT_EQ(codec.Decode("1 0 1"), "3: a=0 b=1");
}

TEST(CsnMembers, OtherWidthsThereAreBitStringsUnlessAnnotated) {
    EXPECT_EQ(Members("< t > ::= { 1 ! < a : bit (4) > } { 1 ! < b : bit (4) [integer 4] > } "
                      "{ 1 ! < c : bit (40) [fixed 40] > } { 1 ! < d : bit (3) [enum E, integer 8] "
                      "> } ;"),
              "  a: binary 64 optional\n  b: integer 4 optional\n  c: fixed binary 40 optional\n"
              "  d: enumerated T_d optional\n");
    CsnCodec codec("< t > ::= { 11 < a : bit > ! < b : bit (4) [integer 4] > } ;");
    EXPECT_EQ(codec.Decode("0110"), "4: b=6");
    EXPECT_EQ(codec.Encode(), "0110");
}

}  // namespace
}  // namespace quorvane::compiler
