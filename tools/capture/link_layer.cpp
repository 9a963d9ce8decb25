#include "tools/capture/link_layer.h"

#include <algorithm>
#include <cstddef>

namespace quorvane::capture {
namespace {

using Octets = std::span<const std::uint8_t>;

constexpr std::uint16_t kTypeIpv4 = 0x0800;
constexpr std::uint16_t kTypeIpv6 = 0x86DD;
constexpr std::uint8_t kProtocolUdp = 17;
constexpr std::size_t kUdpHeader = 8;

// What a layer comes to in the octets at hand. Where they end too early, the packet was cut by the
// capture or is malformed; the caller knows which.
enum class Step { kOn, kTooShort, kNotIp, kFragment, kNotUdp };

bool IsVlanTag(std::uint16_t type) {
    return type == 0x8100 || type == 0x88A8 || type == 0x9100;
}

/// From a place with an Ethernet type to what stands behind it and its VLAN tags.
Step PassTypes(Octets& octets, std::size_t typeAt, std::size_t header) {
    if (octets.size() < header) {
        return Step::kTooShort;
    }
    std::uint16_t type = Number16(octets, typeAt);
    octets = octets.subspan(header);
    while (IsVlanTag(type)) {
        if (octets.size() < 4) {
            return Step::kTooShort;
        }
        type = Number16(octets, 2);
        octets = octets.subspan(4);
    }
    return type == kTypeIpv4 || type == kTypeIpv6 ? Step::kOn : Step::kNotIp;
}

/// From the front of the packet to the front of IP.
Step PassLink(int linkType, Octets& octets) {
    switch (linkType) {
        case kLinkEthernet:
            return PassTypes(octets, 12, 14);
        case kLinkCooked:
            return PassTypes(octets, 14, 16);
        case kLinkCooked2:
            return PassTypes(octets, 0, 20);
        case kLinkNull:
        case kLinkLoop:
            // An address family, whose numbers are those of the system that wrote it. The version
            // in IP's own first octet tells as much.
            if (octets.size() < 4) {
                return Step::kTooShort;
            }
            octets = octets.subspan(4);
            return Step::kOn;
        default:
            return Step::kOn;
    }
}

Step PassIpv4(Octets& octets) {
    if (octets.size() < 20) {
        return Step::kTooShort;
    }
    const std::size_t header = std::size_t{octets[0] & 15U} * 4;
    if (header < 20 || octets.size() < header) {
        return Step::kTooShort;
    }
    constexpr unsigned kMoreFragmentsAndOffset = 0x3FFF;
    if ((Number16(octets, 6) & kMoreFragmentsAndOffset) != 0) {
        return Step::kFragment;
    }
    if (octets[9] != kProtocolUdp) {
        return Step::kNotUdp;
    }
    octets = octets.subspan(header);
    return Step::kOn;
}

Step PassIpv6(Octets& octets) {
    if (octets.size() < 40) {
        return Step::kTooShort;
    }
    std::uint8_t next = octets[6];
    octets = octets.subspan(40);
    while (next != kProtocolUdp) {
        constexpr std::uint8_t kHopByHop = 0;
        constexpr std::uint8_t kRouting = 43;
        constexpr std::uint8_t kFragmentHeader = 44;
        constexpr std::uint8_t kAuthentication = 51;
        constexpr std::uint8_t kDestination = 60;
        if (next != kHopByHop && next != kRouting && next != kFragmentHeader &&
            next != kAuthentication && next != kDestination) {
            return Step::kNotUdp;
        }
        if (octets.size() < 8) {
            return Step::kTooShort;
        }
        std::size_t length = (std::size_t{octets[1]} + 1) * 8;
        if (next == kFragmentHeader) {
            constexpr unsigned kOffsetAndMoreFragments = 0xFFF9;
            if ((Number16(octets, 2) & kOffsetAndMoreFragments) != 0) {
                return Step::kFragment;
            }
            length = 8;
        } else if (next == kAuthentication) {
            length = (std::size_t{octets[1]} + 2) * 4;
        }
        if (octets.size() < length) {
            return Step::kTooShort;
        }
        next = octets[0];
        octets = octets.subspan(length);
    }
    return Step::kOn;
}

/// From the front of IP to the front of UDP.
Step PassIp(Octets& octets) {
    if (octets.empty()) {
        return Step::kTooShort;
    }
    switch (octets[0] >> 4) {
        case 4:
            return PassIpv4(octets);
        case 6:
            return PassIpv6(octets);
        default:
            return Step::kNotIp;
    }
}

bool IsKnown(int linkType) {
    switch (linkType) {
        case kLinkNull:
        case kLinkEthernet:
        case kLinkRaw:
        case kLinkLoop:
        case kLinkCooked:
        case kLinkIpv4:
        case kLinkIpv6:
        case kLinkCooked2:
            return true;
        default:
            return false;
    }
}

}  // namespace

std::optional<PassedKind> FindUdpPayload(const Packet& packet, std::uint16_t port,
                                         Octets& payload) {
    if (!IsKnown(packet.linkType)) {
        return PassedKind{Passed::kLinkType, static_cast<std::uint16_t>(packet.linkType)};
    }
    const PassedKind tooShort{packet.octets.size() < packet.length ? Passed::kCut
                                                                   : Passed::kBadHeader};
    Octets octets = packet.octets;
    Step step = PassLink(packet.linkType, octets);
    if (step == Step::kOn) {
        step = PassIp(octets);
    }
    switch (step) {
        case Step::kOn:
            break;
        case Step::kTooShort:
            return tooShort;
        case Step::kNotIp:
            return PassedKind{Passed::kNotIp};
        case Step::kFragment:
            return PassedKind{Passed::kFragment};
        case Step::kNotUdp:
            return PassedKind{Passed::kNotUdp};
    }
    if (octets.size() < kUdpHeader) {
        return tooShort;
    }
    if (Number16(octets, 0) != port && Number16(octets, 2) != port) {
        return PassedKind{Passed::kOtherPort};
    }
    // The link may have padded the packet, so UDP's own length counts.
    const std::size_t length = Number16(octets, 4);
    if (length < kUdpHeader) {
        return PassedKind{Passed::kBadHeader};
    }
    if (length > octets.size()) {
        return tooShort;
    }
    payload = octets.subspan(kUdpHeader, length - kUdpHeader);
    return std::nullopt;
}

}  // namespace quorvane::capture
