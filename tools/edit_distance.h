#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

namespace quorvane::tool {

/// Whether two texts are the same but for the case of their letters.
bool EqualsInAnyCase(std::string_view left, std::string_view right);

/// How many letters have to be put in, taken out, replaced or exchanged with the next one to make
/// one text the other, their case aside. Takes time of the product of their lengths.
std::size_t EditDistance(std::string_view from, std::string_view to);

/// "EPS_MMUplink or EPS_MMDownlink": those of `names` that differ least from `name`, in their
/// order, if it may be a slip of them; else empty.
template <typename Names>
std::string NearestNames(std::string_view name, const Names& names) {
    constexpr std::size_t kLongest = 64;
    std::string nearest;
    if (name.size() > kLongest) {
        return nearest;
    }
    std::size_t least = std::max<std::size_t>(name.size() / 3, 1);
    for (const std::string_view other : names) {
        const std::size_t distance = EditDistance(name, other);
        if (distance < least) {
            nearest.clear();
        }
        if (distance <= least) {
            least = distance;
            nearest.append(nearest.empty() ? "" : " or ").append(other);
        }
    }
    return nearest;
}

/// What to say behind a problem with `name`: "; the nearest is EPS_MMUplink", or nothing.
template <typename Names>
std::string NearestWords(std::string_view name, const Names& names) {
    const std::string nearest = NearestNames(name, names);
    return nearest.empty() ? nearest : "; the nearest is " + nearest;
}

}  // namespace quorvane::tool
