// Writing a message, and what is refused. Octets are put together by hand of the standards' tables.

#include <array>
#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <vector>

#include "quorvane/message.h"
#include "tools/hex.h"

namespace quorvane {
namespace {

using enum MessageErrorKind;
using Octets = std::vector<std::uint8_t>;

Octets FromHex(std::string_view hex) {
    Octets octets;
    EXPECT_EQ(tool::ParseHex(hex, octets), "");
    return octets;
}

std::string Written(const Message& message) {
    Octets octets;
    const EncodeResult result = message.Encode(octets);
    EXPECT_EQ(result.octets, octets.size());
    return result.error ? result.error.path + ": " + result.error.words : tool::ToHex(octets, " ");
}

MessageErrorKind ErrorOf(const Message& message) {
    Octets octets;
    return message.Encode(octets).error.kind;
}

class MessageEncode : public testing::Test {
  protected:
    void Decode(Decoding decoding, std::string_view hex) {
        ASSERT_TRUE(message_.Decode(decoding, FromHex(hex)));
        ASSERT_EQ(message_.Code(), 0);
    }

    Message message_;
};

TEST_F(MessageEncode, AMessageMadeFieldByField) {
    ASSERT_FALSE(message_.New(Decoding::EPS_SMUplink, "PDN_CONNECTIVITY_REQUEST"));
    EXPECT_EQ(Written(message_), "RequestType: has to be there and was never set");
    EXPECT_EQ(ErrorOf(message_), kMissing);
    EXPECT_FALSE(message_.Set("RequestType", 1));
    EXPECT_FALSE(message_.SetWords("PDNType", "IPv4"));
    EXPECT_EQ(Written(message_), "EPSBearerIdentity: has to be there and was never set");
    EXPECT_FALSE(message_.Set("EPSBearerIdentity", 0));
    EXPECT_FALSE(message_.Set("ProcedureTransactionIdentity", 1));
    EXPECT_EQ(Written(message_), "02 01 D0 11");

    const std::string options = "ProtocolConfigurationOptions";
    EXPECT_FALSE(message_.Append(options + ".ProtocolCfgs"));
    EXPECT_EQ(Written(message_),
              options + ".ConfigurationProtocol: has to be there and was never set");
    EXPECT_FALSE(message_.Set(options + ".ConfigurationProtocol", 0));
    EXPECT_FALSE(message_.Set(options + ".ProtocolCfgs[0].ProtocolId", 10));
    EXPECT_EQ(Written(message_),
              options + ".ProtocolCfgs[0].Contents: has to be there and was never set");
    EXPECT_FALSE(message_.SetBits(options + ".ProtocolCfgs[0].Contents", {}, 0));
    EXPECT_EQ(Written(message_), "02 01 D0 11 27 04 80 00 0A 00");
    EXPECT_FALSE(message_.SetBits(options + ".ProtocolCfgs[0].Contents", FromHex("AB C0"), 12));
    EXPECT_EQ(Written(message_),
              options + ".ProtocolCfgs[0].Contents: takes 12 bits, which have to be whole octets");
    EXPECT_EQ(ErrorOf(message_), kWrongLength);
    EXPECT_FALSE(message_.Clear(options));
    EXPECT_EQ(Written(message_), "02 01 D0 11");
}

TEST_F(MessageEncode, ADecodedMessageThatIsChanged) {
    Decode(Decoding::EPS_SMUplink, "02 01 D0 31 28 04 03 61 62 63");
    EXPECT_EQ(Written(message_), "02 01 D0 31 28 04 03 61 62 63");
    EXPECT_FALSE(message_.Set("PDNType", 2));
    EXPECT_FALSE(message_.Clear("AccessPointName"));
    EXPECT_EQ(Written(message_), "02 01 D0 21");
}

// IDENTITY RESPONSE with a TMGI, TS 24.008, 10.5.1.4: the type of identity, 5, follows the choice.
TEST_F(MessageEncode, ASelectorNeedNotBeSet) {
    ASSERT_FALSE(message_.New(Decoding::L3Uplink, "IDENTITY_RESPONSE_UP"));
    EXPECT_EQ(Written(message_), "MobileId: has to be there and was never set");
    EXPECT_FALSE(message_.Add("MobileId"));
    EXPECT_EQ(Written(message_), "MobileId: has to hold one of its alternatives; choose one");
    EXPECT_FALSE(message_.Choose("MobileId", "TMGI"));
    EXPECT_EQ(Written(message_), "MobileId: takes 0 octets, which have to be at least 1 octet");
    for (const auto& [name, value] :
         {std::pair("MBMSSessIdIndic", 1U), std::pair("MCCMNCIndic", 1U), std::pair("MCC2", 6U),
          std::pair("MCC1", 2U), std::pair("MNC3", 15U), std::pair("MCC3", 2U),
          std::pair("MNC2", 1U), std::pair("MNC1", 0U), std::pair("MBMSSessionIdentity", 7U)}) {
        EXPECT_FALSE(message_.Set(std::string("MobileId.TMGI.") + name, value)) << name;
    }
    // Only the end of such a structure can be left out.
    EXPECT_EQ(Written(message_), "MobileId.TMGI.MBMSServiceID: has to be there and was never set");
    EXPECT_FALSE(message_.Set("MobileId.TMGI.MBMSServiceID", 0x010203));
    EXPECT_EQ(Written(message_), "05 19 08 35 01 02 03 62 F2 10 07");
    // Set, it has to be right.
    EXPECT_FALSE(message_.Set("MobileId.TMGI.IdentityType", 1));
    EXPECT_EQ(ErrorOf(message_), kContradiction);
    EXPECT_EQ(Written(message_),
              "MobileId.TMGI.IdentityType: is 1, but is read back as 5 from what the message says");
    EXPECT_FALSE(message_.Set("MobileId.TMGI.IdentityType", 5));
    EXPECT_EQ(Written(message_), "05 19 08 35 01 02 03 62 F2 10 07");
}

// The same cut short behind its service identity, TS 24.008, 10.5.1.4: what ends early goes back as
// it was, until something behind its end is set.
TEST_F(MessageEncode, AStructureCutShortStaysSo) {
    Decode(Decoding::L3Uplink, "05 19 04 05 01 02 03");
    EXPECT_EQ(Written(message_), "05 19 04 05 01 02 03");
    EXPECT_FALSE(message_.Set("MobileId.TMGI.MCC1", 2));
    EXPECT_EQ(Written(message_), "MobileId.TMGI.MCC2: has to be there and was never set");
    EXPECT_FALSE(message_.Set("MobileId.TMGI.MCC2", 6));
    EXPECT_EQ(Written(message_), "05 19 05 05 01 02 03 62");
}

// The same with the IMSI 262011234567890, which is of the alternative for all other types.
TEST_F(MessageEncode, ADefaultAlternativeDoesNotTakeTheSelectorOfAnother) {
    Decode(Decoding::L3Uplink, "05 19 08 29 26 10 21 43 65 87 09");
    EXPECT_FALSE(message_.Set("MobileId.Identity.IdentityType", 5));
    EXPECT_EQ(ErrorOf(message_), kContradiction);
    EXPECT_EQ(Written(message_),
              "MobileId: what it holds stands for another alternative; choose that one");
}

TEST_F(MessageEncode, ResultsSayTheSize) {
    Decode(Decoding::EPS_SMUplink, "02 01 D0 31");
    std::array<std::uint8_t, 6> room{};
    room.fill(0xEE);
    EncodeResult result = message_.Encode(std::span(room).first(3));
    EXPECT_EQ(result.error.kind, kNoRoom);
    EXPECT_EQ(result.octets, 4U);
    EXPECT_EQ(room[0], 0xEE);
    result = message_.Encode(room);
    EXPECT_FALSE(result.error);
    EXPECT_EQ(result.octets, 4U);
    EXPECT_EQ(result.bits, 32);
    EXPECT_EQ(room, (std::array<std::uint8_t, 6>{0x02, 0x01, 0xD0, 0x31, 0xEE, 0xEE}));
    Octets octets = {0xAA};
    EXPECT_FALSE(message_.Encode(octets).error);
    EXPECT_EQ(octets, FromHex("AA 02 01 D0 31"));
    EXPECT_EQ(ErrorOf(Message()), kNoMessage);
}

// EMM STATUS cut ahead of its cause; ATTACH COMPLETE ahead of its container.
TEST_F(MessageEncode, WhatTheDecoderDidNotComeToIsMissing) {
    ASSERT_TRUE(message_.Decode(Decoding::EPS_MMUplink, FromHex("07 60")));
    ASSERT_EQ(message_.Code(), -7);
    EXPECT_EQ(ErrorOf(message_), kRefused);
    EXPECT_FALSE(message_.Set("EMMCause", 97));
    EXPECT_EQ(Written(message_), "07 60 61");
    // EXTENDED SERVICE REQUEST, TS 24.301, 8.2.15, cut behind its first octets.
    ASSERT_TRUE(message_.Decode(Decoding::EPS_MMUplink, FromHex("07 4C 71 05")));
    EXPECT_NE(ErrorOf(message_), kNone);
}

// AUTHENTICATION FAILURE whose parameter has 3 octets instead of 14.
TEST_F(MessageEncode, WhatTheDecoderRefusedIsNotDropped) {
    ASSERT_TRUE(message_.Decode(Decoding::EPS_MMUplink, FromHex("07 5C 15 30 03 01 02 03")));
    const std::string parameter = "AuthenticationFailureParameter";
    ASSERT_EQ(message_.Find(parameter).Status(), FieldStatus::kRefused);
    EXPECT_EQ(ErrorOf(message_), kRefused);
    EXPECT_EQ(Written(message_), parameter + ": the decoder refused it; set, add or clear it");
    EXPECT_FALSE(message_.Clear(parameter));
}

// TS 24.301, 8.3.20: an access point name has 1 to 100 octets, the options 251 at most; six
// protocols of 64 octets, with identifiers and lengths, and the first octet take 403.
TEST_F(MessageEncode, LengthsAreThoseThatTheElementCanHave) {
    Decode(Decoding::EPS_SMUplink, "02 01 D0 31");
    EXPECT_FALSE(message_.SetBits("AccessPointName", {}, 0));
    EXPECT_EQ(ErrorOf(message_), kWrongLength);
    EXPECT_EQ(Written(message_),
              "AccessPointName: takes 0 octets, which have to be at least 1 octet");
    EXPECT_FALSE(message_.Clear("AccessPointName"));

    const std::string options = "ProtocolConfigurationOptions";
    const Octets octets(64, 0xA5);
    EXPECT_FALSE(message_.Set(options + ".ConfigurationProtocol", 0));
    EXPECT_FALSE(message_.Resize(options + ".ProtocolCfgs", 6));
    for (const Field item : message_.Find(options + ".ProtocolCfgs")) {
        EXPECT_FALSE(message_.Add(item));
        EXPECT_FALSE(message_.Set(item.Find("ProtocolId"), 1));
        EXPECT_FALSE(message_.SetBits(item.Find("Contents"), octets, 512));
    }
    EXPECT_EQ(ErrorOf(message_), kWrongLength);
    EXPECT_EQ(Written(message_), options + ": takes 403 octets, which can be at most 251 octets");
}

// ACTIVATE/CLOSE UE TEST LOOP of mode A has a list, and of mode B a delay, TS 36.509, 6.1.
TEST_F(MessageEncode, AConditionalFieldFollowsItsCondition) {
    Decode(Decoding::EPC_SS2UE, "0F 80 01 2A");
    EXPECT_EQ(Written(message_), "0F 80 01 2A");
    EXPECT_FALSE(message_.Clear("UE_test_loop_mode_B_LB_setup"));
    EXPECT_EQ(ErrorOf(message_), kContradiction);
    EXPECT_EQ(Written(message_),
              "UE_test_loop_mode_B_LB_setup: is absent, though the fields ahead of it say that it "
              "is there");
    EXPECT_FALSE(message_.Add("UE_test_loop_mode_B_LB_setup"));
    EXPECT_FALSE(message_.Add("UE_test_loop_mode_A_LB_setup"));
    EXPECT_EQ(ErrorOf(message_), kContradiction);
    EXPECT_EQ(
        Written(message_),
        "UE_test_loop_mode_A_LB_setup: is there, though the fields ahead of it say that it is "
        "not");
}

// Read tolerantly: PDN CONNECTIVITY REQUEST behind a security header (TS 24.301, 9.1), and SERVICE
// REJECT with an element that nobody knows. The octets are those of what the message holds.
TEST_F(MessageEncode, LeavesOutWhatTolerantReadingSetAside) {
    const DecodeOptions tolerant{.tolerant = true};
    ASSERT_TRUE(
        message_.Decode(Decoding::EPS_MMUplink, FromHex("17 AABBCCDD 01 0201D031"), tolerant));
    ASSERT_TRUE(message_.Security());
    EXPECT_EQ(Written(message_), "02 01 D0 31");
    ASSERT_TRUE(message_.Decode(Decoding::EPS_MMDownlink, FromHex("07 4E 27 6A 01 21"), tolerant));
    ASSERT_EQ(message_.SurplusCount(), 1U);
    EXPECT_EQ(Written(message_), "07 4E 27");
}

}  // namespace
}  // namespace quorvane
