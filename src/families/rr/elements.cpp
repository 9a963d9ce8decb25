// Elements that are no channels: identities and reports.

#include "families/rr/elements.h"

#include "families/common/elements.h"
#include "families/rr/located_field.h"
#include "iecodec/value_encoder.h"

namespace quorvane::families {
namespace {

using bits::Cell;
using bits::Outcome;
using iecodec::DecodeContext;
using iecodec::EncodeContext;
using iecodec::MemberOf;
using iecodec::ValueRow;

Outcome DecodeLocatedIdentity(DecodeContext& context, const ValueRow& row, std::int64_t position,
                              Cell& cell, std::int64_t length) {
    const Outcome result = kMobileIdentity.decode(context, row, position, cell, length);
    const Cell& digits = cell.cells[0];
    Cell& type = cell.cells[1];
    bits::MakeFieldLocator(type.location, position + 5, 3);
    for (std::uint32_t index = 0; index < digits.number; ++index) {
        bits::FieldLocator& location = digits.cells[index].location;
        if (type.number == kIdentityOfTmsi) {
            bits::MakeFieldLocator(location, position + 8 + 8 * std::int64_t{index}, 8);
        } else {
            // The high half of the first octet, then of each octet the low half ahead of the high.
            const std::int64_t half = index == 0 ? 0 : (index + 1) ^ 1U;
            bits::MakeFieldLocator(location, position + 4 * half, 4);
        }
    }
    return result;
}

Outcome EncodeLocatedIdentity(EncodeContext& context, const ValueRow& row, std::int64_t position,
                              const Cell& cell) {
    return kMobileIdentity.encode(context, row, position, cell);
}

constexpr std::uint32_t kMostReports = 16;
constexpr std::int32_t kQuantityBits = 6;
constexpr std::int64_t kReportBits = 1 + kQuantityBits;

Outcome DecodeReportingBitmap(DecodeContext& context, const ValueRow& row, std::int64_t position,
                              Cell& cell, std::int64_t length) {
    Cell& reports = bits::StructCells(context.arena, cell, row.members)[1];
    const std::int64_t end = position + length;
    std::int64_t cursor = position;
    for (std::uint32_t index = 0; cursor < end; ++index) {
        if (context.reader.Read(cursor, 1) == 0) {
            ++cursor;
            continue;
        }
        const auto count = static_cast<std::int32_t>(reports.number + 1);
        if (end - cursor < kReportBits ||
            bits::SetSize(context.arena, reports, count, kMostReports).Failed()) {
            break;
        }
        Cell* report = bits::StructCells(context.arena, reports.cells[count - 1], 2);
        report[0].number = index;
        bits::MakeFieldLocator(report[0].location, cursor, 1);
        StoreField(context, report[1], cursor + 1, kQuantityBits);
        cursor += kReportBits;
    }
    return cursor - position;
}

/// Zeros behind the last report are not known and not written. Indices that do not rise cannot be.
Outcome EncodeReportingBitmap(EncodeContext& context, const ValueRow& /*row*/,
                              std::int64_t position, const Cell& cell) {
    const Cell& reports = MemberOf(cell, 1);
    std::uint32_t next = 0;
    std::int64_t cursor = position;
    for (std::uint32_t item = 0; item < reports.number; ++item) {
        const std::uint32_t index = MemberOf(reports.cells[item], 0).number;
        if (index < next) {
            return iecodec::kSyntaxError;
        }
        const auto zeros = static_cast<std::int32_t>(index - next);
        context.writer.Write(cursor, 0, zeros);
        cursor += zeros;
        context.writer.Write(cursor, 1, 1);
        context.writer.Write(cursor + 1, MemberOf(reports.cells[item], 1).number, kQuantityBits);
        cursor += kReportBits;
        next = index + 1;
    }
    return cursor - position;
}

}  // namespace

const iecodec::SpecialElement kLocatedMobileIdentity{"kLocatedMobileIdentity",
                                                     DecodeLocatedIdentity, EncodeLocatedIdentity};
const iecodec::SpecialElement kBitmapTypeReporting{"kBitmapTypeReporting", DecodeReportingBitmap,
                                                   EncodeReportingBitmap};

}  // namespace quorvane::families
