#pragma once

// The examples of the README, the documents and the man page: what a block shows behind a line "$
// ..." with the tool is what the tool prints. A last line "..." stands for more.

#include <fstream>
#include <string>
#include <vector>

#include "tool/tool_runner.h"

namespace quorvane::tool::test {

struct Example {
    std::string command;
    std::string output;
};

/// Those over a capture, log.pcap in the current folder, or the others.
inline std::vector<Example> ExamplesOf(const std::string& page, bool overCapture) {
    std::ifstream in(QUORVANE_SOURCE_DIR "/" + page);
    std::vector<Example> all;
    bool inBlock = false;
    bool inExample = false;
    for (std::string line; std::getline(in, line);) {
        if (line.starts_with("```")) {
            inBlock = !inBlock;
            inExample = false;
        } else if (inBlock && line.starts_with("$ ")) {
            inExample = line.find("quorvane ") != std::string::npos &&
                        (line.find("log.pcap") != std::string::npos) == overCapture;
            if (inExample) {
                all.push_back({line.substr(2), ""});
            }
        } else if (inBlock && inExample) {
            all.back().output += line + "\n";
        }
    }
    EXPECT_FALSE(all.empty()) << page;
    return all;
}

inline void ExpectShown(const Example& example, const std::string& shown) {
    const std::string more = "...\n";
    if (example.output.ends_with(more)) {
        const std::string start = example.output.substr(0, example.output.size() - more.size());
        EXPECT_TRUE(shown.starts_with(start)) << example.command << "\n" << shown;
    } else if (!example.output.empty()) {
        EXPECT_EQ(shown, example.output) << example.command;
    }
}

}  // namespace quorvane::tool::test
