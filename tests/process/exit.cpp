// Calls at the end of a thread and of the process: exits with 0 if each of them came about and gave
// what the same call gives before. The first argument says from where they are made.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <pthread.h>
#include <string>
#include <string_view>
#include <thread>

#include <quorvane/decode.h>
#include <quorvane/engine.h>
#include <quorvane/json.h>
#include <quorvane/message.h>

namespace {

// A message of any family: each is refused by some, and all of them give a text.
constexpr std::uint8_t kOctets[] = {0x02, 0x01, 0xD0, 0x31};

/// What all decodings and ways of calling give.
std::string CallEachWay() {
    std::string all;
    quorvane::Message message;
    for (const quorvane::DecodingInfo& info : quorvane::Decodings()) {
        const quorvane::Result result = quorvane::Decode(info.decoding, kOctets);
        all += result.text + result.diagnostics;
        message.Decode(info.decoding, kOctets);
        message.AppendText(all);
        quorvane::AppendJson(message, all);
    }
    static std::uint8_t padded[sizeof kOctets + quorvane::kReadAhead] = {0x0F, 0x87};
    CString text;
    quorvaneDecodeEPC_SS2UE(padded, sizeof kOctets, text);
    for (const wchar_t* next = text; *next != L'\0'; ++next) {
        all += static_cast<char>(*next);
    }
    return all;
}

std::string* expected = nullptr;  // null: nothing was called ahead of the end
int lateCallsLeft = 0;
bool wrong = false;

void CallLate() {
    // Twice, as the second call meets what the first one leaves.
    const std::string first = CallEachWay();
    wrong = wrong || first.empty() || CallEachWay() != first ||
            (expected != nullptr && *expected != first);
    --lateCallsLeft;
}

/// Made ahead of all other static objects here, so that it goes last.
struct Verdict {
    ~Verdict() {
        delete expected;
        if (wrong || lateCallsLeft != 0) {
            std::fprintf(stderr, "%d late calls are missing, texts are %s\n", lateCallsLeft,
                         wrong ? "wrong" : "right");
            std::_Exit(1);
        }
    }
} verdict;

struct CallerAtItsEnd {
    bool armed = false;
    ~CallerAtItsEnd() {
        if (armed) {
            CallLate();
        }
    }
};

CallerAtItsEnd staticCaller;
thread_local CallerAtItsEnd threadCaller;

void Arm(CallerAtItsEnd& caller) {
    caller.armed = true;
    ++lateCallsLeft;
}

/// Calls in the order of `steps`: 'b' makes the caller at the thread's end, 'c' calls.
void RunSteps(std::string_view steps) {
    for (const char step : steps) {
        if (step == 'b') {
            Arm(threadCaller);
        } else if (expected == nullptr) {
            expected = new std::string(CallEachWay());
        } else {
            wrong = wrong || CallEachWay() != *expected;
        }
    }
}

void RunInThread(std::string_view steps) {
    std::thread(RunSteps, steps).join();
}

pthread_key_t key;

void CallFromKey(void*) {
    CallLate();
}

}  // namespace

int main(int count, char** arguments) {
    const std::string_view where = count == 2 ? arguments[1] : "";
    if (where == "thread_local") {
        RunInThread("bc");  // the thread's memory goes ahead of the caller
        RunInThread("cb");  // the caller goes first
        RunInThread("b");   // nothing was called there
    } else if (where == "main_thread_local") {
        RunSteps("bc");
    } else if (where == "static") {
        Arm(staticCaller);
        RunSteps("c");
    } else if (where == "static_alone") {
        Arm(staticCaller);
    } else if (where == "atexit") {
        ++lateCallsLeft;
        std::atexit(CallLate);
        RunSteps("c");
    } else if (where == "key") {
        pthread_key_create(&key, CallFromKey);
        ++lateCallsLeft;
        std::thread([] {
            RunSteps("c");
            pthread_setspecific(key, &key);
        }).join();
    } else {
        std::fprintf(stderr, "unknown: %s\n", arguments[1]);
        return 1;
    }
    return 0;
}
