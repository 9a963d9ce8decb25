#include "tools/json_lines.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <string_view>

namespace quorvane::tool {
namespace {

std::string LineOf(std::string_view text) {
    JsonLines lines;
    lines.Begin();
    lines.Add("k", text);
    lines.End();
    return std::string(lines.View());
}

std::string Escaped(char character) {
    switch (character) {
        case '\n':
            return "\\n";
        case '\r':
            return "\\r";
        case '\t':
            return "\\t";
        case '"':
            return "\\\"";
        case '\\':
            return "\\\\";
        default:
            break;
    }
    const auto value = static_cast<unsigned char>(character);
    if (value >= 0x20) {
        return {character};
    }
    return std::string("\\u00") + (value < 0x10 ? '0' : '1') + "0123456789ABCDEF"[value % 16];
}

// Texts are looked through in steps of several characters: every character at every place of one,
// beside others that are escaped or not.
TEST(JsonLines, EscapesEveryCharacterAtEveryPlace) {
    for (int value = 0; value < 256; ++value) {
        const auto character = static_cast<char>(value);
        for (std::size_t place = 0; place < 35; ++place) {
            for (const char other : {'x', '\n', '!'}) {
                std::string text(35, other);
                text[place] = character;
                std::string expected = "{\"k\":\"";
                for (const char each : text) {
                    expected += Escaped(each);
                }
                ASSERT_EQ(LineOf(text), expected + "\"}\n") << value << " " << place;
            }
        }
    }
    EXPECT_EQ(LineOf(""), "{\"k\":\"\"}\n");
}

TEST(JsonLines, EscapeTextsOfEverySize) {
    for (std::size_t size = 1; size < 50; ++size) {
        for (std::size_t place = 0; place < size; ++place) {
            const std::string before(place, 'a');
            const std::string behind(size - place - 1, 'b');
            ASSERT_EQ(LineOf(before + '"' + behind),
                      "{\"k\":\"" + before + "\\\"" + behind + "\"}\n");
        }
    }
}

TEST(JsonLines, HaveNumbersFlagsJsonAndLines) {
    JsonLines lines;
    lines.Begin();
    lines.Add("most", std::numeric_limits<std::int64_t>::max());
    lines.Add("least", std::numeric_limits<std::int64_t>::min());
    lines.AddFlag("flag", false);
    lines.AddJson("json", "{\"a\":[1]}");
    lines.AddLines("none", "");
    lines.AddLines("some", "one\n\n\"three\"\n");
    lines.AddLines("open", "one\ntwo");
    lines.End();
    lines.Begin();
    lines.End();
    EXPECT_EQ(lines.View(),
              "{\"most\":9223372036854775807,\"least\":-9223372036854775808,\"flag\":false,"
              "\"json\":{\"a\":[1]},\"none\":[],\"some\":[\"one\",\"\",\"\\\"three\\\"\"],"
              "\"open\":[\"one\",\"two\"]}\n{}\n");
    lines.Clear();
    EXPECT_EQ(lines.View(), "");
}

}  // namespace
}  // namespace quorvane::tool
