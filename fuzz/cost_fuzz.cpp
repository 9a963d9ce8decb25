// What a call costs: an input that takes more work for its size than all before of its message is
// new to libFuzzer, as new code is. The dearest inputs are printed when the program ends; those
// that are worth it become files of tests/cost.
//
// Input: the decoding; the octets.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "edge_counter.h"
#include "fuzz_support.h"
#include "quorvane/decode.h"
#include "reach.h"
#include "tools/hex.h"

namespace quorvane {
namespace {

// One counter for each step of the cost, eight to a doubling, of each message.
constexpr std::size_t kStepsOfDoubling = 8;
constexpr std::size_t kSteps = 16 * kStepsOfDoubling;
constexpr std::size_t kMostMessages = 512;
#ifdef __ELF__
[[gnu::section("__libfuzzer_extra_counters")]]
#endif
std::uint8_t stepCounters[kMostMessages * kSteps];

// Every message costs as much as so many octets: else the dearest ones would be the shortest.
constexpr std::size_t kOctetsOfAMessage = 16;

// The ceiling in edges, of eight to thirteen instructions each.
constexpr std::uint64_t kMostOfAMessage = 6000;
constexpr std::uint64_t kMostOfAnOctet = 400;

struct Call {
    double cost = 0;  // edges an octet
    std::uint64_t edges = 0;
    Decoding decoding{};
    std::vector<std::uint8_t> octets;
};

/// The dearest call of each message.
class DearestCalls {
  public:
    DearestCalls() = default;
    DearestCalls(const DearestCalls&) = delete;
    DearestCalls& operator=(const DearestCalls&) = delete;
    ~DearestCalls() {
        std::vector<std::pair<std::string, Call>> calls(calls_.begin(), calls_.end());
        std::sort(calls.begin(), calls.end(),
                  [](const auto& a, const auto& b) { return a.second.cost > b.second.cost; });
        constexpr std::size_t kShown = 20;
        for (std::size_t index = 0; index < std::min(calls.size(), kShown); ++index) {
            const Call& call = calls[index].second;
            std::printf(
                "dearest: %.0f edges an octet, %llu edges, %zu octets: %s %s %s\n", call.cost,
                static_cast<unsigned long long>(call.edges), call.octets.size(),
                calls[index].first.c_str(),
                std::string(Decodings()[static_cast<std::size_t>(call.decoding)].name).c_str(),
                tool::ToHex(call.octets, "").c_str());
        }
    }

    void Note(const std::string& message, const Call& call) {
        const auto [known, isNew] = calls_.emplace(message, call);
        if (!isNew && call.cost > known->second.cost) {
            known->second = call;
        }
    }

  private:
    std::map<std::string, Call> calls_;
};

/// Numbers messages in the order they are met.
std::size_t NumberOf(const std::string& message) {
    static std::map<std::string, std::size_t> numbers;
    return std::min(numbers.emplace(message, numbers.size()).first->second, kMostMessages - 1);
}

/// From the line "MESSAGE: name"; empty if none was found.
std::string NameIn(const std::string& text) {
    constexpr std::string_view kLabel = "MESSAGE: ";
    const std::size_t at = text.find(kLabel);
    if (at == std::string::npos) {
        return "";
    }
    const std::size_t start = at + kLabel.size();
    return text.substr(start, text.find('\n', start) - start);
}

}  // namespace
}  // namespace quorvane

int LLVMFuzzerTestOneInput(const std::uint8_t* octets, std::size_t size) {
    using namespace quorvane;
    fuzz::Input input(octets, size);
    Call call;
    call.decoding = Decodings()[input.Below(Decodings().size())].decoding;
    call.octets.assign(input.Rest().begin(), input.Rest().end());
    static std::string text;
    static std::string diagnostics;
    const std::uint64_t before = fuzz::edgesRun;
    DecodeInto(call.decoding, call.octets, text, diagnostics);
    call.edges = fuzz::edgesRun - before;
    fuzz::Require(call.edges <= kMostOfAMessage + kMostOfAnOctet * call.octets.size(),
                  "a call takes more work than the ceiling");
    call.cost = static_cast<double>(call.edges) /
                static_cast<double>(call.octets.size() + kOctetsOfAMessage);

    const std::string message = NameIn(text);
    static DearestCalls dearest;
    dearest.Note(message, call);
    const double doublings = std::log2(std::max(call.cost, 1.0));
    const auto step = static_cast<std::size_t>(doublings * kStepsOfDoubling);
    stepCounters[NumberOf(message) * kSteps + std::min(step, kSteps - 1)] = 1;
    fuzz::ReachOfThisRun().NoteMessage(call.decoding, call.octets);
    return 0;
}
