// Messages on their way back: headers, fields of every format, recognisers, and what a value that
// refuses leaves.

#include "iecodec/message_encoder.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <numeric>
#include <span>
#include <string>
#include <vector>

#include "codec_test_support.h"
#include "support/sample_family.h"

namespace quorvane::iecodec {
namespace {

using bits::Cell;
using test::SetUnderTest;
using test::Written;
using test::Zeros;

SetUnderTest Eps(const char* direction) {
    return {families::kEpsFamily, std::string("Message_set_EPS_") + direction};
}

SetUnderTest L3(const char* direction) {
    return {families::kL3Family, std::string("Message_set_") + direction};
}

/// Decodes octets without a fault and encodes the record.
std::string ThereAndBack(SetUnderTest& set, std::string_view hex) {
    EXPECT_FALSE(set.Decode(hex).Failed()) << hex;
    EXPECT_EQ(set.Diagnostics(), "") << hex;
    const Written written = set.Encode();
    EXPECT_EQ(written.diagnostics, "") << hex;
    EXPECT_EQ(written.bits.Bits() % 8, 0) << hex;
    return written.hex;
}

// Headers.

TEST(EncodeHeader, OfMobilityManagement) {
    SetUnderTest up = Eps("MM_Uplink");
    EXPECT_EQ(ThereAndBack(up, "07 46"), "07 46");
    // The type of security header is written from the record; only plain ones come here.
    up.Member("SecurityHeaderType").number = 3;
    EXPECT_EQ(up.Encode().hex, "37 46");
    EXPECT_EQ(ThereAndBack(up, "D7 A5 12 34"), "D7 A5 12 34");
    EXPECT_EQ(ThereAndBack(up, "27 11 22 33 44 05 AA"), "27 11 22 33 44 05 AA");
}

TEST(EncodeHeader, OfSessionManagement) {
    SetUnderTest down = Eps("SM_Downlink");
    EXPECT_EQ(ThereAndBack(down, "52 13 D9"), "52 13 D9");
    EXPECT_EQ(ThereAndBack(down, "F2 FF E8 1B"), "F2 FF E8 1B");
}

TEST(EncodeHeader, OfTestMode) {
    SetUnderTest set(families::kEpcFamily, "Message_set_SS_to_UE");
    EXPECT_EQ(ThereAndBack(set, "0F 82"), "0F 82");
    EXPECT_EQ(ThereAndBack(set, "FF 84 01"), "0F 84 01");
}

TEST(EncodeHeader, OfCoreNetworkMessages) {
    SetUnderTest up = L3("L3Uplink");
    EXPECT_EQ(ThereAndBack(up, "05 30"), "05 30");
    // Skip indicator and sequence number are no part of the record.
    EXPECT_EQ(ThereAndBack(up, "F5 F0"), "05 30");
    EXPECT_EQ(ThereAndBack(up, "08 06"), "08 06");
    EXPECT_EQ(ThereAndBack(up, "D3 18"), "D3 18");
    EXPECT_EQ(ThereAndBack(up, "73 D8"), "73 18");
    up.Member("TI_Value").number = 2;
    up.Member("TI_Flag").number = 1;
    EXPECT_EQ(up.Encode().hex, "A3 18");
}

TEST(EncodeHeader, OfSessionManagementWithAnExtendedIdentifier) {
    SetUnderTest up = L3("XTIDUplink");
    EXPECT_EQ(ThereAndBack(up, "6A 55 1A"), "6A 55 1A");
    EXPECT_EQ(ThereAndBack(up, "FA 8C 55 1A"), "FA 8C 55 1A");
    EXPECT_EQ(ThereAndBack(up, "7A 87 55 1A"), "7A 87 55 1A");
    // The octets behind the first of the extension are not kept; a value below 7 needs none.
    EXPECT_EQ(ThereAndBack(up, "FA 0C 8D 55 1A"), "FA 8C 55 1A");
    EXPECT_EQ(ThereAndBack(up, "FA 83 55 1A"), "BA 55 1A");
}

/// What the octets of a message have for a key.
std::uint32_t KeyIn(std::span<const std::uint8_t> octets, const MessageSetRow& row) {
    const std::uint32_t first = octets[row.highOctet];
    switch (row.keyForm) {
        case KeyForm::kTwoOctets:
            return first << 8 | octets[row.lowOctet];
        case KeyForm::kSixBits:
            return first >> 2;
        case KeyForm::kExtendedIdentifier:
            return first << 8 | octets[1];  // of an identifier without extension
        case KeyForm::kKeyless:
            break;
    }
    return 0;
}

TEST(EncodeHeader, IsThatOfTheKeyForEveryMessage) {
    for (const families::Family* family : families::AllFamiliesAndTheSample()) {
        for (const MessageSetRow& row : family->codec.sets) {
            SetUnderTest set(*family, row.name);
            for (const KeyRow& key : row.keys) {
                set.Container() = {};
                set.Container().tag = key.tag;
                std::array<std::uint8_t, 4096> octets{};
                bits::BitWriter writer(octets.data(), octets.size());
                Diagnostics diagnostics;
                EncodeContext context{family->codec, writer, diagnostics};
                // Records that were never reached; some of their values refuse.
                static_cast<void>(EncodeContainer(context, row, set.Container()));
                if ((key.key & 0xFFFU) == 0x700U) {
                    EXPECT_EQ(octets[0], 0x07) << set.Name();  // no type
                } else {
                    EXPECT_EQ(KeyIn(octets, row), key.key) << set.Name();
                }
            }
        }
    }
}

TEST(EncodeBody, LeavesTheHeaderOut) {
    SetUnderTest down = Eps("SM_Downlink");
    ASSERT_EQ(down.Decode("52 00 DB 01 01"), 40);
    std::array<std::uint8_t, 8> octets{};
    octets.fill(0xFF);
    bits::BitWriter writer(octets.data(), octets.size());
    Diagnostics diagnostics;
    EncodeContext context{families::kEpsFamily.codec, writer, diagnostics};
    const MessageRow& message = down.Message("EPS_NOTIFICATION");
    EXPECT_EQ(EncodeMessageBody(context, message, 16, down.Container().body), 16);
    EXPECT_EQ(test::ToHex(octets), "FF FF 01 01 FF FF FF FF");
    EXPECT_EQ(EncodeMessage(context, message, 16, down.Container().body), 40);
    EXPECT_EQ(test::ToHex(octets), "FF FF 52 00 DB 01 01 FF");
    EXPECT_EQ(EncodeMessageBody(context, down.Message("ESM_INFORMATION_REQUEST"), 8, {}), 0);
    EXPECT_EQ(test::ToHex(octets), "FF FF 52 00 DB 01 01 FF");
}

TEST(EncodeBody, IsTheMessageBehindItsHeaderInEveryFamily) {
    for (const families::Family* family : families::AllFamiliesAndTheSample()) {
        for (const MessageSetRow& row : family->codec.sets) {
            for (const std::uint16_t index : row.messages) {
                const MessageRow& message = family->codec.messages[index];
                if (message.value != kNone) {
                    continue;  // of neither header nor body
                }
                std::vector<std::uint8_t> whole(4096);
                std::vector<std::uint8_t> body(4096);
                Diagnostics diagnostics;
                bits::BitWriter wholeWriter(whole.data(), 4096);
                bits::BitWriter bodyWriter(body.data(), 4096);
                EncodeContext wholeContext{family->codec, wholeWriter, diagnostics};
                EncodeContext bodyContext{family->codec, bodyWriter, diagnostics};
                const auto items = family->codec.headerItems.subspan(message.firstHeaderItem,
                                                                     message.headerItemCount);
                const std::int32_t header =
                    std::accumulate(items.begin(), items.end(), 0,
                                    [](std::int32_t width, const HeaderItemRow& item) {
                                        return width + item.width;
                                    });
                const bits::Outcome result = EncodeMessage(wholeContext, message, 0, Cell{});
                const bits::Outcome inner = EncodeMessageBody(bodyContext, message, header, Cell{});
                EXPECT_EQ(result, inner.Plus(header)) << message.name;
                wholeWriter.Write(0, 0, header);
                EXPECT_EQ(whole, body) << message.name;
            }
        }
    }
}

// Sets.

TEST(EncodeContainer, WithoutAMessageOfTheSetIsRefused) {
    for (const families::Family* family : families::AllFamilies()) {
        for (const MessageSetRow& row : family->codec.sets) {
            SetUnderTest set(*family, row.name);
            for (const std::size_t tag :
                 {std::size_t{0}, row.messages.size() + 1, std::size_t{0xFFFFFFFF}}) {
                set.Container() = {};
                set.Container().tag = static_cast<std::uint32_t>(tag);
                const Written written = set.Encode();
                EXPECT_EQ(written.bits, kUnknownMessage) << row.name << " " << tag;
                EXPECT_EQ(written.hex, "");
                EXPECT_EQ(written.diagnostics, "");
            }
        }
    }
}

// Fields.

TEST(EncodeFields, HalfOctetsTakeTheLowHalfFirst) {
    SetUnderTest up = Eps("SM_Uplink");
    EXPECT_EQ(ThereAndBack(up, "02 01 D0 31"), "02 01 D0 31");
    up.Member("RequestType").number = 4;
    up.Member("PDNType").number = 2;
    EXPECT_EQ(up.Encode().hex, "02 01 D0 24");
    // A spare half octet is 0.
    EXPECT_EQ(ThereAndBack(up, "02 0C D2 F5"), "02 0C D2 05");
    SetUnderTest calls = L3("L3Downlink");
    EXPECT_EQ(ThereAndBack(calls, "05 18 F2"), "05 18 02");
}

TEST(EncodeFields, OptionalOnesAreThereByTheirFlag) {
    SetUnderTest down = Eps("MM_Downlink");
    EXPECT_EQ(ThereAndBack(down, "07 61"), "07 61");
    EXPECT_EQ(down.Encode().bits, 16);
    EXPECT_EQ(ThereAndBack(down, "07 61 46 40 49 01 01"), "07 61 46 40 49 01 01");
    down.Member("LocalTimeZone").present = false;
    EXPECT_EQ(down.Encode().hex, "07 61 49 01 01");
    down.Member("NetworkDaylightSavingTime").present = false;
    EXPECT_EQ(down.Encode().hex, "07 61");
    // One that is there without having been reached is written with its default.
    down.Member("UniversalTimeAndLocalTimeZone").present = true;
    EXPECT_EQ(down.Encode().hex, "07 61 47 00 00 00 00 00 00 00");
    down.Member("UniversalTimeAndLocalTimeZone").present = false;
    down.Member("ShortNameForNetwork").present = true;
    EXPECT_EQ(down.Encode().hex, "07 61 45 01 00");
}

TEST(EncodeFields, MessagesOfOptionalOnesAloneAreTwoOctets) {
    SetUnderTest down = L3("L3Downlink");
    for (const char* octets : {"05 32", "08 21", "03 05", "08 0D"}) {
        EXPECT_EQ(ThereAndBack(down, octets), octets);
    }
    SetUnderTest up = L3("L3Uplink");
    for (const char* octets : {"03 01", "03 07", "08 03"}) {
        EXPECT_EQ(ThereAndBack(up, octets), octets);
    }
}

TEST(EncodeFields, OfHalfAnOctetShareItWithTheirIdentifier) {
    SetUnderTest up = Eps("SM_Uplink");
    EXPECT_EQ(ThereAndBack(up, "02 01 D0 31 D1"), "02 01 D0 31 D1");
    SetUnderTest calls = L3("L3Uplink");
    EXPECT_EQ(ThereAndBack(calls, "05 24 11 03 53 18 81 05 F4 00 00 00 01 8F"),
              "05 24 11 03 53 18 81 05 F4 00 00 00 01 87");
}

TEST(EncodeFields, OfAnIdentifierAloneAreIt) {
    SetUnderTest calls = L3("L3Uplink");
    EXPECT_EQ(ThereAndBack(calls, "03 05 04 01 A0 5E 03 81 21 F3 A1 A3"),
              "03 05 04 01 A0 5E 03 81 21 F3 A1 A3");
    calls.Member("ClirInvocation").present = true;
    calls.Member("ClirSuppression").present = false;
    EXPECT_EQ(calls.Encode().hex, "03 05 04 01 A0 5E 03 81 21 F3 A2 A3");
}

TEST(EncodeFields, MandatoryOnesWithAnIdentifierNeedNoFlag) {
    SetUnderTest calls = L3("L3Uplink");
    EXPECT_EQ(ThereAndBack(calls, "03 35 2C 31"), "03 35 2C 31");
    calls.Member("KeypadFacility").present = false;
    EXPECT_EQ(calls.Encode().hex, "03 35 2C 31");
}

TEST(EncodeFields, LengthsAreKnownBehindTheirValues) {
    SetUnderTest up = Eps("MM_Uplink");
    EXPECT_EQ(ThereAndBack(up, "07 53 04 11 22 33 44"), "07 53 04 11 22 33 44");
    up.Member("AuthenticationResponseParameter").number = 0;
    EXPECT_EQ(up.Encode().hex, "07 53 00");
    // A value that isn't in whole octets has its length rounded down, and nothing behind it.
    up.Member("AuthenticationResponseParameter").number = 12;
    EXPECT_EQ(up.Encode().bits, 16 + 8 + 12);
    EXPECT_EQ(up.Encode().hex, "07 53 01 11 2F");
}

TEST(EncodeFields, AValueLongerThanItsLengthFieldIsRefused) {
    SetUnderTest up = Eps("MM_Uplink");
    ASSERT_FALSE(up.Decode("07 5C 15 30 0E 01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E").Failed());
    std::array<std::uint8_t, 300> octets{};
    Cell& parameter = up.Member("AuthenticationFailureParameter");
    parameter.octets = octets.data();
    parameter.number = 8 * 255;
    EXPECT_EQ(up.Encode().hex.substr(0, 14), "07 5C 15 30 FF");
    for (const std::uint32_t count : {256U, 300U}) {
        parameter.number = 8 * count;
        const Written written = up.Encode();
        EXPECT_EQ(written.bits, kSyntaxError);
        EXPECT_EQ(written.diagnostics,
                  "<ERRID:*> Error encoding subfield AuthenticationFailureParameter\n");
    }
}

// TS 24.008, 9.4.1: the MS radio access capability has 5 octets at least, the last ones spare here.
TEST(EncodeFields, ACsnStructureIsFilledUpWithZeros) {
    SetUnderTest up(families::kL3Family, "Message_set_L3Uplink");
    const std::string request =
        "08 01 02 E5 E0 71 0A 00 05 F4 C0 00 00 01 62 F2 10 12 34 05 05 11 25 80 00 00";
    EXPECT_FALSE(up.Decode(request).Failed());
    EXPECT_EQ(up.Diagnostics(), "");
    const Written written = up.Encode();
    EXPECT_EQ(written.bits.Bits() % 8, 0);
    EXPECT_FALSE(up.Decode(written.hex).Failed());
    EXPECT_EQ(up.Diagnostics(), "");
}

TEST(EncodeFields, LongLengthsTakeTwoOctets) {
    SetUnderTest up = Eps("MM_Uplink");
    // An ESM message has its own header, and the outer length counts it.
    EXPECT_EQ(ThereAndBack(up, "07 43 00 06 52 00 C2 27 01 80"), "07 43 00 06 52 00 C2 27 01 80");
    EXPECT_EQ(ThereAndBack(up, "07 43 00 00"), "07 43 00 00");
    SetUnderTest down = Eps("MM_Downlink");
    EXPECT_EQ(ThereAndBack(down, "07 44 13 78 00 04 02 01 D1 1B"), "07 44 13 78 00 04 02 01 D1 1B");
}

TEST(EncodeFields, ALongContainerIsMeasuredInTwoOctets) {
    SetUnderTest down = Eps("MM_Downlink");
    std::string container;
    for (int octet = 0; octet < 300; ++octet) {
        container += " 5A";
    }
    const std::string message = "07 68 01 01 2C" + container;
    EXPECT_EQ(ThereAndBack(down, message), message);
}

TEST(EncodeFields, FixedBinariesAreAsLongAsTheyAre) {
    SetUnderTest down = Eps("MM_Downlink");
    ASSERT_EQ(down.Decode("07 52 00"), kMandatoryError);
    down.Container().body = {};
    EXPECT_EQ(down.Encode().hex, "07 52 00 " + Zeros(16) + "10 " + Zeros(15) + "00");
}

TEST(EncodeFields, ConditionalOnesAreThereByTheirFlag) {
    SetUnderTest set(families::kEpcFamily, "Message_set_SS_to_UE");
    for (const char* octets : {"0F 80 03", "0F 80 01 2A", "0F 80 00 00", "0F 80 02 FF 0A 17",
                               "0F 80 00 06 03 E8 04 01 2C 1F"}) {
        EXPECT_EQ(ThereAndBack(set, octets), octets);
    }
    set.Member("UE_test_loop_mode_A_LB_setup").present = false;
    EXPECT_EQ(set.Encode().hex, "0F 80 00");
    // The flag decides, not the mode.
    set.Member("UE_test_loop_mode_B_LB_setup").present = true;
    set.Member("UE_test_loop_mode_B_LB_setup").number = 0x2A;
    EXPECT_EQ(set.Encode().hex, "0F 80 00 2A");
}

// Recognisers.

bool Recognises(const families::Family& family, const MessageRow& message, std::string_view hex,
                std::int64_t position = 0) {
    const test::Octets octets = test::FromHex(hex);
    const bits::BitReader reader(octets.data(), static_cast<std::int64_t>(octets.size()));
    return IsMessage(family.codec, message, reader, position);
}

TEST(IsMessage, ComparesPlainOctets) {
    const families::Family& eps = families::kEpsFamily;
    SetUnderTest up = Eps("MM_Uplink");
    const MessageRow& complete = up.Message("ATTACH_COMPLETE");
    EXPECT_TRUE(Recognises(eps, complete, "07 43"));  // 7 and 67
    EXPECT_FALSE(Recognises(eps, complete, "07 41"));
    EXPECT_FALSE(Recognises(eps, complete, "17 43"));
    EXPECT_FALSE(Recognises(eps, complete, "02 43"));
    EXPECT_FALSE(Recognises(eps, complete, ""));

    SetUnderTest down = Eps("SM_Downlink");
    const MessageRow& request = down.Message("ACTIVATE_DEDICATED_EPS_BEARER_CONTEXT_REQUEST");
    EXPECT_TRUE(Recognises(eps, request, "02 00 C5"));  // 2 and 197
    EXPECT_TRUE(Recognises(eps, request, "02 FF C5"));
    EXPECT_FALSE(Recognises(eps, request, "52 00 C5"));
    EXPECT_FALSE(Recognises(eps, request, "02 C5 00"));
    EXPECT_FALSE(Recognises(eps, request, "07 00 C5"));
}

TEST(IsMessage, LooksFromAnyBit) {
    SetUnderTest up = Eps("MM_Uplink");
    const MessageRow& complete = up.Message("ATTACH_COMPLETE");
    EXPECT_TRUE(Recognises(families::kEpsFamily, complete, "FF 07 43", 8));
    EXPECT_FALSE(Recognises(families::kEpsFamily, complete, "07 43 00", 8));
    EXPECT_TRUE(Recognises(families::kEpsFamily, complete, "F0 74 3F", 4));
}

TEST(IsMessage, KnowsEveryMessageByItsOwnTypeAlone) {
    const struct {
        const families::Family& family;
        const char* set;
        const char* start;  // up to the type
    } sets[] = {{families::kEpsFamily, "Message_set_EPS_MM_Uplink", "07 "},
                {families::kEpsFamily, "Message_set_EPS_MM_Downlink", "07 "},
                {families::kEpsFamily, "Message_set_EPS_SM_Uplink", "02 63 "},
                {families::kEpsFamily, "Message_set_EPS_SM_Downlink", "02 63 "},
                {families::kEpcFamily, "Message_set_SS_to_UE", "0F "},
                {families::kEpcFamily, "Message_set_UE_to_SS", "0F "}};
    for (const auto& [family, name, start] : sets) {
        const SetUnderTest set(family, name);
        for (const KeyRow& key : set.Row().keys) {
            const bool typed = (key.key & 0xFFU) != 0;
            const auto type = static_cast<std::uint8_t>(key.key & 0xFFU);
            const std::string octets = start + test::ToHex({&type, 1});
            std::vector<std::string_view> recognised;
            for (const std::uint16_t index : set.Row().messages) {
                const MessageRow& message = family.codec.messages[index];
                if (Recognises(family, message, octets)) {
                    recognised.push_back(message.name);
                }
            }
            const MessageRow& own = family.codec.messages[set.Row().messages[key.tag - 1U]];
            const std::vector<std::string_view> expected{own.name};
            EXPECT_EQ(recognised, typed ? expected : std::vector<std::string_view>{}) << octets;
        }
    }
}

// A value that refuses.

TEST(RefusedField, EndsTheMessageWithALine) {
    // Multiband 011 is none of the classmark's.
    SetUnderTest up = L3("L3Uplink");
    const std::string start =
        "08 01 02 E5 E0 71 0A 00 05 F4 C0 00 00 01 62 F2 10 12 34 05 05 11 25 "
        "80 00 00 ";
    ASSERT_FALSE(up.Decode(start + "20 07 00 10 10 22 C2 4A 88 5D 01 05").Failed());
    ASSERT_TRUE(up.Member("MobileStationClassmark3").present);
    up.Member("MobileStationClassmark3.Multiband_supported").number = 3;
    const Written written = up.Encode();
    EXPECT_EQ(written.bits, kSyntaxError);
    EXPECT_EQ(written.diagnostics, "<ERRID:*> Error encoding subfield MobileStationClassmark3\n");
    // What was written so far stays, here up to the classmark's identifier.
    EXPECT_EQ(written.hex.substr(0, 5), "08 01");
    up.Member("MobileStationClassmark3").present = false;
    EXPECT_FALSE(up.Encode().bits.Failed());
}

bits::Outcome RefuseToDecode(DecodeContext& /*context*/, const ValueRow& /*row*/,
                             std::int64_t /*position*/, Cell& /*cell*/, std::int64_t /*length*/) {
    return kSizeError;
}

bits::Outcome RefuseToEncode(EncodeContext& /*context*/, const ValueRow& /*row*/,
                             std::int64_t /*position*/, const Cell& /*cell*/) {
    return kSizeError;
}

constexpr SpecialElement kRefuses{"kRefuses", RefuseToDecode, RefuseToEncode};

TEST(RefusedField, OfEveryFormatIsToldByItsName) {
    using Format = FieldRow::Format;
    struct {
        Format format;
        bool optional;
        const char* written;
    } const cases[] = {
        {Format::kV, false, "07 11"},        {Format::kHalfLow, false, "07 11"},
        {Format::kHalfHigh, false, "07 11"}, {Format::kLv, false, "07 11"},
        {Format::kLvE, false, "07 11"},      {Format::kTv, true, "07 11 9A"},
        {Format::kTvHalf, true, "07 11 9F"}, {Format::kTlv, true, "07 11 9A"},
        {Format::kTlvE, true, "07 11 9A"},   {Format::kRest, false, "07 11"},
    };
    for (const auto& [format, optional, text] : cases) {
        std::array<ValueRow, 2> values{};
        values[0].shape = Shape::kSpecial;
        values[1].shape = Shape::kInteger;
        values[1].width = 8;
        std::array<FieldRow, 3> fields{};
        fields[0].name = "Before";
        fields[0].format = Format::kV;
        fields[0].value = 1;
        fields[1].name = "Refused";
        fields[1].format = format;
        fields[1].presence =
            optional ? FieldRow::Presence::kOptional : FieldRow::Presence::kMandatory;
        fields[1].iei = 0x9A;
        fields[1].element = 1;
        fields[1].encodeNumber = 77;
        fields[2] = fields[0];
        const std::array<HeaderItemRow, 1> header{
            {{HeaderItemRow::Kind::kMessageType, kNone, 8, 0}}};
        MessageRow message{};
        message.code = 7;
        message.members = 2;
        message.headerItemCount = 1;
        message.fieldCount = 3;
        const std::array<const SpecialElement*, 1> specials{&kRefuses};
        CodecTables tables{};
        tables.values = values;
        tables.fields = fields;
        tables.headerItems = header;
        tables.messages = {&message, 1};
        tables.specials = specials;

        std::array<Cell, 2> members{};
        members[0].number = 0x11;
        members[1].present = true;
        Cell record{};
        record.cells = members.data();
        std::array<std::uint8_t, 8> octets{};
        octets.fill(0xFF);
        bits::BitWriter writer(octets.data(), octets.size());
        Diagnostics diagnostics;
        EncodeContext context{tables, writer, diagnostics};
        EXPECT_EQ(EncodeMessage(context, message, 0, record), kSyntaxError);
        EXPECT_EQ(diagnostics.Lines(), "<ERRID:77> Error encoding subfield Refused\n");
        const std::string out = test::ToHex(octets);
        EXPECT_EQ(out.substr(0, std::string(text).size()), text);
        EXPECT_EQ(out.substr(std::string(text).size() + 1, 2), "FF");

        // Without its flag an optional one is no matter.
        if (optional) {
            members[1].present = false;
            diagnostics.Clear();
            EXPECT_EQ(EncodeMessage(context, message, 0, record), 24);
            EXPECT_EQ(diagnostics.Lines(), "");
        }
    }
}

TEST(EncodeMessage, ABufferThatIsTooSmallIsTheWritersToTell) {
    SetUnderTest down = Eps("SM_Downlink");
    ASSERT_EQ(down.Decode("52 00 DB 01 01"), 40);
    std::array<std::uint8_t, 4> octets{};
    bits::BitWriter writer(octets.data(), 3);
    Diagnostics diagnostics;
    EncodeContext context{families::kEpsFamily.codec, writer, diagnostics};
    EXPECT_EQ(EncodeContainer(context, down.Row(), down.Container()), 40);
    EXPECT_TRUE(writer.Overflowed());
    EXPECT_EQ(test::ToHex(octets), "52 00 DB 00");
}

}  // namespace
}  // namespace quorvane::iecodec
