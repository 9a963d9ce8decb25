#pragma once

// The actions and value functions that descriptions can name, and the C++ that stands for them in
// an image's tables. They are defined in csn/functions.h.

#include <string>
#include <string_view>
#include <vector>

#include "compiler/csn/csn_syntax.h"
#include "csn/assembly/verifier.h"

namespace quorvane::compiler {

struct CsnActionInfo {
    enum class Parameter {
        kSets,    // a variable that the action sets
        kUses,    // a variable that must be set before
        kNumber,  // a number
        kCount,   // a count
    };

    /// What the variable holds, whether the action sets it or changes it.
    enum class Leaves {
        kAsBefore,
        kAny,
        kBits,    // a number of as many bits as the second argument says
        kResult,  // of the count that is the second argument
    };

    std::string_view name;      // in descriptions
    std::string_view function;  // in C++
    std::vector<Parameter> parameters;
    Leaves leaves = Leaves::kAsBefore;
};

/// The action `name`, or null.
[[nodiscard]] const CsnActionInfo* FindCsnAction(std::string_view name);

/// The names of all actions, for messages.
[[nodiscard]] std::string CsnActionNames();

/// C++ for the function that `action`, whose arguments are resolved, calls.
[[nodiscard]] std::string CsnActionExpression(const CsnNode& action);

/// What it does to the tags, for the proof of the image.
[[nodiscard]] csn::VerifierAction CsnActionEffect(const CsnNode& action);

/// A value function: the C++ for it, and the most that it gives.
struct CsnValueFunction {
    std::string expression;
    csn::VerifierBound bound;
};

/// The function that gives `count`.
[[nodiscard]] CsnValueFunction CsnFunctionOf(const CsnCount& count);

}  // namespace quorvane::compiler
