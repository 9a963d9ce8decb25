// The wire forms of values on their way back: on types of the described families, and on tables
// made here for what those never do.

#include "iecodec/value_encoder.h"

#include <array>
#include <gtest/gtest.h>
#include <string>

#include "codec_test_support.h"

namespace quorvane::iecodec {
namespace {

using bits::Cell;
using test::TypeUnderTest;
using test::Written;
using test::Zeros;

TypeUnderTest Eps(std::string_view type) {
    return {families::kEpsFamily, type};
}

TypeUnderTest L3(std::string_view type) {
    return {families::kL3Family, type};
}

TEST(EncodeStructure, WritesSpareBitsAsZero) {
    TypeUnderTest status = Eps("epsTmsiStatus");
    static_cast<void>(status.Decode("F0", 4));
    const Written written = status.Encode();
    EXPECT_EQ(written.bits, 4);
    EXPECT_EQ(written.hex, "1F");  // the low half isn't the value's
    EXPECT_EQ(L3("MobileStationClassmark2").ThereAndBack("FF FF FF"), "7F 7F BF");
    EXPECT_EQ(L3("ServCategory").ThereAndBack("FF"), "7F");
}

TEST(EncodeStructure, ThatWasNeverReachedIsItsDefault) {
    EXPECT_EQ(Eps("TrackingAreaIdentity").Encode().hex, "00 00 00 00 00");
    EXPECT_EQ(Eps("TrackingAreaIdentity").Encode().bits, 40);
    EXPECT_EQ(Eps("epsMobileId_TMGI").Encode().bits, 64);
}

TEST(EncodeStructure, TruncatableOnesAreWrittenWhole) {
    TypeUnderTest guti = Eps("EPSMobileIdentity_GUTI");
    ASSERT_EQ(guti.Decode("F6 62 F2 10 12 34", 48), 48);
    EXPECT_EQ(guti.Encode().hex, "00 62 F2 10 12 34 00 00 00 00 00");
    EXPECT_EQ(guti.Encode().bits, 88);
    TypeUnderTest quality = L3("QualityOfServ");
    ASSERT_EQ(quality.Decode("0B 92 1F"), 24);
    EXPECT_EQ(quality.Encode().hex, "0B 92 1F 00 00 00 00 00 00 00 00 00 00 00 00 00");
}

TEST(EncodeStructure, WritesLengthsOfItsMembers) {
    EXPECT_EQ(Eps("epsSupportedCodec").ThereAndBack("02 03 AA BB CC"), "02 03 AA BB CC");
    EXPECT_EQ(Eps("epsSupportedCodec").ThereAndBack("02 00"), "02 00");
    // Nine octets were sent, eight are kept.
    EXPECT_EQ(Eps("epsSupportedCodec").ThereAndBack("02 09 01 02 03 04 05 06 07 08 09"),
              "02 08 01 02 03 04 05 06 07 08");
}

TEST(EncodeBinary, WritesTheBitsItHolds) {
    TypeUnderTest name = L3("ASCII");
    EXPECT_EQ(name.ThereAndBack("61 62 63"), "61 62 63");
    ASSERT_EQ(name.Decode("61 62 63"), 24);
    name.Member("text").number = 12;
    EXPECT_EQ(name.Encode().bits, 12);
    EXPECT_EQ(name.Encode().hex, "61 6F");
    name.Member("text").number = 0;
    EXPECT_EQ(name.Encode().bits, 0);
}

TEST(EncodeChoice, WritesTheSelector) {
    TypeUnderTest identity = Eps("EPSMobileIdentity");
    EXPECT_EQ(identity.ThereAndBack("F6 62 F2 10 12 34 56 C0 00 00 01"),
              "06 62 F2 10 12 34 56 C0 00 00 01");
    EXPECT_EQ(identity.ThereAndBack("29 26 10"), "29 26 10");
    TypeUnderTest mobile = Eps("epsMobileId");
    EXPECT_EQ(mobile.ThereAndBack("35 00 00 07 62 F2 10 07"), "35 00 00 07 62 F2 10 07");
    // What the default alternative writes stands.
    EXPECT_EQ(mobile.ThereAndBack("2B 26 10"), "2B 26 10");
}

TEST(EncodeChoice, WithoutAnAlternativeWritesNothing) {
    for (const std::uint32_t tag : {0U, 3U}) {
        TypeUnderTest identity = Eps("EPSMobileIdentity");
        static_cast<void>(identity.Decode("29 26 10"));
        identity.Record().number = tag;
        EXPECT_EQ(identity.Encode().bits, 0);
        EXPECT_EQ(identity.Encode().hex, "");
    }
}

TEST(EncodeSequence, WritesItsItems) {
    EXPECT_EQ(Eps("epsPlmnList").ThereAndBack("62 F2 10 62 F2 20"), "62 F2 10 62 F2 20");
    TypeUnderTest none = Eps("epsPlmnList");
    EXPECT_EQ(none.Encode().bits, 0);
    static_cast<void>(none.Decode("62 F2 10"));
    none.Record().number = 0;
    EXPECT_EQ(none.Encode().bits, 0);
}

TEST(EncodeExtension, ClosesEachGroupAtItsLastOctet) {
    TypeUnderTest number = Eps("epsCallingPartyBcdNum");
    EXPECT_EQ(number.ThereAndBack("91 21 F3"), "91 21 F3");
    EXPECT_EQ(number.ThereAndBack("11 83 21"), "11 83 21");
    EXPECT_EQ(number.ThereAndBack("11 9F 21"), "11 83 21");
    // An open octet, and those that were passed over behind it, are not kept.
    EXPECT_EQ(number.ThereAndBack("11 03 00 80 21"), "11 83 21");
    EXPECT_EQ(number.ThereAndBack("91"), "91");
    EXPECT_EQ(Eps("epsCalledPartyBcdNum").ThereAndBack("11 80 21"), "91 21");
}

TEST(EncodeExtension, EndsAheadOfAGroupThatIsNotThere) {
    TypeUnderTest layer = L3("HighLayerCpbility");
    EXPECT_EQ(layer.ThereAndBack(""), "");
    EXPECT_EQ(layer.ThereAndBack("91"), "91");
    EXPECT_EQ(layer.ThereAndBack("91 81"), "91 81");
    EXPECT_EQ(layer.ThereAndBack("91 41 85"), "91 41 85");
    // Without the first group there is no place for the second.
    ASSERT_EQ(layer.Decode("91 81"), 16);
    layer.Member("CodingStandard").present = false;
    EXPECT_EQ(layer.Encode().bits, 0);
    // An octet counts as not there, too, behind one that isn't.
    TypeUnderTest bearer = L3("BearerCpblty");
    ASSERT_EQ(bearer.Decode("60 24 42 88"), 32);
    EXPECT_EQ(bearer.Encode().hex, "60 24 42 88");
    bearer.Member("Coding2").present = false;
    EXPECT_EQ(bearer.Encode().hex, "60 A4");
}

TEST(EncodeExtension, WritesTheRemainder) {
    EXPECT_EQ(L3("Cause").ThereAndBack("60 85 90 AA BB"), "60 85 90 AA BB");
    EXPECT_EQ(L3("Cause").ThereAndBack("E0 90"), "E0 90");
    EXPECT_EQ(Eps("epsProtocolCfgOpt").ThereAndBack("F9 00 0D 00 80 21 02 AA BB"),
              "81 00 0D 00 80 21 02 AA BB");
    // 239 of 240 bits are kept, and as many written.
    TypeUnderTest cause = L3("Cause");
    ASSERT_EQ(cause.Decode("E0 90 " + Zeros(30)), 256);
    EXPECT_EQ(cause.Encode().bits, 16 + 239);
}

TEST(EncodeMessageValue, HasAHeaderOfItsOwn) {
    TypeUnderTest message = Eps("ESMMessageUp");
    EXPECT_EQ(message.ThereAndBack("52 07 E8 6F"), "52 07 E8 6F");
    // The discriminator that was sent is not kept.
    EXPECT_EQ(message.ThereAndBack("5F 07 E8 6F"), "52 07 E8 6F");
    EXPECT_EQ(message.ThereAndBack("62 00 C6 27 01 80"), "62 00 C6 27 01 80");
    for (const std::uint32_t tag : {0U, 14U}) {
        static_cast<void>(message.Decode("52 07 E8 6F"));
        message.Record().number = tag;
        EXPECT_EQ(message.Encode().bits, 0);
    }
}

TEST(EncodeCsn, ResultIsWhatTheMachineWrites) {
    EXPECT_EQ(Eps("APNAggregateMaxBitRate").ThereAndBack("10 11 12 13"), "10 11 12 13");
    // Spare padding is not written: seven bits of the third octet are the structure's.
    TypeUnderTest capability = L3("MsNetwkCpblty");
    ASSERT_EQ(capability.Decode("E5 E0 35 00"), 32);
    EXPECT_EQ(capability.Encode().bits, 23);
    EXPECT_EQ(capability.Encode().hex, "E5 E0 35");
}

TEST(EncodeCsn, AValueThatTheStructureHasNoPlaceForIsRefused) {
    // Multiband 000, no optional group: 51 bits.
    TypeUnderTest classmark = L3("Classmark3Value");
    ASSERT_EQ(classmark.Decode("00 10 10 22 C2 4A 88"), 56);
    EXPECT_FALSE(classmark.Encode().bits.Failed());
    classmark.Member("Multiband_supported").number = 3;  // no branch has 011
    EXPECT_EQ(classmark.Encode().bits, kSyntaxError);
    EXPECT_EQ(classmark.Encode().diagnostics, "");
}

// Values that refuse, in a sequence and behind octet groups.

bits::Outcome RefuseToDecode(DecodeContext& /*context*/, const ValueRow& /*row*/,
                             std::int64_t /*position*/, Cell& /*cell*/, std::int64_t /*length*/) {
    return kSizeError;
}

/// Writes the number, but for 0.
bits::Outcome EncodeAllButZero(EncodeContext& context, const ValueRow& /*row*/,
                               std::int64_t position, const Cell& cell) {
    if (cell.number == 0) {
        return kSizeError;
    }
    context.writer.Write(position, cell.number, 8);
    return 8;
}

constexpr SpecialElement kAllButZero{"kAllButZero", RefuseToDecode, EncodeAllButZero};

enum Row : std::uint16_t { kItem, kList, kElement, kSevenBits };

struct RefusingTables {
    RefusingTables() {
        values[kItem].shape = Shape::kSpecial;
        values[kList].name = "SomeList";
        values[kList].shape = Shape::kSequence;
        values[kList].item = kItem;
        values[kList].capacity = 4;
        values[kList].encodeNumber = 21;
        values[kElement].name = "SomeElement";
        values[kElement].shape = Shape::kExtension;
        values[kElement].members = 2;
        values[kElement].count = 1;
        values[kElement].item = kItem;
        values[kElement].element = 1;
        values[kElement].encodeNumber = 22;
        values[kSevenBits].shape = Shape::kInteger;
        values[kSevenBits].width = 7;
        tables.values = values;
        tables.parts = parts;
        tables.groups = groups;
        tables.octets = octets;
        tables.specials = specials;
    }

