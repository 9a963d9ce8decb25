#pragma once

// Words as strings of JSON.
//
// Tests: tests/unit/facade_json_string_test.cpp.

#include <cstddef>
#include <string_view>

namespace quorvane::facade {

/// How many octets PutJsonString writes at most for `size` characters.
constexpr std::size_t JsonStringRoom(std::size_t size) {
    constexpr std::size_t kLongestCharacter = 6;  // \u001F
    return kLongestCharacter * size + 2;
}

/// Writes `words`, whose octets are characters of the same value, with the quotes around, and
/// returns where they end.
char* PutJsonString(char* at, std::string_view words);

}  // namespace quorvane::facade
