#pragma once

// Random octets, and a source of an encoder that answers at random.

#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

#include "csn/machine.h"

namespace quorvane::reference {

/// The first of a test's seeds: QUORVANE_TEST_SEED, or 1.
[[nodiscard]] std::uint32_t FirstSeed();

/// A number below `count`.
[[nodiscard]] std::uint32_t Below(std::mt19937& random, std::uint32_t count);

/// Of any bits, of few ones, of many ones, or the fill octet alone.
[[nodiscard]] std::vector<std::uint8_t> RandomOctets(std::mt19937& random, std::size_t size);

/// Changes so many bits, perhaps one of them twice. No octets stay as they are.
void FlipBits(std::mt19937& random, std::uint32_t count, std::vector<std::uint8_t>& octets);

/// A callback with a generator as `userRecord`: it gives any answer, and writes mostly what it is
/// asked for.
std::int32_t RandomSource(csn::CsnFieldEvent& event);

}  // namespace quorvane::reference
