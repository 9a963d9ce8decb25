#pragma once

// One call of tolerant reading: what the tables have no place for is set aside, and a message
// behind a security header is found.
//
// Tests: tests/unit/tolerant_message_test.cpp.

#include <cstdint>
#include <optional>

#include "facade/decoder.h"
#include "iecodec/surplus.h"
#include "quorvane/message.h"

namespace quorvane::facade {

/// What tolerant reading finds besides the record.
struct Tolerated {
    iecodec::SurplusList surplus;
    /// The header that the message found stands behind.
    std::optional<SecurityHeader> security;
    /// What that message was decoded as.
    std::optional<Decoding> inside;

    void Clear() {
        surplus.Clear();
        security.reset();
        inside.reset();
    }
};

/// As DecodeRecord. Locations and the bits consumed count from the first of all octets, also where
/// the message found begins behind a security header.
void DecodeTolerantly(Decoding decoding, const bits::BitReader& reader, std::int64_t length,
                      bool deciphered, bits::Arena& arena, iecodec::Diagnostics& diagnostics,
                      DecodedRecord& decoded, Tolerated& tolerated);

}  // namespace quorvane::facade
