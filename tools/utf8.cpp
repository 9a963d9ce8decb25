#include "tools/utf8.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace quorvane::tool {
namespace {

/// How many octets the character takes that `text` starts with; 0 if it starts with none. Forms
/// longer than need be, surrogates and numbers above U+10FFFF are no characters.
std::size_t CharacterSize(std::string_view text) {
    const auto first = static_cast<unsigned char>(text.front());
    if (first < 0x80) {
        return 1;
    }
    const std::size_t size = first < 0xC0 ? 0 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    if (size == 0 || first >= 0xF8 || text.size() < size) {
        return 0;
    }
    std::uint32_t value = first & (0x7FU >> size);
    for (const char character : text.substr(1, size - 1)) {
        const auto octet = static_cast<unsigned char>(character);
        if ((octet & 0xC0U) != 0x80) {
            return 0;
        }
        value = value << 6 | (octet & 0x3FU);
    }
    constexpr std::uint32_t kFirstOfSize[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool surrogate = value >= 0xD800 && value < 0xE000;
    return value < kFirstOfSize[size] || value > 0x10FFFF || surrogate ? 0 : size;
}

}  // namespace

std::string WithoutInvalidUtf8(std::string_view text) {
    std::string valid;
    while (!text.empty()) {
        const std::size_t size = CharacterSize(text);
        valid += size == 0 ? "\xEF\xBF\xBD" : text.substr(0, size);
        text.remove_prefix(std::max(size, std::size_t{1}));
    }
    return valid;
}

}  // namespace quorvane::tool
