// The JSON of a message. Octets and what they mean are those of the standards' tables, put together
// by hand.

#include "quorvane/json.h"

#include <gtest/gtest.h>
#include <string>

#include "json/json_of.h"

namespace quorvane {
namespace {

using test::Has;
using test::JsonOf;
using test::Octets;

// PDN CONNECTIVITY REQUEST, TS 24.301, 8.3.20: bearer 0, transaction 1, PDN type IPv4v6, initial
// request; protocol configuration options with a protocol of two octets, and one of none.
TEST(Json, HasNumbersWordsBitsPlacesAndItems) {
    EXPECT_EQ(JsonOf(Decoding::EPS_SMUplink, {0x02, 0x01, 0xD0, 0x31, 0x27, 0x09, 0x80, 0x00, 0x0D,
                                              0x02, 0xAB, 0xCD, 0x00, 0x0A, 0x00}),
              R"({"decoding":"EPS_SMUplink","type":"PDN_CONNECTIVITY_REQUEST","code":0,"bits":120,)"
              R"("fields":{"EPSBearerIdentity":{"value":0},)"
              R"("ProcedureTransactionIdentity":{"value":1},)"
              R"("RequestType":{"value":1,"words":"initial attach","at":[28,4]},)"
              R"("PDNType":{"value":3,"words":"IPv4v6","at":[24,4]},)"
              R"("ProtocolConfigurationOptions":{"fields":{"spare":{"value":0},)"
              R"("ConfigurationProtocol":{"value":0,"at":[53,3]},)"
              R"("ProtocolCfgs":{"items":[)"
              R"({"fields":{"ProtocolId":{"value":13},"Contents":{"hex":"ABCD","bits":16}}},)"
              R"({"fields":{"ProtocolId":{"value":10,)"
              R"("words":"IP address allocation via NAS signalling"},)"
              R"("Contents":{"hex":"","bits":0}}}]}}}}})");
}

// ATTACH REQUEST, TS 24.301, 8.2.4, with a GUTI whose M-TMSI has all bits set.
TEST(Json, ShowsTheAlternativeOfAUnionAndNumbersAsTheyStandInTheOctets) {
    const std::string json = JsonOf(Decoding::EPS_MMUplink,
                                    {0x07, 0x41, 0x71, 0x0B, 0xF6, 0x62, 0xF2, 0x10, 0x80, 0x01,
                                     0x01, 0xFF, 0xFF, 0xFF, 0xFF, 0x02, 0xE0, 0xE0, 0x00, 0x00});
    EXPECT_TRUE(Has(json, R"("EPSMobileIdentity":{"choice":{"GUTI":{"fields":{)"));
    EXPECT_TRUE(Has(json, R"("M_TMSI":{"value":4294967295,"at":[88,32]}}}}},)"));
}

// PDN CONNECTIVITY REQUEST whose options have a protocol that announces an octet more than there
// is.
TEST(Json, MarksWhatWasRefusedAndNamesTheFault) {
    const std::string json = JsonOf(Decoding::EPS_SMUplink, {0x02, 0x01, 0xD0, 0x31, 0x27, 0x06,
                                                             0x80, 0x00, 0x0D, 0x03, 0xAB, 0xCD});
    EXPECT_TRUE(Has(json, R"("ProtocolConfigurationOptions":{"fields":{)"));
    EXPECT_TRUE(Has(json, R"(},"status":"refused"}},"faults":[{"number":)"));
    EXPECT_TRUE(Has(json, R"(,"words":"Error decoding subfield ProtocolConfigurationOptions",)"
                          R"("path":"ProtocolConfigurationOptions","at":48}]})"));
}

// ATTACH REQUEST whose identity has no octets: the decoding ends there.
TEST(Json, MarksDefaultsBehindTheEndOfDecoding) {
    const std::string json = JsonOf(Decoding::EPS_MMUplink, {0x07, 0x41, 0x71, 0x00});
    EXPECT_TRUE(json.starts_with(
        R"({"decoding":"EPS_MMUplink","type":"ATTACH_REQUEST","code":-12,"bits":0,"fields":{)"))
        << json;
    EXPECT_TRUE(Has(json, R"("EEA4":{"value":0,"status":"default"},)"));
    EXPECT_TRUE(Has(json, R"(,"words":"Size error decoding IE EPSMobileIdentity",)"
                          R"("path":"EPSMobileIdentity","at":32}]})"));
}

// PDN CONNECTIVITY REQUEST that ends behind its type.
TEST(Json, TellsTheErrorInWords) {
    EXPECT_TRUE(Has(JsonOf(Decoding::EPS_SMUplink, {0x02, 0x00, 0xD0}),
                    R"(,"code":-7,"error":"MANDATORY IE SYNTAX ERROR","bits":0,"fields":{)"));
}

// SERVICE REJECT, TS 24.301, 8.2.24, with an unknown element; ATTACH COMPLETE, 8.2.2, whose
// container has an octet behind ESM STATUS.
TEST(Json, TellsWhatTolerantReadingSetAside) {
    const DecodeOptions tolerant{.tolerant = true};
    EXPECT_EQ(JsonOf(Decoding::EPS_MMDownlink, {0x07, 0x4E, 0x27, 0x6A, 0x01, 0x21}, tolerant),
              R"({"decoding":"EPS_MMDownlink","type":"SERVICE_REJECT","code":0,"bits":48,)"
              R"("fields":{"SecurityHeaderType":{"value":0},"EMMCause":{"value":39,)"
              R"("words":"CS domain temporarily not available","at":[16,8]}},)"
              R"("surplus":[{"kind":"element","iei":"6A","path":"","hex":"6A0121","bits":24,)"
              R"("at":[24,24]}]})");
    const std::string json = JsonOf(
        Decoding::EPS_MMUplink, {0x07, 0x43, 0x00, 0x05, 0x52, 0x01, 0xE8, 0x6F, 0x27}, tolerant);
    EXPECT_TRUE(json.ends_with(R"(}},"surplus":[{"kind":"rest","path":"ESMMessageContainer",)"
                               R"("hex":"27","bits":8,"at":[64,8]}]})"))
        << json;
    // Behind the last field, cut short.
    EXPECT_TRUE(
        JsonOf(Decoding::EPS_MMDownlink, {0x07, 0x4E, 0x27, 0x5B, 0x2A, 0x31, 0x05}, tolerant)
            .ends_with(R"(}},"surplus":[{"kind":"rest","hex":"3105","bits":16,"at":[40,16]}]})"));
}

// AUTHENTICATION REJECT behind a security header.
TEST(Json, TellsTheSecurityHeader) {
    EXPECT_EQ(JsonOf(Decoding::EPS_MMDownlink, {0x17, 0x0A, 0xBB, 0xCC, 0xDD, 0xFE, 0x07, 0x54},
                     {.tolerant = true}),
              R"({"decoding":"EPS_MMDownlink","type":"AUTHENTICATION_REJECT","code":0,"bits":64,)"
              R"("fields":{"SecurityHeaderType":{"value":0}},)"
              R"("security":{"type":1,"authenticationCode":"0ABBCCDD","sequenceNumber":254}})");
}

TEST(Json, OfNoMessage) {
    EXPECT_EQ(JsonOf(Decoding::EPS_SMUplink, {0xFF, 0xFF, 0xFF}),
              R"({"decoding":"EPS_SMUplink","type":null,"code":-2})");
    std::string json;
    AppendJson(Message(), json);
    EXPECT_EQ(json, R"({"decoding":null,"type":null,"code":-2})");
}

TEST(Json, IsAppended) {
    Message message;
    message.Decode(Decoding::EPC_UE2SS, Octets{0x0F, 0x87});
    std::string json = "[";
    AppendJson(message, json);
    AppendJson(message, json += ',');
    const std::string one =
        R"({"decoding":"EPC_UE2SS","type":"DEACTIVATE_TEST_MODE_COMPLETE","code":0,"bits":16,)"
        R"("fields":{}})";
    EXPECT_EQ(json, "[" + one + "," + one);
}

}  // namespace
}  // namespace quorvane
