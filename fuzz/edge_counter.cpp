#include "edge_counter.h"

namespace quorvane::fuzz {

std::uint64_t edgesRun = 0;

}  // namespace quorvane::fuzz

/// What instrumented code calls on each edge, in place of libFuzzer's function of that name, which
/// would take each for a feature.
extern "C" __attribute__((no_sanitize("coverage"))) void __wrap___sanitizer_cov_trace_pc() {
    ++quorvane::fuzz::edgesRun;
}
