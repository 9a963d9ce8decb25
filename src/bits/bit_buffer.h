#pragma once

// Bit access to a run of octets. A position counts bits from the first bit of the buffer, most
// significant bit of octet 0 first. Nothing here checks a bound: the caller has. Code that works
// on a received message goes through BitReader, which does.
//
// Tests: tests/unit/bit_buffer_test.cpp.

#include <cstdint>

#include "bits/outcome.h"

namespace quorvane::bits {

/// Where a field lay in a message: bit position in the upper 16 bits, length in bits in the lower
/// 16. 0 means that the location is not known.
using FieldLocator = std::uint32_t;

/// The octets that `bits` bits take.
constexpr std::uint32_t OctetsOf(std::uint32_t bits) {
    return bits / 8 + (bits % 8 != 0 ? 1 : 0);
}

/// Reads `count` bits, first bit as the most significant of the result's `count` low bits. A count
/// below 1 gives 0 and reads nothing; above 32, the bit k places from the end is or-ed into bit
/// k mod 32.
[[nodiscard]] std::uint32_t BitBufferRead(const std::uint8_t* buffer, std::int32_t position,
                                          std::int32_t count);

/// Stores the low `count` bits of `value`, its bit count-1 first; above 32 the value's bits are
/// used again in turn. Neighbouring bits are untouched. A count below 1 does nothing.
void BitBufferWrite(std::uint8_t* buffer, std::int32_t position, std::uint32_t value,
                    std::int32_t count);

/// Copies a bit string; the two must not overlap. One block copy if all three numbers are
/// multiples of 8.
void BitBufferCopy(std::uint8_t* destination, std::int32_t destinationPosition,
                   const std::uint8_t* source, std::int32_t sourcePosition, std::int32_t count);

/// Stores position << 16 | length if both are in 0..65535, else 0.
constexpr void MakeFieldLocator(FieldLocator& destination, std::int64_t position,
                                std::int64_t length) {
    constexpr std::int64_t kMost = 65535;
    const bool fits = position >= 0 && position <= kMost && length >= 0 && length <= kMost;
    destination = fits ? static_cast<FieldLocator>(position << 16 | length) : 0;
}

/// Writes a length field in the manner of an ASN.1 definite length and returns the bits used. From
/// 128 on the value is written over the prefix octet that announces its size, so that the prefix
/// does not survive and the 8*n bits behind the value stay as they were; the bits used count both.
std::int32_t WriteLengthCode(std::uint8_t* buffer, std::int32_t position, std::uint32_t value);

/// Reads a length field, prefix and value in turn, and returns the bits used, or kSizeError with
/// `value` unset when more than 4 octets are announced.
Outcome ReadLengthCode(const std::uint8_t* buffer, std::int32_t position, std::uint32_t& value);

}  // namespace quorvane::bits
