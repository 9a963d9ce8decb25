// Encoding beside the writer that walks the syntax tree: random grammars and the structures of all
// families, with records that were decoded and records at random.

#include <algorithm>
#include <gtest/gtest.h>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "bits/arena.h"
#include "bits/record.h"
#include "compiler/model.h"
#include "csn/csn_record.h"
#include "families/family.h"
#include "reference/csn_grammar.h"
#include "reference/csn_random_grammar.h"
#include "reference/csn_reference_writer.h"
#include "reference/csn_slow_beside.h"
#include "reference/csn_slow_random.h"
#include "reference/csn_slow_record.h"
#include "support/print_outcome.h"
#include "support/sanitized.h"

namespace quorvane::reference {
namespace {

/// A value of the type; the deeper, the fewer items.
SlowValue RandomValue(const compiler::TypeModel& type, std::mt19937& random, int depth = 0) {
    SlowValue value;
    switch (type.kind) {
        case reflect::TypeKind::kInteger:
        case reflect::TypeKind::kEnumerated:
            value.number = static_cast<std::uint32_t>(random());
            value.number &= Below(random, 2) == 0 ? 0xFFFFFFFFU : 3U;
            break;
        case reflect::TypeKind::kBinary: {
            const std::uint32_t most = Below(random, 3) == 0 ? type.size : std::min(type.size, 4U);
            for (std::uint32_t left = Below(random, most + 1); left > 0; --left) {
                value.bits += Below(random, 2) == 0 ? '0' : '1';
            }
            break;
        }
        case reflect::TypeKind::kSequence: {
            const std::uint32_t most = std::min(type.size, depth == 0 ? 4U : 2U);
            for (std::uint32_t left = Below(random, most + 1); left > 0; --left) {
                value.items.push_back(RandomValue(*type.item, random, depth + 1));
            }
            break;
        }
        case reflect::TypeKind::kStruct:
        case reflect::TypeKind::kUnion:
            for (const compiler::ElementModel& element : type.elements) {
                const bool there = !element.optional || Below(random, 2) == 0;
                value.members.push_back(there ? RandomValue(*element.type, random, depth + 1)
                                              : SlowValue{});
                value.members.back().present = there && element.optional;
            }
            break;
    }
    return value;
}

/// The library's record of a value.
void Fill(const compiler::TypeModel& type, const SlowValue& value, bits::Arena& arena,
          bits::Cell& cell) {
    cell.present = value.present;
    switch (type.kind) {
        case reflect::TypeKind::kInteger:
        case reflect::TypeKind::kEnumerated:
            cell.number = value.number;
            break;
        case reflect::TypeKind::kBinary:
            cell.number = static_cast<std::uint32_t>(value.bits.size());
            cell.octets = arena.AllocateZeroed<std::uint8_t>((value.bits.size() + 7) / 8);
            for (std::size_t bit = 0; bit < value.bits.size(); ++bit) {
                const unsigned mask = value.bits[bit] == '1' ? 0x80U >> bit % 8 : 0U;
                cell.octets[bit / 8] = static_cast<std::uint8_t>(cell.octets[bit / 8] | mask);
            }
            break;
        case reflect::TypeKind::kSequence:
            EXPECT_EQ(bits::SetSize(arena, cell, static_cast<std::int32_t>(value.items.size()),
                                    type.size),
                      0);
            for (std::size_t item = 0; item < value.items.size(); ++item) {
                Fill(*type.item, value.items[item], arena, cell.cells[item]);
            }
            break;
        case reflect::TypeKind::kStruct:
        case reflect::TypeKind::kUnion:  // of which structures of CSN.1 have none
            for (std::size_t index = 0; index < value.members.size(); ++index) {
                const auto count = static_cast<std::uint32_t>(type.elements.size());
                Fill(*type.elements[index].type, value.members[index], arena,
                     bits::StructCells(arena, cell, count)[index]);
            }
            break;
    }
}

struct Tally {
    int structures = 0;
    int written = 0;
    int refused = 0;
};

class WriterRuns {
  public:
    WriterRuns(const Grammar& grammar, std::size_t structure, const SlowProgram& slow,
               std::uint32_t seed)
        : writer_(grammar.AllTypes(), grammar.Types(structure)),
          types_(grammar.Types(structure)),
          structure_(grammar.Structure(structure)),
          slow_(slow),
          random_(seed) {}

    /// Empty, or in what the two differ.
    std::string Round(Tally& tally) {
        const std::string difference = Check(RandomValue(*types_.type, random_), tally);
        return difference.empty() ? Check(Decoded(), tally) : difference;
    }

  private:
    SlowValue Decoded() {
        std::vector<bool> bits(Below(random_, 60));
        const std::uint32_t ones = 2 + Below(random_, 5);
        for (std::size_t bit = 0; bit < bits.size(); ++bit) {
            bits[bit] = Below(random_, 8) < ones;
        }
        const auto length = static_cast<std::int32_t>(bits.size());
        SlowMachine machine(slow_, structure_.label, bits, 0, length, false);
        machine.rootTag = structure_.rootTag;
        machine.Run({});
        SlowValue record;
        StoreRecords(structure_, machine, record);
        return record;
    }

