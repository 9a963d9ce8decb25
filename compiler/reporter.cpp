#include "compiler/reporter.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace quorvane::compiler {
namespace {

/// Where the lines of a text start.
std::vector<std::uint32_t> LineStarts(std::string_view text) {
    std::vector<std::uint32_t> starts = {0};
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] == '\n') {
            starts.push_back(static_cast<std::uint32_t>(at + 1));
        }
    }
    return starts;
}

}  // namespace

std::uint32_t Reporter::AddFile(std::string name, std::string text) {
    files_.push_back({std::move(name), std::move(text)});
    return static_cast<std::uint32_t>(files_.size() - 1);
}

void Reporter::Error(Span place, std::string message) {
    errors_.push_back({place, std::move(message)});
}

std::vector<Span> Reporter::ErrorPlaces(std::size_t from) const {
    std::vector<Span> places;
    for (; from < errors_.size(); ++from) {
        places.push_back(errors_[from].place);
    }
    return places;
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
    std::vector<std::uint32_t> starts;
    const Entry* before = nullptr;
    for (const Entry* entry : ordered) {
        const auto& [name, text] = files_[entry->place.file];
        if (before == nullptr || before->place.file != entry->place.file) {
            starts = LineStarts(text);
        }
        before = entry;
        const auto line = std::upper_bound(starts.begin(), starts.end(), entry->place.begin);
        result += name + ":" + std::to_string(line - starts.begin()) + ":" +
                  std::to_string(entry->place.begin - *(line - 1) + 1) +
                  ": error: " + entry->message + "\n";
    }
    return result;
}

}  // namespace quorvane::compiler
