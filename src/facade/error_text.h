#pragma once

// Words for the codes that decoders return.
//
// Tests: tests/unit/facade_result_test.cpp.

#include <cstdint>
#include <string_view>

namespace quorvane::facade {

/// The start of a line about an error.
inline constexpr std::string_view kErrorIntroduction = "Decoder reported the following error: ";

/// In place of the text of a code that has none, followed by the code in decimal.
inline constexpr std::string_view kUnknownError = "UNKNOWN ERROR #";

/// The text of `code`, or a view without data if it has none.
std::string_view ErrorText(std::int64_t code);

}  // namespace quorvane::facade
