// What each command leaves when its output or its run ends early. `batch` with its threads has
// more in batch_jobs_test.cpp, `capture` in tests/capture/capture_command_test.cpp.

#include <algorithm>
#include <fstream>
#include <string>
#include <vector>

#include "tool/tool_runner.h"

namespace quorvane {
namespace {

using tool::test::Outcome;
using tool::test::ReadAll;
using tool::test::ToolTest;

const std::string kRequest =
    R"({"type":"PDN_CONNECTIVITY_REQUEST","fields":{"EPSBearerIdentity":{"value":0},)"
    R"("ProcedureTransactionIdentity":{"value":1},"RequestType":{"value":1},"PDNType":{"value":3}}})";

class Ending : public ToolTest {
  protected:
    Ending() {
        std::ofstream(Path("lines")) << Repeated("EPC_UE2SS 0F87\n");
        std::ofstream(Path("objects")) << Repeated(kRequest + "\n");
    }

    static std::string Repeated(const std::string& line) {
        std::string text;
        for (int index = 0; index < 20000; ++index) {
            text += line;
        }
        return text;
    }

    /// Command lines of all commands that read or make messages.
    [[nodiscard]] std::vector<std::string> Commands() const {
        std::vector<std::string> commands = LongCommands();
        commands.insert(commands.end(), {"decode EPC_UE2SS 0F87", "decode --json EPC_UE2SS 0F87",
                                         "diff 'EPC_UE2SS 0F87' 'EPC_UE2SS 0F83'"});
        return commands;
    }

    /// Those that write more than a pipe holds.
    [[nodiscard]] std::vector<std::string> LongCommands() const {
        return {"batch " + Path("lines"), "batch --jobs 2 " + Path("lines"),
                "encode EPS_SMUplink " + Path("objects"), "generate EPC_UE2SS 20000"};
    }
};

TEST_F(Ending, WithAFullDiskIsTold) {
    for (const std::string& command : Commands()) {
        const Outcome outcome = RunShell("quorvane " + command + " >/dev/full");
        EXPECT_EQ(outcome.status, 2) << command;
        EXPECT_EQ(outcome.errors,
                  "quorvane: cannot write to standard output: No space left on device\n")
            << command;
    }
}

// Blocks of ulimit are 512 octets in some shells, 1024 in others.
TEST_F(Ending, WithAFullDiskLeavesWholeLines) {
    for (const std::string& command : LongCommands()) {
        const std::string all = Run(command).output;
        ASSERT_GT(all.size(), 100'000U) << command;
        for (const char* redirection : {">", ">>"}) {
            const Outcome outcome =
                RunShell("rm -f " + Path("answers") + "; (trap '' XFSZ; ulimit -f 97; quorvane " +
                         command + " " + redirection + Path("answers") + ")");
            EXPECT_EQ(outcome.status, 2) << command;
            EXPECT_EQ(outcome.errors,
                      "quorvane: cannot write to standard output: File too large\n");
            const std::string answers = ReadAll(Path("answers"));
            EXPECT_GT(answers.size(), 97U * 512 - 1000) << command;
            EXPECT_TRUE(answers.ends_with('\n')) << command;
            EXPECT_TRUE(all.starts_with(answers)) << command;
        }
    }
}

TEST_F(Ending, OfTheReaderIsTold) {
    for (const std::string& command : LongCommands()) {
        const Outcome outcome =
            RunShell("{ quorvane " + command + "; echo $? >" + Path("status") + "; } | head -1");
        EXPECT_EQ(std::count(outcome.output.begin(), outcome.output.end(), '\n'), 1) << command;
        EXPECT_EQ(ReadAll(Path("status")), "141\n") << command;  // 128 + SIGPIPE
    }
    // Some start programs with the signal ignored.
    for (const std::string& command : Commands()) {
        const std::string pipe = Path("pipe");
        const Outcome outcome =
            RunShell("rm -f " + pipe + "; mkfifo " + pipe + "; (exec 4<>" + pipe + " 3>" + pipe +
                     " 4<&-; trap '' PIPE; quorvane " + command + " >&3)");
        EXPECT_EQ(outcome.status, 2) << command;
        EXPECT_EQ(outcome.errors, "quorvane: cannot write to standard output: Broken pipe\n")
            << command;
    }
}

// Shells let what they start in the background ignore interrupts.
TEST_F(Ending, ByAnInterruptLeavesWholeLinesAndIsTold) {
    const std::vector<std::pair<std::string, std::string>> endless = {
        {"yes '" + kRequest + "' | ", "encode EPS_SMUplink"},
        {"", "generate EPC_UE2SS 1000000000000"}};
    for (const auto& [feed, command] : endless) {
        for (const auto& [signal, status] : {std::pair("INT", 130), std::pair("TERM", 143)}) {
            const std::string answers = Path("answers");
            const Outcome outcome = RunShell(
                ": >" + answers + "; " + feed + "env --default-signal=INT,TERM " +
                QUORVANE_TOOL_PATH " " + command + " >" + answers + " & until [ -s " + answers +
                " ] || [ $((tries += 1)) -gt 3000 ]; do sleep 0.01; done; kill -" + signal +
                " $!; wait $!");
            EXPECT_EQ(outcome.status, status) << command;
            const std::string text = ReadAll(answers);
            EXPECT_TRUE(text.ends_with('\n')) << command;
            const std::string count = std::to_string(std::count(text.begin(), text.end(), '\n'));
            EXPECT_EQ(outcome.errors,
                      "quorvane: interrupted behind " +
                          (feed.empty() ? "message " + count : "line " + count + " of '-'") + "\n");
        }
    }
}

}  // namespace
}  // namespace quorvane
