// Many threads at once, from the very first call of the process on, give what one gives.

#include <barrier>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "quorvane/decode.h"
#include "quorvane/json.h"
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

/// The octets that the message is written as, or why it is not.
std::string Written(const Message& message) {
    std::vector<std::uint8_t> octets;
    const EncodeResult result = message.Encode(octets);
    return result.error ? result.error.path + ": " + result.error.words
                        : std::string(octets.begin(), octets.end());
}

/// All that a message says of itself.
std::string Told(const Message& message) {
    std::string told(message.TypeName());
    Visit(message.Root(), [&](const Field& field, unsigned) {
        told.append("\n");
        message.AppendPath(field, told);
        told.append(" ").append(std::to_string(field.Number())).append(field.Words());
        told.append(std::to_string(field.BitCount()));
        return field.Status() != FieldStatus::kAbsent;
    });
    for (std::size_t index = 0; index < message.FaultCount(); ++index) {
        message.AppendPath(message.GetFault(index).field, told);
    }
    for (std::size_t index = 0; index < message.SurplusCount(); ++index) {
        message.AppendPath(message.GetSurplus(index).field, told);
    }
    message.AppendText(told);
    AppendJson(message, told);
    return told.append(Written(message));
}

/// Sets every number that was decoded to another one.
void Change(Message& message) {
    std::vector<std::pair<std::string, std::uint32_t>> numbers;
    Visit(message.Root(), [&](const Field& field, unsigned) {
        std::string path;
        if (field.Status() == FieldStatus::kDecoded && field.Kind() <= FieldKind::kEnumerated &&
            message.AppendPath(field, path)) {
            numbers.emplace_back(std::move(path), field.Number() ^ 1U);
        }
        return field.Status() != FieldStatus::kAbsent;
    });
    for (const auto& [path, number] : numbers) {
        const MessageError error = message.Set(path, number);
        // What has no bits is 0.
        EXPECT_TRUE(!error || error.kind == MessageErrorKind::kValueTooLarge) << error.words;
    }
}

TEST(Threads, Messages) {
    const std::vector<Call> calls = MakeCalls();
    // What is told as decoded, as changed, and of a message made anew.
    const auto work = [&calls](std::vector<std::string>& told) {
        Message own;
        for (std::size_t count = 0; count < calls.size(); count += 10) {
            const Call& call = calls[count];
            own.Decode(call.decoding, call.octets, {.tolerant = true});
            told.push_back(Told(own));
            Change(own);
            told.push_back(Told(own));
            const MessageError error = own.New(call.decoding, own.TypeName());
            told.push_back(error ? error.words : Written(own));
        }
    };
    std::vector<std::vector<std::string>> told(kThreads);
    RunTogether([&](std::size_t index) { work(told[index]); });
    std::vector<std::string> alone;
    work(alone);
    for (const std::vector<std::string>& one : told) {
        ASSERT_EQ(one, alone);
    }
}

TEST(Threads, ReadOneMessageTogether) {
    const std::vector<Call> calls = MakeCalls();
    Message shared;
    for (std::size_t count = 0; count < calls.size(); count += 20) {
        shared.Decode(calls[count].decoding, calls[count].octets, {.tolerant = true});
        std::vector<std::string> told(kThreads);
        RunTogether([&](std::size_t index) { told[index] = Told(shared); });
        const std::string alone = Told(shared);
        for (const std::string& one : told) {
            ASSERT_EQ(one, alone);
        }
    }
}

}  // namespace
}  // namespace quorvane
