#pragma once

// The files that the compiler is run with.
//
// Tests: tests/compiler/description_files_test.cpp.

#include <string>
#include <string_view>
#include <vector>

#include "compiler/describe.h"

namespace quorvane::compiler {

/// Whether `name` ends as those of descriptions do.
[[nodiscard]] bool IsDescriptionName(std::string_view name);

/// Reads the descriptions `names` for a run that writes `output`. Returns what is wrong, or
/// nothing.
[[nodiscard]] std::string ReadDescriptions(const std::string& output,
                                           const std::vector<std::string>& names,
                                           std::vector<Source>& sources);

}  // namespace quorvane::compiler
