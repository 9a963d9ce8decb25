#include "iecodec/value_encoder.h"

#include <algorithm>
#include <utility>

#include "csn/csn_record.h"
#include "iecodec/message_encoder.h"

namespace quorvane::iecodec {
namespace {

using bits::Cell;
using bits::Outcome;

Outcome EncodeBinary(EncodeContext& context, const ValueRow& row, std::int64_t position,
                     const Cell& cell) {
    if (cell.number > 0) {
        context.writer.Copy(position, cell.octets, cell.number);
    }
    WriteZeros(context, position + cell.number, position + row.width);
    return std::max<std::int64_t>(cell.number, row.width);
}

/// Writes a part and returns its bits, or a code.
Outcome EncodePart(EncodeContext& context, const PartRow& part, std::int64_t position,
                   const Cell& owner) {
    const auto encodeAt = [&](std::int64_t start) {
        return EncodeValue(context, RowAt(context, part.value), start,
                           MemberOf(owner, part.element));
    };
    switch (part.kind) {
        case PartKind::kSkip:
            WriteZeros(context, position, position + part.width);
            return part.width;
        case PartKind::kCounted: {
            const Outcome result = encodeAt(position + 8);
            if (result.Failed()) {
                return result;
            }
            constexpr std::int64_t kMostBits = 8 * std::int64_t{255};
            if (!context.CheckLength(MemberOf(owner, part.element), result.Bits(), 0, kMostBits,
                                     context.checked)) {
                return kSyntaxError;
            }
            context.writer.Write(position, static_cast<std::uint32_t>(result.Bits() >> 3), 8);
            return result.Plus(8);
        }
        case PartKind::kInteger:
        case PartKind::kValue:
        case PartKind::kRest:
            break;
    }
    return encodeAt(position);
}

/// The parts that are written: of a record that is checked, those of a structure that may be cut
/// short up to the last one that is set.
std::span<const PartRow> WrittenParts(const EncodeContext& context, const ValueRow& row,
                                      const Cell& cell) {
    const auto parts = context.tables.parts.subspan(row.first, row.count);
    if (!context.checked || row.shape != Shape::kTruncatable) {
        return parts;
    }
    const auto last = std::find_if(parts.rbegin(), parts.rend(), [&](const PartRow& part) {
        return part.kind != PartKind::kSkip && MemberOf(cell, part.element).reached;
    });
    return parts.first(static_cast<std::size_t>(parts.rend() - last));
}

Outcome EncodeParts(EncodeContext& context, const ValueRow& row, std::int64_t position,
                    const Cell& cell) {
    const auto parts = WrittenParts(context, row, cell);
    std::int64_t cursor = position;
    for (const PartRow& part : parts) {
        if (part.kind != PartKind::kSkip &&
            !context.DemandAt(cursor, MemberOf(cell, part.element))) {
            return kSyntaxError;
        }
        const Outcome result = EncodePart(context, part, cursor, cell);
        if (result.Failed()) {
            return result;
        }
        const std::int64_t behind = cursor + result.Bits();
        // A fixed place stays as wide as it is, whatever its value came to.
        cursor = row.shape == Shape::kFixed ? cursor + part.width : behind;
        WriteZeros(context, behind, cursor);
    }
    if (parts.size() < row.count) {
        // It ends with the octet.
        const std::int64_t end = position + ((cursor - position + 7) & ~std::int64_t{7});
        WriteZeros(context, cursor, end);
        cursor = end;
    }
    return cursor - position;
}

const AlternativeRow* ChosenAlternative(const EncodeContext& context, const ValueRow& row,
                                        const Cell& cell) {
    const auto rows = context.tables.alternatives.subspan(row.first, row.count);
    const auto found = std::find_if(rows.begin(), rows.end(), [&](const AlternativeRow& candidate) {
        return candidate.tag == cell.number;
    });
    return found == rows.end() ? nullptr : &*found;
}

/// Whether `selector` chooses an alternative that is not the default one.
bool IsSelector(const EncodeContext& context, const ValueRow& row, std::uint32_t selector) {
    const auto rows = context.tables.alternatives.subspan(row.first, row.count);
    return std::any_of(rows.begin(), rows.end(), [&](const AlternativeRow& alternative) {
        return !alternative.isDefault && alternative.selector == selector;
    });
}

Outcome EncodeChoice(EncodeContext& context, const ValueRow& row, std::int64_t position,
                     const Cell& cell) {
    const AlternativeRow* chosen = ChosenAlternative(context, row, cell);
    if (chosen == nullptr) {
        if (context.checked) {
            context.Refuse({Refusal::Reason::kNoChoice, &cell});
            return kSyntaxError;
        }
        return 0;
    }
    const std::int64_t selectorAt = position + row.selectorOffset;
    if (!chosen->isDefault) {
        context.selectorBegin = selectorAt;
        context.selectorEnd = selectorAt + row.selectorWidth;
    }
    const Outcome result =
        context.Demand(*cell.cells)
            ? EncodeValue(context, RowAt(context, chosen->value), position, *cell.cells)
            : Outcome(kSyntaxError);
    if (result.Failed()) {
        return result;
    }
    // The alternative may hold the selector as spare bits; a default one writes what it knows.
    if (!chosen->isDefault) {
        context.writer.Write(selectorAt, chosen->selector, row.selectorWidth);
    } else if (IsSelector(context, row,
                          context.writer.Reader().Read(selectorAt, row.selectorWidth))) {
        context.Refuse({Refusal::Reason::kSelector, &cell});
        return kSyntaxError;
    }
    return result;
}

Outcome EncodeSequence(EncodeContext& context, const ValueRow& row, std::int64_t position,
                       const Cell& cell) {
    const ValueRow& item = RowAt(context, row.item);
    std::int64_t cursor = position;
    for (std::uint32_t index = 0; index < cell.number; ++index) {
        const Outcome result = context.Demand(cell.cells[index])
                                   ? EncodeValue(context, item, cursor, cell.cells[index])
                                   : Outcome(kSyntaxError);
        if (result.Failed()) {
            context.Refuse({Refusal::Reason::kNotWritten, &cell.cells[index]});
            context.diagnostics.Report(row.encodeNumber, "Error encoding sequence", row.name);
            return kSyntaxError;
        }
        cursor += result.Bits();
    }
    return cursor - position;
}

/// Octet groups up to the first one that the record has not got, then the remainder.
class ExtensionEncoder {
  public:
    ExtensionEncoder(EncodeContext& context, const ValueRow& row, std::int64_t position,
                     const Cell& cell)
        : context_(context), row_(row), cell_(cell), start_(position), cursor_(position) {}

