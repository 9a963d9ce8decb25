// Processor time per message of the tool's batch command, with all that a process does.

#include <benchmark/benchmark.h>
#include <cstdlib>
#include <string>
#include <sys/resource.h>

#include "measure.h"
#include "message_set.h"

namespace quorvane::benchmarks {
namespace {

/// What the processes that have ended took, in seconds.
double ProcessorSecondsOfChildren() {
    rusage usage{};
    getrusage(RUSAGE_CHILDREN, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

void Batch(benchmark::State& state, const MessageSet& set) {
    constexpr std::size_t kLines = 100000;
    const LinesFile file(set, kLines);
    const std::string command =
        std::string(QUORVANE_TOOL_PATH) + " batch " + file.Path() + " >/dev/null";
    Measure(state, kLines, [&] {
        const double before = ProcessorSecondsOfChildren();
        if (std::system(command.c_str()) != 0) {
            state.SkipWithError("the tool failed");
        }
        state.SetIterationTime(ProcessorSecondsOfChildren() - before);
    });
}

}  // namespace

void RegisterBatch() {
    for (const MessageSet& set : MessageSets()) {
        benchmark::RegisterBenchmark((set.name + "/batch").c_str(),
                                     [&set](benchmark::State& state) { Batch(state, set); })
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond);
    }
}

}  // namespace quorvane::benchmarks
