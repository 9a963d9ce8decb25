// `quorvane diff` as a user runs it. Octets and names are those of TS 24.301, 8.3.20 and 8.2.4.

#include <fstream>
#include <string>

#include "tool/tool_runner.h"

namespace quorvane {
namespace {

using tool::test::Outcome;
using tool::test::ToolTest;

TEST_F(ToolTest, DiffOfTheSameMessageIsNothing) {
    std::ofstream(Path("line")) << "EPS_SMUplink 4 02 01 D0 31 FF\n";
    std::ofstream(Path("json")) << Run("decode --json EPS_SMUplink 0201D031").output;
    for (const std::string& one :
         {std::string("'EPS_SMUplink 0201D031'"), Path("line"), Path("json")}) {
        for (const std::string& other :
             {std::string("'EPS_SMUplink 02 01 D0 31'"), Path("line"), Path("json")}) {
            const Outcome outcome = Run("diff " + one + " " + other);
            EXPECT_EQ(outcome.status, 0) << one << other;
            EXPECT_EQ(outcome.output + outcome.errors, "");
        }
    }
}

TEST_F(ToolTest, DiffShowsChangedAddedAndMissingFields) {
    const Outcome outcome =
        Run("diff 'EPS_SMUplink 0201D031 2709 8000 0D02ABCD 000A00' "
            "'EPS_SMUplink 0201D011 28 04 03616263 2705 8000 0D02ABCE'");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(
        outcome.output,
        "PDNType: IPv4v6 (3) -> IPv4 (1)\n"
        "+ AccessPointName: 03 61 62 63\n"
        "ProtocolConfigurationOptions.ProtocolCfgs[0].Contents: AB CD -> AB CE\n"
        "- ProtocolConfigurationOptions.ProtocolCfgs[1].ProtocolId: IP address allocation via "
        "NAS signalling (10)\n"
        "- ProtocolConfigurationOptions.ProtocolCfgs[1].Contents: (0 bits)\n");
    EXPECT_EQ(outcome.errors, "");
}

// AUTHENTICATION FAILURE, TS 24.301, 8.2.5, whose parameter has 3 octets instead of 14.
TEST_F(ToolTest, DiffShowsWhatWasRefused) {
    const Outcome outcome = Run("diff 'EPS_MMUplink 075C15' 'EPS_MMUplink 075C15 3003010203'");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.output.find("+ AuthenticationFailureParameter: "), std::string::npos);
    EXPECT_TRUE(outcome.output.ends_with(", refused\n")) << outcome.output;
}

TEST_F(ToolTest, DiffOfMessagesOfDifferentTypes) {
    const Outcome outcome = Run("diff 'EPS_MMUplink 0760 15' 'EPS_MMUplink 075C 16'");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.output.substr(0, outcome.output.find("EMMCause")),
              "type: EMM_STATUS -> AUTHENTICATION_FAILURE\n");
    EXPECT_NE(outcome.output.find("(21) -> "), std::string::npos);
}

TEST_F(ToolTest, DiffOfAlternatives) {
    const std::string request = " 'EPS_MMUplink 0741 71 ";
    const Outcome outcome = Run("diff" + request + "0BF6 62F210 8001 01 12345678 02E0E0 0000'" +
                                request + "08 29 26 10 21 43 65 87 09 02E0E0 0000'");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.output.find("\n- EPSMobileIdentity.GUTI.M_TMSI: 305419896\n"),
              std::string::npos)
        << outcome.output;
    EXPECT_NE(outcome.output.find("\n+ EPSMobileIdentity.IMSI.IdentityDigit[0]: 2\n"),
              std::string::npos);
}

TEST_F(ToolTest, DiffSaysWhatIsNoMessage) {
    const std::string good = "'EPS_SMUplink 0201D031'";
    const auto expect = [&](const std::string& wrong, const std::string& words) {
        const Outcome outcome = Run("diff " + good + " " + wrong);
        EXPECT_EQ(outcome.status, 2) << wrong;
        EXPECT_EQ(outcome.output, "");
        EXPECT_NE(outcome.errors.find(words), std::string::npos) << outcome.errors;
    };
    expect(Path("none"), "cannot open");
    expect("'EPS_SMUplink 0g'", "HEX, character 2: 'g' is not a hexadecimal digit");
    expect("'EPS_SMUplink FFFF'", "no message");
    expect("'auto 70 00 00'", "no message");  // nor in any other function
    expect("'nothingofthekind 0201D031'", "cannot open");
    std::ofstream(Path("lines")) << "EPS_SMUplink 1 02\nEPS_SMUplink 1 02\n";
    expect(Path("lines"), "more than one line");
    std::ofstream(Path("json")) << "{\n}\n";
    expect(Path("json"), "has to have the key \"decoding\"");
    std::ofstream(Path("empty")) << "";
    expect(Path("empty"), "expected FUNCTION LENGTH HEX");
    expect("", "B");
}

}  // namespace
}  // namespace quorvane
