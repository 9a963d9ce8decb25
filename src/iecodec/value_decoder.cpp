#include "iecodec/value_decoder.h"

#include <algorithm>
#include <limits>
#include <string>

#include "csn/csn_record.h"
#include "iecodec/message_decoder.h"

namespace quorvane::iecodec {
namespace {

using bits::Cell;
using bits::MakeFieldLocator;
using bits::Outcome;

void StoreInteger(Cell& cell, std::uint32_t number, bool located, std::int64_t position,
                  std::int32_t width) {
    cell.number = number;
    cell.reached = true;
    if (located) {
        MakeFieldLocator(cell.location, position, width);
    }
}

Outcome DecodeBinary(DecodeContext& context, const ValueRow& row, std::int64_t position, Cell& cell,
                     std::int64_t length) {
    if (length < 0) {
        context.diagnostics.Refuse(cell, position, row.decodeNumber, "Error decoding subfield",
                                   row.name);
        return kSyntaxError;
    }
    bits::StoreBinary(context.arena, cell, context.reader, position, length, row.capacity);
    if (!row.located) {
        cell.location = 0;
    }
    return length;
}

/// The parts of one structure, whose value ends at `end`.
class PartDecoder {
  public:
    PartDecoder(DecodeContext& context, Cell* cells, std::int64_t end)
        : context_(context), cells_(cells), end_(end), window_(context.reader) {}

    /// The result is that of a part that takes the rest, else the part's width: what lies in a
    /// fixed place is as wide as its place, whatever its decoder came to.
    Outcome Decode(const PartRow& part, std::int64_t position) {
        if (part.kind == PartRow::Kind::kInteger) {
            StoreInteger(cells_[part.element], window_.Read(position, part.width), part.located,
                         position, part.width);
            return part.width;
        }
        return part.kind == PartRow::Kind::kSkip ? Outcome(part.width)
                                                 : DecodeInside(part, position);
    }

    std::uint32_t Read(std::int64_t position, std::int32_t count) {
        return window_.Read(position, count);
    }

  private:
    Outcome DecodeInside(const PartRow& part, std::int64_t position) {
        const ValueRow& row = RowAt(context_, part.value);
        Cell& cell = cells_[part.element];
        if (part.kind == PartRow::Kind::kRest) {
            return DecodeValue(context_, row, position, cell, end_ - position);
        }
        if (part.kind == PartRow::Kind::kCounted) {
            // The length octet alone says where the next part starts.
            const std::int64_t counted = 8 * std::int64_t{window_.Read(position, 8)};
            static_cast<void>(DecodeValue(context_, row, position + 8, cell, counted));
            return 8 + counted;
        }
        static_cast<void>(DecodeValue(context_, row, position, cell, part.width));
        return part.width;
    }

