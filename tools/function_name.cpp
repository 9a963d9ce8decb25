#include "tools/function_name.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "tools/edit_distance.h"

namespace quorvane::tool {
namespace {

constexpr std::array kAuto = {Function{"auto", std::nullopt, facade::Direction::kBoth},
                              Function{"auto-downlink", std::nullopt, facade::Direction::kDownlink},
                              Function{"auto-uplink", std::nullopt, facade::Direction::kUplink}};

/// Calls `visitor` with each function until it returns true.
template <typename Visitor>
void VisitFunctions(Visitor&& visitor) {
    for (const DecodingInfo& info : Decodings()) {
        if (visitor(Function{info.name, info.decoding})) {
            return;
        }
    }
    std::any_of(kAuto.begin(), kAuto.end(), visitor);
}

}  // namespace

std::optional<Function> FindFunction(std::string_view name) {
    if (const auto decoding = FindDecoding(name)) {
        return Function{InfoOf(*decoding).name, decoding};
    }
    std::optional<Function> found;
    VisitFunctions([&](const Function& function) {
        if (EqualsInAnyCase(function.name, name)) {
            found = function;
        }
        return found.has_value();
    });
    return found;
}

std::string NearestFunctions(std::string_view name) {
    constexpr std::size_t kLongest = 64;
    if (name.size() > kLongest) {
        return {};
    }
    std::size_t least = std::max<std::size_t>(name.size() / 3, 1);
    std::string nearest;
    VisitFunctions([&](const Function& function) {
        const std::size_t distance = EditDistance(name, function.name);
        if (distance < least) {
            nearest.clear();
        }
        if (distance <= least) {
            least = distance;
            nearest.append(nearest.empty() ? "" : " or ").append(function.name);
        }
        return false;
    });
    return nearest;
}

std::string UnknownFunction(std::string_view name) {
    const std::string nearest = NearestFunctions(name);
    std::string words = "unknown function '" + std::string(name) + "'";
    return nearest.empty() ? words : words + "; the nearest is " + nearest;
}

}  // namespace quorvane::tool
