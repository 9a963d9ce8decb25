#pragma once

// What a decode or an encode carries along: tables, octets, memory and the way faults are reported.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "bits/arena.h"
#include "bits/bit_reader.h"
#include "bits/bit_writer.h"
#include "bits/outcome.h"
#include "iecodec/surplus.h"
#include "iecodec/tables.h"

namespace quorvane::iecodec {

using enum bits::Code;

/// Where a decoder met a fault.
struct FaultPlace {
    /// The value that it was decoding; an item of a sequence may have moved since.
    const bits::Cell* cell = nullptr;
    /// The bit where it stood; below 0: not known.
    std::int64_t position = -1;
};

/// A fault as its line tells of it, and its place.
struct Fault {
    std::uint32_t number;
    std::size_t wordsBegin;  // "text name" in the lines
    std::size_t wordsLength;
    FaultPlace place;
};

/// Collects the faults of a call and their lines, "<ERRID:n> text name\n" each. Every fault of the
/// codec is told through Report and nowhere else.
class Diagnostics {
  public:
    void Report(std::uint32_t number, std::string_view text, std::string_view name = {},
                FaultPlace place = {});

    /// The same of a value that is being decoded, which is marked as refused.
    void Refuse(bits::Cell& cell, std::int64_t position, std::uint32_t number,
                std::string_view text, std::string_view name = {}) {
        cell.refused = true;
        Report(number, text, name, {&cell, position});
    }

    [[nodiscard]] const std::string& Lines() const { return lines_; }
    [[nodiscard]] const std::vector<Fault>& Faults() const { return faults_; }
    [[nodiscard]] std::string_view WordsOf(const Fault& fault) const {
        return std::string_view(lines_).substr(fault.wordsBegin, fault.wordsLength);
    }

    /// Forgets all faults. Keeps the memory unless the lines have taken more than kMostKept octets.
    void Clear();

    static constexpr std::size_t kMostKept = std::size_t{1} << 16;

  private:
    std::string lines_;
    std::vector<Fault> faults_;
};

struct DecodeContext {
    const CodecTables& tables;
    bits::BitReader reader{nullptr, 0};
    bits::Arena& arena;
    Diagnostics& diagnostics;
    SurplusList* surplus = nullptr;  // tolerant reading; null: strict reading
};

/// Why an encoder did not write a value.
struct Refusal {
    enum class Reason : std::uint8_t {
        kNotWritten,  // its encoder refused it
        kMissing,     // it has to be there and was never set
        kNoChoice,    // a union of which nothing is chosen
        kSelector,    // the selector in a default alternative chooses another one
        kCondition,   // it is there, or not, against the field that decides
        kLength,      // its bits are not within its limits
    };

    Reason reason;
    const bits::Cell* cell;
    // kLength: the bits that it takes, and the limits.
    std::int64_t bits = 0;
    std::int64_t leastBits = 0;
    std::int64_t mostBits = 0;
};

struct EncodeContext {
    const CodecTables& tables;
    bits::BitWriter& writer;
    Diagnostics& diagnostics;
    /// Whether a record is refused that no decoder makes: with a mandatory value that was never
    /// set, which is written as its default otherwise, with lengths outside of their limits, or
    /// with conditional fields against their condition.
    bool checked = false;
    std::optional<Refusal> refusal{};  // the first one
    /// The selector of a choice, which is written in any case, around the value that is written.
    std::int64_t selectorBegin = 0;
    std::int64_t selectorEnd = 0;

    void Refuse(const Refusal& refused) {
        if (!refusal) {
            refusal = refused;
        }
    }

    /// Whether the value is set if it has to be.
    bool Demand(const bits::Cell& cell) {
        if (checked && !cell.reached) {
            Refuse({Refusal::Reason::kMissing, &cell});
            return false;
        }
        return true;
    }

    /// The same of one that lies at bit `position`.
    bool DemandAt(std::int64_t position, const bits::Cell& cell) {
        return (position >= selectorBegin && position < selectorEnd) || Demand(cell);
    }

    /// Whether a value takes bits within the limits and, if it is `counted` by a length, whole
    /// octets.
    bool CheckLength(const bits::Cell& cell, std::int64_t bits, std::int64_t least,
                     std::int64_t most, bool counted) {
        if (bits < least || bits > most || (counted && bits % 8 != 0)) {
            Refuse({Refusal::Reason::kLength, &cell, bits, least, most});
            return false;
        }
        return true;
    }
};

}  // namespace quorvane::iecodec
