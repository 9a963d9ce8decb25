// Trees to records, and records against each other.

#include <array>
#include <cstdint>
#include <gtest/gtest.h>
#include <memory>

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

class FromTreeTest : public testing::Test {
  protected:
    template <typename Class>
    const Class* Type(std::uint16_t type) const {
        return static_cast<const Class*>(catalogue_.GetDescriptor(type));
    }

    template <typename Node>
    std::unique_ptr<Node> New(std::uint16_t type) const {
        return std::unique_ptr<Node>(static_cast<Node*>(catalogue_.GetDescriptor(type)->NewData()));
    }

    TEDDataInteger* Integer(std::uint16_t type, std::int32_t value) const {
        return new TEDDataInteger(Type<TEDClassInteger>(type), value);
    }

    bool Fill(std::uint16_t type, Cell& cell, const TEDDataBase& node) {
        return FromTree(catalogue_, type, cell, node, arena_);
    }

    /// A record with something in every member.
    Cell FullRecord() {
        static std::array<std::uint8_t, 5> octets = {0x12, 0x34, 0x56, 0x78, 0x90};
        Cell record{};
        Cell* members = bits::StructCells(arena_, record, test::kMemberCount);
        members[test::kMemberPlain].number = 0xABCD;
        members[test::kMemberTypeOnly].present = true;
        members[test::kMemberKind].number = 0xFF;
        members[test::kMemberFixed].octets = octets.data();
        members[test::kMemberFixed].number = 36;
        members[test::kMemberOctets].present = true;
        members[test::kMemberOctets].octets = octets.data();
        members[test::kMemberOctets].number = 14;
        EXPECT_EQ(bits::SetSize(arena_, members[test::kMemberNumbers], 4, 4), 0);
        members[test::kMemberNumbers].cells[3].number = 200;
        EXPECT_EQ(bits::SetSize(arena_, members[test::kMemberSmalls], 3, 3), 0);
        bits::StructCells(arena_, members[test::kMemberSmalls].cells[2], 2)[0].number = 3;
        Cell& chosen = bits::ChooseAlternative(arena_, members[test::kMemberChoice], 3);
        chosen.octets = octets.data();
        chosen.number = 8;
        Cell* inner = bits::StructCells(arena_, members[test::kMemberInner], 2);
        inner[0].number = 0x80000000U;
        EXPECT_EQ(bits::SetSize(arena_, inner[1], 2, 2), 0);
        EXPECT_EQ(bits::SetSize(arena_, inner[1].cells[1], 3, 3), 0);
        inner[1].cells[1].cells[2].number = 5;
        members[test::kMemberBare].number = 5;
        return record;
    }

    Catalogue catalogue_{kMixedTables};
    bits::Arena arena_;
};

TEST_F(FromTreeTest, ANodeOfAnotherTypeIsRefused) {
    const auto node = New<TEDDataStruct>(test::kEmpty);
    Cell cell{};
    cell.number = 42;
    EXPECT_FALSE(Fill(test::kSmall, cell, *node));
    EXPECT_EQ(cell.cells, nullptr);
    EXPECT_EQ(cell.number, 42U);
}

TEST_F(FromTreeTest, TheDescriptorIsComparedByPointer) {
    const Catalogue other(kMixedTables);
    const std::unique_ptr<TEDDataBase> node(other.GetDescriptor(test::kSmall)->NewData());
    Cell cell{};
    EXPECT_FALSE(Fill(test::kSmall, cell, *node));
    EXPECT_FALSE(Fill(test::kChoice, cell,
                      *std::unique_ptr<TEDDataBase>(New<TEDDataUnion>(test::kChoice)->Clone())));
}

TEST_F(FromTreeTest, RecordToTreeToRecord) {
    const Cell record = FullRecord();
    Cell back{};
    ASSERT_TRUE(
        Fill(test::kEverything, back, *ToTree(catalogue_, test::kEverything, record, arena_)));
    EXPECT_TRUE(RecordsEqual(kMixedTables, test::kEverything, record, back, true));
    EXPECT_EQ(test::Printed(*ToTree(catalogue_, test::kEverything, back, arena_)),
              test::Printed(*ToTree(catalogue_, test::kEverything, record, arena_)));
}

