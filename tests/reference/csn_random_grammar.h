#pragma once

// Random descriptions for comparing the machine with the reference reader.

#include <cstdint>
#include <random>
#include <string>

namespace quorvane::reference {

/// Makes descriptions of one structure with a few rules. Some are refused by the compiler, for
/// instance because a repetition could be empty; the caller passes over those.
class RandomGrammar {
  public:
    explicit RandomGrammar(std::uint32_t seed) : random_(seed) {}

    /// The rules of a structure.
    [[nodiscard]] std::string Next();

    /// A number from 0 to `count` - 1.
    std::uint32_t Below(std::uint32_t count) {
        return std::uniform_int_distribution<std::uint32_t>(0, count - 1)(random_);
    }

    /// A bit string of up to `most` bits in which ones are as likely as `ones` of 8 says.
    [[nodiscard]] std::string Bits(std::uint32_t most, std::uint32_t ones);

  private:
    std::string Expression(int depth);
    std::string Leaf();
    std::string Repetition(int depth);

    std::mt19937 random_;
    std::uint32_t rules_ = 0;     // that an expression may refer to
    std::uint32_t counters_ = 0;  // count fields so far
};

}  // namespace quorvane::reference
