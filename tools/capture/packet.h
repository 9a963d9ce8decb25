#pragma once

// A packet of a capture.

#include <cstddef>
#include <cstdint>
#include <span>

namespace quorvane::capture {

struct Packet {
    std::uint64_t number = 0;  // in the capture, from 1
    std::int64_t seconds = 0;  // since 1970-01-01, UTC
    std::uint32_t nanoseconds = 0;
    int linkType = 0;                      // as in LinkType, or any other
    std::uint32_t length = 0;              // on the wire
    std::span<const std::uint8_t> octets;  // what the capture has of it
};

inline std::uint16_t Number16(std::span<const std::uint8_t> octets, std::size_t offset) {
    return static_cast<std::uint16_t>(octets[offset] << 8 | octets[offset + 1]);
}

inline std::uint32_t Number32(std::span<const std::uint8_t> octets, std::size_t offset) {
    return std::uint32_t{Number16(octets, offset)} << 16 | Number16(octets, offset + 2);
}

}  // namespace quorvane::capture
