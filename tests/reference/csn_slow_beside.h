#pragma once

// The machine of the library and the slow one over the same image and bits.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "bits/outcome.h"
#include "csn/machine.h"
#include "reference/csn_slow_machine.h"

namespace quorvane::reference {

/// What the actions and value functions of an image are called, by their index.
struct FunctionNames {
    std::vector<std::string> actions;
    std::vector<std::string> functions;
};

/// An image for the slow machine. Its code is copied; the tables must outlive it.
[[nodiscard]] SlowProgram SlowProgramOf(const csn::CsnProgram& program, const FunctionNames& names);

/// What may be read, bit by bit.
[[nodiscard]] std::vector<bool> AllBitsOf(const bits::BitReader& reader);

/// Runs a machine that was set up, and then the slow one. Empty, or in what they differ; `result`
/// is the machine's. The callback hears the machine alone: what it did is done to the slow machine
/// too, if that one asks the same. Without a program of its own the slow machine calls the actions
/// and value functions of the image itself, on a copy of its state. `instructions` is what both may
/// take instead of their ceiling.
[[nodiscard]] std::string DifferenceOfSlow(
    csn::CsnMachine& machine, csn::CsnCallback callback, bits::Outcome& result,
    const SlowProgram* program = nullptr, std::optional<std::uint64_t> instructions = std::nullopt);

}  // namespace quorvane::reference
