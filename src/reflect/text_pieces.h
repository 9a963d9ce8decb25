#pragma once

// Writing the pieces of a text straight into memory. Each function writes at `at`, returns where
// the piece ends, and may overwrite a few octets behind that end: copying whole steps of a fixed
// size costs a fraction of a copy of exact length. The caller has made sure of the room, for
// those too: TextBuffer::Room promises kSlack octets on top of what was asked for.
//
// Tests: tests/unit/reflect_text_test.cpp.

#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "bits/bit_buffer.h"
#include "reflect/type_tables.h"

namespace quorvane::reflect {

/// The most characters of a number: "-2147483648".
inline constexpr std::size_t kMostDigits = 11;

/// Writes `text`, behind whose end kCopyStep octets are readable. Overwrites less than kCopyStep
/// octets behind it, or kCopyStep if it is empty.
inline char* PutPadded(char* at, std::string_view text) {
    std::memcpy(at, text.data(), kCopyStep);
    if (text.size() > kCopyStep) [[unlikely]] {
        for (std::size_t done = kCopyStep; done < text.size(); done += kCopyStep) {
            std::memcpy(at + done, text.data() + done, kCopyStep);
        }
    }
    return at + text.size();
}

/// Writes a short literal and nothing behind it.
template <std::size_t kSize>
inline char* PutLiteral(char* at, const char (&text)[kSize]) {
    std::memcpy(at, text, kSize - 1);
    return at + (kSize - 1);
}

/// What ends a line.
enum class LineEnd : std::uint8_t {
    kPlain,  // a line feed
    kJson,   // the escape for one, so that the text can stand in a string of JSON
};

template <LineEnd kEnd>
inline char* PutLineEnd(char* at) {
    if constexpr (kEnd == LineEnd::kJson) {
        return PutLiteral(at, "\\n");
    } else {
        return PutLiteral(at, "\n");
    }
}

/// Writes two blanks for each of `levels`. Overwrites as PutPadded does.
inline char* PutIndent(char* at, std::size_t levels) {
    const std::size_t blanks = 2 * levels;
    std::memset(at, ' ', kCopyStep);
    if (blanks > kCopyStep) [[unlikely]] {
        std::memset(at + kCopyStep, ' ', blanks - kCopyStep);
    }
    return at + blanks;
}

/// A number below 1000 in decimal with what stands behind it, ready to be copied as one word.
struct ReadyNumber {
    char text[7];
    std::uint8_t length;
};
static_assert(sizeof(ReadyNumber) == 8);

inline constexpr std::uint32_t kReadyNumberCount = 1000;
using ReadyNumbers = std::array<ReadyNumber, kReadyNumberCount>;

// unreachable from here: the compiler calls it
constexpr ReadyNumbers MakeReadyNumbers(std::string_view behind) {
    ReadyNumbers numbers{};
    for (std::uint32_t value = 0; value < kReadyNumberCount; ++value) {
        ReadyNumber& number = numbers[value];
        const std::size_t digits = value < 10 ? 1 : value < 100 ? 2 : 3;
        std::uint32_t rest = value;
        for (std::size_t place = digits; place > 0; --place, rest /= 10) {
            number.text[place - 1] = static_cast<char>('0' + rest % 10);
        }
        behind.copy(number.text + digits, behind.size());
        number.length = static_cast<std::uint8_t>(digits + behind.size());
    }
    return numbers;
}
// to here

inline constexpr ReadyNumbers kReadyNumbers = MakeReadyNumbers("");
inline constexpr ReadyNumbers kReadyStarts = MakeReadyNumbers(",");
inline constexpr ReadyNumbers kReadySizes = MakeReadyNumbers("] ");

inline char* PutReadyNumber(char* at, const ReadyNumber& number) {
    std::memcpy(at, &number, sizeof number);
    return at + number.length;
}

/// Writes `value` in decimal. May overwrite 7 octets behind it.
inline char* PutUnsigned(char* at, std::uint32_t value) {
    if (value < kReadyNumberCount) {
        return PutReadyNumber(at, kReadyNumbers[value]);
    }
    return std::to_chars(at, at + kMostDigits, value).ptr;
}

/// Writes `value` in decimal, with a sign if it is negative. May overwrite 7 octets behind it.
inline char* PutSigned(char* at, std::int32_t value) {
    if (static_cast<std::uint32_t>(value) < kReadyNumberCount) {
        return PutReadyNumber(at, kReadyNumbers[static_cast<std::uint32_t>(value)]);
    }
    return std::to_chars(at, at + kMostDigits, value).ptr;
}

/// Octets in hexadecimal, each with the blank that parts it from the next, ready to be copied as
/// one word.
inline constexpr std::array<std::array<char, 4>, 256> kHexOctets = [] {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::array<std::array<char, 4>, 256> octets{};
    for (std::size_t octet = 0; octet < octets.size(); ++octet) {
        octets[octet] = {kDigits[octet >> 4], kDigits[octet & 15], ' ', '\0'};
    }
    return octets;
}();

/// Writes one octet as a pair of upper-case hexadecimal digits, and nothing behind it.
inline char* PutHexPair(char* at, std::uint8_t octet) {
    std::memcpy(at, kHexOctets[octet].data(), 2);
    return at + 2;
}

/// Writes `count` octets as pairs of upper-case hexadecimal digits with one blank between octets.
/// May overwrite 2 octets behind it.
inline char* PutHex(char* at, const std::uint8_t* octets, std::size_t count) {
    if (count == 0) {
        return at;
    }
    for (std::size_t index = 0; index < count; ++index) {
        std::memcpy(at, kHexOctets[octets[index]].data(), 4);
        at += 3;
    }
    return at - 1;
}

/// The most characters of a location: "LOC:[65535,65535] ".
inline constexpr std::size_t kMostLocation = 18;

/// Writes the location with a blank behind it; nothing if it is not known. May overwrite 7 octets
/// behind it.
inline char* PutLocation(char* at, bits::FieldLocator location) {
    if (location == 0) {
        return at;
    }
    const std::uint32_t start = location >> 16;
    const std::uint32_t size = location & 0xFFFFU;
    at = PutLiteral(at, "LOC:[");
    if (start < kReadyNumberCount && size < kReadyNumberCount) {
        return PutReadyNumber(PutReadyNumber(at, kReadyStarts[start]), kReadySizes[size]);
    }
    at = PutLiteral(PutUnsigned(at, start), ",");
    return PutLiteral(PutUnsigned(at, size), "] ");
}

}  // namespace quorvane::reflect
