#include "tools/progress.h"

#include <cmath>
#include <cstdio>

#include "tools/system.h"

namespace quorvane::tool {
namespace {

std::string Duration(double seconds) {
    constexpr std::uint64_t kMinute = 60;
    constexpr std::uint64_t kHour = 60 * kMinute;
    const auto whole = static_cast<std::uint64_t>(std::ceil(seconds));
    const auto twoDigits = [](std::uint64_t number) {
        return (number < 10 ? "0" : "") + std::to_string(number);
    };
    if (whole < kMinute) {
        return std::to_string(whole) + " s";
    }
    if (whole < kHour) {
        return std::to_string(whole / kMinute) + " min " + twoDigits(whole % kMinute) + " s";
    }
    return std::to_string(whole / kHour) + " h " + twoDigits(whole % kHour / kMinute) + " min";
}

}  // namespace

std::string ProgressLine(std::string_view counted, std::uint64_t count, std::uint64_t octets,
                         std::optional<std::uint64_t> allOctets, double seconds) {
    std::string text = std::to_string(count).append(" ").append(counted);
    if (seconds <= 0) {
        return text;
    }
    const auto rate = static_cast<std::uint64_t>(static_cast<double>(count) / seconds);
    text.append(", ").append(std::to_string(rate)).append(" ").append(counted).append("/s");
    if (allOctets && octets > 0 && octets <= *allOctets) {
        const auto left = static_cast<double>(*allOctets - octets);
        text += ", " + Duration(seconds * left / static_cast<double>(octets)) + " left";
    }
    return text;
}

Progress::Progress(std::string_view counted, std::optional<std::uint64_t> allOctets)
    : counted_(counted),
      shown_(IsTerminal(kStandardError) && !IsTerminal(kStandardOutput)),
      allOctets_(allOctets) {}

void Progress::Hide() {
    if (any_) {
        std::fputs("\r\033[K", stderr);
        any_ = false;
    }
}

void Progress::Show(std::uint64_t count, std::uint64_t octets) {
    constexpr std::chrono::milliseconds kPause(200);
    if (!shown_) {
        return;
    }
    const Clock::time_point now = Clock::now();
    if (now - last_ >= kPause) {
        last_ = now;
        any_ = true;
        const std::chrono::duration<double> passed = now - start_;
        std::fprintf(stderr, "\r%s\033[K",
                     ProgressLine(counted_, count, octets, allOctets_, passed.count()).c_str());
    }
}

}  // namespace quorvane::tool
