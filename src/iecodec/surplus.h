#pragma once

// What tolerant reading sets aside to go on behind it: bits that the tables have no place for.
//
// Tests: tests/unit/tolerant_decoder_test.cpp.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "bits/arena.h"
#include "bits/bit_reader.h"
#include "bits/record.h"

namespace quorvane::iecodec {

struct Surplus {
    std::optional<std::uint8_t> iei;  // 8-bit form
    const bits::Cell* cell;  // the value that leaves them, the message around an element, or null
    bool element;            // a whole element, identifier and length included
    std::int64_t position;
    std::int64_t bitCount;
    const std::uint8_t* octets = nullptr;  // a copy of the bits, from the top of the first octet on
};

class SurplusList {
  public:
    /// Adds `surplus` with a copy of its bits, if the list is not full. Returns false, with nothing
    /// added, if the reader does not hold all of them or they reach past bit 2^32.
    bool Keep(bits::Arena& arena, const bits::BitReader& reader, Surplus surplus);

    [[nodiscard]] const std::vector<Surplus>& Items() const { return items_; }

    /// Where the last one ends; 0 if there is none.
    [[nodiscard]] std::int64_t End() const {
        return items_.empty() ? 0 : items_.back().position + items_.back().bitCount;
    }

    /// Forgets those at the list's end that pass bit `end`.
    void DropPast(std::int64_t end);

    /// Forgets all items. Keeps the memory.
    void Clear() { items_.clear(); }

    /// So that octets made for it cannot take many times their size. Far more than any message has.
    static constexpr std::size_t kMostItems = 1000;

  private:
    std::vector<Surplus> items_;
};

}  // namespace quorvane::iecodec
