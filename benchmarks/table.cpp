// Prints the table of docs/performance.md: times from the benchmarks, and what else calls take.
// One run, so that the ratios hold on a noisy machine.

#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "families/family.h"
#include "resources.h"

namespace quorvane::benchmarks {
namespace {

/// Keeps the time per message of each benchmark by its name, and the messages a second of "batch".
class Collector : public benchmark::BenchmarkReporter {
  public:
    bool ReportContext(const Context& /*context*/) override { return true; }

    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            const auto perMessage = run.counters.find("per_message");
            if (perMessage != run.counters.end()) {
                nanoseconds_[run.benchmark_name()] = perMessage->second.value * 1e9;
            }
            const auto items = run.counters.find("items_per_second");
            if (items != run.counters.end()) {
                perSecond_[run.benchmark_name()] = items->second.value;
            }
        }
    }

    [[nodiscard]] double Nanoseconds(const std::string& name) const {
        const auto found = nanoseconds_.find(name);
        return found == nanoseconds_.end() ? 0 : found->second;
    }
    [[nodiscard]] double BatchPerSecond() const {
        const auto found = perSecond_.find("batch/real_time");
        return found == perSecond_.end() ? 0 : found->second;
    }

  private:
    std::map<std::string, double> nanoseconds_;
    std::map<std::string, double> perSecond_;
};

using Cell = std::function<double(const MessageSet&)>;

void PrintRow(const char* title, const char* format, const Cell& cell) {
    std::printf("| %s |", title);
    for (const MessageSet& set : MessageSets()) {
        std::printf(" ");
        std::printf(format, cell(set));
        std::printf(" |");
    }
    std::printf("\n");
}

void PrintTable(const Collector& collector, const std::string& program) {
    std::printf("| per message |");
    for (const MessageSet& set : MessageSets()) {
        std::printf(" %s |", set.name.c_str());
    }
    std::printf("\n|---|");
    for (std::size_t column = 0; column < MessageSets().size(); ++column) {
        std::printf("---:|");
    }
    std::printf("\n");
    const auto time = [&](const char* measure) -> Cell {
        return [&collector, measure](const MessageSet& set) {
            return collector.Nanoseconds(set.name + "/" + measure);
        };
    };
    const auto ratio = [&](const char* measure, const char* of) -> Cell {
        return [&collector, measure, of](const MessageSet& set) {
            return collector.Nanoseconds(set.name + "/" + measure) /
                   collector.Nanoseconds(set.name + "/" + of);
        };
    };
    PrintRow("messages", "%.0f",
             [](const MessageSet& set) { return static_cast<double>(set.messages.size()); });
    PrintRow("octets of text", "%.0f", [](const MessageSet& set) {
        return static_cast<double>(set.textOctets) / static_cast<double>(set.messages.size());
    });
    PrintRow("dispatch and decode, ns", "%.0f", time("decode"));
    PrintRow("record to text, ns", "%.0f", time("text"));
    PrintRow("safe call, ns", "%.0f", time("whole_safe_call"));
    PrintRow("plain call, ns", "%.0f", time("whole_plain_call"));
    PrintRow("floor, ns", "%.0f", time("floor"));
    PrintRow("safe call / floor", "%.2f", ratio("whole_safe_call", "floor"));
    PrintRow("decode / safe call", "%.2f", ratio("decode", "whole_safe_call"));
    PrintRow("heap allocations", "%.2f", AllocationsPerCall);
    PrintRow("stack at most, octets", "%.0f",
             [](const MessageSet& set) { return static_cast<double>(StackOctets(set)); });
    PrintRow("instructions", "%.0f",
             [&](const MessageSet& set) { return InstructionsPerCall(set, program); });
    PrintRow("2 threads / 1 thread", "%.2f", [](const MessageSet& set) {
        return MillionsPerSecond(set, 2) / MillionsPerSecond(set, 1);
    });
}

}  // namespace
}  // namespace quorvane::benchmarks

int main(int argc, char** argv) {
    using namespace quorvane::benchmarks;
    if (argc == 4 && std::string_view(argv[1]) == "--passes") {
        return DecodePasses(argv[2], std::atoi(argv[3])) ? 0 : 2;
    }
    const auto families = quorvane::families::AllFamilies();
    std::vector<double> catalogueTimes;
    for (const auto* family : families) {
        catalogueTimes.push_back(CatalogueMicroseconds(*family));
    }
    benchmark::Initialize(&argc, argv);
    Collector collector;
    benchmark::RunSpecifiedBenchmarks(&collector);
    PrintTable(collector, argv[0]);
    std::printf("\n");
    for (std::size_t index = 0; index < catalogueTimes.size(); ++index) {
        std::printf("Catalogue of %s: %.0f us.\n", std::string(families[index]->name).c_str(),
                    catalogueTimes[index]);
    }
    std::printf("`quorvane batch`: %.0f messages a second.\n", collector.BatchPerSecond());
    return 0;
}
