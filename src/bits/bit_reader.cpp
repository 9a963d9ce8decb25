#include "bits/bit_reader.h"

#include <algorithm>

namespace quorvane::bits {

std::uint32_t BitReader::ReadNearEdge(std::int64_t position, std::int32_t count) const {
    if (count < 1) {
        return 0;
    }
    const std::int64_t first = position >> 3;
    const std::int64_t last = (position + count - 1) >> 3;
    std::uint64_t window = 0;  // five octets at most
    for (std::int64_t index = first; index <= last; ++index) {
        const bool inside = index >= 0 && index < octetCount_;
        window = window << 8 | (inside ? octets_[index] : 0U);
    }
    const auto behind = static_cast<std::int32_t>((last + 1) * 8 - (position + count));
    return static_cast<std::uint32_t>(window >> behind & ((std::uint64_t{1} << count) - 1U));
}

std::uint64_t BitReader::WindowNearEdge(std::int64_t index) const {
    const std::int64_t over = index + kWindow - octetCount_;
    if (index >= 0 && over < kWindow && octetCount_ >= kWindow) {
        // The last window of the buffer, without what is ahead of the octet.
        return Window(octets_ + index - over) << (8 * over);
    }
    std::uint64_t window = 0;
    for (std::int64_t octet = index; octet < index + kWindow; ++octet) {
        window = window << 8 | (octet >= 0 && octet < octetCount_ ? octets_[octet] : 0U);
    }
    return window;
}

void BitReader::Copy(std::uint8_t* destination, std::int64_t position, std::int64_t count) const {
    if (count < 1) {
        return;
    }
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
