#include "families/common/elements.h"
#include "families/common/traffic_flow_template.h"
#include "families/element_draw.h"

namespace quorvane::families {
namespace {

using bits::Cell;
using iecodec::ValueRow;

/// An item of an identifier and bits.
void FillPair(Draw& draw, Cell& pair, std::uint32_t identifier, std::int32_t bits) {
    Cell* members = bits::StructCells(draw.arena, pair, 2);
    members[0].number = identifier;
    ValueRow binary{};
    binary.shape = iecodec::Shape::kBinary;
    binary.capacity = static_cast<std::uint32_t>(bits);
    binary.width = static_cast<std::uint16_t>(bits);
    static_cast<void>(draw.Fill(binary, members[1], bits));
}

void FillFilter(Draw& draw, Cell& cell, FilterForm form) {
    Cell* filter = bits::StructCells(draw.arena, cell, 4);
    filter[0].number = draw.UpTo(15);
    filter[1].number = draw.UpTo(3);
    if (form != FilterForm::kWhole) {
        return;
    }
    filter[2].number = draw.UpTo(255);
    draw.Resize(filter[3], draw.UpTo(4));
    for (std::uint32_t part = 0; part < filter[3].number; ++part) {
        const auto& component =
            kPacketFilterComponents[draw.UpTo(kPacketFilterComponents.size() - 1)];
        FillPair(draw, filter[3].cells[part], component.type, component.bits);
    }
}

bool DrawTemplate(Draw& draw, const ValueRow& row, Cell& cell, std::int64_t /*most*/) {
    Cell* members = draw.Members(row, cell);
    members[0].number = draw.UpTo(7);
    const FilterForm form = FormOf(members[0].number);
    draw.Resize(members[1], draw.UpTo(8));
    for (std::uint32_t index = 0; index < members[1].number; ++index) {
        if (form != FilterForm::kNothing) {
            FillFilter(draw, members[1].cells[index], form);
        }
    }
    // Decoding shows as many empty items behind the parameters.
    const std::uint32_t parameters = draw.OneIn(2) ? 0 : 1 + draw.UpTo(3);
    draw.Resize(members[2], 2 * parameters);
    for (std::uint32_t index = 0; index < parameters; ++index) {
        const std::uint32_t identifier = draw.UpTo(255);
        FillPair(draw, members[2].cells[index], identifier,
                 8 * static_cast<std::int32_t>(1 + draw.UpTo(8)));
    }
    return true;
}

const ElementDraw kDrawTemplate(kTrafficFlowTemplate, DrawTemplate);

}  // namespace
}  // namespace quorvane::families
