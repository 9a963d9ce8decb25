#include <gtest/gtest.h>
#include <string>

#include "facade/json_string.h"

namespace quorvane::facade {
namespace {

std::string StringOf(std::string_view words) {
    std::string json(JsonStringRoom(words.size()) + 1, '#');
    const char* end = PutJsonString(json.data(), words);
    EXPECT_EQ(json.back(), '#') << "more than its room";
    json.resize(static_cast<std::size_t>(end - json.data()));
    return json;
}

TEST(JsonString, LeavesPlainCharactersAsTheyStand) {
    EXPECT_EQ(StringOf(""), R"("")");
    EXPECT_EQ(StringOf("A/5 (1)'\x7F"), "\"A/5 (1)'\x7F\"");
}

TEST(JsonString, EscapesQuotesBackslashesAndControls) {
    EXPECT_EQ(StringOf(R"(a"b\c)"), R"("a\"b\\c")");
    EXPECT_EQ(StringOf("\t\n\r\x1F"), R"("\t\n\r\u001F")");
    EXPECT_EQ(StringOf(std::string_view("\0", 1)), R"("\u0000")");
}

TEST(JsonString, IsUtf8) {
    EXPECT_EQ(StringOf("GSM\xDFPLMNS \x80\xFF"), "\"GSM\xC3\x9FPLMNS \xC2\x80\xC3\xBF\"");
}

}  // namespace
}  // namespace quorvane::facade
