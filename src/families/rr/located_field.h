#pragma once

// What the radio resource elements in C++ share.

#include <cstddef>
#include <cstdint>

#include "iecodec/codec_context.h"

namespace quorvane::families {

/// Stores the `width` bits at bit `position` and their location.
inline void StoreField(bits::BitWindow& window, bits::Cell& cell, std::int64_t position,
                       std::int32_t width) {
    cell.number = window.Read(position, width);
    bits::MakeFieldLocator(cell.location, position, width);
}

/// The same of a field that stands alone.
inline void StoreField(iecodec::DecodeContext& context, bits::Cell& cell, std::int64_t position,
                       std::int32_t width) {
    bits::BitWindow window(context.reader);
    StoreField(window, cell, position, width);
}

/// The wire form of a member with a type of its own.
inline const iecodec::ValueRow& MemberRow(const iecodec::CodecTables& tables,
                                          const iecodec::ValueRow& row, std::size_t member) {
    return tables.values[tables.parts[row.first + member].value];
}

}  // namespace quorvane::families
