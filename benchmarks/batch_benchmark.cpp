// Messages a second of the tool's batch command, processes, files and all.

#include <benchmark/benchmark.h>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

#include "message_set.h"
#include "quorvane/decode.h"
#include "tools/hex.h"

namespace quorvane::benchmarks {
namespace {

constexpr std::size_t kLines = 200000;

class BatchFile {
  public:
    BatchFile()
        : path_(std::filesystem::temp_directory_path() /
                ("quorvane_batch_" + std::to_string(getpid()))) {
        std::ofstream out(path_, std::ios::binary);
        const MessageSet* all = nullptr;
        for (const MessageSet& set : MessageSets()) {
            all = set.name == "all" ? &set : all;
        }
        for (std::size_t line = 0; all != nullptr && line < kLines; ++line) {
            const test::GoldenFile& message = all->messages[line % all->messages.size()];
            out << Decodings()[static_cast<std::size_t>(message.decoding)].name << ' '
                << message.length << ' ' << tool::ToHex(message.octets, "") << '\n';
        }
    }
    BatchFile(const BatchFile&) = delete;
    BatchFile& operator=(const BatchFile&) = delete;
    ~BatchFile() { std::filesystem::remove(path_); }

    [[nodiscard]] const std::filesystem::path& Path() const { return path_; }

  private:
    std::filesystem::path path_;
};

void Batch(benchmark::State& state) {
    const BatchFile file;
    const std::string command =
        std::string(QUORVANE_TOOL_PATH) + " batch " + file.Path().string() + " >/dev/null";
    for ([[maybe_unused]] auto iteration : state) {
        if (std::system(command.c_str()) != 0) {
            state.SkipWithError("the tool failed");
            break;
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kLines));
}

BENCHMARK(Batch)->Name("batch")->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace quorvane::benchmarks
