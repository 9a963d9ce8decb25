#pragma once

// The types of a message family as constant tables, written by the description compiler. The
// renderer and the converters walk records with them, the catalogue builds its descriptors from
// them.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "bits/named_enum.h"

namespace quorvane::reflect {

QUORVANE_NAMED_ENUM(TypeKind, kInteger, kEnumerated, kBinary, kSequence, kStruct, kUnion)

/// Octets of one copying step: longer than most names with their ": ". As many octets are readable
/// behind the end of every text of the tables.
inline constexpr std::size_t kCopyStep = 32;

/// A text among those of its tables (TypeTables::texts). Offsets instead of pointers: the tables
/// need no work when the library is loaded, and processes share them.
struct TextRef {
    std::uint32_t offset : 22;
    std::uint32_t length : 10;  // octets
};
inline constexpr std::uint32_t kMostTexts = 1U << 22;
inline constexpr std::uint32_t kLongestText = (1U << 10) - 1;

/// A value of an enumeration and its text, in the order of the protocol's table.
struct EnumValueRow {
    TextRef rendered;          // the text, followed by the value in parentheses: "IPv4v6 (3)"
    std::uint16_t textLength;  // of the text alone
    bool plain;                // see IsPlain
    std::uint32_t value;
};

/// The values of one enumeration; several types may share them.
struct EnumRow {
    std::uint32_t firstValue;  // into TypeTables::enumValues
    std::uint32_t valueCount;
    std::uint32_t inPlace;  // how many of them, from the first on, have their index as value
    TextRef otherText;      // the text of every value that is not listed
    bool hasOtherText;
    bool otherIsPlain;
};

/// What is written behind a member's label: mostly a number, of an integer or an enumeration of a
/// bit or more.
QUORVANE_NAMED_ENUM(LineKind, kOther, kInteger, kEnumerated)

/// A member of a struct or an alternative of a union.
struct ElementRow {
    TextRef label;       // the name, followed by ": "
    std::uint16_t type;  // into TypeTables::types
    bool optional;
    LineKind line = LineKind::kOther;
};

/// One descriptor: a named type, or the inline type of exactly one member or sequence, whose name
/// follows from there (see InlineName).
struct TypeRow {
    TextRef name;  // empty: an inline type
    TypeKind kind;
    bool fixed;           // binaries: always `size` bits
    std::uint32_t size;   // integer, enumerated: bits (0: no value); binary: most bits; sequence:
                          // bound; struct: octets of all its labels
    std::uint16_t first;  // struct, union: first element; sequence: item type; enumerated: EnumRow
    std::uint16_t count;  // struct, union: elements

    /// In the catalogue's list; its users do not own it.
    [[nodiscard]] constexpr bool IsNamed() const { return name.length != 0; }
};

/// The last part of the name of a sequence's inline item.
inline constexpr std::string_view kItemName = "data";

/// The name of the inline type that the type `around` has for its member `name`, or for its items.
inline std::string InlineName(std::string_view around, std::string_view name) {
    return std::string(around).append("_").append(name);
}

/// Whether `text` stands in JSON and in UTF-8 as it is, octet for octet.
constexpr bool IsPlain(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char character) {
        return character >= 0x20 && character < 0x7F && character != '"' && character != '\\';
    });
}

struct TypeTables {
    const char* texts;  // kCopyStep octets more than there are texts
    std::span<const TypeRow> types;
    std::span<const ElementRow> elements;
    std::span<const EnumRow> enums;
    std::span<const EnumValueRow> enumValues;
    std::span<const std::uint16_t> named;  // type indices of the named types, in build order

    [[nodiscard]] constexpr std::string_view TextAt(TextRef text) const {
        return {texts + text.offset, text.length};
    }

    /// The name of a named type; empty for an inline one.
    [[nodiscard]] constexpr std::string_view NameOf(const TypeRow& type) const {
        return TextAt(type.name);
    }

    [[nodiscard]] constexpr std::string_view NameOf(const ElementRow& element) const {
        return TextAt(element.label).substr(0, element.label.length - 2U);
    }

    /// The text of a listed value without the number.
    [[nodiscard]] constexpr std::string_view TextOf(const EnumValueRow& value) const {
        return TextAt(value.rendered).substr(0, value.textLength);
    }

    [[nodiscard]] std::span<const ElementRow> ElementsOf(const TypeRow& type) const {
        return elements.subspan(type.first, type.count);
    }

    /// The first row that lists `value` in the enumeration `row`, or null.
    [[nodiscard]] const EnumValueRow* FindValue(const EnumRow& row, std::uint32_t value) const {
        const EnumValueRow* first = enumValues.data() + row.firstValue;
        if (value < row.inPlace) {
            return first + value;
        }
        for (std::uint32_t index = row.inPlace; index < row.valueCount; ++index) {
            if (first[index].value == value) {
                return first + index;
            }
        }
        return nullptr;
    }
};

}  // namespace quorvane::reflect
