// Generated messages of every described message set go to octets and back, to a tree and back, and
// to text, that of the record and that of the tree: nothing may change on the way. One test for
// each message.

#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "iecodec/message_encoder.h"
#include "reflect/catalogue.h"
#include "reflect/convert.h"
#include "reflect/render.h"
#include "support/golden_file.h"
#include "support/print_outcome.h"
#include "support/reviewed_list.h"
#include "support/sample_family.h"
#include "tools/message_generator.h"
#include "tools/octets.h"

namespace quorvane {
namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int kMessages = 400;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
constexpr int kMessages = 400;
#else
constexpr int kMessages = 10000;
#endif
#else
constexpr int kMessages = 10000;
#endif

constexpr int kManyMessages = 10000;

constexpr std::uint64_t kSeed = 20;

using Octets = std::vector<std::uint8_t>;

/// The types of tests/round_trip_exceptions.txt, and those of which values were lost.
struct ExceptionList {
    std::vector<std::string> problems;
    std::map<std::string, std::string> reviewed =
        test::ReadReviewedList(QUORVANE_SOURCE_DIR "/tests/round_trip_exceptions.txt", problems);
    std::set<std::string> met;
};

ExceptionList& Exceptions() {
    static ExceptionList list;
    return list;
}

/// Runs last.
class NamedExceptions : public testing::Test {
  public:
    void TestBody() override {
        EXPECT_EQ(Exceptions().problems, std::vector<std::string>{});
        const auto* all = testing::UnitTest::GetInstance();
        if (kMessages < kManyMessages || all->test_to_run_count() < all->total_test_count()) {
            GTEST_SKIP() << "what is needed shows when all messages are drawn";
        }
        for (const auto& [type, reason] : Exceptions().reviewed) {
            EXPECT_TRUE(test::OfLeftOutFamily(type) || Exceptions().met.contains(type))
                << type << " comes back; remove it";
        }
    }
};

class RoundTrip : public testing::Test {
  public:
    RoundTrip(const families::Family& family, const iecodec::MessageSetRow& set, std::uint32_t tag)
        : family_(family), set_(set), tag_(tag), catalogue_(family.types) {}

    void TestBody() override {
        tool::MessageGenerator generator(family_, kSeed + tag_);
        for (int count = 0; count < kMessages && !HasFailure(); ++count) {
            const auto message = generator.Generate(set_, tag_);
            if (!message) {
                const std::string name = NameOf(family_.types.NameOf(family_.types.types[Type()]));
                Exceptions().met.insert(name);
                ASSERT_TRUE(Exceptions().reviewed.contains(name)) << "no message " << count;
                break;
            }
            Check(*message);
            if (HasFailure()) {
                ADD_FAILURE() << "message " << count << ": "
                              << testing::PrintToString(message->octets);
            }
        }
        CheckDrops(generator.Dropped());
    }

  private:
    /// A type's name in the list of exceptions.
    [[nodiscard]] std::string NameOf(std::string_view type) const {
        return std::string(family_.name) + "/" + std::string(type);
    }

    /// A value that does not come back is a fault of the codec unless its type is named.
    void CheckDrops(const tool::Drops& drops) const {
        for (const auto& [what, count] : drops) {
            const auto& [reason, type] = what;
            if (reason != tool::DropReason::kDoesNotComeBack) {
                continue;
            }
            const std::string name = NameOf(type);
            Exceptions().met.insert(name);
            EXPECT_TRUE(Exceptions().reviewed.contains(name))
                << count << " values of " << name << " do not come back";
        }
    }

    struct Decoded {
        bits::Outcome result = 0;
        iecodec::MessageContainer container;
        std::string diagnostics;
    };

    Decoded Decode(const Octets& octets, std::int64_t bits) {
        Decoded out{};
        iecodec::Diagnostics diagnostics;
        const auto size = static_cast<std::int64_t>(octets.size());
        iecodec::DecodeContext context{family_.codec, {octets.data(), size}, arena_, diagnostics};
        out.result = iecodec::DispatchMessage(context, set_, bits, out.container);
        out.diagnostics = diagnostics.Lines();
        return out;
    }

