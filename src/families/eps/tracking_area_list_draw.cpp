#include "families/element_draw.h"
#include "families/eps/tracking_area_list.h"

namespace quorvane::families {
namespace {

using bits::Cell;
using iecodec::ValueRow;

bool DrawAreaList(Draw& draw, const ValueRow& row, Cell& cell, std::int64_t /*most*/) {
    constexpr std::uint32_t kMostElements = 16;
    constexpr std::int64_t kRoom = std::int64_t{8} * 64;
    const std::uint32_t type = draw.UpTo(row.count - 1U);
    const auto& chosen = draw.tables.alternatives[row.first + type];
    Cell& body = bits::ChooseAlternative(draw.arena, cell, chosen.tag);
    if (!draw.Fill(draw.tables.values[chosen.value], body, kRoom)) {
        return false;
    }
    // A list has one element at least.
    constexpr std::size_t kCodesOfType0 = 6;
    const Cell& counted = type == 0 ? body.cells[kCodesOfType0] : body;
    return type == 1 || (counted.number > 0 && counted.number <= kMostElements);
}

const ElementDraw kDrawAreaList(kTrackingAreaListItem, DrawAreaList);

}  // namespace
}  // namespace quorvane::families
