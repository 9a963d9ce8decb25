// Random images, sound ones and ones with octets changed: what the verifier lets pass, the machine
// runs without harm and within the bounds that the verifier gives, and the plan as the machine.
// The sanitizers watch.

#include <algorithm>
#include <gtest/gtest.h>
#include <random>

#include "csn/assembly/disassembler.h"
#include "csn/assembly/verifier.h"
#include "csn/functions.h"
#include "csn/machine.h"
#include "support/plain_decode.h"
#include "unit/csn_test_support.h"

namespace quorvane::csn::test {
namespace {

constexpr std::uint64_t kCeiling = 5000;  // instructions of a run
constexpr std::uint16_t kFieldTags = 6;   // tags 10 to 15, each under every parent

/// Watches the tags from inside a run, and the stack if it is that of the machine.
struct Watch {
    const CsnMachine* machine = nullptr;
    std::int32_t deepest = 0;
    std::int32_t mostTags = 0;
};
Watch watch;

void Look(CsnRun& run) {
    if (&run == watch.machine) {
        watch.deepest = std::max(watch.deepest, watch.machine->stackDepth);
    }
    watch.mostTags = std::max(watch.mostTags, run.tagCount);
}

/// Builds balanced images from all constructs.
class Generator {
  public:
    explicit Generator(std::uint32_t seed) : random_(seed) {
        for (std::uint16_t tag = 10; tag < 10 + kFieldTags; ++tag) {
            image.fields.push_back(tag);
            fields_.push_back(static_cast<std::uint32_t>(image.fields.size()));
            for (std::uint16_t parent = 9; parent < 10 + kFieldTags; ++parent) {
                image.fields.push_back(parent == 9 ? static_cast<std::uint16_t>(kRoot) : parent);
                image.fields.push_back(tag);
            }
        }
        for (const CsnAction action :
             {CsnAction{Look}, CsnAction{functions::OpenScopeAtLengthEnd<1, 4>},
              CsnAction{functions::CloseScope<1>}, CsnAction{functions::ClipToSpan<1, 24>},
              CsnAction{functions::JumpOverElement<1, 8, 9>}, CsnAction{functions::RejectZero<4>},
              CsnAction{functions::WriteBackLength<1, 7, 0, 7>},
              CsnAction{functions::RaiseMaximum<1, 2>}}) {
            image.Action(action);
        }
        for (const CsnValueFunction function :
             {CsnValueFunction{functions::BitsToOctetBoundary},
              CsnValueFunction{functions::TagPlus<1, 1>},
              CsnValueFunction{functions::OctetsToBits<2>},
              CsnValueFunction{functions::BitsLeftInSpan<1, 24>}}) {
            image.Function(function);
        }
        for (int rule = 0; rule < 3; ++rule) {
            rules_.push_back(image.code.NewLabel());
        }
        for (const auto rule : rules_) {
            image.code.Bind(rule);
            Description(4);
            image.code.Emit(Chance(2) ? Opcode::kRet : Opcode::kRetTags);
        }
    }

    Image image;

  private:
    std::uint32_t Below(std::uint32_t bound) {
        return static_cast<std::uint32_t>(random_() % bound);
    }
    bool Chance(std::uint32_t oneIn) { return Below(oneIn) == 0; }
    std::uint32_t AnyField() { return fields_[Below(kFieldTags)]; }

    void Description(int depth) {
        const std::uint32_t items = Below(3) + 1;
        for (std::uint32_t item = 0; item < items; ++item) {
            Item(depth);
        }
    }

    void Item(int depth) {
        switch (depth > 0 ? Below(16) : Below(8)) {
            case 0:
                return image.code.Emit(static_cast<Opcode>(0x02 + Below(4)));
            case 1:
                return image.code.Emit(Opcode::kSkip, {Below(9)});
            case 2: {
                const std::uint32_t width = Below(4) + 1;
                return image.code.Emit(Opcode::kLit,
                                       {Assembler::Literal(Below(1U << width), width)});
            }
            case 3:
                return image.code.Emit(Opcode::kField, {AnyField(), Below(10)});
            case 4:
                return image.code.Emit(Opcode::kFieldLit,
                                       {AnyField(), Assembler::Literal(Below(2), 1)});
            case 5:
                return image.code.Emit(static_cast<Opcode>(0x09 + Below(3)), {Below(8)});
            case 6:
                image.code.Emit(Opcode::kTagPos, {Below(3)});
                return image.code.Emit(Opcode::kAct, {0});
            case 7:
                return Comparison();
            case 8:
            case 9:
                return Choice(depth - 1);
            case 10:
            case 11:
                return Repetition(depth - 1);
            case 12:
                return Group(depth - 1);
            case 13:
                return SecondReading(depth - 1);
            case 14:
                return Truncation(depth - 1);
            default:
                return image.code.Emit(Opcode::kCall, {rules_[Below(3)]});
        }
    }

