#include "iecodec/codec_context.h"

#include <charconv>

namespace quorvane::iecodec {

void Diagnostics::Report(std::uint32_t number, std::string_view text, std::string_view name) {
    char digits[10];
    const char* end = std::to_chars(digits, digits + sizeof digits, number).ptr;
    lines_.append("<ERRID:")
        .append(digits, static_cast<std::size_t>(end - digits))
        .append("> ")
        .append(text);
    if (!name.empty()) {
        lines_.append(" ").append(name);
    }
    lines_.append("\n");
}

}  // namespace quorvane::iecodec
