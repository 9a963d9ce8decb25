// The machine beside the slow one, in both directions: random images that the verifier accepts,
// sound ones and damaged ones, over random bits and with a source that answers anything, with
// little room on the stack, in the lists and of instructions.

#include <gtest/gtest.h>
#include <initializer_list>
#include <random>
#include <string>
#include <vector>

#include "csn/assembly/disassembler.h"
#include "csn/functions.h"
#include "fuzz/random_image.h"
#include "reference/csn_slow_beside.h"
#include "reference/csn_slow_random.h"
#include "support/sanitized.h"

namespace quorvane::reference {
namespace {

namespace functions = csn::functions;
using csn::Opcode;

/// The functions of random images and what they are called.
template <typename Function>
struct Named {
    Function function;
    std::string name;
};
#define QUORVANE_NAMED(...) \
    { functions::__VA_ARGS__, #__VA_ARGS__ }

const std::vector<Named<csn::CsnAction>>& KnownActions() {
    static const std::vector<Named<csn::CsnAction>> kActions = {
        QUORVANE_NAMED(NotePosition<1>),
        QUORVANE_NAMED(NotePositionAhead<2, 5>),
        QUORVANE_NAMED(OpenScopeAtLengthEnd<3, 4>),
        QUORVANE_NAMED(OpenScopeAtLengthStart<3, 4, 2>),
        QUORVANE_NAMED(OpenScopeAtCodedLength<3>),
        QUORVANE_NAMED(OpenFixedScope<3, 9>),
        QUORVANE_NAMED(CloseScope<3>),
        QUORVANE_NAMED(WriteBackLength<1, 8, 0, 8>),
        QUORVANE_NAMED(ClipToSpan<1, 6>),
        QUORVANE_NAMED(JumpOverElement<1, 4, 4>),
        QUORVANE_NAMED(KeepCount<2, 3>),
        QUORVANE_NAMED(SetCount<4, functions::Constant<0>>),
        QUORVANE_NAMED(AddCount<4, functions::Constant<1>>),
        QUORVANE_NAMED(SetCount<2, functions::Ones<4>>),
        QUORVANE_NAMED(AddCount<4, functions::OnesOf<2>>),
        QUORVANE_NAMED(RaiseMaximum<2, 3>),
        QUORVANE_NAMED(RejectZero<3>),
        QUORVANE_NAMED(RejectZeroAndOnes<3>),
    };
    return kActions;
}

const std::vector<Named<csn::CsnValueFunction>>& KnownFunctions() {
    static const std::vector<Named<csn::CsnValueFunction>> kFunctions = {
        QUORVANE_NAMED(BitsToOctetBoundary),
        QUORVANE_NAMED(TagPlus<2, -1>),
        QUORVANE_NAMED(RestOf<2, 6>),
        QUORVANE_NAMED(OctetsToBits<2>),
        QUORVANE_NAMED(BitsLeftInSpan<1, 16>),
        QUORVANE_NAMED(BitsLeftInSpanOrZeroBased<1, 16>),
        QUORVANE_NAMED(BitsLeftInSpanIfAny<1, 16>),
        QUORVANE_NAMED(BitsLeftToEnd<3>),
    };
    return kFunctions;
}

template <typename Function>
std::string NameOf(const std::vector<Named<Function>>& known, Function function) {
    for (const Named<Function>& entry : known) {
        if (entry.function == function) {
            return entry.name;
        }
    }
    return "Declared<2, Few>";  // what random images declare
}

FunctionNames NamesOf(const fuzz::Image& image) {
    FunctionNames names;
    for (const csn::CsnAction action : image.actions) {
        names.actions.push_back(NameOf(KnownActions(), action));
    }
    for (const csn::CsnValueFunction function : image.functions) {
        names.functions.push_back(NameOf(KnownFunctions(), function));
    }
    return names;
}

/// Puts in front of the entry what takes up room: fields in the list, tags, and calls on the stack.
/// Gives the new entry.
std::uint32_t TakeRoom(fuzz::Image& image, std::uint32_t label, std::mt19937& random) {
    std::vector<std::uint8_t>& code = image.code;
    const auto add = [&](Opcode opcode, std::initializer_list<std::uint8_t> operands) {
        code.push_back(static_cast<std::uint8_t>(opcode));
        code.insert(code.end(), operands);
    };
    const auto upTo = [&](std::uint32_t most) {
        return Below(random, 2) == 0 ? most - Below(random, 16) : Below(random, most + 1);
    };
    std::uint32_t target = label;
    const auto call = [&] {
        add(Opcode::kCall, {static_cast<std::uint8_t>(0x80U | target >> 7U),
                            static_cast<std::uint8_t>(target & 0x7FU)});
        add(Opcode::kRet, {});
    };
    const auto innermost = static_cast<std::uint32_t>(code.size());
    for (std::uint32_t fields = Below(random, 3) == 0 ? upTo(128) : 0; fields > 0; --fields) {
        add(Opcode::kField, {1, 0});
    }
    for (std::uint32_t tags = Below(random, 3) == 0 ? upTo(32) : 0; tags > 0; --tags) {
        add(Opcode::kTagPos, {static_cast<std::uint8_t>(1 + Below(random, 9))});
    }
    call();
    target = innermost;
    for (std::uint32_t calls = Below(random, 3) == 0 ? upTo(255) : 0; calls > 0; --calls) {
        const auto outer = static_cast<std::uint32_t>(code.size());
        call();
        target = outer;
    }
    return target;
}

/// How often runs came to what.
struct Tally {
    int images = 0;
    int ended = 0;
    int failed = 0;
    int aborted = 0;
    std::int64_t records = 0;
};

class RandomRuns {
  public:
    explicit RandomRuns(std::uint32_t seed) : random_(seed) {}

    /// A random image, damaged or not, and some runs if it is sound. Empty, or what differs.
    std::string Image(Tally& tally) {
        std::vector<std::uint8_t> recipe(40 + Below(random_, 400));
        for (std::uint8_t& octet : recipe) {
            octet = static_cast<std::uint8_t>(random_());
        }
        fuzz::Input input(recipe.data(), recipe.size());
        fuzz::Image image = fuzz::MakeImage(input);
        if (Below(random_, 3) == 0) {
            std::vector<std::uint8_t> changes(20);
            for (std::uint8_t& octet : changes) {
                octet = static_cast<std::uint8_t>(random_());
            }
            fuzz::Input damage(changes.data(), changes.size());
            fuzz::DamageImage(damage, image);
        }
        if (!image.Verify().findings.empty()) {
            return {};
        }
        ++tally.images;
        const std::uint32_t label = image.entries.front().label;
        const std::uint32_t crowded = TakeRoom(image, label, random_);
        const csn::CsnProgram program = image.Program();
        const SlowProgram slow = SlowProgramOf(program, NamesOf(image));
        const Subject subject{program, slow, image.entries.front().rootTag};
        for (int run = 0; run < kRuns; ++run) {
            const bool encode = Below(random_, 2) == 0;
            const std::uint32_t entry = Below(random_, 4) == 0 ? crowded : label;
            const std::string difference = Run(subject, entry, encode, tally);
            if (!difference.empty()) {
                return (encode ? "encoding from " : "decoding from ") + std::to_string(entry) +
                       "\n" + difference + csn::Disassemble(image.code);
            }
        }
        return {};
    }

  private:
    static constexpr int kRuns = 12;

    struct Subject {
        const csn::CsnProgram& program;
        const SlowProgram& slow;
        std::uint16_t rootTag;
    };

    std::string Run(const Subject& subject, std::uint32_t entry, bool encode, Tally& tally) {
        std::vector<std::uint8_t> octets = RandomOctets(random_, Below(random_, 24));
        auto start = static_cast<std::int32_t>(Below(random_, 8));
        if (!encode && !written_.empty() && Below(random_, 2) == 0) {
            octets = written_;
            start = writtenFrom_;
            FlipBits(random_, Below(random_, 3), octets);
        }
        const auto size = static_cast<std::int64_t>(octets.size());
        bits::BitWriter writer(octets.data(), size);
        csn::CsnMachine machine;
        if (encode) {
            csn::CsnMachineInit(machine, subject.program, entry, writer, start);
        } else {
            // The end of what may be decoded is sometimes short of the octets, sometimes behind.
            const auto length = static_cast<std::int32_t>(size * 8 - start + 4) -
                                static_cast<std::int32_t>(Below(random_, 16));
            csn::CsnMachineInit(machine, subject.program, entry, writer.Reader(), start, length);
        }
        const std::uint64_t instructions = Below(random_, 8) == 0 ? Below(random_, 200) : 3000;
        machine.rootTag = Below(random_, 8) == 0 ? csn::kNoRecords : subject.rootTag;
        std::mt19937 answers(static_cast<std::uint32_t>(random_()));
        machine.userRecord = &answers;
        const bool hasCallback = Below(random_, 8) != 0 && (encode || Below(random_, 3) == 0);
        bits::Outcome result = 0;
        std::string difference = DifferenceOfSlow(machine, hasCallback ? RandomSource : nullptr,
                                                  result, &subject.slow, instructions);
        ++(result.Failed() ? tally.failed : tally.ended);
        tally.aborted += (machine.flags & csn::kFlagAbort) != 0 ? 1 : 0;
        tally.records += machine.recordCount;
        if (encode && !result.Failed()) {
            written_ = octets;
            writtenFrom_ = start;
        }
        return difference;
    }

    std::mt19937 random_;
    std::vector<std::uint8_t> written_;  // by the run before that encoded
    std::int32_t writtenFrom_ = 0;       // its first bit
};

TEST(CsnSlowMachine, RunsRandomImagesAsTheMachine) {
    constexpr int kImages = test::kSanitized ? 2000 : 12000;
    Tally tally;
    const std::uint32_t first = FirstSeed();
    for (std::uint32_t seed = first; seed < first + kImages; ++seed) {
        ASSERT_EQ(RandomRuns(seed).Image(tally), "") << "QUORVANE_TEST_SEED=" << seed;
    }
    // Enough of them are sound, and come to each end.
    EXPECT_GT(tally.images, kImages / 10);
    EXPECT_GT(tally.ended, kImages);
    EXPECT_GT(tally.failed, kImages / 3);
    EXPECT_GT(tally.aborted, kImages / 25);
    EXPECT_GT(tally.records, 4 * kImages);
}

}  // namespace
}  // namespace quorvane::reference