    std::array<ValueRow, 4> values{};
    std::array<PartRow, 1> parts{{{PartRow::Kind::kInteger, 0, 1, 7, kSevenBits}}};
    std::array<OctetRow, 1> octets{{{0, 1, kNone}}};
    std::array<GroupRow, 1> groups{{{true, 3, 0, 1, 23}}};
    std::array<const SpecialElement*, 1> specials{&kAllButZero};
    CodecTables tables{};
};

class RefusedValue : public testing::Test {
  protected:
    bits::Outcome Encode(std::uint16_t row, const Cell& cell) {
        bits::BitWriter writer(octets_.data(), static_cast<std::int64_t>(octets_.size()));
        EncodeContext context{tables_.tables, writer, diagnostics_};
        return EncodeValue(context, RowAt(context, row), 0, cell);
    }

    RefusingTables tables_;
    std::array<std::uint8_t, 8> octets_{};
    Diagnostics diagnostics_;
};

TEST_F(RefusedValue, FailsItsSequence) {
    std::array<Cell, 3> items{};
    items[0].number = 0x11;
    items[2].number = 0x33;
    Cell list{};
    list.number = 3;
    list.cells = items.data();
    EXPECT_EQ(Encode(kList, list), kSyntaxError);
    EXPECT_EQ(diagnostics_.Lines(), "<ERRID:21> Error encoding sequence SomeList\n");
    // What was written so far stays; nothing is written behind it.
    EXPECT_EQ(test::ToHex(octets_), "11 00 00 00 00 00 00 00");

    diagnostics_.Clear();
    list.number = 1;
    EXPECT_EQ(Encode(kList, list), 8);
    EXPECT_EQ(diagnostics_.Lines(), "");
}

TEST_F(RefusedValue, FailsTheElementThatItIsTheRemainderOf) {
    std::array<Cell, 2> members{};
    members[0].number = 0x15;
    Cell element{};
    element.cells = members.data();
    EXPECT_EQ(Encode(kElement, element), kSyntaxError);
    EXPECT_EQ(diagnostics_.Lines(), "<ERRID:22> Error encoding remainder of SomeElement\n");
    EXPECT_EQ(test::ToHex(octets_), "95 00 00 00 00 00 00 00");

    diagnostics_.Clear();
    members[1].number = 0x44;
    EXPECT_EQ(Encode(kElement, element), 16);
    EXPECT_EQ(test::ToHex(octets_), "95 44 00 00 00 00 00 00");
    EXPECT_EQ(diagnostics_.Lines(), "");
}

}  // namespace
}  // namespace quorvane::iecodec
