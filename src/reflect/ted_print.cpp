// The text of value trees. A line costs one check of the buffer's room where it can: indentation,
// label, location, number and line end are written as whole words under it, and only texts and
// octets of any length ask for more. Leaves are written in place, without a virtual call.

#include "reflect/ted_data.h"

namespace quorvane::reflect {
namespace {

// Two locations fit in the slack, with what a number overwrites, a comma and the line end: that of
// a union without a name to print, and that of its choice.
static_assert(2 * kMostLocation + kMostDigits + 4 + 2 <= TextBuffer::kSlack);
static_assert(kCopyStep <= TextBuffer::kSlack);

char* PutInteger(char* at, const TEDDataInteger& node) {
    return PutSigned(PutLocation(at, node.location), node.GetValue());
}

char* PutEnumerated(TextBuffer& stream, char* at, const TEDDataEnumerated& node) {
    at = PutLocation(at, node.location);
    const auto value = static_cast<std::uint32_t>(node.GetValue());
    const TEDClassEnumerated* type = node.GetEnumerated();
    if (type == nullptr) {
        return PutUnsigned(at, value);
    }
    if (const TEDEnumValue* listed = type->Find(value)) {
        const std::string_view rendered = listed->GetRendered();
        return PutPadded(stream.RoomAt(at, rendered.size()), rendered);
    }
    if (!type->HasOtherText()) {
        return PutUnsigned(at, value);
    }
    stream.Advance(at);
    stream.Append(type->GetOtherText());
    at = PutLiteral(stream.Room(0), " (");
    at = PutUnsigned(at, value);
    return PutLiteral(at, ")");
}

char* PutBinary(TextBuffer& stream, char* at, const TEDDataBinary& node) {
    const std::size_t octets = (std::size_t{node.GetBitCount()} + 7) / 8;
    at = stream.RoomAt(PutLocation(at, node.location), 3 * octets);
    return PutHex(at, node.GetData(), octets);
}

// Writes a node at `at`, where the buffer's slack stands open, and leaves at least as much room
// for the line end.
char* PutNode(TextBuffer& stream, char* at, const TEDDataBase& node, std::uint32_t indent) {
    switch (node.GetNodeKind()) {
        case TypeKind::kInteger:
            return PutInteger(at, static_cast<const TEDDataInteger&>(node));
        case TypeKind::kEnumerated:
            return PutEnumerated(stream, at, static_cast<const TEDDataEnumerated&>(node));
        case TypeKind::kBinary:
            return PutBinary(stream, at, static_cast<const TEDDataBinary&>(node));
        case TypeKind::kSequence:
        case TypeKind::kStruct:
        case TypeKind::kUnion:
            break;
    }
    stream.Advance(at);
    node.Print(stream, indent);
    return stream.Room(0);
}

char* PutIfThere(TextBuffer& stream, char* at, const TEDDataBase* node, std::uint32_t indent) {
    return node == nullptr ? PutLiteral(at, "MISSING") : PutNode(stream, at, *node, indent);
}

}  // namespace

void PrintLocation(const TEDDataBase& node, TextBuffer& stream) {
    stream.Advance(PutLocation(stream.Room(0), node.location));
}

void TEDDataInteger::Print(TextBuffer& stream, std::uint32_t) const {
    stream.Advance(PutInteger(stream.Room(0), *this));
}

void TEDDataEnumerated::Print(TextBuffer& stream, std::uint32_t) const {
    stream.Advance(PutEnumerated(stream, stream.Room(0), *this));
}

void TEDDataBinary::Print(TextBuffer& stream, std::uint32_t) const {
    stream.Advance(PutBinary(stream, stream.Room(0), *this));
}

void TEDDataStruct::Print(TextBuffer& stream, std::uint32_t indent) const {
    stream.Advance(PutLiteral(PutLocation(stream.Room(0), location), "{\n"));
    const std::size_t inner = std::size_t{indent} + 1;
    const std::uint32_t count = descriptor_->GetElementCount();
    for (std::uint32_t index = 0; index < count; ++index) {
        const std::string_view label = descriptor_->GetElement(index)->GetLabel();
        char* at = PutIndent(stream.Room(2 * inner + label.size()), inner);
        at = PutPadded(at, label);
        at = PutIfThere(stream, at, GetMember(index), indent + 1);
        stream.Advance(PutLiteral(at, "\n"));
    }
    char* at = PutIndent(stream.Room(2 * std::size_t{indent}), indent);
    stream.Advance(PutLiteral(at, "}\n"));
}

void TEDDataSequence::Print(TextBuffer& stream, std::uint32_t indent) const {
    stream.Advance(PutLiteral(PutLocation(stream.Room(0), location), "[\n"));
    const std::size_t inner = std::size_t{indent} + 1;
    for (std::uint32_t index = 0; index < GetCount(); ++index) {
        char* at = PutIndent(stream.Room(2 * inner), inner);
        at = PutIfThere(stream, at, GetItem(index), indent + 2);
        if (index + 1 < GetCount()) {
            *at++ = ',';
        }
        *at++ = '\n';
        stream.Advance(at);
    }
    char* at = PutIndent(stream.Room(2 * std::size_t{indent}), indent);
    stream.Advance(PutLiteral(at, "]"));
}

void TEDDataUnion::Print(TextBuffer& stream, std::uint32_t indent) const {
    char* at = PutLocation(stream.Room(0), location);
    if (choice_ == nullptr) {
        stream.Advance(PutLiteral(at, "NOT SET"));
        return;
    }
    // A copy has no descriptor to name its choice by.
    if (descriptor_ != nullptr && choiceIndex_ < descriptor_->GetElementCount()) {
        const std::string_view label = descriptor_->GetElement(choiceIndex_)->GetLabel();
        at = PutPadded(stream.RoomAt(at, label.size()), label);
    }
    stream.Advance(PutNode(stream, at, *choice_, indent + 1));
}

}  // namespace quorvane::reflect
