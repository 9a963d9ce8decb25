// Digits, identities, emergency numbers, linked transaction identifiers and the generic element,
// in both directions. Traffic flow templates have a file of their own.

#include <array>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "codec_test_support.h"
#include "families/common/elements.h"

namespace quorvane::iecodec {
namespace {

using test::TypeUnderTest;
using test::Zeros;

TypeUnderTest Eps(std::string_view type) {
    return {families::kEpsFamily, type};
}

/// The types of the same form in both NAS families.
std::array<TypeUnderTest, 2> Twins(std::string_view eps, std::string_view l3) {
    return {TypeUnderTest(families::kEpsFamily, eps), TypeUnderTest(families::kL3Family, l3)};
}

std::vector<std::uint32_t> NumbersOf(const bits::Cell& sequence) {
    std::vector<std::uint32_t> numbers;
    for (std::uint32_t item = 0; item < sequence.number; ++item) {
        numbers.push_back(sequence.cells[item].number);
    }
    return numbers;
}

using Numbers = std::vector<std::uint32_t>;

// Telephone digits.

TEST(TelephoneDigits, TwoAnOctetTheLowHalfFirst) {
    for (TypeUnderTest& digits : Twins("epsTBCDArray", "TBCDArray")) {
        EXPECT_EQ(digits.Decode("21 43"), 16);
        EXPECT_EQ(digits.Text(), "[\n  1,\n  2,\n  3,\n  4\n]");
        EXPECT_EQ(digits.Decode("21 F3"), 16);
        EXPECT_EQ(NumbersOf(digits.Record()), (Numbers{1, 2, 3}));
        EXPECT_EQ(digits.Decode("F3"), 8);
        EXPECT_EQ(NumbersOf(digits.Record()), (Numbers{3}));
    }
}

TEST(TelephoneDigits, OnlyTheLastHighHalfIsAFiller) {
    for (TypeUnderTest& digits : Twins("epsTBCDArray", "TBCDArray")) {
        EXPECT_EQ(digits.Decode("F1 4F"), 16);
        EXPECT_EQ(NumbersOf(digits.Record()), (Numbers{1, 15, 15, 4}));
    }
}

TEST(TelephoneDigits, OfNoOctetsLookAtTheOctetBefore) {
    for (TypeUnderTest& digits : Twins("epsTBCDArray", "TBCDArray")) {
        // Without a filler there the count is 0, with one it is -1: no digits either way.
        EXPECT_EQ(digits.Decode("81", 0, 8), 0);
        EXPECT_EQ(digits.Text(), "[\n]");
        EXPECT_EQ(digits.Decode("F1", 0, 8), 0);
        EXPECT_EQ(digits.Text(), "[\n]");
        EXPECT_EQ(digits.Decode("81 21", -8, 16), -8);
        EXPECT_EQ(digits.Text(), "[\n]");
    }
}

TEST(TelephoneDigits, MoreThanTheStoreHoldsAreNone) {
    for (TypeUnderTest& digits : Twins("epsTBCDArray", "TBCDArray")) {
        EXPECT_EQ(digits.Decode(Zeros(15) + "F9"), 128);
        EXPECT_EQ(digits.Record().number, 31U);
        EXPECT_EQ(digits.Decode(Zeros(15) + "99"), 128);
        EXPECT_EQ(digits.Record().number, 32U);
        EXPECT_EQ(digits.Record().cells[31].number, 9U);
        EXPECT_EQ(digits.Decode(Zeros(16) + "F9"), 136);
        EXPECT_EQ(digits.Record().number, 0U);
        EXPECT_EQ(digits.Decode(Zeros(40)), 320);
        EXPECT_EQ(digits.Record().number, 0U);
    }
}

TEST(TelephoneDigits, AreWrittenWithAFillerBehindAnOddOne) {
    for (TypeUnderTest& digits : Twins("epsTBCDArray", "TBCDArray")) {
        EXPECT_EQ(digits.ThereAndBack("21 43"), "21 43");
        EXPECT_EQ(digits.ThereAndBack("21 F3"), "21 F3");
        EXPECT_EQ(digits.Decode("", 0), 0);
        EXPECT_EQ(digits.Encode().bits, 0);
    }
}

// Identities.

TEST(IdentityDigits, CountFollowsOctetsAndTheOddBit) {
    TypeUnderTest identity = Eps("EPSMobileIdentity_IMSI");
    EXPECT_EQ(identity.Decode("29 26 10"), 24);
    EXPECT_EQ(identity.Text(),
              "{\n"
              "  IdentityDigit: [\n"
              "    2,\n"
              "    6,\n"
              "    2,\n"
              "    0,\n"
              "    1\n"
              "  ]\n"
              "}\n");
    // Even: the last high half is read but not stored, whatever it is.
    EXPECT_EQ(identity.Decode("21 26 10"), 24);
    EXPECT_EQ(NumbersOf(identity.Record().cells[0]), (Numbers{2, 6, 2, 0}));
    EXPECT_EQ(identity.Decode("29"), 8);
    EXPECT_EQ(NumbersOf(identity.Record().cells[0]), (Numbers{2}));
    EXPECT_EQ(identity.Decode("21"), 8);
    EXPECT_EQ(NumbersOf(identity.Record().cells[0]), Numbers{});
}

TEST(IdentityDigits, MoreThanTheStoreHoldsAreNone) {
    TypeUnderTest identity = Eps("EPSMobileIdentity_IMSI");
    EXPECT_EQ(identity.Decode("29 " + Zeros(7)), 64);
    EXPECT_EQ(identity.Record().cells[0].number, 15U);
    EXPECT_EQ(identity.Decode("21 " + Zeros(8)), 72);
    EXPECT_EQ(identity.Record().cells[0].number, 0U);
    for (TypeUnderTest& mobile : Twins("epsMobileId_Identity", "MobileId_Identity")) {
        EXPECT_EQ(mobile.Decode("2B " + Zeros(8)), 72);
        EXPECT_EQ(mobile.Record().cells[0].number, 17U);
        EXPECT_EQ(mobile.Decode("23 " + Zeros(9)), 80);
        EXPECT_EQ(mobile.Record().cells[0].number, 0U);
        EXPECT_EQ(mobile.Record().cells[1].number, 3U);
    }
}

TEST(MobileIdentity, KeepsItsTypeWithoutALocation) {
    for (TypeUnderTest& mobile : Twins("epsMobileId_Identity", "MobileId_Identity")) {
        EXPECT_EQ(mobile.Decode("4A 09"), 16);
        EXPECT_EQ(mobile.Text(),
                  "{\n"
                  "  IdentityDigit: [\n"
                  "    4,\n"
                  "    9,\n"
                  "    0\n"
                  "  ]\n"
                  "  IdentityType: IMEI (2)\n"
                  "}\n");
        EXPECT_EQ(mobile.Decode("F7"), 8);
        EXPECT_EQ(mobile.Text(), "{\n  IdentityDigit: [\n  ]\n  IdentityType: 7\n}\n");
    }
}

TEST(MobileIdentity, OfATmsiHasOctets) {
    for (TypeUnderTest& mobile : Twins("epsMobileId_Identity", "MobileId_Identity")) {
        EXPECT_EQ(mobile.Decode("F4 C0 00 12 FF"), 40);
        EXPECT_EQ(mobile.Text(),
                  "{\n"
                  "  IdentityDigit: [\n"
                  "    192,\n"
                  "    0,\n"
                  "    18,\n"
                  "    255\n"
                  "  ]\n"
                  "  IdentityType: TMSI/P-TMSI/M-TMSI (4)\n"
                  "}\n");
        EXPECT_EQ(mobile.Decode("F4"), 8);
        EXPECT_EQ(mobile.Record().cells[0].number, 0U);
        EXPECT_EQ(mobile.Decode("F4 " + Zeros(17)), 144);
        EXPECT_EQ(mobile.Record().cells[0].number, 17U);
        EXPECT_EQ(mobile.Decode("F4 " + Zeros(18)), 152);
        EXPECT_EQ(mobile.Record().cells[0].number, 0U);
        // The odd bit means nothing here.
        EXPECT_EQ(mobile.Decode("FC 01"), 16);
        EXPECT_EQ(NumbersOf(mobile.Record().cells[0]), (Numbers{1}));
    }
}

TEST(MobileIdentity, IsWrittenWithTheOddBitOfItsCount) {
    for (TypeUnderTest& mobile : Twins("epsMobileId_Identity", "MobileId_Identity")) {
        EXPECT_EQ(mobile.ThereAndBack("29 26 10"), "29 26 10");
        EXPECT_EQ(mobile.ThereAndBack("22 26 F0"), "22 26 F0");
        EXPECT_EQ(mobile.ThereAndBack("22 26 10"), "22 26 F0");
        EXPECT_EQ(mobile.ThereAndBack("4A"), "4A");
        EXPECT_EQ(mobile.ThereAndBack("F4 C0 00 12 FF"), "F4 C0 00 12 FF");
        EXPECT_EQ(mobile.ThereAndBack("04 01"), "F4 01");
    }
    // Where the type isn't kept, it is that of an IMSI.
    TypeUnderTest identity = Eps("EPSMobileIdentity_IMSI");
    EXPECT_EQ(identity.ThereAndBack("2A 26 10"), "29 26 10");
    EXPECT_EQ(identity.ThereAndBack("22 26 10"), "21 26 F0");
}

// Emergency numbers.

TEST(EmergencyNumber, HasALengthOfItsOwn) {
    for (TypeUnderTest& number : Twins("epsTBCDEmergencyNumber", "TBCDEmergencyNumber")) {
        EXPECT_EQ(number.Decode("03 95 11 F2 AA BB"), 32);
        EXPECT_EQ(number.Text(),
                  "{\n"
                  "  ServiceCategory: {\n"
                  "    spare: 0\n"
                  "    AutomaticallyInitiatedECall: LOC:[9,1] 0\n"
                  "    ManuallyInitiatedECall: LOC:[10,1] 0\n"
                  "    MountainRescue: LOC:[11,1] 1\n"
                  "    MarineGuard: LOC:[12,1] 0\n"
                  "    FireBrigade: LOC:[13,1] 1\n"
                  "    Ambulance: LOC:[14,1] 0\n"
                  "    Police: LOC:[15,1] 1\n"
                  "  }\n"
                  "\n"
                  "  Numbers: [\n"
                  "    1,\n"
                  "    1,\n"
                  "    2\n"
                  "  ]\n"
                  "}\n");
    }
}

TEST(EmergencyNumber, CountsTheOctetsItWalks) {
    for (TypeUnderTest& number : Twins("epsTBCDEmergencyNumber", "TBCDEmergencyNumber")) {
        // Length 0 leaves the category's octet where it is.
        EXPECT_EQ(number.Decode("00 01"), 16);
        EXPECT_EQ(number.Record().cells[1].number, 0U);
        EXPECT_EQ(number.Decode("01 01"), 16);
        EXPECT_EQ(number.Record().cells[1].number, 0U);
        EXPECT_EQ(number.Decode("02 01 F9"), 24);
        EXPECT_EQ(NumbersOf(number.Record().cells[1]), (Numbers{9}));
        // The element's own length says how far it goes, not that of the field.
        EXPECT_EQ(number.Decode("02 01 F9", 8), 24);

        EXPECT_EQ(number.Decode("11 01 " + Zeros(16)), 16 + 128);
        EXPECT_EQ(number.Record().cells[1].number, 32U);
        EXPECT_EQ(number.Decode("12 01 " + Zeros(17)), 16 + 128);
        EXPECT_EQ(number.Record().cells[1].number, 0U);
    }
}

TEST(EmergencyNumber, IsWrittenBack) {
    for (TypeUnderTest& number : Twins("epsTBCDEmergencyNumber", "TBCDEmergencyNumber")) {
        EXPECT_EQ(number.ThereAndBack("03 95 11 F2"), "03 15 11 F2");
        EXPECT_EQ(number.ThereAndBack("02 00 21"), "02 00 21");
        EXPECT_EQ(number.ThereAndBack("01 7F"), "01 7F");
    }
}

TEST(EmergencyNumberList, OfTheEpsFieldIsOneNumberThatIsNotCounted) {
    TypeUnderTest list = Eps("epsEmergencyNumberList");
    EXPECT_EQ(list.Decode("03 1F 11 F2 03 04 19 F1"), 32);
    EXPECT_EQ(list.Text(), "[\n]");
    EXPECT_EQ(list.ThereAndBack("03 1F 11 F2"), "03 1F 11 F2");
}

TEST(EmergencyNumberList, OfTheOtherFamilyTakesThemAll) {
    TypeUnderTest list(families::kL3Family, "EmergencyNumberList");
    EXPECT_EQ(list.Decode("03 1F 11 F2 02 04 19"), 56);
    EXPECT_EQ(list.Record().number, 2U);
    EXPECT_EQ(list.ThereAndBack("03 1F 11 F2 02 04 19"), "03 1F 11 F2 02 04 19");
    EXPECT_EQ(list.Decode("01 00 01 00 01 00 01 00 01 00 01 00 01 00"), 96);
    EXPECT_EQ(list.Record().number, 6U);
}

// Linked transaction identifiers.

TEST(LinkedIdentifier, IsExtendedBySeven) {
    for (TypeUnderTest& linked : Twins("epsLinkedTi", "LinkedTi")) {
        EXPECT_EQ(linked.Decode("D0"), 8);
        EXPECT_EQ(linked.Text(), "{\n  TIValue: 5\n  TIFlag: 1\n}\n");
        EXPECT_EQ(linked.Decode("6F 85"), 8);  // a second octet is not looked at
        EXPECT_EQ(linked.Text(), "{\n  TIValue: 6\n  TIFlag: 0\n}\n");
        EXPECT_EQ(linked.Decode("70 85"), 16);
        EXPECT_EQ(linked.Text(), "{\n  TIValue: 5\n  TIFlag: 0\n}\n");
        EXPECT_EQ(linked.Decode("F0 7F"), 16);
        EXPECT_EQ(linked.Text(), "{\n  TIValue: 127\n  TIFlag: 1\n}\n");
        EXPECT_EQ(linked.Decode("70", 8), 16);
    }
}

TEST(LinkedIdentifier, IsWrittenAsShortAsItGoes) {
    for (TypeUnderTest& linked : Twins("epsLinkedTi", "LinkedTi")) {
        EXPECT_EQ(linked.ThereAndBack("D0"), "D0");
        EXPECT_EQ(linked.ThereAndBack("6F"), "60");
        EXPECT_EQ(linked.ThereAndBack("F0 87"), "F0 87");
        EXPECT_EQ(linked.ThereAndBack("70 7F"), "70 FF");
        EXPECT_EQ(linked.ThereAndBack("70 85"), "50");
    }
}

// The generic element.

class GenericElement : public testing::Test {
  protected:
    std::array<TypeUnderTest, 3> elements_{{{families::kEpsFamily, "GenericTLV_EPS"},
                                            {families::kEpcFamily, "GenericTLV_EPC"},
                                            {families::kL3Family, "GenericTLV_L3"}}};
};

TEST_F(GenericElement, TakesTagLengthAndValue) {
    for (TypeUnderTest& element : elements_) {
        EXPECT_EQ(element.Decode("12 02 AA BB CC"), 32);
        EXPECT_EQ(element.Record().cells[0].number, 0x12U);
        EXPECT_EQ(element.Record().cells[1].number, 16U);
        EXPECT_EQ(element.Record().cells[1].octets[1], 0xBB);
        EXPECT_EQ(element.Decode("12 00"), 16);
        EXPECT_EQ(element.Record().cells[1].number, 0U);
    }
}

TEST_F(GenericElement, LengthMayTakeUpToFourMoreOctets) {
    for (TypeUnderTest& element : elements_) {
        EXPECT_EQ(element.Decode("12 80"), 16);
        EXPECT_EQ(element.Decode("12 81 01 AA"), 32);
        EXPECT_EQ(element.Decode("12 82 00 01 AA"), 40);
        EXPECT_EQ(element.Decode("12 83 00 00 01 AA"), 48);
        EXPECT_EQ(element.Decode("12 84 00 00 00 01 AA"), 56);
        EXPECT_EQ(element.Record().cells[1].number, 8U);
        EXPECT_EQ(element.Record().cells[1].octets[0], 0xAA);
        EXPECT_EQ(element.Decode("12 85 00 00 00 00 01 AA"), kSizeError);
        EXPECT_EQ(element.Decode("12 FF"), kSizeError);
    }
}

TEST_F(GenericElement, IsTooShortWithoutItsValue) {
    for (TypeUnderTest& element : elements_) {
        for (const std::int64_t length : {-8, 0, 8, 15}) {
            EXPECT_EQ(element.Decode("12 00", length), kMessageTooShort) << length;
        }
        EXPECT_EQ(element.Decode("12 01"), kMessageTooShort);
        EXPECT_EQ(element.Decode("12 02 AA"), kMessageTooShort);
        EXPECT_EQ(element.Decode("12 81"), kMessageTooShort);
        EXPECT_EQ(element.Decode("12 84 FF FF FF FF"), kMessageTooShort);
        EXPECT_EQ(element.Diagnostics(), "");
    }
}

TEST_F(GenericElement, KeepsSixtyFourBitsAndCountsAll) {
    for (TypeUnderTest& element : elements_) {
        EXPECT_EQ(element.Decode("12 08 01 02 03 04 05 06 07 08"), 80);
        EXPECT_EQ(element.Record().cells[1].number, 64U);
        EXPECT_EQ(element.Decode("12 09 01 02 03 04 05 06 07 08 09"), 88);
        EXPECT_EQ(element.Record().cells[1].number, 64U);
        EXPECT_EQ(element.Decode("12 81 80 " + Zeros(128)), 24 + 1024);
        EXPECT_EQ(element.Record().cells[1].number, 64U);
    }
}

TEST_F(GenericElement, IsWrittenBack) {
    for (TypeUnderTest& element : elements_) {
        EXPECT_EQ(element.ThereAndBack("12 00"), "12 00");
        EXPECT_EQ(element.ThereAndBack("FF 02 AA BB"), "FF 02 AA BB");
        EXPECT_EQ(element.ThereAndBack("12 81 01 AA"), "12 01 AA");
    }
}

}  // namespace
}  // namespace quorvane::iecodec
