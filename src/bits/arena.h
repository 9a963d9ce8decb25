#pragma once

// Memory of one decode: record cells, octets of binary fields and the nodes of a value tree are
// cut from a few large blocks and given back together, so that a call in the steady state asks the
// heap for nothing. An arena belongs to one thread. What has not been cut, or was given back, is
// poisoned, and so is a gap behind each piece.
//
// Tests: tests/unit/arena_test.cpp.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <type_traits>

#include "bits/poison.h"

namespace quorvane::bits {

class Arena {
  public:
    Arena() = default;
    Arena(const Arena&) = delete;
    Arena& operator=(const Arena&) = delete;
    ~Arena();

    /// `size` octets, aligned for any scalar or pointer, contents not initialised. Valid until
    /// Reset or destruction. Throws std::bad_alloc when the heap is exhausted.
    [[nodiscard]] void* Allocate(std::size_t size) {
        const std::size_t rounded = (size + kGap + kAlignment - 1) & ~(kAlignment - 1);
        if (rounded > static_cast<std::size_t>(end_ - next_)) {
            AddBlock(rounded);
        }
        std::byte* result = next_;
        next_ += rounded;
        Unpoison(result, size);
        return result;
    }

    /// An array of `count` zero-initialised items.
    template <typename T>
    [[nodiscard]] T* AllocateZeroed(std::size_t count) {
        static_assert(std::is_trivially_destructible_v<T>);
        T* items = static_cast<T*>(Allocate(count * sizeof(T)));
        for (std::size_t index = 0; index < count; ++index) {
            ::new (items + index) T{};  // quicker than the algorithm, which copies the first item
        }
        return items;
    }

    /// Takes everything back. Keeps one block for the next use, unless it has grown past
    /// kMostKept octets.
    void Reset();

    /// How many octets a thread's arena keeps between calls at most.
    static constexpr std::size_t kMostKept = std::size_t{1} << 20;

  private:
    // 8 serves every type that is stored here.
    static constexpr std::size_t kAlignment = 8;
    static constexpr std::size_t kGap = kPoisons ? kAlignment : 0;
    static constexpr std::size_t kFirstBlock = std::size_t{16} << 10;

    struct Block;

    void AddBlock(std::size_t leastSize);
    void Use(Block* block);
    static void FreeFrom(Block* block);

    Block* newest_ = nullptr;
    std::byte* next_ = nullptr;
    std::byte* end_ = nullptr;
};

}  // namespace quorvane::bits
