#include "tools/described_family.h"

#include "tools/commands.h"

namespace quorvane::tool {

const families::Family& DescribedFamily(const std::string& name) {
    for (const families::FamilyInfo& family : families::KnownFamilies()) {
        if (family.name != name) {
            continue;
        }
        // unreachable from here: with all families
        if (family.tables == nullptr) {
            throw UsageError("the family " + name + ", " + std::string(family.title) +
                             ", is not described in this build");
        }
        // to here
        return *family.tables;
    }
    throw UsageError("unknown family '" + name + "'; the families are " + FamilyNames("and"));
}

std::string FamilyNames(const std::string& conjunction) {
    const auto families = families::KnownFamilies();
    std::string names;
    for (const families::FamilyInfo& family : families) {
        if (&family != &families.front()) {
            names += &family == &families.back() ? " " + conjunction + " " : ", ";
        }
        names += family.name;
    }
    return names;
}

}  // namespace quorvane::tool
