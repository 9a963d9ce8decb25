#pragma once

// Byte-code images made from an input: put together from the constructs that a compiled description
// has, in any order, and then damaged a little. Whoever runs one asks the verifier first.

#include <cstdint>
#include <span>
#include <vector>

#include "csn/assembly/verifier.h"
#include "csn/csn_program.h"
#include "fuzz_support.h"

namespace quorvane::fuzz {

struct Image {
    std::vector<std::uint8_t> code;
    std::vector<std::uint16_t> fieldTable;
    std::span<const csn::CsnAction> actions;
    std::vector<csn::VerifierAction> actionEffects;
    std::span<const csn::CsnValueFunction> functions;
    std::vector<csn::VerifierBound> functionBounds;
    std::vector<csn::VerifierEntry> entries;

    [[nodiscard]] csn::CsnProgram Program() const {
        return {code.data(),
                static_cast<std::uint32_t>(code.size()),
                fieldTable.data(),
                actions.data(),
                functions.data(),
                static_cast<std::uint32_t>(fieldTable.size()),
                nullptr};
    }

    /// What the verifier finds.
    [[nodiscard]] csn::VerifierReport Verify() const;
};

/// An image of a few rules, of which the first is the entry. Each action and value function of the
/// library is in its tables.
Image MakeImage(Input& recipe);

/// Changes a few octets of the code and words of the field table.
void DamageImage(Input& recipe, Image& image);

}  // namespace quorvane::fuzz
