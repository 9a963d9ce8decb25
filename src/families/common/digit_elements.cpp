// Elements that are strings of digits. A digit store takes a size above its bound as refused: the
// list stays empty, and the element counts its length, an emergency number the octets walked, all
// the same.

#include <algorithm>
#include <array>

#include "families/common/elements.h"
#include "iecodec/value_decoder.h"
#include "iecodec/value_encoder.h"

namespace quorvane::families {

using iecodec::SpecialElement;

namespace {

using namespace iecodec;

using bits::Cell;
using bits::Outcome;

constexpr std::uint32_t kFiller = 15;
constexpr std::uint32_t kImsi = 1;

/// Sets the size of a digit store; one that is refused leaves it empty.
void Resize(DecodeContext& context, Cell& digits, std::int64_t count, std::uint32_t bound) {
    digits.number = 0;
    static_cast<void>(
        bits::SetSize(context.arena, digits,
                      static_cast<std::int32_t>(std::min<std::int64_t>(count, bound + 1)), bound));
}

/// Stores the digits of the octets at `position`, low half first, from item `first` on.
void StoreDigits(DecodeContext& context, Cell& digits, std::int64_t position, std::uint32_t first) {
    for (std::uint32_t index = first; index < digits.number; ++index) {
        const std::uint32_t nibble = index - first;
        const std::int64_t octet = position + 8 * std::int64_t{nibble / 2};
        digits.cells[index].number = context.reader.Read(octet + (nibble % 2 == 0 ? 4 : 0), 4);
    }
}

/// Writes digits from item `first` on, two an octet, and a filler behind an odd one. Returns the
/// bits written.
std::int64_t WriteDigits(EncodeContext& context, const Cell& digits, std::int64_t position,
                         std::uint32_t first) {
    std::int64_t cursor = position;
    for (std::uint32_t index = first; index < digits.number; index += 2) {
        const bool paired = index + 1 < digits.number;
        context.writer.Write(cursor, paired ? digits.cells[index + 1].number : kFiller, 4);
        context.writer.Write(cursor + 4, digits.cells[index].number, 4);
        cursor += 8;
    }
    return cursor - position;
}

Outcome DecodeTbcdDigits(DecodeContext& context, const ValueRow& /*row*/, std::int64_t position,
                         Cell& cell, std::int64_t length) {
    const bool filled = context.reader.Read(position + length - 8, 4) == kFiller;
    Resize(context, cell, length / 4 - (filled ? 1 : 0), kNumberDigits);
    if (length >= 4) {
        StoreDigits(context, cell, position, 0);
    }
    return length;
}

Outcome EncodeTbcdDigits(EncodeContext& context, const ValueRow& /*row*/, std::int64_t position,
                         const Cell& cell) {
    return WriteDigits(context, cell, position, 0);
}

/// First octet and digits of an identity.
void DecodeIdentity(DecodeContext& context, Cell& digits, std::int64_t position,
                    std::int64_t length, std::uint32_t bound) {
    const std::int64_t octets = length / 8;
    const std::uint32_t odd = context.reader.Read(position + 4, 1);
    Resize(context, digits, 2 * octets - 2 + odd, bound);
    if (digits.number > 0) {
        digits.cells[0].number = context.reader.Read(position, 4);
        StoreDigits(context, digits, position + 8, 1);
    }
}

Outcome EncodeIdentity(EncodeContext& context, const Cell& digits, std::uint32_t type,
                       std::int64_t position) {
    context.writer.Write(position, digits.number == 0 ? kFiller : digits.cells[0].number, 4);
    context.writer.Write(position + 4, digits.number & 1U, 1);
    context.writer.Write(position + 5, type, 3);
    return 8 + WriteDigits(context, digits, position + 8, 1);
}

Outcome DecodeIdentityDigits(DecodeContext& context, const ValueRow& row, std::int64_t position,
                             Cell& cell, std::int64_t length) {
    Cell* members = bits::StructCells(context.arena, cell, row.members);
    DecodeIdentity(context, members[0], position, length, kIdentityDigitsKept);
    return length;
}

Outcome EncodeIdentityDigits(EncodeContext& context, const ValueRow& /*row*/, std::int64_t position,
                             const Cell& cell) {
    return EncodeIdentity(context, MemberOf(cell, 0), kImsi, position);
}

Outcome DecodeMobileIdentity(DecodeContext& context, const ValueRow& row, std::int64_t position,
                             Cell& cell, std::int64_t length) {
    Cell* members = bits::StructCells(context.arena, cell, row.members);
    const std::uint32_t type = context.reader.Read(position + 5, 3);
    members[1].number = type;
    Cell& digits = members[0];
    if (type != kIdentityOfTmsi) {
        DecodeIdentity(context, digits, position, length, kMobileIdentityKept);
        return length;
    }
    Resize(context, digits, length / 8 - 1, kMobileIdentityKept);
    for (std::uint32_t index = 0; index < digits.number; ++index) {
        digits.cells[index].number =
            context.reader.ReadOctet(position + 8 + 8 * std::int64_t{index});
    }
    return length;
}

Outcome EncodeMobileIdentity(EncodeContext& context, const ValueRow& /*row*/, std::int64_t position,
                             const Cell& cell) {
    const Cell& digits = MemberOf(cell, 0);
    const std::uint32_t type = MemberOf(cell, 1).number;
    if (type != kIdentityOfTmsi) {
        return EncodeIdentity(context, digits, type, position);
    }
    context.writer.Write(position, kFiller << 4 | kIdentityOfTmsi, 8);
    for (std::uint32_t index = 0; index < digits.number; ++index) {
        context.writer.Write(position + 8 + 8 * std::int64_t{index}, digits.cells[index].number, 8);
    }
    return 8 + 8 * std::int64_t{digits.number};
}

Outcome DecodeEmergencyNumber(DecodeContext& context, const ValueRow& row, std::int64_t position,
                              Cell& cell, std::int64_t /*length*/) {
    Cell* members = bits::StructCells(context.arena, cell, row.members);
    const std::int64_t announced = context.reader.ReadOctet(position);
    const PartRow& category = context.tables.parts[row.first];
    // A structure of 8 bits, which never fails.
    static_cast<void>(
        DecodeValue(context, RowAt(context, category.value), position + 8, members[0], 8));
    const std::int64_t octets = std::max<std::int64_t>(announced - 1, 0);
    const std::int64_t digits = position + 16;
    const bool filled = octets > 0 && context.reader.Read(digits + 8 * (octets - 1), 4) == kFiller;
    Resize(context, members[1], 2 * octets - (filled ? 1 : 0), kNumberDigits);
    StoreDigits(context, members[1], digits, 0);
    constexpr std::int64_t kMostOctets = kNumberDigits / 2;  // the walk ends with the store
    return 16 + 8 * std::min(octets, kMostOctets);
}

Outcome EncodeEmergencyNumber(EncodeContext& context, const ValueRow& row, std::int64_t position,
                              const Cell& cell) {
    const PartRow& category = context.tables.parts[row.first];
    static_cast<void>(
        EncodeValue(context, RowAt(context, category.value), position + 8, MemberOf(cell, 0)));
    const std::int64_t digits = WriteDigits(context, MemberOf(cell, 1), position + 16, 0);
    context.writer.Write(position, static_cast<std::uint32_t>(1 + digits / 8), 8);
    return 16 + digits;
}

}  // namespace

const SpecialElement kTbcdDigits{"kTbcdDigits", DecodeTbcdDigits, EncodeTbcdDigits};
const SpecialElement kIdentityDigits{"kIdentityDigits", DecodeIdentityDigits, EncodeIdentityDigits};
const SpecialElement kMobileIdentity{"kMobileIdentity", DecodeMobileIdentity, EncodeMobileIdentity};
const SpecialElement kEmergencyNumber{"kEmergencyNumber", DecodeEmergencyNumber,
                                      EncodeEmergencyNumber};

}  // namespace quorvane::families
