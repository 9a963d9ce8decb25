#include "tools/hex.h"

#include <array>
#include <cstddef>

namespace quorvane::tool {
namespace {

constexpr std::uint8_t kNoValue = 0xFF;

constexpr std::array<std::uint8_t, 256> kDigits = [] {
    std::array<std::uint8_t, 256> digits{};
    digits.fill(kNoValue);
    for (std::uint8_t digit = 0; digit < 16; ++digit) {
        const auto capital = static_cast<unsigned char>(kHexDigits[digit]);
        digits[capital] = digit;
        digits[capital | 0x20U] = digit;  // the small letter
    }
    return digits;
}();

std::uint8_t ValueOf(char character) {
    return kDigits[static_cast<unsigned char>(character)];
}

bool IsSeparator(char character) {
    return character == ' ' || character == '\t' || character == ':';
}

/// What a pair of digits stands for is the one of its first | that of its second; above 255 if one
/// is no digit.
struct PairTables {
    std::array<std::uint16_t, 256> first{};
    std::array<std::uint16_t, 256> second{};
};
constexpr PairTables kPairs = [] {
    PairTables pairs;
    for (std::size_t character = 0; character < kDigits.size(); ++character) {
        const std::uint8_t digit = kDigits[character];
        pairs.first[character] = static_cast<std::uint16_t>(digit << 4);
        pairs.second[character] = static_cast<std::uint16_t>(digit == kNoValue ? 256 : digit);
    }
    return pairs;
}();

/// Reads the pairs of digits that the text begins with, which are mostly all of it, and returns
/// where they end.
std::size_t PairsAtStart(std::string_view text, std::uint8_t* octets) {
    std::size_t index = 0;
    for (; index + 1 < text.size(); index += 2) {
        const unsigned value = kPairs.first[static_cast<unsigned char>(text[index])] |
                               kPairs.second[static_cast<unsigned char>(text[index + 1])];
        if (value > 255) {
            break;
        }
        *octets++ = static_cast<std::uint8_t>(value);
    }
    return index;
}

std::string At(std::size_t index, const std::string& problem) {
    return "character " + std::to_string(index + 1) + ": " + problem;
}

}  // namespace

std::string QuotedCharacter(char character) {
    constexpr char kFirstPrintable = 0x20;
    constexpr char kLastPrintable = 0x7E;
    if (character >= kFirstPrintable && character <= kLastPrintable) {
        return std::string("'") + character + "'";
    }
    return "an unprintable character";
}

std::optional<std::uint8_t> DigitOf(char character) {
    const std::uint8_t value = ValueOf(character);
    return value == kNoValue ? std::nullopt : std::optional(value);
}

std::string ParseHex(std::string_view text, std::vector<std::uint8_t>& octets) {
    octets.resize(text.size() / 2);
    std::size_t index = PairsAtStart(text, octets.data());
    std::size_t count = index / 2;
    bool inGroup = count > 0;
    while (index < text.size()) {
        const std::uint8_t high = ValueOf(text[index]);
        const std::uint8_t low = index + 1 < text.size() ? ValueOf(text[index + 1]) : kNoValue;
        if (high < kNoValue && low < kNoValue) {
            octets[count++] = static_cast<std::uint8_t>(high << 4 | low);
            inGroup = true;
            index += 2;
            continue;
        }
        if (IsSeparator(text[index])) {
            inGroup = false;
            ++index;
            continue;
        }
        const bool ends = index + 1 == text.size() || IsSeparator(text[index + 1]);
        if (high == kNoValue) {
            return At(index, QuotedCharacter(text[index]) + kNoDigit);
        }
        if (ends) {
            return At(index, kHalfOctet);
        }
        if (inGroup || text[index] != '0' || (text[index + 1] | 0x20) != 'x') {
            return At(index + 1, QuotedCharacter(text[index + 1]) + kNoDigit);
        }
        index += 2;
        if (index == text.size() || IsSeparator(text[index])) {
            return At(index - 2, "no digits follow " + std::string(text.substr(index - 2, 2)));
        }
        inGroup = true;
    }
    octets.resize(count);
    return {};
}

std::string ToHex(std::span<const std::uint8_t> octets, std::string_view separator) {
    std::string text;
    text.reserve(octets.size() * (2 + separator.size()));
    for (const std::uint8_t octet : octets) {
        if (!text.empty()) {
            text += separator;
        }
        text += kHexDigits[octet >> 4];
        text += kHexDigits[octet & 15U];
    }
    return text;
}

}  // namespace quorvane::tool
