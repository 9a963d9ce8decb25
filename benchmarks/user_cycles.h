#pragma once

// Cycles that this thread spends in user mode: what times of a shared machine are weighed by.

#include <cstdint>
#include <optional>

namespace quorvane::benchmarks {

class UserCycles {
  public:
    /// Starts to count, if the machine and its settings allow it (Linux, perf_event_open).
    UserCycles();
    UserCycles(const UserCycles&) = delete;
    UserCycles& operator=(const UserCycles&) = delete;
    ~UserCycles();

    /// Since the start; nothing if they cannot be counted.
    [[nodiscard]] std::optional<std::uint64_t> Count() const;

  private:
    int descriptor_ = -1;
};

}  // namespace quorvane::benchmarks
