#pragma once

// The growing list of owned objects of the reflective model: elements of a structured type, values
// of an enumeration, items of a sequence, named types of a catalogue.
//
// Tests: tests/unit/reflect_vector_test.cpp.

#include <algorithm>
#include <cstdint>
#include <memory>

#include "bits/arena.h"
#include "reflect/placeable.h"

namespace quorvane::reflect {

/// Owns what its slots point at and deletes it when cleared or destroyed. The array of slots comes
/// from the heap, or from the arena given at construction.
template <typename T>
class TEDVector {
  public:
    explicit TEDVector(bits::Arena* arena = nullptr) : arena_(arena) {}
    TEDVector(const TEDVector&) = delete;
    TEDVector& operator=(const TEDVector&) = delete;
    ~TEDVector() { Clear(); }

    /// Makes room for `extra` more items. If there is not enough, the capacity grows by `extra`
    /// + 8 rounded down to a multiple of 8; all new slots are null.
    void Reserve(std::uint32_t extra) {
        if (capacity_ >= count_ + extra) {
            return;
        }
        const std::uint32_t grow = (extra + 8U) & ~std::uint32_t{7};
        T** grown = NewArray<T*>(arena_, capacity_ + grow);
        if (items_ != nullptr) {
            std::copy_n(items_, capacity_, grown);
            DeleteArray(arena_, items_);
        }
        items_ = grown;
        capacity_ += grow;
    }

    /// Appends `item`, which is taken over, and returns its index.
    std::uint32_t PushBack(T* item) {
        std::unique_ptr<T> held(item);  // is ours even if there is no room for it
        Reserve(1);
        items_[count_] = held.release();
        return count_++;
    }

    /// Deletes the items from the first to the last and gives the array back.
    void Clear() {
        for (std::uint32_t index = 0; index < count_; ++index) {
            delete items_[index];
        }
        DeleteArray(arena_, items_);
        items_ = nullptr;
        capacity_ = 0;
        count_ = 0;
    }

    /// Slot `index`, below the capacity; not checked.
    [[nodiscard]] T*& operator[](std::uint32_t index) { return items_[index]; }
    [[nodiscard]] T* operator[](std::uint32_t index) const { return items_[index]; }

    /// The slots; null while the capacity is 0.
    [[nodiscard]] T* const* GetItems() const { return items_; }
    [[nodiscard]] std::uint32_t GetCapacity() const { return capacity_; }
    [[nodiscard]] std::uint32_t GetCount() const { return count_; }

  private:
    T** items_ = nullptr;
    std::uint32_t capacity_ = 0;  // slots
    std::uint32_t count_ = 0;
    bits::Arena* arena_;
};

}  // namespace quorvane::reflect
