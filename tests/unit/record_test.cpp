#include "bits/record.h"

#include <gtest/gtest.h>
#include <limits>
#include <vector>

namespace quorvane::bits {
namespace {

using Octets = std::vector<std::uint8_t>;

TEST(RecordSequence, GrowsToItsBound) {
    Arena arena;
    Cell sequence{};
    EXPECT_EQ(SetSize(arena, sequence, 20, 20), 0);
    EXPECT_EQ(sequence.number, 20U);
    EXPECT_EQ(SetSize(arena, sequence, 21, 20), -13);
    EXPECT_EQ(sequence.number, 20U);
    for (std::uint32_t item = 0; item < 20; ++item) {
        EXPECT_EQ(sequence.cells[item].number, 0U);
        EXPECT_FALSE(sequence.cells[item].present);
    }
}

TEST(RecordSequence, RefusalChangesNothing) {
    Arena arena;
    Cell sequence{};
    EXPECT_EQ(SetSize(arena, sequence, 5, 4), -13);
    EXPECT_EQ(sequence.number, 0U);
    EXPECT_EQ(sequence.cells, nullptr);
    EXPECT_EQ(SetSize(arena, sequence, 1, 0), -13);
    EXPECT_EQ(SetSize(arena, sequence, 0, 0), 0);
}

TEST(RecordSequence, KeepsItsItemsWhileItGrows) {
    Arena arena;
    Cell sequence{};
    for (std::int32_t size = 1; size <= 72; ++size) {
        ASSERT_EQ(SetSize(arena, sequence, size, 72), 0);
        EXPECT_EQ(sequence.cells[size - 1].number, 0U);
        sequence.cells[size - 1].number = static_cast<std::uint32_t>(size);
    }
    for (std::uint32_t item = 0; item < 72; ++item) {
        EXPECT_EQ(sequence.cells[item].number, item + 1);
    }
    EXPECT_LE(sequence.capacity, 72U);
}

TEST(RecordSequence, SameSizeKeepsTheItems) {
    Arena arena;
    Cell sequence{};
    ASSERT_EQ(SetSize(arena, sequence, 3, 20), 0);
    sequence.cells[2].number = 9;
    ASSERT_EQ(SetSize(arena, sequence, 3, 20), 0);
    EXPECT_EQ(sequence.cells[2].number, 9U);
}

TEST(RecordSequence, RoomForMoreIsNoBound) {
    Arena arena;
    Cell sequence{};
    ASSERT_EQ(SetSize(arena, sequence, 1, 20), 0);
    ASSERT_GT(sequence.capacity, 1U);
    EXPECT_EQ(SetSize(arena, sequence, 2, 1), -13);
    EXPECT_EQ(sequence.number, 1U);
    EXPECT_EQ(SetSize(arena, sequence, std::numeric_limits<std::int32_t>::min(), 20), 0);
    EXPECT_EQ(sequence.number, 0U);
}

TEST(RecordSequence, NextItemsAreEmptyToo) {
    Arena arena;
    Cell sequence{};
    for (int round = 0; round < 2; ++round) {
        for (std::int32_t size = 1; size <= 3; ++size) {
            ASSERT_EQ(SetSize(arena, sequence, size, 20), 0);
            Cell& item = sequence.cells[size - 1];
            EXPECT_EQ(item.number, 0U);
            EXPECT_FALSE(item.present);
            item.number = 7;
            item.present = true;
        }
        ASSERT_EQ(SetSize(arena, sequence, 0, 20), 0);
    }
}

TEST(RecordSequence, DroppedItemsComeBackEmpty) {
    Arena arena;
    Cell sequence{};
    ASSERT_EQ(SetSize(arena, sequence, 3, 20), 0);
    for (std::uint32_t item = 0; item < 3; ++item) {
        sequence.cells[item].number = 7;
        sequence.cells[item].present = true;
        sequence.cells[item].cells = sequence.cells;
    }
    ASSERT_EQ(SetSize(arena, sequence, 0, 20), 0);
    EXPECT_EQ(sequence.number, 0U);
    ASSERT_EQ(SetSize(arena, sequence, 3, 20), 0);
    for (std::uint32_t item = 0; item < 3; ++item) {
        EXPECT_EQ(sequence.cells[item].number, 0U);
        EXPECT_FALSE(sequence.cells[item].present);
        EXPECT_EQ(sequence.cells[item].cells, nullptr);
    }
}

TEST(RecordSequence, NegativeSizeIsNone) {
    Arena arena;
    Cell sequence{};
    ASSERT_EQ(SetSize(arena, sequence, 2, 20), 0);
    EXPECT_EQ(SetSize(arena, sequence, -1, 20), 0);
    EXPECT_EQ(sequence.number, 0U);
}

TEST(RecordStruct, IsMadeOnce) {
    Arena arena;
    Cell cell{};
    Cell* members = StructCells(arena, cell, 3);
    ASSERT_NE(members, nullptr);
    for (int member = 0; member < 3; ++member) {
        EXPECT_EQ(members[member].number, 0U);
        EXPECT_FALSE(members[member].present);
    }
    members[1].number = 5;
    EXPECT_EQ(StructCells(arena, cell, 3), members);
    EXPECT_EQ(cell.cells[1].number, 5U);
}

TEST(RecordUnion, KeepsItsAlternativeUntilAnotherIsChosen) {
    Arena arena;
    Cell cell{};
    Cell& first = ChooseAlternative(arena, cell, 2);
    EXPECT_EQ(cell.number, 2U);
    first.number = 8;
    EXPECT_EQ(ChooseAlternative(arena, cell, 2).number, 8U);
    EXPECT_EQ(ChooseAlternative(arena, cell, 3).number, 0U);
    EXPECT_EQ(cell.number, 3U);
}

TEST(RecordBinary, StoresItsBits) {
    Arena arena;
    const Octets message = {0x12, 0x34, 0x56};
    const BitReader reader(message.data(), 3);
    Cell cell{};
    StoreBinary(arena, cell, reader, 4, 13, 64);
    EXPECT_EQ(cell.number, 13U);
    EXPECT_EQ(cell.location, 4U << 16 | 13U);
    EXPECT_EQ(cell.octets[0], 0x23);
    EXPECT_EQ(cell.octets[1], 0x40);  // 45 cut to five bits
}

TEST(RecordBinary, IsCutAtItsCapacity) {
    Arena arena;
    const Octets message(13, 0xFF);
    const BitReader reader(message.data(), 13);
    Cell cell{};
    StoreBinary(arena, cell, reader, 0, 100, 64);
    EXPECT_EQ(cell.number, 64U);
    EXPECT_EQ(cell.location, 100U);
    for (int octet = 0; octet < 8; ++octet) {
        EXPECT_EQ(cell.octets[octet], 0xFF);
    }
    StoreBinary(arena, cell, reader, 0, 64, 64);
    EXPECT_EQ(cell.number, 64U);
    EXPECT_EQ(cell.location, 64U);
}

TEST(RecordBinary, NothingIsStoredOfAnEmptyOne) {
    Arena arena;
    const Octets message(2, 0xFF);
    const BitReader reader(message.data(), 2);
    for (const std::int64_t length : {0, -3}) {
        Cell cell{};
        StoreBinary(arena, cell, reader, 5, length, 64);
        EXPECT_EQ(cell.number, 0U);
        EXPECT_EQ(cell.octets, nullptr);
        EXPECT_EQ(cell.location, length == 0 ? 5U << 16 : 0U);
    }
    // What was stored before stays.
    Cell cell{};
    StoreBinary(arena, cell, reader, 0, 8, 64);
    StoreBinary(arena, cell, reader, 8, 0, 64);
    EXPECT_EQ(cell.number, 8U);
    EXPECT_EQ(cell.location, 8U << 16);
}

TEST(RecordBinary, BitsPastTheMessageAreZero) {
    Arena arena;
    const Octets message(1, 0xFF);
    const BitReader reader(message.data(), 1);
    Cell cell{};
    StoreBinary(arena, cell, reader, 4, 16, 64);
    EXPECT_EQ(cell.octets[0], 0xF0);
    EXPECT_EQ(cell.octets[1], 0x00);
}

}  // namespace
}  // namespace quorvane::bits
