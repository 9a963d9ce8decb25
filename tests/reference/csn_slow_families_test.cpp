// The structures of all families beside the slow machine: any bits, the bits of any record, such
// bits cut and changed, and records at random. What is stored of the fields and how a record
// supplies them is judged too.

#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

#include "bits/arena.h"
#include "csn/csn_record.h"
#include "families/family.h"
#include "fuzz/random_record.h"
#include "reference/csn_grammar.h"
#include "reference/csn_slow_beside.h"
#include "reference/csn_slow_random.h"
#include "reference/csn_slow_record.h"
#include "support/sanitized.h"

namespace quorvane::reference {
namespace {

struct Tally {
    int structures = 0;
    int decoded = 0;  // to the end
    int encoded = 0;
};

class StructureRuns {
  public:
    StructureRuns(const families::Family& family, const csn::CsnStructure& structure,
                  const SlowProgram& slow, std::uint32_t seed)
        : tables_(family.types), structure_(structure), slow_(slow), random_(seed) {
        for (const std::uint16_t type : tables_.named) {
            type_ = tables_.NameOf(tables_.types[type]) == structure.name ? type : type_;
        }
    }

    void Round(Tally& tally) {
        Decode(RandomOctets(random_, Below(random_, 40)), tally);
        const std::vector<std::uint8_t> input = RandomOctets(random_, Below(random_, 600));
        fuzz::Input source(input.data(), input.size());
        bits::Cell record{};
        fuzz::FillRecord(tables_, type_, source, arena_, record);
        std::vector<std::uint8_t> octets = Encode(record, tally);
        AskAtRandom();
        Decode(octets, tally);
        FlipBits(random_, 1 + Below(random_, 3), octets);
        Decode(octets, tally);
        octets.resize(Below(random_, static_cast<std::uint32_t>(octets.size()) + 1));
        Decode(octets, tally);
        arena_.Reset();
    }

  private:
    /// The machine, then the record that it gives, which is encoded again.
    void Decode(const std::vector<std::uint8_t>& octets, Tally& tally) {
        const bits::BitReader reader(octets.data(), static_cast<std::int64_t>(octets.size()));
        const auto start =
            static_cast<std::int32_t>(Below(random_, 4) == 0 ? Below(random_, 8) : 0);
        const auto length = static_cast<std::int32_t>(octets.size() * 8) - start;
        csn::CsnMachine machine;
        csn::CsnMachineInit(machine, *structure_.program, structure_.label, reader, start, length);
        machine.rootTag = structure_.rootTag;
        bits::Outcome result = 0;
        ASSERT_EQ(DifferenceOfSlow(machine, nullptr, result, &slow_), "");

        SlowMachine slow(slow_, structure_.label, AllBitsOf(reader), start, length, false);
        slow.rootTag = structure_.rootTag;
        const std::int32_t taken = slow.Run({});
        SlowValue expected;
        const std::int32_t stored = StoreRecords(structure_, slow, expected);
        bits::Cell cell{};
        EXPECT_EQ(csn::DecodeCsn(structure_, reader, arena_, start, length, cell).Bits(),
                  stored < 0 ? stored : taken);
        ASSERT_EQ(TextOf(ValueOf(tables_, type_, cell)), TextOf(expected));
        if (taken >= 0) {
            ++tally.decoded;
            Encode(cell, tally);
        }
    }

    /// What is written of a record, also with little room.
    std::vector<std::uint8_t> Encode(const bits::Cell& record, Tally& tally) {
        std::vector<std::uint8_t> octets(Below(random_, 8) == 0 ? Below(random_, 40) : 300, 0x55);
        const std::vector<std::uint8_t> before = octets;
        const auto size = static_cast<std::int64_t>(octets.size());
        const auto start =
            static_cast<std::int32_t>(Below(random_, 4) == 0 ? Below(random_, 8) : 0);
        bits::BitWriter writer(octets.data(), size);
        const bits::Outcome result = csn::EncodeCsn(structure_, writer, start, record);

        const SlowValue value = ValueOf(tables_, type_, record);
        SlowMachine slow(slow_, structure_.label, AllBitsOf(bits::BitReader(before.data(), size)),
                         start, 0, true);
        slow.rootTag = structure_.rootTag;
        EXPECT_EQ(slow.Run(SourceOf(structure_, value)), result.Bits()) << TextOf(value);
        EXPECT_EQ(slow.buffer, AllBitsOf(writer.Reader())) << TextOf(value);
        EXPECT_EQ(slow.overflowed, writer.Overflowed()) << TextOf(value);
        if (result.Failed()) {
            return {};
        }
        ++tally.encoded;
        octets.resize(std::min(octets.size(), static_cast<std::size_t>(result.Bits() + 7) / 8));
        return octets;
    }

    void AskAtRandom() {
        std::vector<std::uint8_t> octets(60, 0x55);
        bits::BitWriter writer(octets.data(), static_cast<std::int64_t>(octets.size()));
        csn::CsnMachine machine;
        csn::CsnMachineInit(machine, *structure_.program, structure_.label, writer, 0);
        machine.rootTag = structure_.rootTag;
        std::mt19937 answers(static_cast<std::uint32_t>(random_()));
        machine.userRecord = &answers;
        bits::Outcome result = 0;
        ASSERT_EQ(DifferenceOfSlow(machine, RandomSource, result, &slow_), "");
    }

    const reflect::TypeTables& tables_;
    const csn::CsnStructure& structure_;
    const SlowProgram& slow_;
    std::mt19937 random_;
    std::uint16_t type_ = 0;
    bits::Arena arena_;
};

TEST(CsnSlowMachine, RunsTheStructuresOfAllFamilies) {
    constexpr int kRounds = test::kSanitized ? 8 : 40;
    Tally tally;
    for (const families::Family* family : families::AllFamilies()) {
        if (family->codec.structures.empty()) {
            continue;
        }
        const Grammar grammar(*family);
        ASSERT_EQ(grammar.Errors(), "");
        const FunctionNames names{grammar.Image().actions, grammar.Image().functions};
        const SlowProgram slow = SlowProgramOf(*family->codec.structures.front().program, names);
        for (const csn::CsnStructure& structure : family->codec.structures) {
            SCOPED_TRACE(std::string(structure.name) +
                         ", QUORVANE_TEST_SEED=" + std::to_string(FirstSeed()));
            ++tally.structures;
            StructureRuns runs(*family, structure, slow, FirstSeed());
            for (int round = 0; round < kRounds; ++round) {
                runs.Round(tally);
                ASSERT_FALSE(testing::Test::HasFailure());
            }
        }
    }
    EXPECT_GE(tally.decoded, 2 * kRounds * tally.structures);
    EXPECT_GE(tally.encoded, 2 * kRounds * tally.structures);
}

}  // namespace
}  // namespace quorvane::reference
