#include "tools/capture/gsmtap.h"

#include <array>
#include <cstddef>
#include <string_view>

#include "tools/capture/packet.h"

namespace quorvane::capture {

std::string UmChannelName(unsigned subType) {
    constexpr std::array<std::string_view, 0x12> kNames = {
        "an unknown channel",
        "BCCH",
        "CCCH",
        "RACH",
        "AGCH",
        "PCH",
        "SDCCH",
        "SDCCH/4",
        "SDCCH/8",
        "FACCH/F",
        "FACCH/H",
        "PACCH",
        "CBCH/8",
        "PDCH",
        "PTCCH",
        "CBCH/4",
        "TCH/F",
        "TCH/H",
    };
    switch (subType) {
        case kUmSdcch | kUmSlowAssociated:
            return "SACCH";
        case kUmSdcch4 | kUmSlowAssociated:
            return "SACCH/4";
        case kUmSdcch8 | kUmSlowAssociated:
            return "SACCH/8";
        case kUmFacchF | kUmSlowAssociated:
            return "SACCH/F";
        case kUmFacchH | kUmSlowAssociated:
            return "SACCH/H";
        default:
            return subType < kNames.size() ? std::string(kNames[subType])
                                           : "channel " + std::to_string(subType);
    }
}

std::optional<PassedKind> ReadGsmtapHeader(std::span<const std::uint8_t>& octets,
                                           GsmtapHeader& header) {
    constexpr std::size_t kHeader = 16;
    constexpr std::uint8_t kVersion = 2;
    const PassedKind none{Passed::kNotGsmtap};
    if (octets.size() < kHeader || octets[0] != kVersion) {
        return none;
    }
    const std::size_t length = std::size_t{octets[1]} * 4;
    if (length < kHeader || length > octets.size()) {
        return none;
    }
    const std::uint16_t arfcn = Number16(octets, 4);
    header.type = octets[2];
    header.timeslot = octets[3];
    header.isPcs = (arfcn & 0x8000U) != 0;
    header.uplink = (arfcn & 0x4000U) != 0;
    header.arfcn = arfcn & 0x3FFFU;
    header.tdmaFrame = Number32(octets, 8);
    header.subType = octets[12];
    header.subslot = octets[14];
    octets = octets.subspan(length);
    return std::nullopt;
}

}  // namespace quorvane::capture
