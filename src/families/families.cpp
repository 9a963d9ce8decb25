#include <algorithm>
#include <array>

#include "families/family.h"

namespace quorvane::families {

std::span<const Family* const> AllFamilies() {
    static constexpr std::array<const Family*, 3> kFamilies{&kEpsFamily, &kEpcFamily, &kL3Family};
    return kFamilies;
}

const iecodec::MessageSetRow* FindSet(const Family& family, std::string_view name) {
    const auto sets = family.codec.sets;
    const auto found =
        std::find_if(sets.begin(), sets.end(), [&](const auto& set) { return set.name == name; });
    return found == sets.end() ? nullptr : &*found;
}

}  // namespace quorvane::families
