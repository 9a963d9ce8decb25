#include "tools/json_lines.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cstring>

#include "tools/hex.h"

namespace quorvane::tool {
namespace {

constexpr std::size_t kWord = sizeof(std::uint64_t);
constexpr std::size_t kLongestEscape = 6;  // \u001F

constexpr std::uint64_t Repeated(std::uint8_t octet) {
    return std::uint64_t{octet} * 0x0101010101010101U;
}

// The top bit of each octet of `word` that has to be escaped. Above the lowest of them in value
// there may be others that need not.
std::uint64_t EscapeMask(std::uint64_t word) {
    const std::uint64_t quotes = word ^ Repeated('"');
    const std::uint64_t backslashes = word ^ Repeated('\\');
    const std::uint64_t controls = (word - Repeated(0x20)) & ~word;
    return (controls | ((quotes - Repeated(1)) & ~quotes) |
            ((backslashes - Repeated(1)) & ~backslashes)) &
           Repeated(0x80);
}

// The letter behind the backslash; 0 for characters that stand for themselves or need \u.
constexpr std::array<char, 256> kLetters = [] {
    std::array<char, 256> letters{};
    letters['\n'] = 'n';
    letters['\r'] = 'r';
    letters['\t'] = 't';
    letters['"'] = '"';
    letters['\\'] = '\\';
    return letters;
}();

char* PutCharacter(char* at, char character) {
    const auto value = static_cast<unsigned char>(character);
    if (kLetters[value] != 0) {
        *at++ = '\\';
        *at++ = kLetters[value];
    } else if (value < 0x20) {
        at = std::copy_n("\\u00", 4, at);
        *at++ = kHexDigits[value >> 4];
        *at++ = kHexDigits[value & 15];
    } else {
        *at++ = character;
    }
    return at;
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
    Put(first_ ? "\"" : ",\"");
    first_ = false;
    Put(key);
    Put("\":");
}

void JsonLines::PutString(std::string_view text) {
    MakeRoom(kLongestEscape * text.size() + kWord + 2);
    char* at = buffer_.data() + used_;
    *at++ = '"';
    const char* next = text.data();
    std::size_t left = text.size();
    // A word at a time: all of it is copied, and what stands ahead of an escape counts.
    while (left >= kWord) {
        std::uint64_t word = 0;
        std::memcpy(&word, next, kWord);
        std::memcpy(at, &word, kWord);
        const std::uint64_t mask = EscapeMask(word);
        if (mask == 0) {
            at += kWord;
            next += kWord;
            left -= kWord;
            continue;
        }
        const bool little = std::endian::native == std::endian::little;
        const std::size_t plain = little ? static_cast<std::size_t>(std::countr_zero(mask)) / 8 : 0;
        at = PutCharacter(at + plain, next[plain]);
        next += plain + 1;
        left -= plain + 1;
    }
    for (; left > 0; ++next, --left) {
        at = PutCharacter(at, *next);
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
