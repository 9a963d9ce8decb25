// Children of a process whose threads are in their first calls, and of one that has called: each
// child calls as well. Exits with 0 if all gave the right text; a child that hangs is killed by its
// alarm.

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include <quorvane/decode.h>
#include <quorvane/json.h>
#include <quorvane/message.h>

namespace {

constexpr std::uint8_t kOctets[] = {0x02, 0x01, 0xD0, 0x31};
constexpr unsigned kSecondsAllowed = 60;

std::string CallAll() {
    std::string all;
    quorvane::Message message;
    for (const quorvane::DecodingInfo& info : quorvane::Decodings()) {
        all += quorvane::Decode(info.decoding, kOctets).text;
        message.Decode(info.decoding, kOctets);
        quorvane::AppendJson(message, all);
    }
    return all;
}

/// Runs `work` in a child process; returns whether it returned true there.
template <typename Work>
bool InChild(const Work& work) {
    const pid_t child = fork();
    if (child == 0) {
        alarm(kSecondsAllowed);
        std::_Exit(work() ? 0 : 1);
    }
    int status = 0;
    return child > 0 && waitpid(child, &status, 0) == child && status == 0;
}

int Fail(const char* what) {
    std::fprintf(stderr, "wrong: %s\n", what);
    return 1;
}

/// In a process that has not called yet: threads call while this one makes children.
bool ForkDuringFirstUse(const std::string& expected) {
    constexpr int kThreads = 3;
    std::atomic<int> ready{0};
    std::atomic<bool> start{false};
    std::vector<std::thread> threads;
    for (int index = 0; index < kThreads; ++index) {
        threads.emplace_back([&] {
            ++ready;
            while (!start) {
            }
            CallAll();
        });
    }
    while (ready < kThreads) {
    }
    start = true;
    const bool right = InChild([&] { return CallAll() == expected; });
    for (std::thread& thread : threads) {
        thread.join();
    }
    return right;
}

}  // namespace

int main() {
    // Made by a child, so that this process has not called when it makes the others.
    int channel[2];
    if (pipe(channel) != 0) {
        return 1;
    }
    const bool written = InChild([&] {
        const std::string all = CallAll();
        return write(channel[1], all.data(), all.size()) == static_cast<ssize_t>(all.size());
    });
    close(channel[1]);
    std::string expected(std::size_t{1} << 16, '\0');
    const ssize_t size = read(channel[0], expected.data(), expected.size());
    if (!written || size <= 0) {
        return Fail("the first child");
    }
    expected.resize(static_cast<std::size_t>(size));

    constexpr int kRounds = 30;
    for (int round = 0; round < kRounds; ++round) {
        if (!InChild([&] { return ForkDuringFirstUse(expected); })) {
            return Fail("a fork during first use");
        }
    }
    // Children share nothing with this process that the one or the other could spoil.
    for (int round = 0; round < 2; ++round) {
        if (CallAll() != expected || !InChild([&] { return CallAll() == expected; })) {
            return Fail("a fork after use");
        }
    }
    return 0;
}
