// Writing a message: the family's encoder, and a look at what a decoder makes of the octets.

#include <algorithm>
#include <string>

#include "facade/message_contents.h"
#include "iecodec/message_encoder.h"
#include "reflect/convert.h"

namespace quorvane {
namespace {

using enum MessageErrorKind;
using iecodec::Refusal;

/// "5 octets", "12 bits".
std::string LengthWords(std::int64_t bits) {
    const bool inOctets = bits % 8 == 0;
    const std::int64_t count = inOctets ? bits / 8 : bits;
    return std::to_string(count) + (inOctets ? " octet" : " bit") + (count == 1 ? "" : "s");
}

std::string LimitsWords(const Refusal& refusal) {
    const std::string takes = "takes " + LengthWords(refusal.bits) + ", which ";
    if (refusal.leastBits == refusal.mostBits) {
        return takes + "have to be " + LengthWords(refusal.mostBits);
    }
    if (refusal.bits > refusal.mostBits) {
        return takes + "can be at most " + LengthWords(refusal.mostBits);
    }
    return takes + "have to be " +
           (refusal.bits < refusal.leastBits ? "at least " + LengthWords(refusal.leastBits)
                                             : "whole octets");
}

MessageErrorKind KindOf(Refusal::Reason reason) {
    switch (reason) {
        case Refusal::Reason::kMissing:
        case Refusal::Reason::kNoChoice:
            return kMissing;
        case Refusal::Reason::kSelector:
        case Refusal::Reason::kCondition:
            return kContradiction;
        case Refusal::Reason::kLength:
            return kWrongLength;
        case Refusal::Reason::kNotWritten:
            break;
    }
    return kNotWritable;
}

std::string WordsOf(const Refusal& refusal) {
    switch (refusal.reason) {
        case Refusal::Reason::kMissing:
            return "has to be there and was never set";
        case Refusal::Reason::kNoChoice:
            return "has to hold one of its alternatives; choose one";
        case Refusal::Reason::kSelector:
            return "what it holds stands for another alternative; choose that one";
        case Refusal::Reason::kCondition:
            return refusal.cell->present
                       ? "is there, though the fields ahead of it say that it is not"
                       : "is absent, though the fields ahead of it say that it is there";
        case Refusal::Reason::kLength:
            return LimitsWords(refusal);
        case Refusal::Reason::kNotWritten:
            break;
    }
    return "its structure has no form for what it holds";
}

/// What `field` holds, in a few words.
std::string ContentsWords(const Field& field) {
    if (!field || field.Status() == FieldStatus::kAbsent) {
        return "absent";
    }
    switch (field.Kind()) {
        case FieldKind::kNumber:
        case FieldKind::kEnumerated:
            return std::to_string(field.Number());
        case FieldKind::kBits:
            return std::to_string(field.BitCount()) + " bits";
        case FieldKind::kSequence:
            return std::to_string(field.size()) + " items";
        case FieldKind::kUnion:
            return std::string(field[0].Name());
        case FieldKind::kStruct:
            break;
    }
    return "there";
}

}  // namespace

/// One call of Encode.
class Message::Writer {
  public:
    explicit Writer(const Message& message) : message_(message) {}

    /// Replaces `octets` by those of the message.
    EncodeResult Write(std::vector<std::uint8_t>& octets) const {
        if (!message_.IsFound()) {
            return {{kNoMessage, "", "there is no message to write; decode one, or make one anew"}};
        }
        if (MessageError refused = RefusedField()) {
            return {std::move(refused)};
        }
        const facade::DecodedRecord& record = message_.contents_->decoded;
        for (std::size_t room = kFirstRoom; room <= kMostRoom; room *= 8) {
            octets.assign(room, 0);
            bits::BitWriter writer(octets.data(), static_cast<std::int64_t>(room));
            iecodec::Diagnostics diagnostics;
            iecodec::EncodeContext context{record.binding.family->codec, writer, diagnostics, true};
            const bits::Outcome outcome =
                iecodec::EncodeContainer(context, *record.binding.set, record.container);
            if (writer.Overflowed()) {
                continue;
            }
            if (outcome.Failed()) {
                return {ErrorOf(context.refusal.value_or(
                    Refusal{Refusal::Reason::kNotWritten, &record.container.body}))};
            }
            octets.resize(static_cast<std::size_t>((outcome.Bits() + 7) / 8));
            return {DifferenceIn(octets), octets.size(), outcome.Bits()};
        }
        return {{kWrongLength, "",
                 "takes more than the " + std::to_string(kMostRoom) + " octets of any message"}};
    }

