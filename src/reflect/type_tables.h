#pragma once

// The types of a message family as constant tables, written by the description compiler. The
// renderer and the converters walk records with them, the catalogue builds its descriptors from
// them.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "bits/named_enum.h"

namespace quorvane::reflect {

QUORVANE_NAMED_ENUM(TypeKind, kInteger, kEnumerated, kBinary, kSequence, kStruct, kUnion)

/// Octets of one copying step: longer than most names with their ": ". As many octets are readable
/// from the start of every label and every rendered value, however short it is.
inline constexpr std::size_t kCopyStep = 32;

/// A value of an enumeration and its text, in the order of the protocol's table.
struct EnumValueRow {
    std::string_view rendered;  // the text, followed by the value in parentheses: "IPv4v6 (3)"
    std::uint16_t textLength;   // of the text alone
    bool ascii;                 // whether the text is
    std::uint32_t value;

    [[nodiscard]] constexpr std::string_view Text() const { return rendered.substr(0, textLength); }
};

/// The values of one enumeration; several types may share them.
struct EnumRow {
    std::uint32_t firstValue;  // into TypeTables::enumValues
    std::uint32_t valueCount;
    std::uint32_t inPlace;       // how many of them, from the first on, have their index as value
    std::string_view otherText;  // the text of every value that is not listed
    bool hasOtherText;
    bool otherIsAscii;
};

/// A member of a struct or an alternative of a union.
struct ElementRow {
    std::string_view label;  // the name, followed by ": "
    std::uint16_t type;      // into TypeTables::types
    bool optional;

    [[nodiscard]] constexpr std::string_view Name() const {
        return label.substr(0, label.size() - 2);
    }
};

/// One descriptor: a named type, or the inline type of exactly one member or sequence.
struct TypeRow {
    std::string_view name;
    TypeKind kind;
    bool named;  // in the catalogue's list; its users do not own it
    bool fixed;  // binaries: always `size` bits
    std::uint32_t
        size;  // integer, enumerated: bits (0: no value); binary: most bits; sequence: bound
    std::uint16_t first;  // struct, union: first element; sequence: item type; enumerated: EnumRow
    std::uint16_t count;  // struct, union: elements
};

struct TypeTables {
    std::span<const TypeRow> types;
    std::span<const ElementRow> elements;
    std::span<const EnumRow> enums;
    std::span<const EnumValueRow> enumValues;
    std::span<const std::uint16_t> named;  // type indices of the named types, in build order

    [[nodiscard]] std::span<const ElementRow> ElementsOf(const TypeRow& type) const {
        return elements.subspan(type.first, type.count);
    }

    /// The first row that lists `value` in the enumeration `row`, or null.
    [[nodiscard]] const EnumValueRow* FindValue(const EnumRow& row, std::uint32_t value) const {
        const EnumValueRow* first = enumValues.data() + row.firstValue;
        if (value < row.inPlace) {
            return first + value;
        }
        const EnumValueRow* end = first + row.valueCount;
        const EnumValueRow* found =
            std::find_if(first + row.inPlace, end,
                         [value](const EnumValueRow& listed) { return listed.value == value; });
        return found == end ? nullptr : found;
    }
};

}  // namespace quorvane::reflect
