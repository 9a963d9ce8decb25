#include "bits/bit_reader.h"

#include <algorithm>

namespace quorvane::bits {

std::uint32_t BitReader::ReadNearEdge(std::int64_t position, std::int32_t count) const {
    std::uint32_t result = 0;
    for (std::int32_t place = 0; place < count; ++place, ++position) {
        const std::int64_t index = position >> 3;
        const bool inside = position >= 0 && index < octetCount_;
        const std::uint32_t bit =
            inside ? static_cast<std::uint32_t>(octets_[index]) >> (7 - (position & 7)) & 1U : 0U;
        result = result << 1 | bit;
    }
    return result;
}

void BitReader::Copy(std::uint8_t* destination, std::int64_t position, std::int64_t count) const {
    const std::int64_t wholeOctets = count >> 3;
    const std::int64_t index = position >> 3;
    if (position >= 0 && (position & 7) == 0 && index + wholeOctets <= octetCount_) {
        if (wholeOctets > 0) {
            std::memcpy(destination, octets_ + index, static_cast<std::size_t>(wholeOctets));
        }
    } else {
        for (std::int64_t octet = 0; octet < wholeOctets; ++octet) {
            destination[octet] = ReadOctet(position + 8 * octet);
        }
    }
    const auto rest = static_cast<std::int32_t>(count & 7);
    if (rest > 0) {
        destination[wholeOctets] =
            static_cast<std::uint8_t>(Read(position + 8 * wholeOctets, rest) << (8 - rest));
    }
}

}  // namespace quorvane::bits
