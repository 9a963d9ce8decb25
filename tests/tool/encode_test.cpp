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

TEST_F(ToolTest, EncodeNamesWrongUse) {
    EXPECT_EQ(Run("encode EPS_SM").status, 2);
    EXPECT_EQ(Run("encode EPS_SMUplink " + Path("none")).status, 2);
    EXPECT_EQ(Run("encode EPS_SMUplink", "").status, 0);
}

}  // namespace
}  // namespace quorvane
