// The frame of results: what stands around the message's fields, and when.

#include <climits>
#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "quorvane/decode.h"
#include "quorvane/engine.h"
#include "support/entry_points.h"

namespace quorvane {
namespace {

using Octets = std::vector<std::uint8_t>;

class Engine : public CQuorvaneEngine {
  public:
    CString ErrorMessage(int code) {
        CString text(L"> ");
        GetErrorMsg(text, code);
        return text;
    }
};

TEST(GetErrorMsg, AppendsTheTextOfTheCode) {
    const std::vector<std::pair<int, const wchar_t*>> expected = {
        {-1, L"SYNTAX ERROR"},
        {-2, L"UNKNOWN MESSAGE"},
        {-3, L"UNKNOWN IEI"},
        {-4, L"MESSAGE TOO SHORT"},
        {-5, L"MISSING REQUIRED CONDITIONAL IE"},
        {-6, L"FOUND UNEXPECTED CONDITIONAL IE"},
        {-7, L"MANDATORY IE SYNTAX ERROR"},
        {-8, L"CONDITIONAL IE SYNTAX ERROR"},
        {-9, L"OPTIONAL IE SYNTAX ERROR"},
        {-10, L"FIELD OUT OF RANGE"},
        {32767, L"MISSING OPTIONAL"},
        {-11, L"UNKNOWN ERROR #-11"},
        {-12, L"UNKNOWN ERROR #-12"},
        {-13, L"UNKNOWN ERROR #-13"},
        {0, L"UNKNOWN ERROR #0"},
        {32768, L"UNKNOWN ERROR #32768"},
        {INT_MIN, L"UNKNOWN ERROR #-2147483648"},
    };
    for (const auto& [code, text] : expected) {
        CString line;
        line.Format(L"> Decoder reported the following error: %s\r\n", text);
        EXPECT_EQ(Engine().ErrorMessage(code), line) << code;
    }
}

TEST(ResultText, OfAnUnknownMessageIsOneLineWithoutAnEnd) {
    // No family has a message that starts with these octets.
    const Octets octets = {0xFF, 0xFF, 0xFF, 0xFF};
    EXPECT_EQ(Decode(Decoding::EPS_MMUplink, octets).text,
              "Failed to decode \"EPS_MMUplink\" message");
    const auto plain = test::CallPlain(Decoding::EPC_SS2UE, octets, 4);
    EXPECT_EQ(plain.value, 0);
    EXPECT_EQ(plain.text, "Failed to decode \"EPC_SS2UE\" message");
}

TEST(ResultText, UsesTheNamesThatDifferFromTheEntryPoints) {
    const Octets octets(4, 0xFF);
    EXPECT_EQ(Decode(Decoding::RRSPD, octets).text, "Failed to decode \"RRShortPD\" message");
    EXPECT_EQ(Decode(Decoding::RLC_MACDownlink, Octets(4, 0xBC)).text,
              "Failed to decode \"RLC_MAC_Downlink\" message");
}

TEST(ResultText, OfAMessageWithoutError) {
    // DEACTIVATE TEST MODE COMPLETE, TS 36.509, 6.8: nothing but its header.
    const Result result = Decode(Decoding::EPC_UE2SS, Octets{0x0F, 0x87});
    EXPECT_TRUE(result.found);
    EXPECT_EQ(result.text,
              "Decoded using \"EPC_UE2SS\".\n"
              "MESSAGE: DEACTIVATE_TEST_MODE_COMPLETE\n"
              "{\n"
              "}\n");
    EXPECT_EQ(result.diagnostics, "");
}

TEST(ResultText, OfATruncatedMessageHasTheErrorAheadOfWhatWasDecoded) {
    // ACTIVATE TEST MODE, TS 36.509, 6.5, without its only element.
    const Result result = Decode(Decoding::EPC_SS2UE, Octets{0x0F, 0x84});
    EXPECT_TRUE(result.found);
    const std::string start =
        "Decoded using \"EPC_SS2UE\".\n"
        "\n"
        "Decoder reported the following error: MANDATORY IE SYNTAX ERROR\r\n"
        "\n"
        "MESSAGE: ACTIVATE_TEST_MODE\n"
        "{\n";
    EXPECT_EQ(result.text.substr(0, start.size()), start);
    EXPECT_EQ(test::WithoutNumbers(result.diagnostics),
              "<ERRID:*> Message too short decoding subfield UETestLoopMode\n");
}

TEST(ResultText, OfEachMemberIsThatOfItsPlainFunction) {
    const Octets octets(kReadAhead + 2, 0x11);
    for (const test::EntryPoint& entry : test::EntryPoints()) {
        CQuorvaneEngine engine;
        CString ofMember(L"old");
        CString ofPlain;
        const int member = (engine.*entry.member)(octets.data(), 2, ofMember);
        const int plain = entry.plain(octets.data(), 2, ofPlain);
        EXPECT_EQ(member, plain) << entry.name;
        EXPECT_EQ(ofMember, ofPlain) << entry.name;
    }
}

TEST(ResultText, OfFixedLengthMessagesTakesNoNoticeOfTheLength) {
    const Octets octets = {0x5A, 0xA5};
    for (const Decoding decoding :
         {Decoding::ChannelRequest, Decoding::Packet_Control_Acknowledgement_8,
          Decoding::Packet_Control_Acknowledgement_11}) {
        const auto expected = test::CallPlain(decoding, octets, 2);
        for (const std::int32_t length : {0, 1, 17, -1, -100}) {
            const auto other = test::CallPlain(decoding, octets, length);
            EXPECT_EQ(other.value, expected.value);
            EXPECT_EQ(other.text, expected.text);
        }
    }
}

TEST(ResultText, KeyOctetsCountWhateverTheLength) {
    const Octets octets = {0x0F, 0x87};
    EXPECT_EQ(test::CallPlain(Decoding::EPC_UE2SS, octets, 0).value, 1);
    EXPECT_EQ(test::CallPlain(Decoding::EPC_UE2SS, octets, -5).value, 1);
    EXPECT_TRUE(Decode(Decoding::EPC_UE2SS, PaddedMessage(octets.data(), 0, 2)).found);
    // The span ends ahead of them: zeros follow.
    EXPECT_FALSE(Decode(Decoding::EPC_UE2SS, Octets{}).found);
}

TEST(ResultText, ReplacesWhatStoodInTheStrings) {
    std::string text = "old";
    std::string diagnostics = "old";
    EXPECT_TRUE(DecodeInto(Decoding::EPC_UE2SS, Octets{0x0F, 0x87}, text, diagnostics));
    EXPECT_EQ(text.substr(0, 13), "Decoded using");
    EXPECT_EQ(diagnostics, "");
}

}  // namespace
}  // namespace quorvane
