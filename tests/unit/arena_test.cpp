#include "bits/arena.h"

#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <vector>

namespace quorvane::bits {
namespace {

TEST(Arena, PiecesAreAlignedAndApart) {
    Arena arena;
    std::vector<std::pair<std::byte*, std::size_t>> pieces;
    for (std::size_t size = 0; size < 200; ++size) {
        auto* piece = static_cast<std::byte*>(arena.Allocate(size));
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(piece) % alignof(std::uint64_t), 0U);
        if (size > 0) {
            std::memset(piece, static_cast<int>(size), size);
            pieces.emplace_back(piece, size);
        }
    }
    for (const auto& [piece, size] : pieces) {
        EXPECT_EQ(piece[0], static_cast<std::byte>(size));
        EXPECT_EQ(piece[size - 1], static_cast<std::byte>(size));
    }
}

TEST(Arena, LargePiecesGetBlocksOfTheirOwn) {
    Arena arena;
    auto* small = static_cast<std::uint8_t*>(arena.Allocate(16));
    small[0] = 1;
    auto* large = static_cast<std::uint8_t*>(arena.Allocate(Arena::kMostKept * 3));
    std::memset(large, 2, Arena::kMostKept * 3);
    EXPECT_EQ(small[0], 1);
    arena.Reset();
    auto* again = static_cast<std::uint8_t*>(arena.Allocate(100));
    std::memset(again, 3, 100);
}

TEST(Arena, ZeroedArrays) {
    Arena arena;
    for (int round = 0; round < 3; ++round) {
        auto* dirty = static_cast<std::uint8_t*>(arena.Allocate(4096));
        std::memset(dirty, 0xFF, 4096);
        arena.Reset();
        auto* numbers = arena.AllocateZeroed<std::uint32_t>(1000);
        for (int index = 0; index < 1000; ++index) {
            ASSERT_EQ(numbers[index], 0U);
        }
        arena.Reset();
    }
}

TEST(Arena, ReusesItsBlock) {
    Arena arena;
    for (int count = 0; count < 100; ++count) {
        (void)arena.Allocate(1000);
    }
    arena.Reset();
    // One block holds what the last use took: the first piece lies where it begins.
    void* first = arena.Allocate(8);
    for (int count = 0; count < 50; ++count) {
        (void)arena.Allocate(1000);
    }
    arena.Reset();
    EXPECT_EQ(arena.Allocate(8), first);
}

TEST(Arena, LooksBesidePiecesEndTheProgramUnderTheAddressSanitizer) {
    if (!kPoisons) {
        GTEST_SKIP() << "nothing watches";
    }
    Arena arena;
    const auto* piece = static_cast<volatile std::uint8_t*>(arena.Allocate(13));
    const auto* next = static_cast<volatile std::uint8_t*>(arena.Allocate(16));
    EXPECT_EQ(next[15], next[15]);
    EXPECT_DEATH(static_cast<void>(piece[13]), "use-after-poison");
    EXPECT_DEATH(static_cast<void>(next[-1]), "use-after-poison");
    EXPECT_DEATH(static_cast<void>(next[16]), "use-after-poison");
    EXPECT_DEATH(static_cast<void>(next[1000]), "use-after-poison");
    arena.Reset();
    EXPECT_DEATH(static_cast<void>(piece[0]), "use-after-poison");
    EXPECT_EQ(arena.Allocate(13), piece);
    EXPECT_EQ(piece[12], piece[12]);
    EXPECT_DEATH(static_cast<void>(next[0]), "use-after-poison");
}

TEST(Arena, ResetOfAnUnusedArena) {
    Arena arena;
    arena.Reset();
    EXPECT_NE(arena.Allocate(1), nullptr);
}

}  // namespace
}  // namespace quorvane::bits
