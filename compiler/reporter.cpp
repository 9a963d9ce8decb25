#include "compiler/reporter.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace quorvane::compiler {
namespace {

std::string LineAndColumn(const std::string& text, std::uint32_t offset) {
    const std::string_view before(text.data(), std::min<std::size_t>(offset, text.size()));
    const auto line = 1 + std::count(before.begin(), before.end(), '\n');
    const std::size_t lineStart = before.rfind('\n') + 1;  // npos + 1 is 0
    return std::to_string(line) + ":" + std::to_string(before.size() - lineStart + 1);
}

}  // namespace

std::uint32_t Reporter::AddFile(std::string name, std::string text) {
    files_.push_back({std::move(name), std::move(text)});
    return FileCount() - 1;
}

void Reporter::Error(Span place, std::string message) {
    errors_.push_back({place, std::move(message)});
}

std::string Reporter::Text() const {
    std::vector<const Entry*> ordered;
    for (const Entry& entry : errors_) {
        ordered.push_back(&entry);
    }
    const auto key = [](const Entry* entry) {
        return std::tie(entry->place.file, entry->place.begin, entry->message);
    };
    std::stable_sort(ordered.begin(), ordered.end(),
                     [&](const Entry* a, const Entry* b) { return key(a) < key(b); });
    ordered.erase(std::unique(ordered.begin(), ordered.end(),
                              [&](const Entry* a, const Entry* b) { return key(a) == key(b); }),
                  ordered.end());
    std::string result;
    for (const Entry* entry : ordered) {
        const SourceFile& file = files_[entry->place.file];
        result += file.name + ":" + LineAndColumn(file.text, entry->place.begin) +
                  ": error: " + entry->message + "\n";
    }
    return result;
}

}  // namespace quorvane::compiler