    Outcome Run() {
        for (const GroupRow& group : context_.tables.groups.subspan(row_.first, row_.count)) {
            const auto octets = context_.tables.octets.subspan(group.firstOctet, group.octetCount);
            if (!IsPresent(octets.front())) {
                return cursor_ - start_;
            }
            if (!WriteGroup(octets)) {
                return kSyntaxError;
            }
        }
        if (row_.item == kNone) {
            return cursor_ - start_;
        }
        const Cell& remainder = MemberOf(cell_, row_.element);
        const Outcome result =
            context_.Demand(remainder)
                ? EncodeValue(context_, RowAt(context_, row_.item), cursor_, remainder)
                : Outcome(kSyntaxError);
        if (result.Failed()) {
            context_.diagnostics.Report(row_.encodeNumber, "Error encoding remainder of",
                                        row_.name);
            return kSyntaxError;
        }
        return cursor_ - start_ + result.Bits();
    }

  private:
    [[nodiscard]] bool IsPresent(const OctetRow& octet) const {
        return octet.flagElement == kNone || MemberOf(cell_, octet.flagElement).present;
    }

    /// Whether the parts of the octets that are there are set.
    bool WriteGroup(std::span<const OctetRow> octets) {
        for (std::size_t index = 0; index < octets.size() && IsPresent(octets[index]); ++index) {
            const bool followed = index + 1 < octets.size() && IsPresent(octets[index + 1]);
            context_.writer.Write(cursor_, followed ? 0 : 1, 1);
            std::int64_t position = cursor_ + 1;
            for (const PartRow& part :
                 context_.tables.parts.subspan(octets[index].firstPart, octets[index].partCount)) {
                if (part.kind != PartKind::kSkip &&
                    !context_.Demand(MemberOf(cell_, part.element))) {
                    return false;
                }
                // Integers, which never fail.
                static_cast<void>(EncodePart(context_, part, position, cell_));
                position += part.width;
            }
            cursor_ += 8;
        }
        return true;
    }

    EncodeContext& context_;
    const ValueRow& row_;
    const Cell& cell_;
    std::int64_t start_;
    std::int64_t cursor_;
};

Outcome EncodeMessageSet(EncodeContext& context, const ValueRow& row, std::int64_t position,
                         const Cell& cell) {
    const AlternativeRow* chosen = ChosenAlternative(context, row, cell);
    if (chosen == nullptr) {
        return 0;
    }
    return EncodeMessage(context, context.tables.messages[chosen->value], position, *cell.cells);
}

/// A special element. Which of its parts were set is not noted, so that none can be demanded.
Outcome EncodeSpecial(EncodeContext& context, const ValueRow& row, std::int64_t position,
                      const Cell& cell) {
    const bool checked = std::exchange(context.checked, false);
    const Outcome result = context.tables.specials[row.item]->encode(context, row, position, cell);
    context.checked = checked;
    return result;
}

}  // namespace

const Cell& MemberOf(const Cell& cell, std::size_t element) {
    return cell.cells == nullptr ? bits::kEmptyCell : cell.cells[element];
}

Outcome EncodeValue(EncodeContext& context, const ValueRow& row, std::int64_t position,
                    const Cell& cell) {
    switch (row.shape) {
        case Shape::kInteger:
            context.writer.Write(position, cell.number, row.width);
            return row.width;
        case Shape::kBinary:
            return EncodeBinary(context, row, position, cell);
        case Shape::kFixed:
        case Shape::kTruncatable:
        case Shape::kSerial:
            return EncodeParts(context, row, position, cell);
        case Shape::kChoice:
            return EncodeChoice(context, row, position, cell);
        case Shape::kSequence:
            return EncodeSequence(context, row, position, cell);
        case Shape::kExtension:
            return ExtensionEncoder(context, row, position, cell).Run();
        case Shape::kCsn:
            return csn::EncodeCsn(context.tables.structures[row.item], context.writer,
                                  static_cast<std::int32_t>(position), cell);
        case Shape::kMessageSet:
            return EncodeMessageSet(context, row, position, cell);
        case Shape::kMessageBody:
            return EncodeMessageBody(context, context.tables.messages[row.item], position, cell);
        case Shape::kSpecial:
            return EncodeSpecial(context, row, position, cell);
    }
    return kSyntaxError;  // unreachable: each shape returns
}

}  // namespace quorvane::iecodec