TEST_F(FromTreeTest, NothingOfTheTreeIsViewed) {
    const auto node = New<TEDDataBinary>(test::kOctets);
    const std::array<std::uint8_t, 2> octets = {0xAB, 0xCD};
    node->SetBits(octets.data(), 16);
    Cell cell{};
    ASSERT_TRUE(Fill(test::kOctets, cell, *node));
    EXPECT_NE(cell.octets, node->GetData());
    EXPECT_EQ(cell.octets[1], 0xCD);
}

TEST_F(FromTreeTest, PresenceFollowsTheTree) {
    const auto node = New<TEDDataStruct>(test::kSmall);
    Cell cell{};
    Cell* members = bits::StructCells(arena_, cell, 2);
    members[1].present = true;
    members[1].number = 1;
    ASSERT_TRUE(Fill(test::kSmall, cell, *node));
    EXPECT_FALSE(members[1].present);
    EXPECT_EQ(members[1].number, 1U);  // nobody looks at it
    node->SetMember(1, Integer(test::kSmallFlag, 0));
    ASSERT_TRUE(Fill(test::kSmall, cell, *node));
    EXPECT_TRUE(members[1].present);
    EXPECT_EQ(members[1].number, 0U);
}

TEST_F(FromTreeTest, NumbersAreNarrowedToWhatHoldsTheField) {
    const auto node = New<TEDDataStruct>(test::kEverything);
    node->SetMember(test::kMemberPlain, Integer(test::kPlain, 0x12345));
    node->SetMember(test::kMemberKind,
                    new TEDDataEnumerated(Type<TEDClassEnumerated>(test::kEnumKind), 0x1FF));
    node->SetMember(test::kMemberBare,
                    new TEDDataEnumerated(Type<TEDClassEnumerated>(test::kBareEnum), 0x1FF));
    auto inner = New<TEDDataStruct>(test::kInner);
    inner->SetMember(0, Integer(test::kWide, -1));
    node->SetMember(test::kMemberInner, inner.release());
    Cell cell{};
    ASSERT_TRUE(Fill(test::kEverything, cell, *node));
    EXPECT_EQ(cell.cells[test::kMemberPlain].number, 0x2345U);
    EXPECT_EQ(cell.cells[test::kMemberKind].number, 0xFFU);
    EXPECT_EQ(cell.cells[test::kMemberBare].number, 0xFFU);  // 4 bits live in an octet
    EXPECT_EQ(cell.cells[test::kMemberInner].cells[0].number, 0xFFFFFFFFU);
}

TEST_F(FromTreeTest, AFieldOfWidthZeroHasNoPlaceForAValue) {
    const auto node = New<TEDDataStruct>(test::kEverything);
    node->SetMember(test::kMemberSpare, Integer(test::kSpare, 9));
    node->SetMember(test::kMemberTypeOnly, Integer(test::kTypeOnly, 9));
    Cell cell{};
    ASSERT_TRUE(Fill(test::kEverything, cell, *node));
    EXPECT_EQ(cell.cells[test::kMemberSpare].number, 0U);
    EXPECT_EQ(cell.cells[test::kMemberTypeOnly].number, 0U);
    EXPECT_TRUE(cell.cells[test::kMemberTypeOnly].present);
}

TEST_F(FromTreeTest, LocationsStayAsTheyWere) {
    const auto node = New<TEDDataStruct>(test::kSmall);
    auto* number = Integer(test::kSmallNumber, 5);
    number->location = At(100, 8);
    node->SetMember(0, number);
    Cell cell{};
    bits::StructCells(arena_, cell, 2)[0].location = At(8, 8);
    ASSERT_TRUE(Fill(test::kSmall, cell, *node));
    EXPECT_EQ(cell.cells[0].number, 5U);
    EXPECT_EQ(cell.cells[0].location, At(8, 8));
}

TEST_F(FromTreeTest, ADynamicBinaryTakesTheLengthOfTheTree) {
    const auto node = New<TEDDataBinary>(test::kOctets);  // at most 16 bits
    const std::array<std::uint8_t, 5> octets = {1, 2, 3, 4, 5};
    node->SetBits(octets.data(), 40);
    Cell cell{};
    ASSERT_TRUE(Fill(test::kOctets, cell, *node));
    EXPECT_EQ(cell.number, 40U);
    EXPECT_EQ(cell.octets[4], 5);
    node->ClearBits();
    ASSERT_TRUE(Fill(test::kOctets, cell, *node));
    EXPECT_EQ(cell.number, 0U);
}

