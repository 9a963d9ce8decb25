#pragma once

// The texts of type tables that tests write by hand, in the form of those that the compiler writes.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "reflect/text_pieces.h"
#include "reflect/type_tables.h"

namespace quorvane::reflect::test {

template <std::size_t kSize>
struct Literal {
    // NOLINTNEXTLINE(google-explicit-constructor): a literal as a template argument
    consteval Literal(const char (&text)[kSize]) { std::copy_n(text, kSize, octets); }

    static constexpr std::size_t kLength = kSize - 1;
    char octets[kSize]{};
};

template <Literal kName>
inline constexpr auto kLabelText = [] {
    std::array<char, kName.kLength + 2 + kCopyStep> text{};
    char* end = std::copy_n(kName.octets, kName.kLength, text.data());
    *end++ = ':';
    *end = ' ';
    return text;
}();

/// The label of a member of that name.
template <Literal kName>
inline constexpr std::string_view kLabel{kLabelText<kName>.data(), kName.kLength + 2};

template <Literal kText, std::uint32_t kValue>
inline constexpr auto kListedText = [] {
    static_assert(kValue < kSmallNumberCount);
    constexpr SmallNumber kNumber = kSmallNumbers[kValue];
    std::array<char, kText.kLength + 3 + kNumber.length + kCopyStep> text{};
    char* end = std::copy_n(kText.octets, kText.kLength, text.data());
    *end++ = ' ';
    *end++ = '(';
    end = std::copy_n(kNumber.digits, kNumber.length, end);
    *end = ')';
    return text;
}();

/// A value of an enumeration, with an ASCII text.
template <Literal kText, std::uint32_t kValue>
inline constexpr EnumValueRow kListed{
    {kListedText<kText, kValue>.data(), kListedText<kText, kValue>.size() - kCopyStep},
    kText.kLength,
    true,
    kValue};

}  // namespace quorvane::reflect::test
