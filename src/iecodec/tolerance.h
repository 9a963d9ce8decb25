#pragma once

// What tolerant reading does beside strict reading: it keeps what that passes over, and goes on
// where it ends. Apart from the decoder, whose usual way comes by none of it.
//
// Tests: tests/unit/tolerant_decoder_test.cpp.

#include <cstdint>

#include "iecodec/codec_context.h"
#include "iecodec/ie_search.h"

namespace quorvane::iecodec {

/// Whether tolerant reading sets aside what the value in `cell`, which came to `result`, leaves of
/// its element: `length` bits at bit `position` of a message that ends at `end`. A value that took
/// nothing is none, and an element that the message cuts short has no rest.
bool KeepsRest(DecodeContext& context, const FieldRow& field, const bits::Cell& cell,
               bits::Outcome result, std::int64_t position, std::int64_t length, std::int64_t end);

/// Keeps what stands in the struct `message` from bit `from` on: element by element up to bit `to`,
/// and from the first that passes `end` all that is left. Padding is none of it. In tolerant
/// reading alone.
void KeepPassed(DecodeContext& context, const bits::Cell& message, std::int64_t from,
                std::int64_t to, std::int64_t end);

/// As FindIe, in tolerant reading: keeps what it skips, and goes on behind what has no row in the
/// skip table.
[[nodiscard]] IeSearch FindIeTolerantly(DecodeContext& context, const bits::Cell& message,
                                        std::uint8_t iei, std::int32_t ieiWidth,
                                        std::int64_t& cursor, std::int64_t end,
                                        const IeOrderRow* order);

}  // namespace quorvane::iecodec
