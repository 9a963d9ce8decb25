// The function `auto`, over all golden messages and in the commands.

#include <algorithm>
#include <map>
#include <string>

#include "support/golden_file.h"
#include "tool/tool_runner.h"
#include "tools/auto_function.h"

namespace quorvane {
namespace {

using tool::test::JsonLines;
using tool::test::Outcome;
using tool::test::ToolTest;

struct Share {
    int known = 0;
    int taken = 0;
};

// What a message's own function knows is taken for it or named among the others. The bursts, of one
// octet or two, are tried on messages of that length alone.
TEST(Auto, FindsTheFunctionOfEveryGoldenMessage) {
    std::map<std::string, Share> shares;
    Message message;
    for (const auto& path : test::FindGoldenFiles(QUORVANE_SOURCE_DIR "/tests/golden")) {
        std::string problem;
        const auto golden = test::ReadGoldenFile(path, problem);
        ASSERT_TRUE(golden) << problem;
        const int burstBits = facade::RowOf(golden->decoding).fixedBits;
        const bool wrongLength = burstBits > 0 && golden->length != (burstBits + 7) / 8;
        if (golden->result == 0 || golden->length <= 0 || wrongLength) {
            continue;
        }
        const PaddedMessage octets(golden->octets.data(), golden->length, golden->octets.size());
        const auto choice =
            tool::ChooseFunction(octets, facade::Direction::kBoth, DecodeOptions{}, message);
        const bool taken = choice.taken == golden->decoding;
        EXPECT_NE(taken, std::ranges::count(choice.others, golden->decoding) == 1) << path;
        Share& share = shares[path.parent_path().filename()];
        ++share.known;
        share.taken += taken ? 1 : 0;
    }
    // In percent. Many messages of TS 24.008 are the same in both directions, and what begins with
    // a message type alone may be anything.
    const std::map<std::string, int> least = {
        {"eps", 95}, {"epc", 100}, {"l3", 65}, {"rr", 80}, {"rlcmac", 60}};
    for (const auto& [family, share] : shares) {
        RecordProperty(family, std::to_string(share.taken) + " of " + std::to_string(share.known));
        EXPECT_GE(100 * share.taken, least.at(family) * share.known)
            << family << ": " << share.taken << " of " << share.known;
    }
}

TEST_F(ToolTest, AutoTakesTheFunctionThatFits) {
    const Outcome outcome = Run("decode auto 0F87");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_TRUE(outcome.output.starts_with("Decoded using \"EPC_UE2SS\".\n")) << outcome.output;
    EXPECT_TRUE(outcome.errors.starts_with("quorvane: taken as EPC_UE2SS")) << outcome.errors;
    EXPECT_EQ(Run("diff 'auto 0F87' 'EPC_UE2SS 0F87'").status, 0);

    const auto lines = JsonLines(Run("batch", "AUTO 0F87\nEPC_UE2SS 0F87\nauto 0\n").output);
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_STREQ(lines[0]["fn"].GetString(), "EPC_UE2SS");
    EXPECT_TRUE(lines[0]["others"].IsArray());
    EXPECT_FALSE(lines[1].HasMember("others"));
    EXPECT_STREQ(lines[2]["fn"].GetString(), "auto");
    EXPECT_EQ(lines[2]["ret"].GetInt(), 0);
    EXPECT_STREQ(lines[2]["text"].GetString(), "Failed to decode \"auto\" message");
    EXPECT_EQ(Run("encode auto").status, 2);
}

// TS 24.301, 8.2.1: ATTACH ACCEPT and, sent by the UE, ATTACH REQUEST.
// Protocol discriminator 0, group call control, is nobody's, nor is type 28 of RLC/MAC control.
TEST_F(ToolTest, AutoTellsThatNoFunctionKnowsTheMessage) {
    const Outcome outcome = Run("decode auto 70 00 00");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.errors, "quorvane: no function knows the message\n");
    const Outcome json = Run("decode auto --json 70 00 00");
    EXPECT_EQ(json.status, 1);
    EXPECT_EQ(JsonLines(json.output).at(0)["type"].IsNull(), true);
}

TEST_F(ToolTest, MessagesOfTheOtherDirectionAreTold) {
    const Outcome outcome = Run("decode EPS_MMDownlink 0741");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.output, "Failed to decode \"EPS_MMDownlink\" message");
    EXPECT_EQ(outcome.errors,
              "quorvane: the message is known in the other direction, to EPS_MMUplink\n");
    EXPECT_NE(Run("decode auto-downlink 0741").errors.find("EPS_MMUplink"), std::string::npos);

    const auto lines =
        JsonLines(Run("batch", "EPS_MMDownlink 0x07 0x41\nauto-downlink 0x07 0x41\n").output);
    ASSERT_EQ(lines.size(), 2U);
    for (const auto& line : lines) {
        ASSERT_TRUE(line.HasMember("otherDirection"));
        EXPECT_EQ(line["otherDirection"].Size(), 1U);
        EXPECT_STREQ(line["otherDirection"][0].GetString(), "EPS_MMUplink");
    }
    EXPECT_FALSE(
        JsonLines(Run("batch", "EPS_MMUplink 0x07 0x41\n").output)[0].HasMember("otherDirection"));
}

}  // namespace
}  // namespace quorvane
