#pragma once

// The choice of a message by its first octets, and its record.
//
// Tests: tests/unit/dispatch_test.cpp.

#include <cstdint>

#include "iecodec/codec_context.h"

namespace quorvane::iecodec {

/// One message of a set.
struct MessageContainer {
    std::uint32_t tag = 0;          // 0: empty, else the message's place in its set, from 1
    std::uint32_t pd = 0;           // protocol discriminator; 0 in sets that have none
    std::uint32_t messageType = 0;  // or the 6-bit key of sets with a short header; 0 without a key
    bits::Cell body{};              // a struct
};

/// Finds the message that starts at bit 0 of the context's octets and decodes it into `container`.
/// `pd` and `messageType` are stored whether it is known or not. Returns the bits consumed, or a
/// code; kUnknownMessage leaves `tag` 0. The octets that tell the message are read
/// whatever `bitLength` says.
bits::Outcome DispatchMessage(DecodeContext& context, const MessageSetRow& set,
                              std::int64_t bitLength, MessageContainer& container);

/// The same of the message that starts at bit `position`, the first of an octet.
bits::Outcome DispatchMessageAt(DecodeContext& context, const MessageSetRow& set,
                                std::int64_t position, std::int64_t bitLength,
                                MessageContainer& container);

/// Gives the container the tag and an empty record, unless it has that tag.
void SetTag(MessageContainer& container, std::uint32_t tag);

}  // namespace quorvane::iecodec
