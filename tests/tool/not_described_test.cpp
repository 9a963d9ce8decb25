// What the tool says of decodings and families that the build does not describe. No family is named
// here, so that the tests run in every build.

#include <sstream>
#include <string>

#include "families/family.h"
#include "quorvane/decode.h"
#include "tool/tool_runner.h"

namespace quorvane {
namespace {

using tool::test::JsonLines;
using tool::test::Outcome;
using tool::test::ToolTest;

TEST_F(ToolTest, ListShowsEachDecodingOnALine) {
    const Outcome outcome = Run("list");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.errors, "");
    std::istringstream in(outcome.output);
    std::string line;
    for (const DecodingInfo& info : Decodings()) {
        ASSERT_TRUE(std::getline(in, line));
        EXPECT_EQ(line.substr(0, line.find(' ')), info.name);
        const std::string state = info.described ? "" : "; not described in this build";
        EXPECT_TRUE(line.ends_with(std::string(info.purpose) + state)) << line;
    }
    EXPECT_FALSE(std::getline(in, line));
}

TEST_F(ToolTest, DecodeTellsWhatIsNotDescribedFromUnknownMessages) {
    for (const DecodingInfo& info : Decodings()) {
        if (info.described) {
            continue;
        }
        const std::string name(info.name);
        const Outcome outcome = Run("decode " + name + " FF FF");
        EXPECT_EQ(outcome.status, 3) << name;
        EXPECT_TRUE(outcome.output.starts_with("Failed to decode \"")) << outcome.output;
        EXPECT_EQ(outcome.errors,
                  "quorvane: the messages of " + name + " are not described in this build\n");
    }
}

TEST_F(ToolTest, BatchMarksWhatIsNotDescribed) {
    std::string input;
    for (const DecodingInfo& info : Decodings()) {
        input += std::string(info.name) + " 2 FFFF\n";
    }
    const Outcome outcome = Run("batch", input);
    EXPECT_EQ(outcome.status, 0);
    const auto lines = JsonLines(outcome.output);
    ASSERT_EQ(lines.size(), Decodings().size());
    for (std::size_t index = 0; index < lines.size(); ++index) {
        const DecodingInfo& info = Decodings()[index];
        EXPECT_EQ(lines[index].HasMember("described"), !info.described) << info.name;
        const bool otherDirection = lines[index].HasMember("otherDirection");
        EXPECT_EQ(lines[index].MemberCount(), 7U + !info.described + otherDirection) << info.name;
        if (!info.described) {
            EXPECT_EQ(lines[index]["ret"].GetInt(), 0) << info.name;
            EXPECT_FALSE(lines[index]["described"].GetBool()) << info.name;
        }
    }
}

TEST_F(ToolTest, CatalogueOfAFamilyWithoutDescriptionSaysSo) {
    for (const families::FamilyInfo& family : families::KnownFamilies()) {
        const std::string name(family.name);
        const Outcome outcome = Run("catalogue " + name);
        EXPECT_EQ(outcome.status, family.tables == nullptr ? 2 : 0) << name;
        EXPECT_EQ(outcome.errors, family.tables == nullptr
                                      ? "quorvane: the family " + name + ", " +
                                            std::string(family.title) +
                                            ", is not described in this build\n"
                                      : "");
    }
}

}  // namespace
}  // namespace quorvane
