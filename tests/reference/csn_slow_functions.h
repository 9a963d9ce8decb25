#pragma once

// The actions and value functions of images as the slow machine runs them, found by what the
// compiler calls them: "NotePosition<1>", "SetCount<2, &csn::functions::Ones<8>>".

#include <cstdint>
#include <functional>
#include <string>

#include "reference/csn_slow_machine.h"

namespace quorvane::reference {

using SlowAction = std::function<void(SlowMachine&)>;
using SlowValueFunction = std::function<std::uint32_t(SlowMachine&)>;

/// Throw std::invalid_argument for a name that is not known.
[[nodiscard]] SlowAction SlowActionNamed(const std::string& name);
[[nodiscard]] SlowValueFunction SlowValueFunctionNamed(const std::string& name);

}  // namespace quorvane::reference
