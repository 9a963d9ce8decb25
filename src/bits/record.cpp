#include "bits/record.h"

#include <algorithm>

namespace quorvane::bits {

Cell& ChooseAlternative(Arena& arena, Cell& cell, std::uint32_t tag) {
    if (cell.cells == nullptr || cell.number != tag) {
        cell.cells = arena.AllocateZeroed<Cell>(1);
        cell.number = tag;
    }
    return *cell.cells;
}

Outcome Resize(Arena& arena, Cell& cell, std::int32_t size, std::uint32_t bound) {
    if (size > static_cast<std::int32_t>(bound)) {
        return Code::kSizeOutOfRange;
    }
    const auto wanted = static_cast<std::uint32_t>(std::max(size, 0));
    if (wanted > cell.capacity) {
        constexpr std::uint32_t kFewest = 4;
        const std::uint32_t capacity =
            std::min(bound, std::max({kFewest, wanted, cell.capacity * 2}));
        Cell* grown = arena.AllocateZeroed<Cell>(capacity);
        std::copy_n(cell.cells, cell.number, grown);
        cell.cells = grown;
        cell.capacity = capacity;
    } else if (wanted > cell.number) {
        // Items that were dropped before come back zeroed.
        std::fill(cell.cells + cell.number, cell.cells + wanted, Cell{});
    }
    cell.number = wanted;
    return 0;
}

void StoreBinary(Arena& arena, Cell& cell, const BitReader& reader, std::int64_t position,
                 std::int64_t length, std::uint32_t mostBits) {
    MakeFieldLocator(cell.location, position, length);
    const std::int64_t stored = std::min<std::int64_t>(length, mostBits);
    if (stored <= 0) {
        return;
    }
    cell.octets =
        static_cast<std::uint8_t*>(arena.Allocate(static_cast<std::size_t>((stored + 7) / 8)));
    reader.Copy(cell.octets, position, stored);
    cell.number = static_cast<std::uint32_t>(stored);
}

}  // namespace quorvane::bits
