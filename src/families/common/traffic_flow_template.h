#pragma once

// What the codec of the traffic flow template (elements.h) and its drawing share.

#include <array>
#include <cstdint>

namespace quorvane::families {

struct PacketFilterComponent {
    std::uint32_t type;
    std::int32_t bits;  // behind the type octet
};

inline constexpr std::array<PacketFilterComponent, 10> kPacketFilterComponents{{
    {16, 64},   // IPv4 remote address and mask
    {32, 256},  // IPv6 remote address and mask
    {48, 8},    // protocol identifier, next header
    {64, 16},   // local port
    {65, 32},   // local port range
    {80, 16},   // remote port
    {81, 32},   // remote port range
    {96, 32},   // security parameter index
    {112, 16},  // type of service, traffic class and mask
    {128, 24},  // flow label
}};

/// What the filters of a template hold, by its operation code.
enum class FilterForm { kNothing, kIdentifier, kWhole };

constexpr FilterForm FormOf(std::uint32_t operation) {
    switch (operation) {
        case 1:
        case 3:
        case 4:
            return FilterForm::kWhole;
        case 5:
            return FilterForm::kIdentifier;
        default:
            return FilterForm::kNothing;
    }
}

}  // namespace quorvane::families
