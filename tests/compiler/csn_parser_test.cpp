// Tokens and syntax trees of CSN.1 descriptions.

#include "compiler/csn/csn_parser.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "compiler/lexer.h"

namespace quorvane::compiler {
namespace {

std::string Tokens(const std::string& text) {
    Reporter reporter;
    const std::uint32_t file = reporter.AddFile("a.csn1", text);
    std::string shown;
    for (const Token& token : Lex(reporter, file, kCsnNotation)) {
        static const char* const kNames[] = {"word",      "digits", "text",     "sign", "field",
                                             "reference", "value",  "line end", "end"};
        shown += std::string(shown.empty() ? "" : " ") + kNames[static_cast<int>(token.kind)];
        shown += token.text.empty() ? "" : "(" + token.text + ")";
    }
    return shown + reporter.Text();
}

TEST(CsnLexer, NamesInBracketsAreOneToken) {
    EXPECT_EQ(Tokens("< Global  TFI\n: < 3G/4G-X 1.5 > >"),
              "field(Global TFI) reference(3G/4G-X 1.5) sign(>) end");
    EXPECT_EQ(Tokens("<a>::=<b:bit(3)>;"),
              "reference(a) sign(::=) field(b) word(bit) sign(() digits(3) sign()) sign(>) sign(;) "
              "end");
    EXPECT_EQ(Tokens("< bit (3) & { 0 } > < 00 >"),
              "sign(<) word(bit) sign(() digits(3) sign()) sign(&) sign({) digits(0) sign(}) "
              "sign(>) sign(<) digits(00) sign(>) end");
}

TEST(CsnLexer, CommentsRunToTheEndOfTheLine) {
    EXPECT_EQ(Tokens("0 -- < a : bit > \n1 < b -- c\n d : L"),
              "digits(0) digits(1) field(b d) word(L) end");
}

TEST(CsnLexer, ValuesTakeTheirName) {
    EXPECT_EQ(Tokens("val ( Length of it ) val(N) p(N) val left(x, 24)"),
              "value(Length of it) value(N) word(p) sign(() word(N) sign()) word(val) word(left) "
              "sign(() word(x) "
              "sign(,) digits(24) sign()) end");
}

TEST(CsnLexer, Signs) {
    EXPECT_EQ(Tokens("** * // == = ::= : .. ! | - \"a b\""),
              "sign(**) sign(*) sign(//) sign(==) sign(=) sign(::=) sign(:) sign(..) sign(!) "
              "sign(|) sign(-) text(a b) end");
}

// ---- Trees -----------------------------------------------------------------------------------

std::string ShowCount(const CsnCount& count) {
    static const char* const kForms[] = {
        "",     "val",          "rest",         "times", "ones",    "octet_end",
        "left", "left_or_none", "left_or_zero", "until", "declared"};
    return std::string(kForms[static_cast<int>(count.form)]) +
           (count.function == nullptr ? "" : " " + count.function->name) +
           (count.name.text.empty() ? "" : " " + count.name.text + " ") +
           std::to_string(count.number);
}

std::string Show(const CsnNode& node) {
    static const char* const kKinds[] = {"null",  "bits",  "any",   "seq",  "choice",
                                         "error", "rep",   "trunc", "and",  "exclude",
                                         "send",  "range", "field", "rule", "action"};
    std::string text = kKinds[static_cast<int>(node.kind)];
    text += node.text.empty() ? "" : " " + node.text;
    text += node.name.text.empty() ? "" : " " + node.name.text;
    text += node.width == 0 ? "" : " " + std::to_string(node.width);
    text += node.inOrder ? " in order" : "";
    text += node.readOnly ? " read" : "";
    if (node.kind == CsnNode::Kind::kRepeat) {
        static const char* const kForms[] = {" ", " any", " range", " write "};
        text += kForms[static_cast<int>(node.repetition.form)];
        text += node.repetition.form == CsnNode::Repetition::Form::kCount ||
                        node.repetition.form == CsnNode::Repetition::Form::kWriteCount
                    ? ShowCount(node.repetition.count)
                    : "";
        text += node.repetition.leftOut ? " left out" : "";
    }
    if (node.high != 0) {
        text += " " + std::to_string(node.low) + "-" +
                (node.high == kUnbounded ? "" : std::to_string(node.high));
    }
    std::string children;
    for (const CsnNode* child : node.children) {
        children += (children.empty() ? "" : ", ") + Show(*child);
    }
    return children.empty() ? text : text + "(" + children + ")";
}

/// The tree of a rule with the body `body`.
std::string Tree(const std::string& body, const std::string& before = "") {
    Reporter reporter;
    CsnSyntax syntax;
    ParseCsn(reporter,
             reporter.AddFile("a.csn1", before + "structure T \"x\" ; < t > ::= " + body + " ;"),
             syntax);
    return reporter.HasErrors() ? reporter.Text() : Show(*syntax.rules.front().body);
}

TEST(CsnParser, AnErrorBranchBindsLoosest) {
    EXPECT_EQ(Tree("0 | 1 L ! read null"), "error read(choice(bits 0, seq(bits 1, bits L)), null)");
    EXPECT_EQ(Tree("0 ! 1 ! 11"), "error(error(bits 0, bits 1), bits 11)");
}

TEST(CsnParser, WhatStandsBehindAnItemBelongsToIt) {
    EXPECT_EQ(Tree("0 bit exclude 1 L"), "seq(bits 0, exclude(any 1, bits 1), bits L)");
    EXPECT_EQ(Tree("< a : bit > - 0 - 1"), "exclude(exclude(field a(any 1), bits 0), bits 1)");
    EXPECT_EQ(Tree("0 bit (2) & { 1 L } H"),
              "seq(bits 0, and(any 2, seq(bits 1, bits L)), bits H)");
    EXPECT_EQ(Tree("0 { 1 < r > } ** 0"), "seq(bits 0, rep any(seq(bits 1, rule r)), bits 0)");
    EXPECT_EQ(Tree("< a : bit (5) in 1..30 > * 4"), "rep 4(field a(range 1-30(any 5)))");
}

TEST(CsnParser, TruncationTakesTheGroupApart) {
    EXPECT_EQ(Tree("{ { 0 1 } < r > } // 1"), "seq(trunc(seq(bits 0, bits 1), rule r), bits 1)");
    EXPECT_EQ(Tree("{ 0 | 1 } //"), "trunc(choice(bits 0, bits 1))");
}

TEST(CsnParser, Repetitions) {
    EXPECT_EQ(Tree("bit (*) octet ** = < no string >"),
              "seq(rep any(any 1), rep any left out(any 8))");
    EXPECT_EQ(Tree("bit (val(Length of it))"), "rep val Length of it 0(any 1)");
    EXPECT_EQ(Tree("octet (val(n) + 3)"), "rep val n 3(any 8)");
    EXPECT_EQ(Tree("bit (5) octet (2)"), "seq(any 5, any 16)");
    EXPECT_EQ(Tree("0 * (1 + val(n))"), "rep val n 1(bits 0)");
    EXPECT_EQ(Tree("0 * (val(n) - 1)"), "rep val n -1(bits 0)");
    EXPECT_EQ(Tree("0 * (5 - val(n))"), "rep rest n 5(bits 0)");
    EXPECT_EQ(Tree("bit (val(n) * 8)"), "rep times n 8(any 1)");
    EXPECT_EQ(Tree("0 * (ones(8)) bit (ones(val(n)))"),
              "seq(rep ones8(bits 0), rep ones n 0(any 1))");
    EXPECT_EQ(Tree("bit (p(n)) bit (q(n))",
                   "function p \"a.h\" One most 1 ; function q \"a.h\" other::Two most 2 ; "),
              "seq(rep declared One n 0(any 1), rep declared other::Two n 0(any 1))");
    EXPECT_EQ(Tree("bit (left_or_none(x, 24)) bit (until(y))"),
              "seq(rep left_or_none x 24(any 1), rep until y 0(any 1))");
    EXPECT_EQ(Tree("L ** write (octet_end())"), "rep write octet_end0(bits L)");
    EXPECT_EQ(Tree("0 * (2..) 0 * (0..3)"), "seq(rep range 2-(bits 0), rep range 0-3(bits 0))");
}

TEST(CsnParser, SendingAndComparing) {
    EXPECT_EQ(Tree("bit (4) = { 0000 | 0010 }"), "send(any 4, choice(bits 0000, bits 0010))");
    EXPECT_EQ(Tree("bit = < no string >"), "send(any 1, null)");
    EXPECT_EQ(Tree("bit (6) == 001001 bit == H"), "seq(bits 001001, bits H)");
}

TEST(CsnParser, GroupsAndReferences) {
    EXPECT_EQ(Tree("{ [in order] 0 | null }"), "choice in order(bits 0, null)");
    EXPECT_EQ(Tree("< null > < bit > < octet > < Some rule >"),
              "seq(null, any 1, any 8, rule Some rule)");
    EXPECT_EQ(Tree("< < r > >"), "rule r");
}

}  // namespace
}  // namespace quorvane::compiler