TEST_F(FromTreeTest, AFixedBinaryKeepsItsLength) {
    const auto node = New<TEDDataBinary>(test::kFixed);  // 36 bits
    const std::array<std::uint8_t, 6> ones = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
    node->SetBits(ones.data(), 12);
    Cell cell{};
    ASSERT_TRUE(Fill(test::kFixed, cell, *node));
    EXPECT_EQ(cell.number, 36U);
    EXPECT_EQ(cell.octets[1], 0xF0);
    EXPECT_EQ(cell.octets[4], 0x00);
    node->SetBits(ones.data(), 48);
    ASSERT_TRUE(Fill(test::kFixed, cell, *node));
    EXPECT_EQ(cell.number, 36U);
    EXPECT_EQ(cell.octets[4], 0xF0);
}

TEST_F(FromTreeTest, ASequenceStopsGrowingAtItsBound) {
    const auto node = New<TEDDataSequence>(test::kNumbers);  // at most 4
    for (int value = 1; value <= 50; ++value) {
        node->Append(Integer(test::kNumbersItem, value));
    }
    Cell cell{};
    ASSERT_TRUE(Fill(test::kNumbers, cell, *node));
    ASSERT_EQ(cell.number, 4U);
    EXPECT_EQ(cell.capacity, 4U);
    for (std::uint32_t index = 0; index < 4; ++index) {
        EXPECT_EQ(cell.cells[index].number, index + 1);
    }
}

TEST_F(FromTreeTest, EachItemRaisesTheCountOfARecordInUse) {
    const auto node = New<TEDDataSequence>(test::kNumbers);  // at most 4
    node->Append(Integer(test::kNumbersItem, 11));
    node->Append(Integer(test::kNumbersItem, 12));
    Cell cell{};
    ASSERT_EQ(bits::SetSize(arena_, cell, 1, 4), 0);
    cell.cells[0].number = 1;
    ASSERT_TRUE(Fill(test::kNumbers, cell, *node));
    ASSERT_EQ(cell.number, 3U);
    EXPECT_EQ(cell.cells[0].number, 11U);
    EXPECT_EQ(cell.cells[1].number, 12U);
    EXPECT_EQ(cell.cells[2].number, 0U);
    // At the bound the items are filled all the same.
    cell.cells[0].number = 1;
    cell.cells[1].number = 2;
    cell.cells[2].number = 3;
    ASSERT_TRUE(Fill(test::kNumbers, cell, *node));
    ASSERT_EQ(cell.number, 4U);
    EXPECT_EQ(cell.cells[0].number, 11U);
    EXPECT_EQ(cell.cells[1].number, 12U);
    EXPECT_EQ(cell.cells[2].number, 3U);
}

TEST_F(FromTreeTest, FillingTwiceGivesTheSameRecord) {
    const Cell record = FullRecord();
    const TEDDataBase* tree = ToTree(catalogue_, test::kEverything, record, arena_);
    Cell back{};
    ASSERT_TRUE(Fill(test::kEverything, back, *tree));
    ASSERT_TRUE(Fill(test::kEverything, back, *tree));
    EXPECT_TRUE(RecordsEqual(kMixedTables, test::kEverything, record, back, true));
}

TEST_F(FromTreeTest, AUnionTakesItsIndexAndItsChoice) {
    const auto node = New<TEDDataUnion>(test::kChoice);
    node->SetChoice(0, Integer(test::kChoiceNum, 9));
    Cell cell{};
    ASSERT_TRUE(Fill(test::kChoice, cell, *node));
    EXPECT_EQ(cell.number, 1U);
    EXPECT_EQ(cell.cells[0].number, 9U);
}

TEST_F(FromTreeTest, AnIndexOutsideTheAlternativesLeavesTheRecordAlone) {
    const auto node = New<TEDDataUnion>(test::kChoice);
    node->SetChoice(3, Integer(test::kChoiceNum, 9));
    Cell cell{};
    bits::ChooseAlternative(arena_, cell, 2);
    const Cell* body = cell.cells;
    EXPECT_TRUE(Fill(test::kChoice, cell, *node));
    EXPECT_EQ(cell.number, 2U);
    EXPECT_EQ(cell.cells, body);
}

