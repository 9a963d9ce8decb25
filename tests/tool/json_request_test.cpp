#include "tools/json_request.h"

#include <gtest/gtest.h>

namespace quorvane::tool {
namespace {

TEST(JsonRequest, HasFunctionOctetsLengthAndId) {
    JsonRequest request;
    EXPECT_EQ(ParseJsonRequest(R"({"fn":"A\u0042","hex":"0F 87","length":-3,"id":7})", request),
              "");
    EXPECT_EQ(request.function, "AB");
    EXPECT_EQ(request.hex, "0F 87");
    EXPECT_EQ(request.length, -3);
    EXPECT_EQ(request.id, "7");
    EXPECT_EQ(ParseJsonRequest(R"( {"hex":"","fn":"A"} )", request), "");
    EXPECT_FALSE(request.length);
    EXPECT_EQ(request.id, "");
    EXPECT_EQ(ParseJsonRequest(R"({"fn":"A","length":0})", request), "");
    EXPECT_EQ(ParseJsonRequest(R"({"fn":"A","x":{"hex":[1,{"fn":2}]},"hex":"00"})", request), "");
    EXPECT_EQ(request.hex, "00");
}

TEST(JsonRequest, KeepsTheIdAsItCame) {
    for (const char* id : {"\"\"", "\"a\\u0041\\n\\\"\"", "0", "-1.50e+07",
                           "123456789012345678901234567890", "\"\xC3\xA4\""}) {
        JsonRequest request;
        const std::string line = "{\"fn\":\"A\",\"id\" : " + std::string(id) + " ,\"hex\":\"00\"}";
        EXPECT_EQ(ParseJsonRequest(line, request), "") << line;
        EXPECT_EQ(request.id, id);
    }
    JsonRequest request;
    EXPECT_NE(ParseJsonRequest(R"({"id":5,"fn":)", request), "");
    EXPECT_EQ(request.id, "5");
}

TEST(JsonRequest, SaysWhatIsWrong) {
    const std::pair<const char*, const char*> lines[] = {
        {R"({"fn":"A"})", "the key \"hex\" is missing"},
        {R"({"fn":"A","length":1})", "the key \"hex\" is missing"},
        {R"({"hex":"00"})", "the key \"fn\" is missing"},
        {R"({"fn":1,"hex":"00"})", "\"fn\" has to be the name of a function"},
        {R"({"fn":"A","hex":["00"]})", "\"hex\" has to be a string"},
        {R"({"fn":"A","hex":7})", "\"hex\" has to be a string"},
        {R"({"fn":"A","hex":"00","length":1.0})", "\"length\" has to be a whole number of 32 bits"},
        {R"({"fn":"A","hex":"00","length":2147483648})",
         "\"length\" has to be a whole number of 32 bits"},
        {R"({"fn":"A","hex":"00","length":"1"})", "\"length\" has to be a whole number of 32 bits"},
        {R"({"fn":"A","hex":"00","id":null})", "\"id\" has to be a string or a number"},
        {R"({"fn":"A","hex":"00","id":{}})", "\"id\" has to be a string or a number"},
        {R"({"fn":"A","hex":"00","hex":"00"})", "the key \"hex\" stands twice"},
        {R"({"fn":"A","hex":"00","lenght":1})",
         "unknown key \"lenght\"; the nearest is \"length\""},
        {R"({"fn":"A","hex":"00")",
         "no JSON, character 21: Missing a comma or '}' after an object member."},
        {R"([{"fn":"A","hex":"00"}])", "the line is no JSON object"},
        {"\"A\"", "the line is no JSON object"},
    };
    for (const auto& [line, problem] : lines) {
        JsonRequest request;
        EXPECT_EQ(ParseJsonRequest(line, request), problem) << line;
    }
}

}  // namespace
}  // namespace quorvane::tool
