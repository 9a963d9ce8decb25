#include "tools/progress.h"

#include <gtest/gtest.h>
#include <optional>

namespace quorvane::tool {
namespace {

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
