#pragma once

// What a message has to have: "EMMCause=15".
//
// Tests: tests/capture/capture_command_test.cpp.

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "quorvane/message.h"

namespace quorvane::tool {

/// PATH=VALUE holds if a field at PATH has the value, PATH!=VALUE if there are fields at PATH and
/// none has it, PATH alone if there is a field. PATH is the end of a field's path, items left out:
/// a name, or names joined by dots. VALUE is a number, the words of one in any case, or the
/// hexadecimal digits of a bit string. Fields that the decoder refused, or never came to, are not
/// there.
class FieldCondition {
  public:
    /// Throws UsageError for a text that has not that form, for names that no message has, and for
    /// a value that no field of the name can have.
    explicit FieldCondition(const std::string& text);

    [[nodiscard]] bool Holds(const Message& message) const;

  private:
    enum class Relation : std::uint8_t { kIsThere, kIs, kIsNot };

    void RequireValue(const std::string& text) const;
    /// Whether a field of the type may have the value. Adds the words that it may have.
    [[nodiscard]] bool MayHaveValue(Type type, std::set<std::string_view>& words) const;
    [[nodiscard]] bool IsAtPath(const std::vector<std::string_view>& names) const;
    [[nodiscard]] bool HasValue(const Field& field) const;

    Relation relation_ = Relation::kIsThere;
    std::vector<std::string> path_;
    std::string value_;
    std::optional<std::uint32_t> number_;
};

}  // namespace quorvane::tool
