// `batch` on several threads, and what becomes of its answers when the output or the run ends
// early.

#include <chrono>
#include <fstream>
#include <iterator>
#include <regex>
#include <string>

#include "tool/tool_runner.h"

namespace quorvane {
namespace {

using tool::test::JsonLines;
using tool::test::Outcome;
using tool::test::ReadAll;
using tool::test::ToolTest;

// Shells let what they start in the background ignore interrupts.
const std::string kInterruptible = "env --default-signal=INT,TERM " QUORVANE_TOOL_PATH;

/// Many lines: good, unknown and bad ones, comments and one that is too long.
std::string ManyLines() {
    std::string text;
    for (int index = 0; index < 20000; ++index) {
        switch (index % 10) {
            case 3:
                text += "# " + std::to_string(index) + "\n";
                break;
            case 5:
                text += "EPC_UE2SS FFFF\n";
                break;
            case 7:
                text += "NOPE 00\n";
                break;
            case 8:
                text += R"({"fn":"EPC_SS2UE","hex":"0F84","id":)" + std::to_string(index) + "}\n";
                break;
            default:
                text += "EPC_UE2SS 2 0F87\n";
        }
        if (index == 12345) {
            text += std::string(700000, 'x') + "\n";
        }
    }
    return text;
}

TEST_F(ToolTest, BatchWithJobsAnswersTheSame) {
    std::ofstream(Path("lines")) << ManyLines();
    const std::string files = " " + Path("lines") + " " + Path("lines");
    const Outcome one = Run("batch --summary" + files);
    EXPECT_EQ(one.status, 1);
    for (const char* jobs : {"2", "3", "0"}) {
        const Outcome several = Run("batch --summary --jobs " + std::string(jobs) + files);
        EXPECT_EQ(several.status, 1) << jobs;
        EXPECT_TRUE(several.output == one.output) << jobs;
        EXPECT_EQ(several.errors, one.errors) << jobs;
    }
    EXPECT_EQ(Run("batch --jobs -1").status, 2);
    EXPECT_EQ(Run("batch --jobs 2", "").output, "");
}

// Answers of what is there are shown before more input is waited for.
TEST_F(ToolTest, BatchAnswersAheadOfAPause) {
    for (const char* jobs : {"1", "2"}) {
        const Outcome outcome = RunShell(
            "mkfifo " + Path("pipe") + jobs + "; (echo EPC_UE2SS 0F87; cat " + Path("pipe") + jobs +
            ") | quorvane batch --jobs " + jobs + " | { read -r line; echo go >" + Path("pipe") +
            jobs + "; printf '%s\\n' \"$line\"; cat; }");
        EXPECT_EQ(JsonLines(outcome.output).size(), 2U) << jobs;
    }
}

TEST_F(ToolTest, BatchShowsItsProgressAndTakesItAway) {
    std::ofstream(Path("lines")) << ManyLines();
    const auto start = std::chrono::steady_clock::now();
    const std::string shown = ShownOnTerminal(QUORVANE_TOOL_PATH " batch --summary " +
                                              Path("lines") + " | { sleep 0.5; cat >/dev/null; }");
    const auto passed = std::chrono::steady_clock::now() - start;
    const std::regex line(R"(\r\d+ lines, \d+ lines/s, .* left)");
    EXPECT_TRUE(std::regex_search(shown, line)) << shown;
    EXPECT_LE(std::distance(std::sregex_iterator(shown.begin(), shown.end(), line), {}),
              passed / std::chrono::milliseconds(200) + 1);
    EXPECT_NE(shown.find("\r\x1B[Kmessages "), std::string::npos) << shown;
}

TEST_F(ToolTest, BatchShowsNoProgressBesideAnswersOnTheTerminal) {
    const std::string shown = ShownOnTerminal(
        "(echo EPC_UE2SS 0F87; sleep 0.3; echo EPC_UE2SS 0F87) | " QUORVANE_TOOL_PATH " batch");
    EXPECT_EQ(shown.find("lines/s"), std::string::npos) << shown;
    EXPECT_NE(shown.find("{\"line\":2,"), std::string::npos) << shown;
}

TEST_F(ToolTest, BatchTellsOfAFullDisk) {
    std::ofstream(Path("lines")) << ManyLines();
    for (const char* jobs : {"1", "2"}) {
        const Outcome outcome = RunShell("quorvane batch --jobs " + std::string(jobs) + " " +
                                         Path("lines") + " >/dev/full");
        EXPECT_EQ(outcome.status, 2) << jobs;
        EXPECT_EQ(outcome.errors,
                  "quorvane: cannot write to standard output: No space left on device\n");
    }
}

TEST_F(ToolTest, BatchEndsWithItsReader) {
    std::ofstream(Path("lines")) << ManyLines();
    for (const char* jobs : {"1", "2"}) {
        const Outcome outcome =
            RunShell("{ quorvane batch --jobs " + std::string(jobs) + " " + Path("lines") +
                     "; echo $? >" + Path("status") + "; } | head -1");
        EXPECT_EQ(JsonLines(outcome.output).size(), 1U) << jobs;
        EXPECT_NE(ReadAll(Path("status")), "0\n") << jobs;
    }
}

/// Starts a batch in the background behind `feed`, waits until it has written as many lines, and
/// interrupts it.
std::string Interrupted(const std::string& feed, const std::string& arguments,
                        const std::string& answers, int lines, const std::string& signal,
                        const std::string& meanwhile = ":") {
    return ": >" + answers + "; " + feed + kInterruptible + " batch " + arguments + " >" + answers +
           " & " + meanwhile + "; until [ $(wc -l <" + answers + ") -ge " + std::to_string(lines) +
           " ] || [ $((tries += 1)) -gt 3000 ]; do sleep 0.01; done; kill -" + signal +
           " $!; wait $!";
}

// The lines that were read are answered, and nothing behind them.
TEST_F(ToolTest, BatchAnswersWholeLinesWhenInterrupted) {
    const std::string pipe = Path("pipe");
    const std::string feed =
        "exec 3>" + pipe + "; printf 'EPC_UE2SS 0F87\\nEPC_UE2SS 0F87\\nEPC_UE2' >&3";
    for (const std::string jobs : {"1", "2"}) {
        for (const auto& [signal, status] : {std::pair("INT", 130), std::pair("TERM", 143)}) {
            const std::string arguments = "--jobs " + jobs + " " + pipe;
            const Outcome outcome =
                RunShell("rm -f " + pipe + "; mkfifo " + pipe + "; " +
                         Interrupted("", arguments, Path("answers"), 2, signal, feed));
            EXPECT_EQ(outcome.status, status) << jobs;
            EXPECT_EQ(JsonLines(ReadAll(Path("answers"))).size(), 2U) << jobs;
            EXPECT_EQ(outcome.errors, "quorvane: interrupted behind line 2 of '" + pipe + "'\n");
        }
    }
}

TEST_F(ToolTest, BatchInterruptedInTheMidstEndsWithAWholeLine) {
    for (const std::string jobs : {"1", "2"}) {
        const Outcome outcome = RunShell(
            Interrupted("yes EPC_UE2SS 0F87 | ", "--jobs " + jobs, Path("answers"), 1, "INT"));
        EXPECT_EQ(outcome.status, 130) << jobs;
        const std::string answers = ReadAll(Path("answers"));
        EXPECT_TRUE(answers.ends_with("}\n")) << jobs;
        const std::string last = answers.substr(answers.rfind('\n', answers.size() - 2) + 1);
        const auto answer = JsonLines(last);
        ASSERT_EQ(answer.size(), 1U) << jobs;
        // All lines that were read are answered, and the last one is told.
        EXPECT_EQ(outcome.errors, "quorvane: interrupted behind line " +
                                      std::to_string(answer[0]["line"].GetInt()) + " of '-'\n");
    }
}

}  // namespace
}  // namespace quorvane
