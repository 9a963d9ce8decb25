#pragma once

// Small hand-made families for the tests of the reflective model.

#include <array>
#include <cstdint>
#include <string>

#include "reflect/ted_class.h"
#include "reflect/ted_data.h"
#include "reflect/text_buffer.h"
#include "reflect/type_tables.h"
#include "support/table_texts.h"

namespace quorvane::reflect::test {

/// What a node prints at `indent`.
inline std::string Printed(const TEDDataBase& node, std::uint32_t indent = 0) {
    TextBuffer stream;
    node.Print(stream, indent);
    return std::string(stream.View());
}

/// A location as the decoders note it.
constexpr bits::FieldLocator At(std::uint32_t position, std::uint32_t length) {
    return position << 16 | length;
}

/// One of everything. Indices into the tables:
enum MixedType : std::uint16_t {
    kSmall,       // named struct: Number (8 bits), Flag (optional, 1 bit)
    kSmallList,   // named sequence, at most 3 of Small
    kColour,      // named enumeration: red 0, green 1, blue 2
    kChoice,      // named union: Num (8 bits), Item (Small), Octets (dynamic, 16 bits)
    kEverything,  // named struct of the members below
    kEmpty,       // named struct without members
    kMixedSet,    // named union: the message set of Small, Everything, Empty
    kSmallNumber,
    kSmallFlag,
    kChoiceNum,
    kChoiceOctets,
    kPlain,
    kSpare,
    kTypeOnly,
    kEnumKind,
    kFixed,
    kOctets,
    kNumbers,
    kNumbersItem,
    kInner,
    kWide,
    kGrid,
    kGridRow,
    kGridItem,
    kBareEnum,
};

/// Members of Everything by index.
enum EverythingMember : std::uint32_t {
    kMemberPlain,
    kMemberSpare,
    kMemberTypeOnly,
    kMemberKind,
    kMemberFixed,
    kMemberOctets,
    kMemberNumbers,
    kMemberSmalls,
    kMemberChoice,
    kMemberInner,
    kMemberMaybeSmall,
    kMemberBare,
    kMemberColour,
    kMemberCount,
};

inline const std::array kMixedEnumValues = {
    Listed("one", 1), Listed("three", 3), Listed("three again", 3), Listed("five", 5),
    Listed("red", 0), Listed("green", 1), Listed("blue", 2),
};

inline const std::array kMixedEnums = {
    EnumRow{0, 3, 0, Stored("reserved"), true, true},
    EnumRow{3, 1, 0, {}, false, true},
    EnumRow{4, 3, 3, {}, false, true},
};

inline const std::array kMixedElements = {
    // Small
    ElementRow{Label("Number"), kSmallNumber, false, LineKind::kInteger},
    ElementRow{Label("Flag"), kSmallFlag, true, LineKind::kInteger},
    // Choice
    ElementRow{Label("Num"), kChoiceNum, true},
    ElementRow{Label("Item"), kSmall, true},
    ElementRow{Label("Octets"), kChoiceOctets, true},
    // Everything
    ElementRow{Label("Plain"), kPlain, false, LineKind::kInteger},
    ElementRow{Label("Spare"), kSpare, false},
    ElementRow{Label("TypeOnly"), kTypeOnly, true},
    ElementRow{Label("Kind"), kEnumKind, false, LineKind::kEnumerated},
    ElementRow{Label("Fixed"), kFixed, false},
    ElementRow{Label("Octets"), kOctets, true},
    ElementRow{Label("Numbers"), kNumbers, false},
    ElementRow{Label("Smalls"), kSmallList, false},
    ElementRow{Label("Choice"), kChoice, false},
    ElementRow{Label("Inner"), kInner, false},
    ElementRow{Label("MaybeSmall"), kSmall, true},
    ElementRow{Label("Bare"), kBareEnum, false, LineKind::kEnumerated},
    ElementRow{Label("Colour"), kColour, true, LineKind::kEnumerated},
    // Inner
    ElementRow{Label("Wide"), kWide, false, LineKind::kInteger},
    ElementRow{Label("Grid"), kGrid, false},
    // MixedSet
    ElementRow{Label("Small"), kSmall, true},
    ElementRow{Label("Everything"), kEverything, true},
    ElementRow{Label("Empty"), kEmpty, true},
};

inline const std::array kMixedRows = {
    StructRow(Stored("Small"), kMixedElements, 0, 2),
    TypeRow{Stored("SmallList"), TypeKind::kSequence, false, 3, kSmall, 0},
    TypeRow{Stored("Colour"), TypeKind::kEnumerated, false, 2, 2, 0},
    TypeRow{Stored("Choice"), TypeKind::kUnion, false, 0, 2, 3},
    StructRow(Stored("Everything"), kMixedElements, 5, kMemberCount),
    StructRow(Stored("Empty"), kMixedElements, 20, 0),
    TypeRow{Stored("Message_set_Mixed"), TypeKind::kUnion, false, 0, 20, 3},
    TypeRow{{}, TypeKind::kInteger, false, 8, 0, 0},
    TypeRow{{}, TypeKind::kInteger, false, 1, 0, 0},
    TypeRow{{}, TypeKind::kInteger, false, 8, 0, 0},
    TypeRow{{}, TypeKind::kBinary, false, 16, 0, 0},
    TypeRow{{}, TypeKind::kInteger, false, 16, 0, 0},
    TypeRow{{}, TypeKind::kInteger, false, 0, 0, 0},
    TypeRow{{}, TypeKind::kInteger, false, 0, 0, 0},
    TypeRow{{}, TypeKind::kEnumerated, false, 8, 0, 0},
    TypeRow{{}, TypeKind::kBinary, true, 36, 0, 0},
    TypeRow{{}, TypeKind::kBinary, false, 16, 0, 0},
    TypeRow{{}, TypeKind::kSequence, false, 4, kNumbersItem, 0},
    TypeRow{{}, TypeKind::kInteger, false, 8, 0, 0},
    StructRow({}, kMixedElements, 18, 2),
    TypeRow{{}, TypeKind::kInteger, false, 32, 0, 0},
    TypeRow{{}, TypeKind::kSequence, false, 2, kGridRow, 0},
    TypeRow{{}, TypeKind::kSequence, false, 3, kGridItem, 0},
    TypeRow{{}, TypeKind::kEnumerated, false, 8, 1, 0},
    TypeRow{{}, TypeKind::kEnumerated, false, 4, 1, 0},
};

inline constexpr std::array<std::uint16_t, 7> kMixedNamed = {
    kSmall, kSmallList, kColour, kChoice, kEverything, kEmpty, kMixedSet,
};

inline const TypeTables kMixedTables{TableTexts(), kMixedRows,       kMixedElements,
                                     kMixedEnums,  kMixedEnumValues, kMixedNamed};

/// The text of kEverything before anything was decoded.
inline constexpr const char* kDefaultText =
    "{\n"
    "  Plain: 0\n"
    "  Spare: 0\n"
    "  TypeOnly: MISSING\n"
    "  Kind: reserved (0)\n"
    "  Fixed: 00 00 00 00 00\n"
    "  Octets: MISSING\n"
    "  Numbers: [\n"
    "  ]\n"
    "  Smalls: [\n"
    "  ]\n"
    "  Choice: Num: 0\n"
    "  Inner: {\n"
    "    Wide: 0\n"
    "    Grid: [\n"
    "    ]\n"
    "  }\n"
    "\n"
    "  MaybeSmall: MISSING\n"
    "  Bare: 0\n"
    "  Colour: MISSING\n"
    "}\n";

}  // namespace quorvane::reflect::test
