#pragma once

// RSL, the signalling between base station controller and transceiver on Abis (TS 48.058): takes
// out the messages that it carries to and from the mobile station.
//
// Tests: tests/capture/rsl_test.cpp.

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "tools/capture/passed.h"

namespace quorvane::capture {

/// What an RSL message carries.
struct RslContents {
    enum class Form : std::uint8_t {
        kPlain,             // layer 3, from the protocol discriminator on
        kPseudoLength,      // a block of BCCH or CCCH, or system information of SACCH
        kRequestReference,  // the octet of a random access
    };

    Form form = Form::kPlain;
    bool uplink = false;
    bool slow = false;               // on the SACCH of the channel
    std::uint8_t channelNumber = 0;  // its element; 0: there is none
    std::span<const std::uint8_t> octets;
};

/// Whether that is RSL, or LAPD with RSL; there are senders that leave both out. A message of layer
/// 3 whose first octet is a discriminator of RSL has no element with the identifier 1, that of the
/// channel number, which comes first in RSL.
bool IsRsl(std::span<const std::uint8_t> octets);

/// Takes RSL, or a LAPD frame with RSL, apart. Returns nothing if there is a message, or why there
/// is none.
std::optional<PassedKind> ReadRsl(std::span<const std::uint8_t> octets, RslContents& contents);

/// "DATA REQUEST"; the detail of Passed::kRsl is the discriminator and the type behind it.
std::string RslName(std::uint16_t detail);

/// The channel of a channel number, as a sub type of Um, with its timeslot and subslot.
struct RslChannel {
    std::uint8_t subType = 0;
    std::uint8_t timeslot = 0;
    std::uint8_t subslot = 0;
};
RslChannel ChannelOf(const RslContents& contents);

}  // namespace quorvane::capture
