// What holds for any octets, any length, any entry point.

#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "facade/decodings.h"
#include "quorvane/decode.h"
#include "support/entry_points.h"
#include "support/random_messages.h"
#include "support/text_form.h"
#include "tools/hex.h"

namespace quorvane {
namespace {

TEST(AnyMessage, GivesAWellFormedTextAndTheSameOneAgain) {
    constexpr std::uint32_t kSeed = 7;
    constexpr int kMessages = 20000;
    test::RandomMessages messages(kSeed);
    std::string text;
    std::string diagnostics;
    for (int round = 0; round < kMessages; ++round) {
        const auto message = messages.Next();
        SCOPED_TRACE(tool::ToHex(message.octets, " "));
        const facade::DecodingRow& row = facade::RowOf(message.decoding);
        const Result first = Decode(message.decoding, message.octets);
        const bool found = DecodeInto(message.decoding, message.octets, text, diagnostics);
        ASSERT_EQ(test::TextFormProblem(row.textName, first.found, first.text), "") << first.text;
        ASSERT_EQ(found, first.found);
        ASSERT_EQ(text, first.text);
        ASSERT_EQ(diagnostics, first.diagnostics);
        ASSERT_TRUE(diagnostics.empty() || diagnostics.ends_with('\n'));
    }
}

TEST(AnyMessage, GivesTheSameTextByTheFunctionOfAnyForm) {
    test::RandomMessages messages(8);
    testing::internal::CaptureStderr();
    std::string expectedDiagnostics;
    for (int round = 0; round < 3000; ++round) {
        const auto message = messages.Next();
        SCOPED_TRACE(tool::ToHex(message.octets, " "));
        const auto length = static_cast<std::int32_t>(messages.Below(message.octets.size() + 1));
        const Result padded = Decode(
            message.decoding, PaddedMessage(message.octets.data(), length, message.octets.size()));
        const auto plain = test::CallPlain(message.decoding, message.octets, length);
        expectedDiagnostics += padded.diagnostics;
        ASSERT_EQ(plain.value, padded.found ? 1 : 0);
        ASSERT_EQ(plain.text, padded.text);
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), expectedDiagnostics);
}

}  // namespace
}  // namespace quorvane
