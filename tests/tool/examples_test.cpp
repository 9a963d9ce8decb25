// The examples of the README, the documents and the man page, but for those over captures.

#include <string>

#include "tool/page_examples.h"

namespace quorvane {
namespace {

using tool::test::ToolTest;

class Examples : public ToolTest {
  protected:
    void Check(const std::string& page) {
        for (const auto& example : tool::test::ExamplesOf(page, false)) {
            ExpectShown(example, RunShell("{ " + example.command + "; } 2>&1").output);
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
