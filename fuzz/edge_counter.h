#pragma once

// How many edges of the library's code have run: its work, in a unit that the machine does not
// matter to. Counted in builds for fuzzing alone.

#include <cstdint>

namespace quorvane::fuzz {

/// Edges that have run since the program began, on one thread.
extern std::uint64_t edgesRun;

}  // namespace quorvane::fuzz