    DecodeContext& context_;
    Cell* cells_;
    std::int64_t end_;
    bits::BitWindow window_;
};

Outcome DecodeFixed(DecodeContext& context, const ValueRow& row, std::int64_t position,
                    Cell& cell) {
    PartDecoder parts(context, bits::StructCells(context.arena, cell, row.members),
                      position + row.width);
    for (const PartRow& part : context.tables.parts.subspan(row.first, row.count)) {
        // Fixed structures have no part that takes the rest.
        static_cast<void>(parts.Decode(part, position + part.offset));
    }
    return row.width;
}

Outcome DecodeTruncatable(DecodeContext& context, const ValueRow& row, std::int64_t position,
                          Cell& cell, std::int64_t length) {
    PartDecoder parts(context, bits::StructCells(context.arena, cell, row.members),
                      position + length);
    std::int64_t taken = 0;
    for (const PartRow& part : context.tables.parts.subspan(row.first, row.count)) {
        if (length <= part.offset) {
            return part.offset;
        }
        const Outcome result = parts.Decode(part, position + part.offset);
        if (result.Failed()) {
            return result;
        }
        taken = part.offset + result.Bits();
    }
    return taken;
}

Outcome DecodeSerial(DecodeContext& context, const ValueRow& row, std::int64_t position, Cell& cell,
                     std::int64_t length) {
    PartDecoder parts(context, bits::StructCells(context.arena, cell, row.members),
                      position + length);
    std::int64_t cursor = position;
    for (const PartRow& part : context.tables.parts.subspan(row.first, row.count)) {
        const Outcome result = parts.Decode(part, cursor);
        if (result.Failed()) {
            return result;
        }
        cursor += result.Bits();
    }
    return cursor - position;
}

Outcome DecodeChoice(DecodeContext& context, const ValueRow& row, std::int64_t position, Cell& cell,
                     std::int64_t length) {
    const std::uint32_t selector =
        context.reader.Read(position + row.selectorOffset, row.selectorWidth);
    const AlternativeRow* chosen = nullptr;
    for (const AlternativeRow& alternative :
         context.tables.alternatives.subspan(row.first, row.count)) {
        if (alternative.isDefault ? chosen == nullptr : alternative.selector == selector) {
            chosen = &alternative;
        }
    }
    Cell& body = bits::ChooseAlternative(context.arena, cell, chosen->tag);
    return DecodeValue(context, RowAt(context, chosen->value), position, body, length);
}

Outcome DecodeSequence(DecodeContext& context, const ValueRow& row, std::int64_t position,
                       Cell& cell, std::int64_t length) {
    const ValueRow& item = RowAt(context, row.item);
    std::int64_t taken = 0;
    cell.number = 0;
    for (std::int32_t count = 1; taken < length; ++count) {
        if (bits::SetSize(context.arena, cell, count, row.capacity).Failed()) {
            break;
        }
        const Outcome result =
            DecodeValue(context, item, position + taken, cell.cells[count - 1], length - taken);
        if (result.Failed()) {
            context.diagnostics.Refuse(cell, position + taken, row.decodeNumber,
                                       "Error decoding sequence", row.name);
            return kSyntaxError;
        }
        taken += result.Bits();
    }
    return taken;
}

/// The octet groups of a 0/1ext information element, then its remainder.
class ExtensionDecoder {
  public:
    ExtensionDecoder(DecodeContext& context, const ValueRow& row, std::int64_t position, Cell& cell,
                     std::int64_t length)
        : context_(context),
          row_(row),
          cell_(cell),
          cells_(bits::StructCells(context.arena, cell, row.members)),
          parts_(context, cells_, position + length),
          start_(position),
          end_(position + length),
          cursor_(position) {}

    Outcome Run() {
        for (const GroupRow& group : context_.tables.groups.subspan(row_.first, row_.count)) {
            if (cursor_ >= end_) {
                if (!group.mandatory) {
                    return cursor_ - start_;
                }
                context_.diagnostics.Refuse(cell_, cursor_, group.missingNumber,
                                            "Error decoding 0/1ext IE: missing mandatory group",
                                            std::to_string(group.number));
                return kSyntaxError;
            }
            if (!DecodeGroup(group)) {
                context_.diagnostics.Refuse(
                    cell_, cursor_, row_.shortNumber,
                    "Error decoding 0/1ext IE: information element too short");
                return kSyntaxError;
            }
        }
        if (row_.item == kNone) {
            return cursor_ - start_;
        }
        const Outcome result = DecodeValue(context_, RowAt(context_, row_.item), cursor_,
                                           cells_[row_.element], end_ - cursor_);
        if (result.Failed()) {
            context_.diagnostics.Refuse(cells_[row_.element], cursor_, row_.decodeNumber,
                                        "Error decoding remainder of", row_.name);
            return kSyntaxError;
        }
        return cursor_ - start_ + result.Bits();
    }

  private:
    [[nodiscard]] bool Closed(std::int64_t octet) { return parts_.Read(octet, 1) != 0; }

