#include "compiler/number.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string>

namespace quorvane::compiler {
namespace {

std::string Shown(std::uint64_t value, bool hexadecimal) {
    std::array<char, 20> digits{};
    const auto end =
        std::to_chars(digits.data(), digits.data() + digits.size(), value, hexadecimal ? 16 : 10);
    std::string text(digits.data(), end.ptr);
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'a' ? static_cast<char>(c - 'a' + 'A') : c; });
    return (hexadecimal ? "0x" : "") + text;
}

}  // namespace

std::uint64_t WithinRange(Reporter& reporter, const WideNumber& number, const NumberRange& range) {
    if (number.value == kUnknownNumber) {
        return range.least;
    }
    const bool above = number.value > range.most;
    if (!above && number.value >= range.least) {
        return number.value;
    }
    const std::uint64_t end = above ? range.most : range.least;
    reporter.Error(number.span,
                   Shown(number.value, number.hexadecimal) + (above ? " is above " : " is below ") +
                       Shown(end, number.hexadecimal) + (above ? ", the most " : ", the least ") +
                       std::string(range.what));
    return end;
}

}  // namespace quorvane::compiler
