#include "facade/field_path.h"

#include <charconv>

namespace quorvane::facade {

std::optional<PathStep> CutStep(std::string_view& path, bool first) {
    if (path.starts_with('[')) {
        std::size_t index = 0;
        const char* end = path.data() + path.size();
        const auto [stop, error] = std::from_chars(path.data() + 1, end, index);
        if (error != std::errc() || stop == end || *stop != ']') {
            return std::nullopt;
        }
        path.remove_prefix(static_cast<std::size_t>(stop + 1 - path.data()));
        return PathStep{{}, index};
    }
    if (!first) {
        if (!path.starts_with('.')) {
            return std::nullopt;
        }
        path.remove_prefix(1);
    }
    const PathStep step{path.substr(0, path.find_first_of(".[")), std::nullopt};
    path.remove_prefix(step.name.size());
    return step;
}

}  // namespace quorvane::facade
