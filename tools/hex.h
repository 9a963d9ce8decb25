#pragma once

// Octets as people write them.

#include <cstdint>
#include <optional>
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

/// The value of a digit; nothing for other characters.
std::optional<std::uint8_t> DigitOf(char character);

/// What is wrong with digits, for messages: behind a character, and of one digit alone.
inline constexpr const char* kNoDigit = " is not a hexadecimal digit";
inline constexpr const char* kHalfOctet = "an octet needs two hexadecimal digits, this one has one";

/// A character as messages show it.
std::string QuotedCharacter(char character);

/// Two digits for each octet, with `separator` between octets.
std::string ToHex(std::span<const std::uint8_t> octets, std::string_view separator);

}  // namespace quorvane::tool
