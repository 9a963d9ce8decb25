// A call, the first of a family included, gets along with a thread's stack of 64 KiB.

#include <gtest/gtest.h>
#include <pthread.h>
#include <string>
#include <vector>

#include "quorvane/decode.h"
#include "quorvane/engine.h"
#include "support/entry_points.h"
#include "support/golden_file.h"

namespace quorvane {
namespace {

constexpr std::size_t kStack = std::size_t{64} << 10;

struct Work {
    std::vector<test::GoldenFile> golden;
    std::vector<Result> results;
};

void* DecodeAll(void* argument) {
    auto* work = static_cast<Work*>(argument);
    for (std::size_t index = 0; index < work->golden.size(); ++index) {
        const test::GoldenFile& golden = work->golden[index];
        const PaddedMessage message(golden.octets.data(), golden.length, golden.octets.size());
        Result& result = work->results[index];
        result.found = DecodeInto(golden.decoding, message, result.text, result.diagnostics);
    }
    return nullptr;
}

TEST(Stack, OfACallIsBelow64KiB) {
    Work work;
    for (const auto& path : test::FindGoldenFiles(QUORVANE_SOURCE_DIR "/tests/golden")) {
        std::string problem;
        if (auto golden = test::ReadGoldenFile(path, problem)) {
            work.golden.push_back(std::move(*golden));
        }
    }
    ASSERT_FALSE(work.golden.empty());
    work.results.resize(work.golden.size());

    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, kStack), 0);
    pthread_t thread{};
    ASSERT_EQ(pthread_create(&thread, &attributes, DecodeAll, &work), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);

    for (std::size_t index = 0; index < work.golden.size(); ++index) {
        const test::GoldenFile& golden = work.golden[index];
        const PaddedMessage message(golden.octets.data(), golden.length, golden.octets.size());
        EXPECT_EQ(work.results[index].text, Decode(golden.decoding, message).text);
    }
}

}  // namespace
}  // namespace quorvane
