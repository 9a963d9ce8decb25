#include "tools/value_generator.h"

#include <algorithm>
#include <array>
#include <vector>

#include "csn/csn_record.h"
#include "iecodec/transaction_identifier.h"
#include "iecodec/value_decoder.h"
#include "iecodec/value_encoder.h"
#include "reflect/convert.h"

namespace quorvane::tool {
namespace {

using bits::Cell;
using iecodec::FieldRow;
using iecodec::kNone;
using iecodec::PartRow;
using iecodec::Shape;
using iecodec::ValueRow;
using Format = FieldRow::Format;
using Presence = FieldRow::Presence;

constexpr std::int64_t kRoom = 4096;  // octets

/// The bits that the value takes; negative if the encoder refuses it.
std::int64_t Measure(const iecodec::CodecTables& tables, const ValueRow& row, const Cell& cell) {
    std::array<std::uint8_t, kRoom> octets{};
    bits::BitWriter writer(octets.data(), kRoom);
    iecodec::Diagnostics diagnostics;
    iecodec::EncodeContext context{tables, writer, diagnostics};
    const bits::Outcome result = iecodec::EncodeValue(context, row, 0, cell);
    return writer.Overflowed() || result.Failed() ? -1 : result.Bits();
}

/// The first octet of a field that is a value alone; of one without bits no octet at all.
std::uint32_t FirstOctet(const iecodec::CodecTables& tables, const FieldRow& field,
                         const Cell& cell) {
    std::array<std::uint8_t, kRoom> octets{};
    bits::BitWriter writer(octets.data(), kRoom);
    iecodec::Diagnostics diagnostics;
    iecodec::EncodeContext context{tables, writer, diagnostics};
    const ValueRow& row = tables.values[field.value];
    const bits::Outcome result = iecodec::EncodeValue(context, row, 0, cell);
    return result == 0 ? 0x100 : octets[0];
}

/// Whether all values of the row take its width.
bool HasFixedWidth(const ValueRow& row) {
    return row.shape == Shape::kInteger || row.shape == Shape::kFixed ||
           (row.shape == Shape::kBinary && row.width != 0);
}

/// Encodes the structure from a bit of the first octet on; what is behind it is 0. Returns its
/// bits, or a negative code.
template <std::size_t kSize>
std::int32_t EncodeInto(const csn::CsnStructure& structure, const Cell& cell, std::int32_t start,
                        std::array<std::uint8_t, kSize>& octets) {
    bits::BitWriter writer(octets.data(), kSize);
    const bits::Outcome result = csn::EncodeCsn(structure, writer, start, cell);
    if (result.Failed() || writer.Overflowed()) {
        return -1;
    }
    const auto size = static_cast<std::int32_t>(result.Bits());
    const std::int32_t end = start + size;
    // Bits behind the result may have been touched on the way.
    std::fill(octets.begin() + (end + 7) / 8, octets.end(), std::uint8_t{0});
    if (end % 8 != 0) {
        octets[static_cast<std::size_t>(end / 8)] &=
            static_cast<std::uint8_t>(0xFF00U >> static_cast<std::uint32_t>(end % 8));
    }
    return size;
}

}  // namespace

std::uint32_t ValueGenerator::Bits(std::int32_t width) {
    return static_cast<std::uint32_t>(random_.Next() >> (64 - width));
}

void ValueGenerator::FillHeader(const iecodec::MessageRow& message, Cell* cells, std::uint32_t key,
                                std::uint32_t mask) {
    using Kind = iecodec::HeaderItemRow::Kind;
    std::int32_t offset = 0;
    for (const auto& item :
         tables.headerItems.subspan(message.firstHeaderItem, message.headerItemCount)) {
        switch (item.kind) {
            case Kind::kField:
            case Kind::kFieldAfterBody: {
                std::uint32_t value = Bits(item.width);
                if (offset + item.width <= 8) {
                    const std::int32_t shift = 16 - offset - item.width;
                    const std::uint32_t kept = (mask >> shift) & ((1U << item.width) - 1U);
                    value = (value & ~kept) | ((key >> shift) & kept);
                }
                cells[item.element].number = value;
                break;
            }
            case Kind::kExtendedIdentifier: {
                const std::uint32_t value = Bits(random_.OneIn(4) ? 7 : 3);
                cells[item.element].number = value == iecodec::kIdentifierExtended ? 0 : value;
                break;
            }
            case Kind::kPseudoLength:
                continue;  // the octet behind it is the one with the key
            case Kind::kConstant:
            case Kind::kMessageType:
                break;
        }
        offset += item.width;
    }
    start_ = offset % 8;
}

/// Whether the field, whose first octet that is, would be taken for an earlier one that is absent:
/// the octet is that one's identifier too, and nothing present stands between the two.
bool ValueGenerator::IsMistakable(const iecodec::MessageRow& message, const FieldRow& field,
                                  std::uint32_t octet, const Cell* cells) const {
    const auto fields = tables.fields.subspan(message.firstField, message.fieldCount);
    for (std::size_t index = static_cast<std::size_t>(&field - fields.data()); index-- > 0;) {
        const FieldRow& earlier = fields[index];
        const bool there =
            earlier.presence == Presence::kMandatory || cells[earlier.element].present;
        if (there && earlier.format != Format::kEndCheck) {
            return false;
        }
        const std::int32_t width = InfoOf(earlier.format).ieiWidth;
        if (width != 0 && (octet ^ earlier.iei) >> (8 - width) == 0) {
            return true;
        }
    }
    return false;
}

bool ValueGenerator::FillMessage(const iecodec::MessageRow& message, Cell& cell, std::uint32_t key,
                                 std::uint32_t mask) {
    if (message.value != kNone) {
        return Fill(tables.values[message.value], cell, 8 * kRoom);
    }
    Cell* cells = bits::StructCells(arena, cell, message.members);
    FillHeader(message, cells, key, mask);
    return FillBody(message, cells);
}

bool ValueGenerator::FillBody(const iecodec::MessageRow& message, Cell* cells) {
    for (const FieldRow& field : tables.fields.subspan(message.firstField, message.fieldCount)) {
        Cell& cell = cells[field.element];
        switch (field.presence) {
            case Presence::kMandatory:
                break;
            case Presence::kOptional:
                if (random_.OneIn(2) || IsMistakable(message, field, field.iei, cells)) {
                    continue;
                }
                cell.present = true;
                break;
            case Presence::kConditional: {
                if (!ConditionHolds(field, cells)) {
                    continue;
                }
                cell.present = true;
                break;
            }
        }
        if (field.value == kNone) {
            continue;
        }
        do {
            if (!FillField(field, cell)) {
                return false;
            }
        } while (field.format == Format::kRest &&
                 IsMistakable(message, field, FirstOctet(tables, field, cell), cells));
    }
    return true;
}

bool ValueGenerator::FillField(const FieldRow& field, Cell& cell) {
    const ValueRow& row = tables.values[field.value];
    if (const std::int32_t lengthWidth = InfoOf(field.format).lengthWidth; lengthWidth != 0) {
        const std::int64_t announced = (std::int64_t{1} << lengthWidth) - 1;
        const auto most = std::min<std::int64_t>(field.mostOctets, announced);
        return FillWithin(row, cell, 8 * std::int64_t{field.leastOctets}, 8 * most, 8);
    }
    if (field.format == Format::kRest) {
        constexpr std::int64_t kMostRest = 8 * 600;
        return FillWithin(row, cell, 0, kMostRest, 1);
    }
    // A condition's decider is drawn among few values, so that every field gets its turn.
    if (row.shape == Shape::kInteger && random_.OneIn(2)) {
        cell.number = Bits(std::min<std::int32_t>(row.width, 2));
        return true;
    }
    if (!field.unchecked) {
        return FillWithin(row, cell, field.width, field.width, 1);
    }
    do {
        if (!FillWithin(row, cell, 0, field.width, 1)) {
            return false;
        }
    } while (!ComesBack(row, cell, field.width));
    return true;
}

/// Whether the value, with zeros behind it up to that width, is the same when decoded.
bool ValueGenerator::ComesBack(const ValueRow& row, const Cell& cell, std::int32_t width) {
    std::array<std::uint8_t, kRoom> octets{};
    bits::BitWriter writer(octets.data(), kRoom);
    iecodec::Diagnostics diagnostics;
    iecodec::EncodeContext encode{tables, writer, diagnostics};
    static_cast<void>(iecodec::EncodeValue(encode, row, 0, cell));
    Cell back{};
    iecodec::DecodeContext decode{tables, writer.Reader(), arena, diagnostics};
    return !iecodec::DecodeValue(decode, row, 0, back, width).Failed() &&
           SameRecord(row.name, cell, back);
}

bool ValueGenerator::FillWithin(const ValueRow& row, Cell& cell, std::int64_t least,
                                std::int64_t most, std::int64_t unit) {
    constexpr int kTries = 60;
    const bool present = cell.present;
    for (int attempt = 0; attempt < kTries; ++attempt) {
        cell = {};
        cell.present = present;
        // Long values are rare, lest nested ones never fit.
        const std::int64_t wide = random_.OneIn(3) ? most : std::min(most, least + 160);
        const bool filled =
            row.shape == Shape::kCsn ? FillStructure(row, cell, wide, unit) : Fill(row, cell, wide);
        if (!filled) {
            continue;
        }
        const std::int64_t size = Measure(tables, row, cell);
        if (size >= least && size <= most && size % unit == 0) {
            return true;
        }
        Drop(size < 0 || HasFixedWidth(row) ? DropReason::kDoesNotComeBack : DropReason::kLength,
             row);
    }
    return false;
}

bool ValueGenerator::Fill(const ValueRow& row, Cell& cell, std::int64_t most) {
    switch (row.shape) {
        case Shape::kInteger:
            cell.number = Bits(row.width);
            return true;
        case Shape::kBinary:
            FillBinary(row, cell, most);
            return true;
        case Shape::kFixed:
        case Shape::kTruncatable:
        case Shape::kSerial:
            return FillParts(row, cell, most);
        case Shape::kChoice:
            return FillChoice(row, cell, most);
        case Shape::kSequence:
            return FillSequence(row, cell, most);
        case Shape::kExtension:
            return FillExtension(row, cell, most);
        case Shape::kCsn:
            return FillStructure(row, cell, most, 8);
        case Shape::kMessageSet:
            return FillMessageSet(row, cell);
        case Shape::kMessageBody: {
            const iecodec::MessageRow& message = tables.messages[row.item];
            return FillBody(message, bits::StructCells(arena, cell, message.members));
        }
        case Shape::kSpecial: {
            const auto draw = families::ElementDraw::Of(tables.specials[row.item]);
            return (draw != nullptr && draw(*this, row, cell, most)) ||
                   Drop(DropReason::kNoValue, row);  // unreachable: it is false
        }
    }
    return false;
}

void ValueGenerator::FillBinary(const ValueRow& row, Cell& cell, std::int64_t most) {
    const std::int64_t room =
        std::max<std::int64_t>(std::min<std::int64_t>(most, row.capacity) / 8, 0);
    const std::int64_t octets = row.width != 0
                                    ? (row.width + 7) / 8
                                    : std::int64_t{random_.UpTo(static_cast<std::uint32_t>(room))};
    cell.number =
        row.width != 0 ? std::uint32_t{row.width} : static_cast<std::uint32_t>(8 * octets);
    if (octets == 0) {
        return;
    }
    cell.octets = arena.AllocateZeroed<std::uint8_t>(static_cast<std::size_t>(octets));
    for (std::int64_t index = 0; index < octets; ++index) {
        cell.octets[index] = static_cast<std::uint8_t>(random_.UpTo(255));
    }
}

bool ValueGenerator::FillParts(const ValueRow& row, Cell& cell, std::int64_t most) {
    Cell* cells = Members(row, cell);
    std::int64_t left = most;
    for (const PartRow& part : tables.parts.subspan(row.first, row.count)) {
        if (!FillPart(part, cells, left)) {
            return false;
        }
        left -= part.width;
    }
    return true;
}

/// `left`: the bits up to the end of the structure.
bool ValueGenerator::FillPart(const PartRow& part, Cell* cells, std::int64_t left) {
    std::int64_t most = part.width;
    switch (part.kind) {
        case PartRow::Kind::kSkip:
            return true;
        case PartRow::Kind::kInteger:
            break;
        case PartRow::Kind::kValue:
            if (part.width != 0) {
                return FillWithin(tables.values[part.value], cells[part.element], most, most, 1);
            }
            break;
        case PartRow::Kind::kCounted:
        case PartRow::Kind::kRest:
            most = left - 8;
            break;
    }
    return Fill(tables.values[part.value], cells[part.element], most);
}

bool ValueGenerator::FillChoice(const ValueRow& row, Cell& cell, std::int64_t most) {
    const auto alternatives = tables.alternatives.subspan(row.first, row.count);
    const auto& chosen = alternatives[random_.UpTo(row.count - 1U)];
    Cell& body = bits::ChooseAlternative(arena, cell, chosen.tag);
    if (!Fill(tables.values[chosen.value], body, most)) {
        return false;
    }
    const ValueRow& inner = tables.values[chosen.value];
    if (!chosen.isDefault) {
        // The selector may be a member of the alternative.
        const bool fixedPlaces = inner.shape == Shape::kFixed || inner.shape == Shape::kTruncatable;
        for (const PartRow& part :
             tables.parts.subspan(fixedPlaces ? inner.first : 0, fixedPlaces ? inner.count : 0)) {
            if (part.kind == PartRow::Kind::kInteger && part.offset == row.selectorOffset) {
                body.cells[part.element].number = chosen.selector;
            }
        }
        return true;
    }
    std::array<std::uint8_t, kRoom> octets{};
    bits::BitWriter writer(octets.data(), kRoom);
    iecodec::Diagnostics diagnostics;
    iecodec::EncodeContext context{tables, writer, diagnostics};
    static_cast<void>(iecodec::EncodeValue(context, inner, 0, body));
    const std::uint32_t selector = writer.Reader().Read(row.selectorOffset, row.selectorWidth);
    const bool others = std::any_of(alternatives.begin(), alternatives.end(),
                                    [&](const iecodec::AlternativeRow& other) {
                                        return !other.isDefault && other.selector == selector;
                                    });
    return !others || Drop(DropReason::kOtherAlternative, row);  // unreachable: it is false
}

bool ValueGenerator::FillSequence(const ValueRow& row, Cell& cell, std::int64_t most) {
    const ValueRow& item = tables.values[row.item];
    std::int64_t left = most;
    const std::uint32_t wanted = random_.UpTo(row.capacity);
    for (std::uint32_t count = 1; count <= wanted && left > 0; ++count) {
        static_cast<void>(
            bits::SetSize(arena, cell, static_cast<std::int32_t>(count), row.capacity));
        Cell& last = cell.cells[count - 1];
        if (!Fill(item, last, left)) {
            return false;
        }
        const std::int64_t size = Measure(tables, item, last);
        if (size <= 0) {
            return Drop(size < 0 ? DropReason::kDoesNotComeBack : DropReason::kLength, item);
        }
        left -= size;
        if (left < 0) {
            static_cast<void>(
                bits::SetSize(arena, cell, static_cast<std::int32_t>(count) - 1, row.capacity));
        }
    }
    return true;
}

bool ValueGenerator::FillExtension(const ValueRow& row, Cell& cell, std::int64_t most) {
    Cell* cells = Members(row, cell);
    for (const auto& group : tables.groups.subspan(row.first, row.count)) {
        bool first = true;
        for (const auto& octet : tables.octets.subspan(group.firstOctet, group.octetCount)) {
            if (octet.flagElement != kNone) {
                const bool present = !random_.OneIn(3);
                cells[octet.flagElement].present = present;
                if (!present && first) {
                    return true;  // the groups behind are absent too
                }
                if (!present) {
                    break;
                }
            }
            first = false;
            for (const PartRow& part : tables.parts.subspan(octet.firstPart, octet.partCount)) {
                if (!FillPart(part, cells, most)) {
                    return false;
                }
            }
        }
    }
    return row.item == kNone ||
           Fill(tables.values[row.item], cells[row.element], most - 8 * row.count);
}

/// Random bits lead to a record if the structure takes them; the octets that the record encodes to
/// have its spare bits right.
bool ValueGenerator::FillStructure(const ValueRow& row, Cell& cell, std::int64_t most,
                                   std::int64_t unit) {
    constexpr std::int64_t kMostOctets = 64;
    const csn::CsnStructure& structure = tables.structures[row.item];
    const std::int64_t units = std::min(most, 8 * kMostOctets) / unit;
    const auto bits =
        static_cast<std::int32_t>(unit * random_.UpTo(static_cast<std::uint32_t>(units)));
    const std::int64_t octets = (start_ + bits + 7) / 8;
    std::array<std::uint8_t, kMostOctets + 1> drawn{};
    const bool sparse = random_.OneIn(2);
    for (std::int64_t index = 0; index < octets; ++index) {
        const std::uint32_t octet = random_.UpTo(255);
        drawn[static_cast<std::size_t>(index)] =
            static_cast<std::uint8_t>(sparse ? octet & random_.UpTo(255) : octet);
    }
    Cell first{};
    const bits::BitReader reader(drawn.data(), octets);
    const bits::Outcome taken = csn::DecodeCsn(structure, reader, arena, start_, bits, first);
    if (taken.Failed()) {
        return Drop(DropReason::kNoValue, row);
    }
    std::array<std::uint8_t, 2 * kMostOctets> canonical{};
    const std::int32_t size = EncodeInto(structure, first, start_, canonical);
    if (size < 0) {
        return Drop(DropReason::kDoesNotComeBack, row);
    }
    if (size % unit != 0) {
        return Drop(taken.Bits() == bits ? DropReason::kDoesNotComeBack : DropReason::kLength, row);
    }
    const bool present = cell.present;
    cell = {};
    cell.present = present;
    std::array<std::uint8_t, 2 * kMostOctets> again{};
    const bool comesBack = csn::DecodeCsn(structure, {canonical.data(), (start_ + size + 7) / 8},
                                          arena, start_, size, cell) == size &&
                           EncodeInto(structure, cell, start_, again) == size &&
                           again == canonical && SameRecord(structure.name, first, cell);
    return comesBack || Drop(DropReason::kDoesNotComeBack, row);  // unreachable: it is false
}

bool ValueGenerator::SameRecord(std::string_view type, const Cell& a, const Cell& b) const {
    const auto found = std::find_if(
        types_.named.begin(), types_.named.end(),
        [&](std::uint16_t index) { return types_.NameOf(types_.types[index]) == type; });
    return found != types_.named.end() && reflect::RecordsEqual(types_, *found, a, b, false);
}

bool ValueGenerator::Drop(DropReason reason, const ValueRow& row) {
    ++drops_[{reason, row.name}];
    return false;
}

bool ValueGenerator::FillMessageSet(const ValueRow& row, Cell& cell) {
    const auto& chosen = tables.alternatives[row.first + random_.UpTo(row.count - 1U)];
    const iecodec::MessageRow& message = tables.messages[chosen.value];
    Cell& body = bits::ChooseAlternative(arena, cell, chosen.tag);
    return FillMessage(message, body, 0, 0);
}

}  // namespace quorvane::tool
