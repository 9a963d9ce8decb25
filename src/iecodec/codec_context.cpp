#include "iecodec/codec_context.h"

#include <charconv>

namespace quorvane::iecodec {

void Diagnostics::Report(std::uint32_t number, std::string_view text, std::string_view name,
                         FaultPlace place) {
    char digits[10];
    const char* end = std::to_chars(digits, digits + sizeof digits, number).ptr;
    lines_.append("<ERRID:").append(digits, static_cast<std::size_t>(end - digits)).append("> ");
    const std::size_t wordsBegin = lines_.size();
    lines_.append(text);
    if (!name.empty()) {
        lines_.append(" ").append(name);
    }
    faults_.push_back({number, wordsBegin, lines_.size() - wordsBegin, place});
    lines_.append("\n");
}

void Diagnostics::Clear() {
    if (lines_.capacity() > kMostKept) {
        *this = Diagnostics();
    }
    lines_.clear();
    faults_.clear();
}

}  // namespace quorvane::iecodec
