#pragma once

// From the narrow text, whose octets are characters of the same value, to UTF-8.
//
// Tests: tests/unit/facade_text_test.cpp.

#include <string>
#include <string_view>

namespace quorvane::facade {

/// Replaces `result` by `text` in UTF-8.
void AssignAsUtf8(std::string& result, std::string_view text);

}  // namespace quorvane::facade
