#pragma once

// Lines "FUNCTION LENGTH HEX", in which LENGTH may be left out. docs/logs.md says when.
//
// Tests: tests/tool/message_line_test.cpp.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/function_name.h"

namespace quorvane::tool {

struct MessageLine {
    std::string_view hex;  // a view of the line
    Function function;
    std::int32_t length = 0;
    /// Where the line could be meant with its first digits as LENGTH: what is behind them. The
    /// octets count if they are a message for the function, and those behind the digits are none.
    std::optional<std::string_view> hexBehindDoubt;
};

/// Takes a line apart. Returns what is wrong, or nothing.
std::string ParseMessageLine(std::string_view line, MessageLine& message,
                             std::vector<std::uint8_t>& octets);

/// What to say of a line whose first digits may be LENGTH or octets.
std::string DoubtfulLength(std::string_view digits);

}  // namespace quorvane::tool
