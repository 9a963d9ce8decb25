#pragma once

// Decodes a message: its header, then its fields in the order of its table.
//
// Tests: tests/unit/message_decoder_test.cpp, the golden files.

#include <cstdint>

#include "iecodec/codec_context.h"

namespace quorvane::iecodec {

/// Decodes the message of `length` bits at bit `position`, header first, into `cell`. Returns the
/// bits consumed or a code. Bits behind the last field are not looked at unless the
/// message has optional fields.
bits::Outcome DecodeMessage(DecodeContext& context, const MessageRow& message,
                            std::int64_t position, bits::Cell& cell, std::int64_t length);

/// The same without a header.
bits::Outcome DecodeMessageBody(DecodeContext& context, const MessageRow& message,
                                std::int64_t position, bits::Cell& cell, std::int64_t length);

}  // namespace quorvane::iecodec
