#include "facade/decodings.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <list>

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
          {"RRDownlink", "Message_set_RRDownlink", 0}},
    Entry{{Decoding::RRUplink, "RRUplink",
           "GSM radio resource management, mobile station to network (TS 44.018)"},
          {"RRUplink", "Message_set_RRUplink", 0}},
    Entry{{Decoding::ChannelRequest, "ChannelRequest",
           "CHANNEL REQUEST, the random access octet, whatever the length (TS 44.018)"},
          {"ChannelRequest", "ChannelRequest", 8}},
    Entry{{Decoding::RRPLENDownlink, "RRPLENDownlink",
           "GSM radio resource management behind an L2 pseudo length octet (TS 44.018)"},
          {"RRPLENDownlink", "Message_set_RRPLENDownlink", 0}},
    Entry{{Decoding::RRSPD, "RRSPD",
           "GSM radio resource management with the short protocol discriminator (TS 44.018)"},
          {"RRShortPD", "Message_set_RRShortPD", 0}},
    Entry{{Decoding::L3Downlink, "L3Downlink",
           "GSM and UMTS mobility management, call control and GPRS mobility management, network "
           "to mobile station (TS 24.008)"},
          {"L3Downlink", "Message_set_L3Downlink", 0}},
    Entry{{Decoding::L3Uplink, "L3Uplink",
           "GSM and UMTS mobility management, call control and GPRS mobility management, mobile "
           "station to network (TS 24.008)"},
          {"L3Uplink", "Message_set_L3Uplink", 0}},
    Entry{{Decoding::RLC_MACDownlink, "RLC_MACDownlink",
           "GPRS RLC/MAC control messages, network to mobile station (TS 44.060)"},
          {"RLC_MAC_Downlink", "Message_set_Downlink_RLC_MAC", 0}},
    Entry{{Decoding::RLC_MACUplink, "RLC_MACUplink",
           "GPRS RLC/MAC control messages, mobile station to network (TS 44.060)"},
          {"RLC_MAC_Uplink", "Message_set_Uplink_RLC_MAC", 0}},
    Entry{{Decoding::EPS_MMDownlink, "EPS_MMDownlink",
           "EPS mobility management, network to UE (TS 24.301)"},
          {"EPS_MMDownlink", "Message_set_EPS_MM_Downlink", 0}},
    Entry{{Decoding::EPS_MMUplink, "EPS_MMUplink",
           "EPS mobility management, UE to network (TS 24.301)"},
          {"EPS_MMUplink", "Message_set_EPS_MM_Uplink", 0}},
    Entry{{Decoding::EPS_SMDownlink, "EPS_SMDownlink",
           "EPS session management, network to UE (TS 24.301)"},
          {"EPS_SMDownlink", "Message_set_EPS_SM_Downlink", 0}},
    Entry{{Decoding::EPS_SMUplink, "EPS_SMUplink",
           "EPS session management, UE to network (TS 24.301)"},
          {"EPS_SMUplink", "Message_set_EPS_SM_Uplink", 0}},
    Entry{{Decoding::EPC_SS2UE, "EPC_SS2UE", "UE test mode, system simulator to UE (TS 36.509)"},
          {"EPC_SS2UE", "Message_set_SS_to_UE", 0}},
    Entry{{Decoding::EPC_UE2SS, "EPC_UE2SS", "UE test mode, UE to system simulator (TS 36.509)"},
          {"EPC_UE2SS", "Message_set_UE_to_SS", 0}},
    Entry{{Decoding::Packet_Control_Acknowledgement_8, "Packet_Control_Acknowledgement_8",
           "access burst of 8 bits on a packet channel, whatever the length (TS 44.060)"},
          {"Packet_channel_request_8_bit_message_content",
           "Packet_channel_request_8_bit_message_content", 8}},
    Entry{{Decoding::Packet_Control_Acknowledgement_11, "Packet_Control_Acknowledgement_11",
           "access burst of 11 bits on a packet channel, whatever the length (TS 44.060)"},
          {"Packet_Control_Acknowledgement_11bit_a", "Packet_Control_Acknowledgement_11bit_a", 11}},
};

constexpr std::size_t IndexOf(Decoding decoding) {
    return static_cast<std::size_t>(decoding);
}

constexpr bool InOrder() {
    std::size_t index = 0;
    return std::all_of(kEntries.begin(), kEntries.end(),
                       [&](const Entry& entry) { return IndexOf(entry.info.decoding) == index++; });
}
static_assert(InOrder());

constexpr std::array kInfos = [] {
    std::array<DecodingInfo, kEntries.size()> infos{};
    std::transform(kEntries.begin(), kEntries.end(), infos.begin(),
                   [](const Entry& entry) { return entry.info; });
    return infos;
}();

// All families with a catalogue each, and the message sets of the decodings in them.
class Bindings {
  public:
    Bindings() {
        for (const families::Family* family : families::AllFamilies()) {
            reflect::LazyCatalogue& catalogue = catalogues_.emplace_back(family->types);
            for (std::size_t index = 0; index < kEntries.size(); ++index) {
                const auto* set = families::FindSet(*family, kEntries[index].row.set);
                if (set != nullptr) {
                    bindings_[index] = {family, set, &catalogue};
                }
            }
        }
    }

    [[nodiscard]] const Binding& Of(Decoding decoding) const {
        return bindings_[IndexOf(decoding)];
    }

  private:
    std::list<reflect::LazyCatalogue> catalogues_;
    std::array<Binding, kEntries.size()> bindings_{};
};

}  // namespace

const DecodingRow& RowOf(Decoding decoding) {
    return kEntries[IndexOf(decoding)].row;
}

const Binding& BindingOf(Decoding decoding) {
    static const Bindings bindings;
    return bindings.Of(decoding);
}

}  // namespace facade

std::span<const DecodingInfo> Decodings() noexcept {
    return facade::kInfos;
}

std::optional<Decoding> FindDecoding(std::string_view name) noexcept {
    for (const DecodingInfo& info : facade::kInfos) {
        if (info.name == name) {
            return info.decoding;
        }
    }
    return std::nullopt;
}

}  // namespace quorvane
