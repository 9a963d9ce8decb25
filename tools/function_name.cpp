#include "tools/function_name.h"

#include <algorithm>
#include <cstddef>

#include "tools/edit_distance.h"

namespace quorvane::tool {
std::optional<Decoding> FindFunction(std::string_view name) {
    if (const auto decoding = FindDecoding(name)) {
        return decoding;
    }
    for (const DecodingInfo& info : Decodings()) {
        if (std::ranges::equal(info.name, name, SameLetter)) {
            return info.decoding;
        }
    }
    return std::nullopt;
}

std::string NearestFunctions(std::string_view name) {
    constexpr std::size_t kLongest = 64;
    if (name.size() > kLongest) {
        return {};
    }
    std::size_t least = std::max<std::size_t>(name.size() / 3, 1);
    std::string nearest;
    for (const DecodingInfo& info : Decodings()) {
        const std::size_t distance = EditDistance(name, info.name);
        if (distance < least) {
            nearest.clear();
        }
        if (distance <= least) {
            least = distance;
            nearest.append(nearest.empty() ? "" : " or ").append(info.name);
        }
    }
    return nearest;
}

std::string UnknownFunction(std::string_view name) {
    const std::string nearest = NearestFunctions(name);
    std::string words = "unknown function '" + std::string(name) + "'";
    return nearest.empty() ? words : words + "; the nearest is " + nearest;
}

}  // namespace quorvane::tool
