// Golden messages that decode without a fault go back to octets: the same ones, apart from octets
// of spare padding at the end, and decoded again the same record, unless
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
#include "reflect/convert.h"
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

/// The octets without those of spare padding (TS 44.006, 5.2) that end them.
Octets WithoutPadding(Octets octets) {
    constexpr std::uint8_t kPadding = 0x2B;
    while (!octets.empty() && octets.back() == kPadding) {
        octets.pop_back();
    }
    return octets;
}

class GoldenEncodeTest : public testing::Test {
  public:
    GoldenEncodeTest(GoldenFile golden, std::string reason)
        : golden_(std::move(golden)),
          reason_(std::move(reason)),
          set_(*facade::BindingOf(golden_.decoding).set),
          family_(*facade::BindingOf(golden_.decoding).family) {}

    void TestBody() override {
        const auto length = static_cast<std::size_t>(std::max(golden_.length, 0));
        Octets octets = golden_.octets;
        octets.resize(length);
        const iecodec::MessageContainer first = Decode(golden_.octets, golden_.length);
        const Octets back = Encode(first, reason_.starts_with(kRefused));
        if (reason_.starts_with(kRefused)) {
            return;
        }
        const iecodec::MessageContainer second =
            Decode(back, static_cast<std::int32_t>(back.size()));
        const bool same_octets = WithoutPadding(back) == WithoutPadding(octets);
        const bool same_record =
            first.tag == second.tag &&
            reflect::RecordsEqual(family_.types, set_.memberTypes[first.tag - 1], first.body,
                                  second.body, false);
        if (reason_.starts_with(kLost)) {
            EXPECT_FALSE(same_record) << "nothing is lost: " << reason_;
            return;
        }
        EXPECT_TRUE(same_record);
        if (reason_.empty()) {
            EXPECT_TRUE(same_octets) << tool::ToHex(back, " ") << "\n" << tool::ToHex(octets, " ");
        } else {
            EXPECT_FALSE(same_octets)
                << "not_canonical.txt names the file without need: " << reason_;
        }
    }

  private:
    /// What the reason begins with if the record does not come back, or is not written.
    static constexpr std::string_view kLost = "lost: ";
    static constexpr std::string_view kRefused = "refused: ";

    iecodec::MessageContainer Decode(const Octets& octets, std::int32_t length) {
        iecodec::Diagnostics diagnostics;
        iecodec::DecodeContext context{family_.codec,
                                       {octets.data(), static_cast<std::int64_t>(octets.size())},
                                       arena_,
                                       diagnostics};
        iecodec::MessageContainer container;
        static_cast<void>(iecodec::DispatchMessage(
            context, set_, facade::RowOf(golden_.decoding).BitsOf(length), container));
        return container;
    }

    /// The encoder gets octets of ones, so that a bit it forgets shows.
    Octets Encode(const iecodec::MessageContainer& container, bool refused) {
        Octets out(4 * golden_.octets.size() + 4096, 0xFF);
        bits::BitWriter writer(out.data(), static_cast<std::int64_t>(out.size()));
        iecodec::Diagnostics diagnostics;
        iecodec::EncodeContext context{family_.codec, writer, diagnostics};
        const bits::Outcome result = iecodec::EncodeContainer(context, set_, container);
        EXPECT_EQ(result.Failed(), refused) << reason_;
        EXPECT_FALSE(writer.Overflowed());
        EXPECT_EQ(diagnostics.Lines().empty(), !refused);
        tool::CutToBits(out, result.Failed() ? 0 : result.Bits());
        return out;
    }

    GoldenFile golden_;
    std::string reason_;
    const iecodec::MessageSetRow& set_;
    const families::Family& family_;
    bits::Arena arena_;
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
