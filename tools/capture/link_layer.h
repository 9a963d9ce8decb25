#pragma once

// From a packet to what UDP carries in it: link layer, VLAN tags, IPv4 or IPv6 and their options,
// UDP.
//
// Tests: tests/capture/link_layer_test.cpp.

#include <cstdint>
#include <optional>
#include <span>

#include "tools/capture/packet.h"
#include "tools/capture/passed.h"

namespace quorvane::capture {

/// The link types that are known, by the numbers that libpcap has for them.
enum LinkType : int {
    kLinkNull = 0,  // BSD loopback
    kLinkEthernet = 1,
    kLinkRaw = 12,  // IP without a header in front
    kLinkLoop = 108,
    kLinkCooked = 113,  // Linux, "any" interface
    kLinkIpv4 = 228,
    kLinkIpv6 = 229,
    kLinkCooked2 = 276,
};

/// Finds what UDP carries from or to `port`. Returns nothing then, or why there is nothing.
std::optional<PassedKind> FindUdpPayload(const Packet& packet, std::uint16_t port,
                                         std::span<const std::uint8_t>& payload);

}  // namespace quorvane::capture
