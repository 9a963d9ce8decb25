// Many threads at once, from the very first call of the process on, give what one gives.

#include <barrier>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

#include "quorvane/decode.h"
#include "quorvane/message.h"
#include "support/entry_points.h"
#include "support/golden_file.h"
#include "support/random_messages.h"

namespace quorvane {
namespace {

constexpr std::size_t kThreads = 8;

struct Call {
    Decoding decoding;
    std::vector<std::uint8_t> octets;
};

std::vector<Call> MakeCalls() {
    std::vector<Call> calls;
    for (const auto& path : test::FindGoldenFiles(QUORVANE_SOURCE_DIR "/tests/golden")) {
        std::string problem;
        if (const auto golden = test::ReadGoldenFile(path, problem)) {
            calls.push_back({golden->decoding, golden->octets});
        }
    }
    test::RandomMessages messages(9);
    for (int count = 0; count < 300; ++count) {
        auto message = messages.Next();
        calls.push_back({message.decoding, std::move(message.octets)});
    }
    return calls;
}

template <typename Work>
void RunTogether(Work work) {
    std::barrier start(static_cast<std::ptrdiff_t>(kThreads));
    std::vector<std::thread> threads;
    for (std::size_t index = 0; index < kThreads; ++index) {
        threads.emplace_back([&, index] {
            start.arrive_and_wait();
            work(index);
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

// Has to be the first test of this program: nothing was decoded before.
TEST(Threads, FirstUseOfAllFamiliesAtOnce) {
    const std::vector<Call> calls = MakeCalls();
    ASSERT_GT(calls.size(), 300U);
    std::vector<std::vector<Result>> results(kThreads);
    RunTogether([&](std::size_t index) {
        // Each thread begins elsewhere, so that families meet in every order.
        for (std::size_t count = 0; count < calls.size(); ++count) {
            const Call& call = calls[(count + index * 37) % calls.size()];
            results[index].push_back(Decode(call.decoding, call.octets));
        }
    });
    for (std::size_t index = 0; index < kThreads; ++index) {
        for (std::size_t count = 0; count < calls.size(); ++count) {
            const Call& call = calls[(count + index * 37) % calls.size()];
            const Result expected = Decode(call.decoding, call.octets);
            ASSERT_EQ(results[index][count].found, expected.found);
            ASSERT_EQ(results[index][count].text, expected.text);
            ASSERT_EQ(results[index][count].diagnostics, expected.diagnostics);
        }
    }
}

TEST(Threads, PlainFunctions) {
    const std::vector<Call> calls = MakeCalls();
    testing::internal::CaptureStderr();
    std::vector<std::vector<std::string>> texts(kThreads);
    RunTogether([&](std::size_t index) {
        for (const Call& call : calls) {
            const auto length = static_cast<std::int32_t>(call.octets.size());
            texts[index].push_back(test::CallPlain(call.decoding, call.octets, length).text);
        }
    });
    const std::string lines = testing::internal::GetCapturedStderr();
    for (std::size_t count = 0; count < calls.size(); ++count) {
        const Result expected = Decode(calls[count].decoding, calls[count].octets);
        for (std::size_t index = 0; index < kThreads; ++index) {
            ASSERT_EQ(texts[index][count], expected.text);
        }
    }
    // The lines of a call stand together, so that each line is whole.
    for (std::size_t at = 0; at < lines.size(); at = lines.find('\n', at) + 1) {
        ASSERT_EQ(lines.compare(at, 7, "<ERRID:"), 0) << lines.substr(at, 80);
        ASSERT_NE(lines.find('\n', at), std::string::npos);
    }
}

/// All that a message says of its fields.
std::string Told(const Message& message) {
    std::string told(message.TypeName());
    Visit(message.Root(), [&told](const Field& field, unsigned depth) {
        told.append(depth, ' ').append(field.Name()).append(std::to_string(field.Number()));
        told.append(field.Words()).append(std::to_string(field.BitCount()));
        return field.Status() != FieldStatus::kAbsent;
    });
    return told;
}

TEST(Threads, Messages) {
    const std::vector<Call> calls = MakeCalls();
    std::vector<std::vector<std::string>> told(kThreads);
    RunTogether([&](std::size_t index) {
        Message own;
        for (const Call& call : calls) {
            own.Decode(call.decoding, call.octets);
            told[index].push_back(Told(own));
        }
    });
    for (std::size_t index = 1; index < kThreads; ++index) {
        ASSERT_EQ(told[index], told[0]);
    }
}

TEST(Threads, ReadOneMessageTogether) {
    const std::vector<Call> calls = MakeCalls();
    Message shared;
    for (std::size_t count = 0; count < calls.size(); count += 100) {
        shared.Decode(calls[count].decoding, calls[count].octets);
        std::vector<std::string> told(kThreads);
        RunTogether([&](std::size_t index) { told[index] = Told(shared); });
        for (const std::string& one : told) {
            ASSERT_EQ(one, told[0]);
        }
    }
}

}  // namespace
}  // namespace quorvane
