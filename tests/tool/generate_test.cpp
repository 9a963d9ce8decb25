// `quorvane generate` as a user runs it.

#include <algorithm>
#include <sstream>
#include <string>

#include "tool/tool_runner.h"

namespace quorvane {
namespace {

using tool::test::Outcome;
using tool::test::ToolTest;

// The message has no fields: protocol discriminator and type alone, TS 36.509, 6.1.
TEST_F(ToolTest, GenerateDrawsMessagesOfOneType) {
    const Outcome outcome = Run("generate EPC_UE2SS 2 --message DEACTIVATE_TEST_MODE_COMPLETE");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.output, "EPC_UE2SS 2 0F87\nEPC_UE2SS 2 0F87\n");
    const Outcome unknown = Run("generate EPC_UE2SS 2 --message DETACH_REQUEST");
    EXPECT_EQ(unknown.status, 2);
    EXPECT_EQ(unknown.output, "");
    EXPECT_EQ(unknown.errors,
              "quorvane: EPC_UE2SS has no message DETACH_REQUEST; the line \"MESSAGE: \" of a text "
              "shows a message's name\n");
}

TEST_F(ToolTest, GenerateDrawsTheSameMessagesByTheSameSeed) {
    constexpr int kMany = 800;  // more than are written at once
    const std::string many = Run("generate EPS_MMUplink 800 --seed 1").output;
    EXPECT_EQ(std::count(many.begin(), many.end(), '\n'), kMany);
    EXPECT_GT(many.size(), 65536U);
    const std::string first = Run("generate EPS_MMUplink 20 --seed 1").output;
    EXPECT_EQ(many.substr(0, first.size()), first);
    EXPECT_NE(Run("generate EPS_MMUplink 20 --seed 2").output, first);
    // They are valid.
    const Outcome decoded = Run("batch --strict", many);
    EXPECT_EQ(decoded.status, 0);
    EXPECT_EQ(decoded.errors, "");
}

TEST_F(ToolTest, GenerateNoMessageIsNothing) {
    const Outcome outcome = Run("generate EPS_MMUplink 0");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.output, "");
}

}  // namespace
}  // namespace quorvane
