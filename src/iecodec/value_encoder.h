#pragma once

// Encodes the value of one information element by its ValueRow: the mirror of value_decoder.h.
//
// Tests: tests/unit/value_encoder_test.cpp.

#include <cstdint>

#include "iecodec/codec_context.h"

namespace quorvane::iecodec {

/// Writes the value in `cell` at bit `position` and returns the bits written, or a code.
/// Spare bits are written as 0. A value that was never reached is written as its default.
bits::Outcome EncodeValue(EncodeContext& context, const ValueRow& row, std::int64_t position,
                          const bits::Cell& cell);

/// The row of index `value`.
inline const ValueRow& RowAt(const EncodeContext& context, std::uint16_t value) {
    return context.tables.values[value];
}

/// Writes zeros from bit `from` up to bit `to`; nothing if that is not behind it.
inline void WriteZeros(EncodeContext& context, std::int64_t from, std::int64_t to) {
    context.writer.Write(from, 0, static_cast<std::int32_t>(to - from));
}

/// Member `element` of the struct in `cell`; a zeroed cell if the struct was never reached.
const bits::Cell& MemberOf(const bits::Cell& cell, std::size_t element);

}  // namespace quorvane::iecodec
