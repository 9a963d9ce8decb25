// Prints the table of docs/performance.md: times from the benchmarks, and what else calls take.
// One run, so that the ratios hold on a noisy machine.

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "hand_written.h"
#include "measure.h"
#include "resources.h"

namespace quorvane::benchmarks {
namespace {

constexpr char kSeconds[] = "per_message";
constexpr char kCycles[] = "cycles";

/// Keeps the counters of each benchmark by its name, of all runs.
class Collector : public benchmark::BenchmarkReporter {
  public:
    bool ReportContext(const Context& /*context*/) override { return true; }

    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.run_type != Run::RT_Iteration) {
                continue;
            }
            for (const auto& [counter, value] : run.counters) {
                runs_[run.run_name.function_name][counter].push_back(value.value);
            }
        }
    }

    /// The median of the runs; 0 if there is no such counter.
    [[nodiscard]] double Median(const std::string& name, const char* counter) const {
        const auto benchmark = runs_.find(name);
        if (benchmark == runs_.end() || !benchmark->second.contains(counter)) {
            return 0;
        }
        std::vector<double> values = benchmark->second.at(counter);
        const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
        std::nth_element(values.begin(), middle, values.end());
        return *middle;
    }

  private:
    std::map<std::string, std::map<std::string, std::vector<double>>> runs_;
};

using Cell = std::function<double(const MessageSet&)>;

void PrintHead(const char* title, const std::vector<std::string>& columns) {
    std::printf("| %s |", title);
    for (const std::string& column : columns) {
        std::printf(" %s |", column.c_str());
    }
    std::printf("\n|---|");
    for (std::size_t column = 0; column < columns.size(); ++column) {
        std::printf("---:|");
    }
    std::printf("\n");
}

void PrintRow(const char* title, const char* format, const Cell& cell) {
    std::printf("| %s |", title);
    for (const MessageSet& set : MessageSets()) {
        std::printf(" ");
        std::printf(format, cell(set));
        std::printf(" |");
    }
    std::printf("\n");
}

/// `cut` gives the pieces of a text, `Average` how many of them a message of the set has.
double Average(const MessageSet& set, std::vector<std::string_view> (*cut)(std::string_view)) {
    std::size_t count = 0;
    for (const test::GoldenFile& message : set.messages) {
        count += cut(message.text).size();
    }
    return static_cast<double>(count) / static_cast<double>(set.messages.size());
}

void PrintContents() {
    PrintRow("messages", "%.0f",
             [](const MessageSet& set) { return static_cast<double>(set.messages.size()); });
    PrintRow("with diagnostics", "%.0f", [](const MessageSet& set) {
        return static_cast<double>(std::ranges::count_if(
            set.messages, [](const auto& message) { return !message.diagnostics.empty(); }));
    });
    PrintRow("octets of text", "%.0f", [](const MessageSet& set) {
        return static_cast<double>(set.textOctets) / static_cast<double>(set.messages.size());
    });
    PrintRow("pieces of text", "%.0f",
             [](const MessageSet& set) { return Average(set, PiecesOf); });
    PrintRow("merged pieces", "%.0f",
             [](const MessageSet& set) { return Average(set, MergedPiecesOf); });
}

void PrintTimes(const Collector& collector) {
    constexpr std::pair<const char*, const char*> kMeasures[] = {
        {"dispatch and decode", "decode"},
        {"record to text", "text"},
        {"safe call", "whole_safe_call"},
        {"plain call", "whole_plain_call"},
        {"decode and walk", "whole_walk"},
        {"decode and JSON", "whole_json"},
        {"floor", "floor"},
        {"merged floor", "merged_floor"},
        {"`quorvane batch`", "batch"},
    };
    const bool hasCycles = collector.Median(MessageSets().front().name + "/decode", kCycles) > 0;
    for (const auto& [title, measure] : kMeasures) {
        PrintRow((std::string(title) + ", ns").c_str(), "%.0f",
                 [&, measure = measure](const MessageSet& set) {
                     return 1e9 * collector.Median(set.name + '/' + measure, kSeconds);
                 });
        if (hasCycles && std::string_view(measure) != "batch") {
            PrintRow((std::string(title) + ", cycles").c_str(), "%.0f",
                     [&, measure = measure](const MessageSet& set) {
                         return collector.Median(set.name + '/' + measure, kCycles);
                     });
        }
    }
    const char* counter = hasCycles ? kCycles : kSeconds;
    const auto printRatio = [&](const char* title, const char* measure, const char* of,
                                const char* by) {
        PrintRow(title, "%.2f", [&](const MessageSet& set) {
            return collector.Median(set.name + '/' + measure, by) /
                   collector.Median(set.name + '/' + of, by);
        });
    };
    printRatio("safe call / floor", "whole_safe_call", "floor", counter);
    printRatio("safe call / merged floor", "whole_safe_call", "merged_floor", counter);
    printRatio("decode / safe call", "decode", "whole_safe_call", counter);
    printRatio("batch / safe call, time", "batch", "whole_safe_call", kSeconds);
}

