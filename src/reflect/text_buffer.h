#pragma once

// The narrow text that descriptors and value trees print into. One buffer serves many calls: it
// grows to what the longest text needs and is cleared, not freed. It belongs to one thread.
//
// Tests: tests/unit/reflect_text_test.cpp.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>

#include "reflect/text_pieces.h"

namespace quorvane::reflect {

class TextBuffer {
  public:
    /// How many octets Room promises on top of what it is asked for: the fixed-size pieces of a
    /// line (a location, a number, a line end) and what a copying step overwrites fit in it.
    static constexpr std::size_t kSlack = 64;

    /// How many octets a cleared buffer keeps at most.
    static constexpr std::size_t kMostKept = std::size_t{1} << 20;

    TextBuffer() = default;
    TextBuffer(const TextBuffer&) = delete;
    TextBuffer& operator=(const TextBuffer&) = delete;

    void Append(char character) { Advance(PutCharacter(Room(1), character)); }

    void Append(std::string_view text) {
        char* at = Room(text.size());
        if (!text.empty()) {
            std::memcpy(at, text.data(), text.size());
        }
        Advance(at + text.size());
    }

    /// Appends `value` in decimal.
    void AppendUnsigned(std::uint32_t value) { Advance(PutUnsigned(Room(0), value)); }
    void AppendSigned(std::int32_t value) { Advance(PutSigned(Room(0), value)); }

    /// Appends two blanks for each of `levels`.
    void AppendIndent(std::uint32_t levels) {
        Advance(PutIndent(Room(2 * std::size_t{levels}), levels));
    }

    /// Appends one line feed.
    void AppendLineEnd() { Append('\n'); }

    /// The text so far; valid until the next append or Clear.
    [[nodiscard]] std::string_view View() const {
        return {memory_.get(), static_cast<std::size_t>(next_ - memory_.get())};
    }

    /// Empties the text. Keeps the memory unless it has grown past kMostKept octets.
    void Clear();

    /// How many octets the text may have without another allocation.
    [[nodiscard]] std::size_t GetCapacity() const {
        return static_cast<std::size_t>(limit_ - memory_.get());
    }

    /// For renderers that write several pieces under one check: where the text goes on, with
    /// `count` + kSlack writable octets, their contents not initialised. What is written counts
    /// once Advance has been given its end; whatever stands behind that end is overwritten later.
    [[nodiscard]] char* Room(std::size_t count) {
        // The text may have gone into the slack. Not "<": the first call has to allocate even for
        // a count of 0.
        if (limit_ - next_ <= static_cast<std::ptrdiff_t>(count)) {
            Grow(count);
        }
        return next_;
    }
    void Advance(char* end) { next_ = end; }

    /// The same where the text has gone on up to `at` without Advance.
    [[nodiscard]] char* RoomAt(char* at, std::size_t count) {
        if (limit_ - at > static_cast<std::ptrdiff_t>(count)) {
            return at;
        }
        Advance(at);
        Grow(count);
        return next_;
    }

  private:
    static constexpr std::size_t kFirstCapacity = 4096;

    static char* PutCharacter(char* at, char character) {
        *at = character;
        return at + 1;
    }

    void Grow(std::size_t count);

    std::unique_ptr<char[]> memory_;
    char* next_ = nullptr;
    char* limit_ = nullptr;  // kSlack octets before the end of memory_
};

}  // namespace quorvane::reflect
