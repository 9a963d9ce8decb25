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

#include "families/family.h"
#include "quorvane/decode.h"
#include "reflect/catalogue.h"

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

/// What callgrind counts for this program when it decodes the set so many times and nothing else;
/// 0 without valgrind.
std::uint64_t CountedInstructions(const std::string& program, const std::string& set, int passes) {
    const std::string command = "valgrind --tool=callgrind --callgrind-out-file=/dev/null '" +
                                program + "' --passes '" + set + "' " + std::to_string(passes) +
                                " 2>&1 >/dev/null";
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

double InstructionsPerCall(const MessageSet& set, const std::string& program) {
    // What one pass and three take differs by two passes over warm tables.
    constexpr int kFew = 1;
    constexpr int kMany = 3;
    const std::uint64_t few = CountedInstructions(program, set.name, kFew);
    const std::uint64_t many = CountedInstructions(program, set.name, kMany);
    return static_cast<double>(many - few) / (kMany - kFew) /
           static_cast<double>(set.messages.size());
}

bool DecodePasses(std::string_view name, int passes) {
    for (const MessageSet& set : MessageSets()) {
        if (set.name == name) {
            std::string text;
            std::string diagnostics;
            for (int pass = 0; pass < passes; ++pass) {
                DecodeSet(set, text, diagnostics);
            }
            return true;
        }
    }
    return false;
}

double CatalogueMicroseconds(const families::Family& family) {
    const auto start = std::chrono::steady_clock::now();
    const reflect::Catalogue catalogue(family.types);
    const auto end = std::chrono::steady_clock::now();
    return std::chrono::duration<double, std::micro>(end - start).count();
}

double MillionsPerSecond(const MessageSet& set, int threads) {
    constexpr auto kTime = std::chrono::milliseconds(500);
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

}  // namespace quorvane::benchmarks
