#include "facade/utf8.h"

namespace quorvane::facade {

void AssignAsUtf8(std::string& result, std::string_view text) {
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
