// What the compiler says of mistakes in CSN.1 descriptions: a description with one kind of mistake
// each in csn_errors/, with the exact message beside it.

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "compiler/csn/csn_compiler.h"
#include "compiler/csn_type_text.h"
#include "compiler/reporter.h"

namespace quorvane::compiler {
namespace {

const EnumModel* FindEnum(const std::string& name) {
    static EnumModel known;
    return name == "Known" ? &known : nullptr;
}

std::string ErrorsOf(const std::string& name, const std::string& text) {
    Reporter reporter;
    TypeStore store;
    static_cast<void>(CompileCsn(reporter, {reporter.AddFile(name, text)}, {FindEnum}, store));
    return reporter.Text();
}

std::vector<std::string> Names() {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(std::string(QUORVANE_SOURCE_DIR) +
                                                                 "/tests/compiler/csn_errors")) {
        if (entry.path().extension() == ".csn1") {
            names.push_back(entry.path().stem().string());
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

TEST(CsnErrors, EachKindHasItsMessage) {
    const std::vector<std::string> names = Names();
    EXPECT_GT(names.size(), 40U);
    for (const std::string& name : names) {
        const std::string path = "tests/compiler/csn_errors/" + name;
        EXPECT_EQ(ErrorsOf(name + ".csn1", SourceText(path + ".csn1")), SourceText(path + ".txt"))
            << name;
    }
}

TEST(CsnErrors, AllOfARunAreTold) {
    EXPECT_EQ(ErrorsOf("a.csn1",
                       "structure T \"clause\" ;\n"
                       "< t > ::= < x > 12 < y ;\n"
                       "< u > ::= { 0 ;\n"
                       "< v > ::= 0 // ;\n"),
              "a.csn1:2:17: error: '12' stands where bits belong, and bits are 0 or 1\n"
              "a.csn1:2:22: error: bits, a field, a rule or a group is expected here, not 'y'; "
              "for the rule of that name write < y >\n"
              "a.csn1:3:15: error: '}' is expected here, not ';'\n"
              "a.csn1:4:13: error: '//' stands behind a group in braces; put what may be truncated "
              "between { and }\n");
}

// One structure with a mistake for each pass: none hides those of the others.
TEST(CsnErrors, AllPassesTellTheirs) {
    const std::string errors =
        ErrorsOf("a.csn1",
                 "structure A \"clause\" ;\n"
                 "< a > ::= { 0 ;\n"
                 "structure B \"clause\" ;\n"
                 "< b > ::= < unknown > ;\n"
                 "structure C \"clause\" ;\n"
                 "< c > ::= { < no string > } ** ;\n"
                 "structure D \"clause\" ;\n"
                 "< d > ::= < x : bit [enum Unknown] > ;\n"
                 "structure E \"clause\" ;\n"
                 "< e > ::= < r > ;\n"
                 "< r > ::= < n : bit > < a : bit > * (val(n)) { 0 | 1 < r > } ;\n");
    const std::string start =
        "a.csn1:2:15: error: '}' is expected here, not ';'\n"
        "a.csn1:4:11: error: there is no rule '< unknown >' in this structure or among the shared "
        "ones\n"
        "a.csn1:6:11: error: what is repeated without a bound may be empty, so the repetition "
        "would "
        "not end\n"
        "a.csn1:8:27: error: there is no enumeration 'Unknown'\n"
        "a.csn1:10:1: error: the code of this rule cannot be proven to run safely, at offset ";
    EXPECT_EQ(errors.substr(0, start.size()), start);
}

// A rule that could not be read is known by name all the same, and the variables that it may set
// are not missed.
TEST(CsnErrors, ABrokenSharedRuleHasNoFollowUps) {
    EXPECT_EQ(ErrorsOf("a.csn1",
                       "structure T \"clause\" ;\n"
                       "< t > ::= < r > bit (val(n)) ;\n"
                       "structure U \"clause\" ;\n"
                       "< u > ::= < a : bit (2) > < unknown > ;\n"
                       "shared ;\n"
                       "< r > ::= { 0 | } < n : bit > < s > ;\n"
                       "< s > ::= bit (0) ;\n"),
              "a.csn1:4:27: error: there is no rule '< unknown >' in this structure or among the "
              "shared ones\n"
              "a.csn1:6:17: error: bits, a field, a rule or a group is expected here, not '}'\n"
              "a.csn1:7:16: error: a number of bits from 1 to 1048576 is expected here\n");
}

TEST(CsnErrors, ARoundOfLeftRecursiveRulesIsToldOnce) {
    EXPECT_EQ(ErrorsOf("a.csn1",
                       "structure T \"clause\" ;\n"
                       "< t > ::= < r > ;\n"
                       "< r > ::= < s > 0 | 1 ;\n"
                       "< s > ::= < r > 1 | 0 ;\n"
                       "structure U \"clause\" ;\n"
                       "< u > ::= < x : bit > bit (val(y)) < n : bit > ;\n"
                       "structure V \"clause\" ;\n"
                       "< v > ::= { 0 | 1 < n : bit > } bit (val(n)) ;\n"),
              "a.csn1:3:1: error: the rule '< r >' is left-recursive: it refers to itself before "
              "it has read a bit\n"
              "a.csn1:6:28: error: there is no field or position 'y' in this structure\n"
              "a.csn1:8:38: error: 'n' is not known here on every way that reading can take; it "
              "must be set before\n"
              "a.csn1:8:38: error: 'n' is not known here on every way that writing can take; it "
              "must be set before\n");
}

/// A structure whose rule refers to r1, that one to r2 and so on, `times` times each.
std::string Chain(int rules, int times, const std::string& last) {
    std::string text = "structure T \"clause\" ;\n";
    for (int rule = 1; rule < rules; ++rule) {
        text += "< r" + std::to_string(rule) + " > ::=";
        for (int time = 0; time < times; ++time) {
            text += " < r" + std::to_string(rule + 1) + " >";
        }
        text += " ;\n";
    }
    return text + "< r" + std::to_string(rules) + " > ::= " + last + " ;\n";
}

TEST(CsnErrors, LongChainsOfRulesAreToldOnce) {
    EXPECT_EQ(ErrorsOf("a.csn1", Chain(2000, 1, "0")), "");
    for (const int rules : {2001, 15000}) {
        EXPECT_EQ(ErrorsOf("a.csn1", Chain(rules, 1, "0")),
                  "a.csn1:" + std::to_string(rules - 1999) + ":1: error: the rule '< r" +
                      std::to_string(rules - 2000) +
                      " >' is nested more than 2000 groups and rules deep, with the rules that it "
                      "refers to; write several of them as one\n");
    }
    // In a circle, too.
    EXPECT_NE(ErrorsOf("a.csn1", Chain(15000, 1, "0 < r1 >")), "");
}

// Of n rules the first enters the others 2 + 4 + ... + 2^(n-1) = 2^n - 2 times.
TEST(CsnErrors, CallsWithoutABitAreCounted) {
    EXPECT_EQ(ErrorsOf("a.csn1", Chain(16, 2, "null")), "");
    EXPECT_EQ(ErrorsOf("a.csn1", Chain(40, 2, "null")),
              "a.csn1:25:1: error: a run of the rule '< r24 >' may enter rules more than 65536 "
              "times before it reads a bit; let it read bits in between\n");
    EXPECT_EQ(ErrorsOf("a.csn1", Chain(40, 2, "0")), "");
    const std::string repeated = Chain(3, 1, "null") +
                                 "structure U \"clause\" ;\n"
                                 "< u > ::= < v > * 255 ;\n"
                                 "< v > ::= < w > * ";
    EXPECT_EQ(ErrorsOf("a.csn1", repeated + "256 ;\n< w > ::= null ;\n"), "");
    EXPECT_EQ(ErrorsOf("a.csn1", repeated + "257 ;\n< w > ::= null ;\n"),
              "a.csn1:6:1: error: a run of the rule '< u >' may enter rules more than 65536 times "
              "before it reads a bit; let it read bits in between\n");
}

TEST(CsnErrors, NumbersAreDecimal) {
    const std::string head = "structure T \"clause\" ;\n< t > ::= ";
    EXPECT_EQ(ErrorsOf("a.csn1", head + "{ 1 < x : bit > } * 0x10 ;\n"),
              "a.csn1:2:31: error: a number is expected here, not '0x10'\n");
    EXPECT_EQ(ErrorsOf("a.csn1", head + "bit (5) in 0x1..30 ;\n"),
              "a.csn1:2:22: error: a number is expected here, not '0x1'\n");
    EXPECT_EQ(ErrorsOf("a.csn1", head + "< x : bit ** [binary 0x10] > ;\n"),
              "a.csn1:2:32: error: a number is expected here, not '0x10'\n");
    EXPECT_EQ(ErrorsOf("a.csn1", head + "bit (0x10) ;\n").substr(0, 41),
              "a.csn1:2:16: error: '0x10' is no count; t");
    EXPECT_EQ(ErrorsOf("a.csn1", head + "bit (4) @keep(n, 0x4) ;\n"),
              "a.csn1:2:28: error: a number is expected here\n");
}

TEST(CsnErrors, FilesShareTheirRules) {
    Reporter reporter;
    TypeStore store;
    const auto first = reporter.AddFile("a.csn1", "shared ;\n< r > ::= 0 ;\n");
    const auto second =
        reporter.AddFile("b.csn1", "structure T \"clause\" ;\n< t > ::= < r > < s > ;\n");
    const CompiledCsn csn = CompileCsn(reporter, {first, second}, {FindEnum}, store);
    EXPECT_EQ(reporter.Text(),
              "b.csn1:2:17: error: there is no rule '< s >' in this structure or among the shared "
              "ones\n");
}

TEST(CsnErrors, MoreTagsThanThereAre) {
    // Each rule has two fields of the next one: 2, 4, 8 ... structs.
    std::string text = "structure T \"clause\" ;\n";
    for (int rule = 0; rule < 17; ++rule) {
        const std::string next = std::to_string(rule + 1);
        text += "< r" + std::to_string(rule) + " > ::= < a : < r" + next + " > > < b : < r" + next +
                " > > ;\n";
    }
    text += "< r17 > ::= < c : bit > ;\n";
    EXPECT_EQ(ErrorsOf("a.csn1", text),
              "a.csn1:1:11: error: the fields up to this structure need more than 65534 tags\n");
}

// A recursion that keeps a value in each round would need ever more tags.
TEST(CsnErrors, CodeThatIsNotProven) {
    const std::string errors = ErrorsOf("a.csn1",
                                        "structure T \"clause\" ;\n< t > ::= < r > ;\n"
                                        "< r > ::= < n : bit > < a : bit > * (val(n)) "
                                        "{ 0 | 1 < r > } ;\n");
    const std::string start =
        "a.csn1:2:1: error: the code of this rule cannot be proven to run safely, at offset ";
    EXPECT_EQ(errors.substr(0, start.size()), start) << errors;
}

TEST(CsnErrors, NothingNestedTooDeeplyIsRead) {
    std::string text = "structure T \"clause\" ;\n< t > ::= ";
    for (int depth = 0; depth < 5000; ++depth) {
        text += "{ ";
    }
    EXPECT_EQ(ErrorsOf("a.csn1", text),
              "a.csn1:2:211: error: a rule of its own for what is nested so deeply is expected "
              "here, not '{'\n");
}

}  // namespace
}  // namespace quorvane::compiler
