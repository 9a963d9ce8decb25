#pragma once

#include <string>

#include "quorvane/message.h"

namespace quorvane::tool {

/// What is different in two messages, a line each, in UTF-8:
///
///     PDNType: IPv4v6 (3) -> IPv4 (1)
///     - AccessPointName: 03 61 62 63             in `before` alone
///     + ProtocolConfigurationOptions.spare: 0    in `after` alone
///
/// Fields are compared by their names and indices, and by what they hold; where they stood does not
/// count. Members of messages of different types are compared where they have the same name.
std::string DifferencesOf(const Message& before, const Message& after);

}  // namespace quorvane::tool
