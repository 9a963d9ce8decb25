#include "facade/utf8.h"

namespace quorvane::facade {

void AssignAsUtf8(std::string& result, std::string_view text) {
    result.clear();
    AppendAsUtf8(result, text);
}

void AppendAsUtf8(std::string& result, std::string_view text) {
    result.reserve(result.size() + text.size() + 16);
    for (const char character : text) {
        const auto value = static_cast<unsigned char>(character);
        if (value < 0x80) {
            result += character;
        } else {
            const std::array<char, 2> octets = Utf8Of(value);
            result.append(octets.data(), octets.size());
        }
    }
}

}  // namespace quorvane::facade
