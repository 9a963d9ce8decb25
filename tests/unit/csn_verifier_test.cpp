#include <gtest/gtest.h>

#include "csn/assembly/verifier.h"
#include "unit/csn_test_support.h"

namespace quorvane::csn {
namespace {

using test::Image;
using test::kRoot;

VerifierInput InputOf(Image& image) {
    VerifierInput input;
    input.code = image.Octets();
    input.fieldTable = image.fields;
    input.actions.resize(image.actions.size());
    input.functions.resize(image.functions.size());
    input.entries.push_back({"Structure", 0, kRoot, 0, 0});
    return input;
}

std::string FindingsOf(Image& image) {
    return Verify(InputOf(image)).Text();
}

using Emit = void (*)(Image& image);

/// Findings for what `emit` puts in front of RET.
std::string Findings(Emit emit) {
    Image image;
    emit(image);
    image.code.Emit(Opcode::kRet);
    return FindingsOf(image);
}

void Act(CsnRun&) {}
std::uint32_t Two(CsnRun&) {
    return 2;
}

TEST(CsnVerifier, ProvesASoundImage) {
    Image image;
    const auto count = image.Field({{kRoot, 10}});
    const auto group = image.Field({{kRoot, 11}});
    const auto inner = image.Field({{11, 12}});
    const auto function = image.Function(Two);
    const auto action = image.Action(Act);
    auto& code = image.code;
    const auto second = code.NewLabel();
    const auto fail = code.NewLabel();
    const auto join = code.NewLabel();
    const auto exit = code.NewLabel();
    const auto behind = code.NewLabel();
    const auto rule = code.NewLabel();
    code.Emit(Opcode::kBegin, {Assembler::Delimiter(count, true)});
    code.Emit(Opcode::kSkip, {3});
    code.Emit(Opcode::kEndTag, {Assembler::Delimiter(count, true), 1});
    code.Emit(Opcode::kRepTag, {Assembler::Exit(exit, false), 1});
    const auto body = code.BindNew();
    code.Emit(Opcode::kBegin, {Assembler::Delimiter(group, false)});
    code.Emit(Opcode::kCall, {rule});
    code.Emit(Opcode::kEnd, {Assembler::Delimiter(group, false)});
    code.Emit(Opcode::kLoop, {body});
    code.Bind(exit);
    code.Emit(Opcode::kAlt, {Assembler::Branch(second, false)});
    code.Emit(Opcode::kBit0);
    code.Emit(Opcode::kJmp, {join});
    code.Bind(second);
    code.Emit(Opcode::kAlt, {Assembler::Branch(fail, true)});
    code.Emit(Opcode::kMark);
    code.Emit(Opcode::kSkip, {4});
    code.Emit(Opcode::kExclude, {behind});
    code.Emit(Opcode::kLit, {Assembler::Literal(15, 4)});
    code.Emit(Opcode::kExcludeEnd);
    code.Bind(behind);
    code.Emit(Opcode::kMark);
    const auto innerExit = code.NewLabel();
    code.Emit(Opcode::kRepFn, {Assembler::Exit(innerExit, false), function});
    const auto innerBody = code.BindNew();
    code.Emit(Opcode::kSkip, {1});
    code.Emit(Opcode::kLoop, {innerBody});
    code.Bind(innerExit);
    code.Emit(Opcode::kRescan);
    code.Emit(Opcode::kBit1);
    code.Emit(Opcode::kRescanEnd);
    code.Emit(Opcode::kAct, {action});
    code.Emit(Opcode::kJmp, {join});
    code.Bind(fail);
    code.Emit(Opcode::kFail);
    code.Bind(join);
    code.Emit(Opcode::kPop);
    code.Emit(Opcode::kRet);
    code.Bind(rule);
    code.Emit(Opcode::kField, {inner, 4});
    code.Emit(Opcode::kTagPos, {5});
    code.Emit(Opcode::kTagPos, {6});
    code.Emit(Opcode::kRetTags);

    VerifierInput input = InputOf(image);
    input.entries.front().firstTag = 10;
    input.entries.front().fieldCount = 3;
    const VerifierReport report = Verify(input);
    EXPECT_EQ(report.Text(), "");
    ASSERT_EQ(report.needs.size(), 1U);
    EXPECT_EQ(report.needs[0].tags, 3U);          // the count's and the rule's two
    EXPECT_EQ(report.needs[0].stackEntries, 4U);  // exit, counter, group, return address
}

TEST(CsnVerifier, IncompleteInstruction) {
    const std::vector<std::uint8_t> code = {0x23, 0x10, 0x81};
    VerifierInput input;
    input.code = code;
    EXPECT_EQ(Verify(input).Text(), "1: incomplete instruction\n");
}

TEST(CsnVerifier, EntryInsideAnInstruction) {
    Image image;
    image.code.Emit(Opcode::kLit, {Assembler::Literal(1, 1)});
    image.code.Emit(Opcode::kRet);
    VerifierInput input = InputOf(image);
    input.entries.push_back({"Other", 1, kRoot, 0, 0});
    EXPECT_EQ(Verify(input).Text(), "1: the entry of Other is no instruction\n");
}

TEST(CsnVerifier, JumpsLandOnInstructions) {
    const struct {
        std::vector<std::uint8_t> code;
        std::string findings;
    } rows[] = {
        {{0x40, 0x03, 0x26, 0x10, 0x23}, "0: leads to no instruction\n"},  // into LIT
        {{0x40, 0x30, 0x23}, "0: leads to no instruction\n"},              // past the end
        {{0x40, 0x00, 0x23}, "0: leads nowhere\n"},                        // to itself
        {{0x80, 0x00, 0x06, 0x23}, "0: leads nowhere\n"},
        {{0x0F, 0x00, 0x23}, "0: leads nowhere\n"},
        {{0x0C, 0x10, 0x23}, "0: leads to no instruction\n"},
        {{0x17, 0x01, 0x1D, 0x02, 0x23}, "0: leads nowhere\n"},
        {{0x17, 0x0A, 0xC1, 0x1D, 0x09, 0x23}, "3: leads to no instruction\n"},  // LOOP before 0
    };
    for (const auto& row : rows) {
        VerifierInput input;
        input.code = row.code;
        input.entries.push_back({"S", 0, kRoot, 0, 0});
        EXPECT_EQ(Verify(input).Text(), row.findings);
    }
}

TEST(CsnVerifier, RunningOffTheEnd) {
    Image image;
    image.code.Emit(Opcode::kBit1);
    EXPECT_EQ(FindingsOf(image), "0: runs off the end of the image\n");
}

TEST(CsnVerifier, IndicesAreInRange) {
    EXPECT_EQ(Findings([](Image& image) { image.code.Emit(Opcode::kAct, {0}); }),
              "0: action 0 of 0\n");
    EXPECT_EQ(Findings([](Image& image) {
                  image.Function(Two);
                  const auto exit = image.code.NewLabel();
                  image.code.Emit(Opcode::kRepFn2, {Assembler::Exit(exit, false), 0, 1});
                  image.code.Bind(exit);
              }),
              "0: value function 1 of 1\n");
    EXPECT_EQ(Findings([](Image& image) {
                  image.code.Emit(Opcode::kField, {image.Field({{kRoot, 1}}), 65536});
              }),
              "0: a field of 65536 bits\n");
}

TEST(CsnVerifier, FieldsHaveTheirTags) {
    EXPECT_EQ(Findings([](Image& image) {
                  image.Field({{kRoot, 1}});
                  image.code.Emit(Opcode::kField, {0, 1});
                  image.code.Emit(Opcode::kField, {9, 1});
              }),
              "0: field 0 is not in a table of 3\n3: field 9 is not in a table of 3\n");
    EXPECT_EQ(Findings([](Image& image) {
                  image.code.Emit(Opcode::kField, {image.Field({{9, 1}}), 1});
              }),
              "0: field 1 has no tag under the parent 3\n");
    // The parent is the innermost open field, also across a call.
    EXPECT_EQ(Findings([](Image& image) {
                  const auto group = image.Field({{kRoot, 10}});
                  const auto inside = image.Field({{kRoot, 11}});
                  const auto rule = image.code.NewLabel();
                  const auto over = image.code.NewLabel();
                  image.code.Emit(Opcode::kCall, {rule});
                  image.code.Emit(Opcode::kBegin, {Assembler::Delimiter(group, false)});
                  image.code.Emit(Opcode::kCall, {rule});
                  image.code.Emit(Opcode::kEnd, {Assembler::Delimiter(group, false)});
                  image.code.Emit(Opcode::kJmp, {over});
                  image.code.Bind(rule);
                  image.code.Emit(Opcode::kField, {inside, 1});
                  image.code.Emit(Opcode::kRet);
                  image.code.Bind(over);
              }),
              "10: field 4 has no tag under the parent 10\n");
}

TEST(CsnVerifier, PairsOfTheNextFieldDoNotCount) {
    // Field 1 has one pair; behind it stands field 4's index, which must not be taken for a parent.
    Image image;
    const auto first = image.Field({{9, 10}});
    const auto second = image.Field({{kRoot, 11}}, kRoot);
    image.code.Emit(Opcode::kField, {second, 1});
    image.code.Emit(Opcode::kField, {first, 1});
    image.code.Emit(Opcode::kRet);
    EXPECT_EQ(FindingsOf(image), "3: field 1 has no tag under the parent 3\n");
}

TEST(CsnVerifier, HalfAPair) {
    Image image;
    const auto field = image.Field({{kRoot, 10}});
    image.fields.push_back(7);
    image.code.Emit(Opcode::kField, {field, 1});
    image.code.Emit(Opcode::kRet);
    EXPECT_EQ(FindingsOf(image), "0: field 1 has half a pair\n");
}

TEST(CsnVerifier, TagsAreOfTheirStructure) {
    Image image;
    image.code.Emit(Opcode::kField, {image.Field({{kRoot, 10}, {10, 13}}), 1});
    image.code.Emit(Opcode::kRet);
    VerifierInput input = InputOf(image);
    input.entries.front().firstTag = 10;
    input.entries.front().fieldCount = 3;
    EXPECT_EQ(Verify(input).Text(), "0: field 1 has the tag 13, which is not of Structure\n");
}

TEST(CsnVerifier, StackIsUsedInPairs) {
    EXPECT_EQ(Findings([](Image& image) { image.code.Emit(Opcode::kPop); }),
              "0: the top of the stack is no alternative\n");
    EXPECT_EQ(Findings([](Image& image) { image.code.Emit(Opcode::kMark); }),
              "1: returns with entries of its rule on the stack\n");
    EXPECT_EQ(Findings([](Image& image) { image.code.Emit(Opcode::kRescan); }),
              "0: the top of the stack is no mark\n");
    EXPECT_EQ(Findings([](Image& image) { image.code.Emit(Opcode::kRescanEnd); }),
              "0: no second reading is open\n");
    EXPECT_EQ(Findings([](Image& image) { image.code.Emit(Opcode::kExcludeEnd); }),
              "0: no exclusion is open\n");
    EXPECT_EQ(Findings([](Image& image) { image.code.Emit(Opcode::kCount, {1}); }),
              "0: the top of the stack is no repetition\n");
    EXPECT_EQ(Findings([](Image& image) {
                  const auto start = image.code.BindNew();
                  image.code.Emit(Opcode::kBit1);
                  image.code.Emit(Opcode::kLoop, {start});
              }),
              "1: the top of the stack is no repetition\n");
    EXPECT_EQ(Findings([](Image& image) {
                  const auto behind = image.code.NewLabel();
                  image.code.Emit(Opcode::kExclude, {behind});
                  image.code.Bind(behind);
              }),
              "0: the top of the stack is no mark\n");
}

TEST(CsnVerifier, FieldsCloseAsTheyOpened) {
    const std::string expected = "2: does not close the field that was opened last\n";
    EXPECT_EQ(Findings([](Image& image) {
                  const auto field = image.Field({{kRoot, 10}});
                  const auto other = image.Field({{kRoot, 11}});
                  image.code.Emit(Opcode::kBegin, {Assembler::Delimiter(field, true)});
                  image.code.Emit(Opcode::kEnd, {Assembler::Delimiter(other, true)});
              }),
              expected);
    EXPECT_EQ(Findings([](Image& image) {
                  const auto field = image.Field({{kRoot, 10}});
                  image.code.Emit(Opcode::kBegin, {Assembler::Delimiter(field, true)});
                  image.code.Emit(Opcode::kEnd, {Assembler::Delimiter(field, false)});
              }),
              expected);
}

TEST(CsnVerifier, PathsMeetWithTheSameStack) {
    EXPECT_EQ(Findings([](Image& image) {
                  const auto other = image.code.NewLabel();
                  image.code.Emit(Opcode::kAlt, {Assembler::Branch(other, false)});
                  image.code.Emit(Opcode::kBit1);  // no POP
                  image.code.Bind(other);
              }),
              "2: leads to a place that is reached with another stack\n");
}

TEST(CsnVerifier, LoopLeadsToItsBody) {
    Image image;
    const auto exit = image.code.NewLabel();
    image.code.Emit(Opcode::kRepAny, {Assembler::Exit(exit, false)});
    image.code.Emit(Opcode::kBit1);
    const auto inside = image.code.BindNew();
    image.code.Emit(Opcode::kBit0);
    image.code.Emit(Opcode::kLoop, {inside});
    image.code.Bind(exit);
    image.code.Emit(Opcode::kRet);
    EXPECT_EQ(FindingsOf(image), "4: does not lead to the start of its repetition\n");
}

TEST(CsnVerifier, IterationsTakeBits) {
    const Emit emptyBranch = [](Image& image) {
        const auto exit = image.code.NewLabel();
        const auto other = image.code.NewLabel();
        image.code.Emit(Opcode::kRepAny, {Assembler::Exit(exit, false)});
        const auto body = image.code.BindNew();
        image.code.Emit(Opcode::kAlt, {Assembler::Branch(other, false)});
        image.code.Emit(Opcode::kBit1);
        image.code.Emit(Opcode::kPop);
        image.code.Bind(other);
        image.code.Emit(Opcode::kLoop, {body});
        image.code.Bind(exit);
    };
    EXPECT_EQ(Findings(emptyBranch), "6: an iteration may take no bits\n");
    // A second reading may end before the first.
    EXPECT_EQ(Findings([](Image& image) {
                  const auto exit = image.code.NewLabel();
                  image.code.Emit(Opcode::kRepAny, {Assembler::Exit(exit, false)});
                  const auto body = image.code.BindNew();
                  image.code.Emit(Opcode::kMark);
                  image.code.Emit(Opcode::kBit1);
                  image.code.Emit(Opcode::kRescan);
                  image.code.Emit(Opcode::kRescanEnd);
                  image.code.Emit(Opcode::kLoop, {body});
                  image.code.Bind(exit);
              }),
              "6: an iteration may take no bits\n");
    // A known count ends all the same.
    EXPECT_EQ(Findings([](Image& image) {
                  const auto exit = image.code.NewLabel();
                  image.code.Emit(Opcode::kRep, {Assembler::Exit(exit, false), 5});
                  const auto body = image.code.BindNew();
                  image.code.Emit(Opcode::kLoop, {body});
                  image.code.Bind(exit);
              }),
              "");
}

TEST(CsnVerifier, CommitStaysInItsField) {
    const Emit inside = [](Image& image) {
        const auto field = image.Field({{kRoot, 10}});
        const auto end = image.code.NewLabel();
        image.code.Emit(Opcode::kAlt, {Assembler::Branch(end, false)});
        image.code.Emit(Opcode::kBegin, {Assembler::Delimiter(field, false)});
        image.code.Emit(Opcode::kCommit);
        image.code.Emit(Opcode::kEnd, {Assembler::Delimiter(field, false)});
        image.code.Emit(Opcode::kPop);
        image.code.Bind(end);
    };
    EXPECT_EQ(Findings(inside), "4: moves up a choice point outside the field that is open\n");
    EXPECT_EQ(Findings([](Image& image) { image.code.Emit(Opcode::kCommit); }),
              "0: Structure may move up a choice point where there is none\n");
}

TEST(CsnVerifier, CommitOfACalledRuleIsItsCallers) {
    for (const bool open : {false, true}) {
        Image image;
        const auto field = image.Field({{kRoot, 10}});
        const auto end = image.code.NewLabel();
        const auto rule = image.code.NewLabel();
        image.code.Emit(Opcode::kAlt, {Assembler::Branch(end, false)});
        if (open) {
            image.code.Emit(Opcode::kBegin, {Assembler::Delimiter(field, false)});
        }
        image.code.Emit(Opcode::kCall, {rule});
        if (open) {
            image.code.Emit(Opcode::kEnd, {Assembler::Delimiter(field, false)});
        }
        image.code.Emit(Opcode::kPop);
        image.code.Bind(end);
        image.code.Emit(Opcode::kRet);
        image.code.Bind(rule);
        image.code.Emit(Opcode::kBit1);
        image.code.Emit(Opcode::kCommit);
        image.code.Emit(Opcode::kRet);
        EXPECT_EQ(FindingsOf(image),
                  open ? "4: moves up a choice point outside the field that is open\n" : "");
    }
}

TEST(CsnVerifier, CountNeedsItsOwnLoop) {
    for (const bool inner : {false, true}) {
        Image image;
        const auto exit = image.code.NewLabel();
        image.code.Emit(Opcode::kRepAny, {Assembler::Exit(exit, false)});
        const auto body = image.code.BindNew();
        if (inner) {
            const auto innerExit = image.code.NewLabel();
            image.code.Emit(Opcode::kRep, {Assembler::Exit(innerExit, false), 2});
            const auto innerBody = image.code.BindNew();
            image.code.Emit(Opcode::kBit0);
            image.code.Emit(Opcode::kLoop, {innerBody});
            image.code.Bind(innerExit);
        }
        image.code.Emit(Opcode::kBit1);
        image.code.Emit(Opcode::kCount, {0});
        image.code.Emit(Opcode::kLoop, {body});
        image.code.Bind(exit);
        image.code.Emit(Opcode::kRet);
        EXPECT_EQ(FindingsOf(image),
                  inner ? "9: another repetition may have been entered last\n" : "");
    }
}

TEST(CsnVerifier, TagsStayInTheirStore) {
    for (const int tags : {32, 33}) {
        Image image;
        for (int tag = 0; tag < tags; ++tag) {
            image.code.Emit(Opcode::kTagPos, {1});
        }
        image.code.Emit(Opcode::kRet);
        EXPECT_EQ(FindingsOf(image),
                  tags == 32 ? "" : "0: Structure may keep more than 32 tags at a time\n");
    }
}

TEST(CsnVerifier, TagsOfIterationsAddUp) {
    for (const std::uint32_t times : {32U, 33U}) {
        Image image;
        const auto exit = image.code.NewLabel();
        image.code.Emit(Opcode::kRep, {Assembler::Exit(exit, false), times});
        const auto body = image.code.BindNew();
        image.code.Emit(Opcode::kTagPos, {1});
        image.code.Emit(Opcode::kLoop, {body});
        image.code.Bind(exit);
        image.code.Emit(Opcode::kRet);
        EXPECT_EQ(FindingsOf(image).empty(), times == 32) << times;
    }
    Image open;
    const auto exit = open.code.NewLabel();
    open.code.Emit(Opcode::kRepAny, {Assembler::Exit(exit, false)});
    const auto body = open.code.BindNew();
    open.code.Emit(Opcode::kBit1);
    open.code.Emit(Opcode::kTagPos, {1});
    open.code.Emit(Opcode::kLoop, {body});
    open.code.Bind(exit);
    open.code.Emit(Opcode::kRet);
    EXPECT_EQ(FindingsOf(open),
              "0: Structure may keep more than 32 tags at a time\n"
              "5: every iteration adds tags, without a bound\n");
}

TEST(CsnVerifier, ActionsAddTheTagsStated) {
    Image image;
    const auto action = image.Action(Act);
    const auto exit = image.code.NewLabel();
    image.code.Emit(Opcode::kRepAny, {Assembler::Exit(exit, false)});
    const auto body = image.code.BindNew();
    image.code.Emit(Opcode::kBit1);
    image.code.Emit(Opcode::kAct, {action});
    image.code.Emit(Opcode::kLoop, {body});
    image.code.Bind(exit);
    image.code.Emit(Opcode::kRet);
    VerifierInput input = InputOf(image);
    EXPECT_FALSE(Verify(input).findings.empty());
    input.actions = {{VerifierAction::Effect::kNone}};
    EXPECT_TRUE(Verify(input).findings.empty());
}

TEST(CsnVerifier, RulesThatCallThemselves) {
    // R ::= 1 R | 0: any depth, no tags; with a tag at each level none can be shown to fit.
    for (const bool tags : {false, true}) {
        Image image;
        auto& code = image.code;
        const auto rule = code.BindNew();
        const auto second = code.NewLabel();
        const auto fail = code.NewLabel();
        const auto join = code.NewLabel();
        code.Emit(Opcode::kAlt, {Assembler::Branch(second, false)});
        code.Emit(Opcode::kBit1);
        if (tags) {
            code.Emit(Opcode::kTagPos, {1});
        }
        code.Emit(Opcode::kCall, {rule});
        code.Emit(Opcode::kJmp, {join});
        code.Bind(second);
        code.Emit(Opcode::kAlt, {Assembler::Branch(fail, true)});
        code.Emit(Opcode::kBit0);
        code.Emit(Opcode::kJmp, {join});
        code.Bind(fail);
        code.Emit(Opcode::kFail);
        code.Bind(join);
        code.Emit(Opcode::kPop);
        code.Emit(tags ? Opcode::kRetTags : Opcode::kRet);
        const VerifierReport report = Verify(InputOf(image));
        EXPECT_EQ(report.findings.empty(), !tags);
        ASSERT_EQ(report.needs.size(), 1U);
        EXPECT_FALSE(report.needs[0].stackEntries);
        EXPECT_EQ(test::Decode(image, "1110").result, 4);
    }
}

TEST(CsnVerifier, CountsOfRangesTellWhatIsReached) {
    // The body never ends; what is behind is at fault, and reached only without an iteration.
    const auto findings = [](std::uint32_t least, std::uint32_t most) {
        Image image;
        const auto exit = image.code.NewLabel();
        image.code.Emit(Opcode::kRepRange, {Assembler::Exit(exit, false), least, most});
        image.code.Emit(Opcode::kFail);
        image.code.Bind(exit);
        image.code.Emit(Opcode::kPop);
        image.code.Emit(Opcode::kRet);
        return FindingsOf(image);
    };
    const std::string fault = "5: the top of the stack is no alternative\n";
    EXPECT_EQ(findings(0, 3), fault);
    EXPECT_EQ(findings(1, 3), "");
    EXPECT_EQ(findings(3, 0), fault);  // none is allowed: none is required
}

TEST(CsnVerifier, CountsOfRangesBoundTheTags) {
    for (const std::uint32_t most : {32U, 33U}) {
        Image image;
        const auto exit = image.code.NewLabel();
        image.code.Emit(Opcode::kRepRange, {Assembler::Exit(exit, false), 1, most});
        const auto body = image.code.BindNew();
        image.code.Emit(Opcode::kTagPos, {1});
        image.code.Emit(Opcode::kLoop, {body});
        image.code.Bind(exit);
        image.code.Emit(Opcode::kRet);
        EXPECT_EQ(FindingsOf(image).empty(), most == 32);
    }
    // A maximum of 0x3FFF is none, one above is one.
    for (const std::uint32_t most : {0x3FFEU, 0x3FFFU, 0x4000U}) {
        Image image;
        const auto exit = image.code.NewLabel();
        image.code.Emit(Opcode::kRepRange, {Assembler::Exit(exit, false), 0, most});
        const auto body = image.code.BindNew();
        image.code.Emit(Opcode::kLoop, {body});
        image.code.Bind(exit);
        image.code.Emit(Opcode::kRet);
        EXPECT_EQ(FindingsOf(image).empty(), most != 0x3FFF);
    }
}

TEST(CsnVerifier, RulesThatCallEachOtherAndCommit) {
    // A ::= { 1 B } // | 0, B ::= A with its end moved up: each round through them leaves one more
    // tag, so that they are walked until the count is given up. What they may do besides stays
    // known: they return, and B moves its caller's choice, inside of a field that it opened or not.
    for (const bool inside : {false, true}) {
        Image image;
        auto& code = image.code;
        const auto field = image.Field({{kRoot, 10}, {10, 10}});
        const auto second = code.NewLabel();
        const auto end = code.NewLabel();
        const auto other = code.NewLabel();
        const auto first = code.BindNew();
        code.Emit(Opcode::kAlt, {Assembler::Branch(end, false)});
        code.Emit(Opcode::kBit1);
        code.Emit(Opcode::kCall, {second});
        code.Emit(Opcode::kPop);
        code.Bind(end);
        code.Emit(Opcode::kRet);
        code.Bind(second);
        code.Emit(Opcode::kTagPos, {1});
        code.Emit(Opcode::kCall, {first});
        code.Emit(Opcode::kSkipEnc, {other});
        if (inside) {
            code.Emit(Opcode::kBegin, {Assembler::Delimiter(field, false)});
        }
        code.Emit(Opcode::kCommit);
        if (inside) {
            code.Emit(Opcode::kEnd, {Assembler::Delimiter(field, false)});
        }
        code.Bind(other);
        code.Emit(Opcode::kRet);
        const std::string text = FindingsOf(image);
        EXPECT_NE(text.find("Structure may keep more than 32 tags at a time"), std::string::npos);
        EXPECT_EQ(text.find("field that is open") != std::string::npos, inside) << text;
    }
}

TEST(CsnVerifier, DeepNestingWithoutRecursionMustFit) {
    for (const int marks : {255, 256}) {
        Image image;
        for (int mark = 0; mark < marks; ++mark) {
            image.code.Emit(Opcode::kMark);
        }
        image.code.Emit(Opcode::kFail);
        EXPECT_EQ(FindingsOf(image),
                  marks == 255 ? "" : "0: Structure may need 256 stack entries\n");
    }
}

TEST(CsnVerifier, StructuresWithoutRecordsNeedNoTags) {
    Image image;
    image.code.Emit(Opcode::kField, {image.Field({{9, 1}}), 1});
    image.code.Emit(Opcode::kRet);
    VerifierInput input = InputOf(image);
    input.entries.front().rootTag = 0xFFFF;
    EXPECT_EQ(Verify(input).Text(), "");
}

}  // namespace
}  // namespace quorvane::csn