    void Comparison() {
        switch (Below(5)) {
            case 0:
                return image.code.Emit(Opcode::kValEq, {Below(3), Below(4)});
            case 1:
                return image.code.Emit(Opcode::kValRange, {Below(3), 0, Below(9)});
            case 2:
                return image.code.Emit(Opcode::kValEqFn, {Below(3), Below(4)});
            case 3:
                return image.code.Emit(Opcode::kValRangeFn, {Below(3), Below(4), Below(4)});
            default:
                return image.code.Emit(Opcode::kAtEnd);
        }
    }

    void Choice(int depth) {
        const auto join = image.code.NewLabel();
        const std::uint32_t branches = Below(3) + 1;
        for (std::uint32_t branch = 0; branch < branches; ++branch) {
            const auto next = image.code.NewLabel();
            image.code.Emit(Opcode::kAlt, {Assembler::Branch(next, branch + 1 == branches)});
            Description(depth);
            image.code.Emit(Opcode::kJmp, {join});
            image.code.Bind(next);
        }
        image.code.Emit(Opcode::kFail);
        image.code.Bind(join);
        image.code.Emit(Opcode::kPop);
    }

    void Repetition(int depth) {
        const auto end = image.code.NewLabel();
        const auto exit = Assembler::Exit(end, Chance(2));
        switch (Below(9)) {
            case 0:
                image.code.Emit(Opcode::kRep, {exit, Below(4)});
                break;
            case 1:
                image.code.Emit(Opcode::kRepBit, {exit, Below(3), Below(3)});
                break;
            case 2:
                image.code.Emit(Opcode::kRepTag, {exit, Below(3)});
                break;
            case 3:
                image.code.Emit(Opcode::kRepAny, {exit});
                break;
            case 4:
                image.code.Emit(Opcode::kRepMore, {exit});
                break;
            case 5:
                image.code.Emit(Opcode::kRepRange, {exit, Below(3), Below(5)});
                break;
            case 6:
                image.code.Emit(Opcode::kRepFn, {exit, Below(4)});
                break;
            case 7:
                image.code.Emit(Opcode::kRepFn2, {exit, Below(4), Below(4)});
                break;
            default:
                image.code.Emit(Opcode::kRepFnEnc, {exit, Below(4)});
                break;
        }
        const auto body = image.code.BindNew();
        image.code.Emit(Opcode::kSkip, {1});
        if (Chance(4)) {
            image.code.Emit(Opcode::kCount, {Below(3)});
        }
        Description(depth);
        image.code.Emit(Opcode::kLoop, {body});
        image.code.Bind(end);
    }

    void Group(int depth) {
        const std::uint32_t field = AnyField();
        const bool sized = Chance(2);
        image.code.Emit(Opcode::kBegin, {Assembler::Delimiter(field, sized)});
        Description(depth);
        if (Chance(2)) {
            image.code.Emit(Opcode::kEnd, {Assembler::Delimiter(field, sized)});
        } else {
            image.code.Emit(Opcode::kEndTag, {Assembler::Delimiter(field, sized), Below(3)});
        }
    }

    void SecondReading(int depth) {
        image.code.Emit(Opcode::kMark);
        Description(depth);
        if (Chance(2)) {
            image.code.Emit(Opcode::kRescan);
            Description(depth);
            image.code.Emit(Opcode::kRescanEnd);
        } else {
            const auto behind = image.code.NewLabel();
            image.code.Emit(Opcode::kExclude, {behind});
            Description(depth);
            image.code.Emit(Opcode::kExcludeEnd);
            image.code.Bind(behind);
        }
    }

    void Truncation(int depth) {
        const auto end = image.code.NewLabel();
        image.code.Emit(Opcode::kAlt, {Assembler::Branch(end, false)});
        Description(depth);
        image.code.Emit(Opcode::kCommit);
        const auto over = image.code.NewLabel();
        image.code.Emit(Opcode::kSkipEnc, {over});
        Description(depth);
        image.code.Bind(over);
        image.code.Emit(Opcode::kPop);
        image.code.Bind(end);
    }

