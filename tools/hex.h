#pragma once

// Octets as people write them.

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quorvane::tool {

inline constexpr std::string_view kHexDigits = "0123456789ABCDEF";

/// Replaces `octets` by those that `text` holds: groups of two digits each octet, apart by any
/// number of blanks, tabs and colons, each group perhaps with 0x in front. Returns what is wrong
/// and at which character (from 1), or nothing.
std::string ParseHex(std::string_view text, std::vector<std::uint8_t>& octets);

/// Two digits for each octet, with `separator` between octets.
std::string ToHex(std::span<const std::uint8_t> octets, std::string_view separator);

}  // namespace quorvane::tool
