#include "user_cycles.h"

#ifdef __linux__
#include <linux/perf_event.h>
#include <sys/syscall.h>
#include <unistd.h>
#endif

namespace quorvane::benchmarks {

#ifdef __linux__

UserCycles::UserCycles() {
    constexpr int kThisThread = 0;
    constexpr int kAnyCpu = -1;
    constexpr int kNoGroup = -1;
    perf_event_attr attributes{};
    attributes.size = sizeof attributes;
    attributes.type = PERF_TYPE_HARDWARE;
    attributes.config = PERF_COUNT_HW_CPU_CYCLES;
    attributes.exclude_kernel = 1;
    attributes.exclude_hv = 1;
    descriptor_ = static_cast<int>(syscall(SYS_perf_event_open, &attributes, kThisThread, kAnyCpu,
                                           kNoGroup, PERF_FLAG_FD_CLOEXEC));
}

UserCycles::~UserCycles() {
    if (descriptor_ >= 0) {
        close(descriptor_);
    }
}

std::optional<std::uint64_t> UserCycles::Count() const {
    std::uint64_t count = 0;
    if (descriptor_ < 0 || read(descriptor_, &count, sizeof count) != sizeof count) {
        return std::nullopt;
    }
    return count;
}

#else

UserCycles::UserCycles() = default;
UserCycles::~UserCycles() = default;

std::optional<std::uint64_t> UserCycles::Count() const {
    return std::nullopt;
}

#endif

}  // namespace quorvane::benchmarks
