#include "families/eps/tracking_area_list.h"

#include "iecodec/value_decoder.h"
#include "iecodec/value_encoder.h"

namespace quorvane::families {
namespace {

using bits::Cell;
using bits::Outcome;
using iecodec::AlternativeRow;
using iecodec::ValueRow;

constexpr std::uint32_t kType0 = 0;  // one PLMN, a list of tracking area codes
constexpr std::uint32_t kType1 = 1;  // one PLMN, consecutive codes
constexpr std::uint32_t kType2 = 2;  // a list of whole identities

constexpr std::int64_t kPlmnBits = 24;
constexpr std::int64_t kCodeBits = 16;
constexpr std::size_t kCodesOfType0 = 6;  // member TAC, behind the six digits

Outcome DecodeItem(iecodec::DecodeContext& context, const ValueRow& row, std::int64_t position,
                   Cell& cell, std::int64_t /*length*/) {
    const std::uint32_t type = context.reader.Read(position + 1, 2);
    if (type > kType2) {
        return iecodec::kSyntaxError;
    }
    const std::int64_t count = 1 + std::int64_t{context.reader.Read(position + 4, 4)};
    const AlternativeRow& alternative = context.tables.alternatives[row.first + type];
    const ValueRow& body = iecodec::RowAt(context, alternative.value);
    Cell& chosen = bits::ChooseAlternative(context.arena, cell, alternative.tag);
    if (type == kType1) {
        return iecodec::DecodeValue(context, body, position, chosen, body.width);
    }
    const std::int64_t length =
        type == kType0 ? kPlmnBits + kCodeBits * count : (kPlmnBits + kCodeBits) * count;
    return iecodec::DecodeValue(context, body, position + 8, chosen, length).Plus(8);
}

/// The octet in front of a list: its type and the number of its elements less one.
void WriteFirstOctet(iecodec::EncodeContext& context, std::int64_t position, std::uint32_t type,
                     std::uint32_t count) {
    context.writer.Write(position, 0, 1);
    context.writer.Write(position + 1, type, 2);
    context.writer.Write(position + 3, count == 0 ? 0 : count - 1, 5);
}

Outcome EncodeItem(iecodec::EncodeContext& context, const ValueRow& row, std::int64_t position,
                   const Cell& cell) {
    if (cell.number == 0 || cell.number > row.count) {
        return 0;
    }
    const std::uint32_t type = cell.number - 1;
    const AlternativeRow& alternative = context.tables.alternatives[row.first + type];
    const ValueRow& body = iecodec::RowAt(context, alternative.value);
    const Cell& chosen = *cell.cells;
    if (type == kType1) {
        const Outcome result = iecodec::EncodeValue(context, body, position, chosen);
        context.writer.Write(position + 1, kType1, 2);
        return result;
    }
    const std::uint32_t count =
        type == kType0 ? iecodec::MemberOf(chosen, kCodesOfType0).number : chosen.number;
    WriteFirstOctet(context, position, type, count);
    return iecodec::EncodeValue(context, body, position + 8, chosen).Plus(8);
}

}  // namespace

const iecodec::SpecialElement kTrackingAreaListItem{"kTrackingAreaListItem", DecodeItem,
                                                    EncodeItem};

}  // namespace quorvane::families
