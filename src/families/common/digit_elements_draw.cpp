#include <algorithm>

#include "families/common/elements.h"
#include "families/element_draw.h"

namespace quorvane::families {
namespace {

using bits::Cell;
using iecodec::ValueRow;

void FillDigits(Draw& draw, Cell& cell, std::uint32_t least, std::uint32_t most) {
    draw.Resize(cell, least + draw.UpTo(most - least));
    for (std::uint32_t index = 0; index < cell.number; ++index) {
        cell.cells[index].number = draw.UpTo(9);
    }
}

bool DrawTbcdDigits(Draw& draw, const ValueRow& /*row*/, Cell& cell, std::int64_t most) {
    const std::int64_t room = std::clamp<std::int64_t>(most / 4, 0, kNumberDigits);
    FillDigits(draw, cell, 0, static_cast<std::uint32_t>(room) & ~1U);
    return true;
}

bool DrawIdentityDigits(Draw& draw, const ValueRow& row, Cell& cell, std::int64_t /*most*/) {
    FillDigits(draw, draw.Members(row, cell)[0], 1, kIdentityDigitsKept);
    return true;
}

bool DrawMobileIdentity(Draw& draw, const ValueRow& row, Cell& cell, std::int64_t /*most*/) {
    Cell* members = draw.Members(row, cell);
    const bool tmsi = draw.OneIn(2);
    members[1].number = tmsi ? kIdentityOfTmsi : draw.UpTo(7);
    FillDigits(draw, members[0], 1, members[1].number == kIdentityOfTmsi ? 4 : kMobileIdentityKept);
    return true;
}

bool DrawEmergencyNumber(Draw& draw, const ValueRow& row, Cell& cell, std::int64_t /*most*/) {
    Cell* members = draw.Members(row, cell);
    FillDigits(draw, members[1], 1, kNumberDigits);
    return draw.Fill(draw.tables.values[draw.tables.parts[row.first].value], members[0], 8);
}

const ElementDraw kDrawTbcdDigits(kTbcdDigits, DrawTbcdDigits);
const ElementDraw kDrawIdentityDigits(kIdentityDigits, DrawIdentityDigits);
const ElementDraw kDrawMobileIdentity(kMobileIdentity, DrawMobileIdentity);
const ElementDraw kDrawEmergencyNumber(kEmergencyNumber, DrawEmergencyNumber);

}  // namespace
}  // namespace quorvane::families
