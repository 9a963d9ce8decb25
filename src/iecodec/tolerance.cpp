#include "iecodec/tolerance.h"

#include <algorithm>

namespace quorvane::iecodec {
namespace {

/// Where what is left is padding throughout; `end` if nothing is.
std::int64_t PaddingAt(const bits::BitReader& reader, std::int64_t from, std::int64_t end) {
    while (end - from >= 8 && reader.ReadOctet(end - 8) == bits::kFillOctet) {
        end -= 8;
    }
    return end;
}

/// Whether the element at the cursor is whole and could be kept. The cursor is then behind it.
bool KeepsElement(DecodeContext& context, const bits::Cell& message, std::int64_t& cursor,
                  std::int64_t end) {
    const CodecTables& tables = context.tables;
    const std::uint8_t octet = context.reader.ReadOctet(cursor);
    const IeFormatRow* row = LookupIeFormat(octet, tables.formats);
    std::int64_t next = cursor;
    if (!SkipIe(context.reader, next, tables.formats)) {
        next += UnknownIeSize(context.reader, cursor, tables.unknownFormats);
    }
    const Surplus element{row == nullptr ? octet : row->iei, &message, true, cursor, next - cursor};
    if (next > end || !context.surplus->Keep(context.arena, context.reader, element)) {
        return false;
    }
    cursor = next;
    return true;
}

}  // namespace

bool KeepsRest(DecodeContext& context, const FieldRow& field, const bits::Cell& cell,
               bits::Outcome result, std::int64_t position, std::int64_t length, std::int64_t end) {
    if (context.surplus == nullptr || result.Failed() || result.Bits() == 0 ||
        result.Bits() > length || position + length > end) {
        return false;
    }
    // A message inside may have kept some of it.
    const std::int64_t from = std::max(position + result.Bits(), context.surplus->End());
    Surplus rest{std::nullopt, &cell, false, from, position + length - from};
    if (InfoOf(field.format).ieiWidth != 0) {
        rest.iei = field.iei;
    }
    return rest.bitCount <= 0 || context.surplus->Keep(context.arena, context.reader, rest);
}

void KeepPassed(DecodeContext& context, const bits::Cell& message, std::int64_t from,
                std::int64_t to, std::int64_t end) {
    const bool maybePadding = to == end || context.reader.ReadOctet(from) == bits::kFillOctet;
    const std::int64_t stop =
        maybePadding ? std::min(to, PaddingAt(context.reader, from, end)) : to;
    while (from < stop) {
        if (!KeepsElement(context, message, from, end)) {
            static_cast<void>(context.surplus->Keep(
                context.arena, context.reader, {std::nullopt, nullptr, false, from, end - from}));
            return;
        }
    }
}

IeSearch FindIeTolerantly(DecodeContext& context, const bits::Cell& message, std::uint8_t iei,
                          std::int32_t ieiWidth, std::int64_t& cursor, std::int64_t end,
                          const IeOrderRow* order) {
    IeSearch found = IeSearch::kBlocked;
    do {
        const std::int64_t from = cursor;
        found = FindIe(iei, ieiWidth, context.reader, cursor, end, context.tables.formats, order);
        if (cursor != from) {
            KeepPassed(context, message, from, cursor, end);
        }
    } while (found == IeSearch::kBlocked && KeepsElement(context, message, cursor, end));
    return found;
}

}  // namespace quorvane::iecodec
