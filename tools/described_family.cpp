#include "tools/described_family.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "tools/commands.h"

namespace quorvane::tool {

const families::Family& DescribedFamily(const std::string& name) {
    for (const families::Family* family : families::AllFamilies()) {
        if (family->name == name) {
            return *family;
        }
    }
    constexpr std::array<std::string_view, 5> kNames = {"eps", "epc", "l3", "rr", "rlcmac"};
    if (std::find(kNames.begin(), kNames.end(), name) != kNames.end()) {
        throw UsageError("the family " + name + " is not described yet");
    }
    throw UsageError("unknown family '" + name + "'; the families are eps, epc, l3, rr and rlcmac");
}

}  // namespace quorvane::tool
