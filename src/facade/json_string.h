#pragma once

// Words as strings of JSON.
//
// Tests: tests/unit/facade_json_string_test.cpp.

#include <cstddef>
#include <string_view>

namespace quorvane::facade {

/// Writes a character of ASCII, or an octet of another one in UTF-8, as it stands in a string of
/// JSON, and returns where it ends.
char* PutJsonCharacter(char* at, char character);

/// How many octets PutJsonString writes at most for `size` characters.
constexpr std::size_t JsonStringRoom(std::size_t size) {
    constexpr std::size_t kLongestCharacter = 6;  // \u001F
    return kLongestCharacter * size + 2;
}

/// Writes `words`, whose octets are characters of the same value, with the quotes around, and
/// returns where they end.
char* PutJsonString(char* at, std::string_view words);

}  // namespace quorvane::facade