    std::string Check(const SlowValue& record, Tally& tally) {
        const auto start =
            static_cast<std::int32_t>(Below(random_, 4) == 0 ? Below(random_, 8) : 0);
        SlowMachine machine(slow_, structure_.label, std::vector<bool>(kRoom), start, 0, true);
        machine.rootTag = structure_.rootTag;
        const std::int32_t result = machine.Run(SourceOf(structure_, record));
        if (machine.abort || machine.instructionsLeft == 0 || machine.overflowed) {
            return {};  // at a limit, of which the tree knows nothing
        }
        std::string encoded = result < 0 ? "nothing" : "";
        for (std::int32_t bit = 0; bit < result; ++bit) {
            encoded += machine.Read(start + bit, 1) != 0 ? '1' : '0';
        }
        const std::string expected = writer_.Write(record, start).value_or("nothing");
        ++(result < 0 ? tally.refused : tally.written);
        const std::string byTheLibrary = Encoded(record, start);
        if (encoded == expected && byTheLibrary == expected) {
            return {};
        }
        return "the record " + TextOf(record) + " from bit " + std::to_string(start) +
               "\nencodes to " + byTheLibrary + "\nby the slow machine " + encoded +
               "\nby the tree " + expected + "\n";
    }

    std::string Encoded(const SlowValue& record, std::int32_t start) {
        arena_.Reset();
        bits::Cell cell{};
        Fill(*types_.type, record, arena_, cell);
        std::vector<std::uint8_t> octets(kRoom / 8);
        bits::BitWriter writer(octets.data(), static_cast<std::int64_t>(octets.size()));
        const bits::Outcome result = csn::EncodeCsn(structure_, writer, start, cell);
        if (result.Failed()) {
            return "nothing";
        }
        const auto from = static_cast<std::size_t>(start);
        return BitsOf(octets, start + static_cast<std::int32_t>(result.Bits())).substr(from);
    }

    static constexpr std::size_t kRoom = 4000;

    ReferenceWriter writer_;
    const compiler::CsnStructureTypes& types_;
    const csn::CsnStructure& structure_;
    const SlowProgram& slow_;
    std::mt19937 random_;
    bits::Arena arena_;
};

SlowProgram SlowImageOf(const Grammar& grammar) {
    return SlowProgramOf(*grammar.Structure().program,
                         {grammar.Image().actions, grammar.Image().functions});
}

/// A repetition with an upper bound is left out: inside of some constructs branches without fields
/// are written up to the bound, whatever the record has left for what follows.
bool HasBoundedRepetition(const std::string& grammar) {
    return grammar.find("* (0..2)") != std::string::npos ||
           grammar.find("* (1..3)") != std::string::npos;
}

TEST(CsnWriter, WritesWhatIsEncodedByRandomGrammars) {
    constexpr int kGrammars = test::kSanitized ? 800 : 4000;
    Tally tally;
    const std::uint32_t first = FirstSeed();
    for (std::uint32_t seed = first; seed < first + kGrammars; ++seed) {
        const std::string text = RandomGrammar(seed).Next();
        const Grammar grammar(text);
        if (HasBoundedRepetition(text) || !grammar.Errors().empty()) {
            continue;
        }
        const SlowProgram slow = SlowImageOf(grammar);
        WriterRuns runs(grammar, 0, slow, seed);
        for (int round = 0; round < 10; ++round) {
            ASSERT_EQ(runs.Round(tally), "") << text << "QUORVANE_TEST_SEED=" << seed;
        }
    }
    EXPECT_GT(tally.written, 2 * kGrammars);
    EXPECT_GT(tally.refused, 2 * kGrammars);
}

TEST(CsnWriter, WritesWhatIsEncodedByTheFamilies) {
    constexpr int kRounds = test::kSanitized ? 20 : 100;
    Tally tally;
    for (const families::Family* family : families::AllFamilies()) {
        if (family->codec.structures.empty()) {
            continue;
        }
        const Grammar grammar(*family);
        ASSERT_EQ(grammar.Errors(), "");
        const SlowProgram slow = SlowImageOf(grammar);
        for (std::size_t structure = 0; structure < grammar.StructureCount(); ++structure) {
            ++tally.structures;
            WriterRuns runs(grammar, structure, slow, FirstSeed());
            for (int round = 0; round < kRounds; ++round) {
                ASSERT_EQ(runs.Round(tally), "") << grammar.Types(structure).type->name
                                                 << ", QUORVANE_TEST_SEED=" << FirstSeed();
            }
        }
    }
    EXPECT_GE(tally.written, kRounds * tally.structures);
}

}  // namespace
}  // namespace quorvane::reference
