#pragma once

// Paths of fields: "EPSMobileIdentity.GUTI.M_TMSI", "ProtocolCfgs[1].Contents".

#include <cstddef>
#include <optional>
#include <string_view>

namespace quorvane::facade {

/// A step of a path: the name of a member, or the index of an item.
struct PathStep {
    std::string_view name;
    std::optional<std::size_t> index;
};

/// Cuts the first step off `path`. Nothing if there is none that is well formed.
std::optional<PathStep> CutStep(std::string_view& path, bool first);

}  // namespace quorvane::facade
