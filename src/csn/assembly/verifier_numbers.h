#pragma once

// What the verifier knows of the numbers that tags and value functions give. For
// csn/assembly/verifier_flow.cpp alone.

#include <cstdint>
#include <map>
#include <optional>

#include "csn/assembly/instruction.h"
#include "csn/assembly/verifier.h"

namespace quorvane::csn {

/// The instructions of an image by offset.
using InstructionMap = std::map<std::uint32_t, Instruction>;

/// The highest number that a tag may hold, of tags that are set and hold none below 0.
using TagBounds = std::map<std::uint32_t, std::uint32_t>;

/// Makes `bounds` hold where `other` does, too. True if they change.
bool Weaken(TagBounds& bounds, const TagBounds& other);

/// How many bits an instruction takes; none if it may lead back, call or move the position.
[[nodiscard]] std::optional<std::uint32_t> BitsTaken(const Instruction& instruction);

/// The highest number that the bits of a field can make, by what stands between its ends: code that
/// only leads forward runs once at most.
[[nodiscard]] std::uint32_t MostBetween(const InstructionMap& instructions, std::uint32_t begin,
                                        std::uint32_t end);

/// How often a repetition may run its body.
struct Iterations {
    std::uint32_t least = 0;
    std::uint32_t most = kNoBound;
};

[[nodiscard]] Iterations IterationsOf(const VerifierInput& input, const Instruction& repetition,
                                      const TagBounds& bounds);

/// `tag` is added and holds a number from 0 to `most`.
void AddTag(const VerifierInput& input, TagBounds& bounds, std::uint32_t tag, std::uint32_t most);

}  // namespace quorvane::csn
