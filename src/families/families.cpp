#include <algorithm>

#include "families/family.h"

namespace quorvane::families {

std::span<const Family* const> AllFamilies() {
#define QUORVANE_FAMILY(variable, ...) &(variable),
#define QUORVANE_LEFT_OUT_FAMILY(...)
    static constexpr const Family* kFamilies[] = {
#include "families/family_list.def"
    };
#undef QUORVANE_FAMILY
#undef QUORVANE_LEFT_OUT_FAMILY
    return kFamilies;
}

std::span<const FamilyInfo> KnownFamilies() {
#define QUORVANE_FAMILY(variable, name, title, ...) {name, title, &(variable)},
#define QUORVANE_LEFT_OUT_FAMILY(name, title, ...) {name, title, nullptr},
    static constexpr FamilyInfo kFamilies[] = {
#include "families/family_list.def"
    };
#undef QUORVANE_FAMILY
#undef QUORVANE_LEFT_OUT_FAMILY
    return kFamilies;
}

const iecodec::MessageSetRow* FindSet(const Family& family, std::string_view name) {
    const auto sets = family.codec.sets;
    const auto found =
        std::find_if(sets.begin(), sets.end(), [&](const auto& set) { return set.name == name; });
    return found == sets.end() ? nullptr : &*found;
}

}  // namespace quorvane::families
