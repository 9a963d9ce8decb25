#include "compiler/type_parser.h"

#include <charconv>
#include <utility>

namespace quorvane::compiler {
namespace {

// Types inside types are read by recursion: no text may use up the stack.
constexpr int kMostDepth = 50;

/// Splits "int8" into its word and number.
bool Sized(Reporter& reporter, const Name& word, std::string_view prefix,
           std::optional<WideNumber>& size) {
    if (!word.text.starts_with(prefix)) {
        return false;
    }
    Span span = word.span;
    span.begin += static_cast<std::uint32_t>(prefix.size());
    const std::string_view digits = std::string_view(word.text).substr(prefix.size());
    size = ParseDigits(reporter, digits, 10, span);
    return digits.empty() || size.has_value();
}

}  // namespace

void TypeParser::Once(bool first, Span span, const std::string& what) {
    if (!first) {
        tokens_.Error(span, what + " stands here already");
    }
}

void TypeParser::ParseNames(std::string_view what, std::vector<Name>& names) {
    do {
        const Name name = tokens_.ExpectName(what);
        if (!name.text.empty()) {
            names.push_back(name);
        }
    } while (tokens_.AtWord());
}

bool TypeParser::AcceptRecord(std::string_view what, std::vector<Name>& record) {
    const Span span = tokens_.Peek().span;
    if (!tokens_.Accept("record")) {
        return false;
    }
    Once(record.empty(), span, "a line 'record'");
    ParseNames(what, record);
    return true;
}

void TypeParser::ParseEnum() {
    EnumModel model;
    const Name name = tokens_.ExpectName("the enumeration's name");
    model.name = name.text;
    model.span = name.span;
    ParseEnumValues(model);
    model.broken = IsBroken();
    family_.enums.push_back(std::move(model));
}

void TypeParser::ParseEnumValues(EnumModel& model) {
    ParseBlock([&] {
        const Span span = tokens_.Peek().span;
        if (tokens_.Accept("other")) {
            Once(!model.otherText, span, "'other'");
            tokens_.Expect("=");
            model.otherText = ExpectText();
            return;
        }
        EnumModel::Value value;
        value.value = tokens_.ExpectNumber("a value, or 'other',");
        tokens_.Expect("=");
        value.text = ExpectText();
        value.unreachable = tokens_.Accept("unreachable");
        model.values.push_back(std::move(value));
    });
}

Name TypeParser::ParseInlineEnum() {
    EnumModel model;
    model.span = tokens_.Peek().span;
    model.name = "@" + std::to_string(family_.enums.size());
    ParseEnumValues(model);
    model.broken = IsBroken();
    family_.enums.push_back(model);
    return {model.name, model.span};
}

std::string TypeParser::ExpectText() {
    if (!tokens_.At(Token::Kind::kText)) {
        tokens_.ErrorExpected("a text in double quotes");
        return "";
    }
    const Token& token = tokens_.Next();
    return Unescaped(token);
}

std::string TypeParser::Unescaped(const Token& token) {
    std::string result;
    const std::string_view text = token.text;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] != '\\') {
            result += text[at];
            continue;
        }
        const char form = at + 1 < text.size() ? text[at + 1] : '\0';
        unsigned octet = 0;
        const char* digits = text.data() + at + 2;
        if (form == 't' || form == '\\') {
            result += form == 't' ? '\t' : '\\';
            at += 1;
        } else if (form == 'x' && at + 4 <= text.size() &&
                   std::from_chars(digits, digits + 2, octet, 16).ptr == digits + 2) {
            result += static_cast<char>(octet);
            at += 3;
        } else {
            Span span = token.span;
            span.begin += static_cast<std::uint32_t>(at + 1);
            tokens_.Error(span,
                          "a backslash stands before 't', 'x' and two digits, or a backslash");
        }
    }
    return result;
}

TypeSyntax TypeParser::ParseType() {
    TypeSyntax type;
    type.span = tokens_.Peek().span;
    if (depth_ >= kMostDepth) {
        tokens_.ErrorExpected("a declared type for what is nested so deeply");
        return type;
    }
    if (tokens_.Accept("[")) {
        type.kind = TypeSyntax::Kind::kSequence;
        type.size = tokens_.ExpectNumber("the most items of the sequence");
        tokens_.Expect("]");
        tokens_.Expect("of");
        ++depth_;
        type.item.push_back(ParseType());
        --depth_;
        return type;
    }
    if (tokens_.At("{")) {
        type.kind = TypeSyntax::Kind::kStruct;
        ++depth_;
        ParseBlock([&] { type.members.push_back(ParseMember()); });
        --depth_;
        return type;
    }
    const Name word = tokens_.ExpectName("a type");
    if (Sized(reporter_, word, "spare", type.size)) {
        type.kind = TypeSyntax::Kind::kSpare;
    } else if (word.text == "binary") {
        type.kind = TypeSyntax::Kind::kBinary;
        type.size = tokens_.ExpectNumber("the most bits of the binary");
        type.fixed = tokens_.Accept("fixed");
    } else if (word.text != "int" && Sized(reporter_, word, "int", type.size)) {
        type.kind = TypeSyntax::Kind::kInteger;
    } else if (Sized(reporter_, word, "enum", type.size)) {
        type.kind = TypeSyntax::Kind::kEnumerated;
        type.name =
            tokens_.At("{") ? ParseInlineEnum() : tokens_.ExpectName("the enumeration's name");
    } else {
        type.kind = TypeSyntax::Kind::kNamed;
        type.name = word;
    }
    return type;
}

