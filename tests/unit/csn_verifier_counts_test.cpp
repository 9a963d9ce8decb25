// What the verifier knows of counts: how often a repetition runs whose count is a tag's number or
// the result of a value function.

#include <functional>
#include <gtest/gtest.h>

#include "csn/assembly/verifier.h"
#include "unit/csn_test_support.h"

namespace quorvane::csn {
namespace {

using test::Image;
using test::kRoot;
using Effect = VerifierAction::Effect;

constexpr std::uint32_t kTag = 7;
const std::string kOpen = "an iteration may take no bits\n";

struct Subject {
    Image image;
    Assembler& code = image.code;
    std::vector<VerifierAction> actions;
    std::vector<VerifierBound> functions;
    std::uint32_t field = image.Field({{kRoot, 10}});

    /// Keeps the number of a field with these contents.
    void Keep(const std::function<void()>& contents, std::uint32_t tag = kTag) {
        code.Emit(Opcode::kBegin, {Assembler::Delimiter(field, true)});
        contents();
        code.Emit(Opcode::kEndTag, {Assembler::Delimiter(field, true), tag});
    }
    void Keep(std::uint32_t width, std::uint32_t tag = kTag) {
        Keep([&] { code.Emit(Opcode::kSkip, {width}); }, tag);
    }
    void Act(const VerifierAction& action, Opcode opcode = Opcode::kAct) {
        code.Emit(opcode, {image.Action([](CsnRun&) {})});
        actions.push_back(action);
    }
    void Repeat(Opcode opcode, std::uint32_t operand, const std::function<void()>& body) {
        const auto exit = code.NewLabel();
        code.Emit(opcode, {Assembler::Exit(exit, false), operand});
        const auto start = code.BindNew();
        body();
        code.Emit(Opcode::kLoop, {start});
        code.Bind(exit);
    }
    /// A repetition of nothing: fine with a bound.
    void Empty(std::uint32_t tag = kTag) {
        Repeat(Opcode::kRepTag, tag, [] {});
    }
    /// Each iteration adds a tag: what the run needs tells the bound.
    void Counted(Opcode opcode = Opcode::kRepTag, std::uint32_t operand = kTag) {
        Repeat(opcode, operand, [&] { code.Emit(Opcode::kTagPos, {1}); });
    }
    /// 0: one, 1: the other.
    void Either(const std::function<void()>& one, const std::function<void()>& other) {
        const auto second = code.NewLabel();
        const auto join = code.NewLabel();
        code.Emit(Opcode::kAlt, {Assembler::Branch(second, false)});
        code.Emit(Opcode::kBit0);
        one();
        code.Emit(Opcode::kPop);
        code.Emit(Opcode::kJmp, {join});
        code.Bind(second);
        code.Emit(Opcode::kBit1);
        other();
        code.Bind(join);
    }

