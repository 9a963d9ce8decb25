// A message as JSON, written into the text that the thread keeps. Each function makes sure of the
// room for what it writes, and leaves some for a comma or a bracket.

#include "quorvane/json.h"

#include <charconv>

#include "facade/decoder.h"
#include "facade/json_string.h"
#include "reflect/text_buffer.h"
#include "reflect/text_pieces.h"

namespace quorvane {
namespace {

using reflect::PutLiteral;
using reflect::PutUnsigned;

// What stands behind a value fits in the slack, with what a number overwrites and a comma.
static_assert(sizeof R"(,"at":[65535,65535],"status":"refused"})" + 3 + 1 <=
              reflect::TextBuffer::kSlack);

constexpr std::ptrdiff_t kMostDigits = 20;  // of 64 bits

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
        at = PutMembers(PutLiteral(at, R"(,"fields":)"), message_.Root());
        if (message_.FaultCount() > 0) {
            at = PutFaults(at);
        }
        if (message_.SurplusCount() > 0) {
            at = PutAllSurplus(at);
        }
        const std::optional<SecurityHeader> security = message_.Security();
        return security ? PutSecurity(at, *security) : at;
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
        return PutEnd(at, ']');
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
        return PutEnd(at, ']');
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
        at = PutBits(at, surplus.octets, surplus.bitCount);
        return PutLiteral(PutPlace(text_.RoomAt(at, 0), surplus.place), "}");
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

    /// The members of a struct that are there.
    char* PutMembers(char* at, const Field& around) {
        at = PutLiteral(text_.RoomAt(at, 0), "{");
        for (const Field field : around) {
            if (const FieldStatus status = field.Status(); status != FieldStatus::kAbsent) {
                at = PutField(PutKey(at, field.Name()), field, status);
                *at++ = ',';
            }
        }
        return PutEnd(at, '}');
    }

    char* PutField(char* at, const Field& field, FieldStatus status) {
        at = PutContents(PutLiteral(text_.RoomAt(at, 0), "{"), field);
        at = text_.RoomAt(at, 0);
        if (const std::optional<Place> place = field.GetPlace()) {
            at = PutPlace(at, *place);
        }
        if (status == FieldStatus::kDefault) {
            at = PutLiteral(at, R"(,"status":"default")");
        } else if (status == FieldStatus::kRefused) {
            at = PutLiteral(at, R"(,"status":"refused")");
        }
        return PutLiteral(at, "}");
    }

    static char* PutPlace(char* at, const Place& place) {
        at = PutUnsigned(PutLiteral(at, R"(,"at":[)"), place.offset);
        *at++ = ',';
        return PutLiteral(PutUnsigned(at, place.length), "]");
    }

    char* PutContents(char* at, const Field& field) {
        switch (field.Kind()) {
            case FieldKind::kNumber:
                return PutUnsigned(PutLiteral(at, R"("value":)"), field.Number());
            case FieldKind::kEnumerated:
                return PutEnumerated(at, field);
            case FieldKind::kBits:
                return PutBits(at, field.Octets(), field.BitCount());
            case FieldKind::kStruct:
                return PutMembers(PutLiteral(at, R"("fields":)"), field);
            case FieldKind::kUnion:
                return PutChoice(PutLiteral(at, R"("choice":{)"), field[0]);
            case FieldKind::kSequence:
                break;
        }
        at = PutLiteral(at, R"("items":[)");
        for (const Field item : field) {
            at = PutField(at, item, item.Status());
            *at++ = ',';
        }
        return PutEnd(at, ']');
    }

    char* PutEnumerated(char* at, const Field& field) {
        const std::uint32_t number = field.Number();
        at = PutUnsigned(PutLiteral(at, R"("value":)"), number);
        if (const std::string_view words = field.GetType().WordsOf(number); !words.empty()) {
            at = PutString(PutLiteral(at, R"(,"words":)"), words);
        }
        return at;
    }

    char* PutBits(char* at, std::span<const std::uint8_t> octets, std::uint32_t bitCount) {
        at = PutLiteral(text_.RoomAt(at, 2 * octets.size()), R"("hex":")");
        for (const std::uint8_t octet : octets) {
            at = reflect::PutHexPair(at, octet);
        }
        return PutUnsigned(PutLiteral(at, R"(","bits":)"), bitCount);
    }

    char* PutChoice(char* at, const Field& chosen) {
        if (chosen) {
            at = PutField(PutKey(at, chosen.Name()), chosen, chosen.Status());
        }
        return PutEnd(at, '}');
    }

    /// The name of a member or an alternative: copied in whole steps, as its label may be.
    char* PutKey(char* at, std::string_view name) {
        at = PutLiteral(text_.RoomAt(at, name.size()), "\"");
        return PutLiteral(reflect::PutPadded(at, name), "\":");
    }

    char* PutString(char* at, std::string_view words) {
        return facade::PutJsonString(text_.RoomAt(at, facade::JsonStringRoom(words.size())), words);
    }

    /// Closes what ends at `at`, perhaps with a comma too many.
    char* PutEnd(char* at, char bracket) {
        if (at[-1] == ',') {
            --at;
        }
        at = text_.RoomAt(at, 0);
        *at++ = bracket;
        return at;
    }

    const Message& message_;
    std::string& json_;
    facade::CallMemory memory_;
    reflect::TextBuffer& text_ = memory_->text;
};

}  // namespace

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
