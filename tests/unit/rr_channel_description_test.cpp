// Channel type, channel descriptions and group channels, TS 44.018, 10.5.2.5, 10.5.2.5c and
// 10.5.2.14b.

#include <gtest/gtest.h>
#include <string>

#include "rr_elements.h"

namespace quorvane::families::test {
namespace {

using iecodec::test::TypeUnderTest;
using iecodec::test::Zeros;

TEST(ChannelType, EveryValueHasItsTypeAndSubchannel) {
    // Type and subchannel, 0 for values without a type. Only the values of the first two rows are
    // in the standard's table; of the others the lower four bits decide, and 10001 has no type.
    constexpr struct {
        std::uint32_t type;
        std::uint32_t subchannel;
    } kValues[32] = {
        // 00000, TCH/F, TCH/H with T, SDCCH/4 with TT
        {0, 0},
        {1, 0},
        {2, 0},
        {2, 1},
        {4, 0},
        {4, 1},
        {4, 2},
        {4, 3},
        // SDCCH/8 with TTT
        {8, 0},
        {8, 1},
        {8, 2},
        {8, 3},
        {8, 4},
        {8, 5},
        {8, 6},
        {8, 7},
        {0, 0},
        {0, 0},
        {2, 0},
        {2, 1},
        {4, 0},
        {4, 1},
        {4, 2},
        {4, 3},
        {8, 0},
        {8, 1},
        {8, 2},
        {8, 3},
        {8, 4},
        {8, 5},
        {8, 6},
        {8, 7},
    };
    TypeUnderTest channel = Element("TChType");
    for (std::uint32_t value = 0; value < 32; ++value) {
        const auto& [type, subchannel] = kValues[value];
        EXPECT_EQ(channel.Decode(HexOf("000 " + BitsOf(value, 5)), 5, 3), 5);
        EXPECT_TRUE(channel.Member("ChType").present);
        EXPECT_TRUE(channel.Member("Subchannel").present);
        const std::string place = type == 0 ? "" : " [3,5]";
        EXPECT_EQ(Shown(channel.Member("ChType")), std::to_string(type) + place) << value;
        EXPECT_EQ(Shown(channel.Member("Subchannel")), std::to_string(subchannel) + place) << value;
        // What the highest bit was is not kept.
        const iecodec::test::Written written = channel.Encode();
        EXPECT_EQ(written.bits, 5);
        EXPECT_EQ(written.hex, HexOf(BitsOf(type == 0 ? 0 : value % 16, 5) + "111")) << value;
    }
}

TEST(ChannelType, AbsentMembersAreWrittenAsZero) {
    TypeUnderTest channel = Element("TChType");
    EXPECT_EQ(channel.Encode().hex, "07");  // never reached
    EXPECT_EQ(channel.Decode(HexOf("01101")), 5);
    channel.Member("ChType").present = false;
    EXPECT_EQ(channel.Encode().hex, HexOf("00101 111"));
    channel.Member("Subchannel").present = false;
    EXPECT_EQ(channel.Encode().hex, HexOf("00000 111"));
}

TEST(ChannelDescription, HoppingChannel) {
    // TCH/F, TN 4 | TSC 7, H, MAIO 21 | HSN 42.
    const std::string octets = HexOf("00001 100 111 1 010101 101010");
    TypeUnderTest channel = Element("TChDesc");
    EXPECT_EQ(channel.Decode(octets), 24);
    EXPECT_EQ(Shown(channel.Member("ChType.ChType")), "1 [0,5]");
    EXPECT_EQ(Shown(channel.Member("ChType.Subchannel")), "0 [0,5]");
    EXPECT_EQ(Shown(channel.Member("TN")), "4 [5,3]");
    EXPECT_EQ(Shown(channel.Member("TSC")), "7 [8,3]");
    EXPECT_EQ(Shown(channel.Member("H")), "1 [11,1]");
    EXPECT_EQ(Shown(channel.Member("MAIO")), "21 [12,6]");
    EXPECT_EQ(Shown(channel.Member("HSN")), "42 [18,6]");
    EXPECT_TRUE(channel.Member("MAIO").present);
    EXPECT_TRUE(channel.Member("HSN").present);
    EXPECT_FALSE(channel.Member("spare").present);
    EXPECT_FALSE(channel.Member("ARFCN").present);
    EXPECT_EQ(channel.ThereAndBack(octets), octets);
}

TEST(ChannelDescription, SingleChannel) {
    // SDCCH/8, subchannel 3, TN 2 | TSC 5, no H, spare bits | ARFCN 871.
    TypeUnderTest channel = Element("TChDesc");
    EXPECT_EQ(channel.Decode(HexOf("01011 010 101 0 11 1101100111")), 24);
    EXPECT_EQ(Shown(channel.Member("ChType.ChType")), "8 [0,5]");
    EXPECT_EQ(Shown(channel.Member("ChType.Subchannel")), "3 [0,5]");
    EXPECT_EQ(Shown(channel.Member("TN")), "2 [5,3]");
    EXPECT_EQ(Shown(channel.Member("TSC")), "5 [8,3]");
    EXPECT_EQ(Shown(channel.Member("H")), "0 [11,1]");
    EXPECT_EQ(Shown(channel.Member("ARFCN")), "871 [14,10]");
    EXPECT_EQ(Shown(channel.Member("spare")), "0");
    EXPECT_TRUE(channel.Member("spare").present);
    EXPECT_TRUE(channel.Member("ARFCN").present);
    EXPECT_FALSE(channel.Member("MAIO").present);
    EXPECT_FALSE(channel.Member("HSN").present);
    EXPECT_EQ(channel.Encode().hex, HexOf("01011 010 101 0 00 1101100111"));
}

TEST(ChannelDescription, GoesOnBehindAChannelTypeThatIsNone) {
    TypeUnderTest channel = Element("TChDesc");
    EXPECT_EQ(channel.Decode("FF " + HexOf("10001 011 001 0 00 0000000001"), 24, 8), 24);
    EXPECT_EQ(Shown(channel.Member("ChType.ChType")), "0");
    EXPECT_EQ(Shown(channel.Member("ChType.Subchannel")), "0");
    EXPECT_EQ(Shown(channel.Member("TN")), "3 [13,3]");
    EXPECT_EQ(Shown(channel.Member("TSC")), "1 [16,3]");
    EXPECT_EQ(Shown(channel.Member("ARFCN")), "1 [22,10]");
    EXPECT_EQ(channel.Encode().hex, HexOf("00000 011 001 0 00 0000000001"));
}

TEST(ChannelDescription, ResultIsItsWidthWhateverTheLength) {
    TypeUnderTest channel = Element("TChDesc");
    TypeUnderTest channel3 = Element("TChDesc3");
    for (const std::int64_t length : {0, 8, 24, 32}) {
        EXPECT_EQ(channel.Decode("0C F5 6A", length), 24);
        EXPECT_EQ(channel3.Decode("F5 6A", length), 16);
    }
}

TEST(ChannelDescription, ThatNothingWasStoredInIsZeros) {
    EXPECT_EQ(Element("TChDesc").Encode().hex, "00 00 00");
    EXPECT_EQ(Element("TChDesc3").Encode().hex, "00 00");
    EXPECT_EQ(Element("GrpChannelDesc").Encode().hex, "00 00 00");
}

TEST(ChannelDescription, AbsentMembersOfTheChosenPairAreWrittenAsZero) {
    TypeUnderTest channel = Element("TChDesc3");
    EXPECT_EQ(channel.Decode(HexOf("111 1 010101 101010")), 16);
    channel.Member("MAIO").present = false;
    EXPECT_EQ(channel.Encode().hex, HexOf("111 1 000000 101010"));
    channel.Member("H").number = 0;
    EXPECT_EQ(channel.Encode().hex, HexOf("111 0 00 0000000000"));
}

TEST(ChannelDescription3, StartsWithTheTrainingSequence) {
    TypeUnderTest channel = Element("TChDesc3");
    const std::string hopping = HexOf("010 1 111110 000001");
    EXPECT_EQ(channel.Decode(hopping), 16);
    EXPECT_EQ(Shown(channel.Member("TSC")), "2 [0,3]");
    EXPECT_EQ(Shown(channel.Member("H")), "1 [3,1]");
    EXPECT_EQ(Shown(channel.Member("MAIO")), "62 [4,6]");
    EXPECT_EQ(Shown(channel.Member("HSN")), "1 [10,6]");
    EXPECT_FALSE(channel.Member("spare").present);
    EXPECT_FALSE(channel.Member("ARFCN").present);
    EXPECT_EQ(channel.ThereAndBack(hopping), hopping);

    const std::string single = HexOf("110 0 00 1111111110");
    EXPECT_EQ(channel.Decode(single), 16);
    EXPECT_EQ(Shown(channel.Member("TSC")), "6 [0,3]");
    EXPECT_EQ(Shown(channel.Member("H")), "0 [3,1]");
    EXPECT_EQ(Shown(channel.Member("ARFCN")), "1022 [6,10]");
    EXPECT_TRUE(channel.Member("spare").present);
    EXPECT_FALSE(channel.Member("MAIO").present);
    EXPECT_EQ(channel.ThereAndBack(single), single);
}

TEST(GroupChannel, KeepsTheRestAsMobileAllocation) {
    // SDCCH/4, subchannel 1, TN 7 | TSC 3, H, MAIO 1 | HSN 2, then MA C 8 to MA C 1.
    const std::string octets = HexOf("00101 111 011 1 000001 000010 10000001");
    TypeUnderTest channel = Element("GrpChannelDesc");
    EXPECT_EQ(channel.Decode(octets), 32);
    EXPECT_EQ(Shown(channel.Member("ChType.ChType")), "4 [0,5]");
    EXPECT_EQ(Shown(channel.Member("ChType.Subchannel")), "1 [0,5]");
    EXPECT_EQ(Shown(channel.Member("TN")), "7 [5,3]");
    EXPECT_EQ(Shown(channel.Member("TSC")), "3 [8,3]");
    EXPECT_EQ(Shown(channel.Member("MAIO")), "1 [12,6]");
    EXPECT_EQ(Shown(channel.Member("HSN")), "2 [18,6]");
    EXPECT_EQ(ItemsShown(channel.Member("MA")),
              "1 [24,1] 0 [25,1] 0 [26,1] 0 [27,1] 0 [28,1] 0 [29,1] 0 [30,1] 1 [31,1]");
    EXPECT_EQ(channel.ThereAndBack(octets), octets);
}

TEST(GroupChannel, HasNoAllocationInItsFirst24Bits) {
    TypeUnderTest channel = Element("GrpChannelDesc");
    for (const std::int64_t length : {0, 8, 16, 24}) {
        EXPECT_EQ(channel.Decode("0C F5 6A FF", length), 24);
        EXPECT_EQ(channel.Member("MA").number, 0U);
        EXPECT_EQ(Shown(channel.Member("HSN")), "42 [18,6]");
        EXPECT_EQ(channel.Diagnostics(), "");
    }
}

TEST(GroupChannel, AllocationEndsWithItsStore) {
    TypeUnderTest channel = Element("GrpChannelDesc");
    EXPECT_EQ(channel.Decode("0C F5 6A " + Zeros(9)), 96);
    EXPECT_EQ(channel.Member("MA").number, 72U);
    EXPECT_EQ(channel.Decode("0C F5 6A " + Zeros(10)), 96);
    EXPECT_EQ(channel.Member("MA").number, 72U);
}

}  // namespace
}  // namespace quorvane::families::test
