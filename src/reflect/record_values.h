#pragma once

// How the cells of a record are read, however far its decoder got: for all that walk records with
// the type tables.

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "bits/record.h"
#include "reflect/type_tables.h"

namespace quorvane::reflect {

/// The cell of member or item `index`, also where the record has none.
inline const bits::Cell& CellAt(const bits::Cell* cells, std::size_t index) {
    return cells == nullptr ? bits::kEmptyCell : cells[index];
}

/// The items of a sequence.
inline std::uint32_t ItemCount(const bits::Cell& cell) {
    return cell.cells == nullptr ? 0 : cell.number;
}

/// The bits that the record holds of a binary, which may be fewer than a fixed one has.
inline std::uint32_t BitCount(const bits::Cell& cell) {
    return cell.octets == nullptr ? 0 : cell.number;
}

/// The bits of a binary.
inline std::uint32_t BitCount(const TypeRow& row, const bits::Cell& cell) {
    return row.fixed ? row.size : BitCount(cell);
}

/// The bits of a binary that the record holds.
inline std::uint32_t HeldBitCount(const TypeRow& row, const bits::Cell& cell) {
    return std::min(BitCount(cell), BitCount(row, cell));
}

/// Whether `tag` chooses an alternative of the union `row`.
inline bool IsTagOf(const TypeRow& row, std::uint32_t tag) {
    return tag >= 1 && tag <= row.count;
}

/// What a union of at least one alternative shows: the chosen one, or the first one with default
/// contents.
struct Choice {
    std::uint32_t index;
    const bits::Cell* body;
};

inline Choice ChoiceOf(const TypeRow& row, const bits::Cell& cell) {
    return IsTagOf(row, cell.number) ? Choice{cell.number - 1, &CellAt(cell.cells, 0)}
                                     : Choice{0, &bits::kEmptyCell};
}

inline bool IsNumber(const TypeRow& row) {
    return row.kind == TypeKind::kInteger || row.kind == TypeKind::kEnumerated;
}

/// Where an integer or enumerated value is kept: nowhere if its width is 0.
inline const bits::Cell& NumberCell(const TypeRow& row, const bits::Cell& cell) {
    return row.size == 0 ? bits::kEmptyCell : cell;
}

/// Where a value stood in the message; 0 if that is not known.
inline bits::FieldLocator LocationOf(const TypeRow& row, const bits::Cell& cell) {
    return (IsNumber(row) ? NumberCell(row, cell) : cell).location;
}

}  // namespace quorvane::reflect
