#include "families/common/elements.h"

#include <algorithm>

#include "iecodec/transaction_identifier.h"
#include "iecodec/value_decoder.h"
#include "iecodec/value_encoder.h"

namespace quorvane::families {

using iecodec::SpecialElement;

namespace {

using namespace iecodec;

using bits::Cell;
using bits::Outcome;

Outcome DecodeLinkedIdentifier(DecodeContext& context, const ValueRow& row, std::int64_t position,
                               Cell& cell, std::int64_t /*length*/) {
    Cell* members = bits::StructCells(context.arena, cell, row.members);
    members[1].number = context.reader.Read(position, 1);
    members[0].number = context.reader.Read(position + 1, 3);
    if (members[0].number != kIdentifierExtended) {
        return 8;
    }
    members[0].number = context.reader.Read(position + 9, 7);
    return 16;
}

Outcome EncodeLinkedIdentifier(EncodeContext& context, const ValueRow& /*row*/,
                               std::int64_t position, const Cell& cell) {
    const std::uint32_t value = MemberOf(cell, 0).number;
    const bool extended = value >= kIdentifierExtended;
    context.writer.Write(position, MemberOf(cell, 1).number, 1);
    context.writer.Write(position + 1, extended ? kIdentifierExtended : value, 3);
    context.writer.Write(position + 4, 0, 4);
    if (!extended) {
        return 8;
    }
    context.writer.Write(position + 8, 1, 1);
    context.writer.Write(position + 9, value, 7);
    return 16;
}

Outcome DecodeGenericTlv(DecodeContext& context, const ValueRow& row, std::int64_t position,
                         Cell& cell, std::int64_t length) {
    if (length < 16) {
        return kMessageTooShort;
    }
    Cell* members = bits::StructCells(context.arena, cell, row.members);
    members[0].number = context.reader.ReadOctet(position);
    std::uint32_t octets = context.reader.ReadOctet(position + 8);
    std::int64_t header = 16;
    if (octets >= 128) {
        const auto lengthOctets = static_cast<std::int32_t>(octets & 127U);
        if (lengthOctets > 4) {
            return kSizeError;
        }
        octets = context.reader.Read(position + 16, 8 * lengthOctets);
        header += 8 * std::int64_t{lengthOctets};
    }
    const std::int64_t value = 8 * std::int64_t{octets};
    if (header + value > length) {
        return kMessageTooShort;
    }
    bits::StoreBinary(context.arena, members[1], context.reader, position + header, value,
                      kGenericValueBits);
    members[1].location = 0;
    return header + value;
}

Outcome EncodeGenericTlv(EncodeContext& context, const ValueRow& /*row*/, std::int64_t position,
                         const Cell& cell) {
    const Cell& value = MemberOf(cell, 1);
    context.writer.Write(position, MemberOf(cell, 0).number, 8);
    context.writer.Write(position + 8, value.number / 8, 8);
    context.writer.Copy(position + 16, value.octets, value.number);
    return 16 + std::int64_t{value.number};
}

Outcome DecodeUncountedItem(DecodeContext& context, const ValueRow& row, std::int64_t position,
                            Cell& cell, std::int64_t length) {
    cell.number = 0;
    cell.capacity = 1;
    cell.cells = context.arena.AllocateZeroed<Cell>(1);
    return DecodeValue(context, RowAt(context, row.first), position, *cell.cells, length);
}

Outcome EncodeUncountedItem(EncodeContext& context, const ValueRow& row, std::int64_t position,
                            const Cell& cell) {
    const Cell empty{};
    const Cell& item = cell.capacity == 0 ? empty : *cell.cells;
    return EncodeValue(context, RowAt(context, row.first), position, item);
}

}  // namespace

const SpecialElement kUncountedItem{"kUncountedItem", DecodeUncountedItem, EncodeUncountedItem};
const SpecialElement kLinkedTransactionIdentifier{"kLinkedTransactionIdentifier",
                                                  DecodeLinkedIdentifier, EncodeLinkedIdentifier};
const SpecialElement kGenericTlv{"kGenericTlv", DecodeGenericTlv, EncodeGenericTlv};

}  // namespace quorvane::families
