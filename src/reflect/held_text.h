#pragma once

// The texts of descriptors. Those of a catalogue stand in constant tables and in the catalogue's
// own store and are only viewed; those that are given to a descriptor by hand are copied.
//
// Tests: tests/unit/reflect_class_test.cpp.

#include <algorithm>
#include <cstdint>
#include <string_view>

#include "reflect/text_pieces.h"

namespace quorvane::reflect {

class HeldText {
  public:
    /// No text; distinct from an empty text.
    HeldText() = default;
    HeldText(const HeldText&) = delete;
    HeldText& operator=(const HeldText&) = delete;
    ~HeldText() { Clear(); }

    /// Takes a copy of `text` that PutPadded can write. A view without data leaves no text.
    void Copy(std::string_view text) {
        char* copy = nullptr;
        if (text.data() != nullptr) {
            copy = new char[text.size() + kCopyStep];
            std::fill_n(std::copy(text.begin(), text.end(), copy), kCopyStep, '\0');
        }
        Clear();
        data_ = copy;
        size_ = static_cast<std::uint32_t>(text.size());
        owned_ = true;
    }

    /// Views `text`, which must outlive this.
    void Borrow(std::string_view text) {
        Clear();
        data_ = text.data();
        size_ = static_cast<std::uint32_t>(text.size());
    }

    void Clear() {
        if (owned_) {
            delete[] data_;
        }
        data_ = nullptr;
        size_ = 0;
        owned_ = false;
    }

    /// The text; a view without data if there is none.
    [[nodiscard]] std::string_view View() const { return {data_, size_}; }
    [[nodiscard]] bool HasText() const { return data_ != nullptr; }

  private:
    const char* data_ = nullptr;
    std::uint32_t size_ = 0;
    bool owned_ = false;
};

}  // namespace quorvane::reflect
