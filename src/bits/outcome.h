#pragma once

// The result of decoding or encoding: a count of bits, or one of the library's codes. Callers ask
// which of the two it is before they use it.
//
// Tests: tests/unit/outcome_test.cpp.

#include <cstdint>

namespace quorvane::bits {

/// All codes of the library. Their texts are the facade's; those that no decoder gives can be asked
/// for all the same.
enum class Code : std::int32_t {
    kSyntaxError = -1,
    kUnknownMessage = -2,
    kUnknownIei = -3,
    kMessageTooShort = -4,
    kMissingConditional = -5,     // not given
    kUnexpectedConditional = -6,  // not given
    kMandatoryError = -7,
    kConditionalError = -8,
    kOptionalError = -9,      // not given
    kFieldOutOfRange = -10,   // not given
    kSizeError = -12,         // a length outside its limits
    kSizeOutOfRange = -13,    // a sequence's size above its bound
    kMissingOptional = 32767  // not given
};

class [[nodiscard]] Outcome {
  public:
    // Both conversions are meant: a function returns a count or a code as it is.
    // NOLINTBEGIN(google-explicit-constructor)

    /// Success with `bits` passed or written. A count below 0, of a run that ended ahead of its
    /// start, is a failure.
    constexpr Outcome(std::int64_t bits) : value_(bits) {}

    /// A failure.
    constexpr Outcome(Code code) : value_(static_cast<std::int64_t>(code)) {}

    // NOLINTEND(google-explicit-constructor)

    [[nodiscard]] constexpr bool Failed() const { return value_ < 0; }

    /// Of a success.
    [[nodiscard]] constexpr std::int64_t Bits() const { return value_; }

    /// Of a failure.
    [[nodiscard]] constexpr Code Error() const { return static_cast<Code>(value_); }

    /// `bits` more of a success; a failure as it is.
    [[nodiscard]] constexpr Outcome Plus(std::int64_t bits) const {
        return Failed() ? *this : Outcome(value_ + bits);
    }

    friend constexpr bool operator==(const Outcome&, const Outcome&) = default;

  private:
    std::int64_t value_;
};

}  // namespace quorvane::bits
