#pragma once

// The command-line tool, run by a shell.

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <rapidjson/document.h>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace quorvane::tool::test {

/// What a run of the tool left.
struct Outcome {
    int status = -1;
    std::string output;
    std::string errors;
};

inline std::string ReadAll(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

/// A folder of its own for each test.
class ToolTest : public testing::Test {
  protected:
    ToolTest()
        : folder_(std::filesystem::path(testing::TempDir()) /
                  ("quorvane_tool_" + std::to_string(getpid()))) {
        std::filesystem::create_directories(folder_);
    }
    ~ToolTest() override { std::filesystem::remove_all(folder_); }

    /// `arguments` as a shell sees them.
    Outcome Run(const std::string& arguments, const std::string& input = "") {
        return RunCommand(std::string(QUORVANE_TOOL_PATH) + " " + arguments, input);
    }

    /// A command line that calls the tool `quorvane`.
    Outcome RunShell(const std::string& line) {
        return RunCommand("quorvane() { " QUORVANE_TOOL_PATH " \"$@\"; }; { " + line + "; }", "");
    }

    /// What a terminal shows of a command line, which calls the tool by QUORVANE_TOOL_PATH.
    std::string ShownOnTerminal(const std::string& line) {
        return RunShell("script -qec '" + line + "' /dev/null").output;
    }

    [[nodiscard]] std::string Path(const std::string& name) const { return folder_ / name; }

  private:
    Outcome RunCommand(const std::string& line, const std::string& input) {
        std::ofstream(folder_ / "in", std::ios::binary) << input;
        const std::string command =
            line + " <" + Path("in") + " >" + Path("out") + " 2>" + Path("err");
        const int status = std::system(command.c_str());
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, ReadAll(folder_ / "out"),
                ReadAll(folder_ / "err")};
    }

    std::filesystem::path folder_;
};

/// The lines of a batch's output.
inline std::vector<rapidjson::Document> JsonLines(const std::string& text) {
    std::vector<rapidjson::Document> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        lines.emplace_back().Parse(line.c_str());
        EXPECT_FALSE(lines.back().HasParseError()) << line;
    }
    return lines;
}

}  // namespace quorvane::tool::test
