// The CSN.1 structures of all families, in both directions: any bits are decoded, any record is
// encoded. What was decoded encodes, and comes back as it was, unless the structure has actions,
// which note lengths that an encoder works out anew, or the record has cut a field to its store.
//
// Input: the structure; whether bits or a record follow; the first bit, or the buffer's size; the
// bits or what the record is made of.

#include <algorithm>

#include "all_structures.h"
#include "csn/csn_record.h"
#include "csn/machine.h"
#include "csn_limits.h"
#include "families/family.h"
#include "fuzz_support.h"
#include "random_record.h"
#include "reach.h"
#include "reflect/convert.h"
#include "support/plain_decode.h"

namespace quorvane {
namespace {

using fuzz::ExactOctets;
using fuzz::Input;
using fuzz::Structure;

/// No description of ours needs more instructions than this for so many bits.
constexpr std::uint64_t CeilingFor(std::int32_t bits) {
    constexpr std::uint64_t kForTheStructure = 2048;
    constexpr std::uint64_t kForEachBit = 16;
    return kForTheStructure + kForEachBit * static_cast<std::uint64_t>(bits);
}

class Check {
  public:
    explicit Check(const Structure& structure)
        : structure_(structure), types_(structure.family->types) {}

    void Bits(std::span<const std::uint8_t> octets, std::int32_t first, std::int32_t count) {
        const bits::BitReader reader(octets.data(), static_cast<std::int64_t>(octets.size()));
        CountSteps(reader, first, count);
        bits::Cell cell{};
        const bits::Outcome result =
            csn::DecodeCsn(*structure_.csn, reader, arena_, first, count, cell);
        fuzz::ReachOfThisRun().NoteValue(types_, structure_.type, cell);
        bits::Cell plain{};
        Require(csn::test::DecodePlainly(*structure_.csn, reader, arena_, first, count, plain) ==
                        result &&
                    Same(cell, plain, true),
                "the plan differs from the machine");
        if (!result.Failed()) {
            BackAgain(cell, first % 8, octets.size() + kSpare);
        }
    }

    void Record(const bits::Cell& cell, std::size_t room) {
        const ExactOctets octets({}, room);
        bits::BitWriter writer(octets.Data(), static_cast<std::int64_t>(room));
        const bits::Outcome result = csn::EncodeCsn(*structure_.csn, writer, 0, cell);
        if (!result.Failed() && !writer.Overflowed()) {
            bits::Cell decoded{};
            static_cast<void>(csn::DecodeCsn(*structure_.csn, writer.Reader(), arena_, 0,
                                             static_cast<std::int32_t>(result.Bits()), decoded));
        }
    }

    bits::Arena& Arena() { return arena_; }

  private:
    static constexpr std::size_t kSpare = 64;  // octets that an encoder may add

    /// For a record that was decoded from that bit of an octet on: L and H depend on it.
    void BackAgain(const bits::Cell& cell, std::int32_t start, std::size_t room) {
        const ExactOctets octets({}, room);
        bits::BitWriter writer(octets.Data(), static_cast<std::int64_t>(room));
        const bits::Outcome result = csn::EncodeCsn(*structure_.csn, writer, start, cell);
        if (structure_.isLossy || fuzz::HoldsCutField(types_, structure_.type, cell) ||
            fuzz::HoldsManyFields(types_, structure_.type, cell)) {
            return;
        }
        Require(!result.Failed(), "what was decoded does not encode");
        const auto length = static_cast<std::int32_t>(result.Bits());
        bits::Cell decoded{};
        Require(csn::DecodeCsn(*structure_.csn, writer.Reader(), arena_, start, length, decoded) ==
                    result,
                "what was encoded does not decode");
        Require(Same(cell, decoded, false), "another record comes back");
        const ExactOctets second({}, room);
        bits::BitWriter again(second.Data(), static_cast<std::int64_t>(room));
        Require(csn::EncodeCsn(*structure_.csn, again, start, decoded) == result &&
                    std::equal(octets.View().begin(), octets.View().end(), second.Data()),
                "the second encoding differs from the first");
    }

    void Require(bool holds, std::string_view what) const {
        if (!holds) {
            fuzz::Fail(std::string(structure_.csn->name) + ": " + std::string(what));
        }
    }

    [[nodiscard]] bool Same(const bits::Cell& left, const bits::Cell& right, bool locations) const {
        return reflect::RecordsEqual(types_, structure_.type, left, right, locations);
    }

    void CountSteps(const bits::BitReader& reader, std::int32_t first, std::int32_t count) const {
        csn::CsnMachine machine;
        csn::CsnMachineInit(machine, *structure_.csn->program, structure_.csn->label, reader, first,
                            count);
        machine.rootTag = structure_.csn->rootTag;
        machine.instructionsLeft = CeilingFor(count);
        static_cast<void>(csn::CsnMachineRun(machine, nullptr));
        Require(machine.instructionsLeft > 0, "the run takes too many instructions");
    }

    const Structure& structure_;
    const reflect::TypeTables& types_;
    bits::Arena arena_;
};

}  // namespace
}  // namespace quorvane

int LLVMFuzzerTestOneInput(const std::uint8_t* octets, std::size_t size) {
    using namespace quorvane;
    Input input(octets, size);
    const auto& structures = fuzz::AllStructures();
    const fuzz::Structure& structure = structures[input.Below(structures.size())];
    Check check(structure);
    const bool ofBits = input.Below(2) == 0;
    const std::size_t choice = input.Octet();
    if (ofBits) {
        const ExactOctets message(input.Rest());
        const auto all = static_cast<std::int32_t>(8 * message.Size());
        const auto first = static_cast<std::int32_t>(choice & 7U);
        // The last bits may belong to something else.
        const auto behind = static_cast<std::int32_t>(choice >> 3U);
        check.Bits(message.View(), first, std::max(all - first - behind, 0));
        return 0;
    }
    bits::Cell cell{};
    fuzz::FillRecord(structure.family->types, structure.type, input, check.Arena(), cell);
    check.Record(cell, choice);
    return 0;
}
