#include "support/sample_elements.h"

#include "iecodec/codec_context.h"
#include "iecodec/value_encoder.h"

namespace quorvane::families {
namespace {

using bits::Cell;
using bits::Outcome;

constexpr std::int64_t kBits = 8;
constexpr std::int32_t kFlags = 7;
constexpr std::int32_t kSteps = 2;

void DecodeItems(iecodec::DecodeContext& context, Cell& sequence, std::int32_t count,
                 std::int64_t position, std::int32_t width) {
    static_cast<void>(
        bits::SetSize(context.arena, sequence, count, static_cast<std::uint32_t>(count)));
    for (std::int64_t index = 0; index < count; ++index) {
        sequence.cells[index].number = context.reader.Read(position + index * width, width);
    }
}

void EncodeItems(iecodec::EncodeContext& context, const Cell& sequence, std::int64_t position,
                 std::int32_t width) {
    for (std::int64_t index = 0; index < sequence.number; ++index) {
        context.writer.Write(position + index * width, sequence.cells[index].number, width);
    }
}

Outcome DecodeFormat(iecodec::DecodeContext& context, const iecodec::ValueRow& /*row*/,
                     std::int64_t position, Cell& cell, std::int64_t /*length*/) {
    const std::uint32_t tag = 1 + context.reader.Read(position, 1);
    Cell& chosen = bits::ChooseAlternative(context.arena, cell, tag);
    if (tag == 1) {
        DecodeItems(context, chosen, kFlags, position + 1, 1);
        return kBits;
    }
    Cell* members = bits::StructCells(context.arena, chosen, 2);
    members[0].number = context.reader.Read(position + 1, 3);
    members[0].present = members[0].number != 0;
    DecodeItems(context, members[1], kSteps, position + 4, 2);
    return kBits;
}

Outcome EncodeFormat(iecodec::EncodeContext& context, const iecodec::ValueRow& /*row*/,
                     std::int64_t position, const Cell& cell) {
    context.writer.Write(position, cell.number - 1, 1);
    if (cell.number == 1) {
        EncodeItems(context, *cell.cells, position + 1, 1);
        return kBits;
    }
    context.writer.Write(position + 1, iecodec::MemberOf(*cell.cells, 0).number, 3);
    EncodeItems(context, iecodec::MemberOf(*cell.cells, 1), position + 4, 2);
    return kBits;
}

}  // namespace

const iecodec::SpecialElement kSampleFormat{"kSampleFormat", DecodeFormat, EncodeFormat};

}  // namespace quorvane::families
