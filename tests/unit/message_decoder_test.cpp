// Messages of the described families as a whole: results in bits, and what a fault leaves. Texts
// are the golden files' affair.

#include "iecodec/message_decoder.h"

#include <array>
#include <gtest/gtest.h>
#include <set>
#include <string>

#include "codec_test_support.h"

namespace quorvane::iecodec {
namespace {

using test::SetUnderTest;
using test::Zeros;

SetUnderTest EmmUp() {
    return {families::kEpsFamily, "Message_set_EPS_MM_Uplink"};
}

SetUnderTest EmmDown() {
    return {families::kEpsFamily, "Message_set_EPS_MM_Downlink"};
}

SetUnderTest EsmUp() {
    return {families::kEpsFamily, "Message_set_EPS_SM_Uplink"};
}

SetUnderTest EsmDown() {
    return {families::kEpsFamily, "Message_set_EPS_SM_Downlink"};
}

SetUnderTest ToUe() {
    return {families::kEpcFamily, "Message_set_SS_to_UE"};
}

SetUnderTest L3Up() {
    return {families::kL3Family, "Message_set_L3Uplink"};
}

SetUnderTest L3Down() {
    return {families::kL3Family, "Message_set_L3Downlink"};
}

// Headers and messages without fields.

TEST(MessageHeader, CountsInTheResult) {
    SetUnderTest detach = EmmUp();
    EXPECT_EQ(detach.Decode("07 46"), 16);
    SetUnderTest request = EsmDown();
    EXPECT_EQ(request.Decode("02 13 D9"), 24);
    SetUnderTest open = ToUe();
    EXPECT_EQ(open.Decode("0F 82"), 16);
    SetUnderTest calls = L3Up();
    EXPECT_EQ(calls.Decode("F3 18"), 16);
    EXPECT_EQ(calls.Decode("05 23"), 16);
    EXPECT_EQ(calls.Decode("08 06"), 16);
}

TEST(MessageHeader, IsReadWhateverTheLength) {
    SetUnderTest request = EsmDown();
    for (const std::int64_t length : {-80, 0, 8, 24, 800}) {
        EXPECT_EQ(request.Decode("52 13 D9 27 04 80", length), 24) << length;
        EXPECT_EQ(request.Member("EPSBearerIdentity").number, 5U);
        EXPECT_EQ(request.Member("ProcedureTransactionIdentity").number, 0x13U);
        EXPECT_EQ(request.Diagnostics(), "");
    }
}

TEST(MessageHeader, OfServiceRequestAndProtectedMessageIsOneOctet) {
    SetUnderTest messages = EmmUp();
    EXPECT_EQ(messages.Decode("C7 A5 12 34"), 32);
    EXPECT_EQ(messages.Name(), "SERVICE_REQUEST");
    EXPECT_EQ(messages.Member("SecurityHeaderType").number, 12U);
    EXPECT_EQ(messages.Decode("17 11 22 33 44 05"), 48);
    EXPECT_EQ(messages.Name(), "SECURITY_PROTECTED_NAS_MESSAGE");
    EXPECT_EQ(messages.Decode("47 11 22 33 44 05 " + Zeros(700)), 8 * 706);
    EXPECT_EQ(messages.Member("NASMessage").number, 4800U);
    EXPECT_EQ(messages.Diagnostics(), "");
}

TEST(MessageHeader, FlagOfATransactionWaitsForTheBody) {
    SetUnderTest calls = L3Up();
    EXPECT_EQ(calls.Decode("D3 18"), 16);
    EXPECT_EQ(calls.Member("TI_Value").number, 5U);
    EXPECT_EQ(calls.Member("TI_Flag").number, 1U);
    EXPECT_EQ(calls.Decode("D3 3E"), kMandatoryError);
    EXPECT_EQ(calls.Member("TI_Value").number, 5U);
    EXPECT_EQ(calls.Member("TI_Flag").number, 0U);
    // A message that has no field fails never, however short.
    EXPECT_EQ(calls.Decode("D3 18", 0), 16);
    EXPECT_EQ(calls.Member("TI_Flag").number, 1U);
    // An optional element that fails does not fail the body.
    EXPECT_EQ(calls.Decode("D3 01 1C 05 AA"), 40);
    EXPECT_EQ(calls.Member("TI_Flag").number, 1U);
    // One of a size outside its limits does.
    EXPECT_EQ(calls.Decode("D3 01 7E 00"), kSizeError);
    EXPECT_EQ(calls.Member("TI_Flag").number, 0U);
}

TEST(Message, MayStartAnywhere) {
    SetUnderTest set = EsmUp();
    const test::Octets octets = test::FromHex("FF FF 52 07 E8 6F");
    bits::Arena arena;
    Diagnostics diagnostics;
    DecodeContext context{families::kEpsFamily.codec, {octets.data(), 6}, arena, diagnostics};
    bits::Cell cell{};
    EXPECT_EQ(DecodeMessage(context, set.Message("ESM_STATUS"), 16, cell, 32), 32);
    EXPECT_EQ(cell.cells[0].number, 5U);
    EXPECT_EQ(cell.cells[2].number, 0x6FU);
    EXPECT_EQ(cell.cells[2].location, 40U << 16 | 8U);
    // The same octet as the body alone.
    bits::Cell body{};
    EXPECT_EQ(DecodeMessageBody(context, set.Message("ESM_STATUS"), 40, body, 8), 8);
    EXPECT_EQ(body.cells[0].number, 0U);
    EXPECT_EQ(body.cells[2].number, 0x6FU);
}

// Mandatory fields.

TEST(MandatoryField, IsReadBeforeItIsFoundToBeTooFar) {
    SetUnderTest messages = EmmDown();
    for (const std::int64_t length : {-80, 0, 8, 16}) {
        EXPECT_EQ(messages.Decode("07 44 0F", length), kMandatoryError) << length;
        EXPECT_EQ(messages.Diagnostics(),
                  "<ERRID:*> Message too short decoding subfield EMMCause\n");
        EXPECT_EQ(messages.Member("EMMCause").number, 15U);
    }
    EXPECT_EQ(messages.Decode("07 44 0F"), 24);
}

TEST(MandatoryField, OfTwoHalfOctetsTheFirstIsTheLowOne) {
    SetUnderTest messages = EsmUp();
    EXPECT_EQ(messages.Decode("02 01 D0 31"), 32);
    EXPECT_EQ(messages.Member("RequestType").number, 1U);
    EXPECT_EQ(messages.Member("RequestType").location, 28U << 16 | 4U);
    EXPECT_EQ(messages.Member("PDNType").number, 3U);
    EXPECT_EQ(messages.Member("PDNType").location, 24U << 16 | 4U);
    EXPECT_EQ(messages.Decode("02 01 D0", 24), kMandatoryError);
    EXPECT_EQ(messages.Diagnostics(),
              "<ERRID:*> Message too short decoding subfield RequestType\n");
}

TEST(MandatoryField, ASpareHalfOctetStoresNothing) {
    SetUnderTest messages = EsmUp();
    EXPECT_EQ(messages.Decode("02 0C D2 F5"), 32);
    EXPECT_EQ(messages.Member("LinkedEPSBearerIdentity").number, 5U);
    EXPECT_EQ(messages.Member("SpareHalfOctet").number, 0U);
    EXPECT_EQ(messages.Member("SpareHalfOctet").location, 0U);
    EXPECT_EQ(messages.Decode("02 0C D2", 28), kMandatoryError);
    EXPECT_EQ(messages.Diagnostics(),
              "<ERRID:*> Message too short decoding subfield SpareHalfOctet\n");
}

TEST(MandatoryField, OutsideItsLimitsEndsTheMessage) {
    SetUnderTest messages = EsmDown();
    EXPECT_EQ(messages.Decode("52 00 DB 01 01"), 40);
    EXPECT_EQ(messages.Name(), "EPS_NOTIFICATION");
    for (const char* octets : {"52 00 DB 00", "52 00 DB 02 01 01", "52 00 DB FF"}) {
        EXPECT_EQ(messages.Decode(octets), kSizeError) << octets;
        EXPECT_EQ(messages.Diagnostics(),
                  "<ERRID:*> Size error decoding IE NotificationIndicator\n");
        EXPECT_EQ(messages.Member("EPSBearerIdentity").number, 5U);
    }
}

TEST(MandatoryField, OfAnotherLengthThanItsValueIsRefused) {
    // An APN-AMBR of the right limits would do; here a TAI list of 8 octets that holds 6.
    SetUnderTest messages = EmmDown();
    EXPECT_EQ(messages.Decode("07 42 01 49 08 20 62 F2 10 00 01 00 00 00 04 52 01 E8 6F"),
              kMandatoryError);
    // Two octets behind the first item are a second one, which reaches past the field.
    EXPECT_EQ(messages.Diagnostics(), "<ERRID:*> Error decoding subfield TAIList\n");
}

TEST(MandatoryField, ALengthPastTheEndIsDecodedAndThenRefused) {
    SetUnderTest messages = EmmUp();
    EXPECT_EQ(messages.Decode("07 53 08 11 22"), kMandatoryError);
    EXPECT_EQ(messages.Diagnostics(),
              "<ERRID:*> Message too short decoding subfield AuthenticationResponseParameter\n");
    EXPECT_EQ(messages.Member("AuthenticationResponseParameter").number, 64U);
    EXPECT_EQ(messages.Member("AuthenticationResponseParameter").octets[1], 0x22);
    EXPECT_EQ(messages.Member("AuthenticationResponseParameter").octets[2], 0x00);
}

TEST(MandatoryField, BehindAnIdentifierIsSearchedFor) {
    SetUnderTest calls = L3Up();
    EXPECT_EQ(calls.Decode("03 35"), kMessageTooShort);
    EXPECT_EQ(calls.Decode("03 35 1C 01 00"), kMessageTooShort);
    EXPECT_EQ(calls.Decode("03 35 00 2C 31"), kUnknownIei);
    EXPECT_EQ(calls.Decode("03 35 1C 01 00 2C 31"), 56);
    EXPECT_EQ(calls.Decode("03 35 2C"), kMandatoryError);
    EXPECT_EQ(calls.Diagnostics(),
              "<ERRID:*> Message too short decoding subfield KeypadFacility\n");
    // A size error there is one of the message, and so is a value that fails.
    EXPECT_EQ(calls.Decode("03 05 04 00 5E 03 81 21 F3"), kSizeError);
    EXPECT_EQ(calls.Decode("03 05 04 01 20 5E 03 81 21 F3"), kMandatoryError);
    EXPECT_EQ(calls.Diagnostics(),
              "<ERRID:*> Error decoding 0/1ext IE: information element too short\n"
              "<ERRID:*> Error decoding subfield BearerCpblty1\n");
    EXPECT_EQ(calls.Decode("03 05 04 01 A0"), kMessageTooShort);
}

TEST(Message, TrailingOctetsAreNotCounted) {
    SetUnderTest messages = EmmDown();
    EXPECT_EQ(messages.Decode("07 44 0F"), 24);
    SetUnderTest loop = ToUe();
    EXPECT_EQ(loop.Decode("0F 84 01 AA BB"), 24);
    EXPECT_EQ(loop.Decode("0F 86 AA BB"), 16);
}

// Optional fields.

TEST(OptionalField, NoneNeedBeThere) {
    SetUnderTest messages = EmmDown();
    EXPECT_EQ(messages.Decode("07 61"), 16);
    EXPECT_EQ(messages.Decode("07 61 46 40"), 32);
    EXPECT_TRUE(messages.Member("LocalTimeZone").present);
    EXPECT_FALSE(messages.Member("FullNameForNetwork").present);
    EXPECT_EQ(messages.Diagnostics(), "");
}

TEST(OptionalField, WhoseLengthIsTheLastOctetIsDroppedWithoutAnError) {
    SetUnderTest messages = EsmUp();
    EXPECT_EQ(messages.Decode("02 01 D0 31 28 05"), 48);
    EXPECT_EQ(messages.Diagnostics(),
              "<ERRID:*> Message too short decoding subfield AccessPointName\n");
    EXPECT_FALSE(messages.Member("AccessPointName").present);
    EXPECT_EQ(messages.Member("AccessPointName").number, 40U);
    // The identifier alone: the length, and with it the value, comes from behind the end.
    EXPECT_EQ(messages.Decode("02 01 D0 31 28 05", 40), 40);
    EXPECT_FALSE(messages.Member("AccessPointName").present);
}

TEST(OptionalField, BehindADroppedOneNothingIsFound) {
    SetUnderTest messages = EsmUp();
    EXPECT_EQ(messages.Decode("02 01 D0 31 28 09 27 01 80"), 72);
    EXPECT_FALSE(messages.Member("AccessPointName").present);
    EXPECT_FALSE(messages.Member("ProtocolConfigurationOptions").present);
    EXPECT_EQ(messages.Diagnostics(),
              "<ERRID:*> Message too short decoding subfield AccessPointName\n");
}

TEST(OptionalField, OutsideItsLimitsEndsTheMessageToo) {
    SetUnderTest messages = EsmUp();
    for (const char* octets : {"02 01 D0 31 28 00 27 01 80", "02 01 D0 31 28 65 27 01 80"}) {
        EXPECT_EQ(messages.Decode(octets), kSizeError) << octets;
        EXPECT_EQ(messages.Diagnostics(), "<ERRID:*> Size error decoding IE AccessPointName\n");
        // Its flag was set before.
        EXPECT_TRUE(messages.Member("AccessPointName").present);
        EXPECT_FALSE(messages.Member("ProtocolConfigurationOptions").present);
        EXPECT_EQ(messages.Member("PDNType").number, 3U);
    }
}

TEST(OptionalField, ThatFailsIsClearedAndPassedOver) {
    // Seven containers, of which six are taken.
    SetUnderTest messages = EsmDown();
    EXPECT_EQ(messages.Decode("52 00 D1 26 27 16 80 " + Zeros(21)), 8 * 28);
    EXPECT_EQ(messages.Diagnostics(),
              "<ERRID:*> Error decoding subfield ProtocolConfigurationOptions\n");
    EXPECT_FALSE(messages.Member("ProtocolConfigurationOptions").present);
    // The cursor moves by the declared length: what stands behind is found.
    SetUnderTest attach = EmmDown();
    EXPECT_EQ(attach.Decode("07 49 01 57 02 20 00 34 08 03 1F 11 F2 03 04 19 F1 F2"), 8 * 18);
    EXPECT_EQ(attach.Diagnostics(), "<ERRID:*> Error decoding subfield epsEmergencyNumberList\n");
    EXPECT_FALSE(attach.Member("epsEmergencyNumberList").present);
    EXPECT_TRUE(attach.Member("AdditionalUpdateResult").present);
}

TEST(OptionalField, MayFailAndEndTooFarAtOnce) {
    SetUnderTest attach = EmmDown();
    EXPECT_EQ(attach.Decode("07 49 01 34 08 03 1F"), 56);
    EXPECT_EQ(attach.Diagnostics(),
              "<ERRID:*> Error decoding subfield epsEmergencyNumberList\n"
              "<ERRID:*> Message too short decoding subfield epsEmergencyNumberList\n");
}

TEST(OptionalField, OfHalfAnOctetHasItsValueInTheLowHalf) {
    SetUnderTest messages = EsmUp();
    EXPECT_EQ(messages.Decode("02 01 D0 31 D1"), 40);
    EXPECT_TRUE(messages.Member("ESMInformationTransferFlag").present);
    EXPECT_EQ(messages.Member("ESMInformationTransferFlag").number, 1U);
    EXPECT_EQ(messages.Member("ESMInformationTransferFlag").location, 36U << 16 | 4U);
}

TEST(OptionalField, OfTheIdentifierAloneIsThere) {
    SetUnderTest calls = L3Up();
    EXPECT_EQ(calls.Decode("03 05 04 01 A0 5E 03 81 21 F3 A1"), 88);
    EXPECT_TRUE(calls.Member("ClirSuppression").present);
    EXPECT_FALSE(calls.Member("ClirInvocation").present);
    EXPECT_EQ(calls.Member("ClirSuppression").location, 0U);
}

TEST(OptionalField, TheOrderOfTheTableHolds) {
    SetUnderTest messages = EsmUp();
    // The later one stands; the earlier one behind it is passed over like one of another message.
    EXPECT_EQ(messages.Decode("02 01 D0 31 28 01 61 D1"), 64);
    EXPECT_TRUE(messages.Member("AccessPointName").present);
    EXPECT_FALSE(messages.Member("ESMInformationTransferFlag").present);
    // Of two the first stands.
    EXPECT_EQ(messages.Decode("02 01 D0 31 28 01 61 28 01 62"), 80);
    EXPECT_EQ(messages.Member("AccessPointName").octets[0], 0x61);
    EXPECT_EQ(messages.Diagnostics(), "");
}

TEST(OptionalField, AnElementThatNobodyKnowsEndsTheMessage) {
    SetUnderTest messages = EsmUp();
    EXPECT_EQ(messages.Decode("02 01 D0 31 01 00 28 01 61"), kUnknownIei);
    EXPECT_EQ(messages.Diagnostics(), "");
    EXPECT_EQ(messages.Member("PDNType").number, 3U);
    EXPECT_FALSE(messages.Member("AccessPointName").present);
    // Whether anything can be done with its identifier plays no part; where it stands does.
    EXPECT_EQ(messages.Decode("02 01 D0 31 28 01 61 01 00"), kUnknownIei);
    EXPECT_TRUE(messages.Member("AccessPointName").present);
}

TEST(OptionalField, TheLastSearchWalksToTheEnd) {
    SetUnderTest messages = EmmDown();
    EXPECT_EQ(messages.Decode("07 4E 27 50 02 AA BB 47 01 02 03 04 05 06 07"), 120);
    // An element that is passed over may reach farther than the message.
    EXPECT_EQ(messages.Decode("07 4E 27 50 0B F6 62"), 24 + 8 + 8 + 88);
    EXPECT_EQ(messages.Diagnostics(), "");
}

// No message has an optional fixed structure whose limits let other lengths pass; this one does.
TEST(OptionalField, OfAFixedStructureNeedsItsExactLength) {
    std::array<ValueRow, 2> values{};
    values[0].shape = Shape::kFixed;
    values[0].members = 1;
    values[0].width = 16;
    values[0].count = 1;
    values[1].shape = Shape::kInteger;
    values[1].width = 16;
    const std::array<PartRow, 1> parts{{{PartRow::Kind::kInteger, 0, 0, 16, 1}}};
    const std::array<IeOrderRow, 2> orders{
        {{0x20, 0xFF, IeOrderRow::kWithIei}, {0, 0, IeOrderRow::kEnd}}};
    FieldRow field{};
    field.name = "Pair";
    field.format = FieldRow::Format::kTlv;
    field.presence = FieldRow::Presence::kOptional;
    field.iei = 0x20;
    field.mostOctets = 0xFFFF;
    field.valueNumber = 9;
    MessageRow message{};
    message.members = 1;
    message.fieldCount = 1;
    CodecTables tables{};
    tables.values = values;
    tables.parts = parts;
    tables.orders = orders;
    tables.fields = {&field, 1};

    struct {
        const char* octets;
        bool taken;
    } const cases[] = {
        {"20 02 12 34", true}, {"20 00", false}, {"20 01 12", false}, {"20 03 12 34 56", false}};
    for (const auto& [text, taken] : cases) {
        const test::Octets octets = test::FromHex(text);
        const auto size = static_cast<std::int64_t>(octets.size());
        bits::Arena arena;
        iecodec::Diagnostics diagnostics;
        DecodeContext context{tables, {octets.data(), size}, arena, diagnostics};
        bits::Cell cell{};
        EXPECT_EQ(DecodeMessageBody(context, message, 0, cell, 8 * size), 8 * size) << text;
        EXPECT_EQ(cell.cells[0].present, taken) << text;
        EXPECT_EQ(diagnostics.Lines(), taken ? "" : "<ERRID:9> Error decoding subfield Pair\n");
    }
}

// Conditional fields.

TEST(ConditionalField, FollowsTheMode) {
    SetUnderTest loop = ToUe();
    EXPECT_EQ(loop.Decode("0F 80 03 AA BB"), 24);
    EXPECT_FALSE(loop.Member("UE_test_loop_mode_A_LB_setup").present);
    EXPECT_FALSE(loop.Member("UE_test_loop_mode_B_LB_setup").present);
    EXPECT_FALSE(loop.Member("UE_test_loop_mode_C_setup").present);
    EXPECT_EQ(loop.Decode("0F 80 01 2A"), 32);
    EXPECT_TRUE(loop.Member("UE_test_loop_mode_B_LB_setup").present);
    EXPECT_EQ(loop.Decode("0F 80 00 03 03 E8 04"), 56);
    EXPECT_TRUE(loop.Member("UE_test_loop_mode_A_LB_setup").present);
    EXPECT_EQ(loop.Decode("0F 80 02 FF 0A 17"), 48);
    EXPECT_EQ(loop.Decode("0F 80", 16), kMandatoryError);
}

TEST(ConditionalField, FailsWithACodeOfItsOwnAndStaysThere) {
    SetUnderTest loop = ToUe();
    EXPECT_EQ(loop.Decode("0F 80 02 FF 0A"), kConditionalError);
    EXPECT_EQ(loop.Diagnostics(),
              "<ERRID:*> Message too short decoding subfield UE_test_loop_mode_C_setup\n");
    EXPECT_TRUE(loop.Member("UE_test_loop_mode_C_setup").present);
    EXPECT_EQ(loop.Decode("0F 80 01"), kConditionalError);
    EXPECT_EQ(loop.Decode("0F 80 00 03 03"), kConditionalError);
    EXPECT_EQ(loop.Decode("0F 80 00 04 03 E8 04 01"), kConditionalError);
    EXPECT_EQ(loop.Diagnostics(),
              "<ERRID:*> Error decoding subfield UE_test_loop_mode_A_LB_setup\n");
    EXPECT_EQ(loop.Decode("0F 80 00 19 " + Zeros(25)), kSizeError);
    EXPECT_EQ(loop.Diagnostics(),
              "<ERRID:*> Size error decoding IE UE_test_loop_mode_A_LB_setup\n");
    EXPECT_TRUE(loop.Member("UE_test_loop_mode_A_LB_setup").present);
}

// Nested messages.

TEST(NestedMessage, OfNoOctetsIsNothing) {
    SetUnderTest messages = EmmUp();
    EXPECT_EQ(messages.Decode("07 43 00 00"), 32);
    EXPECT_EQ(messages.Member("ESMMessageContainer").number, 0U);
    for (const char* octets : {"07 43 00 01 52", "07 43 00 02 52 01", "07 43 00 04 52 01 C5 05"}) {
        EXPECT_EQ(messages.Decode(octets), kMandatoryError) << octets;
        EXPECT_EQ(messages.Diagnostics(),
                  "<ERRID:*> Error decoding subfield ESMMessageContainer\n");
    }
    EXPECT_EQ(messages.Decode("07 43 00 06 52 00 C2 27 01 80"), 80);
}

TEST(NestedMessage, FailsTheFieldWithItsOwnFault) {
    SetUnderTest messages = EmmUp();
    EXPECT_EQ(messages.Decode("07 43 00 05 52 00 C2 27 00"), kMandatoryError);
    EXPECT_EQ(messages.Diagnostics(),
              "<ERRID:*> Size error decoding IE ProtocolConfigurationOptions\n"
              "<ERRID:*> Error decoding subfield ESMMessageContainer\n");
    EXPECT_EQ(messages.Member("ESMMessageContainer").number, 3U);
    EXPECT_EQ(messages.Member("ESMMessageContainer").cells->cells[0].number, 5U);
}

// Keys.

TEST(Keys, OfCallsAndMobilityManagementLeaveTheSequenceNumberOut) {
    SetUnderTest up = L3Up();
    for (const char* octets : {"05 01", "05 41", "05 81", "F5 C1"}) {
        static_cast<void>(up.Decode(octets));
        EXPECT_EQ(up.Name(), "IMSI_DETACH_INDICATION_UP") << octets;
    }
    static_cast<void>(up.Decode("93 45"));
    EXPECT_EQ(up.Name(), "SETUP_UP");
    EXPECT_EQ(up.Container().messageType, 0x45U);
    EXPECT_EQ(up.Container().pd, 3U);
    SetUnderTest down = L3Down();
    static_cast<void>(down.Decode("93 C5"));
    EXPECT_EQ(down.Name(), "SETUP_DN");
}

TEST(Keys, OfGprsMobilityManagementAreWhole) {
    SetUnderTest up = L3Up();
    EXPECT_EQ(up.Decode("08 41"), kUnknownMessage);
    EXPECT_EQ(up.Container().tag, 0U);
    EXPECT_EQ(up.Container().pd, 8U);
    EXPECT_EQ(up.Container().messageType, 0x41U);
    static_cast<void>(up.Decode("F8 01"));
    EXPECT_EQ(up.Name(), "ATTACH_REQUEST_UP");
    SetUnderTest down = L3Down();
    static_cast<void>(down.Decode("08 01"));
    EXPECT_EQ(down.Name(), "ATTACH_REQUEST_UP");
    EXPECT_EQ(down.Container().tag, 40U);
}

TEST(Keys, OfOtherDiscriminatorsAreUnknown) {
    SetUnderTest up = L3Up();
    for (const char* octets : {"09 01", "0A 41", "0B 3A", "00 01", "0F 80"}) {
        EXPECT_EQ(up.Decode(octets), kUnknownMessage) << octets;
    }
}

// Numbers of the fault lines.

TEST(Diagnostics, NumbersAreUniqueInAFamily) {
    for (const families::Family* family : families::AllFamilies()) {
        std::set<std::uint16_t> taken;
        const auto take = [&](std::uint16_t number) {
            if (number != 0) {
                EXPECT_TRUE(taken.insert(number).second) << family->name << " " << number;
            }
        };
        for (const FieldRow& field : family->codec.fields) {
            EXPECT_NE(field.shortNumber, 0) << field.name;
            take(field.encodeNumber);
            take(field.sizeNumber);
            take(field.valueNumber);
            take(field.shortNumber);
        }
        for (const ValueRow& value : family->codec.values) {
            take(value.decodeNumber);
            take(value.encodeNumber);
            take(value.shortNumber);
        }
        for (const GroupRow& group : family->codec.groups) {
            EXPECT_NE(group.missingNumber, 0);
            take(group.missingNumber);
        }
    }
}

}  // namespace
}  // namespace quorvane::iecodec
