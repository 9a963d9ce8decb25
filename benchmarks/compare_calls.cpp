// Prints how the calls of two commits compare, set by set: medians of the ratio of runs that take
// turns, so that other work on the machine meets both. `compare` builds the two and starts this.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <dlfcn.h>
#include <string>
#include <string_view>
#include <vector>

#include "message_set.h"
#include "user_cycles.h"

namespace quorvane::benchmarks {
namespace {

using Call = void (*)(int decoding, const std::uint8_t* octets, std::size_t count);

Call FindCall(const char* object, const char* name) {
    void* loaded = dlopen(object, RTLD_NOW | RTLD_LOCAL);
    void* found = loaded == nullptr ? nullptr : dlsym(loaded, name);
    if (found == nullptr) {
        std::fprintf(stderr, "%s\n", dlerror());
        std::exit(1);
    }
    return reinterpret_cast<Call>(found);
}

void Pass(Call call, const MessageSet& set) {
    for (const test::GoldenFile& message : set.messages) {
        call(static_cast<int>(message.decoding), message.octets.data(), message.octets.size());
    }
}

/// Cycles in user mode where they can be counted, else nanoseconds of the thread.
double Cost(Call call, const MessageSet& set) {
    constexpr int kPasses = 3;
    const UserCycles cycles;
    timespec before{};
    timespec after{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &before);
    for (int pass = 0; pass < kPasses; ++pass) {
        Pass(call, set);
    }
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &after);
    if (const auto count = cycles.Count(); count.has_value()) {
        return static_cast<double>(*count);
    }
    return 1e9 * static_cast<double>(after.tv_sec - before.tv_sec) +
           static_cast<double>(after.tv_nsec - before.tv_nsec);
}

double MedianRatio(Call before, Call after, const MessageSet& set) {
    constexpr std::size_t kTurns = 101;
    Pass(before, set);
    Pass(after, set);
    std::vector<double> ratios;
    while (ratios.size() < kTurns) {
        // Who comes first changes from turn to turn.
        const bool swapped = ratios.size() % 2 != 0;
        const double first = Cost(swapped ? after : before, set);
        const double second = Cost(swapped ? before : after, set);
        ratios.push_back(swapped ? first / second : second / first);
    }
    std::nth_element(ratios.begin(), ratios.begin() + kTurns / 2, ratios.end());
    return ratios[kTurns / 2];
}

}  // namespace
}  // namespace quorvane::benchmarks

int main(int argc, char** argv) {
    using namespace quorvane::benchmarks;
    MessageSet set;
    // One pass or three of one call, for callgrind.
    if (argc == 6 && std::string_view(argv[1]) == "--passes" && ReadLines(argv[4], set)) {
        const Call call = FindCall(argv[2], argv[3]);
        for (int pass = 0; pass < std::atoi(argv[5]); ++pass) {
            Pass(call, set);
        }
        return 0;
    }
    if (argc == 4 && ReadLines(argv[3], set)) {
        for (const char* name : {"CallWithText", "CallWithoutText"}) {
            std::printf(" %.2f",
                        MedianRatio(FindCall(argv[1], name), FindCall(argv[2], name), set));
        }
        std::printf("\n");
        return 0;
    }
    std::fprintf(stderr,
                 "quorvane_compare BEFORE.so AFTER.so LINES\n"
                 "quorvane_compare --passes OBJECT.so CALL LINES COUNT\n");
    return 2;
}
