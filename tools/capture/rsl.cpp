#include "tools/capture/rsl.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

#include "tools/capture/gsmtap.h"
#include "tools/capture/packet.h"

namespace quorvane::capture {
namespace {

using Octets = std::span<const std::uint8_t>;

// Element identifiers, TS 48.058, 9.3.
constexpr std::uint8_t kChannelNumber = 0x01;
constexpr std::uint8_t kLinkIdentifier = 0x02;
constexpr std::uint8_t kLayer3Information = 0x0B;
constexpr std::uint8_t kRequestReference = 0x13;
constexpr std::uint8_t kFullBcchInformation = 0x27;
constexpr std::uint8_t kFullImmediateAssign = 0x2B;

// How long elements are: a count of octets behind the identifier, or how their length is given.
constexpr int kUnknown = -1;
constexpr int kLength8 = -2;
constexpr int kLength16 = -3;

constexpr auto kFormats = [] {
    std::array<int, 0x38> formats{};
    formats.fill(kUnknown);
    for (const int iei : {0x01, 0x02, 0x04, 0x09, 0x0D, 0x0E, 0x11, 0x14, 0x18, 0x1B, 0x1C, 0x1E,
                          0x25, 0x28, 0x29, 0x2D, 0x2E}) {
        formats[static_cast<std::size_t>(iei)] = 1;
    }
    for (const int iei : {0x08, 0x0A, 0x0F, 0x17}) {
        formats[static_cast<std::size_t>(iei)] = 2;
    }
    formats[0x03] = 1;
    formats[kRequestReference] = 3;
    for (const int iei : {0x05, 0x06, 0x07, 0x0C, 0x10, 0x12, 0x15, 0x16, 0x19, 0x1A, 0x1F,
                          0x20, 0x21, 0x22, 0x26, 0x27, 0x2A, 0x2B, 0x2C, 0x35, 0x36, 0x37}) {
        formats[static_cast<std::size_t>(iei)] = kLength8;
    }
    formats[kLayer3Information] = kLength16;
    return formats;
}();

// Message groups: the discriminator without its bit T.
constexpr std::uint8_t kRadioLinkLayer = 0x02;
constexpr std::uint8_t kDedicatedChannel = 0x08;
constexpr std::uint8_t kCommonChannel = 0x0C;
constexpr std::uint8_t kTransceiver = 0x10;
constexpr std::uint8_t kLocation = 0x20;
constexpr unsigned kTransparent = 1;  // the bit T

constexpr std::uint8_t kMeasurementResult = 0x28;

struct Carrier {
    std::uint8_t group;
    std::uint8_t type;
    std::string_view name;
    std::uint8_t element;  // that carries a message; 0: none does
    RslContents::Form form = RslContents::Form::kPlain;
    bool uplink = false;
};

using Form = RslContents::Form;

// TS 48.058, 9.2.
constexpr std::array kCarriers = {
    Carrier{kRadioLinkLayer, 0x01, "DATA REQUEST", kLayer3Information},
    Carrier{kRadioLinkLayer, 0x02, "DATA INDICATION", kLayer3Information, Form::kPlain, true},
    Carrier{kRadioLinkLayer, 0x03, "ERROR INDICATION", 0},
    Carrier{kRadioLinkLayer, 0x04, "ESTABLISH REQUEST", 0},
    Carrier{kRadioLinkLayer, 0x05, "ESTABLISH CONFIRM", 0},
    Carrier{kRadioLinkLayer, 0x06, "ESTABLISH INDICATION", kLayer3Information, Form::kPlain, true},
    Carrier{kRadioLinkLayer, 0x07, "RELEASE REQUEST", 0},
    Carrier{kRadioLinkLayer, 0x08, "RELEASE CONFIRM", 0},
    Carrier{kRadioLinkLayer, 0x09, "RELEASE INDICATION", 0},
    Carrier{kRadioLinkLayer, 0x0A, "UNIT DATA REQUEST", kLayer3Information},
    Carrier{kRadioLinkLayer, 0x0B, "UNIT DATA INDICATION", kLayer3Information, Form::kPlain, true},
    Carrier{kCommonChannel, 0x11, "BCCH INFORMATION", kFullBcchInformation, Form::kPseudoLength},
    Carrier{kCommonChannel, 0x12, "CCCH LOAD INDICATION", 0},
    Carrier{kCommonChannel, 0x13, "CHANNEL REQUIRED", kRequestReference, Form::kRequestReference,
            true},
    Carrier{kCommonChannel, 0x14, "DELETE INDICATION", 0},
    Carrier{kCommonChannel, 0x15, "PAGING COMMAND", 0},
    Carrier{kCommonChannel, 0x16, "IMMEDIATE ASSIGN COMMAND", kFullImmediateAssign,
            Form::kPseudoLength},
    Carrier{kCommonChannel, 0x17, "SMS BROADCAST REQUEST", 0},
    Carrier{kTransceiver, 0x19, "RF RESOURCE INDICATION", 0},
    Carrier{kTransceiver, 0x1A, "SACCH FILLING", kLayer3Information, Form::kPseudoLength},
    Carrier{kTransceiver, 0x1B, "OVERLOAD", 0},
    Carrier{kTransceiver, 0x1C, "ERROR REPORT", 0},
    Carrier{kDedicatedChannel, 0x21, "CHANNEL ACTIVATION", 0},
    Carrier{kDedicatedChannel, 0x22, "CHANNEL ACTIVATION ACKNOWLEDGE", 0},
    Carrier{kDedicatedChannel, 0x23, "CHANNEL ACTIVATION NEGATIVE ACKNOWLEDGE", 0},
    Carrier{kDedicatedChannel, 0x24, "CONNECTION FAILURE", 0},
    Carrier{kDedicatedChannel, 0x25, "DEACTIVATE SACCH", 0},
    Carrier{kDedicatedChannel, 0x26, "ENCRYPTION COMMAND", kLayer3Information},
    Carrier{kDedicatedChannel, 0x27, "HANDOVER DETECTION", 0},
    Carrier{kDedicatedChannel, kMeasurementResult, "MEASUREMENT RESULT", kLayer3Information,
            Form::kPlain, true},
    Carrier{kDedicatedChannel, 0x2E, "RF CHANNEL RELEASE", 0},
    Carrier{kDedicatedChannel, 0x33, "RF CHANNEL RELEASE ACKNOWLEDGE", 0},
    Carrier{kDedicatedChannel, 0x34, "SACCH INFORMATION MODIFY", kLayer3Information,
            Form::kPseudoLength},
};

const Carrier* FindCarrier(unsigned group, unsigned type) {
    const auto* found = std::find_if(
        kCarriers.begin(), kCarriers.end(),
        [=](const Carrier& carrier) { return carrier.group == group && carrier.type == type; });
    return found == kCarriers.end() ? nullptr : found;
}

/// What is RSL in a frame of LAPD, or all of it if it is none. An address of SAPI 0 and a control
/// field of an I or UI frame cannot begin RSL: its messages with such a first octet have an element
/// with the identifier 1 as their third.
Octets WithoutLapd(Octets octets) {
    constexpr std::uint8_t kUiControl = 0x03;
    if (octets.size() < 4 || (octets[0] & ~2U) != 0 || (octets[1] & 1U) == 0) {
        return octets;
    }
    if ((octets[2] & 1U) == 0) {
        return octets.subspan(4);
    }
    return (octets[2] & ~0x10U) == kUiControl ? octets.subspan(3) : octets;
}

/// Takes the element at the front off, with its contents. False if it is unknown or cut short.
bool TakeElement(Octets& octets, std::uint8_t& iei, Octets& contents) {
    iei = octets[0];
    const int format = iei < kFormats.size() ? kFormats[iei] : kUnknown;
    std::size_t header = 1;
    std::size_t length = 0;
    if (format >= 0) {
        length = static_cast<std::size_t>(format);
    } else if (format == kLength8 && octets.size() >= 2) {
        header = 2;
        length = octets[1];
    } else if (format == kLength16 && octets.size() >= 3) {
        header = 3;
        length = Number16(octets, 1);
    } else {
        return false;
    }
    if (octets.size() < header + length) {
        return false;
    }
    contents = octets.subspan(header, length);
    octets = octets.subspan(header + length);
    return true;
}

/// Whether octets can be what the carrier is said to carry.
bool IsAsSaid(const Carrier& carrier, Octets octets) {
    if (octets.empty()) {
        return false;
    }
    if (carrier.form == Form::kPseudoLength) {
        return octets.size() > 1 && (octets[0] & 3U) == 1;
    }
    // With the short protocol discriminator nothing tells one there from another one.
    constexpr unsigned kRadioResource = 6;
    return carrier.type != kMeasurementResult || (octets[0] & 15U) == kRadioResource;
}

}  // namespace

std::string RslName(std::uint16_t detail) {
    const Carrier* carrier = FindCarrier(detail >> 8, detail & 0xFFU);
    if (carrier != nullptr) {
        return std::string(carrier->name);
    }
    return "type " + std::to_string(detail & 0xFFU) + " of group " + std::to_string(detail >> 8);
}

bool IsRsl(Octets octets) {
    const Octets rsl = WithoutLapd(octets);
    if (rsl.size() < octets.size() || rsl.empty()) {
        return true;
    }
    switch (rsl[0] & ~kTransparent) {
        case kRadioLinkLayer:
        case kDedicatedChannel:
        case kCommonChannel:
            return rsl.size() > 2 && rsl[2] == kChannelNumber;
        case kTransceiver:
        case kLocation:
            return true;
        default:
            return false;
    }
}

std::optional<PassedKind> ReadRsl(Octets octets, RslContents& contents) {
    octets = WithoutLapd(octets);
    if (octets.size() < 2) {
        return PassedKind{octets.empty() ? Passed::kAbisLink : Passed::kRslMalformed};
    }
    const unsigned group = octets[0] & ~kTransparent;
    const unsigned type = octets[1] & 0x7FU;
    const PassedKind none{Passed::kRsl, static_cast<std::uint16_t>(group << 8 | type)};
    const Carrier* carrier = FindCarrier(group, type);
    if (carrier == nullptr || carrier->element == 0) {
        return none;
    }
    contents = {};
    contents.form = carrier->form;
    contents.uplink = carrier->uplink;
    octets = octets.subspan(2);
    while (!octets.empty()) {
        std::uint8_t iei = 0;
        Octets value;
        if (!TakeElement(octets, iei, value)) {
            return PassedKind{Passed::kRslMalformed};
        }
        if (iei == kChannelNumber) {
            contents.channelNumber = value[0];
        } else if (iei == kLinkIdentifier) {
            contents.slow = value[0] >> 6 == 1;
        } else if (iei == carrier->element && !value.empty()) {
            contents.octets = iei == kRequestReference ? value.first(1) : value;
        }
    }
    return IsAsSaid(*carrier, contents.octets) ? std::nullopt : std::optional(none);
}

RslChannel ChannelOf(const RslContents& contents) {
    const unsigned bits = contents.channelNumber >> 3;  // TS 48.058, 9.3.1
    RslChannel channel;
    channel.timeslot = contents.channelNumber & 7U;
    if (bits == 1) {
        channel.subType = kUmFacchF;
    } else if (bits >> 1 == 1) {
        channel.subType = kUmFacchH;
        channel.subslot = bits & 1U;
    } else if (bits >> 2 == 1) {
        channel.subType = kUmSdcch4;
        channel.subslot = bits & 3U;
    } else if (bits >> 3 == 1) {
        channel.subType = kUmSdcch8;
        channel.subslot = bits & 7U;
    } else if (bits == 0x10) {
        channel.subType = kUmBcch;
    } else if (bits == 0x11) {
        channel.subType = kUmRach;
    } else if (bits == 0x12) {
        channel.subType = kUmCcch;
    }
    if (contents.slow && channel.subType >= kUmSdcch4 && channel.subType <= kUmFacchH) {
        channel.subType |= kUmSlowAssociated;
    }
    return channel;
}

}  // namespace quorvane::capture
