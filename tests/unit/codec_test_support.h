#pragma once

// Values and messages of the described families as tests of the codec want them: octets as
// hexadecimal text in, text and hexadecimal out.

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "families/family.h"
#include "iecodec/message_container.h"
#include "reflect/catalogue.h"
#include "support/print_outcome.h"

namespace quorvane::iecodec::test {

using Octets = std::vector<std::uint8_t>;

/// "62 00 C5" as octets.
Octets FromHex(std::string_view text);

/// Octets as "62 00 C5".
std::string ToHex(std::span<const std::uint8_t> octets);

/// "00 " `count` times, as a part of hexadecimal text.
std::string Zeros(std::size_t count);

/// What an encoder did to a buffer of ones.
struct Written {
    bits::Outcome bits = 0;
    std::string hex;  // the octets that the bits touch; of a code, all up to the last change
    std::string diagnostics;  // numbers as *
};

/// A value of one named type of a family.
class TypeUnderTest {
  public:
    TypeUnderTest(const families::Family& family, std::string_view type);

    /// Decodes into an empty record: `length` bits at bit `position`, by default all octets there
    /// are. Zeros follow the octets.
    bits::Outcome Decode(std::string_view hex, std::optional<std::int64_t> length = std::nullopt,
                         std::int64_t position = 0);

    /// The record as text.
    [[nodiscard]] std::string Text();

    /// Encodes the record.
    [[nodiscard]] Written Encode() const;

    /// Decodes, expects that all octets are taken without a fault, and gives what the record
    /// encodes to.
    std::string ThereAndBack(std::string_view hex);

    /// Fault lines of the last decode, numbers as *.
    [[nodiscard]] const std::string& Diagnostics() const { return diagnostics_; }

    [[nodiscard]] bits::Cell& Record() { return cell_; }

    /// The member of that name; members of structs inside are told by "Outer.Inner".
    [[nodiscard]] bits::Cell& Member(std::string_view path);

  private:
    const families::Family& family_;
    const ValueRow* row_ = nullptr;
    std::uint16_t type_ = 0;
    bits::Arena arena_;
    bits::Cell cell_{};
    std::string diagnostics_;
};

/// Messages of one set of a family.
class SetUnderTest {
  public:
    SetUnderTest(const families::Family& family, std::string_view set);

    /// Dispatches: `length` bits, by default all octets there are. Zeros follow the octets.
    bits::Outcome Decode(std::string_view hex, std::optional<std::int64_t> length = std::nullopt);

    /// The name of the message found; empty if there is none.
    [[nodiscard]] std::string Name() const;

    /// Its record as text.
    [[nodiscard]] std::string Text();

    /// Encodes the message found.
    [[nodiscard]] Written Encode() const;

    /// Fault lines of the last decode, numbers as *.
    [[nodiscard]] const std::string& Diagnostics() const { return diagnostics_; }

    [[nodiscard]] MessageContainer& Container() { return container_; }

    /// The member of that name of the message found; as that of a type.
    [[nodiscard]] bits::Cell& Member(std::string_view path);
    [[nodiscard]] const MessageSetRow& Row() const { return *set_; }

    /// The message of that name.
    [[nodiscard]] const MessageRow& Message(std::string_view name) const;

  private:
    const families::Family& family_;
    const MessageSetRow* set_;
    bits::Arena arena_;
    MessageContainer container_;
    std::string diagnostics_;
};

/// The record of the family's type with index `type` as text.
std::string TextOf(const families::Family& family, std::uint16_t type, const bits::Cell& cell);

}  // namespace quorvane::iecodec::test
