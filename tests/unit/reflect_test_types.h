#pragma once

// Small hand-made families for the tests of the reflective model.

#include <array>
#include <cstdint>
#include <string>

#include "reflect/ted_class.h"
#include "reflect/ted_data.h"
#include "reflect/text_buffer.h"
#include "reflect/type_tables.h"

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
    EnumValueRow{"one", 1},  EnumValueRow{"three", 3}, EnumValueRow{"three again", 3},
    EnumValueRow{"five", 5}, EnumValueRow{"red", 0},   EnumValueRow{"green", 1},
    EnumValueRow{"blue", 2},
};

inline constexpr std::array kMixedEnums = {
    EnumRow{0, 3, "reserved", true},
    EnumRow{3, 1, {}, false},
    EnumRow{4, 3, {}, false},
};

inline constexpr std::array kMixedElements = {
    // Small
    ElementRow{"Number", kSmallNumber, false},
    ElementRow{"Flag", kSmallFlag, true},
    // Choice
    ElementRow{"Num", kChoiceNum, true},
    ElementRow{"Item", kSmall, true},
    ElementRow{"Octets", kChoiceOctets, true},
    // Everything
    ElementRow{"Plain", kPlain, false},
    ElementRow{"Spare", kSpare, false},
    ElementRow{"TypeOnly", kTypeOnly, true},
    ElementRow{"Kind", kEnumKind, false},
    ElementRow{"Fixed", kFixed, false},
    ElementRow{"Octets", kOctets, true},
    ElementRow{"Numbers", kNumbers, false},
    ElementRow{"Smalls", kSmallList, false},
    ElementRow{"Choice", kChoice, false},
    ElementRow{"Inner", kInner, false},
    ElementRow{"MaybeSmall", kSmall, true},
    ElementRow{"Bare", kBareEnum, false},
    ElementRow{"Colour", kColour, true},
    // Inner
    ElementRow{"Wide", kWide, false},
    ElementRow{"Grid", kGrid, false},
    // MixedSet
    ElementRow{"Small", kSmall, true},
    ElementRow{"Everything", kEverything, true},
    ElementRow{"Empty", kEmpty, true},
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

}  // namespace quorvane::reflect::test
