#include "bits/bit_buffer.h"

#include <gtest/gtest.h>
#include <vector>

namespace quorvane::bits {
namespace {

using Octets = std::vector<std::uint8_t>;

TEST(BitBufferRead, MostSignificantBitFirst) {
    const Octets octets = {0xA5, 0x3C, 0xFF, 0x00, 0x81};
    EXPECT_EQ(BitBufferRead(octets.data(), 0, 1), 1U);
    EXPECT_EQ(BitBufferRead(octets.data(), 1, 1), 0U);
    EXPECT_EQ(BitBufferRead(octets.data(), 7, 1), 1U);
    EXPECT_EQ(BitBufferRead(octets.data(), 0, 8), 0xA5U);
    EXPECT_EQ(BitBufferRead(octets.data(), 4, 8), 0x53U);
    EXPECT_EQ(BitBufferRead(octets.data(), 0, 32), 0xA53CFF00U);
    EXPECT_EQ(BitBufferRead(octets.data(), 4, 32), 0x53CFF008U);
    EXPECT_EQ(BitBufferRead(octets.data(), 7, 32), 0x9E7F8040U);
}

TEST(BitBufferRead, AcrossAnOctetBoundary) {
    EXPECT_EQ(BitBufferRead(Octets{0x01, 0x00}.data(), 7, 2), 2U);
    EXPECT_EQ(BitBufferRead(Octets{0x00, 0x80}.data(), 7, 2), 1U);
}

TEST(BitBufferRead, CountBelowOneReadsNothing) {
    EXPECT_EQ(BitBufferRead(nullptr, 0, 0), 0U);
    EXPECT_EQ(BitBufferRead(nullptr, 1000, 0), 0U);
    EXPECT_EQ(BitBufferRead(nullptr, 0, -5), 0U);
}

TEST(BitBufferRead, TailWrapsOverTheHead) {
    // 36 bits: the first four are or-ed into the last four.
    const Octets octets = {0xA0, 0x00, 0x00, 0x00, 0x50};
    EXPECT_EQ(BitBufferRead(octets.data(), 0, 36), 0xFU);
    const Octets wide(8, 0x00);
    Octets one = wide;
    one[0] = 0x80;  // place 63
    EXPECT_EQ(BitBufferRead(one.data(), 0, 64), 0x80000000U);
    one[3] = 0x01;  // place 32
    EXPECT_EQ(BitBufferRead(one.data(), 0, 64), 0x80000001U);
}

TEST(BitBufferRead, AgreesWithSingleBits) {
    const Octets octets = {0x3A, 0xC5, 0x99, 0x0F, 0xE7, 0x42};
    for (std::int32_t position = 0; position < 14; ++position) {
        for (std::int32_t count = 1; count <= 32; ++count) {
            std::uint32_t expected = 0;
            for (std::int32_t bit = position; bit < position + count; ++bit) {
                const auto octet =
                    static_cast<std::uint32_t>(octets[static_cast<std::size_t>(bit / 8)]);
                expected = expected << 1 | (octet >> (7 - bit % 8) & 1U);
            }
            EXPECT_EQ(BitBufferRead(octets.data(), position, count), expected)
                << position << " " << count;
        }
    }
}

TEST(BitBufferWrite, LeavesNeighboursAlone) {
    Octets octets = {0xFF, 0xFF, 0xFF};
    BitBufferWrite(octets.data(), 6, 0x05, 5);
    EXPECT_EQ(octets, (Octets{0xFC, 0xBF, 0xFF}));
    octets = {0x00, 0x00, 0x00};
    BitBufferWrite(octets.data(), 6, 0x15, 5);
    EXPECT_EQ(octets, (Octets{0x02, 0xA0, 0x00}));
}

TEST(BitBufferWrite, OnlyTheLowBitsCount) {
    Octets octets = {0xFF};
    BitBufferWrite(octets.data(), 3, 2, 1);
    EXPECT_EQ(octets[0], 0xEF);
    BitBufferWrite(octets.data(), 3, 3, 1);
    EXPECT_EQ(octets[0], 0xFF);
}

TEST(BitBufferWrite, CountBelowOneWritesNothing) {
    BitBufferWrite(nullptr, 0, 1, 0);
    BitBufferWrite(nullptr, 0, 1, -1);
}

TEST(BitBufferWrite, WideRunsUseTheValueAgain) {
    Octets octets(9, 0xFF);
    BitBufferWrite(octets.data(), 1, 0, 63);
    EXPECT_EQ(octets, (Octets{0x80, 0, 0, 0, 0, 0, 0, 0, 0xFF}));
    octets.assign(9, 0x00);
    BitBufferWrite(octets.data(), 0, 0x80000001, 36);  // places 35..32 repeat 3..0
    EXPECT_EQ(octets, (Octets{0x18, 0x00, 0x00, 0x00, 0x10, 0, 0, 0, 0}));
}

TEST(BitBufferCopy, WholeOctets) {
    const Octets source = {0x11, 0x22, 0x33, 0x44};
    Octets destination(6, 0xFF);
    BitBufferCopy(destination.data(), 24, source.data(), 8, 16);
    EXPECT_EQ(destination, (Octets{0xFF, 0xFF, 0xFF, 0x22, 0x33, 0xFF}));
}

TEST(BitBufferCopy, BitByBitLeavesTheRestAlone) {
    const Octets source = {0x00, 0x00, 0x00};
    Octets destination(5, 0xFF);
    BitBufferCopy(destination.data(), 24, source.data(), 8, 15);
    EXPECT_EQ(destination, (Octets{0xFF, 0xFF, 0xFF, 0x00, 0x01}));
    destination.assign(3, 0x00);
    BitBufferCopy(destination.data(), 3, Octets{0x0F, 0xF0}.data(), 4, 8);
    EXPECT_EQ(destination, (Octets{0x1F, 0xE0, 0x00}));
}

TEST(BitBufferCopy, CountBelowOneCopiesNothing) {
    BitBufferCopy(nullptr, 1, nullptr, 0, 0);
    BitBufferCopy(nullptr, 0, nullptr, 0, 0);
    BitBufferCopy(nullptr, 0, nullptr, 0, -8);
    BitBufferCopy(nullptr, 0, nullptr, 0, -3);
}

TEST(FieldLocator, HoldsPositionAndLength) {
    FieldLocator location = 1;
    MakeFieldLocator(location, 28, 4);
    EXPECT_EQ(location, 28U << 16 | 4U);
    MakeFieldLocator(location, 0, 0);
    EXPECT_EQ(location, 0U);
    MakeFieldLocator(location, 65535, 65535);
    EXPECT_EQ(location, 0xFFFFFFFFU);
}

TEST(FieldLocator, IsZeroBeyondSixteenBits) {
    FieldLocator location = 1;
    MakeFieldLocator(location, 65536, 1);
    EXPECT_EQ(location, 0U);
    location = 1;
    MakeFieldLocator(location, 1, 65536);
    EXPECT_EQ(location, 0U);
    location = 1;
    MakeFieldLocator(location, -1, 1);
    EXPECT_EQ(location, 0U);
}

TEST(LengthCode, ShortForm) {
    Octets octets(2, 0xFF);
    EXPECT_EQ(WriteLengthCode(octets.data(), 4, 127), 8);
    EXPECT_EQ(octets, (Octets{0xF7, 0xFF}));
    std::uint32_t value = 0;
    EXPECT_EQ(ReadLengthCode(octets.data(), 4, value), 8);
    EXPECT_EQ(value, 127U);
}

TEST(LengthCode, LongFormIsWrittenOverItsPrefix) {
    const struct {
        std::uint32_t value;
        std::int32_t bits;
        Octets octets;
    } rows[] = {
        {128, 16, {0x80, 0xFF, 0xFF, 0xFF, 0xFF}},
        {255, 16, {0xFF, 0xFF, 0xFF, 0xFF, 0xFF}},
        {256, 24, {0x01, 0x00, 0xFF, 0xFF, 0xFF}},
        {0x10000, 32, {0x01, 0x00, 0x00, 0xFF, 0xFF}},
        {0x1000000, 40, {0x01, 0x00, 0x00, 0x00, 0xFF}},
    };
    for (const auto& row : rows) {
        Octets octets(5, 0xFF);
        EXPECT_EQ(WriteLengthCode(octets.data(), 0, row.value), row.bits);
        EXPECT_EQ(octets, row.octets) << row.value;
    }
}

TEST(LengthCode, LongFormIsReadBehindItsPrefix) {
    std::uint32_t value = 0;
    EXPECT_EQ(ReadLengthCode(Octets{0x81, 0xC8}.data(), 0, value), 16);
    EXPECT_EQ(value, 200U);
    EXPECT_EQ(ReadLengthCode(Octets{0x84, 0xFF, 0xEE, 0xDD, 0xCC}.data(), 0, value), 40);
    EXPECT_EQ(value, 0xFFEEDDCCU);
    EXPECT_EQ(ReadLengthCode(Octets{0x80}.data(), 0, value), 8);
    EXPECT_EQ(value, 0U);
}

TEST(LengthCode, MoreThanFourOctetsAreRefused) {
    for (const unsigned prefix : {0x85U, 0xFFU}) {
        std::uint32_t value = 77;
        EXPECT_EQ(ReadLengthCode(Octets{static_cast<std::uint8_t>(prefix)}.data(), 0, value), -12);
        EXPECT_EQ(value, 77U);
    }
}

}  // namespace
}  // namespace quorvane::bits
