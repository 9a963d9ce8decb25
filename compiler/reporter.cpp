#include "compiler/reporter.h"

#include <algorithm>
#include <set>
#include <tuple>
#include <utility>

namespace quorvane::compiler {

std::uint32_t Reporter::AddFile(std::string name, std::string text) {
    files_.push_back({std::move(name), std::move(text)});
    return static_cast<std::uint32_t>(files_.size() - 1);
}

void Reporter::Error(Span span, std::string message) {
    errors_.push_back({span, std::move(message)});
}

std::vector<Span> Reporter::ErrorSpans(std::size_t from) const {
    std::vector<Span> spans;
    for (; from < errors_.size(); ++from) {
        spans.push_back(errors_[from].span);
    }
    return spans;
}

std::string Reporter::Text() const {
    std::set<std::tuple<std::uint32_t, std::uint32_t, std::string_view>> ordered;
    for (const Entry& entry : errors_) {
        ordered.emplace(entry.span.file, entry.span.begin, entry.message);
    }
    std::string result;
    std::size_t searched = 0;  // the file's line ends ahead of this are counted
    std::size_t line = 1;
    std::size_t lineStart = 0;
    std::uint32_t lastFile = 0;
    for (const auto& [file, begin, message] : ordered) {
        const auto& [name, text] = files_[file];
        if (file != lastFile) {
            lastFile = file;
            searched = lineStart = 0;
            line = 1;
        }
        for (; searched < std::min<std::size_t>(begin, text.size()); ++searched) {
            if (text[searched] == '\n') {
                ++line;
                lineStart = searched + 1;
            }
        }
        result += name + ":" + std::to_string(line) + ":" + std::to_string(begin - lineStart + 1) +
                  ": error: ";
        result.append(message).append("\n");
    }
    return result;
}

}  // namespace quorvane::compiler
