// The examples of the README, the documents and the man page: what a block shows behind a line "$
// ..." with the tool is what the tool prints. A last line "..." stands for more.

#include <fstream>
#include <string>
#include <vector>

#include "tool/tool_runner.h"

namespace quorvane {
namespace {

using tool::test::Outcome;
using tool::test::ToolTest;

struct Example {
    std::string command;
    std::string output;
};

std::vector<Example> ExamplesOf(const std::string& page) {
    std::ifstream in(QUORVANE_SOURCE_DIR "/" + page);
    std::vector<Example> examples;
    bool inBlock = false;
    bool inExample = false;
    for (std::string line; std::getline(in, line);) {
        if (line.starts_with("```")) {
            inBlock = !inBlock;
            inExample = false;
        } else if (inBlock && line.starts_with("$ ")) {
            inExample = line.find("quorvane ") != std::string::npos;
            if (inExample) {
                examples.push_back({line.substr(2), ""});
            }
        } else if (inBlock && inExample) {
            examples.back().output += line + "\n";
        }
    }
    return examples;
}

class Examples : public ToolTest {
  protected:
    void Check(const std::string& page) {
        const std::vector<Example> examples = ExamplesOf(page);
        EXPECT_FALSE(examples.empty()) << page;
        for (const Example& example : examples) {
            const Outcome outcome = RunShell("{ " + example.command + "; } 2>&1");
            const std::string more = "...\n";
            if (example.output.ends_with(more)) {
                const std::string start =
                    example.output.substr(0, example.output.size() - more.size());
                EXPECT_TRUE(outcome.output.starts_with(start))
                    << page << ": " << example.command << "\n"
                    << outcome.output;
            } else if (!example.output.empty()) {
                EXPECT_EQ(outcome.output, example.output) << page << ": " << example.command;
            }
        }
    }
};

TEST_F(Examples, OfTheReadme) {
    Check("README.md");
}

TEST_F(Examples, OfLogs) {
    Check("docs/logs.md");
}

TEST_F(Examples, OfTheManPage) {
    Check("docs/man/quorvane.1.scd");
}

}  // namespace
}  // namespace quorvane
