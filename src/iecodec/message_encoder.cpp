#include "iecodec/message_encoder.h"

#include <algorithm>

#include "iecodec/transaction_identifier.h"
#include "iecodec/value_encoder.h"

namespace quorvane::iecodec {
namespace {

using bits::Cell;
using bits::Outcome;
using Format = FieldRow::Format;
using Item = HeaderItemRow::Kind;

std::span<const HeaderItemRow> HeaderOf(const CodecTables& tables, const MessageRow& message) {
    return tables.headerItems.subspan(message.firstHeaderItem, message.headerItemCount);
}

/// Writes a header and returns its width.
std::int64_t EncodeHeader(EncodeContext& context, const MessageRow& message, std::int64_t position,
                          const Cell& cell) {
    std::int64_t cursor = position;
    std::uint32_t extended = 0;
    for (const HeaderItemRow& item : HeaderOf(context.tables, message)) {
        std::uint32_t value = 0;
        switch (item.kind) {
            case Item::kField:
            case Item::kFieldAfterBody:
                value = MemberOf(cell, item.element).number;
                break;
            case Item::kConstant:
                value = item.constant;
                break;
            case Item::kExtendedIdentifier:
                value = MemberOf(cell, item.element).number;
                if (value >= kIdentifierExtended) {
                    extended = value;
                    value = kIdentifierExtended;
                }
                break;
            case Item::kMessageType:
                value = message.code;
                if (extended != 0) {
                    context.writer.Write(cursor, 1, 1);
                    context.writer.Write(cursor + 1, extended, 7);
                    cursor += 8;
                }
                break;
            case Item::kPseudoLength:  // see EncodePseudoLength
                break;
        }
        context.writer.Write(cursor, value, item.width);
        cursor += item.width;
    }
    return cursor - position;
}

/// Whether all members in the header are set that have to be.
bool HeaderIsSet(EncodeContext& context, const MessageRow& message, const Cell& cell) {
    const auto isSet = [&](const HeaderItemRow& item) {
        const bool stored = item.kind == Item::kField || item.kind == Item::kFieldAfterBody ||
                            item.kind == Item::kExtendedIdentifier;
        return !stored || context.Demand(MemberOf(cell, item.element));
    };
    const auto items = HeaderOf(context.tables, message);
    return std::all_of(items.begin(), items.end(), isSet);
}

class BodyEncoder {
  public:
    BodyEncoder(EncodeContext& context, const MessageRow& message, std::int64_t position,
                const Cell& cell)
        : context_(context), message_(message), cell_(cell), start_(position), cursor_(position) {}

    Outcome Run() {
        const auto fields =
            context_.tables.fields.subspan(message_.firstField, message_.fieldCount);
        countedEnd_ = cursor_;
        for (const FieldRow& field : fields) {
            const Cell& cell = MemberOf(cell_, field.element);
            const bool written = field.presence == FieldRow::Presence::kMandatory || cell.present;
            if (!MeetsItsCondition(field, cell) || (written && !EncodeField(field, cell))) {
                context_.Refuse({Refusal::Reason::kNotWritten, &cell});
                context_.diagnostics.Report(field.encodeNumber, "Error encoding subfield",
                                            field.name);
                return kSyntaxError;
            }
            if (&field - fields.data() < message_.countedFields) {
                countedEnd_ = cursor_;
            }
        }
        return cursor_ - start_;
    }

    /// Where a pseudo length ends.
    [[nodiscard]] std::int64_t CountedEnd() const { return countedEnd_; }

  private:
    /// Whether a conditional field is there if, and only if, the field that decides says so.
    bool MeetsItsCondition(const FieldRow& field, const Cell& cell) {
        if (!context_.checked || field.presence != FieldRow::Presence::kConditional ||
            cell_.cells == nullptr || cell.present == ConditionHolds(field, cell_.cells)) {
            return true;
        }
        context_.Refuse({Refusal::Reason::kCondition, &cell});
        return false;
    }

    bool EncodeField(const FieldRow& field, const Cell& cell) {
        if (field.value != kNone && !context_.Demand(cell)) {
            return false;
        }
        const FieldFormatInfo& info = InfoOf(field.format);
        if (info.ieiWidth != 0) {
            context_.writer.Write(cursor_,
                                  static_cast<std::uint32_t>(field.iei) >> (8 - info.ieiWidth),
                                  info.ieiWidth);
            cursor_ += info.ieiWidth;
        }
        switch (field.format) {
            case Format::kHalfLow:
                return EncodeHalf(field, cell, cursor_ + 4);
            case Format::kHalfHigh:
                return EncodeHalf(field, cell, cursor_ - 4);
            case Format::kTvHalf:
                return EncodeHalf(field, cell, cursor_);
            case Format::kLv:
            case Format::kLvE:
            case Format::kTlv:
            case Format::kTlvE:
                return EncodeCounted(field, cell, info.lengthWidth);
            case Format::kT:
            case Format::kEndCheck:
                return true;
            case Format::kV:
            case Format::kTv:
            case Format::kRest:
                break;
        }
        return EncodeContents(field, cell);
    }

