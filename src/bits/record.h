#pragma once

// The record that a decoder fills, an encoder reads and the converters turn into a value tree.
//
// Every value lives in one Cell. What a cell means follows from the type of the value:
//
//   integer, enumerated  `number` is the value
//   binary               `number` is the count of valid bits, `octets` the bits from the top of
//                        octets[0] on; null while the count is 0
//   sequence             `number` is the count of items, `cells` an array of one cell an item,
//                        `capacity` the items that the array has room for
//   struct               `cells` is an array of one cell a member, in the order of the type;
//                        null while no decoder has reached the struct
//   union                `number` is the tag (0: nothing chosen, else the alternative from 1),
//                        `cells` the one cell of the chosen alternative
//
// A zeroed cell is a value that was never reached: absent if its member is optional, the default
// otherwise. Arrays and octets come from an Arena, on demand: a record costs what the message
// holds, whatever its type could hold.
//
// Tests: tests/unit/record_test.cpp.

#include <cstdint>

#include "bits/arena.h"
#include "bits/bit_buffer.h"
#include "bits/bit_reader.h"
#include "bits/outcome.h"

namespace quorvane::bits {

struct Cell {
    FieldLocator location;
    std::uint32_t number;
    union {
        Cell* cells;
        std::uint8_t* octets;
    };
    std::uint32_t capacity;
    bool present;  // of an optional member only
    bool refused;  // a fault tells of it
    bool reached;  // a decoder came to it; not noted of all that a special element consists of
};

/// A value that was never reached.
inline constexpr Cell kEmptyCell{};

/// The members of the struct in `cell`, made on first use.
inline Cell* StructCells(Arena& arena, Cell& cell, std::uint32_t memberCount) {
    if (cell.cells == nullptr) {
        cell.cells = arena.AllocateZeroed<Cell>(memberCount);
    }
    return cell.cells;
}

/// Chooses alternative `tag` (from 1) of the union in `cell` and gives its cell, zeroed unless the
/// tag was chosen already.
Cell& ChooseAlternative(Arena& arena, Cell& cell, std::uint32_t tag);

/// SetSize where it is more than the next item of a sequence that has room.
Outcome Resize(Arena& arena, Cell& cell, std::int32_t size, std::uint32_t bound);

/// Sets the size of the sequence in `cell`. Returns 0, or kSizeOutOfRange with nothing changed if
/// `size` is above `bound`. New items are zeroed.
inline Outcome SetSize(Arena& arena, Cell& cell, std::int32_t size, std::uint32_t bound) {
    const std::uint32_t held = cell.number;
    if (held < cell.capacity && held < bound && size == std::int64_t{held} + 1) {
        cell.cells[held] = Cell{};
        cell.number = held + 1;
        return 0;
    }
    return Resize(arena, cell, size, bound);
}

/// Stores a binary field of `length` bits at bit `position`: its first `mostBits` bits at most,
/// its location with the full length. A length of 0 or below stores no bits.
void StoreBinary(Arena& arena, Cell& cell, const BitReader& reader, std::int64_t position,
                 std::int64_t length, std::uint32_t mostBits);

}  // namespace quorvane::bits