TEST_F(FromTreeTest, AUnionWithoutAChoiceHasAnEmptyBody) {
    const auto node = New<TEDDataUnion>(test::kChoice);
    node->SetChoice(1, nullptr);
    Cell cell{};
    ASSERT_TRUE(Fill(test::kChoice, cell, *node));
    EXPECT_EQ(cell.number, 2U);
    EXPECT_EQ(cell.cells[0].cells, nullptr);
}

TEST_F(FromTreeTest, AMismatchInsideLeavesThatMemberUnfilled) {
    const auto node = New<TEDDataStruct>(test::kEverything);
    node->SetMember(test::kMemberInner, New<TEDDataStruct>(test::kSmall).release());
    node->SetMember(test::kMemberSmalls, New<TEDDataSequence>(test::kNumbers).release());
    node->SetMember(test::kMemberPlain, New<TEDDataBinary>(test::kOctets).release());
    node->SetMember(test::kMemberFixed, Integer(test::kPlain, 1));
    node->SetMember(test::kMemberBare, Integer(test::kPlain, 7));  // a number for a number
    Cell cell{};
    Cell* members = bits::StructCells(arena_, cell, test::kMemberCount);
    members[test::kMemberPlain].number = 11;
    EXPECT_TRUE(Fill(test::kEverything, cell, *node));
    EXPECT_EQ(members[test::kMemberInner].cells, nullptr);
    EXPECT_EQ(members[test::kMemberSmalls].cells, nullptr);
    EXPECT_EQ(members[test::kMemberPlain].number, 11U);
    EXPECT_EQ(members[test::kMemberFixed].octets, nullptr);
    EXPECT_EQ(members[test::kMemberBare].number, 7U);
}

TEST_F(FromTreeTest, AMandatoryMemberWithoutANodeIsLeftAlone) {
    const std::unique_ptr<TEDDataBase> bare(New<TEDDataStruct>(test::kSmall)->Clone());
    Cell cell{};
    bits::StructCells(arena_, cell, 2)[0].number = 11;
    EXPECT_TRUE(Fill(test::kSmall, cell, *bare));
    EXPECT_EQ(cell.cells[0].number, 11U);
}

TEST_F(FromTreeTest, ASetNodeAndTheMessageItselfFillTheSameRecord) {
    Cell body{};
    bits::StructCells(arena_, body, 2)[0].number = 5;
    const TEDDataUnion* set = ToSet(catalogue_, test::kMixedSet, 1, body, arena_);
    Cell fromSet{};
    std::int32_t tagFromSet = 0;
    ASSERT_TRUE(FromSet(catalogue_, test::kMixedSet, tagFromSet, fromSet, *set, arena_));
    Cell fromMessage{};
    std::int32_t tagFromMessage = 0;
    ASSERT_TRUE(FromSet(catalogue_, test::kMixedSet, tagFromMessage, fromMessage, *set->GetChoice(),
                        arena_));
    EXPECT_EQ(tagFromSet, 1);
    EXPECT_EQ(tagFromMessage, 1);
    EXPECT_TRUE(RecordsEqual(kMixedTables, test::kSmall, fromSet, body, true));
    EXPECT_TRUE(RecordsEqual(kMixedTables, test::kSmall, fromMessage, body, true));
}

TEST_F(FromTreeTest, ANewTagStartsWithAFreshBody) {
    const auto node = New<TEDDataStruct>(test::kSmall);
    Cell body{};
    bits::StructCells(arena_, body, test::kMemberCount)[0].location = At(8, 8);
    std::int32_t tag = 2;
    ASSERT_TRUE(FromSet(catalogue_, test::kMixedSet, tag, body, *node, arena_));
    EXPECT_EQ(tag, 1);
    EXPECT_EQ(body.cells[0].location, 0U);
    body.cells[0].location = At(8, 8);
    ASSERT_TRUE(FromSet(catalogue_, test::kMixedSet, tag, body, *node, arena_));
    EXPECT_EQ(body.cells[0].location, At(8, 8));  // the same tag keeps the body
}

