#pragma once

// Functions as users name them: in any case of letters, and with slips.
//
// Tests: tests/tool/function_name_test.cpp.

#include <optional>
#include <string>
#include <string_view>

#include "quorvane/decode.h"

namespace quorvane::tool {

/// The function of that name, in any case of letters.
std::optional<Decoding> FindFunction(std::string_view name);

/// "EPS_MMUplink or EPS_MMDownlink": the names that differ least from `name`, if it may be a slip
/// of them; else empty.
std::string NearestFunctions(std::string_view name);

/// What to say of a name that is none, with those that may be meant.
std::string UnknownFunction(std::string_view name);

}  // namespace quorvane::tool
