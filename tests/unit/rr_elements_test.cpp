// Located identities, TS 24.008, 10.5.1.4, and bit map type reporting, TS 44.018, 9.1.55.

#include "rr_elements.h"

#include <gtest/gtest.h>
#include <string>

namespace quorvane::families::test {
namespace {

using iecodec::test::TypeUnderTest;
using iecodec::test::Zeros;

// Identities.

TEST(LocatedIdentity, OfEightOctetsAndOddHasFifteenDigits) {
    // IMSI 262019876543210: the first digit in the high half of the first octet, then the low half
    // of an octet ahead of its high half.
    TypeUnderTest identity = Element("RRMobileId");
    const std::string octets = "29 26 10 89 67 45 23 01";
    EXPECT_EQ(identity.Decode(octets), 64);
    EXPECT_EQ(Shown(identity.Member("IdentityType")), "1 [5,3]");
    EXPECT_EQ(ItemsShown(identity.Member("IdentityDigit")),
              "2 [0,4] 6 [12,4] 2 [8,4] 0 [20,4] 1 [16,4] 9 [28,4] 8 [24,4] 7 [36,4] 6 [32,4] "
              "5 [44,4] 4 [40,4] 3 [52,4] 2 [48,4] 1 [60,4] 0 [56,4]");
    EXPECT_EQ(identity.ThereAndBack(octets), octets);
}

TEST(LocatedIdentity, EvenOneLeavesTheLastHighHalfOut) {
    TypeUnderTest identity = Element("RRMobileId");
    EXPECT_EQ(identity.Decode("FF 22 43 F5", 24, 8), 24);
    EXPECT_EQ(Shown(identity.Member("IdentityType")), "2 [13,3]");
    EXPECT_EQ(ItemsShown(identity.Member("IdentityDigit")), "2 [8,4] 3 [20,4] 4 [16,4] 5 [28,4]");
    EXPECT_EQ(identity.Encode().hex, "22 43 F5");
}

TEST(LocatedIdentity, OfTypeFourHasOctets) {
    TypeUnderTest identity = Element("RRMobileId");
    EXPECT_EQ(identity.Decode("F4 C0 FF EE 01"), 40);
    EXPECT_EQ(Shown(identity.Member("IdentityType")), "4 [5,3]");
    EXPECT_EQ(ItemsShown(identity.Member("IdentityDigit")),
              "192 [8,8] 255 [16,8] 238 [24,8] 1 [32,8]");
    EXPECT_EQ(identity.ThereAndBack("F4 C0 FF EE 01"), "F4 C0 FF EE 01");
}

TEST(LocatedIdentity, OfOneOctetHasOneDigitOrNone) {
    TypeUnderTest identity = Element("RRMobileId");
    EXPECT_EQ(identity.ThereAndBack("F0"), "F0");
    EXPECT_EQ(Shown(identity.Member("IdentityType")), "0 [5,3]");
    EXPECT_EQ(identity.Member("IdentityDigit").number, 0U);
    EXPECT_EQ(identity.ThereAndBack("39"), "39");
    EXPECT_EQ(ItemsShown(identity.Member("IdentityDigit")), "3 [0,4]");
}

TEST(LocatedIdentity, OfNoOctetsReadsItsTypeBehindTheElement) {
    TypeUnderTest identity = Element("RRMobileId");
    for (const char* octets : {"08 29 26", "08 21 26", "08 24 26"}) {
        EXPECT_EQ(identity.Decode(octets, 0, 8), 0);
        EXPECT_EQ(identity.Member("IdentityDigit").number, 0U);
    }
    EXPECT_EQ(Shown(identity.Member("IdentityType")), "4 [13,3]");
}

TEST(LocatedIdentity, HasSeventeenDigitsAtMost) {
    TypeUnderTest identity = Element("RRMobileId");
    EXPECT_EQ(identity.Decode("2B " + Zeros(7) + "98"), 72);
    const bits::Cell& digits = identity.Member("IdentityDigit");
    ASSERT_EQ(digits.number, 17U);
    EXPECT_EQ(Shown(digits.cells[15]), "8 [68,4]");
    EXPECT_EQ(Shown(digits.cells[16]), "9 [64,4]");
    EXPECT_EQ(identity.Decode("23 " + Zeros(9)), 80);
    EXPECT_EQ(identity.Member("IdentityDigit").number, 0U);
}

// Bit map type reporting.

/// The reports as "0 [0,1]: 42 [1,6]".
std::string ReportsShown(TypeUnderTest& reporting) {
    std::string text;
    const bits::Cell& reports = reporting.Member("BitmapReporting");
    for (std::uint32_t item = 0; item < reports.number; ++item) {
        const bits::Cell* report = reports.cells[item].cells;
        text += (item == 0 ? "" : ", ") + Shown(report[0]) + ": " + Shown(report[1]);
    }
    return text;
}

TEST(BitmapTypeReporting, HasAQuantityForEachBitThatIsSet) {
    TypeUnderTest reporting = Element("BitmapTypeReporting");
    EXPECT_EQ(reporting.Decode(HexOf("1 101010 0 0 1 000001"), 16), 16);
    EXPECT_EQ(ReportsShown(reporting), "0 [0,1]: 42 [1,6], 3 [9,1]: 1 [10,6]");
    EXPECT_EQ(Shown(reporting.Member("BitmapLength")), "0");
    EXPECT_EQ(reporting.Encode().hex, HexOf("1 101010 0 0 1 000001"));
    EXPECT_EQ(reporting.Decode("00", 5, 3), 5);
    EXPECT_EQ(ReportsShown(reporting), "");
}

TEST(BitmapTypeReporting, EndsAtAQuantityThatIsCutShort) {
    TypeUnderTest reporting = Element("BitmapTypeReporting");
    const std::string octets = HexOf("0 1 111111 0 1 000001");
    for (std::int64_t length = 9; length < 16; ++length) {
        EXPECT_EQ(reporting.Decode(octets, length), 9) << length;
        EXPECT_EQ(ReportsShown(reporting), "1 [1,1]: 63 [2,6]");
    }
    EXPECT_EQ(reporting.Decode(octets, 16), 16);
    EXPECT_EQ(ReportsShown(reporting), "1 [1,1]: 63 [2,6], 3 [9,1]: 1 [10,6]");
    EXPECT_EQ(reporting.Decode(octets, 7), 1);
    EXPECT_EQ(reporting.Decode(octets, 0), 0);
    EXPECT_EQ(ReportsShown(reporting), "");
}

TEST(BitmapTypeReporting, EndsWithItsStore) {
    TypeUnderTest reporting = Element("BitmapTypeReporting");
    std::string bits;
    for (std::uint32_t item = 0; item < 16; ++item) {
        bits += "1" + BitsOf(item, 6);
    }
    EXPECT_EQ(reporting.Decode(HexOf(bits + "0 0"), 16 * 7 + 2), 16 * 7 + 2);
    ASSERT_EQ(reporting.Member("BitmapReporting").number, 16U);
    // One more is not counted, nor what follows it.
    EXPECT_EQ(reporting.Decode(HexOf(bits + "0 1 111111 0"), 16 * 7 + 9), 16 * 7 + 1);
    EXPECT_EQ(reporting.Member("BitmapReporting").number, 16U);
}

TEST(BitmapTypeReporting, IsWrittenUpToItsLastReport) {
    TypeUnderTest reporting = Element("BitmapTypeReporting");
    EXPECT_EQ(reporting.Encode().bits, 0);
    EXPECT_EQ(reporting.Decode(HexOf("0 0 1 000011 0 0 0"), 12), 12);
    EXPECT_EQ(reporting.Encode().bits, 9);
    EXPECT_EQ(reporting.Encode().hex, HexOf("0 0 1 000011 1111111"));
}

TEST(BitmapTypeReporting, IndicesThatDoNotRiseCannotBeWritten) {
    TypeUnderTest reporting = Element("BitmapTypeReporting");
    EXPECT_EQ(reporting.Decode(HexOf("1 000001 1 000010"), 14), 14);
    reporting.Member("BitmapReporting").cells[1].cells[0].number = 0;
    EXPECT_EQ(reporting.Encode().bits, bits::Code::kSyntaxError);
}

}  // namespace
}  // namespace quorvane::families::test
