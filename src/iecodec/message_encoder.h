#pragma once

// Writes messages: the mirror of message_decoder.h and message_container.h.
//
// Tests: tests/unit/message_encoder_test.cpp.

#include <cstdint>

#include "iecodec/codec_context.h"
#include "iecodec/message_container.h"

namespace quorvane::iecodec {

/// Writes the message in `cell`, header first, at bit `position`. Returns the bits written, or
/// kSyntaxError with what was written so far in place. Bits between the fields that are written
/// keep what they held. Check writer.Overflowed() afterwards.
bits::Outcome EncodeMessage(EncodeContext& context, const MessageRow& message,
                            std::int64_t position, const bits::Cell& cell);

/// The same without the header.
bits::Outcome EncodeMessageBody(EncodeContext& context, const MessageRow& message,
                                std::int64_t position, const bits::Cell& cell);

/// Writes the container's message at bit 0. kUnknownMessage if it has none of the set.
bits::Outcome EncodeContainer(EncodeContext& context, const MessageSetRow& set,
                              const MessageContainer& container);

/// Whether the octets at bit `position` start like this message: the first octet is the protocol
/// discriminator with zeros in front, and the octet of the message type is the message's. Nothing
/// is masked. Messages without a type are never recognised.
bool IsMessage(const CodecTables& tables, const MessageRow& message, const bits::BitReader& reader,
               std::int64_t position);

}  // namespace quorvane::iecodec
