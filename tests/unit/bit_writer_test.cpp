#include "bits/bit_writer.h"

#include <gtest/gtest.h>
#include <vector>

#include "bits/bit_buffer.h"

namespace quorvane::bits {
namespace {

using Octets = std::vector<std::uint8_t>;

TEST(BitWriter, AgreesWithTheBufferInside) {
    for (std::int32_t position = 0; position < 12; ++position) {
        for (std::int32_t count = 0; count <= 63; ++count) {
            Octets expected(10, 0xA5);
            BitBufferWrite(expected.data(), position, 0xDEADBEEF, count);
            Octets octets(10, 0xA5);
            BitWriter writer(octets.data(), 10);
            writer.Write(position, 0xDEADBEEF, count);
            EXPECT_EQ(octets, expected) << position << " " << count;
            EXPECT_FALSE(writer.Overflowed());
        }
    }
}

TEST(BitWriter, DropsBitsOutsideAndSaysSo) {
    Octets octets(2, 0x00);
    BitWriter writer(octets.data(), 1);
    writer.Write(4, 0xFF, 4);
    EXPECT_FALSE(writer.Overflowed());
    writer.Write(6, 0xFF, 8);
    EXPECT_TRUE(writer.Overflowed());
    EXPECT_EQ(octets, (Octets{0x0F, 0x00}));

    BitWriter before(octets.data(), 1);
    before.Write(-2, 0, 4);
    EXPECT_TRUE(before.Overflowed());
    EXPECT_EQ(octets[0], 0x0F);
    before.Write(-2, 0xF, 4);
    EXPECT_EQ(octets[0], 0xCF);
}

TEST(BitWriter, WritingNothingOutsideIsNoOverflow) {
    BitWriter writer(nullptr, 0);
    writer.Write(100, 1, 0);
    writer.Write(100, 1, -1);
    writer.Copy(100, nullptr, 0);
    EXPECT_FALSE(writer.Overflowed());
}

TEST(BitWriter, CopiesToAnyPosition) {
    Octets source;
    for (unsigned index = 0; index < 12; ++index) {
        source.push_back(static_cast<std::uint8_t>(index * 91 + 7));
    }
    for (std::int32_t position = 0; position < 9; ++position) {
        for (std::int32_t count = 0; count <= 90; ++count) {
            Octets expected(14, 0x5A);
            BitBufferCopy(expected.data(), position, source.data(), 0, count);
            Octets octets(14, 0x5A);
            BitWriter writer(octets.data(), 14);
            writer.Copy(position, source.data(), count);
            EXPECT_EQ(octets, expected) << position << " " << count;
        }
    }
}

TEST(BitWriter, ReaderSeesWhatIsWritten) {
    Octets octets(4, 0x00);
    BitWriter writer(octets.data(), 4);
    const BitReader reader = writer.Reader();
    writer.Write(5, 0x155, 9);
    EXPECT_EQ(reader.Read(5, 9), 0x155U);
    EXPECT_EQ(reader.OctetCount(), 4);
}

}  // namespace
}  // namespace quorvane::bits
