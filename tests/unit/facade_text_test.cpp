#include <gtest/gtest.h>
#include <string>

#include "facade/utf8.h"

namespace quorvane::facade {
namespace {

std::string ToUtf8(std::string_view text) {
    std::string result = "old";
    AssignAsUtf8(result, text);
    return result;
}

TEST(Utf8, LeavesAsciiAsItStands) {
    EXPECT_EQ(ToUtf8(""), "");
    const std::string all = "a\r\n\x7F~";
    EXPECT_EQ(ToUtf8(all), all);
}

TEST(Utf8, WritesOtherOctetsAsTwo) {
    EXPECT_EQ(ToUtf8("GSM\xDFPLMNS"), "GSM\xC3\x9FPLMNS");
    EXPECT_EQ(ToUtf8("\x80\xBF\xC0\xFF"), "\xC2\x80\xC2\xBF\xC3\x80\xC3\xBF");
}

TEST(Utf8, FindsAnOctetAnywhere) {
    for (std::size_t length = 1; length < 100; ++length) {
        for (std::size_t at = 0; at < length; ++at) {
            std::string text(length, 'x');
            text[at] = '\xDF';
            std::string expected(length, 'x');
            expected.replace(at, 1, "\xC3\x9F");
            ASSERT_EQ(ToUtf8(text), expected);
        }
    }
}

}  // namespace
}  // namespace quorvane::facade
