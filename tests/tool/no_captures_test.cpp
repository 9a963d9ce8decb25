// What the tool of a build without libpcap says of captures.

#include <string>

#include "tool/tool_runner.h"

namespace quorvane {
namespace {

using tool::test::Outcome;
using tool::test::ToolTest;

TEST_F(ToolTest, SaysThatTheBuildReadsNoCaptures) {
#ifdef QUORVANE_CAPTURE
    GTEST_SKIP() << "this build reads captures";
#endif
    const Outcome outcome = Run("capture log.pcap");
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.errors,
              "quorvane: this build reads no captures, as it was made without libpcap "
              "(QUORVANE_CAPTURE=OFF)\n");
}

}  // namespace
}  // namespace quorvane