    std::mt19937 random_;
    std::vector<std::uint32_t> fields_;
    std::vector<Assembler::Label> rules_;
};

/// Writes what it is asked for, more or less.
std::int32_t RandomSource(CsnFieldEvent& event) {
    auto& random = *static_cast<std::mt19937*>(event.machine->userRecord);
    const auto number = static_cast<std::uint32_t>(random());
    if (event.machine->writer == nullptr || number % 8 == 0) {
        return static_cast<std::int32_t>(number >> 8 & 1U);
    }
    const auto width = static_cast<std::int32_t>(number >> 16 & 7U);
    const std::int32_t length = number % 3 == 0 ? width : event.bitLength;
    event.machine->writer->Write(event.bitPos, number >> 4, length);
    event.bitLength = length;
    return kGoOn;
}

void Check(const CsnMachine& machine, const VerifierNeed& need) {
    ASSERT_GE(machine.stackDepth, 0);
    ASSERT_LE(machine.stackDepth, kMostStackEntries);
    ASSERT_GE(machine.recordCount, 0);
    ASSERT_LE(machine.recordCount, kMostRecords);
    ASSERT_LE(watch.mostTags, static_cast<std::int32_t>(need.tags));
    if (need.stackEntries) {
        ASSERT_LE(watch.deepest, static_cast<std::int32_t>(*need.stackEntries));
    }
    for (std::int32_t index = 0; index < machine.recordCount; ++index) {
        ASSERT_TRUE(machine.records[index].parent == nullptr ||
                    machine.records[index].parent < &machine.records[index]);
    }
}

class Runs {
  public:
    /// Runs verified code both ways over random bits.
    void Both(const CsnProgram& program, const VerifierNeed& need, std::mt19937& random) {
        const auto octetCount = random() % 12;
        std::vector<std::uint8_t> octets;
        for (std::size_t octet = 0; octet < octetCount; ++octet) {
            octets.push_back(static_cast<std::uint8_t>(random()));
        }
        const auto size = static_cast<std::int64_t>(octets.size());
        CsnMachine machine;
        CsnMachineInit(machine, program, 0, bits::BitReader(octets.data(), size),
                       static_cast<std::int32_t>(random() % 8),
                       static_cast<std::int32_t>(random() % 96));
        const bool listens = random() % 4 == 0;
        Run(machine, need, listens ? RandomSource : nullptr, random);
        bits::BitWriter writer(octets.data(), size);
        CsnMachineInit(machine, program, 0, writer, 0);
        Run(machine, need, RandomSource, random);
    }

    int ended = 0;   // runs that came to their end
    int failed = 0;  // runs that failed

  private:
    void Run(CsnMachine& machine, const VerifierNeed& need, CsnCallback callback,
             std::mt19937& random) {
        watch = {&machine};
        machine.rootTag = kRoot;
        machine.instructionsLeft = kCeiling;
        machine.userRecord = &random;
        bits::Outcome result = 0;
        if (callback == nullptr) {
            ASSERT_EQ(DifferenceOfPlan(machine, 0, result), "");
        } else {
            result = CsnMachineRun(machine, callback);
        }
        Check(machine, need);
        if (result == kSyntaxError) {
            ++failed;
            return;
        }
        ++ended;
        ASSERT_EQ(machine.stackDepth, 0);
        ASSERT_EQ(machine.fieldDepth, 0);
    }
};

VerifierInput InputOf(Image& image, const std::vector<std::uint8_t>& code) {
    VerifierInput input;
    input.code = code;
    input.fieldTable = image.fields;
    using Effect = VerifierAction::Effect;
    input.actions.assign(image.actions.size(), {Effect::kNone});
    input.actions[1] = {Effect::kAdds, 1};
    input.actions[7] = {Effect::kChanges, 1, 3};
    input.functions = {VerifierBound{7}, VerifierBound{1, 1, 1}, VerifierBound{0, 2, 8}, {}};
    input.entries.push_back({"Random", 0, kRoot, 10, kFieldTags});
    return input;
}

TEST(CsnRandomImage, RunsWhatIsVerified) {
    Runs runs;
    int verified = 0;
    for (std::uint32_t seed = 1; seed <= 300; ++seed) {
        Generator generator(seed);
        const std::vector<std::uint8_t> code = generator.image.Octets();
        ASSERT_TRUE(generator.image.code.Errors().empty());
        const VerifierReport report = Verify(InputOf(generator.image, code));
        if (!report.findings.empty()) {
            continue;
        }
        ++verified;
        std::mt19937 random(seed);
        for (int message = 0; message < 6; ++message) {
            runs.Both(generator.image.Program(), report.needs[0], random);
            ASSERT_FALSE(HasFatalFailure()) << "seed " << seed << "\n" << Disassemble(code);
        }
    }
    // Enough of them get that far, and do so with both outcomes.
    EXPECT_GT(verified, 50);
    EXPECT_GT(runs.ended, 100);
    EXPECT_GT(runs.failed, 100);
}

TEST(CsnRandomImage, RunsWhatIsVerifiedAfterChanges) {
    Runs runs;
    int verified = 0;
    for (std::uint32_t seed = 1; seed <= 80; ++seed) {
        Generator generator(seed);
        const std::vector<std::uint8_t> sound = generator.image.Octets();
        std::mt19937 random(seed);
        for (int change = 0; change < 30; ++change) {
            std::vector<std::uint8_t> code = sound;
            for (auto changes = random() % 3 + 1; changes > 0; --changes) {
                code[random() % code.size()] = static_cast<std::uint8_t>(random());
            }
            const VerifierReport report = Verify(InputOf(generator.image, code));
            if (!report.findings.empty()) {
                continue;
            }
            ++verified;
            CsnProgram program = generator.image.Program();
            program.code = code.data();
            program.codeSize = static_cast<std::uint32_t>(code.size());
            const Plan plan = MakePlan(code, generator.image.fields);
            if (!plan.error.empty()) {
                continue;  // an operand that no description has
            }
            program.plan = plan.steps.data();
            runs.Both(program, report.needs[0], random);
            ASSERT_FALSE(HasFatalFailure()) << "seed " << seed << "\n" << Disassemble(code);
        }
    }
    EXPECT_GT(verified, 50);
}

}  // namespace
}  // namespace quorvane::csn::test
