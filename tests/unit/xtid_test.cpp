// The message sets that no entry point reaches: session management of TS 24.008, whose transaction
// identifier may be extended, and the downlink set of one message.

#include <array>
#include <gtest/gtest.h>
#include <map>
#include <string>

#include "codec_test_support.h"

namespace quorvane::iecodec {
namespace {

using test::SetUnderTest;
using test::Zeros;

SetUnderTest Up() {
    return {families::kL3Family, "Message_set_XTIDUplink"};
}

SetUnderTest Down() {
    return {families::kL3Family, "Message_set_XTIDDownlink"};
}

// TS 24.008, table 10.4a; the order is that of the tags.
const std::map<std::uint32_t, std::uint32_t> kUplinkTags = {
    {0x41, 1}, {0x4D, 2}, {0x45, 3}, {0x4A, 4},  {0x49, 5}, {0x46, 6},
    {0x47, 7}, {0x5C, 8}, {0x55, 9}, {0x56, 10}, {0x5A, 11}};
const std::map<std::uint32_t, std::uint32_t> kDownlinkTags = {
    {0x42, 1}, {0x43, 2},  {0x4E, 3},  {0x4F, 4},  {0x44, 5},  {0x48, 6},  {0x4B, 7},  {0x4C, 8},
    {0x46, 9}, {0x47, 10}, {0x5B, 11}, {0x5D, 12}, {0x55, 13}, {0x57, 14}, {0x58, 15}, {0x59, 16}};

std::string HexOctet(std::uint32_t octet) {
    const auto value = static_cast<std::uint8_t>(octet);
    return test::ToHex({&value, 1});
}

// Keys.

TEST(XtidKeys, TheTypeIsNotMasked) {
    SetUnderTest up = Up();
    SetUnderTest down = Down();
    for (std::uint32_t type = 0; type < 256; ++type) {
        const std::string octets = "0A " + HexOctet(type);
        static_cast<void>(up.Decode(octets));
        const auto inUplink = kUplinkTags.find(type);
        EXPECT_EQ(up.Container().tag, inUplink == kUplinkTags.end() ? 0 : inUplink->second)
            << octets;
        static_cast<void>(down.Decode(octets));
        const auto inDownlink = kDownlinkTags.find(type);
        EXPECT_EQ(down.Container().tag, inDownlink == kDownlinkTags.end() ? 0 : inDownlink->second)
            << octets;
    }
}

TEST(XtidKeys, OfTheFirstOctetTheLowHalfCounts) {
    SetUnderTest up = Up();
    for (std::uint32_t first = 0; first < 256; ++first) {
        static_cast<void>(up.Decode(HexOctet(first) + " 55 1F"));
        // With an identifier of 7 the octet 55 belongs to the extension, which has no end here.
        const bool known = (first & 15U) == 10 && (first >> 4 & 7U) != 7;
        EXPECT_EQ(up.Container().tag, known ? 9U : 0U) << first;
        EXPECT_EQ(up.Container().pd, first & 15U);
    }
}

TEST(XtidKeys, AnUnknownMessageStillShowsItsOctets) {
    SetUnderTest up = Up();
    EXPECT_EQ(up.Decode("0A 95"), kUnknownMessage);
    EXPECT_EQ(up.Container().tag, 0U);
    EXPECT_EQ(up.Container().pd, 10U);
    EXPECT_EQ(up.Container().messageType, 0x95U);
    EXPECT_EQ(up.Decode("7A 81 42"), kUnknownMessage);
    EXPECT_EQ(up.Container().messageType, 0x42U);
    EXPECT_EQ(up.Decode("08 55"), kUnknownMessage);
    EXPECT_EQ(up.Decode(""), kUnknownMessage);
}

// Transaction identifiers.

TEST(TransactionIdentifier, StandsInTheFirstOctet) {
    SetUnderTest up = Up();
    EXPECT_EQ(up.Decode("EA 55 1F"), 24);
    EXPECT_EQ(up.Member("TI_Value").number, 6U);
    EXPECT_EQ(up.Member("TI_Flag").number, 1U);
    EXPECT_EQ(up.Text(),
              "{\n"
              "  TI_Value: 6\n"
              "  TI_Flag: 1\n"
              "  SmCause: {\n"
              "    Cause: LOC:[16,8] Activation rejected, unspecified (31)\n"
              "  }\n"
              "\n"
              "}\n");
}

TEST(TransactionIdentifier, IsExtendedByAnOctet) {
    SetUnderTest up = Up();
    EXPECT_EQ(up.Decode("FA 85 55 1F"), 32);
    EXPECT_EQ(up.Container().messageType, 0x55U);
    EXPECT_EQ(up.Text(),
              "{\n"
              "  TI_Value: 5\n"
              "  TI_Flag: 1\n"
              "  SmCause: {\n"
              "    Cause: LOC:[24,8] Activation rejected, unspecified (31)\n"
              "  }\n"
              "\n"
              "}\n");
    EXPECT_EQ(up.Decode("7A FF 55 1F"), 32);
    EXPECT_EQ(up.Member("TI_Value").number, 127U);
    EXPECT_EQ(up.Member("TI_Flag").number, 0U);
}

TEST(TransactionIdentifier, IsExtendedUpToAnOctetWithBit8) {
    SetUnderTest up = Up();
    // The value is that of the first octet behind the identifier.
    EXPECT_EQ(up.Decode("7A 05 81 55 1F"), 40);
    EXPECT_EQ(up.Member("TI_Value").number, 5U);
    EXPECT_EQ(up.Member("SmCause.Cause").location, 32U << 16 | 8U);
    EXPECT_EQ(up.Decode("FA 11 22 33 44 80 55 1F"), 64);
    EXPECT_EQ(up.Member("TI_Value").number, 17U);
    EXPECT_EQ(up.Member("TI_Flag").number, 1U);
    EXPECT_EQ(up.Container().messageType, 0x55U);
    // A message of optional elements alone begins there, too.
    EXPECT_EQ(up.Decode("7A 05 06 80 49 27 01 83"), 64);
    EXPECT_EQ(up.Name(), "MODIFY_PDP_CONTEXT_ACCEPT_UP");
    EXPECT_EQ(up.Member("ProtocolConfigOpt.ConfigurationProtocol").number, 3U);
    EXPECT_EQ(up.Member("ProtocolConfigOpt.ConfigurationProtocol").location, 61U << 16 | 3U);
}

TEST(TransactionIdentifier, FlagWaitsForABodyThatDoesNotFail) {
    SetUnderTest up = Up();
    EXPECT_EQ(up.Decode("DA 55"), kMandatoryError);
    EXPECT_EQ(up.Diagnostics(), "<ERRID:*> Message too short decoding subfield SmCause\n");
    EXPECT_EQ(up.Member("TI_Value").number, 5U);
    EXPECT_EQ(up.Member("TI_Flag").number, 0U);
    EXPECT_EQ(up.Decode("FA 8A 55"), kMandatoryError);
    EXPECT_EQ(up.Member("TI_Value").number, 10U);
    EXPECT_EQ(up.Member("TI_Flag").number, 0U);
    // An optional element that is dropped is no failure of the body.
    EXPECT_EQ(up.Decode("DA 49 27 05 80"), 40);
    EXPECT_EQ(up.Member("TI_Flag").number, 1U);
    EXPECT_EQ(up.Decode("DA 49 27 00"), kSizeError);
    EXPECT_EQ(up.Member("TI_Flag").number, 0U);
    EXPECT_EQ(up.Decode("DA 49 01"), kUnknownIei);
    EXPECT_EQ(up.Member("TI_Flag").number, 0U);
}

// The one message of the third set.

TEST(DummyDownlink, KnowsASetupOfTheUplink) {
    SetUnderTest set(families::kL3Family, "Message_set_DummyDownlink");
    SetUnderTest up(families::kL3Family, "Message_set_L3Uplink");
    for (const char* octets : {"03 05 04 01 A0 5E 03 81 21 F3", "D3 C5 04 01 A0 5E 03 81 21 F3"}) {
        EXPECT_EQ(set.Decode(octets), 80) << octets;
        EXPECT_EQ(set.Name(), "SETUP_UP");
        EXPECT_EQ(set.Container().tag, 1U);
        EXPECT_EQ(up.Decode(octets), 80);
        EXPECT_EQ(set.Text(), up.Text());
        EXPECT_EQ(set.Encode().hex, up.Encode().hex);
    }
    EXPECT_EQ(set.Decode("03 05"), kMessageTooShort);
}

TEST(DummyDownlink, KnowsNothingElse) {
    SetUnderTest set(families::kL3Family, "Message_set_DummyDownlink");
    for (std::uint32_t type = 0; type < 256; ++type) {
        static_cast<void>(set.Decode("03 " + HexOctet(type)));
        EXPECT_EQ(set.Container().tag, (type & 0x3FU) == 5 ? 1U : 0U) << type;
    }
    EXPECT_EQ(set.Decode("05 05"), kUnknownMessage);
    EXPECT_EQ(set.Decode("0A 41"), kUnknownMessage);
}

// Every message there and back.

constexpr const char* kQuality = "10 0B 92 1F 73 96 40 FE 74 4B 49 30 11 10 20 30 40 ";

/// A template of 255 octets, the only length it may have here: seven parameters of 32 octets and
/// one of 14.
std::string Template() {
    std::string octets = "FF D0 ";
    for (int parameter = 1; parameter <= 7; ++parameter) {
        octets += HexOctet(static_cast<std::uint32_t>(parameter)) + " 20 " + Zeros(31) + "A5 ";
    }
    return octets + "08 0E " + Zeros(14);
}

struct Sample {
    const char* name;
    std::string octets;
};

void ExpectThereAndBack(SetUnderTest set, const std::vector<Sample>& samples) {
    ASSERT_EQ(samples.size(), set.Row().messages.size());
    std::uint32_t tag = 0;
    for (const auto& [name, text] : samples) {
        const test::Octets octets = test::FromHex(text);
        EXPECT_EQ(set.Decode(text), 8 * static_cast<std::int64_t>(octets.size())) << name;
        EXPECT_EQ(set.Diagnostics(), "") << name;
        EXPECT_EQ(set.Container().tag, ++tag);
        EXPECT_EQ(set.Name(), name);
        EXPECT_EQ(set.Encode().hex, test::ToHex(octets)) << name;
    }
}

TEST(XtidMessages, OfTheUplinkGoThereAndBack) {
    const std::string quality = kQuality;
    ExpectThereAndBack(
        Up(),
        {{"ACTIVATE_PDP_CONTEXT_REQUEST_UP",
          "8A 41 05 03 " + quality + "02 01 21 28 03 61 62 63 27 09 80 80 21 02 AA BB 00 03 00 A1"},
         {"ACTIVATE_SECONDARY_PDP_CONTEXT_REQUEST_UP",
          "0A 4D 06 00 " + quality + "01 50 36 " + Template() + "27 01 80"},
         {"REQUEST_PDP_CONTEXT_ACTIVATION_REJECT_UP", "2A 45 1F 27 04 80 00 01 00"},
         {"MODIFY_PDP_CONTEXT_REQUEST_UP",
          "3A 4A 32 03 30 " + quality + "31 " + Template() + "27 01 80"},
         {"MODIFY_PDP_CONTEXT_ACCEPT_UP", "4A 49 27 01 80"},
         {"DEACTIVATE_PDP_CONTEXT_REQUEST", "5A 46 24 91 27 01 80 35 02 20 01"},
         {"DEACTIVATE_PDP_CONTEXT_ACCEPT", "6A 47 27 01 80 35 00"},
         {"REQUEST_SECONDARY_PDP_CONTEXT_ACTIVATION_REJECT", "BA 5C 20 27 01 80"},
         {"SM_STATUS", "0A 55 51"},
         {"ACTIVATE_MBMS_CONTEXT_REQUEST", "0A 56 80 00 02 40 10 02 01 21 03 61 62 63 35 01 80"},
         {"REQUEST_MBMS_CONTEXT_ACTIVATION_REJECT", "0A 5A 18 35 02 01 02"}});
}

TEST(XtidMessages, OfTheDownlinkGoThereAndBack) {
    const std::string quality = kQuality;
    ExpectThereAndBack(
        Down(),
        {{"ACTIVATE_PDP_CONTEXT_ACCEPT_DN",
          "8A 42 03 " + quality + "02 2B 06 01 21 0A 00 00 01 27 04 80 00 0D 00 34 01 02 39 01 32"},
         {"ACTIVATE_PDP_CONTEXT_REJECT_DN", "0A 43 1B 27 01 80"},
         {"ACTIVATE_SECONDARY_PDP_CONTEXT_ACCEPT_DN",
          "0A 4E 0B " + quality + "04 34 01 03 27 01 80"},
         {"ACTIVATE_SECONDARY_PDP_CONTEXT_REJECT_DN", "0A 4F 29 27 01 80"},
         {"REQUEST_PDP_CONTEXT_ACTIVATION_DN", "0A 44 06 01 57 20 01 0D B8 28 01 78 27 01 80"},
         {"MODIFY_PDP_CONTEXT_REQUEST_DN",
          "0A 48 03 09 " + quality + "2B 02 01 21 34 01 00 27 01 80 36 " + Template()},
         {"MODIFY_PDP_CONTEXT_ACCEPT_DN", "0A 4B 30 " + quality + "32 05 84 34 01 01 27 01 80"},
         {"MODIFY_PDP_CONTEXT_REJECT_DN", "0A 4C 2C 27 01 80"},
         {"DEACTIVATE_PDP_CONTEXT_REQUEST", "FA 90 46 27"},
         {"DEACTIVATE_PDP_CONTEXT_ACCEPT", "7A 87 47"},
         {"REQUEST_SECONDARY_PDP_CONTEXT_ACTIVATION",
          "0A 5B " + quality + "02 70 87 36 " + Template() + "27 01 80"},
         {"NOTIFICATION", "0A 5D 01 01"},
         {"SM_STATUS", "DA 55 61"},
         {"ACTIVATE_MBMS_CONTEXT_ACCEPT", "0A 57 06 01 02 03 62 F2 10 03 35 01 FF"},
         {"ACTIVATE_MBMS_CONTEXT_REJECT", "0A 58 18 35 01 00"},
         {"REQUEST_MBMS_CONTEXT_ACTIVATION", "0A 59 05 02 01 21 01 78 35 01 80"}});
}

// Faults.

TEST(XtidMessages, ATemplateHasOneLength) {
    SetUnderTest up = Up();
    EXPECT_EQ(up.Decode("0A 4A 31 01 40"), kSizeError);
    EXPECT_EQ(up.Diagnostics(), "<ERRID:*> Size error decoding IE NewTft\n");
    // 255 octets, of which the template makes one.
    EXPECT_EQ(up.Decode("0A 4A 31 FF 40 " + Zeros(254)), 8 * 259);
    EXPECT_EQ(up.Diagnostics(), "<ERRID:*> Error decoding subfield NewTft\n");
    EXPECT_FALSE(up.Member("NewTft").present);
}

TEST(XtidMessages, MoreContainersThanTwentyFailTheOptions) {
    SetUnderTest up = Up();
    EXPECT_EQ(up.Decode("0A 49 27 3D 80 " + Zeros(60)), 8 * 65);
    EXPECT_EQ(up.Diagnostics(), "");
    EXPECT_EQ(up.Member("ProtocolConfigOpt.ContainerCfgs").number, 20U);
    EXPECT_EQ(up.Decode("0A 49 27 40 80 " + Zeros(63)), 8 * 68);
    EXPECT_EQ(up.Diagnostics(), "<ERRID:*> Error decoding subfield ProtocolConfigOpt\n");
    EXPECT_FALSE(up.Member("ProtocolConfigOpt").present);
    // The first twenty stay in the record behind the cleared flag.
    EXPECT_EQ(up.Member("ProtocolConfigOpt.ContainerCfgs").number, 20U);
}

TEST(XtidMessages, AContainerThatReachesPastTheOptionsFailsThem) {
    SetUnderTest up = Up();
    EXPECT_EQ(up.Decode("0A 49 27 04 80 00 01 05"), 64);
    EXPECT_EQ(up.Diagnostics(), "<ERRID:*> Error decoding subfield ProtocolConfigOpt\n");
    EXPECT_FALSE(up.Member("ProtocolConfigOpt").present);
}

TEST(XtidMessages, AGroupIdentityOfThreeOctetsIsWithinItsLimitsButTooShort) {
    SetUnderTest down = Down();
    EXPECT_EQ(down.Decode("0A 57 03 01 02 03 03"), kMandatoryError);
    EXPECT_EQ(down.Diagnostics(), "<ERRID:*> Error decoding subfield TempMobileGroupId\n");
    EXPECT_EQ(down.Decode("0A 57 02 01 02 03"), kSizeError);
    EXPECT_EQ(down.Decode("0A 57 07 01 02 03 04 05 06 07 03"), kSizeError);
}

TEST(XtidMessages, AContextStatusHasSixteenOctetsAtMost) {
    SetUnderTest up = Up();
    EXPECT_EQ(up.Decode("0A 47 35 10 " + Zeros(16)), 160);
    EXPECT_EQ(up.Member("MBMSContextStatus").number, 128U);
    EXPECT_EQ(up.Decode("0A 47 35 11 " + Zeros(17)), kSizeError);
}

}  // namespace
}  // namespace quorvane::iecodec
