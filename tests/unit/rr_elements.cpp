#include "rr_elements.h"

#include <array>

#include "families/rr/elements.h"
#include "support/table_texts.h"

namespace quorvane::families::test {
namespace {

using iecodec::PartRow;
using iecodec::SpecialElement;
using iecodec::ValueRow;
using reflect::ElementRow;
using reflect::TypeKind;
using reflect::TypeRow;

// Types.

constexpr std::uint16_t kIntegerType = 0;
constexpr std::uint16_t kTypeOfChannelType = 1;

const std::array kElements = {
    ElementRow{reflect::test::Label("CellDescription"), kIntegerType, false},  // 0, neighbour cells
    ElementRow{reflect::test::Label("ExtInd"), kIntegerType, false},
    ElementRow{reflect::test::Label("BAInd"), kIntegerType, false},
    ElementRow{reflect::test::Label("CellDescription"), kIntegerType,
               false},  // 3, neighbour cells 2
    ElementRow{reflect::test::Label("MultibandReporting"), kIntegerType, false},
    ElementRow{reflect::test::Label("BAInd"), kIntegerType, false},
    ElementRow{reflect::test::Label("ChType"), kIntegerType, true},  // 6, channel type
    ElementRow{reflect::test::Label("Subchannel"), kIntegerType, true},
    ElementRow{reflect::test::Label("ChType"), kTypeOfChannelType,
               false},  // 8, channel descriptions
    ElementRow{reflect::test::Label("TN"), kIntegerType, false},
    ElementRow{reflect::test::Label("TSC"), kIntegerType, false},  // 10, channel description 3
    ElementRow{reflect::test::Label("H"), kIntegerType, false},
    ElementRow{reflect::test::Label("MAIO"), kIntegerType, true},
    ElementRow{reflect::test::Label("HSN"), kIntegerType, true},
    ElementRow{reflect::test::Label("spare"), kIntegerType, true},
    ElementRow{reflect::test::Label("ARFCN"), kIntegerType, true},
    ElementRow{reflect::test::Label("MA"), kIntegerType, false},
    ElementRow{reflect::test::Label("MessageContent"), kIntegerType, false},  // 17, channel request
    ElementRow{reflect::test::Label("Description"), kIntegerType, false},
    ElementRow{reflect::test::Label("RandomReference"), kIntegerType, false},
    ElementRow{reflect::test::Label("IdentityDigit"), kIntegerType, false},  // 20, mobile identity
    ElementRow{reflect::test::Label("IdentityType"), kIntegerType, false},
    ElementRow{reflect::test::Label("BitmapLength"), kIntegerType,
               false},  // 22, bit map type reporting
    ElementRow{reflect::test::Label("BitmapReporting"), kIntegerType, false},
};

TypeRow Struct(std::string_view name, std::uint16_t first, std::uint16_t count) {
    return {reflect::test::Stored(name), TypeKind::kStruct, false, 0, first, count};
}

const std::array kTypes = {
    TypeRow{{}, TypeKind::kInteger, false, 32, 0, 0},
    Struct("TChType", 6, 2),
    Struct("NeighbourCellDescription", 0, 3),
    Struct("NeighbourCellDescription2", 3, 3),
    Struct("TChDesc", 8, 8),
    Struct("TChDesc3", 10, 6),
    Struct("GrpChannelDesc", 8, 9),
    Struct("ChannelRequest", 17, 3),
    Struct("RRMobileId", 20, 2),
    Struct("BitmapTypeReporting", 22, 2),
    TypeRow{reflect::test::Stored("CellChannel"), TypeKind::kUnion, false, 0, 0, 0},
    TypeRow{reflect::test::Stored("BaRange"), TypeKind::kSequence, false, 32, kIntegerType, 0},
};

constexpr std::array<std::uint16_t, 11> kNamed = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11};

// Wire forms.

constexpr std::array<const SpecialElement*, 11> kSpecials = {
    &kFrequencyList,
    &kNeighbourCellDescription,
    &kNeighbourCellDescription2,
    &kBaRange,
    &kChannelType,
    &kChannelDescription,
    &kChannelDescription3,
    &kGroupChannelDescription,
    &kChannelRequest,
    &kLocatedMobileIdentity,
    &kBitmapTypeReporting,
};

constexpr ValueRow Special(std::string_view name, std::uint16_t item, std::uint16_t members,
                           std::uint16_t first = 0, std::uint32_t capacity = 0) {
    ValueRow row{};
    row.name = name;
    row.shape = iecodec::Shape::kSpecial;
    row.item = item;
    row.members = members;
    row.first = first;
    row.capacity = capacity;
    return row;
}

constexpr ValueRow Integer(std::uint16_t width) {
    ValueRow row{};
    row.shape = iecodec::Shape::kInteger;
    row.located = true;
    row.width = width;
    return row;
}

constexpr std::uint16_t kListValue = 0;
constexpr std::uint16_t kChannelTypeValue = 1;
constexpr std::uint16_t kAllocationValue = 2;
constexpr std::uint16_t kRangeValue = 3;
constexpr std::uint16_t kBitValue = 4;
constexpr std::uint16_t kNumberValue = 5;

constexpr ValueRow Allocation() {
    ValueRow row{};
    row.name = "GrpChannelMA";
    row.shape = iecodec::Shape::kSequence;
    row.capacity = 72;
    row.item = kBitValue;
    return row;
}

constexpr ValueRow Range() {
    ValueRow row{};
    row.name = "BaRange_data";
    row.shape = iecodec::Shape::kFixed;
    row.members = 2;
    row.width = 20;
    row.first = 12;
    row.count = 2;
    return row;
}

constexpr std::array kValues = {
    Special("CellChannel", 0, 0),
    Special("TChType", 4, 2),
    Allocation(),
    Range(),
    Integer(1),
    Integer(10),
    Special("NeighbourCellDescription", 1, 3, 0),
    Special("NeighbourCellDescription2", 2, 3, 0),
    Special("BaRange", 3, 0, kRangeValue, 32),
    Special("TChDesc", 5, 8, 3),
    Special("TChDesc3", 6, 6),
    Special("GrpChannelDesc", 7, 9, 3),
    Special("ChannelRequest", 8, 3),
    Special("RRMobileId", 9, 2),
    Special("BitmapTypeReporting", 10, 2),
};

constexpr PartRow Member(std::uint16_t element, std::uint16_t value) {
    return {PartRow::Kind::kValue, element, 0, 0, value};
}

constexpr std::array kParts = {
    Member(0, kListValue),  // 0, neighbour cells
    Member(1, iecodec::kNone),
    Member(2, iecodec::kNone),
    Member(0, kChannelTypeValue),  // 3, channel descriptions
    Member(1, iecodec::kNone),
    Member(2, iecodec::kNone),
    Member(3, iecodec::kNone),
    Member(4, iecodec::kNone),
    Member(5, iecodec::kNone),
    Member(6, iecodec::kNone),
    Member(7, iecodec::kNone),
    Member(8, kAllocationValue),
    PartRow{PartRow::Kind::kInteger, 0, 0, 10, kNumberValue, true},  // 12, a range
    PartRow{PartRow::Kind::kInteger, 1, 10, 10, kNumberValue, true},
};

Family MakeFamily() {
    Family family{};
    family.types = {.texts = reflect::test::TableTexts(),
                    .types = kTypes,
                    .elements = kElements,
                    .enums = {},
                    .enumValues = {},
                    .named = kNamed};
    family.codec.values = kValues;
    family.codec.parts = kParts;
    family.codec.specials = kSpecials;
    return family;
}

}  // namespace