    bool EncodeHalf(const FieldRow& field, const Cell& cell, std::int64_t position) {
        if (field.value == kNone) {
            context_.writer.Write(position, 0, 4);
        } else if (EncodeValue(context_, RowAt(context_, field.value), position, cell).Failed()) {
            return false;
        }
        cursor_ += 4;
        return true;
    }

    bool EncodeContents(const FieldRow& field, const Cell& cell) {
        const Outcome result = EncodeValue(context_, RowAt(context_, field.value), cursor_, cell);
        if (result.Failed()) {
            return false;
        }
        const bool hasWidth =
            InfoOf(field.format).valueEnd == FieldFormatInfo::ValueEnd::kWidth && !field.unchecked;
        if (context_.checked && hasWidth &&
            !context_.CheckLength(cell, result.Bits(), field.width, field.width, false)) {
            return false;
        }
        const std::int64_t behind = cursor_ + result.Bits();
        cursor_ = field.unchecked ? cursor_ + field.width : behind;
        WriteZeros(context_, behind, cursor_);
        return true;
    }

    /// Leaves room for the length, which is known behind the value.
    bool EncodeCounted(const FieldRow& field, const Cell& cell, std::int32_t lengthWidth) {
        const std::int64_t lengthAt = cursor_;
        cursor_ += lengthWidth;
        if (!EncodeContents(field, cell)) {
            return false;
        }
        const std::int64_t start = lengthAt + lengthWidth;
        FillUp(field, start);
        const std::int64_t bits = cursor_ - start;
        context_.writer.Write(lengthAt, static_cast<std::uint32_t>(bits >> 3), lengthWidth);
        const std::int64_t longest = (std::int64_t{1} << lengthWidth) - 1;
        const std::int64_t least = context_.checked ? field.leastOctets : 0;
        const std::int64_t most = context_.checked ? field.mostOctets : longest;
        return context_.CheckLength(cell, bits, 8 * least, 8 * most, context_.checked);
    }

    /// Zeros behind a CSN.1 structure that ends ahead of its octets, or of the fewest that the
    /// field has: the spare bits that such structures end in.
    void FillUp(const FieldRow& field, std::int64_t start) {
        if (RowAt(context_, field.value).shape != Shape::kCsn) {
            return;
        }
        const std::int64_t octets =
            std::max<std::int64_t>((cursor_ - start + 7) / 8, field.leastOctets);
        WriteZeros(context_, cursor_, start + 8 * octets);
        cursor_ = start + 8 * octets;
    }

    EncodeContext& context_;
    const MessageRow& message_;
    const Cell& cell_;
    std::int64_t start_;
    std::int64_t cursor_;
    std::int64_t countedEnd_ = 0;
};

/// Writes the pseudo length of a message that has one at its start.
void EncodePseudoLength(EncodeContext& context, const MessageRow& message, std::int64_t position,
                        std::int64_t end) {
    const auto header = HeaderOf(context.tables, message);
    if (!header.empty() && header.front().kind == Item::kPseudoLength) {
        const std::int64_t octets = (end - position - header.front().width) >> 3;
        context.writer.Write(position, static_cast<std::uint32_t>(octets) << 2 | 1U,
                             header.front().width);
    }
}

}  // namespace

Outcome EncodeMessage(EncodeContext& context, const MessageRow& message, std::int64_t position,
                      const Cell& cell) {
    if (message.value != kNone) {
        return EncodeValue(context, RowAt(context, message.value), position, cell);
    }
    const std::int64_t width = EncodeHeader(context, message, position, cell);
    BodyEncoder body(context, message, position + width, cell);
    const Outcome result = body.Run();
    if (!result.Failed() && !HeaderIsSet(context, message, cell)) {
        return kSyntaxError;
    }
    EncodePseudoLength(context, message, position, body.CountedEnd());
    return result.Plus(width);
}

Outcome EncodeMessageBody(EncodeContext& context, const MessageRow& message, std::int64_t position,
                          const Cell& cell) {
    return BodyEncoder(context, message, position, cell).Run();
}

Outcome EncodeContainer(EncodeContext& context, const MessageSetRow& set,
                        const MessageContainer& container) {
    if (container.tag == 0 || container.tag > set.messages.size()) {
        return kUnknownMessage;
    }
    const MessageRow& message = context.tables.messages[set.messages[container.tag - 1]];
    return EncodeMessage(context, message, 0, container.body);
}

bool IsMessage(const CodecTables& tables, const MessageRow& message, const bits::BitReader& reader,
               std::int64_t position) {
    std::int64_t start = position;  // of the octet with the protocol discriminator
    std::int64_t cursor = position;
    for (const HeaderItemRow& item : HeaderOf(tables, message)) {
        const std::uint32_t wanted = item.kind == Item::kConstant ? item.constant : 0;
        if (item.kind == Item::kMessageType) {
            return reader.Read(cursor, item.width) == message.code;
        }
        if (item.kind == Item::kPseudoLength) {
            start += item.width;
        } else if (cursor < start + 8 && reader.Read(cursor, item.width) != wanted) {
            return false;
        }
        cursor += item.width;
    }
    return false;
}

}  // namespace quorvane::iecodec
