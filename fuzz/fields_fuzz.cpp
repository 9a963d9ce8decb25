// Fields of a message, walked, found by their paths and set at random. No call fails but by its
// error, and what the message says of itself holds together. What is written is read back and
// written the same; a message that was not changed comes back with the same fields.
//
// Input: the decoding; how many octets the message has, two octets, 65535 for a message made anew,
// whose type follows; the octets; the changes.

#include <algorithm>
#include <string>
#include <vector>

#include "fuzz_support.h"
#include "quorvane/json.h"
#include "reach.h"

namespace quorvane {
namespace {

using fuzz::Input;
using fuzz::Require;

/// Whether two messages have the same fields with the same contents.
bool Same(const Field& a, const Field& b) {
    const bool absent = a.Status() == FieldStatus::kAbsent;
    if (absent != (b.Status() == FieldStatus::kAbsent) || a.GetType() != b.GetType()) {
        return false;
    }
    return absent || (a.Number() == b.Number() && std::ranges::equal(a.Octets(), b.Octets()) &&
                      std::equal(a.begin(), a.end(), b.begin(), b.end(), Same));
}

/// Looks at all that the fields tell.
void Walk(const Message& message) {
    Visit(message.Root(), [&](const Field& field, unsigned) {
        Require(field.empty() || field[field.size() - 1], "a child is missing");
        Require(!field[field.size()], "there is a child too many");
        Require(field.Octets().size() == (field.BitCount() + 7) / 8, "the octets are not the bits");
        Require(!field || field.Status() != FieldStatus::kAbsent || field.IsOptional(),
                "a field is absent that has to be there");
        static_cast<void>(field.GetPlace());
        return true;
    });
}

/// Changes a message as the input says.
class MessageChanger {
  public:
    MessageChanger(Message& message, Input& input) : message_(message), input_(input) {}

    void Change() {
        Field field = message_.Root();
        while (field.size() > 0 && input_.Below(4) != 0) {
            field = field[input_.Below(field.size())];
        }
        std::string path;
        const bool hasPath = message_.AppendPath(field, path);
        if (hasPath) {
            const Field found = message_.Find(path);
            Require(found.GetType() == field.GetType() && found.Number() == field.Number(),
                    "a path leads to another field");
        }
        if (input_.Below(16) == 0) {
            const std::span<const std::uint8_t> more = input_.Take(input_.Below(8));
            path.append(reinterpret_cast<const char*>(more.data()), more.size());
        }
        Apply(hasPath && input_.Below(2) == 0 ? FieldAt(path) : FieldAt(field), field.GetType());
    }

  private:
    void Apply(const FieldAt& field, const Type& type) {
        switch (input_.Below(8)) {
            case 0:
                return Take(message_.Clear(field));
            case 1:
                return Take(message_.Add(field));
            case 2:
                return Take(message_.Append(field));
            case 3:
                return Take(message_.Resize(field, input_.Below(70000)));
            case 4:
                return Take(message_.Set(field, input_.Number()));
            default:
                break;
        }
        switch (type.Kind()) {
            case FieldKind::kNumber:
                return Take(message_.Set(field, input_.Number(2)));
            case FieldKind::kEnumerated:
                return Take(message_.SetWords(
                    field,
                    type.Value(input_.Below(std::max<std::size_t>(type.ValueCount(), 1))).words));
            case FieldKind::kBits: {
                const std::size_t bits = input_.Below(type.Bits() + 2);
                const std::span<const std::uint8_t> octets = input_.Take((bits + 7) / 8);
                return Take(message_.SetBits(field, octets, static_cast<std::uint32_t>(bits)));
            }
            case FieldKind::kUnion:
                return Take(
                    message_.Choose(field, type.Member(input_.Below(type.MemberCount() + 1)).name));
            case FieldKind::kSequence:
                return Take(message_.Resize(field, input_.Below(type.MostItems() + 2)));
            case FieldKind::kStruct:
                return Take(message_.Add(field));
        }
    }

    static void Take(const MessageError& error) {
        Require(error.words.empty() != static_cast<bool>(error), "an error has no words");
    }

    Message& message_;
    Input& input_;
};

/// Writes the message, and checks the octets.
void Write(Decoding decoding, const Message& message) {
    std::vector<std::uint8_t> octets;
    const EncodeResult result = message.Encode(octets);
    if (result.error) {
        Require(octets.empty() && !result.error.words.empty(), "an error has no words");
        return;
    }
    Message read;
    Require(read.Decode(decoding, octets) && read.Code() == 0 && read.FaultCount() == 0,
            "what was written has a fault");
    fuzz::ReachOfThisRun().NoteMessage(decoding, octets);
    std::vector<std::uint8_t> again;
    Require(!read.Encode(again).error && again == octets, "the second encoding differs");
}

void CheckDecoded(Decoding decoding, const Message& message) {
    std::vector<std::uint8_t> octets;
    if (message.Encode(octets).error) {
        return;
    }
    Message read;
    read.Decode(decoding, octets);
    Require(Same(message.Root(), read.Root()), "other fields come back");
}

}  // namespace
}  // namespace quorvane

int LLVMFuzzerTestOneInput(const std::uint8_t* octets, std::size_t size) {
    using namespace quorvane;
    Input input(octets, size);
    const Decoding decoding = Decodings()[input.Below(Decodings().size())].decoding;
    const std::size_t length = input.Number(2);
    Message message;
    if (length == 0xFFFF) {
        const std::size_t types = std::max<std::size_t>(MessageTypes::Count(decoding), 1);
        static_cast<void>(
            message.New(decoding, MessageTypes::At(decoding, input.Below(types)).Name()));
    } else {
        const fuzz::ExactOctets decoded(input.Take(length));
        fuzz::ReachOfThisRun().NoteMessage(decoding, decoded.View());
        if (message.Decode(decoding, decoded.View())) {
            CheckDecoded(decoding, message);
        }
    }
    Walk(message);
    constexpr int kMostChanges = 200;
    MessageChanger changer(message, input);
    for (int count = 0; count < kMostChanges && !input.Empty(); ++count) {
        changer.Change();
    }
    Walk(message);
    Write(decoding, message);
    std::string json;
    AppendJson(message, json);
    return 0;
}