    Octets Encode(const iecodec::MessageContainer& container) {
        Octets octets(8192);
        bits::BitWriter writer(octets.data(), static_cast<std::int64_t>(octets.size()));
        iecodec::Diagnostics diagnostics;
        iecodec::EncodeContext context{family_.codec, writer, diagnostics};
        const bits::Outcome result = iecodec::EncodeContainer(context, set_, container);
        EXPECT_FALSE(result.Failed());
        EXPECT_EQ(diagnostics.Lines(), "");
        tool::CutToBits(octets, result.Bits());
        return octets;
    }

    [[nodiscard]] bool Same(const bits::Cell& a, const bits::Cell& b, bool locations) const {
        return reflect::RecordsEqual(family_.types, Type(), a, b, locations);
    }

    [[nodiscard]] std::uint16_t Type() const { return set_.memberTypes[tag_ - 1]; }

    void Check(const tool::GeneratedMessage& message) {
        arena_.Reset();
        const Decoded decoded = Decode(message.octets, message.bits);
        EXPECT_EQ(decoded.result, message.bits);
        EXPECT_EQ(decoded.diagnostics, "");
        ASSERT_EQ(decoded.container.tag, tag_);
        EXPECT_TRUE(Same(decoded.container.body, message.container.body, false));
        EXPECT_EQ(Encode(decoded.container), message.octets);

        const Decoded again = Decode(message.octets, message.bits);
        EXPECT_TRUE(Same(decoded.container.body, again.container.body, true));
        CheckTree(decoded.container.body);
    }

    void CheckTree(const bits::Cell& body) {
        const reflect::TEDDataBase* tree = reflect::ToTree(catalogue_, Type(), body, arena_);
        ofTree_.Clear();
        tree->Print(ofTree_, 0);
        ofRecord_.Clear();
        reflect::AppendText(ofRecord_, family_.types, Type(), body);
        ASSERT_EQ(ofRecord_.View(), ofTree_.View());
        bits::Cell back{};
        EXPECT_TRUE(reflect::FromTree(catalogue_, Type(), back, *tree, arena_));
        EXPECT_TRUE(Same(body, back, false));

        if (set_.type == iecodec::kNone) {
            return;  // a decoding without a set
        }
        const auto tag = static_cast<std::int32_t>(tag_);
        const reflect::TEDDataBase* node = reflect::ToSet(catalogue_, set_.type, tag, body, arena_);
        bits::Cell fromSet{};
        std::int32_t found = 0;
        EXPECT_TRUE(reflect::FromSet(catalogue_, set_.type, found, fromSet, *node, arena_));
        EXPECT_EQ(found, tag);
        EXPECT_TRUE(Same(body, fromSet, false));
    }

    const families::Family& family_;
    const iecodec::MessageSetRow& set_;
    std::uint32_t tag_;
    reflect::Catalogue catalogue_;
    bits::Arena arena_;
    reflect::TextBuffer ofTree_;
    reflect::TextBuffer ofRecord_;
};

void Register() {
    for (const families::Family* family : families::AllFamiliesAndTheSample()) {
        for (const iecodec::MessageSetRow& set : family->codec.sets) {
            for (std::uint32_t tag = 1; tag <= set.messages.size(); ++tag) {
                const std::string name(family->codec.messages[set.messages[tag - 1]].name);
                testing::RegisterTest(std::string(set.name).c_str(), name.c_str(), nullptr, nullptr,
                                      __FILE__, __LINE__, [=, &set]() -> RoundTrip* {
                                          return new RoundTrip(*family, set, tag);
                                      });
            }
        }
    }
    testing::RegisterTest("Exceptions", "AreNeeded", nullptr, nullptr, __FILE__, __LINE__,
                          []() -> NamedExceptions* { return new NamedExceptions; });
}

}  // namespace
}  // namespace quorvane

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    quorvane::Register();
    return RUN_ALL_TESTS();
}
