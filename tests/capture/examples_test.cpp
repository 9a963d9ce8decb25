// The examples of docs/captures.md, README.md and the tool's help, run over a capture made for
// them.

#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <string>

#include "capture/capture_writer.h"
#include "tool/page_examples.h"

namespace quorvane::capture {
namespace {

using test::CaptureWriter;
using test::GsmtapPacket;
using test::Hex;

class CaptureExamplesTest : public tool::test::ToolTest {
  protected:
    CaptureExamplesTest() {
        CaptureWriter writer;
        writer.Add(GsmtapPacket(test::LteNas(false), Hex("07 44 0F")));
        writer.Add(GsmtapPacket(test::Um(kUmRach, true), Hex("E5")));
        writer.Add(test::Ethernet(test::Ipv4(test::Udp(Hex("00"), 53))));
        std::ofstream(Path("log.pcap"), std::ios::binary) << writer.File();
    }

    /// What a shell in the folder of the capture shows for it.
    std::string Show(const std::string& command) {
        const tool::test::Outcome outcome =
            RunShell("cd " + Path(".") + " && { " + command + "; } 2>&1");
        EXPECT_EQ(outcome.status, 0) << command;
        return outcome.output;
    }

    void Check(const std::string& page) {
        for (const auto& example : tool::test::ExamplesOf(page, true)) {
            ExpectShown(example, Show(example.command));
        }
    }
};

TEST_F(CaptureExamplesTest, OfTheDocumentGiveWhatItShows) {
    Check("docs/captures.md");
}

TEST_F(CaptureExamplesTest, OfTheReadMeGiveWhatItShows) {
    Check("README.md");
}

TEST_F(CaptureExamplesTest, OfTheHelpFindsTheMessage) {
    const std::string help = Show("quorvane help capture");
    const std::string mark = "\n  $ ";
    ASSERT_NE(help.find(mark), std::string::npos) << help;
    std::istringstream in(help.substr(help.find(mark) + mark.size()));
    std::string line;
    std::getline(in, line);
    EXPECT_NE(Show(line).find("ATTACH_REJECT"), std::string::npos) << line;
}

}  // namespace
}  // namespace quorvane::capture
