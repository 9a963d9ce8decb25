#pragma once

// What a description file says, as parsed and before any name is looked up. The notation is
// described in docs/description-notation.md.

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "compiler/model.h"
#include "compiler/reporter.h"
#include "iecodec/tables.h"

namespace quorvane::compiler {

struct Name {
    std::string text;
    Span place;
};

struct MemberSyntax;

/// What stands behind a colon.
struct TypeSyntax {
    enum class Kind { kInteger, kEnumerated, kBinary, kSpare, kNamed, kSequence, kStruct };

    Kind kind = Kind::kSpare;
    Span place;
    std::optional<std::uint32_t> size;  // integer, enumerated: catalogue bits; binary; sequence
    bool fixed = false;
    Name name;                          // enumeration or named type
    std::unique_ptr<TypeSyntax> item;   // sequence
    std::vector<MemberSyntax> members;  // inline struct
};

struct MemberSyntax {
    enum class Extent { kNone, kBits, kCounted, kRest };

    Name name;  // empty text: unnamed bits
    bool optional = false;
    Extent extent = Extent::kNone;
    std::uint32_t bits = 0;
    TypeSyntax type;
};

struct OctetSyntax {
    Span place;
    std::vector<MemberSyntax> members;
};

struct GroupSyntax {
    Span place;
    std::uint32_t number = 0;
    bool optional = false;
    std::vector<OctetSyntax> octets;
};

struct StructSyntax {
    enum class Shape { kFixed, kTruncatable, kSerial, kExtension, kSpecial };

    Name name;
    Shape shape = Shape::kFixed;
    bool unlocated = false;
    Name special;
    std::vector<MemberSyntax> members;
    std::vector<GroupSyntax> groups;
    std::optional<MemberSyntax> remainder;
};

struct AlternativeSyntax {
    Name name;
    Name type;
    std::optional<std::uint32_t> selector;
    bool isDefault = false;
};

struct UnionSyntax {
    enum class Shape { kChoice, kMessages, kSpecial };

    Name name;
    Shape shape = Shape::kChoice;
    std::uint32_t selectorOffset = 0;  // bits
    std::uint32_t selectorWidth = 0;
    Name special;
    std::vector<AlternativeSyntax> alternatives;
};

struct SequenceSyntax {
    Name name;
    TypeSyntax type;  // kSequence
    bool special = false;
    Name specialName;
};

struct HeaderItemSyntax {
    using Kind = iecodec::HeaderItemKind;

    Kind kind = Kind::kField;
    Name name;
    Span place;
    std::uint32_t bits = 0;
    std::uint32_t constant = 0;
    TypeSyntax type;
};

struct HeaderSyntax {
    Name name;
    std::vector<HeaderItemSyntax> items;  // in wire order
    std::vector<Name> record;             // the members, if the record has them in another order
};

struct FieldSyntax {
    using Format = iecodec::FieldFormat;
    struct Condition {
        Name member;
        std::optional<std::uint32_t> mask;
        std::uint32_t value = 0;
    };

    Name name;
    std::optional<std::uint32_t> tag;  // 8-bit form
    bool halfTag = false;
    Format format = Format::kV;  // half octets are paired later
    bool half = false;
    std::optional<std::uint32_t> least;  // octets
    std::optional<std::uint32_t> most;
    bool mandatory = false;
    std::optional<Condition> condition;
    TypeSyntax type;
};

struct MessageSyntax {
    Name name;
    Name header;
    std::uint32_t code = 0;
    std::vector<FieldSyntax> fields;
};

struct KeyAttemptSyntax {
    std::uint32_t mask = 0;
    std::uint32_t highNibbles = 0xFFFF;
    std::uint32_t lowNibbles = 0xFFFF;
};

struct SetSyntax {
    struct Message {
        Name name;
        std::vector<std::uint32_t> keys;
    };

    Name name;
    iecodec::KeyForm keyForm = iecodec::KeyForm::kTwoOctets;
    std::uint32_t highOctet = 0;
    std::uint32_t lowOctet = 1;
    std::uint32_t typeOctet = 1;
    std::vector<KeyAttemptSyntax> attempts;
    std::vector<Message> messages;
};

struct SkipRowSyntax {
    std::uint32_t tag = 0;
    bool half = false;
    std::int32_t size = 0;
    Span place;
};

/// A type or message declaration, in file order: the catalogue is built in that order.
struct DeclarationSyntax {
    enum class Kind { kStruct, kUnion, kSequence, kMessage, kSet, kCsn };

    Kind kind = Kind::kStruct;
    std::size_t index = 0;  // in the list of its kind
    Name name;
};

/// All files of one family.
struct FamilySyntax {
    Name family;
    std::uint32_t firstNumber = 1;  // of the diagnostics
    std::vector<std::string> includes;
    std::vector<EnumModel> enums;
    std::vector<StructSyntax> structs;
    std::vector<UnionSyntax> unions;
    std::vector<SequenceSyntax> sequences;
    std::vector<HeaderSyntax> headers;
    std::vector<MessageSyntax> messages;
    std::vector<SetSyntax> sets;
    std::vector<SkipRowSyntax> skipRows;
    std::vector<DeclarationSyntax> declarations;
};

}  // namespace quorvane::compiler