    bool DecodeGroup(const GroupRow& group) {
        const auto octets = context_.tables.octets.subspan(group.firstOctet, group.octetCount);
        for (const OctetRow& octet : octets) {
            if (&octet != &octets.front()) {
                if (Closed(cursor_)) {
                    break;
                }
                cursor_ += 8;
                if (cursor_ >= end_) {
                    return false;
                }
            }
            if (octet.flagElement != kNone) {
                cells_[octet.flagElement].present = true;
            }
            for (const PartRow& part :
                 context_.tables.parts.subspan(octet.firstPart, octet.partCount)) {
                // Parts of an octet have fixed places.
                static_cast<void>(parts_.Decode(part, cursor_ + part.offset));
            }
        }
        // Octets of the group that are not known.
        while (!Closed(cursor_) && cursor_ < end_) {
            cursor_ += 8;
        }
        cursor_ += 8;
        return true;
    }

    DecodeContext& context_;
    const ValueRow& row_;
    Cell& cell_;
    Cell* cells_;
    PartDecoder parts_;
    std::int64_t start_;
    std::int64_t end_;
    std::int64_t cursor_;
};

/// A CSN.1 structure. The machine counts bits in 32 bits: what lies beyond is out of its reach, and
/// a length far below zero is as good as any below.
Outcome DecodeStructure(DecodeContext& context, const ValueRow& row, std::int64_t position,
                        Cell& cell, std::int64_t length) {
    constexpr std::int64_t kLeast = std::numeric_limits<std::int32_t>::min();
    if (position + length > std::numeric_limits<std::int32_t>::max()) {
        return kSyntaxError;
    }
    return csn::DecodeCsn(context.tables.structures[row.item], context.reader, context.arena,
                          static_cast<std::int32_t>(position),
                          static_cast<std::int32_t>(std::max<std::int64_t>(length, kLeast)), cell);
}

/// A whole message as a value, chosen by its type alone.
Outcome DecodeMessageSet(DecodeContext& context, const ValueRow& row, std::int64_t position,
                         Cell& cell, std::int64_t length) {
    if (length < row.selectorOffset + row.selectorWidth) {
        return 0;
    }
    const std::uint32_t code =
        context.reader.Read(position + row.selectorOffset, row.selectorWidth);
    for (const AlternativeRow& alternative :
         context.tables.alternatives.subspan(row.first, row.count)) {
        if (alternative.selector == code) {
            Cell& body = bits::ChooseAlternative(context.arena, cell, alternative.tag);
            return DecodeMessage(context, context.tables.messages[alternative.value], position,
                                 body, length);
        }
    }
    return 0;
}

}  // namespace

Outcome DecodeValue(DecodeContext& context, const ValueRow& row, std::int64_t position, Cell& cell,
                    std::int64_t length) {
    cell.reached = true;
    switch (row.shape) {
        case Shape::kInteger:
            StoreInteger(cell, context.reader.Read(position, row.width), row.located, position,
                         row.width);
            return row.width;
        case Shape::kBinary:
            return DecodeBinary(context, row, position, cell, length);
        case Shape::kFixed:
            return DecodeFixed(context, row, position, cell);
        case Shape::kTruncatable:
            return DecodeTruncatable(context, row, position, cell, length);
        case Shape::kSerial:
            return DecodeSerial(context, row, position, cell, length);
        case Shape::kChoice:
            return DecodeChoice(context, row, position, cell, length);
        case Shape::kSequence:
            return DecodeSequence(context, row, position, cell, length);
        case Shape::kExtension:
            return ExtensionDecoder(context, row, position, cell, length).Run();
        case Shape::kCsn:
            return DecodeStructure(context, row, position, cell, length);
        case Shape::kMessageSet:
            return DecodeMessageSet(context, row, position, cell, length);
        case Shape::kMessageBody:
            return DecodeMessageBody(context, context.tables.messages[row.item], position, cell,
                                     length);
        case Shape::kSpecial:
            return context.tables.specials[row.item]->decode(context, row, position, cell, length);
    }
    return kSyntaxError;  // unreachable: each shape returns
}

}  // namespace quorvane::iecodec
