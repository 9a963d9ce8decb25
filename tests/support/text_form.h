#pragma once

// The form that every result text has, whatever the message.

#include <string>
#include <string_view>

namespace quorvane::test {

/// What is wrong with a result, or nothing. `name` is the decoding's name in texts.
std::string TextFormProblem(std::string_view name, bool found, std::string_view text);

}  // namespace quorvane::test
