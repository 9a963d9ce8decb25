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

void JsonLines::Add(std::string_view key, std::string_view text) {
    AddKey(key);
    PutString(text);
}

void JsonLines::Add(std::string_view key, std::int64_t number) {
    AddKey(key);
    char digits[20];
    const char* end = std::to_chars(digits, digits + sizeof digits, number).ptr;
    Put({digits, static_cast<std::size_t>(end - digits)});
}

void JsonLines::AddFlag(std::string_view key, bool flag) {
    AddJson(key, flag ? "true" : "false");
}

void JsonLines::AddJson(std::string_view key, std::string_view value) {
    AddKey(key);
    Put(value);
}

void JsonLines::AddLines(std::string_view key, std::string_view text) {
    AddKey(key);
    const char* separator = "[";
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        Put(separator);
        PutString(line);
        separator = ",";
        text.remove_prefix(std::min(line.size() + 1, text.size()));
    }
    Put(*separator == '[' ? "[]" : "]");
}

void JsonLines::AddKey(std::string_view key) {
    MakeRoom(key.size() + 4);
    char* at = buffer_.data() + used_;
    if (!first_) {
        *at++ = ',';
    }
    first_ = false;
    *at++ = '"';
    at = std::copy(key.begin(), key.end(), at);
    *at++ = '"';
    *at++ = ':';
    used_ = static_cast<std::size_t>(at - buffer_.data());
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
    for (; left > 0; ++next, --left) {
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
