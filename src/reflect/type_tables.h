#pragma once

// The types of a message family as constant tables, written by the description compiler. The
// catalogue builds its descriptors from them, the converters walk records with them.

#include <cstdint>
#include <span>
#include <string_view>

#include "bits/named_enum.h"

namespace quorvane::reflect {

QUORVANE_NAMED_ENUM(TypeKind, kInteger, kEnumerated, kBinary, kSequence, kStruct, kUnion)

/// A value of an enumeration and its text, in the order of the protocol's table.
struct EnumValueRow {
    std::string_view text;
    std::uint32_t value;
};

/// The values of one enumeration; several types may share them.
struct EnumRow {
    std::uint32_t firstValue;  // into TypeTables::enumValues
    std::uint32_t valueCount;
    std::string_view otherText;  // the text of every value that is not listed
    bool hasOtherText;
};

/// A member of a struct or an alternative of a union.
struct ElementRow {
    std::string_view name;
    std::uint16_t type;  // into TypeTables::types
    bool optional;
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
};

}  // namespace quorvane::reflect