MemberSyntax TypeParser::ParseMember() {
    MemberSyntax member;
    if (tokens_.Accept("-")) {
        member.extent = MemberSyntax::Extent::kBits;
        member.name.span = tokens_.Peek().span;
        member.bits = tokens_.ExpectNumber("the number of unnamed bits");
        return member;
    }
    member.name = tokens_.ExpectName("a member's name, or '-' for unnamed bits,");
    member.optional = tokens_.Accept("?");
    if (tokens_.Accept("counted")) {
        member.extent = MemberSyntax::Extent::kCounted;
    } else if (tokens_.Accept("rest")) {
        member.extent = MemberSyntax::Extent::kRest;
    } else if (const auto bits = tokens_.AcceptNumber()) {
        member.extent = MemberSyntax::Extent::kBits;
        member.bits = *bits;
    }
    tokens_.Expect(":");
    member.type = ParseType();
    return member;
}

StructSyntax TypeParser::ParseStruct() {
    using Shape = StructSyntax::Shape;
    StructSyntax result;
    result.name = tokens_.ExpectName("the struct's name");
    if (tokens_.Accept("fixed")) {
        result.shape = Shape::kFixed;
    } else if (tokens_.Accept("truncatable")) {
        result.shape = Shape::kTruncatable;
    } else if (tokens_.Accept("serial")) {
        result.shape = Shape::kSerial;
    } else if (tokens_.Accept("extension")) {
        result.shape = Shape::kExtension;
    } else if (tokens_.Accept("special")) {
        result.shape = Shape::kSpecial;
        result.special = tokens_.ExpectName("the name of the C++ element");
    } else {
        tokens_.ErrorExpected("the wire form (fixed, truncatable, serial, extension or special)");
    }
    result.unlocated = tokens_.Accept("unlocated");
    if (result.shape == Shape::kExtension) {
        ParseBlock([&] { ParseExtensionPart(result); });
    } else {
        ParseBlock([&] {
            if (!AcceptRecord("a member of the struct", result.record)) {
                result.members.push_back(ParseMember());
            }
        });
    }
    return result;
}

void TypeParser::ParseExtensionPart(StructSyntax& owner) {
    const Span span = tokens_.Peek().span;
    if (tokens_.Accept("remainder")) {
        Once(!owner.remainder, span, "a remainder");
        owner.remainder = ParseMember();
        return;
    }
    tokens_.Expect("group");
    reporter_.ErrorIf(owner.remainder.has_value(), span, "the remainder stands behind all groups");
    GroupSyntax group;
    group.span = span;
    group.number = tokens_.ExpectNumber("the octet number of the group");
    group.optional = tokens_.Accept("optional");
    ParseBlock([&] {
        OctetSyntax octet;
        octet.span = tokens_.Peek().span;
        tokens_.Expect("octet");
        ParseBlock([&] { octet.members.push_back(ParseMember()); });
        group.octets.push_back(std::move(octet));
    });
    owner.groups.push_back(std::move(group));
}

UnionSyntax TypeParser::ParseUnion() {
    UnionSyntax result;
    result.name = tokens_.ExpectName("the union's name");
    if (tokens_.Accept("choice")) {
        result.selectorOffset = tokens_.ExpectNumber("the selector's offset in bits");
        result.selectorWidth = tokens_.ExpectNumber("the selector's width in bits");
    } else if (tokens_.Accept("messages")) {
        result.shape = UnionSyntax::Shape::kMessages;
        tokens_.Expect("octet");
        result.selectorOffset = tokens_.ExpectNumber("the octet of the message type");
        result.selectorWidth.value = 8;
    } else if (tokens_.Accept("special")) {
        result.shape = UnionSyntax::Shape::kSpecial;
        result.special = tokens_.ExpectName("the name of the C++ element");
    } else {
        tokens_.ErrorExpected("the way to choose (choice, messages or special)");
    }
    ParseBlock([&] {
        AlternativeSyntax alternative;
        alternative.name = tokens_.ExpectName("an alternative's name");
        tokens_.Expect(":");
        alternative.type = ParseType();
        if (tokens_.Accept("when")) {
            alternative.selector = tokens_.ExpectNumber("the selector's value");
        }
        alternative.isDefault = tokens_.Accept("default");
        result.alternatives.push_back(std::move(alternative));
    });
    return result;
}

SequenceSyntax TypeParser::ParseSequence() {
    SequenceSyntax result;
    result.name = tokens_.ExpectName("the sequence's name");
    result.type = ParseType();
    if (result.type.kind != TypeSyntax::Kind::kSequence) {
        tokens_.Error(result.type.span, "a sequence is '[most] of type'");
        result.type.kind = TypeSyntax::Kind::kSequence;
        result.type.size = WideNumber{1, result.type.span};
        result.type.item.resize(1);
    }
    if (tokens_.Accept("special")) {
        result.special = true;
        result.specialName = tokens_.ExpectName("the name of the C++ element");
    }
    tokens_.ExpectLineEnd();
    return result;
}

}  // namespace quorvane::compiler
