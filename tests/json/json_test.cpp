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
