#include "facade/utf8.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace quorvane::facade {
namespace {

bool IsAscii(std::string_view text) {
    constexpr std::uint64_t kTopBits = 0x8080808080808080U;
    constexpr std::size_t kStep = 4 * sizeof(std::uint64_t);
    const char* next = text.data();
    std::size_t left = text.size();
    for (; left >= kStep; next += kStep, left -= kStep) {
        std::uint64_t words[4];
        std::memcpy(words, next, kStep);
        if (((words[0] | words[1] | words[2] | words[3]) & kTopBits) != 0) {
            return false;
        }
    }
    return std::none_of(next, next + left,
                        [](char octet) { return static_cast<unsigned char>(octet) >= 0x80; });
}

}  // namespace

void AssignAsUtf8(std::string& result, std::string_view text) {
    if (IsAscii(text)) {
        result.assign(text);
        return;
    }
    result.clear();
    result.reserve(text.size() + 16);
    for (const char character : text) {
        const auto value = static_cast<unsigned char>(character);
        if (value < 0x80) {
            result += character;
        } else {
            result += static_cast<char>(0xC0U | value >> 6U);
            result += static_cast<char>(0x80U | (value & 0x3FU));
        }
    }
}

}  // namespace quorvane::facade
