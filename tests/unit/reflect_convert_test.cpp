// Records to trees.

#include <array>
#include <cstdint>
#include <gtest/gtest.h>

#include "bits/arena.h"
#include "bits/record.h"
#include "reflect/catalogue.h"
#include "reflect/convert.h"
#include "reflect_test_types.h"

namespace quorvane::reflect {
namespace {

using bits::Cell;
using test::At;
using test::kMixedTables;
using test::Printed;

class ConvertTest : public testing::Test {
  protected:
    [[nodiscard]] std::string TextOf(std::uint16_t type, const Cell& cell) {
        return Printed(*ToTree(catalogue_, type, cell, arena_));
    }

    /// A record of Small.
    void FillSmall(Cell& cell, std::uint32_t number) {
        bits::StructCells(arena_, cell, 2)[0].number = number;
    }

    Catalogue catalogue_{kMixedTables};
    bits::Arena arena_;
};

TEST_F(ConvertTest, ARecordThatWasNeverReachedShowsDefaults) {
    EXPECT_EQ(TextOf(test::kEverything, Cell{}), test::kDefaultText);
}

TEST_F(ConvertTest, AFullRecord) {
    Cell record{};
    Cell* members = bits::StructCells(arena_, record, test::kMemberCount);
    members[test::kMemberPlain].number = 65535;
    members[test::kMemberPlain].location = At(8, 16);
    members[test::kMemberSpare].number = 9;
    members[test::kMemberSpare].location = At(24, 4);
    members[test::kMemberTypeOnly].present = true;
    members[test::kMemberTypeOnly].number = 9;
    members[test::kMemberTypeOnly].location = At(28, 4);
    members[test::kMemberKind].number = 3;
    members[test::kMemberKind].location = At(32, 8);
    std::array<std::uint8_t, 5> fixed = {0x12, 0x34, 0x56, 0x78, 0x90};
    members[test::kMemberFixed].octets = fixed.data();
    members[test::kMemberFixed].number = 36;
    members[test::kMemberFixed].location = At(40, 36);
    std::array<std::uint8_t, 2> octets = {0xAB, 0xC0};
    members[test::kMemberOctets].present = true;
    members[test::kMemberOctets].octets = octets.data();
    members[test::kMemberOctets].number = 12;
    members[test::kMemberOctets].location = At(76, 20);
    Cell& numbers = members[test::kMemberNumbers];
    ASSERT_EQ(bits::SetSize(arena_, numbers, 2, 4), 0);
    numbers.cells[0].number = 15;
    numbers.cells[1].number = 1;
    numbers.cells[1].location = At(96, 4);
    Cell& smalls = members[test::kMemberSmalls];
    ASSERT_EQ(bits::SetSize(arena_, smalls, 2, 3), 0);
    FillSmall(smalls.cells[0], 1);
    FillSmall(smalls.cells[1], 2);
    smalls.cells[1].cells[1].present = true;
    smalls.cells[1].cells[1].number = 1;
    FillSmall(bits::ChooseAlternative(arena_, members[test::kMemberChoice], 2), 77);
    Cell* inner = bits::StructCells(arena_, members[test::kMemberInner], 2);
    inner[0].number = 0xFFFFFFFFU;
    ASSERT_EQ(bits::SetSize(arena_, inner[1], 2, 2), 0);
    ASSERT_EQ(bits::SetSize(arena_, inner[1].cells[0], 2, 3), 0);
    inner[1].cells[0].cells[0].number = 5;
    inner[1].cells[0].cells[1].number = 0xFFFFFFFFU;
    members[test::kMemberMaybeSmall].present = true;
    members[test::kMemberBare].number = 4;
    members[test::kMemberColour].present = true;
    members[test::kMemberColour].number = 2;
    EXPECT_EQ(TextOf(test::kEverything, record),
              "{\n"
              "  Plain: LOC:[8,16] 65535\n"
              "  Spare: 0\n"
              "  TypeOnly: 0\n"
              "  Kind: LOC:[32,8] three (3)\n"
              "  Fixed: LOC:[40,36] 12 34 56 78 90\n"
              "  Octets: LOC:[76,20] AB C0\n"
              "  Numbers: [\n"
              "    15,\n"
              "    LOC:[96,4] 1\n"
              "  ]\n"
              "  Smalls: [\n"
              "    {\n"
              "        Number: 1\n"
              "        Flag: MISSING\n"
              "      }\n"
              ",\n"
              "    {\n"
              "        Number: 2\n"
              "        Flag: 1\n"
              "      }\n"
              "\n"
              "  ]\n"
              "  Choice: Item: {\n"
              "      Number: 77\n"
              "      Flag: MISSING\n"
              "    }\n"
              "\n"
              "  Inner: {\n"
              "    Wide: -1\n"
              "    Grid: [\n"
              "      [\n"
              "          five (5),\n"
              "          4294967295\n"
              "        ],\n"
              "      [\n"
              "        ]\n"
              "    ]\n"
              "  }\n"
              "\n"
              "  MaybeSmall: {\n"
              "    Number: 0\n"
              "    Flag: MISSING\n"
              "  }\n"
              "\n"
              "  Bare: 4\n"
              "  Colour: blue (2)\n"
              "}\n");
}

TEST_F(ConvertTest, PresenceDecidesNotTheValue) {
    Cell record{};
    Cell* members = bits::StructCells(arena_, record, 2);
    members[1].number = 1;
    members[1].location = At(8, 1);
    EXPECT_EQ(TextOf(test::kSmall, record), "{\n  Number: 0\n  Flag: MISSING\n}\n");
    members[1] = Cell{};
    members[1].present = true;
    EXPECT_EQ(TextOf(test::kSmall, record), "{\n  Number: 0\n  Flag: 0\n}\n");
}

TEST_F(ConvertTest, PresentWithoutAPlacePrintsNoLocation) {
    Cell record{};
    Cell* members = bits::StructCells(arena_, record, 2);
    members[1].present = true;
    members[1].number = 1;
    EXPECT_EQ(TextOf(test::kSmall, record), "{\n  Number: 0\n  Flag: 1\n}\n");
}

TEST_F(ConvertTest, AUnionOutsideItsAlternativesShowsTheFirst) {
    Cell choice{};
    EXPECT_EQ(TextOf(test::kChoice, choice), "Num: 0");
    choice.cells = arena_.AllocateZeroed<Cell>(1);
    choice.cells[0].number = 7;  // a body that no tag stands for
    EXPECT_EQ(TextOf(test::kChoice, choice), "Num: 0");
    choice.number = 4;
    EXPECT_EQ(TextOf(test::kChoice, choice), "Num: 0");
    choice.number = 0xFFFFFFFFU;
    EXPECT_EQ(TextOf(test::kChoice, choice), "Num: 0");
    choice.number = 1;
    EXPECT_EQ(TextOf(test::kChoice, choice), "Num: 7");
}

TEST_F(ConvertTest, DefaultsOfAFirstAlternativeGoAllTheWayDown) {
    EXPECT_EQ(TextOf(test::kMixedSet, Cell{}), "Small: {\n    Number: 0\n    Flag: MISSING\n  }\n");
}

TEST_F(ConvertTest, AChosenStructThatWasNotFilledShowsDefaults) {
    Cell choice{};
    bits::ChooseAlternative(arena_, choice, 2);
    EXPECT_EQ(TextOf(test::kChoice, choice), "Item: {\n    Number: 0\n    Flag: MISSING\n  }\n");
}

TEST_F(ConvertTest, ABinaryThatWasReachedWithoutBitsHasItsLocation) {
    Cell cell{};
    cell.location = At(40, 0);
    EXPECT_EQ(TextOf(test::kOctets, cell), "LOC:[40,0] ");
}

TEST_F(ConvertTest, CleanOctetsAreViewed) {
    std::array<std::uint8_t, 2> octets = {0xAB, 0xC0};
    Cell cell{};
    cell.octets = octets.data();
    cell.number = 12;
    const auto* node = static_cast<TEDDataBinary*>(ToTree(catalogue_, test::kOctets, cell, arena_));
    EXPECT_EQ(node->GetData(), octets.data());
}

TEST_F(ConvertTest, UnusedBitsOfARecordDoNotReachTheText) {
    std::array<std::uint8_t, 2> octets = {0xAB, 0xCD};
    Cell cell{};
    cell.octets = octets.data();
    cell.number = 12;
    EXPECT_EQ(TextOf(test::kOctets, cell), "AB C0");
    EXPECT_EQ(octets[1], 0xCD);
}

TEST_F(ConvertTest, AFixedBinaryAlwaysHasItsLength) {
    std::array<std::uint8_t, 2> octets = {0xAB, 0xCD};
    Cell cell{};
    cell.octets = octets.data();
    cell.number = 12;
    EXPECT_EQ(TextOf(test::kFixed, cell), "AB C0 00 00 00");
    const auto* node = static_cast<TEDDataBinary*>(ToTree(catalogue_, test::kFixed, cell, arena_));
    EXPECT_EQ(node->GetBitCount(), 36U);
}

TEST_F(ConvertTest, NodesPointAtTheDescriptorsOfTheCatalogue) {
    const auto* root =
        static_cast<TEDDataStruct*>(ToTree(catalogue_, test::kEverything, Cell{}, arena_));
    EXPECT_EQ(root->GetClass(), catalogue_.GetDescriptor(test::kEverything));
    EXPECT_EQ(root->GetClass()->GetName(), "Everything");
    EXPECT_EQ(root->GetMember(test::kMemberPlain)->GetClass(),
              catalogue_.GetDescriptor(test::kPlain));
    EXPECT_EQ(root->GetMember(test::kMemberChoice)->GetClass(),
              catalogue_.GetDescriptor(test::kChoice));
}

TEST_F(ConvertTest, TheTreeOfASetPrintsTheNameOfTheMessage) {
    Cell body{};
    FillSmall(body, 5);
    const TEDDataUnion* root = ToSet(catalogue_, test::kMixedSet, 1, body, arena_);
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(root->GetClass(), catalogue_.GetDescriptor(test::kMixedSet));
    EXPECT_EQ(root->GetChoiceIndex(), 0U);
    EXPECT_EQ(Printed(*root), "Small: {\n    Number: 5\n    Flag: MISSING\n  }\n");
    EXPECT_EQ(Printed(*ToSet(catalogue_, test::kMixedSet, 3, Cell{}, arena_)), "Empty: {\n  }\n");
}

TEST_F(ConvertTest, ThereIsNoTreeOfATagOutsideTheSet) {
    for (const std::int32_t tag : {0, 4, -1}) {
        EXPECT_EQ(ToSet(catalogue_, test::kMixedSet, tag, Cell{}, arena_), nullptr);
    }
}

TEST(Convert, AUnionWithoutAlternativesHasNoChoice) {
    const std::array elements = {ElementRow{test::Label("Number"), 1, false}};
    const std::array rows = {TypeRow{test::Stored("Nothing"), TypeKind::kUnion, false, 0, 0, 0},
                             TypeRow{{}, TypeKind::kInteger, false, 8, 0, 0}};
    constexpr std::array<std::uint16_t, 1> kNamed = {0};
    const Catalogue catalogue(TypeTables{test::TableTexts(), rows, elements, {}, {}, kNamed});
    bits::Arena arena;
    EXPECT_EQ(Printed(*ToTree(catalogue, 0, Cell{}, arena)), "NOT SET");
}

// PDN CONNECTIVITY REQUEST of TS 24.301, 8.3.20, with the octets
// 02 01 D0 31 27 09 80 00 0D 02 AB CD 00 0A 00.
enum PdnType : std::uint16_t {
    kRequest,
    kPco,
    kIdentity,
    kTransaction,
    kRequestType,
    kPdnType,
    kTransferFlag,
    kAccessPoint,
    kPcoSpare,
    kPcoProtocol,
    kPcoList,
    kPcoItem,
    kPcoId,
    kPcoContents,
};

const std::array kPdnValues = {
    test::Listed("initial attach", 1),
    test::Listed("IPv4v6", 3),
    test::Listed("IP address allocation via NAS signalling", 10),
};
const std::array kPdnEnums = {EnumRow{0, 1, 0, {}, false, true}, EnumRow{1, 1, 0, {}, false, true},
                              EnumRow{2, 1, 0, {}, false, true}};
const std::array kPdnElements = {
    ElementRow{test::Label("EPSBearerIdentity"), kIdentity, false},
    ElementRow{test::Label("ProcedureTransactionIdentity"), kTransaction, false},
    ElementRow{test::Label("RequestType"), kRequestType, false},
    ElementRow{test::Label("PDNType"), kPdnType, false},
    ElementRow{test::Label("ESMInformationTransferFlag"), kTransferFlag, true},
    ElementRow{test::Label("AccessPointName"), kAccessPoint, true},
    ElementRow{test::Label("ProtocolConfigurationOptions"), kPco, true},
    ElementRow{test::Label("spare"), kPcoSpare, false},
    ElementRow{test::Label("ConfigurationProtocol"), kPcoProtocol, false},
    ElementRow{test::Label("ProtocolCfgs"), kPcoList, false},
    ElementRow{test::Label("ProtocolId"), kPcoId, false},
    ElementRow{test::Label("Contents"), kPcoContents, false},
};
const std::array kPdnRows = {
    test::StructRow(test::Stored("PDN_CONNECTIVITY_REQUEST"), kPdnElements, 0, 7),
    test::StructRow(test::Stored("epsProtocolCfgList"), kPdnElements, 7, 3),
    TypeRow{{}, TypeKind::kInteger, false, 4, 0, 0},
    TypeRow{{}, TypeKind::kInteger, false, 8, 0, 0},
    TypeRow{{}, TypeKind::kEnumerated, false, 4, 0, 0},
    TypeRow{{}, TypeKind::kEnumerated, false, 4, 1, 0},
    TypeRow{{}, TypeKind::kInteger, false, 1, 0, 0},
    TypeRow{{}, TypeKind::kBinary, false, 800, 0, 0},
    TypeRow{{}, TypeKind::kInteger, false, 0, 0, 0},
    TypeRow{{}, TypeKind::kInteger, false, 3, 0, 0},
    TypeRow{{}, TypeKind::kSequence, false, 20, kPcoItem, 0},
    test::StructRow(test::Stored("10"), kPdnElements, 10, 2),
    TypeRow{test::Stored("11"), TypeKind::kEnumerated, false, 16, 2, 0},
    TypeRow{test::Stored("12"), TypeKind::kBinary, false, 2008, 0, 0},
};
constexpr std::array<std::uint16_t, 2> kPdnNamed = {kPco, kRequest};

TEST(Convert, AWholeMessage) {
    const Catalogue catalogue(
        TypeTables{test::TableTexts(), kPdnRows, kPdnElements, kPdnEnums, kPdnValues, kPdnNamed});
    bits::Arena arena;
    Cell record{};
    Cell* members = bits::StructCells(arena, record, 7);
    members[1].number = 1;
    members[2].number = 1;
    members[2].location = At(28, 4);
    members[3].number = 3;
    members[3].location = At(24, 4);
    members[6].present = true;
    Cell* pco = bits::StructCells(arena, members[6], 3);
    pco[1].location = At(53, 3);
    ASSERT_EQ(bits::SetSize(arena, pco[2], 2, 20), 0);
    std::array<std::uint8_t, 2> contents = {0xAB, 0xCD};
    Cell* first = bits::StructCells(arena, pco[2].cells[0], 2);
    first[0].number = 13;
    first[1].number = 16;
    first[1].octets = contents.data();
    bits::StructCells(arena, pco[2].cells[1], 2)[0].number = 10;
    EXPECT_EQ(Printed(*ToTree(catalogue, kRequest, record, arena)),
              "{\n"
              "  EPSBearerIdentity: 0\n"
              "  ProcedureTransactionIdentity: 1\n"
              "  RequestType: LOC:[28,4] initial attach (1)\n"
              "  PDNType: LOC:[24,4] IPv4v6 (3)\n"
              "  ESMInformationTransferFlag: MISSING\n"
              "  AccessPointName: MISSING\n"
              "  ProtocolConfigurationOptions: {\n"
              "    spare: 0\n"
              "    ConfigurationProtocol: LOC:[53,3] 0\n"
              "    ProtocolCfgs: [\n"
              "      {\n"
              "          ProtocolId: 13\n"
              "          Contents: AB CD\n"
              "        }\n"
              ",\n"
              "      {\n"
              "          ProtocolId: IP address allocation via NAS signalling (10)\n"
              "          Contents: \n"
              "        }\n"
              "\n"
              "    ]\n"
              "  }\n"
              "\n"
              "}\n");
}

}  // namespace
}  // namespace quorvane::reflect
