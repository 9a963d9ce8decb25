// `quorvane encode` as a user runs it. Octets and names are those of TS 24.301, 8.3.20.

#include <fstream>
#include <string>

#include "tool/tool_runner.h"

namespace quorvane {
namespace {

using tool::test::Outcome;
using tool::test::ToolTest;

constexpr const char* kRequest =
    R"({"type":"PDN_CONNECTIVITY_REQUEST","fields":{"EPSBearerIdentity":{"value":0},)"
    R"("ProcedureTransactionIdentity":{"value":1},"RequestType":{"value":1},"PDNType":{"value":)";

std::string Request(const std::string& type) {
    return kRequest + type + "}}}\n";
}

TEST_F(ToolTest, EncodeWritesWhatDecodeReads) {
    const std::string json = Run("decode --json EPS_SMUplink 0201D031280403616263").output;
    const Outcome outcome = Run("encode EPS_SMUplink", json);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.output, "0201D031280403616263\n");
    EXPECT_EQ(outcome.errors, "");
    std::ofstream(Path("json")) << json << "\n" << json;
    EXPECT_EQ(Run("encode EPS_SMUplink " + Path("json")).output,
              "0201D031280403616263\n0201D031280403616263\n");
}

TEST_F(ToolTest, EncodeTakesAnObjectOverManyLines) {
    std::string json = Request("3");
    for (std::size_t at = 0; (at = json.find_first_of(",{", at)) != std::string::npos; at += 2) {
        json.insert(at + 1, "\n");
    }
    EXPECT_EQ(Run("encode EPS_SMUplink", json).output, "0201D031\n");
    const Outcome cut = Run("encode EPS_SMUplink", json.substr(0, json.size() / 2));
    EXPECT_EQ(cut.status, 1);
    EXPECT_EQ(cut.errors.substr(0, 28), "quorvane: no JSON, character");
}

TEST_F(ToolTest, EncodeGoesOnBehindBadLines) {
    const Outcome outcome =
        Run("encode EPS_SMUplink", Request("1") + Request("16") + "{\n" + Request("2") +
                                       R"({"type":"PDN_CONNECTIVITY_REQUEST","fields":{}})");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.output, "0201D011\n0201D021\n");
    EXPECT_EQ(outcome.errors,
              "quorvane: line 2: PDNType: 16 is too large for its 4 bits, up to 15\n"
              "quorvane: line 3: no JSON, character 2: Missing a name for object member.\n"
              "quorvane: line 5: RequestType: has to be there and was never set\n");
}

TEST_F(ToolTest, EncodeSaysNothingInInvalidUtf8) {
    const Outcome outcome = Run("encode EPS_SMUplink", "{\"type\":\"\xff\",\"fields\":{}}");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.errors.find('\xff'), std::string::npos);
}

// A line may have 655,360 characters, and so may an object over many lines.
TEST_F(ToolTest, EncodeRefusesWhatIsTooLong) {
    const std::string blanks(655360, ' ');
    const Outcome line = Run("encode EPS_SMUplink", Request("1") + blanks + " \n" + Request("2"));
    EXPECT_EQ(line.status, 1);
    EXPECT_EQ(line.output, "0201D011\n0201D021\n");
    EXPECT_EQ(line.errors, "quorvane: line 2: the line is longer than 655360 characters\n");
    const Outcome last = Run("encode EPS_SMUplink", Request("1") + blanks + " ");
    EXPECT_EQ(last.output, "0201D011\n");
    EXPECT_EQ(last.errors, line.errors);
    const Outcome object = Run("encode EPS_SMUplink", "{\n" + blanks + "\n" + Request("1"));
    EXPECT_EQ(object.status, 1);
    EXPECT_EQ(object.output, "");
    EXPECT_EQ(object.errors, "quorvane: the object is longer than 655360 characters\n");
}

TEST_F(ToolTest, EncodeWritesManyMessages) {
    constexpr std::size_t kMany = 8000;  // 72,000 octets of output
    std::string json;
    std::string expected;
    for (std::size_t count = 0; count < kMany; ++count) {
        json += Request("1");
        expected += "0201D011\n";
    }
    const Outcome outcome = Run("encode EPS_SMUplink", json);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.output, expected);
}

TEST_F(ToolTest, EncodeNamesWrongUse) {
    // A folder can be opened, but not read.
    const Outcome folder = Run("encode EPS_SMUplink " + Path(""));
    EXPECT_EQ(folder.status, 2);
    EXPECT_EQ(folder.errors, "quorvane: cannot read '" + Path("") + "': Is a directory\n");
    const Outcome decoded = Run("decode EPS_SMUplink --file " + Path(""));
    EXPECT_EQ(decoded.status, 2);
    EXPECT_EQ(decoded.errors, "quorvane: cannot read '" + Path("") + "': Is a directory\n");

    EXPECT_EQ(Run("encode EPS_SM").status, 2);
    EXPECT_EQ(Run("encode EPS_SMUplink " + Path("none")).status, 2);
    EXPECT_EQ(Run("encode EPS_SMUplink", "").status, 0);
}

}  // namespace
}  // namespace quorvane
