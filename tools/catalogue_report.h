#pragma once

// Listings of a catalogue, made from its live descriptors: the same objects that decoding uses.
// Texts are narrow as in the rendering (one enumeration text holds the single octet 0xDF); every
// line ends in a line feed.
//
// Tests: tests/unit/catalogue_report_test.cpp.

#include <cstdint>

#include "reflect/catalogue.h"
#include "reflect/text_buffer.h"

namespace quorvane::tool {

/// How many objects a catalogue consists of.
struct Census {
    std::uint32_t named = 0;
    std::uint32_t structs = 0;
    std::uint32_t unions = 0;
    std::uint32_t sequences = 0;
    std::uint32_t integers = 0;  // without the enumerated ones
    std::uint32_t enumerated = 0;
    std::uint32_t binaries = 0;
    std::uint32_t elements = 0;  // members and alternatives
    std::uint32_t optional = 0;  // members that may be absent; alternatives don't count
};

[[nodiscard]] Census TakeCensus(const reflect::Catalogue& catalogue);

/// The definition of each named type in build order; types with a name of their own are only
/// named where others refer to them.
void ListDefinitions(const reflect::Catalogue& catalogue, reflect::TextBuffer& stream);

/// Nine lines of a word and a number: named, struct, union, sequence, integer, enumerated, binary,
/// elements, optional.
void ListCensus(const reflect::Catalogue& catalogue, reflect::TextBuffer& stream);

/// One line per element, its parts separated by tabs:
/// - the path: the named type, then the members down to this one, separated by dots. "[]" behind a
///   member says that it is a sequence, so that what follows is inside of its items;
/// - the kind: struct, union, sequence, integer, enumerated or binary;
/// - its number: the bits of an integer or enumeration, the most bits of a binary, the bound of a
///   sequence, 0 for a struct or union;
/// - "dynamic" for a binary or sequence of varying length, "fixed" for everything else;
/// - "optional" or "mandatory". The alternatives of a union all count as optional here.
/// An element of a named type is followed no further: that type has lines of its own.
void ListElements(const reflect::Catalogue& catalogue, reflect::TextBuffer& stream);

/// One line per value of each enumeration, in the order of its table: path as above, value, text,
/// separated by tabs. The text of all other values stands behind the listed ones, with the word
/// "other" in place of the value.
void ListEnumerations(const reflect::Catalogue& catalogue, reflect::TextBuffer& stream);

}  // namespace quorvane::tool
