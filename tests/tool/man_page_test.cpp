// The man page tells of the commands and options that the tool has, and of no others.

#include <regex>
#include <set>
#include <sstream>
#include <string>

#include "support/family_files.h"
#include "tool/tool_runner.h"

namespace quorvane {
namespace {

using tool::test::ToolTest;

using Names = std::set<std::string>;

/// What the expression's group finds in the text.
Names Found(const std::string& text, const std::string& expression) {
    Names names;
    const std::regex pattern(expression, std::regex::ECMAScript | std::regex::multiline);
    for (std::sregex_iterator match(text.begin(), text.end(), pattern), end; match != end;
         ++match) {
        names.insert((*match)[1]);
    }
    return names;
}

/// What stands behind the line `heading`, up to the next one that begins with `next`.
std::string Section(const std::string& text, const std::string& heading, const std::string& next) {
    const std::size_t begin = text.find("\n" + heading + "\n");
    if (begin == std::string::npos) {
        ADD_FAILURE() << "no " << heading;
        return "";
    }
    const std::size_t behind = begin + heading.size() + 1;
    return text.substr(behind, text.find("\n" + next, behind) - behind);
}

class ManPageTest : public ToolTest {
  protected:
    const std::string page = test::SourceText("docs/man/quorvane.1.scd");
};

constexpr char kHelpOption[] = "^ +(?:-h,)?(--[a-z-]+)";
constexpr char kPageOption[] = "^(?:\\*-h\\*, )?\\*(--[a-z-]+)\\*";

TEST_F(ManPageTest, HasTheCommands) {
    EXPECT_EQ(Found(Section(page, "# COMMANDS", "# "), "^## ([a-z]+)$"),
              Found(Section(Run("help").output, "Subcommands:", "\n"), "^  ([a-z]+) "));
    EXPECT_EQ(Found(Section(page, "# OPTIONS", "# "), kPageOption),
              Found(Run("help").output, kHelpOption));
}

TEST_F(ManPageTest, HasTheOptionsOfEachCommand) {
    for (const std::string& command : Found(page, "^## ([a-z]+)$")) {
        Names options = Found(Run("help " + command).output, kHelpOption);
        options.erase("--help");
        EXPECT_EQ(Found(Section(page, "## " + command, "#"), kPageOption), options) << command;
    }
}

}  // namespace
}  // namespace quorvane
