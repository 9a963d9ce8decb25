#pragma once

// Messages for property tests: noise, and golden messages with damage. The same seed gives the
// same messages.

#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

#include "quorvane/decode.h"
#include "support/golden_file.h"

namespace quorvane::test {

class RandomMessages {
  public:
    explicit RandomMessages(std::uint32_t seed);

    struct Message {
        Decoding decoding;
        std::vector<std::uint8_t> octets;
    };

    /// A message for any decoding.
    Message Next();

    /// `count` octets of noise.
    std::vector<std::uint8_t> Noise(std::size_t count);

    /// A number in 0 .. `below` - 1.
    std::size_t Below(std::size_t below) { return random_() % below; }

  private:
    void Damage(std::vector<std::uint8_t>& octets);

    std::mt19937 random_;
    std::vector<GoldenFile> seeds_;
};

}  // namespace quorvane::test
