#include "bits/bit_reader.h"

#include <gtest/gtest.h>
#include <memory>
#include <vector>

#include "bits/bit_buffer.h"

namespace quorvane::bits {
namespace {

using Octets = std::vector<std::uint8_t>;

/// Octets on the heap without room behind, so that the sanitizer sees a read outside.
struct Exact {
    explicit Exact(const Octets& octets)
        : memory(new std::uint8_t[octets.size()]), size(static_cast<std::int64_t>(octets.size())) {
        std::copy(octets.begin(), octets.end(), memory.get());
    }
    [[nodiscard]] BitReader Reader() const { return {memory.get(), size}; }

    std::unique_ptr<std::uint8_t[]> memory;
    std::int64_t size;
};

Octets Pattern(std::size_t count) {
    Octets octets;
    for (std::size_t index = 0; index < count; ++index) {
        octets.push_back(static_cast<std::uint8_t>(index * 73 + 41));
    }
    return octets;
}

TEST(BitReader, AgreesWithTheBufferInside) {
    const Octets octets = Pattern(14);
    const Exact exact(octets);
    for (std::int32_t position = 0; position <= 80; ++position) {
        for (std::int32_t count = 0; count <= 32; ++count) {
            EXPECT_EQ(exact.Reader().Read(position, count),
                      BitBufferRead(octets.data(), position, count))
                << position << " " << count;
        }
    }
}

TEST(BitReader, BitsOutsideAreZero) {
    const Exact exact(Octets{0xFF});
    const BitReader reader = exact.Reader();
    EXPECT_EQ(reader.Read(0, 16), 0xFF00U);
    EXPECT_EQ(reader.Read(4, 8), 0xF0U);
    EXPECT_EQ(reader.Read(8, 8), 0U);
    EXPECT_EQ(reader.Read(-4, 8), 0x0FU);
    EXPECT_EQ(reader.Read(-32, 32), 0U);
    EXPECT_EQ(reader.Read(1'000'000'000'000, 32), 0U);
    EXPECT_EQ(reader.Read(-1'000'000'000'000, 32), 0U);
    EXPECT_EQ(reader.Read(0, 0), 0U);
    EXPECT_EQ(reader.Read(0, -3), 0U);
}

// Around both ends of buffers shorter and longer than a window of eight octets.
TEST(BitReader, AgreesWithSingleBitsAnywhere) {
    for (const std::size_t size : {0U, 1U, 7U, 8U, 9U, 20U}) {
        const Octets octets = Pattern(size);
        const Exact exact(octets);
        const auto bitAt = [&](std::int32_t position) {
            const bool inside = position >= 0 && position < static_cast<std::int32_t>(8 * size);
            return inside ? octets[static_cast<std::size_t>(position / 8)] >> (7 - position % 8) & 1
                          : 0;
        };
        const BitReader reader = exact.Reader();
        BitWindow window(reader);
        for (std::int32_t position = -70; position < 240; ++position) {
            EXPECT_EQ(window.Read(position, 0), 0U);
            EXPECT_EQ(exact.Reader().ReadBit(position), static_cast<std::uint32_t>(bitAt(position)))
                << size << " " << position;
            std::uint32_t number = 0;
            for (std::int32_t count = 1; count <= 32; ++count) {
                number = number << 1 | static_cast<std::uint32_t>(bitAt(position + count - 1));
                EXPECT_EQ(exact.Reader().Read(position, count), number)
                    << size << " " << position << " " << count;
                EXPECT_EQ(window.Read(position, count), number)
                    << size << " " << position << " " << count;
            }
        }
    }
}

TEST(BitReader, EmptyBuffer) {
    const BitReader reader(nullptr, 0);
    EXPECT_EQ(reader.Read(0, 32), 0U);
    EXPECT_EQ(reader.ReadOctet(0), 0);
    EXPECT_EQ(reader.OctetCount(), 0);
    Octets destination(2, 0xFF);
    reader.Copy(destination.data(), 0, 12);
    EXPECT_EQ(destination, (Octets{0, 0}));
}

TEST(BitReader, Octets) {
    const Exact exact(Octets{0x12, 0x34, 0x56});
    EXPECT_EQ(exact.Reader().ReadOctet(8), 0x34);
    EXPECT_EQ(exact.Reader().ReadOctet(4), 0x23);
    EXPECT_EQ(exact.Reader().ReadOctet(20), 0x60);
    EXPECT_EQ(exact.Reader().OctetCount(), 3);
}

TEST(BitReader, CopyFromAnyPosition) {
    const Octets octets = Pattern(12);
    const Exact exact(octets);
    for (std::int32_t position = 0; position < 40; ++position) {
        for (std::int32_t count = 0; count <= 50; ++count) {
            const auto size = static_cast<std::size_t>((count + 7) / 8);
            Octets expected(size, 0);
            BitBufferCopy(expected.data(), 0, octets.data(), position, count);
            Octets copied(size + 1, 0xEE);
            exact.Reader().Copy(copied.data(), position, count);
            EXPECT_EQ(copied.back(), 0xEE);
            copied.pop_back();
            EXPECT_EQ(copied, expected) << position << " " << count;
        }
    }
}

TEST(BitReader, CopyPastTheEnds) {
    const Exact exact(Octets{0xFF, 0xFF});
    Octets destination(3, 0xEE);
    exact.Reader().Copy(destination.data(), 8, 24);
    EXPECT_EQ(destination, (Octets{0xFF, 0x00, 0x00}));
    exact.Reader().Copy(destination.data(), -4, 24);
    EXPECT_EQ(destination, (Octets{0x0F, 0xFF, 0xF0}));
}

TEST(BitReader, CopyOfNothing) {
    const Exact exact(Octets{0xFF});
    exact.Reader().Copy(nullptr, 0, 0);
    exact.Reader().Copy(nullptr, 0, -1);
    exact.Reader().Copy(nullptr, 0, -8);
}

}  // namespace
}  // namespace quorvane::bits
