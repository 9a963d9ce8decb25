#pragma once

// How far a command has come, on a terminal while the output goes elsewhere.
//
// Tests: tests/tool/progress_test.cpp.

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quorvane::tool {

/// "1200 lines, 400 lines/s, 1 min 05 s left": what is done after `seconds`, `count` of what is
/// counted. The time left is told if the size of the input is known.
std::string ProgressLine(std::string_view counted, std::uint64_t count, std::uint64_t octets,
                         std::optional<std::uint64_t> allOctets, double seconds);

class Progress {
  public:
    /// `counted`: "lines", which stays the caller's.
    Progress(std::string_view counted, std::optional<std::uint64_t> allOctets);
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress() { Hide(); }

    /// Shows what is done, if the last time is long enough ago.
    void Show(std::uint64_t count, std::uint64_t octets);

    /// Takes the line away, ahead of other words.
    void Hide();

  private:
    using Clock = std::chrono::steady_clock;

    std::string_view counted_;
    bool shown_;
    bool any_ = false;
    std::optional<std::uint64_t> allOctets_;
    Clock::time_point start_ = Clock::now();
    Clock::time_point last_ = start_;
};

}  // namespace quorvane::tool
