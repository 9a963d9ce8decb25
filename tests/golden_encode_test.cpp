// Golden messages that decode without a fault go back to octets: the same ones, unless
// tests/golden/not_canonical.txt names the file and says why not. One case a file.

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <vector>

#include "facade/decodings.h"
#include "iecodec/message_container.h"
#include "iecodec/message_encoder.h"
#include "support/golden_file.h"
#include "support/reviewed_list.h"
#include "tools/hex.h"
#include "tools/octets.h"

namespace quorvane::test {
namespace {

namespace fs = std::filesystem;

const fs::path kGolden = QUORVANE_SOURCE_DIR "/tests/golden";

using Octets = std::vector<std::uint8_t>;

/// A golden file by its name below the folder, without its ending: "eps/esm_status_uplink".
std::string NameOf(const fs::path& path) {
    fs::path name = path.lexically_relative(kGolden);
    return name.replace_extension().generic_string();
}

bool DecodesWithoutFault(const GoldenFile& golden) {
    return golden.result == 1 && golden.diagnostics.empty() &&
           golden.text.find("Decoder reported the following error") == std::string::npos;
}

/// The message of the file, decoded and encoded again. The encoder gets octets of ones, so that a
/// bit it forgets shows.
Octets ThereAndBack(const GoldenFile& golden) {
    const facade::Binding& binding = facade::BindingOf(golden.decoding);
    const iecodec::CodecTables& tables = binding.family->codec;
    bits::Arena arena;
    iecodec::Diagnostics diagnostics;
    iecodec::DecodeContext decode{
        tables,
        {golden.octets.data(), static_cast<std::int64_t>(golden.octets.size())},
        arena,
        diagnostics};
    iecodec::MessageContainer container;
    EXPECT_FALSE(iecodec::DispatchMessage(decode, *binding.set,
                                          facade::RowOf(golden.decoding).BitsOf(golden.length),
                                          container)
                     .Failed());

    Octets out(4 * golden.octets.size() + 4096, 0xFF);
    bits::BitWriter writer(out.data(), static_cast<std::int64_t>(out.size()));
    iecodec::EncodeContext encode{tables, writer, diagnostics};
    const bits::Outcome result = iecodec::EncodeContainer(encode, *binding.set, container);
    EXPECT_FALSE(result.Failed());
    EXPECT_FALSE(writer.Overflowed());
    EXPECT_EQ(diagnostics.Lines(), "");
    tool::CutToBits(out, result.Failed() ? 0 : result.Bits());
    return out;
}

class GoldenEncodeTest : public testing::Test {
  public:
    GoldenEncodeTest(GoldenFile golden, std::string reason)
        : golden_(std::move(golden)), reason_(std::move(reason)) {}

    void TestBody() override {
        const auto length = static_cast<std::size_t>(std::max(golden_.length, 0));
        Octets octets = golden_.octets;
        octets.resize(length);
        const Octets back = ThereAndBack(golden_);
        if (reason_.empty()) {
            EXPECT_EQ(tool::ToHex(back, " "), tool::ToHex(octets, " "));
        } else {
            EXPECT_NE(back, octets) << "not_canonical.txt names the file without need: " << reason_;
        }
    }

  private:
    GoldenFile golden_;
    std::string reason_;
};

class ListTest : public testing::Test {
  public:
    explicit ListTest(std::vector<std::string> problems) : problems_(std::move(problems)) {}

    void TestBody() override {
        for (const std::string& problem : problems_) {
            ADD_FAILURE() << problem;
        }
    }

  private:
    std::vector<std::string> problems_;
};

void Register() {
    std::vector<std::string> problems;
    std::map<std::string, std::string> reviewed =
        ReadReviewedList(kGolden / "not_canonical.txt", problems);
    for (const fs::path& path : FindGoldenFiles(kGolden)) {
        std::string problem;
        const std::optional<GoldenFile> golden = ReadGoldenFile(path, problem);
        if (!golden || !DecodesWithoutFault(*golden)) {
            continue;  // what is no golden file fails in golden_test
        }
        const std::string name = NameOf(path);
        const auto found = reviewed.extract(name);
        const std::string reason = found ? found.mapped() : std::string();
        testing::RegisterTest(path.parent_path().filename().string().c_str(),
                              path.stem().string().c_str(), nullptr, nullptr, path.string().c_str(),
                              1, [golden = *golden, reason]() -> testing::Test* {
                                  return new GoldenEncodeTest(golden, reason);
                              });
    }
    for (const auto& [name, reason] : reviewed) {
        if (OfLeftOutFamily(name)) {
            continue;
        }
        problems.push_back("no golden message that decodes without a fault: " + name);
    }
    testing::RegisterTest("NotCanonical", "NamesWhatThereIs", nullptr, nullptr, __FILE__, __LINE__,
                          [problems]() -> testing::Test* { return new ListTest(problems); });
}

}  // namespace
}  // namespace quorvane::test

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    quorvane::test::Register();
    return RUN_ALL_TESTS();
}
