// Changing a message. Names, widths and values are those of TS 24.301, 8.2.4, 8.3.20 and 9.9.3.12.

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <vector>

#include "quorvane/message.h"

namespace quorvane {
namespace {

using enum MessageErrorKind;
using Octets = std::vector<std::uint8_t>;

class MessageEdit : public testing::Test {
  protected:
    void New(Decoding decoding, std::string_view name) {
        ASSERT_FALSE(message_.New(decoding, name));
    }
    void NewPdnRequest() { New(Decoding::EPS_SMUplink, "PDN_CONNECTIVITY_REQUEST"); }
    void NewAttachRequest() { New(Decoding::EPS_MMUplink, "ATTACH_REQUEST"); }

    static void ExpectError(const MessageError& error, MessageErrorKind kind, std::string_view path,
                            std::string_view words) {
        EXPECT_EQ(error.kind, kind) << error.path << ": " << error.words;
        EXPECT_EQ(error.path, path);
        EXPECT_NE(error.words.find(words), std::string::npos) << error.words;
    }

    Message message_;
};

TEST_F(MessageEdit, ANewMessageHasNothingSet) {
    NewPdnRequest();
    EXPECT_TRUE(message_.IsFound());
    EXPECT_EQ(message_.TypeName(), "PDN_CONNECTIVITY_REQUEST");
    EXPECT_EQ(message_.Code(), 0);
    EXPECT_EQ(message_.BitsConsumed(), 0);
    EXPECT_EQ(message_.FaultCount(), 0U);
    EXPECT_EQ(message_.Find("PDNType").Status(), FieldStatus::kDefault);
    EXPECT_EQ(message_.Find("AccessPointName").Status(), FieldStatus::kAbsent);
    // A field behind one that is not set does not make it one that is.
    EXPECT_FALSE(message_.Set("PDNType", 3));
    EXPECT_EQ(message_.Find("RequestType").Status(), FieldStatus::kDefault);
    EXPECT_EQ(message_.Find("PDNType").Status(), FieldStatus::kDecoded);
}

TEST_F(MessageEdit, AnUnknownMessageLeavesTheOneThatIsThere) {
    NewPdnRequest();
    ExpectError(message_.New(Decoding::EPS_SMUplink, "PDN_CONNECTIVITY"), kUnknownName, "",
                "there is no message PDN_CONNECTIVITY; there are ");
    EXPECT_EQ(message_.TypeName(), "PDN_CONNECTIVITY_REQUEST");
}

TEST_F(MessageEdit, WithoutAMessageNothingIsSet) {
    ExpectError(message_.Set("PDNType", 1), kNoMessage, "", "no message");
    ExpectError(message_.SetWords("PDNType", "IPv4"), kNoMessage, "", "no message");
    ExpectError(message_.SetBits("AccessPointName", {}, 0), kNoMessage, "", "no message");
    ExpectError(message_.Choose("EPSMobileIdentity", "GUTI"), kNoMessage, "", "no message");
    ExpectError(message_.Append(message_.Root()), kNoMessage, "", "no message");
    ExpectError(message_.Add("AccessPointName"), kNoMessage, "", "no message");
    ExpectError(message_.Clear("AccessPointName"), kNoMessage, "", "no message");
}

TEST_F(MessageEdit, Numbers) {
    NewPdnRequest();
    EXPECT_FALSE(message_.Set("ProcedureTransactionIdentity", 255));
    EXPECT_EQ(message_.Find("ProcedureTransactionIdentity").Number(), 255U);
    ExpectError(message_.Set("ProcedureTransactionIdentity", 256), kValueTooLarge,
                "ProcedureTransactionIdentity", "256 is too large for its 8 bits, up to 255");
    EXPECT_EQ(message_.Find("ProcedureTransactionIdentity").Number(), 255U);
    EXPECT_FALSE(message_.SetWords("PDNType", "IPv6"));
    EXPECT_EQ(message_.Find("PDNType").Number(), 2U);
    ExpectError(message_.SetWords("PDNType", "IPv5"), kUnknownName, "PDNType", "IPv4v6 (3)");
    ExpectError(message_.SetWords("ProcedureTransactionIdentity", "IPv6"), kWrongKind,
                "ProcedureTransactionIdentity", "no words");
    ExpectError(message_.Set("AccessPointName", 1), kWrongKind, "AccessPointName", "not a number");
    EXPECT_EQ(message_.Find("AccessPointName").Status(), FieldStatus::kAbsent);
}

TEST_F(MessageEdit, PathsThatLeadNowhereSayWhatThereIs) {
    NewAttachRequest();
    ExpectError(message_.Set("EPSAttachTyp", 1), kUnknownName, "EPSAttachTyp", "EPSAttachType");
    ExpectError(message_.Set("EPSMobileIdentity.TMSI", 1), kUnknownName, "EPSMobileIdentity.TMSI",
                "there is no such alternative; there are IMSI, GUTI");
    ExpectError(message_.Set("EPSMobileIdentity.GUTI.TMSI.x", 1), kUnknownName,
                "EPSMobileIdentity.GUTI.TMSI", "M_TMSI");
    ExpectError(message_.Set("EPSAttachType.x", 1), kWrongKind, "EPSAttachType.x", "no members");
    ExpectError(message_.Set("EPSAttachType[0]", 1), kWrongKind, "EPSAttachType[0]", "no items");
    ExpectError(message_.Set("EPSAttachType[0", 1), kUnknownName, "EPSAttachType[0", "no path");
    // Nothing was chosen on the way.
    EXPECT_EQ(message_.Find("EPSMobileIdentity").Status(), FieldStatus::kDefault);
}

TEST_F(MessageEdit, ErrorsSayWhatAFieldIs) {
    NewAttachRequest();
    ExpectError(message_.SetBits("EPSAttachType", {}, 0), kWrongKind, "EPSAttachType",
                "is a number, not a bit string");
    ExpectError(message_.SetBits("EPSMobileIdentity.GUTI.MMECode", {}, 0), kWrongKind,
                "EPSMobileIdentity.GUTI.MMECode", "is a number, not a bit string");
    ExpectError(message_.Set("EPSMobileIdentity", 1), kWrongKind, "EPSMobileIdentity",
                "is a choice of alternatives, not a number");
    ExpectError(message_.Set("NASKeySetIdentifier", 1), kWrongKind, "NASKeySetIdentifier",
                "is a structure, not a number");
    ExpectError(message_.Set(message_.Root(), 1), kWrongKind, "", "is a structure, not a number");
    NewPdnRequest();
    const std::string list = "ProtocolConfigurationOptions.ProtocolCfgs";
    ExpectError(message_.Choose(list, "x"), kWrongKind, list,
                "is a list, not a choice of alternatives");
    ExpectError(message_.Resize("AccessPointName", 1), kWrongKind, "AccessPointName",
                "is a bit string, not a list");
    ExpectError(message_.Set(list + ".ProtocolId", 1), kWrongKind, list + ".ProtocolId",
                "a list has items, such as [0], and no members");
    ExpectError(message_.Set(list + "[0]", 1), kIndexOutOfRange, list + "[0]", "there are none, ");
    EXPECT_FALSE(message_.Append(list));
    ExpectError(message_.Set(list + "[1]", 1), kIndexOutOfRange, list + "[1]", "there is 1, ");
    ExpectError(message_.Set(list + "[0)", 1), kUnknownName, list + "[0)", "no path");
}

// The uplink messages of layer 3 are more than forty.
TEST_F(MessageEdit, NamesAreListedUpToForty) {
    const std::string words = message_.New(Decoding::L3Uplink, "NONE").words;
    EXPECT_EQ(std::count(words.begin(), words.end(), ','), 40) << words;
    EXPECT_TRUE(words.ends_with(", ...")) << words;
    const std::string all = message_.New(Decoding::EPS_SMUplink, "NONE").words;
    EXPECT_FALSE(all.ends_with("...")) << all;
}

TEST_F(MessageEdit, AUnionHoldsWhatWasChosen) {
    NewAttachRequest();
    EXPECT_FALSE(message_.Set("EPSMobileIdentity.GUTI.M_TMSI", 0xFFFFFFFF));
    EXPECT_EQ(message_.Find("EPSMobileIdentity.GUTI.M_TMSI").Number(), 0xFFFFFFFFU);
    ExpectError(message_.Resize("EPSMobileIdentity.IMSI.IdentityDigit", 1), kOtherAlternative,
                "EPSMobileIdentity.IMSI", "GUTI; choose this one first");
    EXPECT_FALSE(message_.Choose("EPSMobileIdentity", "GUTI"));
    EXPECT_EQ(message_.Find("EPSMobileIdentity.GUTI.M_TMSI").Number(), 0xFFFFFFFFU);
    EXPECT_FALSE(message_.Choose("EPSMobileIdentity", "IMSI"));
    EXPECT_FALSE(message_.Find("EPSMobileIdentity.GUTI"));
    EXPECT_TRUE(message_.Find("EPSMobileIdentity.IMSI"));
    ExpectError(message_.Choose("EPSMobileIdentity", "IMEI"), kUnknownName, "EPSMobileIdentity",
                "IMSI, GUTI");
    ExpectError(message_.Choose("EPSAttachType", "IMSI"), kWrongKind, "EPSAttachType", "a number");
}

TEST_F(MessageEdit, Lists) {
    NewPdnRequest();
    const std::string list = "ProtocolConfigurationOptions.ProtocolCfgs";
    EXPECT_FALSE(message_.Append(list));
    EXPECT_EQ(message_.Find("ProtocolConfigurationOptions").Status(), FieldStatus::kDecoded);
    EXPECT_FALSE(message_.Set(list + "[0].ProtocolId", 10));
    EXPECT_FALSE(message_.Append(message_.Find(list)));
    ASSERT_EQ(message_.Find(list).size(), 2U);
    EXPECT_EQ(message_.Find(list)[0].Find("ProtocolId").Number(), 10U);
    EXPECT_EQ(message_.Find(list)[1].Status(), FieldStatus::kDecoded);
    ExpectError(message_.Set(list + "[2].ProtocolId", 1), kIndexOutOfRange, list + "[2]",
                "there are 2");
    const std::uint32_t most = message_.Find(list).GetType().MostItems();
    EXPECT_FALSE(message_.Resize(list, most));
    ExpectError(message_.Append(list), kTooManyItems, list, std::to_string(most) + " at most");
    EXPECT_FALSE(message_.Resize(list, 0));
    EXPECT_TRUE(message_.Find(list).empty());
    ExpectError(message_.Append("PDNType"), kWrongKind, "PDNType", "not a list");
    ExpectError(message_.Resize("AccessPointName", std::size_t{1} << 40), kWrongKind,
                "AccessPointName", "not a list");
}

TEST_F(MessageEdit, Bits) {
    New(Decoding::EPS_MMUplink, "AUTHENTICATION_FAILURE");
    const std::string parameter = "AuthenticationFailureParameter";  // 14 octets
    const Octets octets(14, 0xA5);
    ExpectError(message_.SetBits(parameter, octets, 111), kWrongBitCount, parameter,
                "always 112 bits, not 111");
    ExpectError(message_.SetBits(parameter, std::span(octets).first(13), 112), kWrongBitCount,
                parameter, "13 octets for 112 bits, which take 14");
    EXPECT_EQ(message_.Find(parameter).Status(), FieldStatus::kAbsent);
    EXPECT_FALSE(message_.SetBits(parameter, octets, 112));
    const auto held = message_.Find(parameter).Octets();
    EXPECT_EQ(Octets(held.begin(), held.end()), octets);
    ExpectError(message_.SetBits("EMMCause", octets, 8), kWrongKind, "EMMCause", "a number");

    NewPdnRequest();
    const std::string contents = "ProtocolConfigurationOptions.ProtocolCfgs[0].Contents";
    EXPECT_FALSE(message_.Append("ProtocolConfigurationOptions.ProtocolCfgs"));
    EXPECT_FALSE(message_.SetBits(contents, octets, 12));
    // Bits behind the last one do not get in.
    EXPECT_EQ(message_.Find(contents).Octets()[1], 0xA0);
    const std::uint32_t most = message_.Find(contents).GetType().Bits();
    ExpectError(message_.SetBits(contents, octets, most + 1), kTooManyBits, contents,
                std::to_string(most) + " at most");
    EXPECT_EQ(message_.Find(contents).BitCount(), 12U);
}

TEST_F(MessageEdit, OptionalFieldsComeAndGo) {
    NewPdnRequest();
    EXPECT_FALSE(message_.Add("ProtocolConfigurationOptions"));
    EXPECT_EQ(message_.Find("ProtocolConfigurationOptions").Status(), FieldStatus::kDecoded);
    EXPECT_FALSE(message_.Append("ProtocolConfigurationOptions.ProtocolCfgs"));
    EXPECT_FALSE(message_.Clear("ProtocolConfigurationOptions"));
    EXPECT_EQ(message_.Find("ProtocolConfigurationOptions").Status(), FieldStatus::kAbsent);
    EXPECT_FALSE(message_.Add(message_.Find("ProtocolConfigurationOptions")));
    EXPECT_TRUE(message_.Find("ProtocolConfigurationOptions.ProtocolCfgs").empty());
    EXPECT_FALSE(message_.Clear("AccessPointName"));
    ExpectError(message_.Clear("PDNType"), kNotOptional, "PDNType", "cannot do without");
    ExpectError(message_.Clear(""), kNotOptional, "", "cannot do without");
}

TEST_F(MessageEdit, ByField) {
    NewAttachRequest();
    EXPECT_FALSE(message_.Set(message_.Find("EPSAttachType"), 2));
    EXPECT_EQ(message_.Find("EPSAttachType").Number(), 2U);
    // A member of a structure that was not there, and one inside of a structure inside of it.
    const Field key = message_.Find("NASKeySetIdentifier");
    EXPECT_FALSE(message_.Set(key.Find("TSC"), 1));
    EXPECT_EQ(message_.Find("NASKeySetIdentifier.TSC").Number(), 1U);
    const Field identity = message_.Find("EPSMobileIdentity");
    ExpectError(message_.Set(identity[0][0], 1), kNotThere, "", "add that first");
    EXPECT_FALSE(message_.Choose(identity, "GUTI"));
    EXPECT_FALSE(message_.Set(identity[0].Find("MMECode"), 7));
    EXPECT_EQ(message_.Find("EPSMobileIdentity.GUTI.MMECode").Number(), 7U);
    ExpectError(message_.Set(identity[0].Find("MMECode"), 256), kValueTooLarge,
                "EPSMobileIdentity.GUTI.MMECode", "8 bits");

    const Field old = identity[0];
    EXPECT_FALSE(message_.Choose(identity, "IMSI"));
    ExpectError(message_.Add(old), kNotThere, "", "replaced");
    ExpectError(message_.Set(Field(), 1), kNotThere, "", "no field");
    Message other;
    EXPECT_FALSE(other.New(Decoding::EPS_MMUplink, "ATTACH_REQUEST"));
    ExpectError(message_.Set(other.Find("EPSAttachType"), 1), kNotThere, "", "no field");
}

// A field that was looked up before the structure, list or union around it was changed.
TEST_F(MessageEdit, ByAFieldThatWasReplaced) {
    NewPdnRequest();
    const std::string options = "ProtocolConfigurationOptions";
    EXPECT_FALSE(message_.Add(options));
    const Field member = message_.Find(options + ".ConfigurationProtocol");
    EXPECT_FALSE(message_.Clear(options));
    ExpectError(message_.Set(member, 1), kNotThere, "", "replaced");
    EXPECT_FALSE(message_.Add(options));
    ExpectError(message_.Set(member, 1), kNotThere, "", "replaced");
    EXPECT_EQ(message_.Find(options + ".ConfigurationProtocol").Status(), FieldStatus::kDefault);

    EXPECT_FALSE(message_.Resize(options + ".ProtocolCfgs", 2));
    const Field first = message_.Find(options + ".ProtocolCfgs")[0];
    const Field second = message_.Find(options + ".ProtocolCfgs")[1];
    EXPECT_FALSE(message_.Resize(options + ".ProtocolCfgs", 1));
    ExpectError(message_.Add(second), kNotThere, "", "replaced");
    EXPECT_FALSE(message_.Add(first));
}

// An alternative of a union without one is chosen by what is done with it.
TEST_F(MessageEdit, ByAFieldOfAUnion) {
    NewAttachRequest();
    EXPECT_FALSE(message_.Add(message_.Find("EPSMobileIdentity")[0]));
    EXPECT_EQ(message_.Find("EPSMobileIdentity.IMSI").Status(), FieldStatus::kDecoded);
    const Field old = message_.Find("EPSMobileIdentity.IMSI");
    EXPECT_FALSE(message_.Add(old));
    EXPECT_FALSE(message_.Choose("EPSMobileIdentity", "GUTI"));
    EXPECT_FALSE(message_.Choose("EPSMobileIdentity", "IMSI"));
    ExpectError(message_.Add(old), kNotThere, "", "replaced");
}

// PDN CONNECTIVITY REQUEST with options whose protocol has 5 octets, of which 2 are there.
TEST_F(MessageEdit, OfWhatWasRefused) {
    message_.Decode(Decoding::EPS_SMUplink,
                    std::to_array<std::uint8_t>(
                        {0x02, 0x01, 0xD0, 0x31, 0x27, 0x06, 0x80, 0x00, 0x0A, 0x05, 0x01, 0x02}));
    const std::string options = "ProtocolConfigurationOptions";
    ASSERT_EQ(message_.Find(options).Status(), FieldStatus::kRefused);
    EXPECT_EQ(message_.Find(options + ".ProtocolCfgs").size(), 1U);
    // What the decoder came to is kept, if part of it is set.
    EXPECT_FALSE(message_.Set(options + ".ConfigurationProtocol", 1));
    EXPECT_EQ(message_.Find(options).Status(), FieldStatus::kDecoded);
    EXPECT_EQ(message_.Find(options + ".ProtocolCfgs").size(), 1U);
}

// PDN CONNECTIVITY REQUEST: bearer 0, transaction 1, PDN type IPv4v6, initial request.
constexpr std::array<std::uint8_t, 4> kPdnRequest = {0x02, 0x01, 0xD0, 0x31};

TEST_F(MessageEdit, OfADecodedMessage) {
    ASSERT_TRUE(message_.Decode(Decoding::EPS_SMUplink, kPdnRequest));
    ASSERT_TRUE(message_.Find("PDNType").GetPlace());
    EXPECT_FALSE(message_.Set("PDNType", 1));
    EXPECT_FALSE(message_.Find("PDNType").GetPlace());
    EXPECT_TRUE(message_.Find("RequestType").GetPlace());
    EXPECT_EQ(message_.BitsConsumed(), 32);
}

}  // namespace
}  // namespace quorvane
