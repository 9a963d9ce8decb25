#include "facade/utf8.h"

#include <algorithm>

namespace quorvane::facade {

void AssignAsUtf8(std::string& result, std::string_view text) {
    result.clear();
    AppendAsUtf8(result, text);
}

void AppendAsUtf8(std::string& result, std::string_view text) {
    result.reserve(result.size() + text.size() + 16);
    const auto isAscii = [](char character) {
        return static_cast<unsigned char>(character) < 0x80;
    };
    while (!text.empty()) {
        // Nearly all of a text is ASCII.
        const auto end = std::find_if_not(text.begin(), text.end(), isAscii);
        const auto plain = static_cast<std::size_t>(end - text.begin());
        result.append(text.substr(0, plain));
        text.remove_prefix(plain);
        if (!text.empty()) {
            const std::array<char, 2> octets = Utf8Of(static_cast<unsigned char>(text.front()));
            result.append(octets.data(), octets.size());
            text.remove_prefix(1);
        }
    }
}

}  // namespace quorvane::facade
