// A message as JSON, written into the text that the thread keeps. Each function makes sure of the
// room for what it writes, and leaves some for a comma or a bracket.

#include "quorvane/json.h"

#include <charconv>

#include "facade/decoder.h"
#include "facade/json_fields.h"
#include "facade/json_string.h"
#include "facade/message_contents.h"
#include "reflect/text_buffer.h"
#include "reflect/text_pieces.h"

namespace quorvane {

using reflect::PutLiteral;
using reflect::PutUnsigned;

namespace {

constexpr std::ptrdiff_t kMostDigits = 20;  // of 64 bits

}  // namespace

class JsonWriter {
  public:
    JsonWriter(const Message& message, std::string& json) : message_(message), json_(json) {}

    void Write() {
        char* at = PutLiteral(text_.Room(0), R"({"decoding":)");
        if (const std::optional<Decoding> decoding = message_.GetDecoding()) {
            at = PutString(at, Decodings()[static_cast<std::size_t>(*decoding)].name);
        } else {
            at = PutLiteral(at, "null");
        }
        if (message_.IsFound()) {
            at = PutMessage(at);
        } else {
            at = PutCode(PutLiteral(at, R"(,"type":null)"));
        }
        text_.Advance(PutLiteral(at, "}"));
        json_.append(text_.View());
    }

  private:
    char* PutMessage(char* at) {
        at = PutCode(PutString(PutLiteral(at, R"(,"type":)"), message_.TypeName()));
        if (const std::string_view words = message_.CodeWords(); !words.empty()) {
            at = PutString(PutLiteral(at, R"(,"error":)"), words);
        }
        at = PutLiteral(text_.RoomAt(at, 0), R"(,"bits":)");
        at = std::to_chars(at, at + kMostDigits, message_.BitsConsumed()).ptr;
        at = PutFields(PutLiteral(at, R"(,"fields":)"), *message_.contents_);
        if (message_.FaultCount() > 0) {
            at = PutFaults(at);
        }
        if (message_.SurplusCount() > 0) {
            at = PutAllSurplus(at);
        }
        const std::optional<SecurityHeader> security = message_.Security();
        return security ? PutSecurity(at, *security) : at;
    }

    char* PutFields(char* at, const Message::Contents& contents) {
        const reflect::TypeTables& types = contents.Types();
        return facade::PutMembersAsJson(text_, at, types, types.types[contents.decoded.Type()],
                                        contents.decoded.container.body, contents.made);
    }

    char* PutCode(char* at) {
        at = PutLiteral(text_.RoomAt(at, 0), R"(,"code":)");
        return reflect::PutSigned(at, message_.Code());
    }

    char* PutFaults(char* at) {
        at = PutLiteral(text_.RoomAt(at, 0), R"(,"faults":[)");
        for (std::size_t index = 0; index < message_.FaultCount(); ++index) {
            at = PutFault(at, message_.GetFault(index));
            *at++ = ',';
        }
        return facade::PutEndAsJson(text_, at, ']');
    }

    char* PutFault(char* at, const Fault& fault) {
        at = PutUnsigned(PutLiteral(text_.RoomAt(at, 0), R"({"number":)"), fault.number);
        at = PutPath(PutString(PutLiteral(at, R"(,"words":)"), fault.words), fault.field);
        if (fault.offset) {
            at = PutUnsigned(PutLiteral(at, R"(,"at":)"), *fault.offset);
        }
        return PutLiteral(at, "}");
    }

    /// The path of a field, if there is one. Makes sure of room for what stands behind.
    char* PutPath(char* at, const Field& field) {
        // The caller's string has the path for a moment: it is going to grow by more than that.
        const std::size_t size = json_.size();
        if (message_.AppendPath(field, json_)) {
            at = PutLiteral(text_.RoomAt(at, 0), R"(,"path":)");
            at = PutString(at, std::string_view(json_).substr(size));
            json_.resize(size);
        }
        return text_.RoomAt(at, 0);
    }

    char* PutAllSurplus(char* at) {
        at = PutLiteral(text_.RoomAt(at, 0), R"(,"surplus":[)");
        for (std::size_t index = 0; index < message_.SurplusCount(); ++index) {
            at = PutSurplus(at, message_.GetSurplus(index));
            *at++ = ',';
        }
        return facade::PutEndAsJson(text_, at, ']');
    }

    char* PutSurplus(char* at, const Surplus& surplus) {
        at = PutLiteral(text_.RoomAt(at, 0), R"({"kind":)");
        at = surplus.kind == Surplus::Kind::kRest ? PutLiteral(at, R"("rest")")
                                                  : PutLiteral(at, R"("element")");
        if (surplus.iei) {
            at = reflect::PutHexPair(PutLiteral(at, R"(,"iei":")"), *surplus.iei);
            *at++ = '"';
        }
        at = PutPath(at, surplus.field);
        *at++ = ',';
        at = facade::PutBitsAsJson(text_, at, surplus.octets, surplus.bitCount);
        return PutLiteral(facade::PutPlaceAsJson(text_, at, surplus.place), "}");
    }

    char* PutSecurity(char* at, const SecurityHeader& security) {
        at = PutLiteral(text_.RoomAt(at, 0), R"(,"security":{"type":)");
        at = PutLiteral(PutUnsigned(at, security.type), R"(,"authenticationCode":")");
        at = text_.RoomAt(at, 0);
        for (int shift = 24; shift >= 0; shift -= 8) {
            const auto octet = static_cast<std::uint8_t>(security.authenticationCode >> shift);
            at = reflect::PutHexPair(at, octet);
        }
        at = PutUnsigned(PutLiteral(at, R"(","sequenceNumber":)"), security.sequenceNumber);
        return PutLiteral(at, "}");
    }

    char* PutString(char* at, std::string_view words) {
        return facade::PutJsonString(text_.RoomAt(at, facade::JsonStringRoom(words.size())), words);
    }

    const Message& message_;
    std::string& json_;
    facade::CallMemory memory_;
    reflect::TextBuffer& text_ = memory_->text;
};

void AppendJson(const Message& message, std::string& json) {
    JsonWriter(message, json).Write();
}

namespace {

bool AppendText(Decoding decoding, const bits::BitReader& reader, std::int64_t length,
                std::string& json, std::string& diagnostics) {
    facade::CallMemory memory;
    const facade::Answer answer = facade::DecodeMessageForJson(memory, decoding, reader, length);
    if (answer.plain) {
        json.append("\"").append(answer.text).append("\"");
    } else {
        const std::size_t before = json.size();
        json.resize(before + facade::JsonStringRoom(answer.text.size()));
        const char* end = facade::PutJsonString(json.data() + before, answer.text);
        json.resize(static_cast<std::size_t>(end - json.data()));
    }
    diagnostics.assign(answer.diagnostics);
    return answer.found;
}

}  // namespace

bool AppendTextAsJson(Decoding decoding, std::span<const std::uint8_t> message, std::string& json,
                      std::string& diagnostics) {
    const auto length = static_cast<std::int64_t>(message.size());
    return AppendText(decoding, {message.data(), length}, length, json, diagnostics);
}

bool AppendTextAsJson(Decoding decoding, PaddedMessage message, std::string& json,
                      std::string& diagnostics) {
    return AppendText(decoding, facade::ReaderOf(message), message.length, json, diagnostics);
}

}  // namespace quorvane
