// Frequency lists and ranges.

#include <algorithm>
#include <array>
#include <bit>

#include "families/rr/elements.h"
#include "families/rr/located_field.h"
#include "iecodec/value_decoder.h"
#include "iecodec/value_encoder.h"

namespace quorvane::families {
namespace {

using bits::Cell;
using bits::Outcome;
using iecodec::DecodeContext;
using iecodec::EncodeContext;
using iecodec::ValueRow;

/// A format: the bits that name it, a header and the items.
struct Format {
    std::uint32_t id;
    std::int32_t idBits;
    std::int32_t headerBits;     // F0 or OrigARFCN; 0: none, the items are the whole alternative
    std::int32_t firstItemBits;  // of a bit map 1
    std::uint32_t bound;         // of the items
};

/// By tag, from 1.
constexpr std::array<Format, 6> kFormats = {{
    {0b0000, 4, 0, 1, 124},      // BitMap0
    {0b10000, 5, 1, 10, 64},     // Range1024
    {0b1000100, 7, 10, 9, 64},   // Range512
    {0b1000101, 7, 10, 8, 64},   // Range256
    {0b1000110, 7, 10, 7, 64},   // Range128
    {0b1000111, 7, 10, 1, 111},  // Variable
}};

/// The tag that the first 7 bits choose. The three bits behind the first take no part: neighbour
/// cell descriptions keep flags there.
std::uint32_t TagOf(std::uint32_t firstBits) {
    return firstBits < 64 ? 1 : std::max(3U, firstBits & 7U) - 1;
}

/// Of a range W(1) has the most bits; W(2^k) to W(2^(k+1) - 1) have k bits less.
std::int32_t ItemBits(const Format& format, std::uint32_t index) {
    return std::max(
        1, format.firstItemBits + 1 - static_cast<std::int32_t>(std::bit_width(index + 1)));
}

/// As many items as `bits` bits hold.
std::uint32_t ItemsIn(const Format& format, std::int64_t bits) {
    std::uint32_t count = 0;
    while (count < format.bound && ItemBits(format, count) <= bits) {
        bits -= ItemBits(format, count);
        ++count;
    }
    return count;
}

std::int64_t OctetBoundary(std::int64_t position) {
    return (position + 7) / 8 * 8;
}

/// Fills the octet that was begun with zeros and returns the bits written since `start`.
Outcome EndOctet(EncodeContext& context, std::int64_t start, std::int64_t cursor) {
    const std::int64_t end = OctetBoundary(cursor);
    context.writer.Write(cursor, 0, static_cast<std::int32_t>(end - cursor));
    return end - start;
}

Outcome DecodeFrequencyList(DecodeContext& context, const ValueRow& /*row*/, std::int64_t position,
                            Cell& cell, std::int64_t length) {
    const std::uint32_t tag = TagOf(context.reader.Read(position, 7));
    const Format& format = kFormats[tag - 1];
    Cell& chosen = bits::ChooseAlternative(context.arena, cell, tag);
    Cell* items = &chosen;
    std::int64_t cursor = position + format.idBits;
    if (format.headerBits > 0) {
        Cell* members = bits::StructCells(context.arena, chosen, 2);
        items = &members[0];
        StoreField(context, members[1], cursor, format.headerBits);
        cursor += format.headerBits;
    }
    const std::uint32_t count = ItemsIn(format, position + length - cursor);
    // Never above the bound.
    static_cast<void>(
        bits::SetSize(context.arena, *items, static_cast<std::int32_t>(count), format.bound));
    bits::BitWindow window(context.reader);
    for (std::uint32_t index = 0; index < count; ++index) {
        const std::int32_t width = ItemBits(format, index);
        StoreField(window, items->cells[index], cursor, width);
        cursor += width;
    }
    return OctetBoundary(cursor) - position;
}

Outcome EncodeFrequencyList(EncodeContext& context, const ValueRow& /*row*/, std::int64_t position,
                            const Cell& cell) {
    if (cell.number == 0 || cell.number > kFormats.size()) {
        return iecodec::kSyntaxError;
    }
    const Format& format = kFormats[cell.number - 1];
    const Cell& chosen = *cell.cells;
    context.writer.Write(position, format.id, format.idBits);
    const Cell* items = &chosen;
    std::int64_t cursor = position + format.idBits;
    if (format.headerBits > 0) {
        items = &iecodec::MemberOf(chosen, 0);
        context.writer.Write(cursor, iecodec::MemberOf(chosen, 1).number, format.headerBits);
        cursor += format.headerBits;
    }
    for (std::uint32_t index = 0; index < items->number; ++index) {
        const std::int32_t width = ItemBits(format, index);
        context.writer.Write(cursor, items->cells[index].number, width);
        cursor += width;
    }
    return EndOctet(context, position, cursor);
}

/// A frequency list, a flag of `kWidth` bits at `kOffset` of the same octets, and BAInd.
template <std::int64_t kOffset, std::int32_t kWidth>
Outcome DecodeNeighbourCells(DecodeContext& context, const ValueRow& row, std::int64_t position,
                             Cell& cell, std::int64_t length) {
    Cell* members = bits::StructCells(context.arena, cell, row.members);
    StoreField(context, members[1], position + kOffset, kWidth);
    StoreField(context, members[2], position + 3, 1);
    return iecodec::DecodeValue(context, MemberRow(context.tables, row, 0), position, members[0],
                                length);
}

template <std::int64_t kOffset, std::int32_t kWidth>
Outcome EncodeNeighbourCells(EncodeContext& context, const ValueRow& row, std::int64_t position,
                             const Cell& cell) {
    const Outcome result = iecodec::EncodeValue(context, MemberRow(context.tables, row, 0),
                                                position, iecodec::MemberOf(cell, 0));
    context.writer.Write(position + kOffset, iecodec::MemberOf(cell, 1).number, kWidth);
    context.writer.Write(position + 3, iecodec::MemberOf(cell, 2).number, 1);
    return result;
}

constexpr std::int32_t kCountBits = 8;

Outcome DecodeBaRange(DecodeContext& context, const ValueRow& row, std::int64_t position,
                      Cell& cell, std::int64_t /*length*/) {
    const std::uint32_t count = context.reader.Read(position, kCountBits);
    if (bits::SetSize(context.arena, cell, static_cast<std::int32_t>(count), row.capacity)
            .Failed()) {
        return iecodec::kSyntaxError;
    }
    const ValueRow& item = iecodec::RowAt(context, row.first);
    std::int64_t cursor = position + kCountBits;
    for (std::uint32_t index = 0; index < count; ++index) {
        // A fixed structure, which never fails.
        static_cast<void>(
            iecodec::DecodeValue(context, item, cursor, cell.cells[index], item.width));
        cursor += item.width;
    }
    return OctetBoundary(cursor) - position;
}

Outcome EncodeBaRange(EncodeContext& context, const ValueRow& row, std::int64_t position,
                      const Cell& cell) {
    const ValueRow& item = iecodec::RowAt(context, row.first);
    context.writer.Write(position, cell.number, kCountBits);
    std::int64_t cursor = position + kCountBits;
    for (std::uint32_t index = 0; index < cell.number; ++index) {
        static_cast<void>(iecodec::EncodeValue(context, item, cursor, cell.cells[index]));
        cursor += item.width;
    }
    return EndOctet(context, position, cursor);
}

}  // namespace

const iecodec::SpecialElement kFrequencyList{"kFrequencyList", DecodeFrequencyList,
                                             EncodeFrequencyList};
const iecodec::SpecialElement kNeighbourCellDescription{
    "kNeighbourCellDescription", DecodeNeighbourCells<2, 1>, EncodeNeighbourCells<2, 1>};
const iecodec::SpecialElement kNeighbourCellDescription2{
    "kNeighbourCellDescription2", DecodeNeighbourCells<1, 2>, EncodeNeighbourCells<1, 2>};
const iecodec::SpecialElement kBaRange{"kBaRange", DecodeBaRange, EncodeBaRange};

}  // namespace quorvane::families
