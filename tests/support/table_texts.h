#pragma once

// The texts of type tables that tests write by hand, in the form of those that the compiler writes:
// all in one store, `TableTexts()`, which their tables name.

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

#include "reflect/type_tables.h"

namespace quorvane::reflect::test {

namespace table_texts {

inline constexpr std::size_t kRoom = 8192;
inline char store[kRoom + kCopyStep];
inline std::uint32_t used = 0;

}  // namespace table_texts

inline const char* TableTexts() {
    return table_texts::store;
}

/// Puts `text` in the store.
inline TextRef Stored(std::string_view text) {
    if (table_texts::used + text.size() > table_texts::kRoom) {
        throw std::length_error("give the store of the tests' tables more room");
    }
    const std::uint32_t offset = table_texts::used;
    text.copy(table_texts::store + offset, text.size());
    table_texts::used += static_cast<std::uint32_t>(text.size());
    return {offset & (kMostTexts - 1), static_cast<std::uint32_t>(text.size()) & kLongestText};
}

/// The label of a member of that name.
inline TextRef Label(std::string_view name) {
    return Stored(std::string(name) + ": ");
}

/// A struct of `count` members from `first` on.
template <std::size_t kElements>
TypeRow StructRow(TextRef name, const std::array<ElementRow, kElements>& elements,
                  std::uint16_t first, std::uint16_t count) {
    std::uint32_t labels = 0;
    for (const ElementRow& element : std::span(elements).subspan(first, count)) {
        labels += element.label.length;
    }
    return {name, TypeKind::kStruct, false, labels, first, count};
}

/// A value of an enumeration.
inline EnumValueRow Listed(std::string_view text, std::uint32_t value) {
    return {Stored(std::string(text) + " (" + std::to_string(value) + ")"),
            static_cast<std::uint16_t>(text.size()), IsPlain(text), value};
}

}  // namespace quorvane::reflect::test
