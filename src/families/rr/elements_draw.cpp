#include <algorithm>
#include <array>

#include "families/element_draw.h"
#include "families/rr/elements.h"
#include "iecodec/codec_context.h"

namespace quorvane::families {
namespace {

/// Nearly all bits are a value of these elements: it is what random ones decode to, unless that
/// reaches behind them. They are often as many as may be, for fields of fixed width. A list that
/// has no bits of its own is that of the zeros behind a message.
bool DrawBits(Draw& draw, const iecodec::ValueRow& row, bits::Cell& cell, std::int64_t most) {
    std::array<std::uint8_t, 64> octets{};
    std::int64_t length = most;
    if (most >= 8) {
        const auto room = static_cast<std::uint32_t>(
            std::min<std::int64_t>(most / 8, static_cast<std::int64_t>(octets.size())));
        length = 8 * std::int64_t{draw.OneIn(2) ? room : 1 + draw.UpTo(room - 1)};
    }
    const std::int64_t count = (length + 7) / 8;
    std::generate_n(octets.begin(), count,
                    [&] { return static_cast<std::uint8_t>(draw.UpTo(255)); });
    iecodec::Diagnostics diagnostics;
    iecodec::DecodeContext context{draw.tables, {octets.data(), count}, draw.arena, diagnostics};
    const bits::Outcome result =
        draw.tables.specials[row.item]->decode(context, row, 0, cell, length);
    return !result.Failed() && (result.Bits() <= length || length == 0);
}

/// Few octets count ranges.
bool DrawRanges(Draw& draw, const iecodec::ValueRow& row, bits::Cell& cell, std::int64_t most) {
    const iecodec::ValueRow& item = draw.tables.values[row.first];
    const std::int64_t room = std::clamp<std::int64_t>((most - 8) / item.width, 0, row.capacity);
    draw.Resize(cell, draw.UpTo(static_cast<std::uint32_t>(room)));
    return std::all_of(cell.cells, cell.cells + cell.number,
                       [&](bits::Cell& range) { return draw.Fill(item, range, item.width); });
}

const std::array<ElementDraw, 11> kDraws = {{
    {kFrequencyList, DrawBits},
    {kNeighbourCellDescription, DrawBits},
    {kNeighbourCellDescription2, DrawBits},
    {kBaRange, DrawRanges},
    {kChannelType, DrawBits},
    {kChannelDescription, DrawBits},
    {kChannelDescription3, DrawBits},
    {kGroupChannelDescription, DrawBits},
    {kChannelRequest, DrawBits},
    {kLocatedMobileIdentity, DrawBits},
    {kBitmapTypeReporting, DrawBits},
}};

}  // namespace
}  // namespace quorvane::families
