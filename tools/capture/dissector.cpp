#include "tools/capture/dissector.h"

#include "tools/capture/layer3.h"
#include "tools/capture/link_layer.h"
#include "tools/capture/rsl.h"

namespace quorvane::capture {
namespace {

using Octets = std::span<const std::uint8_t>;

std::optional<PassedKind> SetLayer3(Octets octets, bool uplink, FoundMessage& message) {
    const std::optional<Decoding> function = Layer3Function(octets[0], uplink);
    if (!function) {
        return PassedKind{Passed::kProtocol, static_cast<std::uint16_t>(octets[0] & 15U)};
    }
    message.decoding = *function;
    message.octets = octets;
    return std::nullopt;
}

std::optional<PassedKind> FindRandomAccess(const GsmtapHeader& header, Octets block,
                                           FoundMessage& message) {
    if (block.size() == 2) {
        return PassedKind{Passed::kAccessBurst};
    }
    if (block.size() != 1) {
        return PassedKind{Passed::kBlockLength, header.subType};
    }
    message.decoding = Decoding::ChannelRequest;
    message.octets = block;
    return std::nullopt;
}

std::optional<PassedKind> FindLteNas(const GsmtapHeader& header, Octets octets,
                                     FoundMessage& message) {
    if (header.subType != kNasPlain && header.subType != kNasProtected) {
        return PassedKind{Passed::kNasType, header.subType};
    }
    message.source.uplink = header.uplink;
    const std::optional<Decoding> function = NasFunction(octets[0], header.uplink);
    if (!function) {
        return PassedKind{Passed::kNasProtocol, static_cast<std::uint16_t>(octets[0] & 15U)};
    }
    // The octets tell, whatever the sub type says: senders use that for plain ones too.
    const bool isMobilityManagement = (octets[0] & 15U) == 7;
    message.isProtected = isMobilityManagement && octets[0] >> 4 != 0;
    message.decoding = *function;
    if (!header.uplink) {
        message.otherwise = NasFunction(octets[0], true);
    }
    message.octets = octets;
    return std::nullopt;
}

std::optional<PassedKind> FindAbis(const GsmtapHeader& header, Octets octets,
                                   FoundMessage& message) {
    if (!IsRsl(octets)) {
        message.source.uplink = header.uplink;
        return SetLayer3(octets, header.uplink, message);
    }
    RslContents contents;
    if (const auto passed = ReadRsl(octets, contents)) {
        return passed;
    }
    const RslChannel channel = ChannelOf(contents);
    message.source.uplink = contents.uplink;
    message.source.channel = channel.subType;
    message.source.timeslot = channel.timeslot;
    message.source.subslot = channel.subslot;
    message.octets = contents.octets;
    switch (contents.form) {
        case RslContents::Form::kPlain:
            return SetLayer3(contents.octets, contents.uplink, message);
        case RslContents::Form::kPseudoLength:
            message.decoding = Decoding::RRPLENDownlink;
            break;
        case RslContents::Form::kRequestReference:
            message.decoding = Decoding::ChannelRequest;
            break;
    }
    return std::nullopt;
}

}  // namespace

bool Dissector::Take(const Packet& packet, FoundMessage& message) {
    if (const auto passed = Find(packet, message)) {
        passed_.Add(*passed);
        return false;
    }
    return true;
}

void Dissector::Finish() {
    lapdm_.Finish();
    rlcMac_.Finish();
}

std::optional<PassedKind> Dissector::Find(const Packet& packet, FoundMessage& message) {
    Octets octets;
    if (const auto passed = FindUdpPayload(packet, port_, octets)) {
        return passed;
    }
    GsmtapHeader header;
    if (const auto passed = ReadGsmtapHeader(octets, header)) {
        return passed;
    }
    message = {};
    message.source.packet = packet.number;
    message.source.seconds = packet.seconds;
    message.source.nanoseconds = packet.nanoseconds;
    if (octets.empty()) {
        return PassedKind{Passed::kEmpty};
    }
    switch (header.type) {
        case kGsmtapUm:
            return FindUm(header, octets, message);
        case kGsmtapAbis:
            message.source.interface = Source::Interface::kAbis;
            return FindAbis(header, octets, message);
        case kGsmtapLteNas:
            message.source.interface = Source::Interface::kLteNas;
            return FindLteNas(header, octets, message);
        default:
            return PassedKind{Passed::kGsmtapType, header.type};
    }
}

std::optional<PassedKind> Dissector::FindUm(const GsmtapHeader& header, Octets block,
                                            FoundMessage& message) {
    Source& source = message.source;
    source.interface = Source::Interface::kUm;
    source.uplink = header.uplink;
    source.channel = header.subType;
    source.timeslot = header.timeslot;
    source.subslot = header.subslot;
    source.arfcn = header.arfcn;
    source.isPcs = header.isPcs;
    source.tdmaFrame = header.tdmaFrame;
    switch (header.subType) {
        // What has one direction alone has it whatever the header says: not all senders say it.
        case kUmBcch:
        case kUmCcch:
        case kUmAgch:
        case kUmPch:
            source.uplink = false;
            message.decoding = Decoding::RRPLENDownlink;
            message.octets = block;
            return std::nullopt;
        case kUmRach:
            source.uplink = true;
            return FindRandomAccess(header, block, message);
        case kUmSdcch:
        case kUmSdcch4:
        case kUmSdcch8:
        case kUmFacchF:
        case kUmFacchH:
        case kUmSdcch | kUmSlowAssociated:
        case kUmSdcch4 | kUmSlowAssociated:
        case kUmSdcch8 | kUmSlowAssociated:
        case kUmFacchF | kUmSlowAssociated:
        case kUmFacchH | kUmSlowAssociated:
            return FindDedicated(header, block, message);
        case kUmPacch:
        case kUmPdch:
            return rlcMac_.Take(header, block, message.decoding, message.octets);
        default:
            return PassedKind{Passed::kUmChannel, header.subType};
    }
}

std::optional<PassedKind> Dissector::FindDedicated(const GsmtapHeader& header, Octets block,
                                                   FoundMessage& message) {
    LapdmMessage found;
    if (const auto passed = lapdm_.Take(header, block, found)) {
        return passed;
    }
    message.octets = found.octets;
    switch (found.form) {
        case LapdmMessage::Form::kPlain:
            return SetLayer3(found.octets, found.uplink, message);
        case LapdmMessage::Form::kPseudoLength:
            message.decoding = Decoding::RRPLENDownlink;
            break;
        case LapdmMessage::Form::kShort:
            message.decoding = Decoding::RRSPD;
            break;
    }
    return std::nullopt;
}

}  // namespace quorvane::capture
