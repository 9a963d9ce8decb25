#include "tools/json_lines.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cstring>

#include "facade/json_string.h"

namespace quorvane::tool {
namespace {

// What is copied and looked through at once.
using Step [[gnu::vector_size(16)]] = unsigned char;
constexpr std::size_t kStep = sizeof(Step);

/// How many of the next kStep characters stand for themselves, up to the first that does not.
std::size_t PlainCharacters(const char* text) {
    Step step;
    std::memcpy(&step, text, kStep);
    const auto escaped = (step < 0x20) | (step == '"') | (step == '\\');
    std::array<std::uint64_t, 2> halves{};
    std::memcpy(halves.data(), &escaped, kStep);
    if ((halves[0] | halves[1]) == 0) {
        return kStep;
    }
    const bool first = halves[0] != 0;
    const std::uint64_t half = first ? halves[0] : halves[1];
    const int ahead = std::endian::native == std::endian::little ? std::countr_zero(half)
                                                                 : std::countl_zero(half);
    return static_cast<std::size_t>(ahead) / 8 + (first ? 0 : kStep / 2);
}

}  // namespace

void JsonLines::Begin() {
    Put("{");
    first_ = true;
}

void JsonLines::End() {
    Put("}\n");
}

void JsonLines::PutNumber(std::int64_t number) {
    constexpr std::size_t kMostDigits = 20;
    MakeRoom(kMostDigits);
    char* at = buffer_.data() + used_;
    const char* end = std::to_chars(at, at + kMostDigits, number).ptr;
    used_ += static_cast<std::size_t>(end - at);
}

void JsonLines::PutLines(std::string_view text) {
    if (text.empty()) {
        return Put("[]");
    }
    const char* separator = "[";
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        Put(separator);
        PutString(line);
        separator = ",";
        text.remove_prefix(std::min(line.size() + 1, text.size()));
    }
    Put("]");
}

void JsonLines::PutString(std::string_view text) {
    MakeRoom(facade::JsonStringRoom(text.size()) + kStep);
    char* at = buffer_.data() + used_;
    *at++ = '"';
    const char* next = text.data();
    std::size_t left = text.size();
    // All of a step is copied, and what stands ahead of an escape counts.
    while (left >= kStep) {
        std::memcpy(at, next, kStep);
        const std::size_t plain = PlainCharacters(next);
        at += plain;
        next += plain;
        left -= plain;
        if (plain < kStep) {
            at = facade::PutJsonCharacter(at, *next);
            ++next;
            --left;
        }
    }
    // The rest is shorter than a step, and mostly stands for itself, too.
    std::array<char, kStep> rest;
    rest.fill(' ');
    std::copy_n(next, left, rest.data());
    const std::size_t plain = std::min(PlainCharacters(rest.data()), left);
    std::memcpy(at, rest.data(), kStep);
    at += plain;
    for (next += plain, left -= plain; left > 0; ++next, --left) {
        at = facade::PutJsonCharacter(at, *next);
    }
    *at++ = '"';
    used_ = static_cast<std::size_t>(at - buffer_.data());
}

void JsonLines::Put(std::string_view octets) {
    MakeRoom(octets.size());
    std::copy(octets.begin(), octets.end(), buffer_.data() + used_);
    used_ += octets.size();
}

void JsonLines::Grow(std::size_t count) {
    buffer_.resize(std::max(2 * buffer_.size(), used_ + count));
}

}  // namespace quorvane::tool
