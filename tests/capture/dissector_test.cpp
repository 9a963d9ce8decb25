#include "tools/capture/dissector.h"

#include <gtest/gtest.h>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "capture/dissected.h"

namespace quorvane::capture {
namespace {

using test::Block;
using test::Dissection;
using test::GsmtapPacket;
using test::Hex;
using test::LteNas;
using test::Octets;
using test::Um;

TEST(Dissector, TakesBlocksOfCommonChannelsWhole) {
    const Octets block = Block(Hex("55 06 19"));
    for (const unsigned channel : {kUmBcch, kUmCcch, kUmAgch, kUmPch}) {
        for (const bool flag : {false, true}) {
            Dissection dissection;
            const auto found = dissection.Take(Um(channel, flag), block);
            ASSERT_TRUE(found);
            EXPECT_EQ(found->decoding, Decoding::RRPLENDownlink);
            EXPECT_EQ(found->octets, block);
            EXPECT_FALSE(found->source.uplink);
            EXPECT_EQ(found->source.channel, channel);
            EXPECT_EQ(found->source.arfcn, 871);
            EXPECT_EQ(found->source.timeslot, 1);
            EXPECT_EQ(found->source.tdmaFrame, 1234567U);
            EXPECT_FALSE(found->source.isPcs);
        }
    }
}

TEST(Dissector, TakesRandomAccess) {
    Dissection dissection;
    GsmtapHeader header = Um(kUmRach);
    header.isPcs = true;
    const auto found = dissection.Take(header, Hex("E5"));
    ASSERT_TRUE(found);
    EXPECT_EQ(found->decoding, Decoding::ChannelRequest);
    EXPECT_TRUE(found->source.uplink);
    EXPECT_TRUE(found->source.isPcs);
    EXPECT_FALSE(dissection.Take(header, Hex("E5 20")));
    EXPECT_EQ(dissection.CountOf(Passed::kAccessBurst), 1U);
    EXPECT_FALSE(dissection.Take(header, Hex("E5 20 00")));
    EXPECT_EQ(dissection.CountOf(Passed::kBlockLength, kUmRach), 1U);
}

TEST(Dissector, TakesLteNas) {
    struct Expectation {
        std::string octets;
        Decoding down;
        Decoding up;
        bool isProtected;
    };
    for (const Expectation& expected : std::vector<Expectation>{
             {"07 44 0F", Decoding::EPS_MMDownlink, Decoding::EPS_MMUplink, false},
             {"17 01 02 03 04 05 07 44 0F", Decoding::EPS_MMDownlink, Decoding::EPS_MMUplink, true},
             {"C7 01 02 03", Decoding::EPS_MMDownlink, Decoding::EPS_MMUplink, true},
             {"52 01 C1", Decoding::EPS_SMDownlink, Decoding::EPS_SMUplink, false},
             {"0F 84", Decoding::EPC_SS2UE, Decoding::EPC_UE2SS, false}}) {
        for (const unsigned form : {kNasPlain, kNasProtected}) {
            for (const bool uplink : {false, true}) {
                Dissection dissection;
                const auto found = dissection.Take(LteNas(uplink, form), Hex(expected.octets));
                ASSERT_TRUE(found) << expected.octets;
                EXPECT_EQ(found->decoding, uplink ? expected.up : expected.down);
                EXPECT_EQ(found->isProtected, expected.isProtected) << expected.octets;
                EXPECT_EQ(found->octets, Hex(expected.octets));
                EXPECT_EQ(found->source.uplink, uplink);
                EXPECT_EQ(found->source.interface, Source::Interface::kLteNas);
            }
        }
    }
    Dissection dissection;
    EXPECT_FALSE(dissection.Take(LteNas(false), Hex("7E 00 41")));
    EXPECT_EQ(dissection.CountOf(Passed::kNasProtocol, 14), 1U);
    EXPECT_FALSE(dissection.Take(LteNas(false, 2), Hex("07 44 0F")));
    EXPECT_EQ(dissection.CountOf(Passed::kNasType, 2), 1U);
}

TEST(Dissector, CountsOtherGsmtap) {
    Dissection dissection;
    GsmtapHeader header = Um(kUmBcch);
    header.type = 0x0D;
    EXPECT_FALSE(dissection.Take(header, Hex("00")));
    EXPECT_EQ(dissection.CountOf(Passed::kGsmtapType, 0x0D), 1U);
    EXPECT_FALSE(dissection.Take(Um(0x10), Hex("00")));
    EXPECT_EQ(dissection.CountOf(Passed::kUmChannel, 0x10), 1U);
    EXPECT_FALSE(dissection.Take(Um(kUmBcch), {}));
    EXPECT_EQ(dissection.CountOf(Passed::kEmpty), 1U);

    const std::size_t gsmtapAt = 14 + 20 + 8;
    for (const auto& [place, value] :
         std::vector<std::pair<std::size_t, int>>{{0, 3}, {1, 3}, {1, 11}}) {
        Octets packet = GsmtapPacket(Um(kUmBcch), Block(Hex("55 06 19")));
        packet[gsmtapAt + place] = static_cast<std::uint8_t>(value);
        EXPECT_FALSE(dissection.Take(packet));
    }
    EXPECT_FALSE(dissection.Take(test::Ethernet(test::Ipv4(test::Udp(Hex("02 04 01"))))));
    EXPECT_EQ(dissection.CountOf(Passed::kNotGsmtap), 4U);
}

TEST(Dissector, PassesLongerHeaders) {
    Octets payload = Hex("00 00 00 00");
    const Octets block = Block(Hex("55 06 19"));
    payload.insert(payload.end(), block.begin(), block.end());
    Octets packet = GsmtapPacket(Um(kUmBcch), payload);
    packet[14 + 20 + 8 + 1] = 5;
    Dissection dissection;
    const auto found = dissection.Take(packet);
    ASSERT_TRUE(found);
    EXPECT_EQ(found->octets, block);
}

// The names of TS 44.003, 4.1; one is taken for what it is, whether it is known or not.
TEST(Dissector, NamesChannels) {
    EXPECT_EQ(UmChannelName(0), "an unknown channel");
    EXPECT_EQ(UmChannelName(kUmSdcch), "SDCCH");
    EXPECT_EQ(UmChannelName(kUmSdcch | kUmSlowAssociated), "SACCH");
    EXPECT_EQ(UmChannelName(kUmSdcch4 | kUmSlowAssociated), "SACCH/4");
    EXPECT_EQ(UmChannelName(kUmSdcch8 | kUmSlowAssociated), "SACCH/8");
    EXPECT_EQ(UmChannelName(kUmFacchF | kUmSlowAssociated), "SACCH/F");
    EXPECT_EQ(UmChannelName(kUmFacchH | kUmSlowAssociated), "SACCH/H");
    EXPECT_EQ(UmChannelName(0x11), "TCH/H");
    EXPECT_EQ(UmChannelName(0x12), "channel 18");
}

// LAPDm frames without a message are counted by what they are.
TEST(Dissector, CountsEmptyFramesOfDedicatedChannels) {
    Dissection dissection;
    const std::vector<std::pair<unsigned, LapdmKind>> frames = {
        {test::kUiFrame, LapdmKind::kUi},    {0x01, LapdmKind::kSupervisory},
        {test::IFrame(0), LapdmKind::kI},    {test::kSabmFrame, LapdmKind::kSetUp},
        {test::kUaFrame, LapdmKind::kSetUp}, {test::kDiscFrame, LapdmKind::kRelease}};
    std::set<std::string> words;
    for (const unsigned channel : {kUmSdcch, kUmSdcch4}) {
        for (const auto& [control, kind] : frames) {
            EXPECT_FALSE(dissection.Take(Um(channel), test::LapdmBlock(control, {}))) << control;
            words.insert(WordsOf({Passed::kLapdmEmpty, static_cast<std::uint16_t>(kind)}));
        }
    }
    EXPECT_EQ(words.size(), 5U);
    for (const LapdmKind kind :
         {LapdmKind::kUi, LapdmKind::kSupervisory, LapdmKind::kI, LapdmKind::kRelease}) {
        EXPECT_EQ(dissection.CountOf(Passed::kLapdmEmpty, static_cast<unsigned>(kind)), 2U);
    }
    EXPECT_EQ(dissection.CountOf(Passed::kLapdmEmpty, static_cast<unsigned>(LapdmKind::kSetUp)),
              4U);
}

// Every kind has words of its own.
TEST(Dissector, HasWordsForAllThatItPasses) {
    std::map<std::string, int> words;
    for (int reason = 0; reason <= static_cast<int>(Passed::kAbisLink); ++reason) {
        ++words[WordsOf({static_cast<Passed>(reason), 1})];
    }
    for (const auto& [text, count] : words) {
        EXPECT_NE(text, "");
        EXPECT_EQ(count, 1) << text;
    }
}

}  // namespace
}  // namespace quorvane::capture
