// The examples of docs/captures.md, README.md and the tool's help, run over a capture made for
// them.

#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <vector>

#include "capture/capture_writer.h"
#include "support/family_files.h"
#include "tool/tool_runner.h"

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
    std::string Show(std::string command) {
        command.replace(0, command.find(' '), QUORVANE_TOOL_PATH);
        const std::string line =
            "cd " + Path(".") + " && (" + command + ") >" + Path("shown") + " 2>&1";
        EXPECT_EQ(std::system(line.c_str()), 0) << command;
        return tool::test::ReadAll(Path("shown"));
    }
};

TEST_F(CaptureExamplesTest, OfTheDocumentGiveWhatItShows) {
    std::istringstream in(quorvane::test::SourceText("docs/captures.md"));
    std::string line;
    int examples = 0;
    while (std::getline(in, line)) {
        if (!line.starts_with("$ quorvane capture")) {
            continue;
        }
        const std::string command = line.substr(2);
        std::string expected;
        while (std::getline(in, line) && line != "```") {
            expected += line + "\n";
        }
        EXPECT_EQ(Show(command), expected) << command;
        ++examples;
    }
    EXPECT_EQ(examples, 4);
}

TEST_F(CaptureExamplesTest, OfTheReadMeFindTheMessage) {
    std::istringstream in(quorvane::test::SourceText("README.md"));
    int examples = 0;
    for (std::string line; std::getline(in, line);) {
        if (line.starts_with("quorvane capture")) {
            const std::string shown = Show(line.substr(0, line.find("  ")));
            EXPECT_NE(shown.find("ATTACH_REJECT"), std::string::npos) << shown;
            ++examples;
        }
    }
    EXPECT_EQ(examples, 1);
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
