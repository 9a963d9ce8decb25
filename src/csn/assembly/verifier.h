#pragma once

// Proof, when an image is built, of what the machine takes for granted when it runs it:
//
//   - the image decodes from its first octet to its last, and every jump, call and return stays on
//     its instructions; only LOOP leads back
//   - indices of actions, value functions and fields are within their tables
//   - a field that is met under a parent has a tag there, so that the look-up ends
//   - stack entries are used in pairs: what a rule pushes it pops, END closes what BEGIN opened,
//     and a choice point that COMMIT moves up is not outside an open field
//   - a rule and those it calls keep within the 32 tags; the stack too, unless rules call
//     themselves, where the machine stops the run
//   - an iteration of an open repetition takes at least one bit. A repetition whose count is that
//     of a tag or value function is open unless the count is known to have a bound
//
// Actions and value functions are trusted: to keep to the machine's interface and to what is stated
// of them.
//
// Tests: tests/unit/csn_verifier_test.cpp.

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace quorvane::csn {

/// An entry into an image.
struct VerifierEntry {
    std::string name;
    std::uint32_t label = 0;
    std::uint16_t rootTag = 0;
    std::uint16_t firstTag = 0;    // of the structure's own tags
    std::uint16_t fieldCount = 0;  // how many they are; 0: any tag will do
};

/// The most of a number that nothing bounds.
inline constexpr std::uint32_t kNoBound = UINT32_MAX;

/// What an action does to the tag store.
struct VerifierAction {
    enum class Effect : std::uint8_t { kNone, kAdds, kChanges };

    Effect effect = Effect::kAdds;
    std::uint32_t tag = 0;          // the one that it adds, or changes if it is there
    std::uint32_t most = kNoBound;  // that the tag then holds
};

/// A value function's result is at most `offset`, or `factor` times the number of `tag` more.
struct VerifierBound {
    std::int64_t offset = kNoBound;
    std::optional<std::uint32_t> tag = {};
    std::uint32_t factor = 1;
};

struct VerifierInput {
    std::span<const std::uint8_t> code;
    std::span<const std::uint16_t> fieldTable;
    std::vector<VerifierEntry> entries;
    std::vector<VerifierAction> actions;
    std::vector<VerifierBound> functions;
};

/// Something that is not proven, at an offset of the image.
struct VerifierFinding {
    std::uint32_t offset;
    std::string text;
};

/// What an entry's run needs at most.
struct VerifierNeed {
    std::uint32_t tags = 0;
    std::optional<std::uint32_t> stackEntries;  // none: its rules call themselves
};

struct VerifierReport {
    std::vector<VerifierFinding> findings;  // by offset; none: the image is proven
    std::vector<VerifierNeed> needs;        // one an entry, in their order; 0 if there are findings

    [[nodiscard]] std::string Text() const;  // one line a finding
};

[[nodiscard]] VerifierReport Verify(const VerifierInput& input);

}  // namespace quorvane::csn
