#pragma once

// Decodes the value of one information element by its ValueRow.
//
// Tests: tests/unit/value_decoder_test.cpp.

#include <cstdint>

#include "iecodec/codec_context.h"

namespace quorvane::iecodec {

/// Decodes the value of `length` bits at bit `position` into `cell` and returns the bits that it
/// took, or a code. The caller decides whether a result other than `length` is an error. A value
/// decoder may look past `length`; what it stores of a value that fails stays.
bits::Outcome DecodeValue(DecodeContext& context, const ValueRow& row, std::int64_t position,
                          bits::Cell& cell, std::int64_t length);

/// The row of index `value`.
inline const ValueRow& RowAt(const DecodeContext& context, std::uint16_t value) {
    return context.tables.values[value];
}

}  // namespace quorvane::iecodec
