// Tolerant reading on the command line.

#include <string>

#include "tool/tool_runner.h"

namespace quorvane {
namespace {

using tool::test::JsonLines;
using tool::test::Outcome;
using tool::test::ToolTest;

// SERVICE REJECT, TS 24.301, 8.2.24: an unknown element, and the timer.
const std::string kReject = "07 4E 27 6A 01 21 5B 2A";

// ATTACH COMPLETE, 8.2.2, with ESM STATUS and an octet more.
const std::string kComplete = "07 43 00 05 52 01 E8 6F 27";

const std::string kRejectText =
    "MESSAGE: SERVICE_REJECT\n"
    "{\n"
    "  SecurityHeaderType: 0\n";

TEST_F(ToolTest, DecodeNamesWhatIsSetAside) {
    const Outcome strict = Run("decode EPS_MMDownlink " + kReject);
    EXPECT_EQ(strict.status, 0);
    EXPECT_NE(strict.output.find("UNKNOWN IEI"), std::string::npos);

    const Outcome tolerant = Run("decode --tolerant EPS_MMDownlink " + kReject);
    EXPECT_EQ(tolerant.status, 0);
    EXPECT_EQ(tolerant.errors, "");
    EXPECT_TRUE(tolerant.output.starts_with("Decoded using \"EPS_MMDownlink\".\n" + kRejectText))
        << tolerant.output;
    EXPECT_TRUE(tolerant.output.ends_with("}\nSet aside: LOC:[24,24] 6A 01 21, element (IEI 6A)\n"))
        << tolerant.output;

    // Without a field for it, and then cut short.
    EXPECT_TRUE(Run("decode --tolerant EPS_MMDownlink 07 4E 27 5B 2A E1 31 05")
                    .output.ends_with("}\nSet aside: LOC:[40,8] E1, element (IEI E1)\n"
                                      "Set aside: LOC:[48,16] 31 05, no whole element\n"));

    EXPECT_TRUE(
        Run("decode --tolerant EPS_MMUplink " + kComplete)
            .output.ends_with("}\nSet aside: LOC:[64,8] 27, rest of ESMMessageContainer\n"));
    EXPECT_TRUE(
        Run("decode --tolerant EPS_MMUplink 07 43 00 07 52 00 C2 7B 00 01 55")
            .output.ends_with(
                "}\nSet aside: LOC:[56,32] 7B 00 01 55, element in "
                "ESMMessageContainer.pACTIVATE_DEFAULT_EPS_BEARER_CONTEXT_ACCEPT (IEI 7B)\n"));
}

TEST_F(ToolTest, DecodeFollowsIntoProtectedMessages) {
    const std::string octets = "EPS_MMDownlink 27 0A BB CC DD FE " + kReject;
    EXPECT_NE(Run("decode --tolerant " + octets).output.find("SECURITY_PROTECTED_NAS_MESSAGE"),
              std::string::npos);
    const Outcome outcome = Run("decode --tolerant --deciphered " + octets);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_TRUE(outcome.output.starts_with("Decoded using \"EPS_MMDownlink\".\n" + kRejectText))
        << outcome.output;
    EXPECT_TRUE(outcome.output.ends_with(
        "}\nBehind a security header: type 2, message authentication code 0ABBCCDD, sequence "
        "number "
        "254\nSet aside: LOC:[72,24] 6A 01 21, element (IEI 6A)\n"))
        << outcome.output;
    EXPECT_EQ(Run("decode --deciphered " + octets).status, 2);
}

TEST_F(ToolTest, TolerantDecodeLeavesExitStatusAndDiagnostics) {
    const Outcome unknown = Run("decode --tolerant EPC_UE2SS FF FF");
    EXPECT_EQ(unknown.status, 1);
    EXPECT_EQ(unknown.output, "Failed to decode \"EPC_UE2SS\" message");
    for (const char* octets : {"EPC_SS2UE 0F84", "EPS_MMDownlink 07 4E 27 5B", "EPC_UE2SS 0F87"}) {
        const Outcome strict = Run(std::string("decode ") + octets);
        const Outcome tolerant = Run(std::string("decode --tolerant ") + octets);
        EXPECT_EQ(tolerant.status, strict.status) << octets;
        EXPECT_EQ(tolerant.output, strict.output) << octets;
        EXPECT_EQ(tolerant.errors, strict.errors) << octets;
    }
}

TEST_F(ToolTest, JsonTellsWhatIsSetAside) {
    const Outcome outcome = Run("decode --json --tolerant EPS_MMDownlink " + kReject);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_NE(outcome.output.find(R"("surplus":[{"kind":"element","iei":"6A",)"), std::string::npos)
        << outcome.output;
    const auto answers =
        JsonLines(Run("batch --json --tolerant", "EPS_MMDownlink 8 " + kReject + "\n").output);
    ASSERT_EQ(answers.size(), 1U);
    EXPECT_EQ(answers[0]["message"]["surplus"].Size(), 1U);
}

TEST_F(ToolTest, BatchNamesWhatIsSetAside) {
    const std::string lines = "EPS_MMDownlink 8 " + kReject +
                              "\n"
                              "EPC_SS2UE 2 0F84\n"
                              "EPS_MMDownlink 8 27 AA BB CC DD 01 07 54\n";
    const Outcome outcome = Run("batch --tolerant", lines);
    EXPECT_EQ(outcome.status, 0);
    const auto answers = JsonLines(outcome.output);
    ASSERT_EQ(answers.size(), 3U);
    const std::string text = answers[0]["text"].GetString();
    EXPECT_TRUE(text.ends_with("}\nSet aside: LOC:[24,24] 6A 01 21, element (IEI 6A)\n")) << text;
    EXPECT_EQ(answers[0]["ret"].GetInt(), 1);
    EXPECT_EQ(answers[1]["diagnostics"].Size(), 1U);
    EXPECT_NE(std::string(answers[2]["text"].GetString()).find("SECURITY_PROTECTED_NAS_MESSAGE"),
              std::string::npos);

    const auto deciphered = JsonLines(Run("batch --tolerant --deciphered", lines).output);
    ASSERT_EQ(deciphered.size(), 3U);
    EXPECT_NE(std::string(deciphered[2]["text"].GetString()).find("AUTHENTICATION_REJECT"),
              std::string::npos);
    // Without the option the answers are those of the functions.
    const auto strict = JsonLines(Run("batch", lines).output);
    ASSERT_EQ(strict.size(), 3U);
    EXPECT_EQ(std::string(strict[0]["text"].GetString()).find("Set aside"), std::string::npos);
    EXPECT_STREQ(strict[1]["text"].GetString(), answers[1]["text"].GetString());
    EXPECT_STREQ(strict[1]["diagnostics"][0].GetString(), answers[1]["diagnostics"][0].GetString());
}

}  // namespace
}  // namespace quorvane
