// Messages decoded, written as octets again, and the same by way of JSON: golden messages come back
// unless tests/golden/not_canonical.txt says why not, generated messages of each type to their
// octets. One test for each golden file and each type; `--messages=10000` draws so many of each
// type.

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <vector>

#include "facade/decodings.h"
#include "quorvane/json.h"
#include "support/clean_golden.h"
#include "tools/hex.h"
#include "tools/message_generator.h"
#include "tools/message_reader.h"

namespace quorvane::test {
namespace {

using Octets = std::vector<std::uint8_t>;

int messagesOfEachType = 200;

/// The octets of `message`, or the error.
std::string Written(const Message& message, bool& refused) {
    Octets octets;
    const EncodeResult result = message.Encode(octets);
    refused = static_cast<bool>(result.error);
    return refused ? tool::WordsOf(result.error) : tool::ToHex(octets, " ");
}

/// The same by way of JSON.
std::string WrittenFromJson(const Message& message, bool& refused) {
    std::string json;
    AppendJson(message, json);
    Message read;
    const std::string problem = tool::ReadMessage(json, std::nullopt, read);
    EXPECT_EQ(problem, "") << json;
    return Written(read, refused);
}

/// Whether the record of the message holds a number that no field shows: the emergency numbers of
/// EPS, which are decoded as one number that their list does not count.
bool HoldsMoreThanItsFields(const Message& message) {
    return message.Find("epsEmergencyNumberList").Status() == FieldStatus::kDecoded;
}

class GoldenRoundTrip : public testing::Test {
  public:
    explicit GoldenRoundTrip(CleanGolden golden) : golden_(std::move(golden)) {}

    void TestBody() override {
        const GoldenFile& file = golden_.file;
        Message message;
        ASSERT_TRUE(message.Decode(
            file.decoding, PaddedMessage(file.octets.data(), file.length, file.octets.size())));
        bool refused = false;
        const std::string written = Written(message, refused);
        EXPECT_FALSE(refused && !golden_.IsLost() && !golden_.IsRefused()) << written;
        bool refusedFromJson = false;
        const std::string fromJson = WrittenFromJson(message, refusedFromJson);
        EXPECT_EQ(refusedFromJson, refused || HoldsMoreThanItsFields(message)) << fromJson;
        if (refusedFromJson) {
            return;
        }
        EXPECT_EQ(fromJson, written);
        // What else comes back with its octets is cut short as it was, unlike by EncodeMessage.
        Octets back;
        ASSERT_EQ(tool::ParseHex(written, back), "");
        const bool same = WithoutPadding(back) == WithoutPadding(golden_.Octets());
        EXPECT_TRUE(same || !golden_.reason.empty()) << written << "\n"
                                                     << tool::ToHex(golden_.Octets(), " ");
    }

  private:
    CleanGolden golden_;
};

class GeneratedRoundTrip : public testing::Test {
  public:
    GeneratedRoundTrip(Decoding decoding, std::uint32_t tag) : decoding_(decoding), tag_(tag) {}

    void TestBody() override {
        const facade::Binding binding = facade::BindingOf(decoding_);
        constexpr std::uint64_t kSeed = 30;
        const auto end = facade::RowOf(decoding_).fixedBits != 0 ? tool::MessageEnd::kAnyBit
                                                                 : tool::MessageEnd::kOctet;
        tool::MessageGenerator generator(*binding.family, kSeed + tag_, end);
        Message message;
        for (int count = 0; count < messagesOfEachType && !HasFailure(); ++count) {
            const auto drawn = generator.Generate(*binding.set, tag_);
            if (!drawn) {
                break;  // round_trip_test names the types of which there are none
            }
            ASSERT_TRUE(message.Decode(decoding_, drawn->octets));
            const std::string octets = tool::ToHex(drawn->octets, " ");
            bool refused = false;
            EXPECT_EQ(Written(message, refused), octets);
            const std::string fromJson = WrittenFromJson(message, refused);
            EXPECT_EQ(refused, HoldsMoreThanItsFields(message)) << fromJson;
            EXPECT_TRUE(refused || fromJson == octets) << fromJson << "\n" << octets;
        }
    }

  private:
    Decoding decoding_;
    std::uint32_t tag_;
};

template <typename Make>
void Add(std::string_view suite, std::string_view name, const Make& make) {
    testing::RegisterTest(std::string(suite).c_str(), std::string(name).c_str(), nullptr, nullptr,
                          __FILE__, __LINE__, make);
}

void RegisterGenerated() {
    for (const DecodingInfo& info : Decodings()) {
        const std::size_t count = MessageTypes::Count(info.decoding);
        for (std::size_t index = 0; index < count; ++index) {
            Add(info.name, MessageTypes::At(info.decoding, index).Name(),
                [=, decoding = info.decoding]() -> testing::Test* {
                    return new GeneratedRoundTrip(decoding, static_cast<std::uint32_t>(index) + 1);
                });
        }
    }
}

void RegisterGolden() {
    std::vector<std::string> problems;  // golden_encode_test tells of them
    for (const CleanGolden& golden : FindCleanGolden(problems)) {
        Add("golden_" + golden.path.parent_path().filename().string(), golden.path.stem().string(),
            [golden]() -> testing::Test* { return new GoldenRoundTrip(golden); });
    }
}

/// Takes the count of messages off the arguments; false if there is something else.
bool ReadArguments(int argc, char** argv) {
    constexpr std::string_view kMessages = "--messages=";
    return std::all_of(argv + 1, argv + argc, [&](std::string_view argument) {
        if (!argument.starts_with(kMessages)) {
            return false;
        }
        argument.remove_prefix(kMessages.size());
        const char* end = argument.data() + argument.size();
        return std::from_chars(argument.data(), end, messagesOfEachType).ptr == end;
    });
}

}  // namespace
}  // namespace quorvane::test

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    if (!quorvane::test::ReadArguments(argc, argv)) {
        std::fputs("takes --messages=COUNT and the options of GoogleTest\n", stderr);
        return 2;
    }
    quorvane::test::RegisterGolden();
    quorvane::test::RegisterGenerated();
    return RUN_ALL_TESTS();
}