void PrintResources(const std::string& program) {
    std::map<std::string, double> instructions;
    PrintRow("safe call, instructions", "%.0f", [&](const MessageSet& set) {
        return instructions[set.name] = InstructionsPerCall(set, program, PassKind::kCall);
    });
    PrintRow("dispatch and decode, instructions", "%.0f", [&](const MessageSet& set) {
        return InstructionsPerCall(set, program, PassKind::kDecode);
    });
    PrintRow("batch / safe call, instructions", "%.2f", [&](const MessageSet& set) {
        return BatchInstructionsPerLine(set) / instructions[set.name];
    });
    PrintRow("2 threads / 1 thread", "%.2f", ThreadGain);
    PrintRow("first use, us", "%.0f",
             [&](const MessageSet& set) { return FirstUseMicroseconds(set, program); });
    PrintRow("heap allocations", "%.2f", AllocationsPerCall);
    PrintRow("stack at most, octets", "%.0f",
             [](const MessageSet& set) { return static_cast<double>(StackOctets(set)); });
}

void PrintHandWritten(const Collector& collector) {
    for (const HandWritten& decoder : HandWrittenDecoders()) {
        const std::string name(decoder.golden);
        const double decode = 1e9 * collector.Median(name + "/decode", kSeconds);
        const double byHand = 1e9 * collector.Median(name + "/by_hand", kSeconds);
        std::printf("| %s | %zu | %.1f | %.1f | %.1f |\n", name.c_str(),
                    decoder.values(decoder.message.octets.data()).size(), decode, byHand,
                    decode / byHand);
    }
}

void PrintTables(const Collector& collector, const std::string& program) {
    std::vector<std::string> names;
    for (const MessageSet& set : MessageSets()) {
        names.push_back(set.name);
    }
    PrintHead("per message", names);
    PrintContents();
    PrintTimes(collector);
    PrintResources(program);
    if (!HandWrittenDecoders().empty()) {
        std::printf("\n");
        PrintHead("message", {"values", "decode, ns", "by hand, ns", "decode / by hand"});
        PrintHandWritten(collector);
    }
#ifdef QUORVANE_LIBRARY_PATH
    std::printf("\nShared library: %ju octets.\n",
                static_cast<std::uintmax_t>(std::filesystem::file_size(QUORVANE_LIBRARY_PATH)));
#endif
}

/// What the program does when it is started by itself or by benchmarks/compare. Nothing if it is
/// to print the table.
std::optional<int> RunPart(const std::vector<std::string>& arguments) {
    if (arguments.size() == 3 && (arguments[0] == "--calls" || arguments[0] == "--decodes")) {
        const PassKind kind = arguments[0] == "--calls" ? PassKind::kCall : PassKind::kDecode;
        return RunPasses(kind, arguments[1], std::atoi(arguments[2].c_str())) ? 0 : 2;
    }
    if (arguments.size() == 3 && arguments[0] == "--first-use") {
        return PrintFirstUse(arguments[1], arguments[2]) ? 0 : 2;
    }
    if (arguments.size() == 2 && arguments[0] == "--lines") {
        for (const MessageSet& set : MessageSets()) {
            if (!WriteLines(set, set.messages.size(), arguments[1] + '/' + set.name)) {
                return 2;
            }
        }
        return 0;
    }
    return std::nullopt;
}

}  // namespace
}  // namespace quorvane::benchmarks

int main(int argc, char** argv) {
    using namespace quorvane::benchmarks;
    if (const auto code = RunPart({argv + 1, argv + argc}); code.has_value()) {
        return *code;
    }
    // Several runs of each benchmark, in random order; options of the caller come later and win.
    std::string repetitions = "--benchmark_repetitions=5";
    std::string interleaving = "--benchmark_enable_random_interleaving=true";
    std::vector<char*> arguments = {argv[0], repetitions.data(), interleaving.data()};
    arguments.insert(arguments.end(), argv + 1, argv + argc);
    int count = static_cast<int>(arguments.size());
    arguments.push_back(nullptr);
    benchmark::Initialize(&count, arguments.data());
    RegisterAll();
    Collector collector;
    benchmark::RunSpecifiedBenchmarks(&collector);
    PrintTables(collector, argv[0]);
    return 0;
}
