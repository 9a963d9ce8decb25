// Forms of the notation that the tests' own family shows: fields that a member of a struct decides,
// decodings without a set, pseudo lengths, unchecked fields, messages that end anywhere. Octets
// were worked out by hand.

#include "support/sample_family.h"

#include <gtest/gtest.h>

#include "unit/codec_test_support.h"

namespace quorvane::iecodec {
namespace {

using families::kSampleFamily;
using test::SetUnderTest;
using test::Written;

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
        EXPECT_NE(type.name, "SampleAccess_8");
        EXPECT_NE(type.name, "SampleBurst_11");
    }
    EXPECT_EQ(families::FindSet(kSampleFamily, "SampleAccess_8")->type, kNone);
}

}  // namespace
}  // namespace quorvane::iecodec
