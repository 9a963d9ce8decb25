// Runs tests/golden/**/*.golden, one case a file, through all interfaces
// that give texts.
//
// golden_test --update writes the answers into the files that differ, for a change that is meant:
// look at the difference in version control before it is committed. --gtest_filter chooses files.

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <utility>

#include "quorvane/json.h"
#include "support/entry_points.h"
#include "support/golden_check.h"
#include "support/golden_file.h"

namespace quorvane::test {
namespace {

GoldenAnswer AnswerOf(const Result& result) {
    return {result.found ? 1 : 0, result.text, WithoutNumbers(result.diagnostics)};
}

GoldenAnswer AnswerOfPlainFunction(const GoldenFile& golden) {
    testing::internal::CaptureStderr();
    const PlainResult plain = CallPlain(golden.decoding, golden.octets, golden.length);
    return {plain.value, plain.text, WithoutNumbers(testing::internal::GetCapturedStderr())};
}

/// What the string of JSON stands for; those that the library writes have these escapes.
std::string Unquoted(std::string_view json) {
    std::string text;
    for (std::size_t index = 1; index + 1 < json.size(); ++index) {
        if (json[index] != '\\') {
            text += json[index];
            continue;
        }
        const char letter = json[++index];
        text += letter == 'n' ? '\n' : letter == 'r' ? '\r' : letter == 't' ? '\t' : letter;
    }
    return text;
}

GoldenAnswer AnswerAsJson(const GoldenFile& golden, PaddedMessage message) {
    std::string json;
    Result result;
    result.found = AppendTextAsJson(golden.decoding, message, json, result.diagnostics);
    result.text = Unquoted(json);
    if (!json.starts_with('"') || !json.ends_with('"') || json.find('\n') != std::string::npos) {
        result.text = "no string of JSON: " + json;
    }
    return AnswerOf(result);
}

std::vector<NamedAnswer> AnswersTo(const GoldenFile& golden) {
    const PaddedMessage padded(golden.octets.data(), golden.length, golden.octets.size());
    std::vector<NamedAnswer> answers = {
        {"padded interface", AnswerOf(Decode(golden.decoding, padded))},
        {"text as JSON", AnswerAsJson(golden, padded)},
        {"plain function", AnswerOfPlainFunction(golden)}};
    const auto length = static_cast<std::size_t>(std::max(golden.length, 0));
    if (golden.length >= 0 && golden.octets.size() <= length) {
        std::vector<std::uint8_t> octets = golden.octets;
        octets.resize(length);
        answers.push_back({"span interface", AnswerOf(Decode(golden.decoding, octets))});
    }
    return answers;
}

class GoldenTest : public testing::Test {
  public:
    GoldenTest(std::filesystem::path path, bool update) : path_(std::move(path)), update_(update) {}

    void TestBody() override {
        std::string problem;
        const std::optional<GoldenFile> golden = ReadGoldenFile(path_, problem);
        ASSERT_TRUE(golden) << path_.string() << ": " << problem;
        const std::vector<NamedAnswer> answers = AnswersTo(*golden);
        const std::string difference = GoldenDifference(path_, *golden, answers);
        if (difference.empty()) {
            return;
        }
        if (update_ && AllEqual(answers)) {
            EXPECT_TRUE(UpdateGoldenFile(path_, answers.front().answer)) << path_.string();
        } else {
            ADD_FAILURE() << difference;
        }
    }

  private:
    std::filesystem::path path_;
    bool update_;
};

void Register(const std::filesystem::path& path, bool update) {
    const std::string suite = path.parent_path().filename().string();
    testing::RegisterTest(
        suite.c_str(), path.stem().string().c_str(), nullptr, nullptr, path.string().c_str(), 1,
        [path, update]() -> testing::Test* { return new GoldenTest(path, update); });
}

}  // namespace
}  // namespace quorvane::test

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    const bool update = argc == 2 && std::string_view(argv[1]) == "--update";
    if (argc != (update ? 2 : 1)) {
        std::fputs("usage: golden_test [--update] [GoogleTest's options]\n", stderr);
        return 2;
    }
    for (const auto& path : quorvane::test::FindGoldenFiles(QUORVANE_SOURCE_DIR "/tests/golden")) {
        quorvane::test::Register(path, update);
    }
    return RUN_ALL_TESTS();
}
