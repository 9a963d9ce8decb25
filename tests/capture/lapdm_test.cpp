#include "tools/capture/lapdm.h"

#include <gtest/gtest.h>

#include "capture/dissected.h"

namespace quorvane::capture {
namespace {

using test::Block;
using test::Dissection;
using test::Hex;
using test::IFrame;
using test::kDiscFrame;
using test::kSabmFrame;
using test::kUaFrame;
using test::kUiFrame;
using test::LapdmBlock;
using test::LapdmSegments;
using test::Octets;
using test::Um;

/// A message of mobility management, of that size.
Octets Mobility(std::size_t size) {
    Octets message = Hex("05 08");
    while (message.size() < size) {
        message.push_back(static_cast<std::uint8_t>(message.size()));
    }
    return message;
}

TEST(Lapdm, TakesAMessageOutOfOneFrame) {
    Dissection dissection;
    const Octets message = Mobility(20);
    const auto found = dissection.Take(Um(kUmSdcch8, true, 3), LapdmBlock(IFrame(0), message));
    ASSERT_TRUE(found);
    EXPECT_EQ(found->decoding, Decoding::L3Uplink);
    EXPECT_EQ(found->octets, message);
    EXPECT_EQ(found->source.subslot, 3);
    EXPECT_TRUE(found->source.uplink);
}

TEST(Lapdm, PutsSegmentsTogether) {
    Dissection dissection;
    for (const std::size_t size : {21U, 40U, 41U, 100U}) {
        const Octets message = Mobility(size);
        const auto blocks = LapdmSegments(message);
        dissection.Take(Um(kUmSdcch8), LapdmBlock(kUaFrame, {}));
        for (const Octets& block : blocks) {
            const auto found = dissection.Take(Um(kUmSdcch8), block);
            ASSERT_EQ(found.has_value(), &block == &blocks.back()) << size;
            if (found) {
                EXPECT_EQ(found->octets, message);
                EXPECT_EQ(found->decoding, Decoding::L3Downlink);
            }
        }
    }
    EXPECT_EQ(dissection.CountOf(Passed::kLapdmJoined), 1U + 1 + 2 + 4);
    EXPECT_EQ(dissection.dissector.LapdmGaps(), 0U);
}

TEST(Lapdm, KeepsLinksApart) {
    const Octets message = Mobility(30);
    const auto blocks = LapdmSegments(message);
    GsmtapHeader otherTimeslot = Um(kUmSdcch8);
    otherTimeslot.timeslot = 2;
    GsmtapHeader otherArfcn = Um(kUmSdcch8);
    otherArfcn.arfcn = 872;
    GsmtapHeader otherBand = Um(kUmSdcch8);
    otherBand.isPcs = true;
    const std::vector<GsmtapHeader> links = {
        Um(kUmSdcch8), Um(kUmSdcch8, true), Um(kUmSdcch8, false, 1),
        Um(kUmSdcch4), otherTimeslot,       otherArfcn,
        otherBand};
    Dissection dissection;
    for (const GsmtapHeader& link : links) {
        EXPECT_FALSE(dissection.Take(link, blocks[0]));
    }
    // The same link with SAPI 3, whose message is one of SMS.
    const Octets sms = Hex("09 01");
    EXPECT_FALSE(dissection.Take(Um(kUmSdcch8), LapdmBlock(IFrame(5), sms, false, 3)));
    EXPECT_EQ(dissection.CountOf(Passed::kProtocol, 9), 1U);
    for (const GsmtapHeader& link : links) {
        const auto found = dissection.Take(link, blocks[1]);
        ASSERT_TRUE(found);
        EXPECT_EQ(found->octets, message);
    }
    EXPECT_EQ(dissection.dissector.LapdmGaps(), 0U);
}

TEST(Lapdm, PassesRepeatedFrames) {
    Dissection dissection;
    const Octets message = Mobility(50);
    std::size_t found = 0;
    for (const Octets& block : LapdmSegments(message, 6)) {
        for (int time = 0; time < 2; ++time) {
            if (const auto whole = dissection.Take(Um(kUmFacchF), block)) {
                EXPECT_EQ(whole->octets, message);
                ++found;
            }
        }
    }
    EXPECT_EQ(found, 1U);
    EXPECT_EQ(dissection.CountOf(Passed::kLapdmRepeated), 3U);
    EXPECT_EQ(dissection.CountOf(Passed::kLapdmJoined), 2U);
}

// Of a message that lacks a segment nothing is decoded; the next one is.
TEST(Lapdm, DropsMessagesWithAGap) {
    const Octets message = Mobility(70);
    const auto blocks = LapdmSegments(message);
    ASSERT_EQ(blocks.size(), 4U);
    for (std::size_t missing = 1; missing < blocks.size(); ++missing) {
        Dissection dissection;
        for (std::size_t index = 0; index < blocks.size(); ++index) {
            if (index != missing) {
                EXPECT_FALSE(dissection.Take(Um(kUmSdcch8), blocks[index])) << missing;
            }
        }
        const Octets next = Mobility(5);
        const auto found = dissection.Take(Um(kUmSdcch8), LapdmBlock(IFrame(4), next));
        if (missing < 3) {
            EXPECT_EQ(dissection.CountOf(Passed::kLapdmLost), 3U) << missing;
            ASSERT_TRUE(found) << missing;
            EXPECT_EQ(found->octets, next);
        } else {
            // Nothing tells the frame behind the missing end of a message from that end.
            EXPECT_FALSE(found);
        }
        EXPECT_EQ(dissection.CountOf(Passed::kLapdmJoined), 0U);
        EXPECT_EQ(dissection.dissector.LapdmGaps(), 1U);
    }
}

TEST(Lapdm, TakesAFrameBehindAGapBetweenMessagesAsABeginning) {
    Dissection dissection;
    EXPECT_TRUE(dissection.Take(Um(kUmSdcch8), LapdmBlock(IFrame(1), Mobility(5))));
    EXPECT_TRUE(dissection.Take(Um(kUmSdcch8), LapdmBlock(IFrame(4), Mobility(6))));
    EXPECT_EQ(dissection.dissector.LapdmGaps(), 1U);
}

TEST(Lapdm, ForgetsWhatWasAheadOfANewLink) {
    for (const unsigned control : {kSabmFrame, kUaFrame, kDiscFrame}) {
        Dissection dissection;
        const auto blocks = LapdmSegments(Mobility(30));
        for (const bool uplink : {false, true}) {
            EXPECT_FALSE(dissection.Take(Um(kUmSdcch8, uplink), blocks[0]));
        }
        EXPECT_FALSE(dissection.Take(Um(kUmSdcch8), LapdmBlock(control, {})));
        EXPECT_EQ(dissection.CountOf(Passed::kLapdmLost), 2U);
        for (const bool uplink : {false, true}) {
            EXPECT_TRUE(dissection.Take(Um(kUmSdcch8, uplink), LapdmBlock(IFrame(0), Mobility(5))));
        }
        EXPECT_EQ(dissection.dissector.LapdmGaps(), 0U);
    }
}

// UA repeats the message of the SABM that it answers, so that the mobile station knows that it is
// the one meant: it is a message of a mobile station in either direction.
TEST(Lapdm, TakesTheMessagesOfSabmAndUa) {
    Dissection dissection;
    const Octets message = Hex("05 24 11 03 33 19 81 05 F4 01 02 03 04");
    for (const unsigned control : {kSabmFrame, kUaFrame}) {
        const bool uplink = control == kSabmFrame;
        const auto found = dissection.Take(Um(kUmSdcch4, uplink), LapdmBlock(control, message));
        ASSERT_TRUE(found);
        EXPECT_EQ(found->decoding, Decoding::L3Uplink);
        EXPECT_EQ(found->source.uplink, uplink);
        EXPECT_EQ(found->octets, message);
    }
}

TEST(Lapdm, TakesUiFrames) {
    Dissection dissection;
    const Octets physicalInformation = Hex("06 2D 05");
    const auto found = dissection.Take(Um(kUmFacchH), LapdmBlock(kUiFrame, physicalInformation));
    ASSERT_TRUE(found);
    EXPECT_EQ(found->decoding, Decoding::RRDownlink);
    EXPECT_EQ(found->octets, physicalInformation);
}

TEST(Lapdm, TakesSystemInformationOfSacchWithItsPseudoLength) {
    for (const char* const start : {"03 03 49 06 1D", "03 03 2D 06 1E"}) {
        Dissection dissection;
        const Octets block = Block(Hex(std::string("00 00 ") + start));
        const auto found = dissection.Take(Um(kUmSdcch8 | kUmSlowAssociated), block);
        ASSERT_TRUE(found);
        EXPECT_EQ(found->decoding, Decoding::RRPLENDownlink);
        EXPECT_EQ(found->octets, Octets(block.begin() + 4, block.end()));  // 19 octets
    }
}

TEST(Lapdm, TakesMeasurementReportsOfSacch) {
    Dissection dissection;
    const Octets block =
        Block(Hex("05 00 01 03 49 06 15 1C 1C 00 00 00 00 00 00 00 00 00 00 00 00 00 00"));
    const auto found = dissection.Take(Um(kUmFacchF | kUmSlowAssociated, true), block);
    ASSERT_TRUE(found);
    EXPECT_EQ(found->decoding, Decoding::RRUplink);
    EXPECT_EQ(found->octets, Octets(block.begin() + 5, block.end()));  // 18 octets
}

TEST(Lapdm, TakesShortHeadersOfSacch) {
    Dissection dissection;
    const Octets block = Block(Hex("05 00 10 92 C2"));
    const auto found = dissection.Take(Um(kUmFacchH | kUmSlowAssociated, true), block);
    ASSERT_TRUE(found);
    EXPECT_EQ(found->decoding, Decoding::RRSPD);
    EXPECT_EQ(found->octets, Octets(block.begin() + 2, block.end()));  // 21 octets
    EXPECT_FALSE(dissection.Take(Um(kUmFacchH, true), Block(Hex("10 92 C2"))));
    EXPECT_EQ(dissection.CountOf(Passed::kLapdmMalformed), 1U);
}

TEST(Lapdm, CountsFramesWithoutAMessage) {
    const auto countOf = [](const std::string& frame, Passed reason, LapdmKind kind = {}) {
        Dissection dissection;
        EXPECT_FALSE(dissection.Take(Um(kUmSdcch8), Block(Hex(frame))));
        return dissection.CountOf(reason, static_cast<unsigned>(kind));
    };
    EXPECT_EQ(countOf("03 03 01", Passed::kLapdmEmpty, LapdmKind::kUi), 1U);
    EXPECT_EQ(countOf("03 21 01", Passed::kLapdmEmpty, LapdmKind::kSupervisory), 1U);
    EXPECT_EQ(countOf("01 3F 01", Passed::kLapdmEmpty, LapdmKind::kSetUp), 1U);
    EXPECT_EQ(countOf("01 1F 01", Passed::kLapdmEmpty, LapdmKind::kRelease), 1U);
    EXPECT_EQ(countOf("01 00 01", Passed::kLapdmEmpty, LapdmKind::kI), 1U);
    EXPECT_EQ(countOf("01 00 55 05", Passed::kLapdmMalformed), 1U);  // 21 octets
    EXPECT_EQ(countOf("01 00 10 05", Passed::kLapdmMalformed), 1U);  // another octet of length
    EXPECT_EQ(countOf("41 00 09 05", Passed::kLapdmMalformed), 1U);  // reserved discriminator
    EXPECT_EQ(countOf("01 0B 09 05", Passed::kLapdmMalformed), 1U);  // no such frame
    EXPECT_EQ(countOf("21 00 09 05", Passed::kLapdmBroadcast), 1U);
    Dissection dissection;
    EXPECT_FALSE(dissection.Take(Um(kUmSdcch8), Octets(22)));
    EXPECT_EQ(dissection.CountOf(Passed::kBlockLength, kUmSdcch8), 1U);
}

TEST(Lapdm, DropsMessagesThatAreTooLong) {
    Dissection dissection;
    const std::size_t most = LapdmLinks::kLongestMessage;
    for (const Octets& block : LapdmSegments(Mobility(most + 1))) {
        EXPECT_FALSE(dissection.Take(Um(kUmSdcch8), block));
    }
    EXPECT_EQ(dissection.CountOf(Passed::kLapdmJoined), 0U);
    EXPECT_EQ(dissection.CountOf(Passed::kLapdmLost), most / 20 + 1);
}

// TS 44.006, 8.4: a frame whose number is that of the one before, with other contents, is out of
// turn, as one is that a gap is ahead of.
TEST(Lapdm, TakesTheSameNumberWithOtherContentsForAGap) {
    Dissection dissection;
    EXPECT_TRUE(dissection.Take(Um(kUmSdcch8), LapdmBlock(IFrame(0), Mobility(4))));
    EXPECT_FALSE(dissection.Take(Um(kUmSdcch8), LapdmBlock(IFrame(0), Mobility(4))));
    EXPECT_EQ(dissection.CountOf(Passed::kLapdmRepeated), 1U);
    EXPECT_TRUE(dissection.Take(Um(kUmSdcch8), LapdmBlock(IFrame(0), Mobility(5))));
    EXPECT_EQ(dissection.dissector.LapdmGaps(), 1U);
    EXPECT_FALSE(dissection.Take(Um(kUmSdcch8), LapdmBlock(IFrame(0), Mobility(5), true)));
    EXPECT_EQ(dissection.dissector.LapdmGaps(), 2U);
    EXPECT_EQ(dissection.CountOf(Passed::kLapdmRepeated), 1U);
}

TEST(Lapdm, TakesUiFramesOfSacchWithALengthWhereNoPseudoLengthIs) {
    Dissection dissection;
    // Two octets of the layer below, address, control, and a length where a pseudo length may be.
    Octets block = Hex("00 00 03 03 0D 05 08 01");
    block.resize(23, 0x2B);
    const auto found = dissection.Take(Um(kUmSdcch8 | kUmSlowAssociated), block);
    ASSERT_TRUE(found);
    EXPECT_EQ(found->octets, Hex("05 08 01"));
    EXPECT_EQ(found->decoding, Decoding::L3Downlink);
    // No length, one that more follows, and an I frame are no pseudo length either.
    const auto take = [&](const std::string& octets) {
        block = Hex(octets);
        block.resize(23, 0x2B);
        return dissection.Take(Um(kUmSdcch8 | kUmSlowAssociated), block);
    };
    EXPECT_FALSE(take("00 00 03 03 01 06 1D"));
    EXPECT_EQ(dissection.CountOf(Passed::kLapdmEmpty, static_cast<unsigned>(LapdmKind::kUi)), 1U);
    EXPECT_TRUE(take("00 00 03 03 0F 06 1D 00"));
    EXPECT_TRUE(take("00 00 03 00 0D 06 1D 00"));
    EXPECT_TRUE(take("00 00 03 03 0D 06 1D 00"));
    EXPECT_EQ(dissection.dissector.LapdmGaps(), 0U);
}

TEST(Lapdm, ForgetsTheLinkUsedLongestAgo) {
    const auto blocks = LapdmSegments(Mobility(30));
    const auto link = [](std::size_t number) {
        GsmtapHeader header = Um(kUmSdcch8, false, number % 8);
        header.arfcn = static_cast<std::uint16_t>(number / 8);
        return header;
    };
    Dissection dissection;
    for (std::size_t number = 0; number < LapdmLinks::kMostLinks; ++number) {
        EXPECT_FALSE(dissection.Take(link(number), blocks[0]));
    }
    EXPECT_FALSE(dissection.Take(link(0), blocks[0]));  // repeated
    EXPECT_EQ(dissection.CountOf(Passed::kLapdmLost), 0U);
    EXPECT_FALSE(dissection.Take(link(LapdmLinks::kMostLinks), blocks[0]));
    EXPECT_EQ(dissection.CountOf(Passed::kLapdmLost), 1U);
    const auto found = dissection.Take(link(0), blocks[1]);
    ASSERT_TRUE(found);
    EXPECT_EQ(found->octets.size(), 30U);
    // Of the second link nothing is known: what comes is taken for a beginning.
    const auto rest = dissection.Take(link(1), blocks[1]);
    EXPECT_FALSE(rest && rest->octets.size() == 30);
    dissection.dissector.Finish();
    EXPECT_EQ(dissection.CountOf(Passed::kLapdmJoined), 1U);
}

}  // namespace
}  // namespace quorvane::capture
