// The class and the plain functions.

#include "quorvane/engine.h"

#include <algorithm>
#include <cstdio>
#include <string_view>

#include "facade/decoder.h"

namespace {

using quorvane::Decoding;

/// Replaces `result` by `text`; each octet becomes the wide character of the same value.
void AssignWidened(CString& result, std::string_view text) {
    wchar_t* characters = result.GetBufferSetLength(static_cast<int>(text.size()));
    std::transform(text.begin(), text.end(), characters, [](char octet) {
        return static_cast<wchar_t>(static_cast<unsigned char>(octet));
    });
}

int DecodeWide(Decoding decoding, const std::uint8_t* buffer, std::int32_t length,
               CString& result) {
    const std::int64_t readable =
        std::int64_t{std::max(length, 0)} + static_cast<std::int64_t>(quorvane::kReadAhead);
    quorvane::facade::CallMemory memory;
    const quorvane::facade::Answer answer =
        quorvane::facade::DecodeMessage(memory, decoding, {buffer, readable}, length);
    if (!answer.diagnostics.empty()) {
        std::fwrite(answer.diagnostics.data(), 1, answer.diagnostics.size(), stderr);
    }
    AssignWidened(result, answer.text);
    return answer.found ? 1 : 0;
}

}  // namespace

CQuorvaneEngine::CQuorvaneEngine() = default;
CQuorvaneEngine::CQuorvaneEngine(const CQuorvaneEngine& other) = default;
CQuorvaneEngine& CQuorvaneEngine::operator=(const CQuorvaneEngine& other) = default;
CQuorvaneEngine::~CQuorvaneEngine() = default;

void CQuorvaneEngine::GetErrorMsg(CString& text, int code) {
    text += quorvane::facade::ErrorLine(static_cast<quorvane::bits::Code>(code)).c_str();
}

#define QUORVANE_ENTRY_POINT(name)                                                               \
    int CQuorvaneEngine::Decode##name(const std::uint8_t* buffer, std::int32_t length,           \
                                      CString& result) {                                         \
        return DecodeWide(Decoding::name, buffer, length, result);                               \
    }                                                                                            \
    int quorvaneDecode##name(const std::uint8_t* buffer, std::int32_t length, CString& result) { \
        return CQuorvaneEngine().Decode##name(buffer, length, result);                           \
    }

QUORVANE_ENTRY_POINT(RRDownlink)
QUORVANE_ENTRY_POINT(RRUplink)
QUORVANE_ENTRY_POINT(ChannelRequest)
QUORVANE_ENTRY_POINT(RRPLENDownlink)
QUORVANE_ENTRY_POINT(RRSPD)
QUORVANE_ENTRY_POINT(L3Downlink)
QUORVANE_ENTRY_POINT(L3Uplink)
QUORVANE_ENTRY_POINT(RLC_MACDownlink)
QUORVANE_ENTRY_POINT(RLC_MACUplink)
QUORVANE_ENTRY_POINT(EPS_MMDownlink)
QUORVANE_ENTRY_POINT(EPS_MMUplink)
QUORVANE_ENTRY_POINT(EPS_SMDownlink)
QUORVANE_ENTRY_POINT(EPS_SMUplink)
QUORVANE_ENTRY_POINT(EPC_SS2UE)
QUORVANE_ENTRY_POINT(EPC_UE2SS)
QUORVANE_ENTRY_POINT(Packet_Control_Acknowledgement_8)
QUORVANE_ENTRY_POINT(Packet_Control_Acknowledgement_11)
