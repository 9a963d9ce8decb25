#include "tools/function_name.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

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

std::vector<std::string_view> FunctionNames() {
    std::vector<std::string_view> names;
    VisitFunctions([&](const Function& function) {
        names.push_back(function.name);
        return false;
    });
    return names;
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
    return NearestNames(name, FunctionNames());
}

std::string UnknownFunction(std::string_view name) {
    return "unknown function '" + std::string(name) + "'" + NearestWords(name, FunctionNames());
}

}  // namespace quorvane::tool
