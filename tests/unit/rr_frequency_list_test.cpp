// Frequency lists in all formats, neighbour cells and ranges, TS 44.018, 10.5.2.1a, 10.5.2.1b,
// 10.5.2.13, 10.5.2.22 and 10.5.2.22a.

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <string>

#include "rr_elements.h"

namespace quorvane::families::test {
namespace {

using iecodec::test::TypeUnderTest;
using iecodec::test::Zeros;

/// Tags of the alternatives.
enum Format : std::uint32_t {
    kBitMap0 = 1,
    kRange1024,
    kRange512,
    kRange256,
    kRange128,
    kVariable
};

constexpr std::array kFormats = {kBitMap0, kRange1024, kRange512, kRange256, kRange128, kVariable};

/// The octet that starts a list of each format, ORIG-ARFCN and F0 zero.
constexpr const char* kFirstOctets[] = {"", "00", "80", "88", "8A", "8C", "8E"};

/// A frequency list with its parts by name.
struct List {
    TypeUnderTest type = Element("CellChannel");

    [[nodiscard]] const bits::Cell& Alternative() { return *type.Record().cells; }
    [[nodiscard]] const bits::Cell& Items() {
        return type.Record().number == kBitMap0 ? Alternative() : Alternative().cells[0];
    }
    /// F0 or OrigARFCN.
    [[nodiscard]] const bits::Cell& Header() { return Alternative().cells[1]; }
};

// Choosing the format.

TEST(FrequencyList, BitsEightFourThreeAndTwoOfTheFirstOctetChooseTheFormat) {
    List list;
    for (std::uint32_t octet = 0; octet < 256; ++octet) {
        const std::string bits = BitsOf(octet, 8);
        const std::string low = bits.substr(4, 3);
        Format format = kRange1024;
        if (bits[0] == '0') {
            format = kBitMap0;
        } else if (low == "100") {
            format = kRange512;
        } else if (low == "101") {
            format = kRange256;
        } else if (low == "110") {
            format = kRange128;
        } else if (low == "111") {
            format = kVariable;
        }
        static_cast<void>(list.type.Decode(HexOf(bits) + " " + Zeros(15)));
        EXPECT_EQ(list.type.Record().number, format) << bits;
    }
}

// How many items the octets have room for.

/// Items of a list of 0 to 17 octets, by format. In front of them stand 4, 6 or 17 bits. A bit map
/// has a bit an item, 124 or 111 at most; a range has W(1) on 10, 9, 8 or 7 bits, W(2) and W(3) on
/// one bit less, W(4) to W(7) on two less, and so on.
constexpr std::uint32_t kItems[18][6] = {
    {0, 0, 0, 0, 0, 0},         {4, 0, 0, 0, 0, 0},         {12, 1, 0, 0, 0, 0},
    {20, 1, 0, 0, 1, 7},        {28, 2, 1, 2, 2, 15},       {36, 3, 2, 3, 3, 23},
    {44, 4, 3, 4, 5, 31},       {52, 5, 5, 5, 7, 39},       {60, 6, 6, 7, 9, 47},
    {68, 7, 7, 8, 11, 55},      {76, 9, 8, 10, 13, 63},     {84, 10, 10, 12, 15, 71},
    {92, 11, 11, 13, 17, 79},   {100, 12, 12, 15, 20, 87},  {108, 13, 14, 17, 23, 95},
    {116, 14, 15, 19, 25, 103}, {124, 16, 17, 21, 28, 111}, {124, 17, 18, 23, 31, 111},
};

/// What a list of that many octets takes of them: all, but for the shortest, which have no room for
/// the bits in front, and those with an octet that no item ends in.
std::int64_t BitsOfList(Format format, std::int64_t octets) {
    const bool isBitMap = format == kBitMap0 || format == kVariable;
    if (isBitMap && octets == 17) {
        return 128;
    }
    if (format == kRange1024 && octets == 3) {
        return 16;  // W(1) ends with the second octet, W(2) needs nine bits more
    }
    return std::max<std::int64_t>(8 * octets, format <= kRange1024 ? 8 : 24);
}

TEST(FrequencyList, AnyNumberOfOctetsGivesTheItemsThatFit) {
    List list;
    for (const Format format : kFormats) {
        for (std::int64_t octets = 0; octets <= 17; ++octets) {
            EXPECT_EQ(list.type.Decode(kFirstOctets[format] + (" " + Zeros(16)), 8 * octets),
                      BitsOfList(format, octets))
                << format << ", " << octets;
            EXPECT_EQ(list.type.Record().number, format);
            EXPECT_EQ(list.Items().number, kItems[octets][format - 1]) << format << ", " << octets;
        }
    }
}

TEST(FrequencyList, AnyNumberOfOctetsComesBack) {
    List list;
    for (const Format format : kFormats) {
        for (std::int64_t octets = 0; octets <= 17; ++octets) {
            if (BitsOfList(format, octets) != 8 * octets) {
                continue;
            }
            std::string hex = kFirstOctets[format];
            for (std::int64_t octet = 1; octet < octets; ++octet) {
                hex += " A5";
            }
            ASSERT_EQ(list.type.Decode(hex), 8 * octets);
            const std::string header = format == kBitMap0 ? "" : Shown(list.Header());
            const std::string items = ItemsShown(list.Items());
            const iecodec::test::Written written = list.type.Encode();
            EXPECT_EQ(written.bits, 8 * octets);
            // Up to seven bits behind the last item are not kept.
            EXPECT_EQ(written.hex.substr(0, hex.size() - 2), hex.substr(0, hex.size() - 2));
            ASSERT_EQ(list.type.Decode(written.hex), 8 * octets);
            EXPECT_EQ(format == kBitMap0 ? "" : Shown(list.Header()), header);
            EXPECT_EQ(ItemsShown(list.Items()), items) << format << ", " << octets;
        }
    }
}

TEST(FrequencyList, LongElementsStopAtSixtyFourItems) {
    // Header, then 10 + 2 * 9 + 4 * 8 + 8 * 7 + 16 * 6 + 32 * 5 + 4 = 376 bits, and 64 less for
    // each range below.
    constexpr std::int64_t kResults[] = {384, 336, 272, 208};
    List list;
    for (const Format format : {kRange1024, kRange512, kRange256, kRange128}) {
        EXPECT_EQ(list.type.Decode(kFirstOctets[format] + (" " + Zeros(129))),
                  kResults[format - kRange1024]);
        EXPECT_EQ(list.Items().number, 64U);
    }
}

// What the items are.

TEST(FrequencyList, BitMap0HasTheBitsFromTheFifthOn) {
    // ARFCN 124 to 121 in the first octet, ARFCN 001 the last bit: here 122, 113 and 1.
    List list;
    EXPECT_EQ(list.type.Decode("02 01 " + Zeros(13) + "01"), 128);
    ASSERT_EQ(list.type.Record().number, kBitMap0);
    ASSERT_EQ(list.Items().number, 124U);
    for (std::uint32_t item = 0; item < 124; ++item) {
        const std::uint32_t arfcn = 124 - item;
        const bool member = arfcn == 122 || arfcn == 113 || arfcn == 1;
        EXPECT_EQ(Shown(list.Items().cells[item]),
                  (member ? "1 [" : "0 [") + std::to_string(4 + item) + ",1]");
    }
    EXPECT_EQ(list.type.ThereAndBack("02 01 " + Zeros(13) + "01"), "02 01 " + Zeros(13) + "01");
}

TEST(FrequencyList, Range1024HasF0AndWFromTheSeventhBitOn) {
    List list;
    const std::string hex =
        HexOf("1 0 00 0 1  1000000001 100000001 000000011 10000001 01111111 000000");
    EXPECT_EQ(list.type.Decode("00 00 " + hex, 56, 16), 56);
    ASSERT_EQ(list.type.Record().number, kRange1024);
    EXPECT_EQ(Shown(list.Header()), "1 [21,1]");
    EXPECT_EQ(ItemsShown(list.Items()), "513 [22,10] 257 [32,9] 3 [41,9] 129 [50,8] 127 [58,8]");
    EXPECT_EQ(list.type.Encode().bits, 56);
    EXPECT_EQ(list.type.Encode().hex, hex);
}

TEST(FrequencyList, OtherRangesHaveOrigArfcnAndWFromTheEighteenthBitOn) {
    struct {
        std::string bits;
        const char* header;
        const char* items;
    } const cases[] = {
        {"1000100 1000000001  100000001 10000001 00000011 1000001 0000000", "513 [7,10]",
         "257 [17,9] 129 [26,8] 3 [34,8] 65 [42,7] 0 [49,7]"},
        {"1000101 1111111111  10000001 1000001 0000011 100001 000001 00000", "1023 [7,10]",
         "129 [17,8] 65 [25,7] 3 [32,7] 33 [39,6] 1 [45,6]"},
        {"1000110 0000000001  1000001 100001 000011 10001 00001 11110 00111", "1 [7,10]",
         "65 [17,7] 33 [24,6] 3 [30,6] 17 [36,5] 1 [41,5] 30 [46,5] 7 [51,5]"},
    };
    for (std::uint32_t index = 0; index < 3; ++index) {
        List list;
        const auto& [bits, header, items] = cases[index];
        EXPECT_EQ(list.type.ThereAndBack(HexOf(bits)), HexOf(bits));
        EXPECT_EQ(list.type.Record().number, kRange512 + index);
        EXPECT_EQ(Shown(list.Header()), header);
        EXPECT_EQ(ItemsShown(list.Items()), items);
    }
}

TEST(FrequencyList, WLosesABitAtEachPowerOfTwo) {
    List list;
    for (std::uint32_t bitsOfFirst = 10; bitsOfFirst >= 7; --bitsOfFirst) {
        const Format format = static_cast<Format>(kRange1024 + 10 - bitsOfFirst);
        std::string bits = format == kRange1024 ? "100000" : BitsOf(65 + format, 7) + "0000000000";
        std::string items;
        // W(2^k) to W(2^(k+1) - 1) are on k bits less than W(1).
        for (std::uint32_t k = 0; k <= 6; ++k) {
            for (std::uint32_t w = 1U << k; w < 2U << k && w <= 64; ++w) {
                const auto width = static_cast<int>(bitsOfFirst - k);
                const std::uint32_t value = 37 * w % (1U << static_cast<unsigned>(width));
                items += (w == 1 ? "" : " ") + std::to_string(value) + " [" +
                         std::to_string(bits.size()) + "," + std::to_string(width) + "]";
                bits += BitsOf(value, width);
            }
        }
        EXPECT_EQ(list.type.ThereAndBack(HexOf(bits)), HexOf(bits));
        EXPECT_EQ(list.type.Record().number, format);
        EXPECT_EQ(ItemsShown(list.Items()), items);
    }
}

TEST(FrequencyList, VariableBitMapHasABitForEachChannelBehindTheOrigin) {
    List list;
    const std::string bits = "1 0 00 111 1000000001 1010011";
    EXPECT_EQ(list.type.ThereAndBack(HexOf(bits)), HexOf(bits));
    EXPECT_EQ(list.type.Record().number, kVariable);
    EXPECT_EQ(Shown(list.Header()), "513 [7,10]");
    EXPECT_EQ(ItemsShown(list.Items()),
              "1 [17,1] 0 [18,1] 1 [19,1] 0 [20,1] 0 [21,1] 1 [22,1] 1 [23,1]");

    EXPECT_EQ(list.type.Decode("8E FF " + Zeros(13) + "01"), 128);
    ASSERT_EQ(list.Items().number, 111U);
    EXPECT_EQ(Shown(list.Items().cells[110]), "1 [127,1]");
}

TEST(FrequencyList, OfNoBitsHasTheFormatThatFollows) {
    List list;
    EXPECT_EQ(list.type.Decode("FF " + HexOf("1000101 1000000001 1111111"), 0, 8), 24);
    EXPECT_EQ(list.type.Record().number, kRange256);
    EXPECT_EQ(Shown(list.Header()), "513 [15,10]");
    EXPECT_EQ(list.Items().number, 0U);
    // Nothing follows: zeros.
    EXPECT_EQ(list.type.Decode("FF", 0, 8), 8);
    EXPECT_EQ(list.type.Record().number, kBitMap0);
    EXPECT_EQ(list.Items().number, 0U);
}

TEST(FrequencyList, ResultGoesToAnOctetBoundaryOfTheMessage) {
    List list;
    // Behind a half octet: bits 4 to 10 are the format's, the last item ends at 20.
    EXPECT_EQ(list.type.Decode("00 00 00", 16, 4), 20);
    EXPECT_EQ(list.Items().number, 12U);
    EXPECT_EQ(Shown(list.Items().cells[11]), "0 [19,1]");
}

TEST(FrequencyList, BitsBehindTheLastItemAreWrittenAsZero) {
    List list;
    EXPECT_EQ(list.type.Decode(HexOf("100000 0000000001 000000001 1111111")), 32);
    EXPECT_EQ(ItemsShown(list.Items()), "1 [6,10] 1 [16,9]");
    EXPECT_EQ(list.type.Encode().hex, HexOf("100000 0000000001 000000001 0000000"));
    // Bits that no format looks at, too.
    EXPECT_EQ(list.type.Decode("7F"), 8);
    EXPECT_EQ(list.type.Encode().hex, "0F");
    EXPECT_EQ(list.type.Decode(HexOf("1 111 111 0000000001 1111111")), 24);
    EXPECT_EQ(list.type.Encode().hex, HexOf("1 000 111 0000000001 1111111"));
}

TEST(FrequencyList, AlternativeThatNothingWasStoredInIsItsHeader) {
    constexpr const char* kHeaders[] = {"00", "80", "88 00 00", "8A 00 00", "8C 00 00", "8E 00 00"};
    for (const Format format : kFormats) {
        List list;
        static_cast<void>(list.type.Decode("00"));
        *list.type.Record().cells = {};
        list.type.Record().number = format;
        EXPECT_EQ(list.type.Encode().hex, kHeaders[format - 1]);
    }
}

TEST(FrequencyList, WithoutAnAlternativeCannotBeWritten) {
    for (const std::uint32_t tag : {0U, 7U}) {
        List list;
        static_cast<void>(list.type.Decode("00"));
        list.type.Record().number = tag;
        EXPECT_EQ(list.type.Encode().bits, bits::Code::kSyntaxError);
    }
    EXPECT_EQ(Element("CellChannel").Encode().bits, bits::Code::kSyntaxError);
}

// Neighbour cells.

TEST(NeighbourCells, FlagsStandInBitsThatTheFormatLeavesOut) {
    // Variable bit map with bits 6 and 5 set: EXT-IND and BA-IND.
    const std::string hex = HexOf("1 0 1 1 111 1000000001 1010011");
    TypeUnderTest cells = Element("NeighbourCellDescription");
    EXPECT_EQ(cells.ThereAndBack(hex), hex);
    EXPECT_EQ(Shown(cells.Member("ExtInd")), "1 [2,1]");
    EXPECT_EQ(Shown(cells.Member("BAInd")), "1 [3,1]");
    const bits::Cell& list = cells.Member("CellDescription");
    EXPECT_EQ(list.number, kVariable);
    EXPECT_EQ(Shown(list.cells->cells[1]), "513 [7,10]");
    EXPECT_EQ(list.cells->cells[0].number, 7U);
}

TEST(NeighbourCells, EachFlagHasItsBit) {
    TypeUnderTest cells = Element("NeighbourCellDescription");
    EXPECT_EQ(cells.ThereAndBack("20 " + Zeros(14) + "01"), "20 " + Zeros(14) + "01");
    EXPECT_EQ(cells.Member("ExtInd").number, 1U);
    EXPECT_EQ(cells.Member("BAInd").number, 0U);
    EXPECT_EQ(cells.ThereAndBack("10 " + Zeros(14) + "01"), "10 " + Zeros(14) + "01");
    EXPECT_EQ(cells.Member("ExtInd").number, 0U);
    EXPECT_EQ(cells.Member("BAInd").number, 1U);
    const bits::Cell& list = cells.Member("CellDescription");
    EXPECT_EQ(list.number, kBitMap0);
    ASSERT_EQ(list.cells->number, 124U);
    EXPECT_EQ(Shown(list.cells->cells[123]), "1 [127,1]");
}

TEST(NeighbourCells, TheSecondFormHasMultibandReporting) {
    // Range 128 with bits 7 to 5 as 101: two strongest cells, BA-IND.
    const std::string hex = HexOf("1 10 1 110 0000000011 1000001");
    TypeUnderTest cells = Element("NeighbourCellDescription2");
    EXPECT_EQ(cells.ThereAndBack(hex), hex);
    EXPECT_EQ(Shown(cells.Member("MultibandReporting")), "2 [1,2]");
    EXPECT_EQ(Shown(cells.Member("BAInd")), "1 [3,1]");
    const bits::Cell& list = cells.Member("CellDescription");
    EXPECT_EQ(list.number, kRange128);
    EXPECT_EQ(ItemsShown(list.cells->cells[0]), "65 [17,7]");

    EXPECT_EQ(cells.Decode("FF FF FF FF", 24, 8), 24);
    EXPECT_EQ(Shown(cells.Member("MultibandReporting")), "3 [9,2]");
    EXPECT_EQ(Shown(cells.Member("BAInd")), "1 [11,1]");
}

TEST(NeighbourCells, ResultIsThatOfTheList) {
    for (const char* type : {"NeighbourCellDescription", "NeighbourCellDescription2"}) {
        TypeUnderTest cells = Element(type);
        EXPECT_EQ(cells.Decode("80 " + Zeros(2)), 16);
        EXPECT_EQ(cells.Decode("8E", 0), 24);
        EXPECT_EQ(cells.Decode("00 " + Zeros(16)), 128);
        cells.Member("CellDescription").number = 7;
        EXPECT_EQ(cells.Encode().bits, bits::Code::kSyntaxError);
    }
}

// Ranges.

/// The ranges as "513 [8,10] 2 [18,10]".
std::string RangesShown(const bits::Cell& ranges) {
    std::string text;
    for (std::uint32_t item = 0; item < ranges.number; ++item) {
        const bits::Cell* range = ranges.cells[item].cells;
        text += (item == 0 ? "" : ", ") + Shown(range[0]) + " " + Shown(range[1]);
    }
    return text;
}

TEST(BaRange, CountTellsTheRanges) {
    TypeUnderTest ranges = Element("BaRange");
    // One range, four bits up to the octet.
    const std::string one = HexOf("00000001 1000000001 0000000010 0000");
    EXPECT_EQ(ranges.ThereAndBack(one), one);
    EXPECT_EQ(RangesShown(ranges.Record()), "513 [8,10] 2 [18,10]");
    // Two fill their octets.
    const std::string two = HexOf("00000010 1000000001 0000000010 1111111111 0000000001");
    EXPECT_EQ(ranges.ThereAndBack(two), two);
    EXPECT_EQ(RangesShown(ranges.Record()), "513 [8,10] 2 [18,10], 1023 [28,10] 1 [38,10]");
}

TEST(BaRange, WithoutRangesIsItsCount) {
    TypeUnderTest ranges = Element("BaRange");
    EXPECT_EQ(ranges.ThereAndBack("00"), "00");
    EXPECT_EQ(ranges.Record().number, 0U);
}

TEST(BaRange, ResultComesFromTheCountWhateverTheLength) {
    TypeUnderTest ranges = Element("BaRange");
    const std::string octets = HexOf("00000001 1000000001 0000000010 1111") + " FF";
    for (const std::int64_t length : {0, 8, 16, 32, 40}) {
        EXPECT_EQ(ranges.Decode(octets, length), 32) << length;
        EXPECT_EQ(RangesShown(ranges.Record()), "513 [8,10] 2 [18,10]");
    }
    EXPECT_EQ(ranges.Encode().hex, HexOf("00000001 1000000001 0000000010 0000"));
}

TEST(BaRange, TakesThirtyTwoRangesAndRefusesMore) {
    TypeUnderTest ranges = Element("BaRange");
    EXPECT_EQ(ranges.Decode("20 " + Zeros(80)), 8 + 32 * 20);
    EXPECT_EQ(ranges.Record().number, 32U);
    EXPECT_EQ(ranges.Decode("21 " + Zeros(83)), bits::Code::kSyntaxError);
    EXPECT_EQ(ranges.Record().number, 0U);
    EXPECT_EQ(ranges.Decode("FF", 8), bits::Code::kSyntaxError);
    EXPECT_EQ(ranges.Diagnostics(), "");
}

}  // namespace
}  // namespace quorvane::families::test
