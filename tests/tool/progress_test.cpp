#include "tools/progress.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <unistd.h>

namespace quorvane::tool {
namespace {

/// Standard error is a terminal, and standard output is none, as with `> FILE`.
class OnATerminal {
  public:
    OnATerminal() {
        const int nothing = open("/dev/null", O_WRONLY);
        std::fflush(stdout);
        dup2(nothing, 1);
        close(nothing);
        grantpt(terminal_);
        unlockpt(terminal_);
        const int inside = open(ptsname(terminal_), O_RDWR | O_NOCTTY);
        dup2(inside, 2);
        close(inside);
    }
    ~OnATerminal() {
        std::fflush(stderr);
        dup2(output_, 1);
        dup2(errors_, 2);
        for (const int file : {output_, errors_, terminal_}) {
            close(file);
        }
    }
    OnATerminal(const OnATerminal&) = delete;
    OnATerminal& operator=(const OnATerminal&) = delete;

    /// What is shown since the last call.
    [[nodiscard]] std::string Shown() const {
        std::fflush(stderr);
        std::array<char, 4096> text{};
        fcntl(terminal_, F_SETFL, O_NONBLOCK);
        const ssize_t size = read(terminal_, text.data(), text.size());
        return {text.data(), static_cast<std::size_t>(std::max<ssize_t>(size, 0))};
    }

  private:
    int output_ = dup(1);
    int errors_ = dup(2);
    int terminal_ = posix_openpt(O_RDWR | O_NOCTTY);
};

TEST(Progress, ShowsALineThatIsGoneInTheEnd) {
    std::string shown;
    std::string soonAfter;
    std::string inTheEnd;
    bool isSoon = false;  // on a busy machine it may be late
    {
        const OnATerminal terminal;
        {
            Progress progress("lines", std::nullopt);
            progress.Show(0, 0);  // too soon after the start, or the first line
            static_cast<void>(terminal.Shown());
            std::this_thread::sleep_for(std::chrono::milliseconds(210));
            const auto before = std::chrono::steady_clock::now();
            progress.Show(12, 500);
            shown = terminal.Shown();
            progress.Show(13, 600);
            soonAfter = terminal.Shown();
            isSoon = std::chrono::steady_clock::now() - before < std::chrono::milliseconds(200);
        }
        inTheEnd = terminal.Shown();
    }
    EXPECT_EQ(shown.substr(0, 10), "\r12 lines,");
    EXPECT_TRUE(shown.ends_with(" lines/s\033[K")) << shown;
    EXPECT_TRUE(soonAfter.empty() || !isSoon) << soonAfter;
    EXPECT_EQ(inTheEnd, "\r\033[K");
}

TEST(Progress, ShowsNothingBesideOutputOnTheTerminal) {
    std::string shown;
    {
        const OnATerminal terminal;
        dup2(2, 1);
        {
            Progress progress("lines", std::nullopt);
            std::this_thread::sleep_for(std::chrono::milliseconds(210));
            progress.Show(12, 500);
        }
        shown = terminal.Shown();
    }
    EXPECT_EQ(shown, "");
}

TEST(Progress, TellsRateAndTimeLeft) {
    EXPECT_EQ(ProgressLine("lines", 0, 0, 1000, 0), "0 lines");
    EXPECT_EQ(ProgressLine("lines", 1200, 500, std::nullopt, 3), "1200 lines, 400 lines/s");
    EXPECT_EQ(ProgressLine("lines", 1200, 500, 2000, 3), "1200 lines, 400 lines/s, 9 s left");
    EXPECT_EQ(ProgressLine("lines", 10, 100, 6600, 1), "10 lines, 10 lines/s, 1 min 05 s left");
    EXPECT_EQ(ProgressLine("lines", 10, 100, 7500, 1), "10 lines, 10 lines/s, 1 min 14 s left");
    EXPECT_EQ(ProgressLine("lines", 10, 1, 7501, 1), "10 lines, 10 lines/s, 2 h 05 min left");
    EXPECT_EQ(ProgressLine("lines", 10, 1000, 1000, 2), "10 lines, 5 lines/s, 0 s left");
    EXPECT_EQ(ProgressLine("packets", 9, 8, 12, 3), "9 packets, 3 packets/s, 2 s left");
    // A file that has grown.
    EXPECT_EQ(ProgressLine("lines", 10, 1001, 1000, 2), "10 lines, 5 lines/s");
}

}  // namespace
}  // namespace quorvane::tool
