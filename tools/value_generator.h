#pragma once

// Fills the record of a message with values drawn at random.

#include <cstdint>

#include "families/element_draw.h"
#include "families/family.h"
#include "tools/message_generator.h"

namespace quorvane::tool {

class ValueGenerator final : private families::Draw {
  public:
    ValueGenerator(const families::Family& family, Random& random, bits::Arena& memory,
                   Drops& drops)
        : Draw(family.codec, memory), types_(family.types), random_(random), drops_(drops) {}

    /// Fills the record of a message. The bits of `key` that `mask` keeps are those of the octet
    /// with the protocol discriminator, in the upper half of both. False if some field did not come
    /// to a length within its limits.
    bool FillMessage(const iecodec::MessageRow& message, bits::Cell& cell, std::uint32_t key,
                     std::uint32_t mask);

  private:
    void FillHeader(const iecodec::MessageRow& message, bits::Cell* cells, std::uint32_t key,
                    std::uint32_t mask);
    bool FillBody(const iecodec::MessageRow& message, bits::Cell* cells);
    /// Fills a value that takes from `least` to `most` bits, a multiple of `unit`.
    bool FillWithin(const iecodec::ValueRow& row, bits::Cell& cell, std::int64_t least,
                    std::int64_t most, std::int64_t unit);
    /// Fills a value of about `most` bits at most; what it takes is left to chance.
    bool Fill(const iecodec::ValueRow& row, bits::Cell& cell, std::int64_t most) override;
    std::uint32_t UpTo(std::uint32_t most) override { return random_.UpTo(most); }

    bool FillField(const iecodec::FieldRow& field, bits::Cell& cell);
    bool IsMistakable(const iecodec::MessageRow& message, const iecodec::FieldRow& field,
                      std::uint32_t octet, const bits::Cell* cells) const;
    bool ComesBack(const iecodec::ValueRow& row, const bits::Cell& cell, std::int32_t width);
    void FillBinary(const iecodec::ValueRow& row, bits::Cell& cell, std::int64_t most);
    bool FillParts(const iecodec::ValueRow& row, bits::Cell& cell, std::int64_t most);
    bool FillPart(const iecodec::PartRow& part, bits::Cell* cells, std::int64_t left);
    bool FillChoice(const iecodec::ValueRow& row, bits::Cell& cell, std::int64_t most);
    bool FillSequence(const iecodec::ValueRow& row, bits::Cell& cell, std::int64_t most);
    bool FillExtension(const iecodec::ValueRow& row, bits::Cell& cell, std::int64_t most);
    bool FillStructure(const iecodec::ValueRow& row, bits::Cell& cell, std::int64_t most,
                       std::int64_t unit);
    bool FillMessageSet(const iecodec::ValueRow& row, bits::Cell& cell);
    std::uint32_t Bits(std::int32_t width);

    /// Notes that a value of the row was dropped; false.
    bool Drop(DropReason reason, const iecodec::ValueRow& row);
    [[nodiscard]] bool SameRecord(std::string_view type, const bits::Cell& a,
                                  const bits::Cell& b) const;

    const reflect::TypeTables& types_;
    Random& random_;
    Drops& drops_;
    /// Where in an octet the fields of the message begin: L and H depend on it.
    std::int32_t start_ = 0;
};

}  // namespace quorvane::tool
