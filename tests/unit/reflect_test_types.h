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

inline constexpr std::array kMixedEnumValues = {
    kListed<"one", 1>, kListed<"three", 3>, kListed<"three again", 3>, kListed<"five", 5>,
    kListed<"red", 0>, kListed<"green", 1>, kListed<"blue", 2>,
};

inline constexpr std::array kMixedEnums = {
    EnumRow{0, 3, 0, "reserved", true, true},
    EnumRow{3, 1, 0, {}, false, true},
    EnumRow{4, 3, 3, {}, false, true},
};

inline constexpr std::array kMixedElements = {
    // Small
    ElementRow{kLabel<"Number">, kSmallNumber, false},
    ElementRow{kLabel<"Flag">, kSmallFlag, true},
    // Choice
    ElementRow{kLabel<"Num">, kChoiceNum, true},
    ElementRow{kLabel<"Item">, kSmall, true},
    ElementRow{kLabel<"Octets">, kChoiceOctets, true},
    // Everything
    ElementRow{kLabel<"Plain">, kPlain, false},
    ElementRow{kLabel<"Spare">, kSpare, false},
    ElementRow{kLabel<"TypeOnly">, kTypeOnly, true},
    ElementRow{kLabel<"Kind">, kEnumKind, false},
    ElementRow{kLabel<"Fixed">, kFixed, false},
    ElementRow{kLabel<"Octets">, kOctets, true},
    ElementRow{kLabel<"Numbers">, kNumbers, false},
    ElementRow{kLabel<"Smalls">, kSmallList, false},
    ElementRow{kLabel<"Choice">, kChoice, false},
    ElementRow{kLabel<"Inner">, kInner, false},
    ElementRow{kLabel<"MaybeSmall">, kSmall, true},
    ElementRow{kLabel<"Bare">, kBareEnum, false},
    ElementRow{kLabel<"Colour">, kColour, true},
    // Inner
    ElementRow{kLabel<"Wide">, kWide, false},
    ElementRow{kLabel<"Grid">, kGrid, false},
    // MixedSet
    ElementRow{kLabel<"Small">, kSmall, true},
    ElementRow{kLabel<"Everything">, kEverything, true},
    ElementRow{kLabel<"Empty">, kEmpty, true},
};

inline constexpr std::array kMixedRows = {
    TypeRow{"Small", TypeKind::kStruct, true, false, 0, 0, 2},
    TypeRow{"SmallList", TypeKind::kSequence, true, false, 3, kSmall, 0},
    TypeRow{"Colour", TypeKind::kEnumerated, true, false, 2, 2, 0},
    TypeRow{"Choice", TypeKind::kUnion, true, false, 0, 2, 3},
    TypeRow{"Everything", TypeKind::kStruct, true, false, 0, 5, kMemberCount},
    TypeRow{"Empty", TypeKind::kStruct, true, false, 0, 20, 0},
    TypeRow{"Message_set_Mixed", TypeKind::kUnion, true, false, 0, 20, 3},
    TypeRow{"Small_Number", TypeKind::kInteger, false, false, 8, 0, 0},
    TypeRow{"Small_Flag", TypeKind::kInteger, false, false, 1, 0, 0},
    TypeRow{"Choice_Num", TypeKind::kInteger, false, false, 8, 0, 0},
    TypeRow{"Choice_Octets", TypeKind::kBinary, false, false, 16, 0, 0},
    TypeRow{"Everything_Plain", TypeKind::kInteger, false, false, 16, 0, 0},
    TypeRow{"Everything_Spare", TypeKind::kInteger, false, false, 0, 0, 0},
    TypeRow{"Everything_TypeOnly", TypeKind::kInteger, false, false, 0, 0, 0},
    TypeRow{"Everything_Kind", TypeKind::kEnumerated, false, false, 8, 0, 0},
    TypeRow{"Everything_Fixed", TypeKind::kBinary, false, true, 36, 0, 0},
    TypeRow{"Everything_Octets", TypeKind::kBinary, false, false, 16, 0, 0},
    TypeRow{"Everything_Numbers", TypeKind::kSequence, false, false, 4, kNumbersItem, 0},
    TypeRow{"Everything_Numbers_data", TypeKind::kInteger, false, false, 8, 0, 0},
    TypeRow{"Everything_Inner", TypeKind::kStruct, false, false, 0, 18, 2},
    TypeRow{"Everything_Inner_Wide", TypeKind::kInteger, false, false, 32, 0, 0},
    TypeRow{"Everything_Inner_Grid", TypeKind::kSequence, false, false, 2, kGridRow, 0},
    TypeRow{"Everything_Inner_Grid_data", TypeKind::kSequence, false, false, 3, kGridItem, 0},
    TypeRow{"Everything_Inner_Grid_data_data", TypeKind::kEnumerated, false, false, 8, 1, 0},
    TypeRow{"Everything_Bare", TypeKind::kEnumerated, false, false, 4, 1, 0},
};

inline constexpr std::array<std::uint16_t, 7> kMixedNamed = {
    kSmall, kSmallList, kColour, kChoice, kEverything, kEmpty, kMixedSet,
};

inline constexpr TypeTables kMixedTables{kMixedRows, kMixedElements, kMixedEnums, kMixedEnumValues,
                                         kMixedNamed};

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
