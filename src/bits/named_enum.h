#pragma once

// Enumerations whose enumerators are printed by name, in generated tables and in listings.

#include <cstdint>
#include <string>
#include <string_view>

/// Declares `enum class Type` with the enumerators that follow, which have no values of their own,
/// and keeps their names.
#define QUORVANE_NAMED_ENUM(Type, ...) QUORVANE_EXPANDED_NAMED_ENUM(Type, __VA_ARGS__)
#define QUORVANE_EXPANDED_NAMED_ENUM(Type, ...)     \
    enum class Type : std::uint8_t { __VA_ARGS__ }; \
    constexpr std::string_view EnumNames(Type) {    \
        return #Type "::" #__VA_ARGS__;             \
    }

namespace quorvane::bits {

/// "Type::kName", as C++ writes an enumerator of a named enumeration.
template <typename Enum>
std::string EnumeratorText(Enum value) {
    std::string_view names = EnumNames(value);
    const std::size_t nameAt = names.find("::") + 2;
    const std::string type(names.substr(0, nameAt));
    names.remove_prefix(nameAt);
    for (auto before = static_cast<unsigned>(value); before > 0; --before) {
        names.remove_prefix(names.find(',') + 2);
    }
    return type + std::string(names.substr(0, names.find(',')));
}

}  // namespace quorvane::bits
