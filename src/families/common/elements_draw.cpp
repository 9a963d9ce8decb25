#include "families/common/elements.h"
#include "families/element_draw.h"
#include "iecodec/transaction_identifier.h"

namespace quorvane::families {
namespace {

using bits::Cell;
using iecodec::ValueRow;

bool DrawLinkedIdentifier(Draw& draw, const ValueRow& row, Cell& cell, std::int64_t /*most*/) {
    Cell* members = draw.Members(row, cell);
    const bool extended = draw.OneIn(2);
    members[0].number = extended ? iecodec::kIdentifierExtended + 1 + draw.UpTo(119) : draw.UpTo(6);
    members[1].number = draw.UpTo(1);
    return true;
}

bool DrawGenericTlv(Draw& draw, const ValueRow& row, Cell& cell, std::int64_t /*most*/) {
    Cell* members = draw.Members(row, cell);
    members[0].number = draw.UpTo(255);
    ValueRow binary{};
    binary.shape = iecodec::Shape::kBinary;
    binary.capacity = kGenericValueBits;
    return draw.Fill(binary, members[1], kGenericValueBits);
}

bool DrawUncountedItem(Draw& draw, const ValueRow& row, Cell& cell, std::int64_t most) {
    cell.cells = draw.arena.AllocateZeroed<Cell>(1);
    cell.capacity = 1;
    return draw.Fill(draw.tables.values[row.first], *cell.cells, most);
}

const ElementDraw kDrawLinkedIdentifier(kLinkedTransactionIdentifier, DrawLinkedIdentifier);
const ElementDraw kDrawGenericTlv(kGenericTlv, DrawGenericTlv);
const ElementDraw kDrawUncountedItem(kUncountedItem, DrawUncountedItem);

}  // namespace
}  // namespace quorvane::families
