// Messages out of JSON, and what is said of JSON that is none. Octets are put together by hand.

#include "tools/message_reader.h"

#include <gtest/gtest.h>
#include <string>

#include "json/json_of.h"
#include "tools/hex.h"

namespace quorvane::tool {
namespace {

using test::Octets;

constexpr const char* kStart =
    R"({"type":"PDN_CONNECTIVITY_REQUEST","fields":{"EPSBearerIdentity":{"value":0},)"
    R"("ProcedureTransactionIdentity":{"value":1},)";

std::string Read(const std::string& json,
                 std::optional<Decoding> decoding = Decoding::EPS_SMUplink) {
    Message message;
    if (std::string problem = ReadMessage(json, decoding, message); !problem.empty()) {
        return problem;
    }
    Octets octets;
    const EncodeResult result = message.Encode(octets);
    return result.error ? WordsOf(result.error) : ToHex(octets, " ");
}

std::string ReadFields(const std::string& fields) {
    return Read(kStart + fields + "}}");
}

constexpr const char* kPdnTypes = R"("RequestType":{"value":1},"PDNType":{"value":3})";

TEST(MessageReader, ReadsWhatIsWritten) {
    const Octets octets = {0x02, 0x01, 0xD0, 0x31, 0x27, 0x09, 0x80, 0x00,
                           0x0D, 0x02, 0xAB, 0xCD, 0x00, 0x0A, 0x00};
    const std::string json = test::JsonOf(Decoding::EPS_SMUplink, octets);
    EXPECT_EQ(Read(json), ToHex(octets, " "));
    EXPECT_EQ(Read(json, std::nullopt), ToHex(octets, " "));
    EXPECT_EQ(Read(json, Decoding::EPS_SMDownlink), "decoding is EPS_SMUplink, not EPS_SMDownlink");
}

TEST(MessageReader, WordsMayStandForTheValue) {
    EXPECT_EQ(ReadFields(R"("PDNType":{"words":"IPv6"},"RequestType":{"words":"initial attach"})"),
              "02 01 D0 21");
    EXPECT_EQ(ReadFields(R"("PDNType":{"words":"IPv6","value":2},"RequestType":{"value":1})"),
              "02 01 D0 21");
    EXPECT_EQ(ReadFields(R"("PDNType":{"words":"IPv6","value":1})"),
              "PDNType: has the words \"IPv6\", but those of 1 are \"IPv4\"; leave out one of the "
              "two");
    EXPECT_EQ(ReadFields(R"("PDNType":{"words":"IPv5"})"),
              "PDNType: no value has the words \"IPv5\"; there are IPv4 (1), IPv6 (2), IPv4v6 (3)");
}

TEST(MessageReader, AFieldByDefaultIsNotSet) {
    EXPECT_EQ(ReadFields(R"("PDNType":{"value":3},"RequestType":{"value":0,"status":"default"})"),
              "RequestType: has to be there and was never set");
}

TEST(MessageReader, SaysWhereAndWhatIsWrong) {
    const auto expect = [](const std::string& fields, const std::string& words) {
        EXPECT_EQ(ReadFields(fields), words) << fields;
    };
    expect(R"("PDNTyp":{"value":3})",
           "PDNTyp: there is no such member; there are EPSBearerIdentity, "
           "ProcedureTransactionIdentity, RequestType, PDNType, ESMInformationTransferFlag, "
           "AccessPointName, ProtocolConfigurationOptions");
    expect(R"("PDNType":{"value":16})", "PDNType: 16 is too large for its 4 bits, up to 15");
    for (const char* value : {"-1", "1.5", "4294967296", "\"3\"", "null", "[]", "1e9"}) {
        expect(R"("PDNType":{"value":)" + std::string(value) + "}",
               "PDNType: has a value that is no whole number from 0 to 4294967295");
    }
    expect(R"("PDNType":3)", "PDNType: is no JSON object");
    expect(R"("PDNType":null)", "PDNType: is no JSON object");
    expect(R"("PDNType":{})", "PDNType: has to have the key \"value\"");
    expect(R"("PDNType":{"hex":"03"})",
           "PDNType: has an unknown key \"hex\"; known are value, words, at, status");
    expect(R"("PDNType":{"value":3,"value":3})", "PDNType: has the key \"value\" twice");
    expect(R"("PDNType":{"value":3},"PDNType":{"value":3})", "PDNType: is there twice");
    expect(R"("PDNType":{"value":3,"status":"absent"})",
           "PDNType: has a status that is neither \"default\" nor \"refused\"");
    expect(R"("AccessPointName":{"hex":"0g"})",
           "AccessPointName: hex, character 2: 'g' is not a hexadecimal digit");
    expect(R"("AccessPointName":{"hex":"0361","bits":8})",
           "AccessPointName: has bits that are no number of bits of its 2 octets");
    expect(R"("ProtocolConfigurationOptions":{"fields":{"ProtocolCfgs":{"items":[{"fields":{}},)"
           R"({"fields":{"Contents":{"value":1}}}]}}})",
           "ProtocolConfigurationOptions.ProtocolCfgs[1].Contents: has an unknown key \"value\"; "
           "known are hex, bits, at, status");
    expect(R"("ProtocolConfigurationOptions":{"fields":{"ProtocolCfgs":{"items":)"
           R"([0,0,0,0,0,0,0]}}})",
           "ProtocolConfigurationOptions.ProtocolCfgs: 7 items are too many: it has 6 at most");
    expect(R"("ProtocolConfigurationOptions":{"fields":{"ProtocolCfgs":{"items":{}}}})",
           "ProtocolConfigurationOptions.ProtocolCfgs: has items that are no JSON array");
    expect(R"("ProtocolConfigurationOptions":{"fields":[]})",
           "ProtocolConfigurationOptions: has fields that are no JSON object");
    expect(R"("PDNType":{"words":3})", "PDNType: has words that are no string");
    expect(R"("PDNType":{"words":"IPv4","value":"1"})",
           "PDNType: has a value that is no whole number from 0 to 4294967295");
    expect(R"("AccessPointName":{"hex":3})", "AccessPointName: has a hex that is no string");
    EXPECT_EQ(ReadFields(kPdnTypes + std::string(R"(,"AccessPointName":{"hex":"036162"})")),
              "02 01 D0 31 28 03 03 61 62");
    EXPECT_EQ(ReadFields(kPdnTypes +
                         std::string(R"(,"AccessPointName":{"hex":"00","status":"refused"})")),
              "02 01 D0 31 28 01 00");
    expect(
        R"("AccessPointName":{"hex":"\u007f"})",
        "AccessPointName: hex, character 1: an unprintable character is not a hexadecimal digit");
    for (const char* bits : {"17", "\"16\"", "-1"}) {
        expect(R"("AccessPointName":{"hex":"0361","bits":)" + std::string(bits) + "}",
               "AccessPointName: has bits that are no number of bits of its 2 octets");
    }
    expect(kPdnTypes + std::string(R"(,"AccessPointName":{"hex":"0361","bits":9})"),
           "AccessPointName: takes 9 bits, which have to be whole octets");
}

TEST(MessageReader, Unions) {
    const std::string start = R"({"type":"IDENTITY_RESPONSE_UP","fields":{"MobileId":{"choice":)";
    const auto read = [&](const std::string& choice) {
        return Read(start + choice + "}}}", Decoding::L3Uplink);
    };
    EXPECT_EQ(read("{}"), "MobileId: has to hold one of its alternatives; choose one");
    EXPECT_EQ(read(R"({"IMSI":{}})"),
              "MobileId: there is no alternative IMSI; there are Identity, TMGI");
    EXPECT_EQ(read(R"({"TMGI":{"fields":{}},"Identity":{}})"),
              "MobileId: has a choice that is no JSON object with one alternative");
    EXPECT_EQ(read(R"({"TMGI":3})"), "MobileId.TMGI: is no JSON object");
    EXPECT_EQ(read("[]"), "MobileId: has a choice that is no JSON object with one alternative");
    EXPECT_EQ(read(R"({"TMGI":{"fields":{"x":{}}}})").substr(0, 22), "MobileId.TMGI.x: there");
}

TEST(MessageReader, TheMessage) {
    EXPECT_EQ(Read(""), "no JSON, character 1: The document is empty.");
    EXPECT_EQ(Read("{} x").substr(0, 22), "no JSON, character 4: ");
    EXPECT_EQ(Read("[]"), "the object is no JSON object");
    EXPECT_EQ(Read("{}"), "type has to be the name of a message");
    EXPECT_EQ(Read("{}", std::nullopt), "the object has to have the key \"decoding\"");
    EXPECT_EQ(Read(R"({"decoding":"EPS","type":null,"code":-2})"),
              "decoding is none that \"quorvane list\" shows");
    EXPECT_EQ(Read(R"({"decoding":3})"), "decoding is none that \"quorvane list\" shows");
    EXPECT_EQ(Read(R"({"type":"PDN_CONNECTIVITY_REQUEST","fields":[]})"),
              "the object has fields that are no JSON object");
    EXPECT_EQ(Read(R"({"decoding":"EPS_SMUplink","type":null,"code":-2})"),
              "type has to be the name of a message");
    EXPECT_EQ(Read(R"({"type":"PDN_CONNECTIVITY_REQUEST"})"),
              "the object has to have the key \"fields\"");
    EXPECT_EQ(
        Read(R"({"type":"PDN_CONNECTIVITY_REQUEST","text":""})"),
        "the object has an unknown key \"text\"; known are decoding, type, fields, code, error, "
        "bits, faults, surplus, security");
    EXPECT_EQ(Read(R"({"type":"PDN","fields":{}})").substr(0, 24), "there is no message PDN;");
    EXPECT_EQ(ReadFields(std::string(kPdnTypes)), "02 01 D0 31");
}

// Deep nesting is parsed without recursion.
TEST(MessageReader, DepthIsNoDanger) {
    const std::string deep(1000000, '[');
    EXPECT_EQ(Read(deep).substr(0, 8), "no JSON,");
    EXPECT_EQ(ReadFields("\"PDNType\":" + deep + std::string(deep.size(), ']')),
              "PDNType: is no JSON object");
}

}  // namespace
}  // namespace quorvane::tool
