// Forms of the notation that the tests' own family shows: fields that a member of a struct decides,
// decodings without a set, pseudo lengths, unchecked fields, messages that end anywhere, members in
// the order of the record, members without bits, unions with types of their own. Octets were worked
// out by hand.

#include "support/sample_family.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <string_view>

#include "iecodec/message_encoder.h"
#include "reflect/catalogue.h"
#include "unit/codec_test_support.h"

namespace quorvane::iecodec {
namespace {

using families::kSampleFamily;
using test::SetUnderTest;
using test::Written;

using test::TypeUnderTest;

SetUnderTest BehindPseudoLength() {
    return {kSampleFamily, "Sample_pseudo_length"};
}

SetUnderTest Short() {
    return {kSampleFamily, "Sample_short"};
}

// Fields that a member of a struct decides.

TEST(DecidedByAMember, TakesTheFieldThatItsValueNames) {
    SetUnderTest messages = BehindPseudoLength();
    const char* dedicated = "00 06 3F 05 AB 01 23 11 02 C0 DE 7C 12 34 D5 2B";
    ASSERT_EQ(messages.Decode(dedicated), 128);
    EXPECT_EQ(messages.Name(), "SAMPLE_ASSIGNMENT");
    EXPECT_TRUE(messages.Member("Channel").present);
    EXPECT_FALSE(messages.Member("PacketChannel").present);
    EXPECT_EQ(messages.Member("Channel.Type").number, 21U);
    EXPECT_EQ(messages.Member("Channel.Timeslot").number, 3U);
    EXPECT_EQ(messages.Member("Channel.Frequency").number, 0x123U);
    EXPECT_EQ(messages.Member("TimingAdvance").number, 17U);
    EXPECT_EQ(messages.Member("RestOctets.Group").number, 0x55U);
    EXPECT_EQ(messages.Encode().hex, "35 06 3F 05 AB 01 23 11 02 C0 DE 7C 12 34 D5");

    ASSERT_EQ(messages.Decode("00 06 3F 15 B3 86 00 11 00 2B"), 80);
    EXPECT_FALSE(messages.Member("Channel").present);
    EXPECT_TRUE(messages.Member("PacketChannel").present);
    EXPECT_EQ(messages.Member("PacketChannel.Kind").number, 22U);
    EXPECT_EQ(messages.Member("PacketChannel.Index").number, 3U);
    EXPECT_EQ(messages.Encode().hex, "21 06 3F 15 B3 86 00 11 00 7F");
}

TEST(DecidedByAMember, OtherBitsOfTheStructHaveNoEffect) {
    SetUnderTest messages = BehindPseudoLength();
    ASSERT_EQ(messages.Decode("00 06 3F E5 AB 01 23 11 00 2B"), 80);
    EXPECT_EQ(messages.Member("Mode.DownLink").number, 1U);
    EXPECT_TRUE(messages.Member("Channel").present);
}

TEST(DecidedByAMember, FailsAsAConditionalField) {
    SetUnderTest messages = BehindPseudoLength();
    EXPECT_EQ(messages.Decode("00 06 3F 05 AB"), kConditionalError);
    EXPECT_EQ(messages.Diagnostics(), "<ERRID:*> Message too short decoding subfield Channel\n");
    EXPECT_TRUE(messages.Member("Channel").present);

    // The bit behind the index has to be 0.
    EXPECT_EQ(messages.Decode("00 06 3F 15 B3 87 00 11 00 2B"), kConditionalError);
    EXPECT_EQ(messages.Diagnostics(), "<ERRID:*> Error decoding subfield PacketChannel\n");
    EXPECT_TRUE(messages.Member("PacketChannel").present);
    EXPECT_EQ(messages.Member("TimingAdvance").number, 0U);
}

// Pseudo lengths.

TEST(PseudoLength, IsPassedUnread) {
    SetUnderTest messages = BehindPseudoLength();
    for (const char* octets : {"00 06 1D BE EF", "FF 06 1D BE EF", "FF F6 1D BE EF"}) {
        ASSERT_EQ(messages.Decode(octets), 40) << octets;
        EXPECT_EQ(messages.Name(), "SAMPLE_PLAIN");
        EXPECT_EQ(messages.Member("CellIdentity").number, 0xBEEFU);
        EXPECT_EQ(messages.Container().pd, 6U);
        EXPECT_EQ(messages.Container().messageType, 0x1DU);
        EXPECT_EQ(messages.Encode().hex, "11 06 1D BE EF");
    }
    EXPECT_EQ(messages.Decode("06 1D BE EF"), kUnknownMessage);
    EXPECT_EQ(messages.Container().pd, 13U);
    EXPECT_EQ(messages.Container().messageType, 0xBEU);
}

TEST(PseudoLength, LeavesTheOctetBehindItToTheRecogniser) {
    const MessageRow& plain = BehindPseudoLength().Message("SAMPLE_PLAIN");
    const auto recognises = [&](const char* hex) {
        const test::Octets octets = test::FromHex(hex);
        const bits::BitReader reader(octets.data(), static_cast<std::int64_t>(octets.size()));
        return IsMessage(kSampleFamily.codec, plain, reader, 0);
    };
    EXPECT_TRUE(recognises("11 06 1D"));
    EXPECT_TRUE(recognises("00 06 1D"));
    EXPECT_FALSE(recognises("11 05 1D"));  // the protocol discriminator
    EXPECT_FALSE(recognises("11 16 1D"));  // the skip indicator
    EXPECT_FALSE(recognises("11 06 1A"));
}

TEST(PseudoLength, CountsNoRestOctets) {
    SetUnderTest messages = BehindPseudoLength();
    ASSERT_EQ(messages.Decode("00 06 1A 12 34 AA 00 00 01"), 72);
    EXPECT_EQ(messages.Encode().hex, "11 06 1A 12 34 AA 00 00 01");
    ASSERT_EQ(messages.Decode("00 06 01 2B"), 32);
    EXPECT_EQ(messages.Encode().hex, "09 06 01 7F");
}

// Messages that end anywhere.

TEST(ShortHeader, BodiesStartAtItsSeventhBit) {
    SetUnderTest messages = Short();
    ASSERT_EQ(messages.Decode("16 C4", 15), 15);
    EXPECT_EQ(messages.Name(), "SAMPLE_SHORT");
    EXPECT_EQ(messages.Container().pd, 0U);
    EXPECT_EQ(messages.Container().messageType, 5U);
    EXPECT_EQ(messages.Member("contents.Header").number, 2U);
    ASSERT_EQ(messages.Member("contents.Item").number, 1U);
    EXPECT_EQ(messages.Member("contents.Item").cells[0].number, 17U);
    const Written written = messages.Encode();
    EXPECT_EQ(written.bits, 15);
    EXPECT_EQ(written.hex, "16 C5");
    EXPECT_EQ(messages.Decode("16 C4"), kMandatoryError);
    EXPECT_EQ(messages.Diagnostics(), "<ERRID:*> Error decoding subfield contents\n");
}

// Unchecked fields.

TEST(UncheckedField, NeitherItsResultNorItsEndIsCompared) {
    SetUnderTest messages = Short();
    ASSERT_EQ(messages.Decode("1E 80 40 00 00 48 D0", 54), 54);
    EXPECT_EQ(messages.Name(), "SAMPLE_LIST");
    EXPECT_EQ(messages.Diagnostics(), "");
    EXPECT_EQ(messages.Member("List.Format").number, 2U);
    EXPECT_EQ(messages.Member("List.First").number, 0x201U);
    EXPECT_EQ(messages.Member("StartingTime").number, 0x1234U);

    EXPECT_EQ(messages.Decode("1E 80 40 00 00 48 D0", 20), kMandatoryError);
    EXPECT_EQ(messages.Diagnostics(),
              "<ERRID:*> Message too short decoding subfield StartingTime\n");
    EXPECT_EQ(messages.Member("List.First").number, 0x201U);
}

TEST(UncheckedField, IsWrittenAsWideAsItIs) {
    SetUnderTest messages = Short();
    ASSERT_EQ(messages.Decode("1E 80 40 00 00 48 D0", 54), 54);
    const Written written = messages.Encode();
    EXPECT_EQ(written.bits, 54);
    EXPECT_EQ(written.hex, "1E 80 40 00 00 48 D3");
}

TEST(UncheckedField, WhatFollowsItIsChecked) {
    SetUnderTest messages = Short();
    const char* octets = "2E 80 40 00 01 05";
    ASSERT_EQ(messages.Decode(octets), 48);
    EXPECT_EQ(messages.Member("contents.Header").number, 1U);
    EXPECT_EQ(messages.Member("contents.Rest").number, 5U);
    for (const std::int64_t length : {47, 38, 16}) {
        EXPECT_EQ(messages.Decode(octets, length), kMandatoryError) << length;
        EXPECT_EQ(messages.Diagnostics(), "<ERRID:*> Error decoding subfield contents\n");
        EXPECT_EQ(messages.Member("List.Format").number, 2U);
    }
}

// Decodings without a set.

TEST(DecodingWithoutASet, OfAStructTakesAnyOctets) {
    SetUnderTest access(kSampleFamily, "SampleAccess_8");
    ASSERT_EQ(access.Decode("A7", 8), 8);
    EXPECT_EQ(access.Name(), "SampleAccess");
    EXPECT_EQ(access.Member("Cause").number, 5U);
    EXPECT_EQ(access.Member("Reference").number, 7U);
    EXPECT_EQ(access.Encode().hex, "A7");
    EXPECT_EQ(access.Decode("", 8), 8);
}

TEST(DecodingWithoutASet, OfAMessageDoesNotLookAtItsType) {
    SetUnderTest burst(kSampleFamily, "SampleBurst_11");
    ASSERT_EQ(burst.Decode("00 E0", 11), 11);
    EXPECT_EQ(burst.Name(), "SAMPLE_BURST");
    EXPECT_EQ(burst.Container().messageType, 0U);
    EXPECT_EQ(burst.Member("contents.CTRL_ACK").number, 3U);
    const Written written = burst.Encode();
    EXPECT_EQ(written.bits, 11);
    EXPECT_EQ(written.hex, "FC FF");

    EXPECT_EQ(burst.Decode("00 00", 11), kMandatoryError);
    EXPECT_EQ(burst.Diagnostics(), "<ERRID:*> Error decoding subfield contents\n");
    EXPECT_EQ(burst.Container().tag, 1U);
}

TEST(DecodingWithoutASet, IsNoUnionOfTheCatalogue) {
    for (const std::uint16_t named : kSampleFamily.types.named) {
        const reflect::TypeRow& type = kSampleFamily.types.types[named];
        EXPECT_NE(kSampleFamily.types.NameOf(type), "SampleAccess_8");
        EXPECT_NE(kSampleFamily.types.NameOf(type), "SampleBurst_11");
    }
    EXPECT_EQ(families::FindSet(kSampleFamily, "SampleAccess_8")->type, kNone);
}

// Members in the order of the record.

TEST(RecordOrder, IsThatOfTheRecordAndTheText) {
    TypeUnderTest order(kSampleFamily, "SampleOrder");
    ASSERT_EQ(order.Decode("7A"), 8);  // 011 1 101 0
    EXPECT_EQ(order.Record().cells[0].number, 5U);
    EXPECT_EQ(order.Record().cells[2].number, 3U);
    EXPECT_EQ(order.Text(),
              "{\n"
              "  First: LOC:[4,3] five (5)\n"
              "  spare: 0\n"
              "  Last: LOC:[0,3] 3\n"
              "}\n");
    EXPECT_EQ(order.Encode().hex, "6A");
}

// Values in fixed places.

TEST(FixedPlace, StaysAsWideAsItIs) {
    TypeUnderTest levels(kSampleFamily, "SampleLevels");
    EXPECT_EQ(levels.ThereAndBack("C1 08 61 BF"), "C1 08 61 BF");
    EXPECT_EQ(levels.Member("Levels").number, 5U);
    EXPECT_EQ(levels.Member("Levels").cells[4].number, 63U);
    levels.Member("Levels").number = 2;
    EXPECT_EQ(levels.Encode().hex, "C1 08 00 00");
    EXPECT_EQ(levels.Encode().bits, 32);
}

TEST(FixedPlace, OfNoBitsLooksAtThoseBehindIt) {
    TypeUnderTest group(kSampleFamily, "SampleGroup");
    ASSERT_EQ(group.Decode("56 80", 8), 8);  // 010101 10, then 10
    EXPECT_EQ(group.Member("Number").number, 21U);
    EXPECT_EQ(group.Member("Key").number, 2U);
    EXPECT_EQ(group.Member("Ahead").number, 2U);
    EXPECT_EQ(group.Member("Ahead").cells->number, 0U);
    EXPECT_EQ(group.Member("Behind").number, 2U);
    EXPECT_EQ(group.Encode().bits, 8);
    EXPECT_EQ(group.Encode().hex.substr(0, 2), "56");

    ASSERT_EQ(group.Decode("55 40", 8), 8);
    EXPECT_EQ(group.Member("Ahead").number, 1U);
    EXPECT_EQ(group.Member("Behind").number, 1U);
}

// Types that stand inline in a union.

TEST(InlineAlternatives, DecodeAndEncode) {
    TypeUnderTest format(kSampleFamily, "SampleFormat");
    EXPECT_EQ(format.ThereAndBack("53"), "53");
    EXPECT_EQ(format.Record().cells->number, 7U);
    EXPECT_EQ(format.ThereAndBack("DB"), "DB");
    EXPECT_EQ(format.Text(),
              "Pairs: {\n"
              "    Base: 5\n"
              "    Steps: [\n"
              "      2,\n"
              "      3\n"
              "    ]\n"
              "  }\n");
    EXPECT_EQ(format.ThereAndBack("8B"), "8B");
    EXPECT_EQ(format.Text().substr(0, 27), "Pairs: {\n    Base: MISSING\n");
}

TEST(InlineAlternatives, AreNoNamedTypes) {
    const auto& types = kSampleFamily.types;
    const reflect::Catalogue catalogue(types);
    bool found = false;
    for (std::size_t index = 0; index < types.types.size(); ++index) {
        const std::string_view name =
            catalogue.GetDescriptor(static_cast<std::uint16_t>(index))->GetName();
        if (name == "SampleFormat_Flags" || name == "SampleFormat_Pairs" ||
            name == "SampleFormat_Pairs_Steps" || name == "SampleFormat_Flags_data") {
            found = true;
            EXPECT_EQ(std::count(types.named.begin(), types.named.end(), index), 0) << name;
        }
    }
    EXPECT_TRUE(found);
}

}  // namespace
}  // namespace quorvane::iecodec
