// The wire forms of values, on types of the described families.

#include "iecodec/value_decoder.h"

#include <array>
#include <gtest/gtest.h>
#include <limits>
#include <string>

#include "codec_test_support.h"

namespace quorvane::iecodec {
namespace {

using test::TypeUnderTest;
using test::Zeros;

TypeUnderTest Eps(std::string_view type) {
    return {families::kEpsFamily, type};
}

TypeUnderTest L3(std::string_view type) {
    return {families::kL3Family, type};
}

// Fixed structures.

TEST(FixedStructure, ResultIsItsWidthWhateverTheLength) {
    TypeUnderTest area = Eps("TrackingAreaIdentity");
    for (const std::int64_t length : {-8, 0, 8, 39, 40, 48, 4000}) {
        EXPECT_EQ(area.Decode("62 F2 10 12 34", length), 40) << length;
        EXPECT_EQ(area.Text(),
                  "{\n"
                  "  MCC2: LOC:[0,4] 6\n"
                  "  MCC1: LOC:[4,4] 2\n"
                  "  MNC3: LOC:[8,4] 15\n"
                  "  MCC3: LOC:[12,4] 2\n"
                  "  MNC2: LOC:[16,4] 1\n"
                  "  MNC1: LOC:[20,4] 0\n"
                  "  TAC: LOC:[24,16] 4660\n"
                  "}\n");
    }
}

TEST(FixedStructure, SpareBitsAreNotLookedAt) {
    TypeUnderTest status = Eps("epsTmsiStatus");
    EXPECT_EQ(status.Decode("F0", 4), 4);
    EXPECT_EQ(status.Text(), "{\n  spare: 0\n  TMSIFlag: LOC:[3,1] 1\n}\n");
    EXPECT_EQ(status.Decode("E0", 4), 4);
    EXPECT_EQ(status.Text(), "{\n  spare: 0\n  TMSIFlag: LOC:[3,1] 0\n}\n");
}

TEST(FixedStructure, LocationsCountFromTheStartOfTheOctets) {
    TypeUnderTest status = Eps("epsTmsiStatus");
    EXPECT_EQ(status.Decode("00 01", 4, 12), 4);
    EXPECT_EQ(status.Text(), "{\n  spare: 0\n  TMSIFlag: LOC:[15,1] 1\n}\n");
}

// Truncatable structures.

constexpr std::string_view kGuti = "F6 62 F2 10 12 34 56 C0 00 00 01";

TEST(TruncatableStructure, EndsAheadOfTheFirstFieldThatTheLengthDoesNotReach) {
    // Where the parts start: two spare nibbles' worth of octet 1 (4, 1 and 3 bits), six digits,
    // 16, 8 and 32 bits.
    struct {
        std::int64_t length;
        std::int64_t result;
    } const cases[] = {{-8, 0},  {0, 0},   {1, 4},   {3, 4},   {4, 4},   {5, 5},   {6, 8},
                       {8, 8},   {9, 12},  {12, 12}, {31, 32}, {32, 32}, {33, 48}, {48, 48},
                       {49, 56}, {56, 56}, {57, 88}, {88, 88}, {96, 88}};
    TypeUnderTest guti = Eps("EPSMobileIdentity_GUTI");
    for (const auto& [length, result] : cases) {
        EXPECT_EQ(guti.Decode(kGuti, length), result) << length;
    }
}

TEST(TruncatableStructure, ReadsTheFieldInWhichTheLengthEndsAsAWhole) {
    TypeUnderTest guti = Eps("EPSMobileIdentity_GUTI");
    ASSERT_EQ(guti.Decode(kGuti, 50), 56);
    EXPECT_EQ(guti.Text(),
              "{\n"
              "  spare: 0\n"
              "  OddEven: 0\n"
              "  IdentityType: 0\n"
              "  MCC2: LOC:[8,4] 6\n"
              "  MCC1: LOC:[12,4] 2\n"
              "  MNC3: LOC:[16,4] 15\n"
              "  MCC3: LOC:[20,4] 2\n"
              "  MNC2: LOC:[24,4] 1\n"
              "  MNC1: LOC:[28,4] 0\n"
              "  MMEGroupID: LOC:[32,16] 4660\n"
              "  MMECode: LOC:[48,8] 86\n"
              "  M_TMSI: 0\n"
              "}\n");
}

TEST(TruncatableStructure, ALastFieldTakesTheRest) {
    TypeUnderTest address = L3("CalledPartySubaddr");
    EXPECT_EQ(address.Decode("", 0), 0);
    EXPECT_EQ(address.Decode("88", 8), 8);
    EXPECT_EQ(address.Decode("A8 50 12", 24), 24);
    EXPECT_EQ(address.Text(),
              "{\n"
              "  ext: 0\n"
              "  TypeOfSubaddress: LOC:[1,3] User specified (2)\n"
              "  OddEvenIndicator: LOC:[4,1] odd number of address signals (1)\n"
              "  spare: 0\n"
              "  SubaddressInformation: LOC:[8,16] 50 12\n"
              "}\n");
}

// Binaries.

TEST(Binary, StoresWhatItsStoreHoldsAndCountsTheLength) {
    TypeUnderTest name = L3("ASCII");
    EXPECT_EQ(name.Decode("61 62 63"), 24);
    EXPECT_EQ(name.Text(), "{\n  text: LOC:[0,24] 61 62 63\n}\n");

    EXPECT_EQ(name.Decode(Zeros(101)), 808);
    EXPECT_EQ(name.Record().cells[0].number, 800U);
    EXPECT_EQ(name.Record().cells[0].location, 808U);
}

TEST(Binary, OfNoOctetsHasOnlyALocation) {
    TypeUnderTest name = L3("ASCII");
    EXPECT_EQ(name.Decode("FF FF", 0, 8), 0);
    EXPECT_EQ(name.Text(), "{\n  text: LOC:[8,0] \n}\n");
}

TEST(Binary, RefusesANegativeLength) {
    // Both extension bits are clear up to the end, behind which the closing octet counts: the
    // diagnostics are left with -8 bits.
    TypeUnderTest cause = L3("Cause");
    EXPECT_EQ(cause.Decode("E0 10"), kSyntaxError);
    EXPECT_EQ(cause.Diagnostics(),
              "<ERRID:*> Error decoding subfield diagnostic\n"
              "<ERRID:*> Error decoding remainder of Cause\n");
}

// Choices.

TEST(Choice, OtherSelectorsTakeTheDefault) {
    TypeUnderTest identity = Eps("EPSMobileIdentity");
    TypeUnderTest mobile = Eps("epsMobileId");
    for (std::uint32_t selector = 0; selector < 8; ++selector) {
        const std::string octets = "F" + std::to_string(selector) + " 62 F2 10";
        EXPECT_EQ(identity.Decode(octets), 32);
        EXPECT_EQ(identity.Record().number, selector == 6 ? 2U : 1U) << selector;
        EXPECT_EQ(mobile.Decode(octets), 32);
        EXPECT_EQ(mobile.Record().number, selector == 5 ? 2U : 1U) << selector;
    }
}

TEST(Choice, TheAlternativeHasTheSameOctets) {
    TypeUnderTest mobile = Eps("epsMobileId");
    ASSERT_EQ(mobile.Decode("35 00 00 07", 32), 32);
    EXPECT_EQ(mobile.Text(),
              "TMGI: {\n"
              "    spare: 0\n"
              "    MBMSSessIdIndic: LOC:[2,1] MBMS Session Identity is present (1)\n"
              "    MCCMNCIndic: LOC:[3,1] MCC/MNC is  present (1)\n"
              "    OddEven: 0\n"
              "    IdentityType: LOC:[5,3] TMGI and optional MBMS Session Identity (5)\n"
              "    MBMSServiceID: LOC:[8,24] 7\n"
              "    MCC2: 0\n"
              "    MCC1: 0\n"
              "    MNC3: 0\n"
              "    MCC3: 0\n"
              "    MNC2: 0\n"
              "    MNC1: 0\n"
              "    MBMSSessionIdentity: 0\n"
              "  }\n");
}

// Sequences.

TEST(Sequence, TakesItemsWhileLengthIsLeft) {
    TypeUnderTest plmns = Eps("epsPlmnList");
    EXPECT_EQ(plmns.Decode("", 0), 0);
    EXPECT_EQ(plmns.Text(), "[\n]");
    EXPECT_EQ(plmns.Decode("", -8), 0);
    EXPECT_EQ(plmns.Record().number, 0U);
    EXPECT_EQ(plmns.Decode("62 F2 10"), 24);
    EXPECT_EQ(plmns.Record().number, 1U);
    // The item in which the length ends is decoded too: the result is the sum of the items'.
    EXPECT_EQ(plmns.Decode("62 F2 10 62"), 48);
    EXPECT_EQ(plmns.Record().number, 2U);
    EXPECT_EQ(plmns.Text(),
              "[\n"
              "  {\n"
              "      MCC2: LOC:[0,4] 6\n"
              "      MCC1: LOC:[4,4] 2\n"
              "      MNC3: LOC:[8,4] 15\n"
              "      MCC3: LOC:[12,4] 2\n"
              "      MNC2: LOC:[16,4] 1\n"
              "      MNC1: LOC:[20,4] 0\n"
              "    }\n"
              ",\n"
              "  {\n"
              "      MCC2: LOC:[24,4] 6\n"
              "      MCC1: LOC:[28,4] 2\n"
              "      MNC3: LOC:[32,4] 0\n"
              "      MCC3: LOC:[36,4] 0\n"
              "      MNC2: LOC:[40,4] 0\n"
              "      MNC1: LOC:[44,4] 0\n"
              "    }\n"
              "\n"
              "]");
}

TEST(Sequence, StopsAtItsCapacityWithoutAWord) {
    TypeUnderTest plmns = Eps("epsPlmnList");
    EXPECT_EQ(plmns.Decode(Zeros(15)), 120);
    EXPECT_EQ(plmns.Record().number, 5U);
    EXPECT_EQ(plmns.Decode(Zeros(18)), 120);
    EXPECT_EQ(plmns.Record().number, 5U);
    EXPECT_EQ(plmns.Diagnostics(), "");
}

TEST(Sequence, FailsWithItsItem) {
    // The second list is of type 3; the first, and the failed one's place, stay.
    TypeUnderTest lists = Eps("PartialTrackingAreaIdentityList");
    EXPECT_EQ(lists.Decode("20 62 F2 10 00 01 60 62 F2 10 00 02"), kSyntaxError);
    EXPECT_EQ(lists.Diagnostics(),
              "<ERRID:*> Error decoding sequence PartialTrackingAreaIdentityList\n");
    EXPECT_EQ(lists.Record().number, 2U);
    EXPECT_EQ(lists.Record().cells[0].number, 2U);
    EXPECT_EQ(lists.Record().cells[1].number, 0U);
}

TEST(Sequence, AnItemMayCountMoreThanIsLeft) {
    // The bitmap of 5 octets reaches past the element: its length counts all the same.
    TypeUnderTest codecs = Eps("epsSupportedCodecList");
    EXPECT_EQ(codecs.Decode("04 05 60"), 56);
    EXPECT_EQ(codecs.Record().number, 1U);
    EXPECT_EQ(codecs.Text(),
              "[\n"
              "  {\n"
              "      SysId: 4\n"
              "      CodecBitmap: 60 00 00 00 00\n"
              "    }\n"
              "\n"
              "]");
}

// Members behind length octets of their own.

TEST(SerialStructure, CountsALengthThatItsStoreDoesNotHold) {
    TypeUnderTest codec = Eps("epsSupportedCodec");
    EXPECT_EQ(codec.Decode("02 FF " + Zeros(255)), 8 + 8 + 2040);
    EXPECT_EQ(codec.Record().cells[1].number, 64U);
    EXPECT_EQ(codec.Decode("02 00"), 16);
    EXPECT_EQ(codec.Text(), "{\n  SysId: 2\n  CodecBitmap: \n}\n");
}

TEST(SerialStructure, ARestBelowItsFixedPartIsRefused) {
    TypeUnderTest address = L3("PacketDataProtocolAddr");
    EXPECT_EQ(address.Decode("F1 21"), 16);
    EXPECT_EQ(address.Text(),
              "{\n"
              "  spare: 0\n"
              "  PDPTypeOrganisation: LOC:[4,4] IETF allocated address (1)\n"
              "  PDPTypeNumber: LOC:[8,8] IPv4 address (33)\n"
              "  AddressInformation: LOC:[16,0] \n"
              "}\n");
    EXPECT_EQ(address.Decode("01", 8), kSyntaxError);
    EXPECT_EQ(address.Diagnostics(), "<ERRID:*> Error decoding subfield AddressInformation\n");
}

// Network names.

TEST(NetworkName, TextIsCutAt249Octets) {
    for (const char* type : {"epsNetwkName", "NetwkName"}) {
        TypeUnderTest name(type[0] == 'e' ? families::kEpsFamily : families::kL3Family, type);
        EXPECT_EQ(name.Decode("8C " + Zeros(299)), 2400);
        EXPECT_EQ(name.Record().cells[4].number, 1992U);
        EXPECT_EQ(name.Record().cells[4].location, 8U << 16 | 2392U);
        EXPECT_EQ(name.Diagnostics(), "");
        // The count of spare bits cuts nothing off.
        EXPECT_EQ(name.Decode("87 FF"), 16);
        EXPECT_EQ(name.Record().cells[4].number, 8U);
    }
}

// Elements cut by extension bits.

TEST(ExtensionElement, NeedsItsMandatoryGroups) {
    TypeUnderTest cause = L3("Cause");
    EXPECT_EQ(cause.Decode(""), kSyntaxError);
    EXPECT_EQ(cause.Diagnostics(),
              "<ERRID:*> Error decoding 0/1ext IE: missing mandatory group 3\n");
    EXPECT_EQ(cause.Decode("E0"), kSyntaxError);
    EXPECT_EQ(cause.Diagnostics(),
              "<ERRID:*> Error decoding 0/1ext IE: missing mandatory group 4\n");
    TypeUnderTest options = Eps("epsProtocolCfgOpt");
    EXPECT_EQ(options.Decode(""), kSyntaxError);
    EXPECT_EQ(options.Diagnostics(),
              "<ERRID:*> Error decoding 0/1ext IE: missing mandatory group 1\n");
}

TEST(ExtensionElement, TellsGroupsOfAnyNumber) {
    std::array<ValueRow, 1> values{};
    values[0].shape = Shape::kExtension;
    values[0].count = 1;
    values[0].item = kNone;
    const std::array<GroupRow, 1> groups{{{true, 211, 0, 0, 7}}};
    CodecTables tables{};
    tables.values = values;
    tables.groups = groups;
    bits::Arena arena;
    bits::Cell cell{};
    Diagnostics diagnostics;
    DecodeContext context{tables, bits::BitReader(nullptr, 0), arena, diagnostics};
    static_cast<void>(DecodeValue(context, values[0], 0, cell, 0));
    EXPECT_EQ(diagnostics.Lines(),
              "<ERRID:7> Error decoding 0/1ext IE: missing mandatory group 211\n");
}

TEST(ExtensionElement, MayEndAheadOfAnOptionalGroup) {
    TypeUnderTest layer = L3("HighLayerCpbility");
    EXPECT_EQ(layer.Decode(""), 0);
    EXPECT_EQ(layer.Decode("", -8), 0);
    EXPECT_EQ(layer.Decode("91"), 8);
    EXPECT_EQ(layer.Text(),
              "{\n"
              "  CodingStandard: LOC:[1,2] 0\n"
              "  Interpretation: LOC:[3,3] 4\n"
              "  PresentationMethod: LOC:[6,2] 1\n"
              "  HighLayerCharacteristicsId: MISSING\n"
              "  ExtHighLayerCharacteristicsId: MISSING\n"
              "}\n");
    EXPECT_EQ(layer.Decode("91 81"), 16);
    EXPECT_EQ(layer.Decode("91 41 85"), 24);
    EXPECT_EQ(layer.Text(),
              "{\n"
              "  CodingStandard: LOC:[1,2] 0\n"
              "  Interpretation: LOC:[3,3] 4\n"
              "  PresentationMethod: LOC:[6,2] 1\n"
              "  HighLayerCharacteristicsId: LOC:[9,7] 65\n"
              "  ExtHighLayerCharacteristicsId: LOC:[17,7] 5\n"
              "}\n");
    EXPECT_EQ(layer.Diagnostics(), "");
}

TEST(ExtensionElement, AnAnnouncedOctetHasToBeThere) {
    TypeUnderTest number = Eps("epsCallingPartyBcdNum");
    EXPECT_EQ(number.Decode("01"), kSyntaxError);
    EXPECT_EQ(number.Diagnostics(),
              "<ERRID:*> Error decoding 0/1ext IE: information element too short\n");
    TypeUnderTest layer = L3("HighLayerCpbility");
    EXPECT_EQ(layer.Decode("91 41"), kSyntaxError);
    EXPECT_EQ(layer.Diagnostics(),
              "<ERRID:*> Error decoding 0/1ext IE: information element too short\n");
}

TEST(ExtensionElement, OctetsItDoesNotKnowArePassedOver) {
    TypeUnderTest number = Eps("epsCallingPartyBcdNum");
    EXPECT_EQ(number.Decode("11 03 00 7F 80 21"), 48);
    EXPECT_EQ(
        number.Text(),
        "{\n"
        "  TypeOfNumber: LOC:[1,3] international number (1)\n"
        "  NumberingPlanIdent: LOC:[4,4] ISDN/telephony numbering plan (Rec. E.164/E.163) (1)\n"
        "  PresentationIndicator: LOC:[9,2] Presentation allowed (0)\n"
        "  spare: 0\n"
        "  ScreeningIndicator: LOC:[14,2] Network provided (3)\n"
        "  Number: [\n"
        "    1,\n"
        "    2\n"
        "  ]\n"
        "}\n");
}

TEST(ExtensionElement, AChainThatRunsToTheEndCountsTheOctetBehindIt) {
    // No remainder: the result is one octet more than the length, which the caller refuses.
    TypeUnderTest layer = L3("HighLayerCpbility");
    EXPECT_EQ(layer.Decode("91 01 02 03"), 40);
    EXPECT_EQ(layer.Diagnostics(), "");
    // A remainder is left with less than nothing.
    TypeUnderTest number = Eps("epsCalledPartyBcdNum");
    EXPECT_EQ(number.Decode("11 22 33"), kSyntaxError);
    EXPECT_EQ(number.Diagnostics(), "<ERRID:*> Error decoding remainder of epsCalledPartyBcdNum\n");
}

TEST(ExtensionElement, TheRemainderTakesWhatIsLeft) {
    TypeUnderTest cause = L3("Cause");
    EXPECT_EQ(cause.Decode("60 85 90 AA BB"), 40);
    EXPECT_EQ(
        cause.Text(),
        "{\n"
        "  CodingStandard: LOC:[1,2] Standard defined for the GSM PLMNs as described below and "
        "in table 10.5.123/3GPP TS 24.008 (3)\n"
        "  spare: 0\n"
        "  Location: LOC:[4,4] user (0)\n"
        "  Recommendation: LOC:[9,7] 5\n"
        "  CauseValue: LOC:[17,7] 16. Normal call clearing (16)\n"
        "  diagnostic: LOC:[24,16] AA BB\n"
        "}\n");
    // 240 bits of diagnostics: one more than are kept.
    EXPECT_EQ(cause.Decode("E0 90 " + Zeros(29) + "FF"), 256);
    EXPECT_EQ(cause.Record().cells[5].number, 239U);
    EXPECT_EQ(cause.Record().cells[5].octets[29], 0xFE);
}

TEST(ExtensionElement, ARemainderMayCountLessOrMoreThanThereIs) {
    TypeUnderTest options = Eps("epsProtocolCfgOpt");
    // Seven containers: the sequence stops behind six without a word, the element does not fit.
    EXPECT_EQ(options.Decode("80 " + Zeros(21)), 8 + 6 * 24);
    EXPECT_EQ(options.Diagnostics(), "");
    EXPECT_EQ(options.Decode("80 " + Zeros(18)), 8 + 6 * 24);
    // A length beyond the store and the element: 64 octets are kept, all are counted.
    EXPECT_EQ(options.Decode("80 C0 23 46 01"), 8 + 24 + 560);
    EXPECT_EQ(options.Record().cells[2].cells[0].cells[1].number, 512U);
}

// Messages as values.

TEST(MessageInAMessage, IsChosenByItsTypeAlone) {
    TypeUnderTest message = Eps("ESMMessageUp");
    EXPECT_EQ(message.Decode("02 01 E8 6F"), 32);
    EXPECT_EQ(message.Record().number, 9U);
    // The discriminator, here 15, isn't looked at.
    EXPECT_EQ(message.Decode("5F 01 E8 6F"), 32);
    EXPECT_EQ(message.Text(),
              "pESM_STATUS: {\n"
              "    EPSBearerIdentity: 5\n"
              "    ProcedureTransactionIdentity: 1\n"
              "    ESMCause: LOC:[24,8] Protocol error, unspecified (111)\n"
              "  }\n");
}

TEST(MessageInAMessage, TooShortOrUnknownTakesNothing) {
    TypeUnderTest message = Eps("ESMMessageUp");
    for (const std::int64_t length : {-8, 0, 8, 16, 23}) {
        EXPECT_EQ(message.Decode("02 01 E8 6F", length), 0) << length;
        EXPECT_EQ(message.Record().number, 0U);
    }
    EXPECT_EQ(message.Decode("02 01 C5 05"), 0);  // of the other direction
    EXPECT_EQ(message.Record().number, 0U);
    EXPECT_EQ(message.Diagnostics(), "");
}

TEST(MessageInAMessage, TheDirectionsHaveTagsOfTheirOwn) {
    TypeUnderTest up = Eps("ESMMessageUp");
    TypeUnderTest down = Eps("ESMMessageDn");
    constexpr const char* kUp[] = {"C6", "C7", "C2", "C3", "D4", "D6", "CE",
                                   "DA", "E8", "CA", "CB", "D0", "D2"};
    constexpr const char* kDown[] = {"C5", "C1", "D5", "D7", "CD", "DB",
                                     "D9", "E8", "C9", "D1", "D3"};
    std::uint32_t tag = 0;
    for (const char* type : kUp) {
        static_cast<void>(up.Decode(std::string("02 00 ") + type));
        EXPECT_EQ(up.Record().number, ++tag) << type;
    }
    tag = 0;
    for (const char* type : kDown) {
        static_cast<void>(down.Decode(std::string("02 00 ") + type));
        EXPECT_EQ(down.Record().number, ++tag) << type;
    }
}

TEST(MessageInAMessage, AFailureIsItsResultAndItsFieldsStay) {
    TypeUnderTest message = Eps("ESMMessageUp");
    EXPECT_EQ(message.Decode("52 07 E8"), kMandatoryError);
    EXPECT_EQ(message.Diagnostics(), "<ERRID:*> Message too short decoding subfield ESMCause\n");
    EXPECT_EQ(message.Record().number, 9U);
    EXPECT_EQ(message.Record().cells->cells[0].number, 5U);
    EXPECT_EQ(message.Record().cells->cells[1].number, 7U);
}

// CSN.1 structures.

TEST(CsnValue, ResultIsWhatTheMachineTakes) {
    TypeUnderTest rate = Eps("APNAggregateMaxBitRate");
    EXPECT_EQ(rate.Decode("10 11"), 16);
    EXPECT_EQ(rate.Decode("10 11 12 13"), 32);
    EXPECT_EQ(rate.Decode("10 11 12"), 16);
    EXPECT_EQ(rate.Decode("10"), kSyntaxError);
    EXPECT_EQ(rate.Decode(""), kSyntaxError);
    EXPECT_EQ(rate.Decode("", -8), kSyntaxError);
}

TEST(CsnValue, BeyondTheMachinesReachIsRefused) {
    TypeUnderTest rate = Eps("APNAggregateMaxBitRate");
    constexpr std::int64_t kLast = std::numeric_limits<std::int32_t>::max();
    EXPECT_EQ(rate.Decode("", 16, 80'000'000), 16);
    EXPECT_EQ(rate.Decode("", 16, kLast - 15), kSyntaxError);
    EXPECT_EQ(rate.Decode("", 16, 4 * kLast), kSyntaxError);
}

}  // namespace
}  // namespace quorvane::iecodec
