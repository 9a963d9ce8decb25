#include "resources.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <pthread.h>
#include <sys/mman.h>
#include <thread>

#include "dispatch.h"
#include "quorvane/decode.h"
#include "tools/hex.h"

namespace {

std::atomic<long> allocations{0};

}  // namespace

void* operator new(std::size_t size) {
    allocations.fetch_add(1, std::memory_order_relaxed);
    void* memory = std::malloc(size == 0 ? 1 : size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace quorvane::benchmarks {
namespace {

void DecodeSet(const MessageSet& set, std::string& text, std::string& diagnostics) {
    for (const test::GoldenFile& message : set.messages) {
        DecodeInto(message.decoding, message.octets, text, diagnostics);
    }
}

/// What callgrind counts for the command; 0 without valgrind. Long copies are made step by step:
/// callgrind takes the one instruction that the C library has for them for as many as there are
/// octets.
std::uint64_t CountedInstructions(const std::string& counted) {
    const std::string command =
        "GLIBC_TUNABLES=glibc.cpu.x86_rep_movsb_threshold=1000000000 "
        "valgrind --tool=callgrind --callgrind-out-file=/dev/null " +
        counted + " 2>&1 >/dev/null";
    std::FILE* output = popen(command.c_str(), "r");
    if (output == nullptr) {
        return 0;
    }
    std::uint64_t count = 0;
    char line[512];
    while (std::fgets(line, sizeof line, output) != nullptr) {
        if (const char* collected = std::strstr(line, "Collected : "); collected != nullptr) {
            count = std::strtoull(collected + std::strlen("Collected : "), nullptr, 10);
        }
    }
    pclose(output);
    return count;
}

/// Messages a second that this many threads decode together, in millions.
double MillionsPerSecond(const MessageSet& set, int threads) {
    constexpr auto kTime = std::chrono::milliseconds(200);
    std::atomic<bool> stop{false};
    std::atomic<std::uint64_t> decoded{0};
    std::vector<std::thread> workers;
    const auto start = std::chrono::steady_clock::now();
    for (int count = 0; count < threads; ++count) {
        workers.emplace_back([&] {
            std::string text;
            std::string diagnostics;
            std::uint64_t own = 0;
            while (!stop.load(std::memory_order_relaxed)) {
                DecodeSet(set, text, diagnostics);
                own += set.messages.size();
            }
            decoded += own;
        });
    }
    std::this_thread::sleep_for(kTime);
    stop = true;
    for (std::thread& worker : workers) {
        worker.join();
    }
    const std::chrono::duration<double, std::micro> time = std::chrono::steady_clock::now() - start;
    return static_cast<double>(decoded.load()) / time.count();
}

struct StackWork {
    const MessageSet* set;
};

void* RunOnStack(void* argument) {
    std::string text;
    std::string diagnostics;
    DecodeSet(*static_cast<StackWork*>(argument)->set, text, diagnostics);
    return nullptr;
}

}  // namespace

double AllocationsPerCall(const MessageSet& set) {
    std::string text;
    std::string diagnostics;
    DecodeSet(set, text, diagnostics);
    DecodeSet(set, text, diagnostics);
    const long before = allocations.load();
    DecodeSet(set, text, diagnostics);
    return static_cast<double>(allocations.load() - before) /
           static_cast<double>(set.messages.size());
}

std::size_t StackOctets(const MessageSet& set) {
    constexpr std::size_t kSize = std::size_t{256} << 10;
    constexpr unsigned char kPaint = 0xA5;
    void* stack = mmap(nullptr, kSize, PROT_READ | PROT_WRITE,
                       MAP_PRIVATE | MAP_ANONYMOUS | MAP_STACK, -1, 0);
    if (stack == MAP_FAILED) {
        return 0;
    }
    std::memset(stack, kPaint, kSize);
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstack(&attributes, stack, kSize);
    StackWork work{&set};
    pthread_t thread{};
    pthread_create(&thread, &attributes, RunOnStack, &work);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
    const auto* octets = static_cast<const unsigned char*>(stack);
    const auto* touched =
        std::find_if(octets, octets + kSize, [](unsigned char octet) { return octet != kPaint; });
    const auto used = static_cast<std::size_t>(octets + kSize - touched);
    munmap(stack, kSize);
    return used;
}

double InstructionsPerCall(const MessageSet& set, const std::string& program, PassKind kind) {
    // What one pass and three take differs by two passes over warm tables.
    const LinesFile file(set, set.messages.size());
    const char* option = kind == PassKind::kCall ? "' --calls " : "' --decodes ";
    const auto passes = [&](const char* count) {
        return CountedInstructions("'" + program + option + file.Path() + ' ' + count);
    };
    return static_cast<double>(passes("3") - passes("1")) / 2 /
           static_cast<double>(set.messages.size());
}

double BatchInstructionsPerLine(const MessageSet& set) {
    const std::size_t messages = set.messages.size();
    const auto batch = [&](std::size_t lines) {
        const LinesFile file(set, lines);
        return CountedInstructions(QUORVANE_TOOL_PATH " batch " + file.Path());
    };
    return static_cast<double>(batch(3 * messages) - batch(messages)) / 2 /
           static_cast<double>(messages);
}

bool RunPasses(PassKind kind, const std::string& path, int passes) {
    MessageSet set;
    if (!ReadLines(path, set)) {
        return false;
    }
    std::string text;
    std::string lines;
    bits::Arena arena;
    iecodec::Diagnostics diagnostics;
    for (int pass = 0; pass < passes; ++pass) {
        if (kind == PassKind::kCall) {
            DecodeSet(set, text, lines);
            continue;
        }
        for (const test::GoldenFile& message : set.messages) {
            DecodeAndDrop(message, arena, diagnostics);
        }
    }
    return true;
}

bool PrintFirstUse(std::string_view decoding, std::string_view hex) {
    const auto known = FindDecoding(decoding);
    std::vector<std::uint8_t> octets;
    if (!known || !tool::ParseHex(hex, octets).empty()) {
        return false;
    }
    std::string text;
    std::string diagnostics;
    const auto start = std::chrono::steady_clock::now();
    DecodeInto(*known, octets, text, diagnostics);
    const std::chrono::duration<double, std::micro> time = std::chrono::steady_clock::now() - start;
    std::printf("%f\n", time.count());
    return true;
}

double FirstUseMicroseconds(const MessageSet& set, const std::string& program) {
    constexpr std::size_t kProcesses = 11;
    const test::GoldenFile& message = set.messages.front();
    const std::string command =
        "'" + program + "' --first-use " +
        std::string(Decodings()[static_cast<std::size_t>(message.decoding)].name) + ' ' +
        tool::ToHex(message.octets, "");
    std::vector<double> times;
    while (times.size() < kProcesses) {
        std::FILE* output = popen(command.c_str(), "r");
        double time = 0;
        if (output == nullptr || std::fscanf(output, "%lf", &time) != 1) {
            return 0;
        }
        pclose(output);
        times.push_back(time);
    }
    std::nth_element(times.begin(), times.begin() + kProcesses / 2, times.end());
    return times[kProcesses / 2];
}

double ThreadGain(const MessageSet& set) {
    // One and two in turn, so that other work on the machine meets both.
    constexpr std::size_t kRuns = 5;
    std::vector<double> gains;
    while (gains.size() < kRuns) {
        const double one = MillionsPerSecond(set, 1);
        gains.push_back(MillionsPerSecond(set, 2) / one);
    }
    std::nth_element(gains.begin(), gains.begin() + kRuns / 2, gains.end());
    return gains[kRuns / 2];
}
}  // namespace quorvane::benchmarks
