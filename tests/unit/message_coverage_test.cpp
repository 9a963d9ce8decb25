// Every message that can be decoded has a golden file, and with it a seed for decode_fuzz.

#include <algorithm>
#include <gtest/gtest.h>
#include <map>
#include <set>
#include <string>

#include "facade/decodings.h"
#include "fuzz/decode_input.h"
#include "quorvane/decode.h"
#include "support/golden_file.h"

namespace quorvane {
namespace {

/// The golden files of messages that are found.
std::vector<test::GoldenFile> GoldenMessages() {
    std::vector<test::GoldenFile> messages;
    for (const auto& path : test::FindGoldenFiles(QUORVANE_SOURCE_DIR "/tests/golden")) {
        std::string problem;
        const auto golden = test::ReadGoldenFile(path, problem);
        EXPECT_TRUE(golden) << path << ": " << problem;
        if (golden && golden->result != 0) {
            messages.push_back(*golden);
        }
    }
    return messages;
}

/// The name on the line "MESSAGE: name".
std::string MessageName(const std::string& text) {
    constexpr std::string_view kLabel = "MESSAGE: ";
    const std::size_t at = text.find(kLabel);
    return at == std::string::npos
               ? ""
               : text.substr(at + kLabel.size(), text.find('\n', at) - at - kLabel.size());
}

TEST(MessageCoverage, EveryMessageHasAGoldenFile) {
    std::map<Decoding, std::set<std::string>> covered;
    for (const test::GoldenFile& golden : GoldenMessages()) {
        covered[golden.decoding].insert(MessageName(golden.text));
    }
    for (const DecodingInfo& info : Decodings()) {
        const facade::Binding& binding = facade::BindingOf(info.decoding);
        if (!info.described) {
            continue;
        }
        for (const std::uint16_t message : binding.set->messages) {
            const std::string name(binding.family->codec.messages[message].name);
            EXPECT_TRUE(covered[info.decoding].contains(name))
                << "no file in tests/golden/" << binding.family->name << " has the function "
                << info.name << " and the line \"MESSAGE: " << name << "\"";
        }
    }
}

TEST(MessageCoverage, SeedsKeepTheirForm) {
    // The decoding's number, the kind of length, the length if it is not that of the octets.
    const std::vector<std::uint8_t> octets = {0x0F, 0x87};
    EXPECT_EQ(fuzz::WriteDecodeInput({Decoding::ChannelRequest, 2, octets}),
              (std::vector<std::uint8_t>{2, 0, 0x0F, 0x87}));
    EXPECT_EQ(fuzz::WriteDecodeInput({Decoding::ChannelRequest, 0x10203, octets}),
              (std::vector<std::uint8_t>{2, 3, 0x00, 0x01, 0x02, 0x03, 0x0F, 0x87}));

    const std::vector<std::uint8_t> shorter = {2, 1, 1, 0x0F, 0x87};
    const fuzz::DecodeInput read = fuzz::ReadDecodeInput(shorter);
    EXPECT_EQ(read.decoding, Decoding::ChannelRequest);
    EXPECT_EQ(read.length, 1);
    ASSERT_EQ(read.readable.size(), 2U);
    EXPECT_EQ(read.readable[1], 0x87);
}

TEST(MessageCoverage, SeedsStandForTheirGoldenFiles) {
    for (const test::GoldenFile& golden : GoldenMessages()) {
        const std::vector<std::uint8_t> seed =
            fuzz::WriteDecodeInput({golden.decoding, golden.length, golden.octets});
        const fuzz::DecodeInput read = fuzz::ReadDecodeInput(seed);
        EXPECT_EQ(read.decoding, golden.decoding);
        EXPECT_EQ(read.length, golden.length);
        EXPECT_TRUE(std::equal(read.readable.begin(), read.readable.end(), golden.octets.begin(),
                               golden.octets.end()));
    }
}

}  // namespace
}  // namespace quorvane
