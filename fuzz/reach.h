#pragma once

// How far into the tables a target comes. Messages are rows of data, so that the edges of the code
// tell little of it: what counts is which messages were decoded, and which of their fields.
//
// Tests: tests/unit/fuzz_reach_test.cpp.

#include <cstddef>
#include <cstdint>
#include <map>
#include <span>
#include <vector>

#include "families/family.h"
#include "iecodec/message_container.h"
#include "quorvane/decode.h"

namespace quorvane::fuzz {

/// Counts the messages of all decodings, and the members and alternatives of their types.
class Reach {
  public:
    /// Of what is reached one octet of `counters` is set; there are enough of them.
    explicit Reach(std::span<std::uint8_t> counters);

    /// Notes a message of the set, and what a decoder has come to in it.
    void NoteMessage(const families::Family& family, const iecodec::MessageSetRow& set,
                     const iecodec::MessageContainer& container);
    /// The same of a message's octets, unless there is none in them.
    void NoteMessage(Decoding decoding, const PaddedMessage& message);
    void NoteMessage(Decoding decoding, std::span<const std::uint8_t> octets);
    /// Notes what a decoder has come to in a value of the type.
    void NoteValue(const reflect::TypeTables& types, std::uint16_t type, const bits::Cell& cell);

    struct Count {
        std::size_t reached = 0;
        std::size_t all = 0;
    };
    [[nodiscard]] Count Messages() const;
    [[nodiscard]] Count Fields() const;

  private:
    // Rows are numbered over all families: types, of which messages are the only ones that count,
    // and elements, of which those count that a message has somewhere.
    struct FirstRows {
        std::size_t type;
        std::size_t element;
    };

    void AddMessage(const reflect::TypeTables& types, std::uint16_t type);
    void AddFields(const reflect::TypeTables& types, std::uint16_t type);
    void NoteItems(const reflect::TypeTables& types, const reflect::TypeRow& row,
                   const bits::Cell& cell);
    void NoteStruct(const reflect::TypeTables& types, const reflect::TypeRow& row,
                    const bits::Cell& cell);
    void NoteUnion(const reflect::TypeTables& types, const reflect::TypeRow& row,
                   const bits::Cell& cell);
    void Set(std::size_t row);
    [[nodiscard]] Count CountOf(std::size_t first, std::size_t end) const;

    enum class Row : std::uint8_t { kOther, kNotReached, kReached };

    std::span<std::uint8_t> counters_;
    std::map<const reflect::TypeRow*, FirstRows> firstRows_;  // by the family's first type
    std::size_t typeCount_ = 0;
    std::vector<Row> rows_;  // types, elements
};

/// That of this run. Its counters are those that libFuzzer takes as new code; the counts are
/// printed when the program ends.
Reach& ReachOfThisRun();

}  // namespace quorvane::fuzz
