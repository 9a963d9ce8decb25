#pragma once

// How one measure is run and reported, and all of them.

#include <benchmark/benchmark.h>
#include <cstdint>

#include "user_cycles.h"

namespace quorvane::benchmarks {

// Not at the start of the program, so that a first use can be measured.
void RegisterDecode();
void RegisterHandWritten();
void RegisterBatch();

inline void RegisterAll() {
    RegisterDecode();
    RegisterHandWritten();
    RegisterBatch();
}

/// Runs `pass`, which handles `messages` messages, as often as the benchmark wants. The counter
/// "per_message" is seconds; "cycles" is there only where cycles can be counted.
template <typename Pass>
void Measure(benchmark::State& state, std::size_t messages, Pass&& pass) {
    const UserCycles cycles;
    for ([[maybe_unused]] auto iteration : state) {
        pass();
    }
    const auto perPass = static_cast<double>(messages);
    if (const auto count = cycles.Count(); count.has_value()) {
        state.counters["cycles"] = benchmark::Counter(static_cast<double>(*count) / perPass,
                                                      benchmark::Counter::kAvgIterations);
    }
    state.counters["per_message"] = benchmark::Counter(
        perPass, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

}  // namespace quorvane::benchmarks