  private:
    static constexpr std::size_t kFirstRoom = 512;
    static constexpr std::size_t kMostRoom = kFirstRoom * 8 * 8 * 8 * 8;

    static MessageError ErrorAt(const Message& message, MessageErrorKind kind, const Field& field,
                                std::string words) {
        MessageError error{kind, "", std::move(words)};
        message.AppendPath(field, error.path);
        return error;
    }

    [[nodiscard]] MessageError ErrorOf(const Refusal& refusal) const {
        return ErrorAt(message_, KindOf(refusal.reason), message_.contents_->FieldOf(refusal.cell),
                       WordsOf(refusal));
    }

    /// The first field that the decoder refused, as an error.
    [[nodiscard]] MessageError RefusedField() const {
        Field refused;
        if (message_.FaultCount() > 0) {
            Visit(message_.Root(), [&](const Field& field, unsigned) {
                if (!refused && field.Status() == FieldStatus::kRefused) {
                    refused = field;
                }
                return !refused;
            });
        }
        return refused ? ErrorAt(message_, kRefused, refused,
                                 "the decoder refused it; set, add or clear it")
                       : MessageError();
    }

    /// What a decoder makes of the octets that is not as in the message.
    [[nodiscard]] MessageError DifferenceIn(std::span<const std::uint8_t> octets) const {
        Message read;
        const Message::Contents& contents = *message_.contents_;
        read.Decode(contents.tolerated.inside.value_or(contents.decoding), octets);
        const facade::DecodedRecord& own = contents.decoded;
        if (!read.IsFound() || read.contents_->decoded.container.tag != own.container.tag) {
            return {kContradiction, "",
                    "its octets are those of " +
                        (read.IsFound() ? std::string(read.TypeName()) : "no message")};
        }
        if (read.FaultCount() > 0) {
            const Fault fault = read.GetFault(0);
            return ErrorAt(read, kContradiction, fault.field,
                           "cannot be read back: " + std::string(fault.words));
        }
        if (read.Code() != 0) {
            return {kContradiction, "", "cannot be read back: " + std::string(read.CodeWords())};
        }
        std::string path;
        if (reflect::RecordsAgree(contents.Types(), own.Type(), own.container.body,
                                  read.contents_->decoded.container.body, path)) {
            return {};
        }
        const std::string held = ContentsWords(message_.Find(path));
        const std::string back = ContentsWords(read.Find(path));
        return {kContradiction, path,
                "is " + held + ", but is read back " +
                    (held == back ? "otherwise" : "as " + back + " from what the message says")};
    }

    const Message& message_;
};

EncodeResult Message::Encode(std::vector<std::uint8_t>& octets) const {
    std::vector<std::uint8_t> written;
    EncodeResult result = Writer(*this).Write(written);
    if (result.error) {
        return {std::move(result.error)};
    }
    octets.insert(octets.end(), written.begin(), written.end());
    return result;
}

EncodeResult Message::Encode(std::span<std::uint8_t> octets) const {
    std::vector<std::uint8_t> written;
    EncodeResult result = Writer(*this).Write(written);
    if (result.error) {
        return {std::move(result.error)};
    }
    if (written.size() > octets.size()) {
        return {{kNoRoom, "",
                 "takes " + std::to_string(written.size()) + " octets, and there is room for " +
                     std::to_string(octets.size())},
                written.size()};
    }
    std::copy(written.begin(), written.end(), octets.begin());
    return result;
}

}  // namespace quorvane
