#pragma once

// How far a command has come, on a terminal while the output goes elsewhere.
//
// Tests: tests/tool/progress_test.cpp.

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace quorvane::tool {

/// "1200 lines, 400 lines/s, 1 min 05 s left": what is done after `seconds`. The time left is told
/// if the size of the input is known.
std::string ProgressLine(std::uint64_t lines, std::uint64_t octets,
                         std::optional<std::uint64_t> allOctets, double seconds);

class Progress {
  public:
    explicit Progress(std::optional<std::uint64_t> allOctets);
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    /// Takes the line away.
    ~Progress();

    /// Shows what is done, if the last time is long enough ago.
    void Show(std::uint64_t lines, std::uint64_t octets);

  private:
    using Clock = std::chrono::steady_clock;

    bool shown_;
    bool any_ = false;
    std::optional<std::uint64_t> allOctets_;
    Clock::time_point start_ = Clock::now();
    Clock::time_point last_ = start_;
};

}  // namespace quorvane::tool
