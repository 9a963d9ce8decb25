#pragma once

// Which function a layer 3 message belongs to: the table of docs/captures.md.

#include <cstdint>
#include <optional>

#include "quorvane/decode.h"

namespace quorvane::capture {

/// That of a message of GSM's layer 3 whose first octet this is.
inline std::optional<Decoding> Layer3Function(std::uint8_t octet, bool uplink) {
    switch (octet & 15U) {
        case 3:  // call control
        case 5:  // mobility management
        case 8:  // GPRS mobility management
            return uplink ? Decoding::L3Uplink : Decoding::L3Downlink;
        case 6:  // radio resource management
            return uplink ? Decoding::RRUplink : Decoding::RRDownlink;
        default:
            return std::nullopt;
    }
}

/// That of a NAS message of EPS.
inline std::optional<Decoding> NasFunction(std::uint8_t octet, bool uplink) {
    switch (octet & 15U) {
        case 2:
            return uplink ? Decoding::EPS_SMUplink : Decoding::EPS_SMDownlink;
        case 7:
            return uplink ? Decoding::EPS_MMUplink : Decoding::EPS_MMDownlink;
        case 15:
            return uplink ? Decoding::EPC_UE2SS : Decoding::EPC_SS2UE;
        default:
            return std::nullopt;
    }
}

}  // namespace quorvane::capture
