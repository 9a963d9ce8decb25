#include "tools/tally.h"

#include <algorithm>
#include <vector>

namespace quorvane::tool {

void Tally::AddType(std::string_view function, std::string_view type) {
    std::string name(function);
    name.append(" ").append(type);
    ++types_[std::move(name)];
}

void Tally::Add(const Tally& other) {
    messages_ += other.messages_;
    unknown_ += other.unknown_;
    faulty_ += other.faulty_;
    badLines_ += other.badLines_;
    for (const auto& [name, count] : other.types_) {
        types_[name] += count;
    }
}

std::string Tally::Summary() const {
    std::string text = "messages " + std::to_string(messages_) + ", unknown " +
                       std::to_string(unknown_) + ", with faults " + std::to_string(faulty_) +
                       ", bad lines " + std::to_string(badLines_) + "\n";
    std::vector<std::pair<std::string_view, std::int64_t>> types(types_.begin(), types_.end());
    std::stable_sort(types.begin(), types.end(), [](const auto& left, const auto& right) {
        return left.second > right.second;
    });
    constexpr std::size_t kColumn = 9;
    for (const auto& [name, count] : types) {
        const std::string number = std::to_string(count);
        text.append(kColumn - std::min(number.size(), kColumn), ' ').append(number);
        text.append(" ").append(name).append("\n");
    }
    return text;
}

}  // namespace quorvane::tool
