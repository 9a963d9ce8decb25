// What tells of faults: exit statuses, the summary, notes in the text.

#include <sstream>
#include <string>

#include "tool/tool_runner.h"

namespace quorvane {
namespace {

using tool::test::JsonLines;
using tool::test::Outcome;
using tool::test::ToolTest;

const std::string kGood = "EPC_UE2SS 0F87\n";
const std::string kUnknown = "EPC_UE2SS FFFF\n";
const std::string kFaulty = "EPC_SS2UE 0F84\n";  // TS 36.509, 6.1: the loop mode is missing
// ATTACH ACCEPT that ends in an unknown element: an error without a fault.
const std::string kInError = "EPS_MMDownlink 07420149060062F210000100045201E86F6E0100\n";
const std::string kBad = "EPC_UE2SS 0F8\n";

TEST_F(ToolTest, StrictMakesFaultsAnExitStatus) {
    EXPECT_EQ(Run("decode --strict EPC_UE2SS 0F87").status, 0);
    EXPECT_EQ(Run("decode --strict EPC_SS2UE 0F84").status, 4);
    EXPECT_EQ(Run("decode --strict --json EPC_SS2UE 0F84").status, 4);
    EXPECT_EQ(Run("decode --strict EPC_UE2SS FFFF").status, 1);
    EXPECT_EQ(Run("decode EPC_SS2UE 0F84").status, 0);
    for (const char* form : {"", " --json", " --tolerant", " --notes"}) {
        const std::string strict = std::string("batch --strict") + form;
        EXPECT_EQ(Run(strict, kGood).status, 0) << form;
        EXPECT_EQ(Run(strict, kGood + kFaulty + kGood).status, 4) << form;
        // Tolerant reading goes on behind it.
        EXPECT_EQ(Run(strict, kInError).status, std::string(form) == " --tolerant" ? 0 : 4) << form;
        EXPECT_EQ(Run(strict, kFaulty + kUnknown).status, 1) << form;
        EXPECT_EQ(Run(strict, kFaulty + kBad).status, 1) << form;
        EXPECT_EQ(Run(std::string("batch") + form, kGood + kFaulty + kUnknown).status, 0) << form;
    }
}

TEST_F(ToolTest, SummaryCountsOnStandardError) {
    for (const char* form : {"", " --json"}) {
        const Outcome outcome = Run(std::string("batch --summary") + form,
                                    kFaulty + "# none\n" + kGood + kUnknown + kBad + "\n" + kGood);
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.errors,
                  "messages 4, unknown 1, with faults 1, bad lines 1\n"
                  "        2 EPC_UE2SS DEACTIVATE_TEST_MODE_COMPLETE\n"
                  "        1 EPC_SS2UE ACTIVATE_TEST_MODE\n");
        EXPECT_EQ(JsonLines(outcome.output).size(), 5U);
    }
    EXPECT_EQ(Run("batch --summary", "").errors,
              "messages 0, unknown 0, with faults 0, bad lines 0\n");
}

TEST_F(ToolTest, NotesStandBesideTheirFields) {
    // ATTACH REQUEST with a container whose access point name has no octets, TS 24.301, 8.3.20.
    const std::string octets = "EPS_MMUplink 074171041132547602E0E000060201D0112800";
    const std::string note =
        "      ^ ESMMessageContainer.pPDN_CONNECTIVITY_REQUEST.AccessPointName, bit 152: Size "
        "error "
        "decoding IE AccessPointName\n";
    const Outcome outcome = Run("decode --notes " + octets);
    const std::size_t at = outcome.output.find(note);
    ASSERT_NE(at, std::string::npos) << outcome.output;
    const std::size_t line = outcome.output.rfind('\n', at - 2) + 1;
    EXPECT_TRUE(outcome.output.substr(line).starts_with("      AccessPointName: "))
        << outcome.output;
    // The rest is the text.
    std::istringstream in(outcome.output);
    std::string text;
    for (std::string each; std::getline(in, each);) {
        const std::size_t start = each.find_first_not_of(' ');
        text += start < each.size() && each[start] == '^' ? "" : each + "\n";
    }
    EXPECT_EQ(text, Run("decode " + octets).output);

    const auto lines = JsonLines(Run("batch --notes", octets + "\n" + kGood + kUnknown).output);
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(lines[0]["text"].GetString(), outcome.output);
    EXPECT_EQ(std::string(lines[1]["text"].GetString()).find('^'), std::string::npos);
    EXPECT_STREQ(lines[2]["text"].GetString(), "Failed to decode \"EPC_UE2SS\" message");
    EXPECT_EQ(Run("decode --notes --json " + octets).status, 2);
}

}  // namespace
}  // namespace quorvane
