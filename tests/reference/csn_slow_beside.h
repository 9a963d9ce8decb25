#pragma once

// The machine of the library and the slow one over the same image and bits.

#include <string>
#include <vector>

#include "bits/outcome.h"
#include "csn/machine.h"

namespace quorvane::reference {

/// What the actions and value functions of an image are called, by their index.
struct FunctionNames {
    std::vector<std::string> actions;
    std::vector<std::string> functions;
};

/// Runs a machine that was set up, and then the slow one. Empty, or in what they differ; `result`
/// is the machine's. The callback hears the machine alone: what it did is done to the slow machine
/// too, if that one asks the same. Without names actions and value functions are those of the
/// image itself, on a copy of the slow machine's state.
[[nodiscard]] std::string DifferenceOfSlow(csn::CsnMachine& machine, csn::CsnCallback callback,
                                           bits::Outcome& result,
                                           const FunctionNames* names = nullptr);

}  // namespace quorvane::reference
