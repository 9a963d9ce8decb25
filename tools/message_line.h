#pragma once

// Lines "FUNCTION LENGTH HEX".

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "quorvane/decode.h"

namespace quorvane::tool {

struct MessageLine {
    std::string_view function;  // views of the line
    std::string_view hex;
    Decoding decoding{};
    std::int32_t length = 0;
};

/// Takes a line apart. Returns what is wrong, or nothing.
std::string ParseMessageLine(std::string_view line, MessageLine& message,
                             std::vector<std::uint8_t>& octets);

}  // namespace quorvane::tool