iecodec::test::TypeUnderTest Element(std::string_view type) {
    static const Family family = MakeFamily();
    return {family, type};
}

std::string Shown(const bits::Cell& cell) {
    std::string text = std::to_string(cell.number);
    if (cell.location != 0) {
        text += " [" + std::to_string(cell.location >> 16) + "," +
                std::to_string(cell.location & 0xFFFFU) + "]";
    }
    return text;
}

std::string ItemsShown(const bits::Cell& sequence) {
    std::string text;
    for (std::uint32_t item = 0; item < sequence.number; ++item) {
        text += (item == 0 ? "" : " ") + Shown(sequence.cells[item]);
    }
    return text;
}

std::string HexOf(std::string_view bits) {
    iecodec::test::Octets octets;
    std::size_t count = 0;
    for (const char bit : bits) {
        if (bit == ' ') {
            continue;
        }
        if (count % 8 == 0) {
            octets.push_back(0);
        }
        if (bit == '1') {
            octets.back() = static_cast<std::uint8_t>(octets.back() | 0x80U >> count % 8);
        }
        ++count;
    }
    return iecodec::test::ToHex(octets);
}

std::string BitsOf(std::uint32_t value, int count) {
    std::string text;
    for (int bit = count - 1; bit >= 0; --bit) {
        text += (value >> static_cast<unsigned>(bit) & 1U) != 0 ? '1' : '0';
    }
    return text;
}

}  // namespace quorvane::families::test
