#pragma once

#include <string>
#include <string_view>

namespace quorvane::tool {

/// `text` with U+FFFD in place of each octet that is no part of a character in UTF-8.
std::string WithoutInvalidUtf8(std::string_view text);

}  // namespace quorvane::tool
