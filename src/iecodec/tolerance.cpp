#include "iecodec/tolerance.h"

#include "iecodec/ie_search.h"

namespace quorvane::iecodec {

bool KeepsRest(DecodeContext& context, const FieldRow& field, const bits::Cell& cell,
               bits::Outcome result, std::int64_t position, std::int64_t length, std::int64_t end) {
    if (context.surplus == nullptr || result.Failed() || result.Bits() == 0 ||
        result.Bits() > length || position + length > end) {
        return false;
    }
    Surplus rest{std::nullopt, &cell, false, position + result.Bits(), length - result.Bits()};
    if (InfoOf(field.format).ieiWidth != 0) {
        rest.iei = field.iei;
    }
    return context.surplus->Keep(context.arena, context.reader, rest);
}

bool KeepsUnknown(DecodeContext& context, const bits::Cell& message, std::int64_t& cursor,
                  std::int64_t end) {
    if (context.surplus == nullptr) {
        return false;
    }
    const std::int64_t size = UnknownIeSize(context.reader, cursor, context.tables.unknownFormats);
    const Surplus element{context.reader.ReadOctet(cursor), &message, true, cursor, size};
    if (cursor + size > end || !context.surplus->Keep(context.arena, context.reader, element)) {
        return false;
    }
    cursor += size;
    return true;
}

}  // namespace quorvane::iecodec
