#pragma once

// The actions and value functions that descriptions can name, and the C++ that stands for them in
// an image's tables. They are defined in csn/functions.h.

#include <string>
#include <string_view>
#include <vector>

#include "compiler/csn/csn_syntax.h"

namespace quorvane::compiler {

struct CsnActionInfo {
    enum class Parameter {
        kSets,    // a variable that the action sets
        kUses,    // a variable that must be set before
        kNumber,  // a number
    };

    std::string_view name;      // in descriptions
    std::string_view function;  // in C++
    std::vector<Parameter> parameters;
};

/// The action `name`, or null.
[[nodiscard]] const CsnActionInfo* FindCsnAction(std::string_view name);

/// The names of all actions, for messages.
[[nodiscard]] std::string CsnActionNames();

/// C++ for the function that `action`, whose arguments are resolved, calls.
[[nodiscard]] std::string CsnActionExpression(const CsnNode& action);

/// C++ for the value function that gives `count`, which is neither a number nor just val(NAME).
[[nodiscard]] std::string CsnCountExpression(const CsnCount& count);

}  // namespace quorvane::compiler
