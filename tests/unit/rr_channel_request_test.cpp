// The octet of the random access channel, TS 44.018, 9.1.8: all 256 of them.

#include <gtest/gtest.h>
#include <string>
#include <string_view>

#include "rr_elements.h"

namespace quorvane::families::test {
namespace {

/// The codes of table 9.1.8.1, and of table 9.1.8.2 for answers to paging. x is a bit of the random
/// reference. Where an octet has several, the first one counts.
constexpr struct {
    std::string_view pattern;
    std::uint32_t description;
} kCodes[] = {
    {"101xxxxx", 0},   // emergency call
    {"110xxxxx", 1},   // call re-establishment; TCH/F, or TCH/H without NECI
    {"011010xx", 2},   // call re-establishment; TCH/H
    {"011011xx", 3},   // call re-establishment; TCH/H + TCH/H
    {"100xxxxx", 4},   // answer to paging: any channel
    {"0001xxxx", 5},   // SDCCH; also other procedures with NECI, which never show
    {"0010xxxx", 6},   // TCH/F
    {"0011xxxx", 7},   // TCH/H or TCH/F
    {"111xxxxx", 8},   // originating call
    {"0100xxxx", 9},   // originating speech call
    {"0101xxxx", 10},  // originating data call
    {"000xxxxx", 11},  // location updating; also that with NECI, which never shows
    {"011110xx", 14},  // one phase packet access
    {"01111x0x", 14}, {"01111xx0", 14}, {"01110xxx", 15},  // single block packet access
    {"01100111", 16},                                      // LMU establishment
    {"01100xx0", 17},                                      // single block MBMS access
    {"01100x01", 18},                                      // reserved
    {"01100011", 18}, {"01111111", 18},
};

/// The first code of the octet, and its random reference.
std::pair<std::uint32_t, std::uint32_t> Expected(std::uint32_t octet) {
    const std::string bits = BitsOf(octet, 8);
    for (const auto& [pattern, description] : kCodes) {
        std::uint32_t random = 0;
        bool holds = true;
        for (std::size_t place = 0; place < bits.size(); ++place) {
            if (pattern[place] == 'x') {
                random = 2 * random + (bits[place] == '1' ? 1U : 0U);
            } else {
                holds = holds && pattern[place] == bits[place];
            }
        }
        if (holds) {
            return {description, random};
        }
    }
    ADD_FAILURE() << "no code for " << bits;
    return {};
}

TEST(ChannelRequest, EveryOctetHasItsDescriptionAndRandomReference) {
    iecodec::test::TypeUnderTest request = Element("ChannelRequest");
    for (std::uint32_t octet = 0; octet < 256; ++octet) {
        const std::string hex = HexOf(BitsOf(octet, 8));
        EXPECT_EQ(request.Decode(hex), 8);
        const auto [description, random] = Expected(octet);
        EXPECT_EQ(Shown(request.Member("MessageContent")), std::to_string(octet) + " [0,8]");
        EXPECT_EQ(Shown(request.Member("Description")), std::to_string(description)) << hex;
        EXPECT_EQ(Shown(request.Member("RandomReference")), std::to_string(random)) << hex;
        EXPECT_EQ(request.Encode().hex, hex);
    }
}

TEST(ChannelRequest, SingleOctets) {
    constexpr struct {
        const char* octet;
        std::uint32_t description;
        std::uint32_t random;
    } kCases[] = {
        {"05", 11, 5},  // location updating
        {"1A", 5, 10},  // SDCCH, ahead of location updating
        {"67", 16, 0},  // LMU establishment: no random bits
        {"7F", 18, 0},  // reserved, no random bits
        {"63", 18, 0},  // the same
        {"7B", 14, 3},  // 011110 11
        {"7C", 14, 2},  // 01111 1 0 0: bits 3 and 1
        {"7D", 14, 3},  // 01111 1 0 1
        {"7E", 14, 3},  // 01111 11 0: bits 3 and 2
        {"75", 15, 5},  // 01110 101
        {"60", 17, 0},  // 01100 00 0
        {"64", 17, 2},  // 01100 10 0
        {"66", 17, 3},  // 01100 11 0
        {"61", 18, 0},  // 01100 0 01
        {"65", 18, 1},  // 01100 1 01
        {"B3", 0, 19},  // 101 10011
        {"6E", 3, 2},   // 011011 10
    };
    iecodec::test::TypeUnderTest request = Element("ChannelRequest");
    for (const auto& [octet, description, random] : kCases) {
        EXPECT_EQ(request.Decode(octet), 8);
        EXPECT_EQ(request.Member("Description").number, description) << octet;
        EXPECT_EQ(request.Member("RandomReference").number, random) << octet;
    }
}

TEST(ChannelRequest, IsOneOctetWhateverTheLength) {
    iecodec::test::TypeUnderTest request = Element("ChannelRequest");
    for (const std::int64_t length : {0, 4, 8, 16}) {
        EXPECT_EQ(request.Decode("00 B3 FF", length, 8), 8);
        EXPECT_EQ(Shown(request.Member("MessageContent")), "179 [8,8]");
    }
}

TEST(ChannelRequest, OnlyTheOctetIsWritten) {
    iecodec::test::TypeUnderTest request = Element("ChannelRequest");
    EXPECT_EQ(request.Decode("B3"), 8);
    request.Member("Description").number = 4;
    request.Member("RandomReference").number = 1;
    EXPECT_EQ(request.Encode().bits, 8);
    EXPECT_EQ(request.Encode().hex, "B3");
}

}  // namespace
}  // namespace quorvane::families::test
