// What the tool says of itself: help, version.

#include <sstream>
#include <string>
#include <vector>

#include "families/family.h"
#include "quorvane/version.h"
#include "support/family_files.h"
#include "tool/tool_runner.h"

namespace quorvane {
namespace {

using tool::test::Outcome;
using tool::test::ToolTest;

class HelpTest : public ToolTest {
  protected:
    /// The names of the commands, out of the tool's own list.
    std::vector<std::string> Commands() {
        std::istringstream in(Run("help").output);
        std::vector<std::string> names;
        bool inList = false;
        for (std::string line; std::getline(in, line);) {
            if (line == "Subcommands:") {
                inList = true;
            } else if (inList && line.starts_with("  ") && line[2] != ' ') {
                names.push_back(line.substr(2, line.find(' ', 2) - 2));
            }
        }
        return names;
    }
};

TEST_F(HelpTest, IsTheSameByCommandAndByOption) {
    EXPECT_EQ(Run("help").output, Run("--help").output);
    EXPECT_EQ(Run("help").status, 0);
    EXPECT_EQ(Commands().size(), 11U);
    for (const std::string& command : Commands()) {
        const Outcome help = Run("help " + command);
        EXPECT_EQ(help.status, 0) << command;
        EXPECT_EQ(help.output, Run(command + " --help").output) << command;
    }
}

TEST_F(HelpTest, NamesTheCommandsThatThereAre) {
    for (const char* arguments : {"help decod", "decod", "decod EPC_UE2SS 0F87"}) {
        const Outcome outcome = Run(arguments);
        EXPECT_EQ(outcome.status, 2);
        EXPECT_EQ(outcome.output, "");
        EXPECT_TRUE(outcome.errors.starts_with(
            "quorvane: unknown command 'decod'; the commands are list, decode, batch, "))
            << outcome.errors;
    }
}

TEST_F(HelpTest, HasAnExampleOfEachCommandThatRuns) {
    const std::string mark = "Example:\n  $ ";
    for (const std::string& command : Commands()) {
        const std::string help = Run("help " + command).output;
        const std::size_t begin = help.find(mark);
        ASSERT_NE(begin, std::string::npos) << command;
        const std::string line = help.substr(
            begin + mark.size(), help.find('\n', begin + mark.size()) - begin - mark.size());
        EXPECT_NE((line + " ").find("quorvane " + command + " "), std::string::npos) << line;
        if (command == "capture") {
            continue;  // run by tests/capture/examples_test.cpp, with a capture
        }
        const Outcome outcome = RunShell(line);
        EXPECT_EQ(outcome.status, command == "diff" ? 1 : 0) << line << "\n" << outcome.errors;
        EXPECT_NE(outcome.output, "") << line;
    }
}

TEST_F(HelpTest, VersionNamesFamiliesAndCaptures) {
    const Outcome outcome = Run("--version");
    std::string families;
    for (const families::FamilyInfo& family : families::KnownFamilies()) {
        if (family.tables != nullptr) {
            families += (families.empty() ? "" : ", ") + std::string(family.name);
        }
    }
    const std::string start =
        std::string("quorvane ") + Version() + "\nfamilies: " + families + "\n";
    EXPECT_TRUE(outcome.output.starts_with(start)) << outcome.output;
#ifdef QUORVANE_CAPTURE
    EXPECT_TRUE(outcome.output.ends_with("\ncaptures: read\n")) << outcome.output;
#else
    EXPECT_TRUE(outcome.output.ends_with("\ncaptures: left out\n")) << outcome.output;
#endif
}

TEST_F(HelpTest, VersionIsThatOfThePackages) {
    const std::string start = std::string("quorvane (") + Version() + ")";
    EXPECT_TRUE(test::SourceText("debian/changelog").starts_with(start)) << start;
}

}  // namespace
}  // namespace quorvane
