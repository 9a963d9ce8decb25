#include "tools/capture/rsl.h"

#include <gtest/gtest.h>
#include <tuple>

#include "capture/dissected.h"

namespace quorvane::capture {
namespace {

using test::Abis;
using test::Dissection;
using test::Hex;
using test::Octets;

struct Expectation {
    std::string rsl;
    Decoding decoding;
    bool uplink;
    std::string octets;
    unsigned channel;
    unsigned timeslot;
    unsigned subslot;
};

const std::string kSystemInformation =
    "49 06 1B 00 01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F 10 2B 2B 2B";

// TS 48.058, 8.3 to 8.6.
const std::vector<Expectation> kExpectations = {
    // DATA REQUEST and INDICATION on SDCCH/8, subslot 2, timeslot 1.
    {"03 01 01 51 02 00 0B 00 03 05 21 00", Decoding::L3Downlink, false, "05 21 00", kUmSdcch8, 1,
     2},
    {"03 02 01 51 02 00 0B 00 03 06 16 03", Decoding::RRUplink, true, "06 16 03", kUmSdcch8, 1, 2},
    // ESTABLISH INDICATION on SDCCH/4, subslot 3.
    {"02 06 01 38 02 00 0B 00 02 05 24", Decoding::L3Uplink, true, "05 24", kUmSdcch4, 0, 3},
    // UNIT DATA REQUEST and INDICATION on the SACCH of a full rate channel.
    {"02 0A 01 0A 02 40 0B 00 02 06 2D", Decoding::RRDownlink, false, "06 2D",
     kUmFacchF | kUmSlowAssociated, 2, 0},
    {"02 0B 01 0A 02 40 0B 00 02 06 15", Decoding::RRUplink, true, "06 15",
     kUmFacchF | kUmSlowAssociated, 2, 0},
    // BCCH INFORMATION, IMMEDIATE ASSIGN COMMAND, CHANNEL REQUIRED.
    {"0C 11 01 80 1E 03 27 17 " + kSystemInformation, Decoding::RRPLENDownlink, false,
     kSystemInformation, kUmBcch, 0, 0},
    {"0C 16 01 90 2B 03 2D 06 3F", Decoding::RRPLENDownlink, false, "2D 06 3F", kUmCcch, 0, 0},
    {"0D 13 01 88 13 E5 12 34 11 02", Decoding::ChannelRequest, true, "E5", kUmRach, 0, 0},
    // SACCH FILLING and SACCH INFORMATION MODIFY with the pseudo length.
    {"10 1A 1E 05 0B 00 03 49 06 1D", Decoding::RRPLENDownlink, false, "49 06 1D", 0, 0, 0},
    {"08 34 01 0A 1E 06 0B 00 03 2D 06 1E", Decoding::RRPLENDownlink, false, "2D 06 1E", kUmFacchF,
     2, 0},
    // ENCRYPTION COMMAND and MEASUREMENT RESULT, the latter on a half rate channel.
    {"08 26 01 0A 07 02 01 00 02 00 0B 00 03 06 35 11", Decoding::RRDownlink, false, "06 35 11",
     kUmFacchF, 2, 0},
    {"08 28 01 1B 1B 07 19 03 00 01 02 04 05 0A 01 02 0B 00 02 06 15", Decoding::RRUplink, true,
     "06 15", kUmFacchH, 3, 1},
    // In LAPD's I and UI frames.
    {"00 83 02 04 03 01 01 51 02 00 0B 00 02 05 21", Decoding::L3Downlink, false, "05 21",
     kUmSdcch8, 1, 2},
    {"02 83 03 02 0A 01 0A 02 40 0B 00 02 06 2D", Decoding::RRDownlink, false, "06 2D",
     kUmFacchF | kUmSlowAssociated, 2, 0},
};

TEST(Rsl, TakesMessagesOut) {
    for (const Expectation& expected : kExpectations) {
        Dissection dissection;
        const auto found = dissection.Take(Abis(), Hex(expected.rsl));
        ASSERT_TRUE(found) << expected.rsl;
        EXPECT_EQ(found->decoding, expected.decoding) << expected.rsl;
        EXPECT_EQ(found->octets, Hex(expected.octets)) << expected.rsl;
        EXPECT_EQ(found->source.uplink, expected.uplink) << expected.rsl;
        EXPECT_EQ(found->source.interface, Source::Interface::kAbis);
        EXPECT_EQ(found->source.channel, expected.channel) << expected.rsl;
        EXPECT_EQ(found->source.timeslot, expected.timeslot) << expected.rsl;
        EXPECT_EQ(found->source.subslot, expected.subslot) << expected.rsl;
    }
}

// There are senders that put the message of layer 3 alone there.
TEST(Rsl, TakesMessagesWithoutRsl) {
    for (const auto& [octets, down, up] : std::vector<std::tuple<std::string, Decoding, Decoding>>{
             {"03 01 1E 02 EA 88", Decoding::L3Downlink, Decoding::L3Uplink},  // CC, ALERTING
             {"08 21 43 01 80", Decoding::L3Downlink, Decoding::L3Uplink},
             {"05 24 11", Decoding::L3Downlink, Decoding::L3Uplink},
             {"06 2E 00", Decoding::RRDownlink, Decoding::RRUplink}}) {
        for (const bool uplink : {false, true}) {
            GsmtapHeader header = Abis();
            header.uplink = uplink;
            Dissection dissection;
            const auto found = dissection.Take(header, Hex(octets));
            ASSERT_TRUE(found) << octets;
            EXPECT_EQ(found->decoding, uplink ? up : down) << octets;
            EXPECT_EQ(found->octets, Hex(octets));
            EXPECT_EQ(found->source.uplink, uplink);
        }
    }
}

TEST(Rsl, CountsWhatCarriesNoMessage) {
    const auto countOf = [](const std::string& rsl, Passed reason, unsigned detail = 0) {
        Dissection dissection;
        EXPECT_FALSE(dissection.Take(Abis(), Hex(rsl))) << rsl;
        return dissection.CountOf(reason, detail);
    };
    EXPECT_EQ(countOf("02 07 01 51 02 00 14 00", Passed::kRsl, 0x0207), 1U);
    EXPECT_EQ(countOf("0C 15 01 90 0E 01 0C 02 01 F0", Passed::kRsl, 0x0C15), 1U);
    EXPECT_EQ(countOf("02 06 01 38 02 00", Passed::kRsl, 0x0206), 1U);           // no message
    EXPECT_EQ(countOf("10 1A 1E 05 0B 00 02 06 1D", Passed::kRsl, 0x101A), 1U);  // no pseudo length
    EXPECT_EQ(countOf("08 28 01 0A 0B 00 02 13 1D", Passed::kRsl, 0x0828), 1U);  // short header
    EXPECT_EQ(countOf("20 01 01 51", Passed::kRsl, 0x2001), 1U);                 // location
    EXPECT_EQ(countOf("03 01 01 51 02 00 0B 00 04 05 21 00", Passed::kRslMalformed), 1U);
    EXPECT_EQ(countOf("03 01 01 51 02 00 0B 00", Passed::kRslMalformed), 1U);
    EXPECT_EQ(countOf("03 01 01 51 33 00", Passed::kRslMalformed), 1U);  // unknown element
    EXPECT_EQ(countOf("03 01 01 51 F0 00", Passed::kRslMalformed), 1U);  // of no format
    EXPECT_EQ(countOf("08 26 01 0A 07", Passed::kRslMalformed), 1U);     // cut ahead of a length
    EXPECT_EQ(countOf("10", Passed::kRslMalformed), 1U);                 // no type
    EXPECT_EQ(countOf("02 06 01 38 02 00 0B 00 00", Passed::kRsl, 0x0206), 1U);  // of no octet
    EXPECT_EQ(countOf("10 1A 1E 05 0B 00 01 49", Passed::kRsl, 0x101A), 1U);     // it alone
    EXPECT_EQ(countOf("00 83 02 04", Passed::kAbisLink), 1U);
    EXPECT_EQ(countOf("03 01 01 51 02 C0 0B 00 02 09 01", Passed::kProtocol, 9), 1U);  // SMS
}

// TS 48.058, 9.1 and 9.2.
TEST(Rsl, NamesWhatItPasses) {
    EXPECT_EQ(RslName(0x0206), "ESTABLISH INDICATION");
    EXPECT_EQ(RslName(0x0266), "type 102 of group 2");
}

}  // namespace
}  // namespace quorvane::capture
