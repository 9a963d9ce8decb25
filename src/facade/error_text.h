#pragma once

// Texts of the error codes.
//
// Tests: tests/unit/facade_result_test.cpp.

#include <string_view>

#include "bits/outcome.h"

namespace quorvane::facade {

/// The start of a line about an error.
inline constexpr std::string_view kErrorIntroduction = "Decoder reported the following error: ";

/// In place of the text of a code that has none, followed by the code in decimal.
inline constexpr std::string_view kUnknownError = "UNKNOWN ERROR #";

/// The text of `code`, or a view without data if it has none.
std::string_view ErrorText(bits::Code code);

}  // namespace quorvane::facade
