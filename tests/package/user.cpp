// A program of a user: uses every declaration of the public headers, and exits with 0 if the
// answers are right. Built against each form of the library.

#include <algorithm>
#include <cstdarg>
#include <cstdint>
#include <cwchar>
#include <iterator>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include <quorvane/cstring.h>
#include <quorvane/decode.h>
#include <quorvane/engine.h>
#include <quorvane/export.h>
#include <quorvane/json.h>
#include <quorvane/message.h>
#include <quorvane/version.h>

namespace {

class Engine : public CQuorvaneEngine {
  public:
    using CQuorvaneEngine::GetErrorMsg;
};

using Plain = int (*)(const std::uint8_t*, std::int32_t, CString&);
using Member = int (CQuorvaneEngine::*)(const std::uint8_t*, std::int32_t, CString&);

struct Function {
    Plain plain;
    Member member;
};

#define FUNCTION(name) \
    { quorvaneDecode##name, &CQuorvaneEngine::Decode##name }

// In the order of the decodings.
constexpr Function kFunctions[] = {
    FUNCTION(RRDownlink),
    FUNCTION(RRUplink),
    FUNCTION(ChannelRequest),
    FUNCTION(RRPLENDownlink),
    FUNCTION(RRSPD),
    FUNCTION(L3Downlink),
    FUNCTION(L3Uplink),
    FUNCTION(RLC_MACDownlink),
    FUNCTION(RLC_MACUplink),
    FUNCTION(EPS_MMDownlink),
    FUNCTION(EPS_MMUplink),
    FUNCTION(EPS_SMDownlink),
    FUNCTION(EPS_SMUplink),
    FUNCTION(EPC_SS2UE),
    FUNCTION(EPC_UE2SS),
    FUNCTION(Packet_Control_Acknowledgement_8),
    FUNCTION(Packet_Control_Acknowledgement_11),
};

bool Equal(const CString& wide, const std::string& text) {
    return wide == std::wstring(text.begin(), text.end()).c_str() &&
           wide.GetLength() == static_cast<int>(text.size());
}

// All entry points give the same answer to DEACTIVATE TEST MODE COMPLETE, TS 36.509.
bool AnswersAgree() {
    const std::vector<std::uint8_t> octets = {0x0F, 0x87};
    std::vector<std::uint8_t> padded(octets.size() + quorvane::kReadAhead);
    std::copy(octets.begin(), octets.end(), padded.begin());
    const auto length = static_cast<std::int32_t>(octets.size());
    Engine first;
    Engine engine(first);
    engine = first;
    const std::span<const quorvane::DecodingInfo> decodings = quorvane::Decodings();
    bool agree = decodings.size() == std::size(kFunctions);
    for (std::size_t index = 0; agree && index < decodings.size(); ++index) {
        const quorvane::Decoding decoding = decodings[index].decoding;
        const quorvane::Result result = quorvane::Decode(decoding, octets);
        const quorvane::PaddedMessage message(padded.data(), length, padded.size());
        const quorvane::Result same = quorvane::Decode(decoding, message);
        std::string text;
        std::string diagnostics;
        agree = same.found == result.found && same.text == result.text &&
                same.diagnostics == result.diagnostics &&
                quorvane::DecodeInto(decoding, octets, text, diagnostics) == result.found &&
                text == result.text && diagnostics == result.diagnostics &&
                quorvane::DecodeInto(decoding, message, text, diagnostics) == result.found &&
                text == result.text && diagnostics == result.diagnostics;
        CString wide;
        const int found = result.found ? 1 : 0;
        agree = agree && kFunctions[index].plain(padded.data(), length, wide) == found &&
                Equal(wide, result.text) &&
                (engine.*kFunctions[index].member)(padded.data(), length, wide) == found &&
                Equal(wide, result.text);
    }
    return agree;
}

bool AnswerIsRight() {
    const std::optional<quorvane::Decoding> decoding = quorvane::FindDecoding("EPC_UE2SS");
    if (!decoding) {
        return false;
    }
    const std::uint8_t octets[] = {0x0F, 0x87};
    const bool described = quorvane::Decodings()[static_cast<std::size_t>(*decoding)].described;
    const quorvane::Result result = quorvane::Decode(*decoding, octets);
    return result.found == described &&
           result.text == (described ? "Decoded using \"EPC_UE2SS\".\n"
                                       "MESSAGE: DEACTIVATE_TEST_MODE_COMPLETE\n{\n}\n"
                                     : "Failed to decode \"EPC_UE2SS\" message");
}

// PDN CONNECTIVITY REQUEST, TS 24.301, with an option whose length is wrong.
constexpr std::uint8_t kPdnRequest[] = {0x02, 0x01, 0xD0, 0x31, 0x27, 0x05,
                                        0x80, 0x00, 0x0D, 0x03, 0xAB};

bool FieldsAreRight(const quorvane::Message& message) {
    const quorvane::Field type = message.Find("PDNType");
    const std::optional<quorvane::Place> place = type.GetPlace();
    bool right = message.Root().size() == 7 && type.Name() == "PDNType" && !type.IsOptional() &&
                 type.Kind() == quorvane::FieldKind::kEnumerated && type.Number() == 3 &&
                 type.Words() == "IPv4v6" && type.Status() == quorvane::FieldStatus::kDecoded &&
                 place && place->offset == 24 && place->length == 4;

    const quorvane::Field list = message.Find("ProtocolConfigurationOptions.ProtocolCfgs");
    const quorvane::Field contents = list[0].Find("Contents");
    std::string path;
    right = right && message.AppendPath(contents, path) &&
            path == "ProtocolConfigurationOptions.ProtocolCfgs[0].Contents" &&
            contents.BitCount() <= 24 && contents.Octets().size() <= 3;

    std::size_t seen = 0;
    quorvane::Visit(message.Root(), [&seen](const quorvane::Field& field, unsigned depth) {
        seen += field ? 1U : 0U;
        return depth == 0;
    });
    const quorvane::Fault fault = message.GetFault(0);
    return right && seen == 8 && std::distance(message.begin(), message.end()) == 7 &&
           fault.number != 0 && !fault.words.empty() && fault.field && fault.offset;
}

bool TypesAreRight(const quorvane::Message& message) {
    const quorvane::Type type = message.GetType();
    const quorvane::Type pdn = type.Member(3).type;
    const quorvane::Type list = message.Find("ProtocolConfigurationOptions.ProtocolCfgs").GetType();
    bool known = false;
    const std::size_t count = quorvane::MessageTypes::Count(quorvane::Decoding::EPS_SMUplink);
    for (std::size_t index = 0; index < count; ++index) {
        known =
            known || quorvane::MessageTypes::At(quorvane::Decoding::EPS_SMUplink, index) == type;
    }
    return known && type.Name() == "PDN_CONNECTIVITY_REQUEST" && type.MemberCount() == 7 &&
           type.Member(3).name == "PDNType" && pdn.Kind() == quorvane::FieldKind::kEnumerated &&
           pdn.WordsOf(3) == "IPv4v6" && pdn.ValueCount() > 0 && !pdn.Value(0).words.empty() &&
           pdn.OtherWords().size() < 100 && pdn.Bits() > 0 && !pdn.IsFixed() &&
           list.MostItems() > 1 && list.ItemType().MemberCount() > 0;
}

bool MessagesWork() {
    const auto decoding = quorvane::Decoding::EPS_SMUplink;
    quorvane::Message first;
    const bool described = quorvane::Decodings()[static_cast<std::size_t>(decoding)].described;
    if (first.Decode(decoding, kPdnRequest) != described || first.IsFound() != described) {
        return false;
    }
    quorvane::Message message(std::move(first));
    if (!described) {
        return message.Code() == -2 && message.CodeWords() == "UNKNOWN MESSAGE";
    }
    std::string json;
    quorvane::AppendJson(message, json);
    std::string text;
    std::string diagnostics;
    const bool found = quorvane::AppendTextAsJson(decoding, kPdnRequest, text, diagnostics) &&
                       text.find("IPv4v6 (3)\\n") != text.npos;
    bool right = found && message.TypeName() == "PDN_CONNECTIVITY_REQUEST" && message.Code() == 0 &&
                 message.GetDecoding() == decoding && json.find("IPv4v6") != json.npos &&
                 message.CodeWords().empty() && message.BitsConsumed() > 0 &&
                 message.FaultCount() > 0 && FieldsAreRight(message) && TypesAreRight(message);
    first = std::move(message);
    const quorvane::PaddedMessage padded(kPdnRequest, 4, sizeof kPdnRequest);
    right = right && quorvane::AppendTextAsJson(decoding, padded, text, diagnostics);
    right = right && first.Decode(decoding, padded) && first.BitsConsumed() == 32;
    return right;
}

// AUTHENTICATION REJECT, TS 24.301, behind a security header; and one with an unknown element
// behind the cause of a SERVICE REJECT.
bool ToleranceWorks() {
    const auto decoding = quorvane::Decoding::EPS_MMDownlink;
    if (!quorvane::Decodings()[static_cast<std::size_t>(decoding)].described) {
        return true;
    }
    quorvane::DecodeOptions options;
    options.tolerant = true;
    options.deciphered = true;
    const std::uint8_t hidden[] = {0x27, 0xAA, 0xBB, 0xCC, 0xDD, 0x01, 0x07, 0x54};
    quorvane::Message message;
    const quorvane::SecurityHeader header{2, 0xAABBCCDD, 1};
    bool right = message.Decode(decoding, hidden, options) &&
                 message.TypeName() == "AUTHENTICATION_REJECT" && message.Security() == header &&
                 message.SurplusCount() == 0;
    const std::uint8_t later[] = {0x07, 0x4E, 0x27, 0x6A, 0x01, 0x21};
    right = right &&
            message.Decode(decoding, quorvane::PaddedMessage(later, 6, sizeof later), options) &&
            message.Code() == 0 && message.SurplusCount() == 1 && !message.Security();
    const quorvane::Surplus surplus = message.GetSurplus(0);
    right = right && surplus.kind == quorvane::Surplus::Kind::kElement && surplus.iei == 0x6A &&
            surplus.octets.size() == 3 && surplus.bitCount == 24 && surplus.place.offset == 24 &&
            surplus.place.length == 24 && surplus.field.Name() == "SERVICE_REJECT";
    std::string text;
    message.AppendText(text);
    return right && text == quorvane::Decode(decoding, std::span(later).first(3)).text;
}

// The same request without the option, made and changed.
bool MessagesCanBeWritten() {
    const auto decoding = quorvane::Decoding::EPS_SMUplink;
    quorvane::Message message;
    const quorvane::MessageError made = message.New(decoding, "PDN_CONNECTIVITY_REQUEST");
    if (!quorvane::Decodings()[static_cast<std::size_t>(decoding)].described) {
        return made.kind == quorvane::MessageErrorKind::kNoMessage;
    }
    const std::string list = "ProtocolConfigurationOptions.ProtocolCfgs";
    const std::uint8_t octets[] = {0xAB};
    bool right = !made && !message.Set("EPSBearerIdentity", 0) &&
                 !message.Set("ProcedureTransactionIdentity", 1) &&
                 !message.Set(message.Find("RequestType"), 1) &&
                 !message.SetWords("PDNType", "IPv4v6") && !message.Append(list) &&
                 !message.Resize(list, 2) && !message.SetBits(list + "[1].Contents", octets, 8) &&
                 !message.Add("AccessPointName") && !message.Clear("AccessPointName") &&
                 !message.Clear("ProtocolConfigurationOptions");
    const quorvane::MessageError error = message.Choose("PDNType", "IPv4");
    right = right && error && error.path == "PDNType" && !error.words.empty();
    std::vector<std::uint8_t> written;
    std::uint8_t room[4];
    const quorvane::EncodeResult result = message.Encode(written);
    return right && !result.error && result.octets == 4 && result.bits == 32 &&
           !message.Encode(room).error &&
           std::equal(written.begin(), written.end(), room, room + 4) &&
           std::equal(written.begin(), written.end(), kPdnRequest, kPdnRequest + 4);
}

void AppendArguments(CString& text, const wchar_t* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    text.AppendFormatV(format, arguments);
    va_end(arguments);
}

bool StringsWork() {
    CString text(L"0");
    text.Format(L"%d", 1);
    text.AppendFormat(L"%s", L"2");
    AppendArguments(text, L"%x", 3U);
    text += CString(L"4");
    text += L"5";
    text += "6";
    text += L'7';
    const wchar_t* const view = text;
    bool right = text == L"1234567" && text == CString(view) && text.GetAt(1) == L'2' &&
                 text.GetString()[0] == L'1' && !text.IsEmpty() && text.GetLength() == 7;
    text.GetBufferSetLength(2)[1] = L'x';
    right = right && text == L"1x";
    text.Empty();
    Engine().GetErrorMsg(text, -1);
    return right && text.GetString() == std::wcsstr(text.GetString(), L"Decoder reported");
}

}  // namespace

int main() {
    const std::string version = std::to_string(QUORVANE_VERSION_MAJOR) + "." +
                                std::to_string(QUORVANE_VERSION_MINOR) + "." +
                                std::to_string(QUORVANE_VERSION_PATCH);
    const bool right = AnswersAgree() && AnswerIsRight() && MessagesWork() && ToleranceWorks() &&
                       MessagesCanBeWritten() && StringsWork() && quorvane::Version() == version;
    return right ? 0 : 1;
}
