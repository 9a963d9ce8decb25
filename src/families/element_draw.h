#pragma once

// Random values of elements with a wire form of their own, for those who generate messages. What
// draws an element stands beside its codec, in a file *_draw.cpp, and is no part of the library.
//
// Tests: tests/round_trip_test.cpp.

#include <cstdint>

#include "iecodec/tables.h"

namespace quorvane::families {

/// What a drawing function gets from the generator.
class Draw {
  public:
    Draw(const iecodec::CodecTables& codec, bits::Arena& memory) : tables(codec), arena(memory) {}
    virtual ~Draw() = default;
    Draw(const Draw&) = delete;
    Draw& operator=(const Draw&) = delete;

    /// A number from 0 to `most`.
    virtual std::uint32_t UpTo(std::uint32_t most) = 0;

    /// Fills `cell` with a value of another row, of about `most` bits at most.
    virtual bool Fill(const iecodec::ValueRow& row, bits::Cell& cell, std::int64_t most) = 0;

    bool OneIn(std::uint32_t n) { return UpTo(n - 1) == 0; }
    bits::Cell* Members(const iecodec::ValueRow& row, bits::Cell& cell) {
        return bits::StructCells(arena, cell, row.members);
    }
    /// Makes `cell` a sequence of `size` items.
    void Resize(bits::Cell& cell, std::uint32_t size) {
        static_cast<void>(bits::SetSize(arena, cell, static_cast<std::int32_t>(size), size));
    }

    const iecodec::CodecTables& tables;
    bits::Arena& arena;
};

/// Tells the generators how an element is drawn. One static object for each element.
class ElementDraw {
  public:
    /// Fills the zeroed `cell`; false if it drew nothing valid.
    using Function = bool (*)(Draw& draw, const iecodec::ValueRow& row, bits::Cell& cell,
                              std::int64_t most);

    ElementDraw(const iecodec::SpecialElement& element, Function function)
        : element_(&element), function_(function), next_(first_) {
        first_ = this;
    }

    /// Null if nothing draws the element.
    static Function Of(const iecodec::SpecialElement* element) {
        for (const ElementDraw* entry = first_; entry != nullptr; entry = entry->next_) {
            if (entry->element_ == element) {
                return entry->function_;
            }
        }
        return nullptr;
    }

  private:
    static inline const ElementDraw* first_ = nullptr;

    const iecodec::SpecialElement* element_;
    Function function_;
    const ElementDraw* next_;
};

}  // namespace quorvane::families
