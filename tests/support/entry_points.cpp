#include "support/entry_points.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace quorvane::test {

std::span<const EntryPoint> EntryPoints() {
#define QUORVANE_ENTRY_POINT(name)                                                  \
    EntryPoint {                                                                    \
        Decoding::name, #name, quorvaneDecode##name, &CQuorvaneEngine::Decode##name \
    }
    static constexpr EntryPoint kEntryPoints[] = {
        QUORVANE_ENTRY_POINT(RRDownlink),
        QUORVANE_ENTRY_POINT(RRUplink),
        QUORVANE_ENTRY_POINT(ChannelRequest),
        QUORVANE_ENTRY_POINT(RRPLENDownlink),
        QUORVANE_ENTRY_POINT(RRSPD),
        QUORVANE_ENTRY_POINT(L3Downlink),
        QUORVANE_ENTRY_POINT(L3Uplink),
        QUORVANE_ENTRY_POINT(RLC_MACDownlink),
        QUORVANE_ENTRY_POINT(RLC_MACUplink),
        QUORVANE_ENTRY_POINT(EPS_MMDownlink),
        QUORVANE_ENTRY_POINT(EPS_MMUplink),
        QUORVANE_ENTRY_POINT(EPS_SMDownlink),
        QUORVANE_ENTRY_POINT(EPS_SMUplink),
        QUORVANE_ENTRY_POINT(EPC_SS2UE),
        QUORVANE_ENTRY_POINT(EPC_UE2SS),
        QUORVANE_ENTRY_POINT(Packet_Control_Acknowledgement_8),
        QUORVANE_ENTRY_POINT(Packet_Control_Acknowledgement_11),
    };
#undef QUORVANE_ENTRY_POINT
    return kEntryPoints;
}

std::string ToUtf8(const CString& text) {
    std::string utf8;
    for (int index = 0; index < text.GetLength(); ++index) {
        const auto character = static_cast<unsigned>(text.GetAt(index));
        if (character < 0x80) {
            utf8 += static_cast<char>(character);
        } else {
            // No text of the library goes beyond U+00FF.
            utf8 += static_cast<char>(0xC0U | character >> 6U);
            utf8 += static_cast<char>(0x80U | (character & 0x3FU));
        }
    }
    return utf8;
}

PlainResult CallPlain(Decoding decoding, std::span<const std::uint8_t> readable,
                      std::int32_t length) {
    const std::size_t needed = static_cast<std::size_t>(std::max(length, 0)) + kReadAhead;
    std::vector<std::uint8_t> buffer(std::max(needed, readable.size()));
    std::copy(readable.begin(), readable.end(), buffer.begin());
    CString text(L"what stood here before");
    PlainResult result;
    result.value =
        EntryPoints()[static_cast<std::size_t>(decoding)].plain(buffer.data(), length, text);
    result.text = ToUtf8(text);
    return result;
}

std::string WithoutNumbers(std::string_view diagnostics) {
    constexpr std::string_view kStart = "<ERRID:";
    std::string result;
    while (true) {
        const std::size_t start = diagnostics.find(kStart);
        if (start == std::string_view::npos) {
            return result.append(diagnostics);
        }
        const std::size_t number = start + kStart.size();
        result.append(diagnostics.substr(0, number)).append("*");
        const std::size_t end = diagnostics.find_first_not_of("0123456789", number);
        diagnostics.remove_prefix(std::min(end, diagnostics.size()));
    }
}

}  // namespace quorvane::test
