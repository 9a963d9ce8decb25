#pragma once

// What a description file says, as parsed and before any name is looked up. The notation is
// described in docs/description-notation.md.

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <variant>
#include <vector>

#include "compiler/model.h"
#include "compiler/number.h"
#include "iecodec/tables.h"

namespace quorvane::compiler {

struct MemberSyntax;

/// What stands behind a colon.
struct TypeSyntax {
    enum class Kind { kInteger, kEnumerated, kBinary, kSpare, kNamed, kSequence, kStruct };

    Kind kind = Kind::kSpare;
    Span span;
    std::optional<WideNumber> size;  // integer, enumerated: catalogue bits; binary; sequence
    bool fixed = false;
    Name name;                          // enumeration or named type
    std::vector<TypeSyntax> item;       // sequence: one
    std::vector<MemberSyntax> members;  // inline struct
};

struct MemberSyntax {
    enum class Extent { kNone, kBits, kCounted, kRest };

    Name name;  // empty text: unnamed bits
    bool optional = false;
    Extent extent = Extent::kNone;
    WideNumber bits;
    TypeSyntax type;
};

struct OctetSyntax {
    Span span;
    std::vector<MemberSyntax> members;
};

struct GroupSyntax {
    Span span;
    WideNumber number;
    bool optional = false;
    std::vector<OctetSyntax> octets;
};

struct StructSyntax {
    enum class Shape { kFixed, kTruncatable, kSerial, kExtension, kSpecial };

    Name name;
    Shape shape = Shape::kFixed;
    bool unlocated = false;
    Name special;
    std::vector<MemberSyntax> members;  // in wire order
    std::vector<Name> record;           // the members, if the record has them in another order
    std::vector<GroupSyntax> groups;
    std::optional<MemberSyntax> remainder;
};

struct AlternativeSyntax {
    Name name;
    TypeSyntax type;
    std::optional<WideNumber> selector;
    bool isDefault = false;
};

struct UnionSyntax {
    enum class Shape { kChoice, kMessages, kSpecial };

    Name name;
    Shape shape = Shape::kChoice;
    WideNumber selectorOffset;  // bits; of messages: octets
    WideNumber selectorWidth{1, {}};
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
    Span span;
    WideNumber bits;
    WideNumber constant;
    TypeSyntax type;
};

struct HeaderSyntax {
    Name name;
    std::vector<HeaderItemSyntax> items;  // in wire order
    std::vector<Name> record;             // the members, if the record has them in another order
    bool broken = false;                  // as of a declaration
};

struct FieldSyntax {
    using Format = iecodec::FieldFormat;
    struct Condition {
        Name field;
        Name member;  // of the field's struct; empty text: the field itself decides
        std::optional<WideNumber> mask;
        WideNumber value;
    };

    Name name;
    std::optional<WideNumber> iei;  // 8-bit form
    bool halfIei = false;
    Format format = Format::kV;  // half octets are paired later
    bool half = false;
    std::optional<WideNumber> least;  // octets
    std::optional<WideNumber> most;
    bool mandatory = false;
    bool unchecked = false;
    bool again = false;  // the identifier is that of a field above
    std::optional<Condition> condition;
    TypeSyntax type;

    /// The value's width on the wire if it is stated exactly, else 0.
    [[nodiscard]] WideNumber WireBits() const {
        if (half) {
            return {4, name.span};
        }
        if (least && least->value == kUnknownNumber) {
            return *least;
        }
        const bool exact = least && least->value == most->value;
        return exact ? WideNumber{8 * least->value, least->span} : WideNumber{0, name.span};
    }
};

struct MessageSyntax {
    Name name;
    Name header;
    std::optional<WideNumber> code;
    std::vector<FieldSyntax> fields;
    std::optional<std::size_t> countedFields;  // ahead of the line "pseudo length ends"
    Span countedEnd;
};

struct KeyMaskSyntax {
    WideNumber mask;
    std::uint16_t highNibbles = 0xFFFF;  // bit n: n is in the set
    std::uint16_t lowNibbles = 0xFFFF;
};

struct SetSyntax {
    struct Message {
        Name name;
        std::vector<WideNumber> keys;
    };

    Name name;
    std::optional<iecodec::KeyForm> keyForm;
    WideNumber highOctet;
    WideNumber lowOctet{1, {}};
    std::optional<WideNumber> typeOctet;
    std::vector<KeyMaskSyntax> masks;
    std::vector<Message> messages;
};

struct SkipRowSyntax {
    WideNumber iei;
    bool half = false;
    bool unknown = false;   // a form of elements that no message knows
    std::int32_t size = 0;  // as in IeFormatRow; 0: the identifier has no row
};

/// The C++ elements that a header declares.
struct SpecialsSyntax {
    std::string header;
    std::vector<Name> names;
};

/// A type that several families may have.
using PatternSyntax = std::variant<StructSyntax, UnionSyntax, SequenceSyntax>;

/// A type or message declaration, in file order: the catalogue is built in that order.
struct DeclarationSyntax {
    enum class Kind { kStruct, kUnion, kSequence, kMessage, kSet, kDecoding, kCsn };

    Kind kind = Kind::kStruct;
    std::size_t index = 0;  // in the list of its kind
    Name name;
    bool broken = false;  // has mistakes in the notation: only its name counts
};

/// All files of one family.
struct FamilySyntax {
    Name family;
    std::optional<WideNumber> firstNumber;  // of the diagnostics
    WideNumber lastNumber{0xFFFF, {}};
    bool itemsLocated = false;  // numbers and bit strings in sequences note their locations
    std::vector<SpecialsSyntax> specials;
    std::map<std::string, PatternSyntax> patterns;
    std::set<std::string> brokenPatterns;
    std::map<std::string, std::string> taken;  // patterns: the first name that each is given here
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
