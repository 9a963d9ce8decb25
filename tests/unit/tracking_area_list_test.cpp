#include "families/eps/tracking_area_list.h"

#include <gtest/gtest.h>
#include <string>

#include "codec_test_support.h"

namespace quorvane::iecodec {
namespace {

using test::Zeros;

class TrackingAreaListItem : public testing::Test {
  protected:
    test::TypeUnderTest item_{families::kEpsFamily, "TrackingAreaIdentityList_Item"};
};

TEST_F(TrackingAreaListItem, Type0HasOnePlmnAndAListOfCodes) {
    EXPECT_EQ(item_.Decode("01 62 F2 10 00 01 12 34"), 64);
    EXPECT_EQ(item_.Text(),
              "Type0: {\n"
              "    MCC2: LOC:[8,4] 6\n"
              "    MCC1: LOC:[12,4] 2\n"
              "    MNC3: LOC:[16,4] 15\n"
              "    MCC3: LOC:[20,4] 2\n"
              "    MNC2: LOC:[24,4] 1\n"
              "    MNC1: LOC:[28,4] 0\n"
              "    TAC: [\n"
              "      1,\n"
              "      4660\n"
              "    ]\n"
              "  }\n");
}

TEST_F(TrackingAreaListItem, LengthComesFromTheLowFourBitsOfTheCount) {
    EXPECT_EQ(item_.Decode("00 " + Zeros(35)), 48);
    EXPECT_EQ(item_.Decode("0F " + Zeros(35)), 8 + 24 + 256);
    EXPECT_EQ(item_.Record().cells->cells[6].number, 16U);
    // Neither the fifth bit of the count nor the spare bit takes part.
    EXPECT_EQ(item_.Decode("10 " + Zeros(35)), 48);
    EXPECT_EQ(item_.Decode("81 " + Zeros(35)), 64);
    EXPECT_EQ(item_.Record().number, 1U);
    // The length of the field doesn't, either.
    EXPECT_EQ(item_.Decode("01 62 F2 10 00 01 12 34", 16), 64);
}

TEST_F(TrackingAreaListItem, Type1HasOneCodeWhateverTheCount) {
    EXPECT_EQ(item_.Decode("3F 62 F2 10 12 34"), 48);
    EXPECT_EQ(item_.Text(),
              "Type1: {\n"
              "    spare: 0\n"
              "    TypeOfList: 0\n"
              "    NumberOfElements: LOC:[3,5] 31\n"
              "    MCC2: LOC:[8,4] 6\n"
              "    MCC1: LOC:[12,4] 2\n"
              "    MNC3: LOC:[16,4] 15\n"
              "    MCC3: LOC:[20,4] 2\n"
              "    MNC2: LOC:[24,4] 1\n"
              "    MNC1: LOC:[28,4] 0\n"
              "    TAC: LOC:[32,16] 4660\n"
              "  }\n");
    EXPECT_EQ(item_.Decode("20 62 F2 10 12 34"), 48);
}

TEST_F(TrackingAreaListItem, Type2HasWholeIdentities) {
    EXPECT_EQ(item_.Decode("41 62 F2 10 00 01 62 F2 20 00 02"), 88);
    EXPECT_EQ(item_.Text(),
              "Type2: [\n"
              "    {\n"
              "        MCC2: LOC:[8,4] 6\n"
              "        MCC1: LOC:[12,4] 2\n"
              "        MNC3: LOC:[16,4] 15\n"
              "        MCC3: LOC:[20,4] 2\n"
              "        MNC2: LOC:[24,4] 1\n"
              "        MNC1: LOC:[28,4] 0\n"
              "        TAC: LOC:[32,16] 1\n"
              "      }\n"
              ",\n"
              "    {\n"
              "        MCC2: LOC:[48,4] 6\n"
              "        MCC1: LOC:[52,4] 2\n"
              "        MNC3: LOC:[56,4] 15\n"
              "        MCC3: LOC:[60,4] 2\n"
              "        MNC2: LOC:[64,4] 2\n"
              "        MNC1: LOC:[68,4] 0\n"
              "        TAC: LOC:[72,16] 2\n"
              "      }\n"
              "\n"
              "  ]");
    EXPECT_EQ(item_.Decode("47 " + Zeros(40)), 8 + 320);
    EXPECT_EQ(item_.Record().cells->number, 8U);
    // Nine do not go in: the list stops behind eight, and the item counts those.
    EXPECT_EQ(item_.Decode("48 " + Zeros(45)), 8 + 320);
    EXPECT_EQ(item_.Record().cells->number, 8U);
}

TEST_F(TrackingAreaListItem, Type3Fails) {
    EXPECT_EQ(item_.Decode("60 62 F2 10 12 34"), kSyntaxError);
    EXPECT_EQ(item_.Record().number, 0U);
    EXPECT_EQ(item_.Diagnostics(), "");
}

TEST_F(TrackingAreaListItem, IsWrittenWithTypeAndCount) {
    for (const char* octets :
         {"00 62 F2 10 00 01", "01 62 F2 10 00 01 12 34", "3F 62 F2 10 12 34", "20 62 F2 10 12 34",
          "40 62 F2 10 00 01", "41 62 F2 10 00 01 62 F2 20 00 02"}) {
        EXPECT_EQ(item_.ThereAndBack(octets), octets);
    }
    EXPECT_EQ(item_.ThereAndBack("91 62 F2 10 00 01 12 34"), "01 62 F2 10 00 01 12 34");
    EXPECT_EQ(item_.ThereAndBack("A5 62 F2 10 12 34"), "25 62 F2 10 12 34");
}

TEST_F(TrackingAreaListItem, WithoutAnAlternativeWritesNothing) {
    for (const std::uint32_t tag : {0U, 4U}) {
        static_cast<void>(item_.Decode("20 62 F2 10 12 34"));
        item_.Record().number = tag;
        EXPECT_EQ(item_.Encode().bits, 0);
    }
}

TEST(TrackingAreaList, TakesUpToSixteenItems) {
    test::TypeUnderTest list(families::kEpsFamily, "PartialTrackingAreaIdentityList");
    std::string octets;
    for (int item = 0; item < 17; ++item) {
        octets += "20 62 F2 10 12 34 ";
    }
    EXPECT_EQ(list.Decode(octets), 16 * 48);
    EXPECT_EQ(list.Record().number, 16U);
    EXPECT_EQ(list.Encode().bits, 16 * 48);
}

}  // namespace
}  // namespace quorvane::iecodec
