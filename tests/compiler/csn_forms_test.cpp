// The instructions that stand for each construct of the notation.

#include <gtest/gtest.h>
#include <map>
#include <string>
#include <vector>

#include "csn/assembly/disassembler.h"
#include "csn/assembly/instruction.h"
#include "reference/csn_grammar.h"

namespace quorvane::compiler {
namespace {

using reference::Grammar;

/// The image as a listing, one instruction a line. Jumps lead to lines, counted from 0.
std::string Listing(const std::string& rules) {
    const Grammar grammar(rules);
    std::map<std::uint64_t, std::size_t> lineOf;
    std::vector<csn::Instruction> instructions;
    const std::vector<std::uint8_t>& code = grammar.Image().code;
    for (std::uint32_t offset = 0; offset < code.size(); offset += instructions.back().size) {
        const auto instruction = csn::DecodeInstruction(code, offset);
        if (!instruction) {
            return "an incomplete instruction";
        }
        lineOf[offset] = instructions.size();
        instructions.push_back(*instruction);
    }
    std::string text = grammar.Errors();
    for (const csn::Instruction& instruction : instructions) {
        std::string line = csn::DisassembleInstruction(instruction);
        if (const auto target = instruction.Target()) {
            const std::string arrow = "-> " + std::to_string(*target);
            line.replace(line.find(arrow), arrow.size(), "-> #" + std::to_string(lineOf[*target]));
        }
        for (std::size_t at = line.find("  "); at != std::string::npos; at = line.find("  ")) {
            line.erase(at, 1);
        }
        text += (text.empty() ? "" : "; ") + line;
    }
    return text;
}

TEST(CsnForms, FixedBits) {
    EXPECT_EQ(Listing("< t > ::= 0 L 1 H 0 1 11 ;"), "BIT0; BITL; BIT1; BITH; LIT bits 0111; RET");
    EXPECT_EQ(Listing("< t > ::= 00000000 11111111 1 ;"), "LIT bits 0000000011111111; BIT1; RET");
}

TEST(CsnForms, UnnamedBits) {
    EXPECT_EQ(Listing("< t > ::= bit (5) octet (8) bit ;"), "SKIP 5; SKIP 63; SKIP 1; SKIP 1; RET");
}

TEST(CsnForms, PlainFields) {
    EXPECT_EQ(Listing("< t > ::= < a : bit (7) > < b : 0101 > < c : { L | H } > ;"),
              "FIELD 1, width 7; FIELD_LIT 4, bits 0101; FIELD 7, width 1; RET");
    EXPECT_EQ(Listing("< t > ::= < a : bit (6) == 001001 > ;"), "FIELD_LIT 1, bits 001001; RET");
}

TEST(CsnForms, GroupsAndMarksAreNotSizedAndValuesAre) {
    EXPECT_EQ(Listing("< t > ::= < g : < a : bit > 0 > < m : null > ;"),
              "BEGIN 1; FIELD 4, width 1; BIT0; END 1; BEGIN 7; END 7; RET");
    EXPECT_EQ(Listing("< t > ::= < a : H > < b : < c : bit > [sized] > ;"),
              "BEGIN 1, sized; BITH; END 1, sized; "
              "BEGIN 4, sized; FIELD 7, width 1; END 4, sized; RET");
}

TEST(CsnForms, AChoiceTriesBranchesWithFieldsFirst) {
    EXPECT_EQ(Listing("< t > ::= { 0 | 1 < a : bit > } ;"),
              "ALT -> #4; BIT1; FIELD 1, width 1; JMP -> #8; "
              "ALT -> #7, last; BIT0; JMP -> #8; FAIL; POP; RET");
    EXPECT_EQ(Listing("< t > ::= { null | L | H < a : bit > } ;"),
              "ALT -> #4; BITH; FIELD 1, width 1; JMP -> #10; ALT -> #7; BITL; JMP -> #10; "
              "ALT -> #9, last; JMP -> #10; FAIL; POP; RET");
    EXPECT_EQ(Listing("< t > ::= { [in order] 0 | bit < a : bit > } ;"),
              "ALT -> #3; BIT0; JMP -> #8; ALT -> #7, last; SKIP 1; FIELD 1, width 1; JMP -> #8; "
              "FAIL; POP; RET");
}

TEST(CsnForms, ErrorBranches) {
    EXPECT_EQ(Listing("< t > ::= { 1 ! < e : bit ** > } ;"),
              "ALT -> #3; BIT1; JMP -> #11; ALT -> #10, last; BEGIN 1, sized; REP_ANY -> #8; "
              "SKIP 1; LOOP -> #6; END 1, sized; JMP -> #11; FAIL; POP; RET");
    EXPECT_EQ(Listing("< t > ::= { 1 ! read bit } ;"),
              "ALT -> #3; BIT1; JMP -> #8; SKIP_ENC -> #7; ALT -> #7, last; SKIP 1; JMP -> #8; "
              "FAIL; POP; RET");
}

TEST(CsnForms, ARuleUsedInSeveralPlacesIsCalled) {
    EXPECT_EQ(Listing("< t > ::= < r > < r > < s > ;\n< r > ::= 0 < a : bit > ;\n< s > ::= 10 ;"),
              "CALL -> #4; CALL -> #4; LIT bits 10; RET; BIT0; FIELD 1, width 1; RET");
    // One bit pattern is shorter than a call.
    EXPECT_EQ(Listing("< t > ::= < r > < a : bit > < r > ;\n< r > ::= 101 ;"),
              "LIT bits 101; FIELD 1, width 1; LIT bits 101; RET");
}

TEST(CsnForms, ACountAndThatManyItems) {
    EXPECT_EQ(Listing("< t > ::= < n : bit (4) > { < a : bit > } * (val(n)) ;"),
              "BEGIN 1, sized; SKIP 4; END_TAG 1, sized, tag 1; "
              "REP_TAG -> #6, tag 1; FIELD 4, width 1; LOOP -> #4; RET_TAGS");
    EXPECT_EQ(Listing("< t > ::= < n : bit (4) > < a : bit (val(n) + 1) > ;"),
              "BEGIN 1, sized; SKIP 4; END_TAG 1, sized, tag 1; BEGIN 4, sized; "
              "REP_FN -> #7, function 0; SKIP 1; LOOP -> #5; END 4, sized; RET_TAGS");
    EXPECT_EQ(Listing("< t > ::= { 0 < a : bit > } * 3 ;"),
              "REP -> #4, 3; BIT0; FIELD 1, width 1; LOOP -> #1; RET");
}

TEST(CsnForms, OpenRepetitions) {
    EXPECT_EQ(Listing("< t > ::= { 1 < a : bit > } ** 0 ;"),
              "REP_ANY -> #4; BIT1; FIELD 1, width 1; LOOP -> #1; BIT0; RET");
    EXPECT_EQ(Listing("< t > ::= bit ** = < no string > ;"),
              "REP_ANY -> #3, not written; SKIP 1; LOOP -> #1; RET");
    EXPECT_EQ(Listing("< t > ::= L ** write (octet_end()) ;"),
              "REP_FN_ENC -> #3, function 0; BITL; LOOP -> #1; RET");
    EXPECT_EQ(Listing("< t > ::= < a : bit > * (1..) < b : bit > * (2..4) ;"),
              "REP_MORE -> #3; FIELD 1, width 1; LOOP -> #1; "
              "REP_RANGE -> #6, 2, 4; FIELD 4, width 1; LOOP -> #4; RET");
}

// There a writer passes over what it could write for ever, and tries what ends by itself.
TEST(CsnForms, AChoiceInAnOpenRepetition) {
    EXPECT_EQ(Listing("< t > ::= { 1 { 0 < a : bit > | 1 < b : bit > } } ** 0 ;"),
              "REP_ANY -> #13; BIT1; ALT -> #6; BIT0; FIELD 1, width 1; JMP -> #11; "
              "ALT -> #10; BIT1; FIELD 4, width 1; JMP -> #11; FAIL; POP; LOOP -> #1; BIT0; RET");
    EXPECT_EQ(Listing("< t > ::= { 1 { 00 | 01 < a : bit > | 10 } } ** 0 ;"),
              "REP_ANY -> #15; BIT1; ALT -> #6; LIT bits 01; FIELD 1, width 1; "
              "JMP -> #13; ALT -> #9, last; LIT bits 00; JMP -> #13; "
              "ALT -> #12, last; LIT bits 10; JMP -> #13; FAIL; POP; LOOP -> #1; BIT0; RET");
    // The field beside the choice ends the repetition.
    EXPECT_EQ(Listing("< t > ::= { 1 < c : bit > { 00 | 01 < a : bit > | 10 } } ** 0 ;"),
              "REP_ANY -> #16; BIT1; FIELD 1, width 1; ALT -> #7; LIT bits 01; FIELD 4, width 1; "
              "JMP -> #14; ALT -> #10; LIT bits 00; JMP -> #14; "
              "ALT -> #13; LIT bits 10; JMP -> #14; FAIL; POP; LOOP -> #1; BIT0; RET");
}

// What an iteration keeps under a tag ends with it.
TEST(CsnForms, AnIterationThatKeepsACountIsCalled) {
    EXPECT_EQ(Listing("< t > ::= { 1 < n : bit (2) > < a : bit > * (val(n)) } ** 0 ;"),
              "REP_ANY -> #3; CALL -> #5; LOOP -> #1; BIT0; RET; "
              "BIT1; BEGIN 1, sized; SKIP 2; END_TAG 1, sized, tag 1; "
              "REP_TAG -> #12, tag 1; FIELD 4, width 1; LOOP -> #10; RET_TAGS");
}

TEST(CsnForms, Truncation) {
    EXPECT_EQ(Listing("< t > ::= { < a : bit > < b : bit > 0 } // 1 ;"),
              "ALT -> #7; FIELD 1, width 1; COMMIT; FIELD 4, width 1; COMMIT; BIT0; POP; "
              "BIT1; RET");
    EXPECT_EQ(Listing("< t > ::= { < a : bit > } // ;"), "ALT -> #3; FIELD 1, width 1; POP; RET");
    // An action belongs to the element behind it.
    EXPECT_EQ(Listing("< t > ::= { < a : bit > @note(x) < b : bit > } // ;"),
              "ALT -> #6; FIELD 1, width 1; COMMIT; ACT action 0; FIELD 4, width 1; POP; RET_TAGS");
}

TEST(CsnForms, SecondReadings) {
    EXPECT_EQ(Listing("< t > ::= bit (4) exclude 1111 ;"),
              "MARK; SKIP 4; EXCLUDE -> #5; LIT bits 1111; EXCLUDE_END; RET");
    EXPECT_EQ(Listing("< t > ::= < a : bit (2) > - { 01 } ;"),
              "MARK; FIELD 1, width 2; EXCLUDE -> #5; LIT bits 01; EXCLUDE_END; RET");
    EXPECT_EQ(Listing("< t > ::= < bit (4) & { < a : bit > < b : bit (3) > } > ;"),
              "MARK; SKIP 4; RESCAN; FIELD 1, width 1; FIELD 4, width 3; RESCAN_END; RET");
}

TEST(CsnForms, ValuesInARange) {
    EXPECT_EQ(Listing("< t > ::= < a : bit (5) in 1..30 > ;"),
              "BEGIN 1, sized; TAGPOS tag 1; SKIP 5; VAL_RANGE tag 1, 1, 30; END 1, sized; "
              "RET_TAGS");
}

TEST(CsnForms, WhatIsReadIsNotAlwaysWhatIsWritten) {
    EXPECT_EQ(Listing("< t > ::= bit (2) = 01 ;"),
              "SKIP_ENC -> #3; SKIP 2; JMP -> #4; LIT bits 01; RET");
    EXPECT_EQ(Listing("< t > ::= bit = < no string > ;"), "SKIP_ENC -> #2; SKIP 1; RET");
}

TEST(CsnForms, Actions) {
    EXPECT_EQ(Listing("< t > ::= @note(x) @reading open_fixed(y, 4) @writing note(z) "
                      "< a : bit > @reading close(y) ;"),
              "ACT action 0; ACT_DEC action 1; ACT_ENC action 2; FIELD 1, width 1; "
              "ACT_DEC action 3; RET_TAGS");
}

TEST(CsnForms, AFieldHasAPairForEachParent) {
    const Grammar grammar(
        "structure A \"x\" ; < a > ::= < r > < g : < r > > ;\n"
        "structure B \"x\" ; < b > ::= < h : < r > > ;\n"
        "shared ; < r > ::= < x : bit > ;");
    ASSERT_EQ(grammar.Errors(), "");
    // Tags: 1 and 2 the roots; A has x 3, g 4, g.x 5; B has h 6, h.x 7.
    EXPECT_EQ(grammar.Image().fieldTable, (std::vector<std::uint16_t>{0, 1, 4,  // g under A
                                                                      1, 2, 6,  // h under B
                                                                      2, 1, 3, 4, 5, 6, 7}));  // x
    EXPECT_EQ(grammar.Image().fieldCount, 3U);
}

}  // namespace
}  // namespace quorvane::compiler
