#include "facade/decodings.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>

namespace quorvane {
namespace facade {
namespace {

struct Entry {
    DecodingInfo info;
    DecodingRow row;
};

// One entry for each enumerator, in their order.
constexpr std::array kEntries = {
    Entry{{Decoding::RRDownlink, "RRDownlink",
           "GSM radio resource management, network to mobile station (TS 44.018)"},
          {"RRDownlink", "rr", "Message_set_RRDownlink", Direction::kDownlink,
           Start::kDiscriminator}},
    Entry{{Decoding::RRUplink, "RRUplink",
           "GSM radio resource management, mobile station to network (TS 44.018)"},
          {"RRUplink", "rr", "Message_set_RRUplink", Direction::kUplink, Start::kDiscriminator}},
    Entry{{Decoding::ChannelRequest, "ChannelRequest",
           "CHANNEL REQUEST, the random access octet, whatever the length (TS 44.018)"},
          {"ChannelRequest", "rr", "ChannelRequest", Direction::kUplink, Start::kNothing, 8}},
    Entry{{Decoding::RRPLENDownlink, "RRPLENDownlink",
           "GSM radio resource management behind an L2 pseudo length octet (TS 44.018)"},
          {"RRPLENDownlink", "rr", "Message_set_RRPLENDownlink", Direction::kDownlink,
           Start::kDiscriminator}},
    Entry{
        {Decoding::RRSPD, "RRSPD",
         "GSM radio resource management with the short protocol discriminator (TS 44.018)"},
        {"RRShortPD", "rr", "Message_set_RRShortPD", Direction::kBoth, Start::kShortDiscriminator}},
    Entry{{Decoding::L3Downlink, "L3Downlink",
           "GSM and UMTS mobility management, call control and GPRS mobility management, network "
           "to mobile station (TS 24.008)"},
          {"L3Downlink", "l3", "Message_set_L3Downlink", Direction::kDownlink,
           Start::kDiscriminator}},
    Entry{{Decoding::L3Uplink, "L3Uplink",
           "GSM and UMTS mobility management, call control and GPRS mobility management, mobile "
           "station to network (TS 24.008)"},
          {"L3Uplink", "l3", "Message_set_L3Uplink", Direction::kUplink, Start::kDiscriminator}},
    Entry{{Decoding::RLC_MACDownlink, "RLC_MACDownlink",
           "GPRS RLC/MAC control messages, network to mobile station (TS 44.060)"},
          {"RLC_MAC_Downlink", "rlcmac", "Message_set_Downlink_RLC_MAC", Direction::kDownlink,
           Start::kMessageType}},
    Entry{{Decoding::RLC_MACUplink, "RLC_MACUplink",
           "GPRS RLC/MAC control messages, mobile station to network (TS 44.060)"},
          {"RLC_MAC_Uplink", "rlcmac", "Message_set_Uplink_RLC_MAC", Direction::kUplink,
           Start::kMessageType}},
    Entry{{Decoding::EPS_MMDownlink, "EPS_MMDownlink",
           "EPS mobility management, network to UE (TS 24.301)"},
          {"EPS_MMDownlink", "eps", "Message_set_EPS_MM_Downlink", Direction::kDownlink,
           Start::kDiscriminator, 0, Decoding::EPS_SMDownlink}},
    Entry{{Decoding::EPS_MMUplink, "EPS_MMUplink",
           "EPS mobility management, UE to network (TS 24.301)"},
          {"EPS_MMUplink", "eps", "Message_set_EPS_MM_Uplink", Direction::kUplink,
           Start::kDiscriminator, 0, Decoding::EPS_SMUplink}},
    Entry{{Decoding::EPS_SMDownlink, "EPS_SMDownlink",
           "EPS session management, network to UE (TS 24.301)"},
          {"EPS_SMDownlink", "eps", "Message_set_EPS_SM_Downlink", Direction::kDownlink,
           Start::kDiscriminator}},
    Entry{{Decoding::EPS_SMUplink, "EPS_SMUplink",
           "EPS session management, UE to network (TS 24.301)"},
          {"EPS_SMUplink", "eps", "Message_set_EPS_SM_Uplink", Direction::kUplink,
           Start::kDiscriminator}},
    Entry{
        {Decoding::EPC_SS2UE, "EPC_SS2UE", "UE test mode, system simulator to UE (TS 36.509)"},
        {"EPC_SS2UE", "epc", "Message_set_SS_to_UE", Direction::kDownlink, Start::kDiscriminator}},
    Entry{{Decoding::EPC_UE2SS, "EPC_UE2SS", "UE test mode, UE to system simulator (TS 36.509)"},
          {"EPC_UE2SS", "epc", "Message_set_UE_to_SS", Direction::kUplink, Start::kDiscriminator}},
    Entry{{Decoding::Packet_Control_Acknowledgement_8, "Packet_Control_Acknowledgement_8",
           "access burst of 8 bits on a packet channel, whatever the length (TS 44.060)"},
          {"Packet_channel_request_8_bit_message_content", "rlcmac",
           "Packet_channel_request_8_bit_message_content", Direction::kUplink, Start::kNothing, 8}},
    Entry{{Decoding::Packet_Control_Acknowledgement_11, "Packet_Control_Acknowledgement_11",
           "access burst of 11 bits on a packet channel, whatever the length (TS 44.060)"},
          {"Packet_Control_Acknowledgement_11bit_a", "rlcmac",
           "Packet_Control_Acknowledgement_11bit_a", Direction::kUplink, Start::kNothing, 11}},
};

constexpr std::size_t IndexOf(Decoding decoding) {
    return static_cast<std::size_t>(decoding);
}

// That of a value that is no enumerator: it has no messages.
constexpr DecodingRow kNoRow{};

// unreachable from here: the compiler calls it
constexpr bool InOrder() {
    std::size_t index = 0;
    return std::all_of(kEntries.begin(), kEntries.end(),
                       [&](const Entry& entry) { return IndexOf(entry.info.decoding) == index++; });
}
// to here
static_assert(InOrder());

// unreachable from here: the compiler calls it
constexpr bool IsBuilt(std::string_view family) {
#define QUORVANE_FAMILY(variable, name, ...) family == name ||
#define QUORVANE_LEFT_OUT_FAMILY(...)
    return
#include "families/family_list.def"
        false;
#undef QUORVANE_FAMILY
#undef QUORVANE_LEFT_OUT_FAMILY
}
// to here

// Made by the compiler: a table that the first call makes would need a lock, which a child process
// might find locked.
constexpr auto kInfos = [] {
    std::array<DecodingInfo, kEntries.size()> made{};
    std::transform(kEntries.begin(), kEntries.end(), made.begin(), [](const Entry& entry) {
        DecodingInfo info = entry.info;
        info.described = IsBuilt(entry.row.family);
        return info;
    });
    return made;
}();

// Where the messages of `row` are described.
Binding Find(const DecodingRow& row) {
    for (const families::Family* family : families::AllFamilies()) {
        if (family->name != row.family) {
            continue;
        }
        if (const auto* set = families::FindSet(*family, row.set)) {
            return {family, set};
        }
    }
    return {nullptr, nullptr};
}

// A binding that was looked up once. All threads find the same one, so that it does not matter
// which of them stores it: `family` is stored last and read first.
struct KnownBinding {
    std::atomic<const families::Family*> family{nullptr};
    std::atomic<const iecodec::MessageSetRow*> set{nullptr};
};

constinit std::array<KnownBinding, kEntries.size()> knownBindings{};

}  // namespace

bool IsDecoding(Decoding decoding) {
    return IndexOf(decoding) < kEntries.size();
}

const DecodingRow& RowOf(Decoding decoding) {
    return IsDecoding(decoding) ? kEntries[IndexOf(decoding)].row : kNoRow;
}

Binding BindingOf(Decoding decoding) {
    if (!IsDecoding(decoding)) {
        return {nullptr, nullptr};
    }
    KnownBinding& known = knownBindings[IndexOf(decoding)];
    if (const families::Family* family = known.family.load(std::memory_order_acquire)) {
        return {family, known.set.load(std::memory_order_relaxed)};
    }
    const Binding found = Find(RowOf(decoding));
    known.set.store(found.set, std::memory_order_relaxed);
    known.family.store(found.family, std::memory_order_release);
    return found;
}

}  // namespace facade

std::span<const DecodingInfo> Decodings() noexcept {
    return facade::kInfos;
}

std::optional<Decoding> FindDecoding(std::string_view name) noexcept {
    for (const facade::Entry& entry : facade::kEntries) {
        if (entry.info.name == name) {
            return entry.info.decoding;
        }
    }
    return std::nullopt;
}

}  // namespace quorvane
