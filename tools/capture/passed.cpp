#include "tools/capture/passed.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "tools/capture/gsmtap.h"
#include "tools/capture/lapdm.h"
#include "tools/capture/rsl.h"

namespace quorvane::capture {
namespace {

std::string GsmtapTypeWords(std::uint16_t type) {
    constexpr std::array<std::pair<int, std::string_view>, 16> kNames = {{
        {0x03, "Um bursts"},
        {0x04, "SIM"},
        {0x05, "TETRA"},
        {0x06, "TETRA bursts"},
        {0x07, "WiMAX bursts"},
        {0x08, "Gb LLC"},
        {0x09, "Gb SNDCP"},
        {0x0A, "GMR-1"},
        {0x0B, "UMTS RLC/MAC"},
        {0x0C, "UMTS RRC"},
        {0x0D, "LTE RRC"},
        {0x0E, "LTE MAC"},
        {0x0F, "LTE MAC, framed"},
        {0x10, "log lines"},
        {0x11, "diagnostics of a modem"},
        {0x13, "E1 or T1"},
    }};
    const auto* found = std::find_if(kNames.begin(), kNames.end(), [type](const auto& name) {
        return name.first == static_cast<int>(type);
    });
    const std::string number = "GSMTAP type " + std::to_string(type);
    return found == kNames.end() ? number : number + ", " + std::string(found->second);
}

std::string GsmProtocol(std::uint16_t discriminator) {
    // TS 24.007, 11.2.3.1.1.
    constexpr std::array<std::string_view, 16> kProtocols = {
        "group call control",
        "broadcast call control",
        "EPS session management",
        "call control",
        "GTTP",
        "mobility management",
        "radio resource management",
        "EPS mobility management",
        "GPRS mobility management",
        "SMS",
        "GPRS session management",
        "supplementary services",
        "location services",
        "a reserved protocol (13)",
        "an extended protocol discriminator",
        "test procedures",
    };
    return std::string(kProtocols[discriminator & 15U]);
}

std::string LapdmFrames(std::uint16_t kind) {
    switch (static_cast<LapdmKind>(kind)) {
        case LapdmKind::kUi:
            return "LAPDm UI frames without a message";
        case LapdmKind::kSupervisory:
            return "LAPDm supervisory frames";
        case LapdmKind::kI:
            return "LAPDm I frames without a message";
        case LapdmKind::kSetUp:
            return "LAPDm SABM and UA frames without a message";
        case LapdmKind::kRelease:
            return "LAPDm DISC and DM frames";
    }
    return {};  // unreachable: each kind returns
}

}  // namespace

std::string WordsOf(PassedKind kind) {
    switch (kind.reason) {
        case Passed::kCut:
            return "packets cut by the capture";
        case Passed::kLinkType:
            return "packets of link type " + std::to_string(kind.detail) + ", which is not known";
        case Passed::kNotIp:
            return "packets of other protocols than IP";
        case Passed::kBadHeader:
            return "packets with malformed headers";
        case Passed::kFragment:
            return "IP fragments";
        case Passed::kNotUdp:
            return "IP packets of other protocols than UDP";
        case Passed::kOtherPort:
            return "UDP packets of other ports";
        case Passed::kNotGsmtap:
            return "GSMTAP headers malformed or of another version than 2";
        case Passed::kGsmtapType:
            return GsmtapTypeWords(kind.detail);
        case Passed::kUmChannel:
            return "blocks of " + UmChannelName(kind.detail);
        case Passed::kBlockLength:
            return "blocks of " + UmChannelName(kind.detail) + " of a length that it has not";
        case Passed::kAccessBurst:
            return "access bursts of 11 bits on RACH";
        case Passed::kLapdmEmpty:
            return LapdmFrames(kind.detail);
        case Passed::kLapdmMalformed:
            return "LAPDm frames malformed";
        case Passed::kLapdmBroadcast:
            return "LAPDm frames of cell broadcast";
        case Passed::kLapdmRepeated:
            return "LAPDm frames repeated";
        case Passed::kLapdmJoined:
            return "LAPDm segments of messages that a later packet completes";
        case Passed::kLapdmLost:
            return "LAPDm segments of messages that are not whole";
        case Passed::kRlcData:
            return "RLC data blocks";
        case Passed::kRlcReserved:
            return "RLC/MAC blocks of a reserved payload type";
        case Passed::kRlcExtended:
            return "RLC/MAC control blocks in extended segmentation";
        case Passed::kRlcJoined:
            return "RLC/MAC segments of messages that a later packet completes";
        case Passed::kRlcLost:
            return "RLC/MAC segments of messages that are not whole";
        case Passed::kProtocol:
            return "layer 3 messages of " + GsmProtocol(kind.detail);
        case Passed::kNasProtocol:
            return "NAS messages with protocol discriminator " + std::to_string(kind.detail);
        case Passed::kNasType:
            return "LTE NAS of sub type " + std::to_string(kind.detail);
        case Passed::kEmpty:
            return "packets without an octet of a message";
        case Passed::kRsl:
            return "RSL messages without one of ours: " + RslName(kind.detail);
        case Passed::kRslMalformed:
            return "RSL messages malformed or with unknown elements";
        case Passed::kAbisLink:
            return "LAPD frames without information";
    }
    return {};  // unreachable: each reason returns
}

}  // namespace quorvane::capture
