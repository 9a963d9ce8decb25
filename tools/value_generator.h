#pragma once

// Fills the record of a message with values drawn at random.

#include <cstdint>

#include "families/family.h"
#include "tools/message_generator.h"

namespace quorvane::tool {

class ValueGenerator {
  public:
    ValueGenerator(const families::Family& family, Random& random, bits::Arena& arena)
        : tables_(family.codec), random_(random), arena_(arena) {}

    /// Fills the fields of `message` behind its header. False if some field did not come to a
    /// length within its limits.
    bool FillBody(const iecodec::MessageRow& message, bits::Cell* cells);

    /// Fills the members of a header. The bits of `key` that `mask` keeps are those of the first
    /// octet, in the upper half of both.
    void FillHeader(const iecodec::MessageRow& message, bits::Cell* cells, std::uint32_t key,
                    std::uint32_t mask);

  private:
    /// Fills a value that takes from `least` to `most` bits, a whole number of octets unless the
    /// two are the same.
    bool FillWithin(const iecodec::ValueRow& row, bits::Cell& cell, std::int64_t least,
                    std::int64_t most);
    /// Fills a value of about `most` bits at most; what it takes is left to chance.
    bool Fill(const iecodec::ValueRow& row, bits::Cell& cell, std::int64_t most);

    bool FillField(const iecodec::FieldRow& field, bits::Cell& cell);
    bool IsMistakable(const iecodec::MessageRow& message, const iecodec::FieldRow& field,
                      const bits::Cell* cells) const;
    void FillBinary(const iecodec::ValueRow& row, bits::Cell& cell, std::int64_t most);
    bool FillParts(const iecodec::ValueRow& row, bits::Cell& cell, std::int64_t most);
    bool FillPart(const iecodec::PartRow& part, bits::Cell* cells, std::int64_t left);
    bool FillChoice(const iecodec::ValueRow& row, bits::Cell& cell, std::int64_t most);
    bool FillSequence(const iecodec::ValueRow& row, bits::Cell& cell, std::int64_t most);
    bool FillExtension(const iecodec::ValueRow& row, bits::Cell& cell, std::int64_t most);
    bool FillStructure(const iecodec::ValueRow& row, bits::Cell& cell, std::int64_t most);
    bool FillMessageSet(const iecodec::ValueRow& row, bits::Cell& cell);
    bool FillSpecial(const iecodec::ValueRow& row, bits::Cell& cell, std::int64_t most);

    void FillDigits(bits::Cell& cell, std::uint32_t least, std::uint32_t most);
    void FillTemplate(const iecodec::ValueRow& row, bits::Cell& cell);
    bool FillAreaList(const iecodec::ValueRow& row, bits::Cell& cell);
    bits::Cell* Members(const iecodec::ValueRow& row, bits::Cell& cell) {
        return bits::StructCells(arena_, cell, row.members);
    }
    std::uint32_t Bits(std::int32_t width);

    const iecodec::CodecTables& tables_;
    Random& random_;
    bits::Arena& arena_;
};

}  // namespace quorvane::tool
