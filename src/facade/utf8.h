#pragma once

// From the narrow text, whose octets are characters of the same value, to UTF-8.
//
// Tests: tests/unit/facade_text_test.cpp.

#include <array>
#include <string>
#include <string_view>

namespace quorvane::facade {

/// The octets of a character from 0x80 on.
constexpr std::array<char, 2> Utf8Of(unsigned char character) {
    return {static_cast<char>(0xC0U | character >> 6U),
            static_cast<char>(0x80U | (character & 0x3FU))};
}

/// Replaces `result` by `text` in UTF-8.
void AssignAsUtf8(std::string& result, std::string_view text);

/// Appends `text` to `result` in UTF-8.
void AppendAsUtf8(std::string& result, std::string_view text);

}  // namespace quorvane::facade
