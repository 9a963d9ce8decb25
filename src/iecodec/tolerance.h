#pragma once

// Where tolerant reading goes on and strict reading ends. Apart from the decoder, whose usual way
// comes by none of it.
//
// Tests: tests/unit/tolerant_decoder_test.cpp.

#include <cstdint>

#include "iecodec/codec_context.h"

namespace quorvane::iecodec {

/// Whether tolerant reading sets aside what the value in `cell`, which came to `result`, leaves of
/// its element: `length` bits at bit `position` of a message that ends at `end`. A value that took
/// nothing is none, and an element that the message cuts short has no rest.
bool KeepsRest(DecodeContext& context, const FieldRow& field, const bits::Cell& cell,
               bits::Outcome result, std::int64_t position, std::int64_t length, std::int64_t end);

/// Whether tolerant reading sets aside the element at the cursor, which has no row in the skip
/// table. The cursor is then behind it. `message` is the struct that it stands in.
bool KeepsUnknown(DecodeContext& context, const bits::Cell& message, std::int64_t& cursor,
                  std::int64_t end);

}  // namespace quorvane::iecodec
