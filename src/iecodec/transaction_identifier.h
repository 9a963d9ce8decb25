#pragma once

// The extension of a transaction identifier (TS 24.007, 11.2.3.1.3): a value of 7 says that octets
// with a longer one follow, up to the first with its bit 8 set.
//
// Tests: tests/unit/xtid_test.cpp, tests/unit/message_decoder_test.cpp.

#include "bits/bit_reader.h"

namespace quorvane::iecodec {

inline constexpr std::uint32_t kIdentifierExtended = 7;

/// The position behind the extension whose first octet is at bit `position`.
inline std::int64_t PastIdentifierExtension(const bits::BitReader& reader, std::int64_t position) {
    while ((position >> 3) < reader.OctetCount() && reader.Read(position, 1) == 0) {
        position += 8;
    }
    return position + 8;
}

}  // namespace quorvane::iecodec
