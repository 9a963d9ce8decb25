#pragma once

// Draws valid messages at random over a family's tables: optional elements, lengths, alternatives
// and repetitions. Tests, fuzz seeds and benchmark sets are made of them.
//
// Tests: tests/unit/message_generator_test.cpp, tests/round_trip_test.cpp.

#include <cstdint>
#include <map>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "families/family.h"
#include "iecodec/message_container.h"

namespace quorvane::tool {

/// A small generator whose numbers are the same on every platform.
class Random {
  public:
    explicit Random(std::uint64_t seed) : state_(seed) {}

    std::uint64_t Next();
    /// A number from 0 to `most`.
    std::uint32_t UpTo(std::uint32_t most) {
        return static_cast<std::uint32_t>(Next() % (std::uint64_t{most} + 1));
    }
    bool OneIn(std::uint32_t n) { return UpTo(n - 1) == 0; }

  private:
    std::uint64_t state_;
};

/// Why a drawn value was dropped.
enum class DropReason : std::uint8_t {
    kNoValue,           // the bits or numbers drawn are no value of the type
    kLength,            // it takes other bits than its place has
    kOtherAlternative,  // its own selector leads to another alternative
    kDoesNotComeBack,   // it does not encode, or not to what decodes to it
};

/// How many values were dropped, by reason and type.
using Drops = std::map<std::pair<DropReason, std::string_view>, std::uint64_t>;

struct GeneratedMessage {
    std::vector<std::uint8_t> octets;     // the last one filled up with zeros
    std::int64_t bits = 0;                // of the message
    iecodec::MessageContainer container;  // its record, in the generator's arena
};

/// Where messages may end.
enum class MessageEnd : std::uint8_t {
    kAnyBit,
    kOctet,  // for decodings that take a message's length in octets
};

class MessageGenerator {
  public:
    MessageGenerator(const families::Family& family, std::uint64_t seed,
                     MessageEnd end = MessageEnd::kAnyBit)
        : family_(family), random_(seed), end_(end) {}

    /// A message of the set with this tag (from 1), in canonical form: elements in the order of
    /// the message's table, spare bits 0. Nothing if the draw led nowhere in many tries. The
    /// record is valid until the next call.
    std::optional<GeneratedMessage> Generate(const iecodec::MessageSetRow& set, std::uint32_t tag);

    /// The same of a message that the generator draws.
    std::optional<GeneratedMessage> Generate(const iecodec::MessageSetRow& set);

    /// What all calls have dropped on the way.
    [[nodiscard]] const Drops& Dropped() const { return drops_; }

  private:
    const families::Family& family_;
    Random random_;
    MessageEnd end_;
    Drops drops_;
    bits::Arena arena_;
};

}  // namespace quorvane::tool
