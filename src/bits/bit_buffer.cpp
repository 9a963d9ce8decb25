#include "bits/bit_buffer.h"

#include <bit>
#include <cstring>

namespace quorvane::bits {
namespace {

constexpr std::uint8_t MaskOf(std::int32_t position) {
    return static_cast<std::uint8_t>(0x80U >> (static_cast<std::uint32_t>(position) & 7U));
}

bool BitAt(const std::uint8_t* buffer, std::int32_t position) {
    return (buffer[position >> 3] & MaskOf(position)) != 0;
}

void SetBit(std::uint8_t* buffer, std::int32_t position, bool bit) {
    std::uint8_t& octet = buffer[position >> 3];
    const std::uint8_t mask = MaskOf(position);
    octet = static_cast<std::uint8_t>(bit ? octet | mask : octet & ~mask);
}

}  // namespace

std::uint32_t BitBufferRead(const std::uint8_t* buffer, std::int32_t position, std::int32_t count) {
    std::uint32_t result = 0;
    for (std::int32_t place = count - 1; place >= 0; --place, ++position) {
        if (BitAt(buffer, position)) {
            result |= 1U << (static_cast<std::uint32_t>(place) & 31U);
        }
    }
    return result;
}

void BitBufferWrite(std::uint8_t* buffer, std::int32_t position, std::uint32_t value,
                    std::int32_t count) {
    for (std::int32_t place = count - 1; place >= 0; --place, ++position) {
        SetBit(buffer, position, (value >> (static_cast<std::uint32_t>(place) & 31U) & 1U) != 0);
    }
}

void BitBufferCopy(std::uint8_t* destination, std::int32_t destinationPosition,
                   const std::uint8_t* source, std::int32_t sourcePosition, std::int32_t count) {
    if (((destinationPosition | sourcePosition | count) & 7) == 0) {
        if (count > 0) {
            std::memcpy(destination + (destinationPosition >> 3), source + (sourcePosition >> 3),
                        static_cast<std::size_t>(count >> 3));
        }
        return;
    }
    for (std::int32_t index = 0; index < count; ++index) {
        SetBit(destination, destinationPosition + index, BitAt(source, sourcePosition + index));
    }
}

std::int32_t WriteLengthCode(std::uint8_t* buffer, std::int32_t position, std::uint32_t value) {
    if (value < 128) {
        BitBufferWrite(buffer, position, value, 8);
        return 8;
    }
    const auto octets =
        static_cast<std::int32_t>((static_cast<std::uint32_t>(std::bit_width(value)) + 7U) / 8U);
    BitBufferWrite(buffer, position, 0x80U | static_cast<std::uint32_t>(octets), 8);
    BitBufferWrite(buffer, position, value, 8 * octets);
    return 8 + 8 * octets;
}

Outcome ReadLengthCode(const std::uint8_t* buffer, std::int32_t position, std::uint32_t& value) {
    const std::uint32_t first = BitBufferRead(buffer, position, 8);
    if (first < 128) {
        value = first;
        return 8;
    }
    const auto octets = static_cast<std::int32_t>(first & 127U);
    if (octets > 4) {
        return Code::kSizeError;
    }
    value = BitBufferRead(buffer, position + 8, 8 * octets);
    return 8 + 8 * octets;
}

}  // namespace quorvane::bits
