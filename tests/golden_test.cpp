// Runs tests/golden/**/*.golden, one case a file, through all three interfaces.

#include <filesystem>
#include <gtest/gtest.h>
#include <string>

#include "support/entry_points.h"
#include "support/golden_file.h"

namespace quorvane::test {
namespace {

class GoldenTest : public testing::Test {
  public:
    explicit GoldenTest(std::filesystem::path path) : path_(std::move(path)) {}

    void TestBody() override {
        std::string problem;
        const std::optional<GoldenFile> golden = ReadGoldenFile(path_, problem);
        ASSERT_TRUE(golden) << path_.string() << ": " << problem;
        {
            SCOPED_TRACE("padded interface");
            const PaddedMessage message(golden->octets.data(), golden->length,
                                        golden->octets.size());
            Compare(*golden, Decode(golden->decoding, message));
        }
        {
            SCOPED_TRACE("plain function");
            testing::internal::CaptureStderr();
            const PlainResult plain = CallPlain(golden->decoding, golden->octets, golden->length);
            const std::string diagnostics = testing::internal::GetCapturedStderr();
            Compare(*golden, {plain.value != 0, plain.text, diagnostics});
        }
        if (golden->length >= 0 &&
            golden->octets.size() <= static_cast<std::size_t>(golden->length)) {
            SCOPED_TRACE("span interface");
            std::vector<std::uint8_t> octets = golden->octets;
            octets.resize(static_cast<std::size_t>(golden->length));
            Compare(*golden, Decode(golden->decoding, octets));
        }
    }

  private:
    static void Compare(const GoldenFile& golden, const Result& result) {
        EXPECT_EQ(result.found ? 1 : 0, golden.result);
        EXPECT_EQ(result.text, golden.text);
        EXPECT_EQ(WithoutNumbers(result.diagnostics), golden.diagnostics);
    }

    std::filesystem::path path_;
};

void Register(const std::filesystem::path& path) {
    const std::string suite = path.parent_path().filename().string();
    testing::RegisterTest(suite.c_str(), path.stem().string().c_str(), nullptr, nullptr,
                          path.string().c_str(), 1,
                          [path]() -> testing::Test* { return new GoldenTest(path); });
}

}  // namespace
}  // namespace quorvane::test

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    for (const auto& path : quorvane::test::FindGoldenFiles(QUORVANE_SOURCE_DIR "/tests/golden")) {
        quorvane::test::Register(path);
    }
    return RUN_ALL_TESTS();
}