TEST_F(FromTreeTest, ANodeThatIsNoMessageIsRefused) {
    Cell body{};
    std::int32_t tag = 2;
    EXPECT_FALSE(
        FromSet(catalogue_, test::kMixedSet, tag, body, *New<TEDDataUnion>(test::kChoice), arena_));
    const auto unset = New<TEDDataUnion>(test::kMixedSet);
    unset->SetChoice(0, nullptr);
    EXPECT_FALSE(FromSet(catalogue_, test::kMixedSet, tag, body, *unset, arena_));
    EXPECT_EQ(tag, 2);
    EXPECT_EQ(body.cells, nullptr);
}

class RecordsEqualTest : public FromTreeTest {
  protected:
    RecordsEqualTest() : a_(FullRecord()), b_(FullRecord()) {}

    [[nodiscard]] bool Equal(bool compareLocations = true) const {
        return RecordsEqual(kMixedTables, test::kEverything, a_, b_, compareLocations) &&
               RecordsEqual(kMixedTables, test::kEverything, b_, a_, compareLocations);
    }

    Cell a_;
    Cell b_;
};

TEST_F(RecordsEqualTest, EqualRecords) {
    EXPECT_TRUE(Equal());
}

TEST_F(RecordsEqualTest, NeverReachedEqualsZero) {
    Cell zeros{};
    bits::StructCells(arena_, zeros, test::kMemberCount);
    EXPECT_TRUE(RecordsEqual(kMixedTables, test::kEverything, zeros, Cell{}, true));
    EXPECT_FALSE(RecordsEqual(kMixedTables, test::kEverything, a_, Cell{}, true));
    EXPECT_FALSE(RecordsEqual(kMixedTables, test::kEverything, Cell{}, a_, true));
}

TEST_F(RecordsEqualTest, EveryKindOfDifferenceIsSeen) {
    const auto differs = [this](auto change) {
        b_ = FullRecord();
        change(b_.cells);
        return !Equal();
    };
    EXPECT_TRUE(differs([](Cell* m) { m[test::kMemberPlain].number = 1; }));
    EXPECT_TRUE(differs([](Cell* m) { m[test::kMemberKind].number = 1; }));
    EXPECT_TRUE(differs([](Cell* m) { m[test::kMemberTypeOnly].present = false; }));
    EXPECT_TRUE(differs([](Cell* m) { m[test::kMemberOctets].number = 13; }));
    EXPECT_TRUE(differs([](Cell* m) { m[test::kMemberNumbers].number = 3; }));
    EXPECT_TRUE(differs([](Cell* m) { m[test::kMemberNumbers].cells[3].number = 201; }));
    EXPECT_TRUE(differs([](Cell* m) { m[test::kMemberSmalls].cells[2].cells[0].number = 4; }));
    EXPECT_TRUE(differs([](Cell* m) { m[test::kMemberChoice].number = 2; }));
    EXPECT_TRUE(differs([](Cell* m) { m[test::kMemberInner].cells[0].number = 1; }));
    std::array<std::uint8_t, 5> other = {0x12, 0x34, 0x56, 0x78, 0x80};
    EXPECT_TRUE(differs([&](Cell* m) { m[test::kMemberFixed].octets = other.data(); }));
    EXPECT_TRUE(differs([](Cell* m) { m[test::kMemberFixed].octets = nullptr; }));
}

TEST_F(RecordsEqualTest, WhatNobodyLooksAtDoesNotCount) {
    b_.cells[test::kMemberSpare].number = 1;
    b_.cells[test::kMemberSpare].location = At(1, 1);
    b_.cells[test::kMemberMaybeSmall].number = 5;  // absent
    b_.cells[test::kMemberNumbers].capacity = 99;
    std::array<std::uint8_t, 2> unusedBitsSet = {0x12, 0x37};
    b_.cells[test::kMemberOctets].octets = unusedBitsSet.data();  // 14 bits
    EXPECT_TRUE(Equal());
}

TEST_F(RecordsEqualTest, LocationsCountIfAskedFor) {
    b_.cells[test::kMemberPlain].location = At(8, 16);
    EXPECT_FALSE(Equal(true));
    EXPECT_TRUE(Equal(false));
    b_ = FullRecord();
    b_.cells[test::kMemberOctets].location = At(8, 16);
    EXPECT_FALSE(Equal(true));
    EXPECT_TRUE(Equal(false));
}

}  // namespace
}  // namespace quorvane::reflect