    VerifierReport Report() {
        VerifierInput input;
        input.code = image.Octets();
        input.fieldTable = image.fields;
        input.entries.push_back({"Structure", 0, kRoot, 0, 0});
        input.actions = actions;
        input.functions = functions;
        return Verify(input);
    }
};

using Build = void (*)(Subject&);

VerifierReport ReportOf(Build build) {
    Subject subject;
    build(subject);
    subject.code.Emit(Opcode::kRet);
    return subject.Report();
}

/// The findings without their offsets.
std::string Findings(Build build) {
    std::string text;
    for (const VerifierFinding& finding : ReportOf(build).findings) {
        text += finding.text + "\n";
    }
    return text;
}

std::uint32_t TagsOf(Build build) {
    const VerifierReport report = ReportOf(build);
    EXPECT_EQ(report.Text(), "");
    return report.needs.at(0).tags;
}

TEST(CsnVerifierCounts, ValueOfKnownWidth) {
    EXPECT_EQ(TagsOf([](Subject& s) { s.Keep(3), s.Counted(); }), 1U + 7U);
    EXPECT_EQ(TagsOf([](Subject& s) { s.Keep(0), s.Counted(); }), 1U + 1U);  // as if run once
    EXPECT_EQ(Findings([](Subject& s) { s.Keep(6), s.Counted(); }),
              "Structure may keep more than 32 tags at a time\n");
    // A count of 14 bits may be the one that means no bound.
    EXPECT_EQ(Findings([](Subject& s) { s.Keep(13), s.Empty(); }), "");
    EXPECT_EQ(Findings([](Subject& s) { s.Keep(14), s.Empty(); }), kOpen);
    EXPECT_EQ(Findings([](Subject& s) { s.Keep(40), s.Empty(); }), kOpen);
}

TEST(CsnVerifierCounts, WidthOfAField) {
    // Fixed bits, fields inside and the branches of a choice, of which each counts.
    EXPECT_EQ(TagsOf([](Subject& s) {
                  s.Keep([&] {
                      s.code.Emit(Opcode::kBitL);
                      s.code.Emit(Opcode::kLit, {Assembler::Literal(1, 2)});
                      s.code.Emit(Opcode::kNop);
                  });
                  s.Counted();
              }),
              1U + 7U);
    EXPECT_EQ(TagsOf([](Subject& s) {
                  const auto inside = s.image.Field({{10, 11}});
                  s.Keep([&] {
                      s.code.Emit(Opcode::kField, {inside, 2});
                      s.code.Emit(Opcode::kFieldLit, {inside, Assembler::Literal(0, 2)});
                  });
                  s.Counted();
              }),
              1U + 15U);
    EXPECT_EQ(TagsOf([](Subject& s) {
                  s.Keep([&] { s.Either([] {}, [] {}); });
                  s.Counted();
              }),
              1U + 3U);
    // What repeats, calls or moves the position makes it unknown.
    EXPECT_EQ(Findings([](Subject& s) {
                  s.Keep([&] { s.Repeat(Opcode::kRep, 2, [&] { s.code.Emit(Opcode::kBit0); }); });
                  s.Empty();
              }),
              kOpen);
    EXPECT_EQ(Findings([](Subject& s) {
                  s.Keep([&] { s.Act({Effect::kNone}); });
                  s.Empty();
              }),
              kOpen);
    EXPECT_EQ(Findings([](Subject& s) {
                  const auto rule = s.code.NewLabel();
                  s.Keep([&] { s.code.Emit(Opcode::kCall, {rule}); });
                  s.Empty();
                  s.code.Emit(Opcode::kRet);
                  s.code.Bind(rule);
                  s.code.Emit(Opcode::kBit0);
              }),
              kOpen);
    // The first of two beginnings counts.
    EXPECT_EQ(TagsOf([](Subject& s) {
                  const auto both = s.code.NewLabel();
                  const auto second = s.code.NewLabel();
                  s.code.Emit(Opcode::kSkipEnc, {second});
                  s.code.Emit(Opcode::kBegin, {Assembler::Delimiter(s.field, true)});
                  s.code.Emit(Opcode::kSkip, {2});
                  s.code.Emit(Opcode::kJmp, {both});
                  s.code.Bind(second);
                  s.code.Emit(Opcode::kBegin, {Assembler::Delimiter(s.field, true)});
                  s.code.Bind(both);
                  s.code.Emit(Opcode::kSkip, {1});
                  s.code.Emit(Opcode::kEndTag, {Assembler::Delimiter(s.field, true), kTag});
                  s.Counted();
              }),
              1U + 7U);
}

TEST(CsnVerifierCounts, ValuesThatAreNotKnown) {
    EXPECT_EQ(Findings([](Subject& s) { s.Empty(); }), kOpen);
    EXPECT_EQ(Findings([](Subject& s) { s.Keep(3, 8), s.Empty(); }), kOpen);
    EXPECT_EQ(Findings([](Subject& s) {
                  s.code.Emit(Opcode::kTagPos, {kTag});
                  s.Empty();
              }),
              kOpen);
    // The newest value counts.
    EXPECT_EQ(Findings([](Subject& s) {
                  s.Keep(3);
                  s.code.Emit(Opcode::kTagPos, {kTag});
                  s.Empty();
              }),
              kOpen);
    EXPECT_EQ(TagsOf([](Subject& s) { s.Keep(4), s.Keep(2), s.Counted(); }), 2U + 3U);
}

TEST(CsnVerifierCounts, WaysThatMeet) {
    EXPECT_EQ(TagsOf([](Subject& s) {
                  s.Either([&] { s.Keep(3); }, [&] { s.Keep(2); });
                  s.Counted();
              }),
              1U + 7U);
    EXPECT_EQ(TagsOf([](Subject& s) {
                  s.Either([&] { s.Keep(2); }, [&] { s.Keep(3); });
                  s.Counted();
              }),
              1U + 7U);
    EXPECT_EQ(Findings([](Subject& s) {
                  s.Either([] {}, [&] { s.Keep(2); });
                  s.Empty();
              }),
              kOpen);
    // The second iteration runs by the count that the first one kept.
    EXPECT_EQ(Findings([](Subject& s) {
                  s.Keep(3);
                  s.Repeat(Opcode::kRep, 2, [&] {
                      s.Empty();
                      s.code.Emit(Opcode::kTagPos, {kTag});
                  });
              }),
              kOpen);
}

TEST(CsnVerifierCounts, ABoundThatIsLostLater) {
    // The body hides the count, so that the weaker one shows in the bound alone. It comes by the
    // longer way, when the body has been walked.
    EXPECT_EQ(Findings([](Subject& s) {
                  s.Either([&] { s.Keep(3); },
                           [&] {
                               s.code.Emit(Opcode::kSkip, {3});
                               for (int count = 0; count < 20; ++count) {
                                   s.code.Emit(Opcode::kNop);
                               }
                           });
                  s.Repeat(Opcode::kRepTag, kTag, [&] { s.code.Emit(Opcode::kTagPos, {kTag}); });
              }),
              "Structure may keep more than 32 tags at a time\n" + kOpen +
                  "every iteration adds tags, without a bound\n");
}

TEST(CsnVerifierCounts, ValueFunctions) {
    const auto tags = [](VerifierBound bound) {
        Subject subject;
        subject.functions = {bound};
        subject.Keep(2);
        subject.Counted(Opcode::kRepFn, 0);
        subject.code.Emit(Opcode::kRet);
        const VerifierReport report = subject.Report();
        return report.findings.empty() ? static_cast<int>(report.needs.at(0).tags) : -1;
    };
    EXPECT_EQ(tags(VerifierBound{5}), 1 + 5);
    EXPECT_EQ(tags(VerifierBound{1, kTag, 1}), 1 + 4);
    EXPECT_EQ(tags(VerifierBound{-1, kTag, 1}), 1 + 2);
    EXPECT_EQ(tags(VerifierBound{-9, kTag, 1}), 1 + 1);  // a negative result is no count
    EXPECT_EQ(tags(VerifierBound{0, kTag, 8}), 1 + 24);
    EXPECT_EQ(tags(VerifierBound{6, kTag, 0}), 1 + 6);
    EXPECT_EQ(tags(VerifierBound{6, 8, 0}), -1);  // of a tag that is not set
    EXPECT_EQ(tags({}), -1);
    EXPECT_EQ(Findings([](Subject& s) {
                  s.functions = {VerifierBound{16382}, VerifierBound{16383}};
                  s.Repeat(Opcode::kRepFn, 0, [] {});
                  s.Repeat(Opcode::kRepFn, 1, [] {});
              }),
              kOpen);
}

TEST(CsnVerifierCounts, TheWorseOfTwoValueFunctions) {
    const auto findings = [](const VerifierBound& encode, const VerifierBound& decode) {
        Subject subject;
        subject.functions = {encode, decode};
        const auto exit = subject.code.NewLabel();
        subject.code.Emit(Opcode::kRepFn2, {Assembler::Exit(exit, false), 0, 1});
        const auto body = subject.code.BindNew();
        subject.code.Emit(Opcode::kLoop, {body});
        subject.code.Bind(exit);
        subject.code.Emit(Opcode::kRet);
        return subject.Report().findings.size();
    };
    EXPECT_EQ(findings(VerifierBound{1}, VerifierBound{2}), 0U);
    EXPECT_EQ(findings(VerifierBound{1}, {}), 1U);
    EXPECT_EQ(findings({}, VerifierBound{2}), 1U);
    // One for the encoder alone leaves the decoder without a bound.
    EXPECT_EQ(Findings([](Subject& s) {
                  s.functions = {VerifierBound{1}};
                  s.Repeat(Opcode::kRepFnEnc, 0, [] {});
              }),
              kOpen);
}

TEST(CsnVerifierCounts, Actions) {
    EXPECT_EQ(TagsOf([](Subject& s) { s.Act({Effect::kAdds, kTag, 3}), s.Counted(); }), 1U + 3U);
    EXPECT_EQ(Findings([](Subject& s) { s.Act({Effect::kAdds, kTag}), s.Empty(); }), kOpen);
    // Each counts for itself.
    EXPECT_EQ(TagsOf([](Subject& s) {
                  s.Act({Effect::kAdds, kTag});
                  s.Keep(3);
                  s.Counted();
              }),
              2U + 7U);
    // In one direction alone the tag may not be set.
    EXPECT_EQ(Findings([](Subject& s) {
                  s.Act({Effect::kAdds, kTag, 3}, Opcode::kActDec), s.Empty();
              }),
              kOpen);
    EXPECT_EQ(Findings([](Subject& s) {
                  s.Act({Effect::kAdds, kTag, 3}, Opcode::kActEnc), s.Empty();
              }),
              kOpen);
}

TEST(CsnVerifierCounts, ActionsThatChangeATag) {
    // Wherever they stand: a branch that fails does not take a change back.
    EXPECT_EQ(TagsOf([](Subject& s) {
                  s.Act({Effect::kAdds, kTag, 0});
                  s.Counted();
                  s.Act({Effect::kChanges, kTag, 3});
                  s.Act({Effect::kChanges, kTag, 2});
              }),
              1U + 3U);
    EXPECT_EQ(TagsOf([](Subject& s) {
                  s.Keep(3);
                  s.Act({Effect::kChanges, kTag, 3});
                  s.Act({Effect::kChanges, kTag + 1});
                  s.Counted();
              }),
              1U + 7U);
    EXPECT_EQ(Findings([](Subject& s) {
                  s.Keep(3);
                  s.Act({Effect::kChanges, kTag});
                  s.Empty();
              }),
              kOpen);
}

TEST(CsnVerifierCounts, RulesThatKeepWhatTheyRead) {
    for (const Opcode end : {Opcode::kRet, Opcode::kRetTags}) {
        Subject subject;
        const auto rule = subject.code.NewLabel();
        subject.code.Emit(Opcode::kCall, {rule});
        subject.Empty();
        subject.code.Emit(Opcode::kRet);
        subject.code.Bind(rule);
        subject.Keep(3);
        subject.code.Emit(end);
        EXPECT_EQ(subject.Report().findings.empty(), end == Opcode::kRet);
    }
    // What a rule drops leaves its caller's value as it was; what it keeps hides it.
    for (const Opcode end : {Opcode::kRet, Opcode::kRetTags}) {
        Subject subject;
        const auto rule = subject.code.NewLabel();
        subject.Keep(3);
        subject.code.Emit(Opcode::kCall, {rule});
        subject.Empty();
        subject.code.Emit(Opcode::kRet);
        subject.code.Bind(rule);
        subject.code.Emit(Opcode::kTagPos, {kTag});
        subject.code.Emit(end);
        EXPECT_EQ(subject.Report().findings.empty(), end == Opcode::kRetTags);
    }
    // Of two ends of a rule, both must keep it.
    for (const bool first : {false, true}) {
        Subject subject;
        const auto rule = subject.code.NewLabel();
        subject.code.Emit(Opcode::kCall, {rule});
        subject.Empty();
        subject.code.Emit(Opcode::kRet);
        subject.code.Bind(rule);
        const auto other = subject.code.NewLabel();
        subject.code.Emit(Opcode::kSkipEnc, {other});
        subject.Keep(3);
        subject.code.Emit(first ? Opcode::kRetTags : Opcode::kRet);
        subject.code.Bind(other);
        subject.Keep(2);
        subject.code.Emit(first ? Opcode::kRet : Opcode::kRetTags);
        EXPECT_FALSE(subject.Report().findings.empty());
    }
}

TEST(CsnVerifierCounts, RulesThatUseTheirCallersValue) {
    // Called where it is known, or also where it is not, in either order.
    for (const int unknown : {0, 1, 2}) {
        Subject subject;
        const auto rule = subject.code.NewLabel();
        const auto between = subject.code.NewLabel();
        if (unknown == 1) {
            subject.code.Emit(Opcode::kCall, {between});
        }
        subject.Keep(3);
        subject.code.Emit(Opcode::kCall, {between});
        if (unknown == 2) {
            subject.code.Emit(Opcode::kTagPos, {kTag});
            subject.code.Emit(Opcode::kCall, {between});
        }
        subject.code.Emit(Opcode::kRet);
        subject.code.Bind(between);
        subject.code.Emit(Opcode::kCall, {rule});
        subject.code.Emit(Opcode::kRet);
        subject.code.Bind(rule);
        subject.Empty();
        subject.code.Emit(Opcode::kRet);
        EXPECT_EQ(subject.Report().findings.empty(), unknown == 0) << unknown;
    }
}

TEST(CsnVerifierCounts, RulesWithoutTagsLeaveTheirCallersValue) {
    // Also one that is called where the value is not known.
    EXPECT_EQ(Findings([](Subject& s) {
                  const auto rule = s.code.NewLabel();
                  s.code.Emit(Opcode::kCall, {rule});
                  s.Keep(3);
                  s.code.Emit(Opcode::kCall, {rule});
                  s.Empty();
                  s.code.Emit(Opcode::kRet);
                  s.code.Bind(rule);
                  s.code.Emit(Opcode::kBit0);
              }),
              "");
}

TEST(CsnVerifierCounts, AMovedChoiceComesBackWithOtherTags) {
    // The rule moves its caller's choice to where the tag is a position.
    for (const bool commits : {false, true}) {
        Subject subject;
        const auto rule = subject.code.NewLabel();
        const auto end = subject.code.NewLabel();
        subject.Keep(3);
        subject.code.Emit(Opcode::kAlt, {Assembler::Branch(end, false)});
        subject.code.Emit(Opcode::kCall, {rule});
        subject.code.Emit(Opcode::kPop);
        subject.code.Bind(end);
        subject.Empty();
        subject.code.Emit(Opcode::kRet);
        subject.code.Bind(rule);
        subject.code.Emit(Opcode::kTagPos, {kTag});
        if (commits) {
            subject.code.Emit(Opcode::kCommit);
        }
        subject.code.Emit(Opcode::kRetTags);
        EXPECT_EQ(subject.Report().findings.empty(), !commits);
    }
}

TEST(CsnVerifierCounts, RulesThatCallThemselves) {
    // R ::= { 0 <n : bit (3)> { ... } * n R | 1 }: known in each call, whatever the call around it
    // has set.
    Subject subject;
    auto& code = subject.code;
    const auto rule = code.BindNew();
    const auto second = code.NewLabel();
    code.Emit(Opcode::kAlt, {Assembler::Branch(second, false)});
    code.Emit(Opcode::kBit0);
    subject.Keep(3);
    subject.Empty();
    code.Emit(Opcode::kCall, {rule});
    code.Emit(Opcode::kPop);
    code.Emit(Opcode::kRetTags);
    code.Bind(second);
    code.Emit(Opcode::kBit1);
    code.Emit(Opcode::kRetTags);
    EXPECT_EQ(subject.Report().findings.size(), 1U);  // a tag in each call: they do not fit
    EXPECT_EQ(subject.Report().findings[0].text, "Structure may keep more than 32 tags at a time");
}

}  // namespace
}  // namespace quorvane::csn
