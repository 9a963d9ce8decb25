#pragma once

// The numbers of a description. They are held as wide as they are written, each with its span;
// only Narrow makes them as narrow as a row of the tables has room for.

#include <algorithm>
#include <cstdint>
#include <limits>
#include <string_view>

#include "compiler/reporter.h"

namespace quorvane::compiler {

struct WideNumber {
    std::uint64_t value = 0;
    Span span;
    bool hexadecimal = false;  // as written
};

/// What a number may be.
struct NumberRange {
    std::uint64_t least = 0;
    std::uint64_t most = 0;
    std::string_view what;  // it counts, e.g. "bits of an integer"
};

/// The number, or the end of the range next to it after an error at the number's span.
std::uint64_t WithinRange(Reporter& reporter, const WideNumber& number, const NumberRange& range);

/// The number as a row holds it.
template <typename T>
T Narrow(Reporter& reporter, const WideNumber& number, const NumberRange& range) {
    constexpr std::uint64_t kMost = std::numeric_limits<T>::max();
    return static_cast<T>(
        WithinRange(reporter, number, {range.least, std::min(range.most, kMost), range.what}));
}

/// The most that so many bits hold, 64 of them at most.
constexpr std::uint64_t MostOf(std::uint64_t bits) {
    return bits >= 64 ? ~std::uint64_t{0} : (std::uint64_t{1} << bits) - 1;
}

/// Stands for a number that could not be read, which was told of: it fits everywhere.
inline constexpr std::uint64_t kUnknownNumber = MostOf(64);

}  // namespace quorvane::compiler
