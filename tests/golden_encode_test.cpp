// Golden messages that decode without a fault go back to octets: the same ones, apart from octets
// of spare padding at the end, and decoded again the same record, unless
// tests/golden/not_canonical.txt names the file and says why not. One case a file.

#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "facade/decodings.h"
#include "iecodec/message_container.h"
#include "iecodec/message_encoder.h"
#include "reflect/convert.h"
#include "support/clean_golden.h"
#include "tools/hex.h"
#include "tools/octets.h"

namespace quorvane::test {
namespace {

using Octets = std::vector<std::uint8_t>;

class GoldenEncodeTest : public testing::Test {
  public:
    explicit GoldenEncodeTest(CleanGolden golden)
        : golden_(std::move(golden)),
          set_(*facade::BindingOf(golden_.file.decoding).set),
          family_(*facade::BindingOf(golden_.file.decoding).family) {}

    void TestBody() override {
        const Octets octets = golden_.Octets();
        const iecodec::MessageContainer first = Decode(golden_.file.octets, golden_.file.length);
        const Octets back = Encode(first);
        if (golden_.IsRefused()) {
            return;
        }
        const iecodec::MessageContainer second =
            Decode(back, static_cast<std::int32_t>(back.size()));
        const bool same_octets = WithoutPadding(back) == WithoutPadding(octets);
        const bool same_record =
            first.tag == second.tag &&
            reflect::RecordsEqual(family_.types, set_.memberTypes[first.tag - 1], first.body,
                                  second.body, false);
        if (golden_.IsLost()) {
            EXPECT_FALSE(same_record) << "nothing is lost: " << golden_.reason;
            return;
        }
        EXPECT_TRUE(same_record);
        if (golden_.reason.empty()) {
            EXPECT_TRUE(same_octets) << tool::ToHex(back, " ") << "\n" << tool::ToHex(octets, " ");
        } else {
            EXPECT_FALSE(same_octets)
                << "not_canonical.txt names the file without need: " << golden_.reason;
        }
    }

  private:
    iecodec::MessageContainer Decode(const Octets& octets, std::int32_t length) {
        iecodec::Diagnostics diagnostics;
        iecodec::DecodeContext context{family_.codec,
                                       {octets.data(), static_cast<std::int64_t>(octets.size())},
                                       arena_,
                                       diagnostics};
        iecodec::MessageContainer container;
        static_cast<void>(iecodec::DispatchMessage(
            context, set_, facade::RowOf(golden_.file.decoding).BitsOf(length), container));
        return container;
    }

    /// The encoder gets octets of ones, so that a bit it forgets shows.
    Octets Encode(const iecodec::MessageContainer& container) {
        const bool refused = golden_.IsRefused();
        Octets out(4 * golden_.file.octets.size() + 4096, 0xFF);
        bits::BitWriter writer(out.data(), static_cast<std::int64_t>(out.size()));
        iecodec::Diagnostics diagnostics;
        iecodec::EncodeContext context{family_.codec, writer, diagnostics};
        const bits::Outcome result = iecodec::EncodeContainer(context, set_, container);
        EXPECT_EQ(result.Failed(), refused) << golden_.reason;
        EXPECT_FALSE(writer.Overflowed());
        EXPECT_EQ(diagnostics.Lines().empty(), !refused);
        tool::CutToBits(out, result.Failed() ? 0 : result.Bits());
        return out;
    }

    CleanGolden golden_;
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
    for (const CleanGolden& golden : FindCleanGolden(problems)) {
        testing::RegisterTest(
            golden.path.parent_path().filename().string().c_str(),
            golden.path.stem().string().c_str(), nullptr, nullptr, golden.path.string().c_str(), 1,
            [golden]() -> testing::Test* { return new GoldenEncodeTest(golden); });
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
