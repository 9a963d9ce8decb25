// LENGTH and octets in lines for `batch`: what is a length in one reading and an octet in another
// is refused.

#include "tools/message_line.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace quorvane::tool {
namespace {

struct Reading {
    std::string problem;
    std::int32_t length = 0;
    std::vector<std::uint8_t> octets;
    bool doubt = false;
};

Reading Read(const std::string& text) {
    Reading reading;
    MessageLine line;
    reading.problem = ParseMessageLine("EPC_UE2SS " + text, line, reading.octets);
    reading.length = line.length;
    reading.doubt = line.hexBehindDoubt.has_value();
    return reading;
}

std::string Octets(const std::string& octet, int count) {
    std::string text;
    for (int index = 0; index < count; ++index) {
        text += (index > 0 ? " " : "") + octet;
    }
    return text;
}

const std::string kTwelve = Octets("07", 12);

TEST(MessageLine, TakesAStatedLength) {
    const std::tuple<std::string, std::int32_t, std::size_t> lines[] = {
        {"2 0F87", 2, 2},
        {"10 0F87", 10, 2},
        {"2 0F 87 00", 2, 3},
        {"02 0F87 00 00", 2, 4},
        {"12 " + kTwelve, 12, 12},
        {"-1 0F 87", -1, 2},
        {"0", 0, 0},
        {"-2", -2, 0},
        {"10 0F:87", 10, 2},
        {"1 0F 8700", 1, 3},
        {"12 0x0F 0x87", 12, 2},
        // forms that groups of digits alone do not have
        {"12 0F-87", 12, 2},
        {"12 {0F 87}", 12, 2},
        {"12 0x0F, 0x87", 12, 2},
        {"12 0Fh 87h", 12, 2},
        {"12 0FH 87H", 12, 2},
        {"12 0X0F 0X87", 12, 2},
        {"2 0F, 87, 00", 2, 3},
        {"12 \\x0F\\x87", 12, 2},
        {"12 07, 07, 07, 07, 07, 07, 07, 07, 07, 07, 07, 07", 12, 12},
        {"12 00000000: 0f87  ..", 12, 2},
        {"12 00000000  0f 87  |..|", 12, 2},
    };
    for (const auto& [text, length, count] : lines) {
        const Reading reading = Read(text);
        EXPECT_EQ(reading.problem, "") << text;
        EXPECT_EQ(reading.length, length) << text;
        EXPECT_EQ(reading.octets.size(), count) << text;
        EXPECT_FALSE(reading.doubt) << text;
    }
}

TEST(MessageLine, TakesOctetsAlone) {
    const std::pair<const char*, std::size_t> lines[] = {
        {"0F87", 2},
        {"0F 87", 2},
        {"0741", 2},
        {"00", 1},
        {"741071082926", 6},
        {"27AABBCC", 4},
        {"0F:87", 2},
        {"0F,87", 2},
        {"0F, 87, 00", 3},
        {"27-41-00", 3},
        {"12,41,00", 3},
        {"12, 41, 00", 3},
        {"0x1241 0x7108", 4},
        {"0x17", 1},
        {"0x12 0x41 0x00", 3},
        {"{0x12, 0x41}", 2},
        {"[12 41]", 2},
        {"\\x12\\x41", 2},
        {"12h 41h 00h", 3},
        {"0F87 00", 3},
        {"FF8700 1122", 5},
        {"00000000: 0741 7108  .Aq.", 4},
        {"00000000  07 41 71 08  |.Aq.|", 4},
    };
    for (const auto& [text, count] : lines) {
        const Reading reading = Read(text);
        EXPECT_EQ(reading.problem, "") << text;
        EXPECT_EQ(reading.length, static_cast<std::int32_t>(count)) << text;
        EXPECT_EQ(reading.octets.size(), count) << text;
        EXPECT_FALSE(reading.doubt) << text;
    }
}

// No number has a leading zero; should it be one nevertheless, the function may tell.
TEST(MessageLine, TakesDigitsWithALeadingZeroForOctetsInDoubt) {
    const std::pair<const char*, std::size_t> lines[] = {
        {"07 41", 2}, {"07 41 71 08", 4}, {"0741 7108 29", 5}, {"05, 08, 02", 3}};
    for (const auto& [text, count] : lines) {
        const Reading reading = Read(text);
        EXPECT_EQ(reading.problem, "") << text;
        EXPECT_EQ(reading.octets.size(), count) << text;
    }
    EXPECT_TRUE(Read("07 41").doubt);
    EXPECT_FALSE(Read("07 41 4G").problem.empty());
}

TEST(MessageLine, RefusesWhatMayBeLengthOrOctets) {
    for (const std::string& text :
         {std::string("10 41 00"), "12 " + Octets("07", 11), std::string("1741 0000 00"),
          std::string("02 01 D0"), std::string("0002 0F87"), std::string("0712 0x07 0x41"),
          std::string("17"), std::string("2147483648 0F87"), std::string("0C 0741710829"),
          std::string("0x0C 0741710829"), std::string("0Ch 0741710829"),
          std::string("0x03 0x07 0x41 0x71"), "0C " + kTwelve, std::string("12, 07 41"),
          std::string("12, 0741"), std::string("12: 0741"), std::string("07 41, 71")}) {
        const Reading reading = Read(text);
        EXPECT_EQ(reading.problem,
                  "'" + text.substr(0, text.find(' ')) +
                      "' may be LENGTH or the first octets; write LENGTH ahead of it, or all "
                      "octets without blanks");
    }
}

TEST(MessageLine, SaysWhatIsWrong) {
    const std::pair<const char*, const char*> lines[] = {
        {"", "expected FUNCTION LENGTH HEX, or FUNCTION HEX"},
        {"2", "expected FUNCTION LENGTH HEX, or FUNCTION HEX"},
        {"two 0F87", "HEX, character 1: 't' is not a hexadecimal digit"},
        {"2 0F8", "HEX, character 3: an octet needs two hexadecimal digits, this one has one"},
        {"2 , 0F", "HEX, character 1: there is no octet ahead of ','"},
    };
    for (const auto& [text, problem] : lines) {
        EXPECT_EQ(Read(text).problem, problem) << text;
    }
}

}  // namespace
}  // namespace quorvane::tool
