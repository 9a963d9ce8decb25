#pragma once

// Version of these headers. The major number changes when a program has to be built again, the
// minor one when something is added.

#include "quorvane/export.h"

#define QUORVANE_VERSION_MAJOR 1
#define QUORVANE_VERSION_MINOR 0
#define QUORVANE_VERSION_PATCH 0

namespace quorvane {

/// The version of the library that is linked, e.g. "1.0.0". Never null; lives as long as the
/// process.
QUORVANE_API const char* Version() noexcept;

}  // namespace quorvane
