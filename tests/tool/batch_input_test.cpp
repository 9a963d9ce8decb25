// What `batch` takes: several files, comments, JSON objects. Every line that is none of these is
// answered once.

#include <fstream>
#include <string>

#include "tool/tool_runner.h"

namespace quorvane {
namespace {

using tool::test::JsonLines;
using tool::test::Outcome;
using tool::test::ToolTest;

TEST_F(ToolTest, BatchPassesOverBlankLinesAndComments) {
    const Outcome outcome = Run("batch",
                                "\xEF\xBB\xBF# first\n"
                                "EPC_UE2SS 0F87\r\n"
                                "\n"
                                " \t\r\n"
                                "  # EPC_UE2SS 0F87\n"
                                "EPC_UE2SS 0F87");
    EXPECT_EQ(outcome.status, 0);
    const auto lines = JsonLines(outcome.output);
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0]["line"].GetInt(), 2);
    EXPECT_EQ(lines[1]["line"].GetInt(), 6);
    EXPECT_EQ(Run("batch",
                  "\xEF\xBB\xBF"
                  "EPC_UE2SS 0F87\n")
                  .status,
              0);
    EXPECT_EQ(Run("batch",
                  "EPC_UE2SS 0F87\n\xEF\xBB\xBF"
                  "EPC_UE2SS 0F87\n")
                  .status,
              1);
}

TEST_F(ToolTest, BatchReadsSeveralFiles) {
    std::ofstream(Path("a")) << "\xEF\xBB\xBF"
                                "EPC_UE2SS 0F87\nNOPE 00\n";
    std::ofstream(Path("b")) << "# none\nEPC_UE2SS 0F87";
    const Outcome outcome = Run("batch " + Path("a") + " - " + Path("b"), "EPC_UE2SS 0F87\n");
    EXPECT_EQ(outcome.status, 1);
    const auto lines = JsonLines(outcome.output);
    ASSERT_EQ(lines.size(), 4U);
    const std::pair<std::string, int> places[] = {
        {Path("a"), 1}, {Path("a"), 2}, {"-", 1}, {Path("b"), 2}};
    for (std::size_t index = 0; index < lines.size(); ++index) {
        EXPECT_EQ(lines[index].MemberBegin()->name, "file");
        EXPECT_EQ(lines[index]["file"].GetString(), places[index].first);
        EXPECT_EQ(lines[index]["line"].GetInt(), places[index].second);
    }
    EXPECT_TRUE(lines[1].HasMember("error"));
}

TEST_F(ToolTest, BatchGoesOnBehindFilesThatCannotBeRead) {
    const Outcome outcome = Run("batch /nonexistent / -", "EPC_UE2SS 0F87\n");
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.errors,
              "quorvane: cannot open '/nonexistent': No such file or directory\n"
              "quorvane: cannot read '/': Is a directory\n");
    EXPECT_EQ(JsonLines(outcome.output).size(), 1U);
}

TEST_F(ToolTest, BatchTakesJsonObjects) {
    const Outcome outcome =
        Run("batch", R"({"fn":"epc_ue2ss","hex":"0x0F, 0x87","id":"one","time":12.5})"
                     "\n"
                     R"( {"id":2e0,"length":1,"hex":"0F 87","fn":"EPC_UE2SS"})"
                     "\n"
                     R"({"id":3,"fn":"EPC_UE2S","hex":"0F 87"})"
                     "\n"
                     R"({"id":4,"fn":"EPC_UE2SS","hex":"0F 8"})"
                     "\n"
                     "EPC_UE2SS 0F\n"
                     "{}\n");
    EXPECT_EQ(outcome.status, 1);
    const auto lines = JsonLines(outcome.output);
    ASSERT_EQ(lines.size(), 6U);
    EXPECT_TRUE(outcome.output.starts_with(
        R"({"line":1,"id":"one","fn":"EPC_UE2SS","length":2,"hex":"0x0F, 0x87","ret":1,)"));
    EXPECT_NE(outcome.output.find("\n{\"line\":2,\"id\":2e0,\"fn\":\"EPC_UE2SS\",\"length\":1,"),
              std::string::npos);
    EXPECT_NE(outcome.output.find(
                  R"({"line":3,"id":3,"error":"unknown function 'EPC_UE2S'; the nearest is )"
                  R"(EPC_UE2SS"})"),
              std::string::npos);
    EXPECT_NE(
        outcome.output.find(R"({"line":4,"id":4,"error":"hex, character 4: an octet needs two )"),
        std::string::npos);
    EXPECT_FALSE(lines[4].HasMember("id"));
    EXPECT_STREQ(lines[5]["error"].GetString(), "the key \"fn\" is missing");
}

}  // namespace
}  // namespace quorvane
