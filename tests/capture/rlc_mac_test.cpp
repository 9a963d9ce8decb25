#include "tools/capture/rlc_mac.h"

#include <gtest/gtest.h>

#include "capture/dissected.h"

namespace quorvane::capture {
namespace {

using test::Block;
using test::Dissection;
using test::Hex;
using test::Octets;
using test::Um;

Octets Behind(const Octets& octets, std::size_t count) {
    return {octets.begin() + static_cast<std::ptrdiff_t>(count), octets.end()};
}

TEST(RlcMac, TakesControlBlocksWithoutTheirHeader) {
    for (const unsigned channel : {kUmPdch, kUmPacch}) {
        for (const bool uplink : {false, true}) {
            Dissection dissection;
            const Octets block = Block(Hex("40 94 2B"));
            const auto found = dissection.Take(Um(channel, uplink), block);
            ASSERT_TRUE(found);
            EXPECT_EQ(found->decoding,
                      uplink ? Decoding::RLC_MACUplink : Decoding::RLC_MACDownlink);
            EXPECT_EQ(found->octets, Behind(block, 1));
        }
    }
}

TEST(RlcMac, TakesOffTheOptionalOctets) {
    Dissection dissection;
    // RBSN 0, RTI 0, FS 1, AC 0, and then AC 1 with PR, TFI and D.
    const Octets one = Block(Hex("80 02 94 2B"));
    auto found = dissection.Take(Um(kUmPdch), one);
    ASSERT_TRUE(found);
    EXPECT_EQ(found->octets, Behind(one, 2));
    const Octets two = Block(Hex("80 03 3E 94 2B"));
    found = dissection.Take(Um(kUmPdch), two);
    ASSERT_TRUE(found);
    EXPECT_EQ(found->octets, Behind(two, 3));
}

TEST(RlcMac, PutsTwoSegmentsTogether) {
    Dissection dissection;
    const Octets first = Block(Hex("80 15 3E 94 01"));   // RTI 5, AC 1
    const Octets second = Block(Hex("80 96 02 03 04"));  // RBSN 1, RTI 5, FS 1
    const Octets other = Block(Hex("80 9A 02 03 04"));   // RTI 6
    EXPECT_FALSE(dissection.Take(Um(kUmPdch), first));
    EXPECT_FALSE(dissection.Take(Um(kUmPdch), other));
    EXPECT_EQ(dissection.CountOf(Passed::kRlcLost), 1U);
    const auto found = dissection.Take(Um(kUmPdch), second);
    ASSERT_TRUE(found);
    Octets expected = Behind(first, 3);
    const Octets rest = Behind(second, 2);
    expected.insert(expected.end(), rest.begin(), rest.end());
    EXPECT_EQ(found->octets, expected);
    EXPECT_EQ(dissection.CountOf(Passed::kRlcJoined), 1U);

    // It is used up. A first segment takes the place of one that was never completed.
    EXPECT_FALSE(dissection.Take(Um(kUmPdch), second));
    EXPECT_FALSE(dissection.Take(Um(kUmPdch), first));
    EXPECT_FALSE(dissection.Take(Um(kUmPdch), first));
    EXPECT_EQ(dissection.CountOf(Passed::kRlcLost), 3U);
    dissection.dissector.Finish();
    EXPECT_EQ(dissection.CountOf(Passed::kRlcLost), 4U);
    EXPECT_EQ(dissection.CountOf(Passed::kRlcJoined), 1U);
}

TEST(RlcMac, TakesAccessBursts) {
    Dissection dissection;
    auto found = dissection.Take(Um(kUmPdch, true), Hex("7E"));
    ASSERT_TRUE(found);
    EXPECT_EQ(found->decoding, Decoding::Packet_Control_Acknowledgement_8);
    found = dissection.Take(Um(kUmPacch, true), Hex("FC E0"));
    ASSERT_TRUE(found);
    EXPECT_EQ(found->decoding, Decoding::Packet_Control_Acknowledgement_11);
    EXPECT_FALSE(dissection.Take(Um(kUmPdch), Hex("7E")));
    EXPECT_FALSE(dissection.Take(Um(kUmPdch, true), Hex("7E 00 00")));
    EXPECT_EQ(dissection.CountOf(Passed::kBlockLength, kUmPdch), 2U);
}

TEST(RlcMac, CountsOtherBlocks) {
    Dissection dissection;
    EXPECT_FALSE(dissection.Take(Um(kUmPdch), Block(Hex("07"))));
    EXPECT_FALSE(dissection.Take(Um(kUmPdch), Octets(34, 0x40)));
    EXPECT_EQ(dissection.CountOf(Passed::kRlcData), 2U);
    EXPECT_FALSE(dissection.Take(Um(kUmPdch), Block(Hex("C0"))));
    EXPECT_FALSE(dissection.Take(Um(kUmPdch, true), Block(Hex("80"))));
    EXPECT_EQ(dissection.CountOf(Passed::kRlcReserved), 2U);
    EXPECT_FALSE(dissection.Take(Um(kUmPdch), Block(Hex("80 80"))));
    EXPECT_EQ(dissection.CountOf(Passed::kRlcExtended), 1U);
}

}  // namespace
}  // namespace quorvane::capture
