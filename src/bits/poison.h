#pragma once

// Memory that is the program's own but may not be touched now. The address sanitizer ends the
// program at a look into poisoned memory; in builds without it nothing is done and nothing costs.
//
// Tests: tests/unit/arena_test.cpp.

#include <cstddef>

#if defined(__SANITIZE_ADDRESS__)
#define QUORVANE_ADDRESS_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define QUORVANE_ADDRESS_SANITIZER 1
#endif
#endif

#ifdef QUORVANE_ADDRESS_SANITIZER
// NOLINTBEGIN: the sanitizer's own names
extern "C" void __asan_poison_memory_region(const volatile void* memory, std::size_t size);
extern "C" void __asan_unpoison_memory_region(const volatile void* memory, std::size_t size);
// NOLINTEND
#endif

namespace quorvane::bits {

/// Whether poisoned memory is watched.
#ifdef QUORVANE_ADDRESS_SANITIZER
inline constexpr bool kPoisons = true;
#else
inline constexpr bool kPoisons = false;
#endif

inline void Poison([[maybe_unused]] const void* memory, [[maybe_unused]] std::size_t size) {
#ifdef QUORVANE_ADDRESS_SANITIZER
    __asan_poison_memory_region(memory, size);
#endif
}

inline void Unpoison([[maybe_unused]] const void* memory, [[maybe_unused]] std::size_t size) {
#ifdef QUORVANE_ADDRESS_SANITIZER
    __asan_unpoison_memory_region(memory, size);
#endif
}

}  // namespace quorvane::bits
