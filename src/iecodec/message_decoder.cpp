#include "iecodec/message_decoder.h"

#include "iecodec/ie_search.h"
#include "iecodec/tolerance.h"
#include "iecodec/transaction_identifier.h"
#include "iecodec/value_decoder.h"

namespace quorvane::iecodec {
namespace {

using bits::Cell;
using bits::Outcome;
using Format = FieldRow::Format;
using Presence = FieldRow::Presence;

constexpr Outcome kGoOn{0};

/// One walk over the fields of a message body. The field functions return a code that ends the
/// message, or kGoOn.
class BodyDecoder {
  public:
    /// The members of `cell` are there.
    BodyDecoder(DecodeContext& context, const MessageRow& message, std::int64_t position,
                const Cell& cell, std::int64_t length)
        : context_(context),
          fields_(context.tables.fields.subspan(message.firstField, message.fieldCount)),
          cell_(cell),
          cells_(cell.cells),
          start_(position),
          end_(position + length),
          cursor_(position),
          window_(context.reader) {}

    Outcome Run() {
        for (const FieldRow& field : fields_) {
            if (const Outcome outcome = DecodeField(field); outcome.Failed()) {
                return outcome;
            }
        }
        if (context_.surplus != nullptr && !fields_.empty() &&
            InfoOf(fields_.back().format).ieiWidth != 0) {
            KeepPassed(context_, cell_, cursor_, end_, end_);
        }
        return cursor_ - start_;
    }

  private:
    Outcome DecodeField(const FieldRow& field) {
        if (InfoOf(field.format).ieiWidth != 0) {
            return DecodeWithIei(field);
        }
        if (field.presence == Presence::kConditional) {
            if (!ConditionHolds(field, cells_)) {
                return kGoOn;
            }
            cells_[field.element].present = true;
        }
        return DecodeBehindIei(field);
    }

    Outcome DecodeBehindIei(const FieldRow& field) {
        switch (field.format) {
            case Format::kHalfLow:
                return DecodeHalf(field, cursor_ + 4);
            case Format::kHalfHigh:
                return DecodeHalf(field, cursor_ - 4);
            case Format::kLv:
            case Format::kLvE:
            case Format::kTlv:
            case Format::kTlvE:
                return DecodeCounted(field, InfoOf(field.format).lengthWidth);
            case Format::kRest:
                return DecodeContents(field, end_ - cursor_);
            case Format::kT:
            case Format::kEndCheck:
                return CheckEnd(field);
            case Format::kV:
            case Format::kTv:
            case Format::kTvHalf:
                break;
        }
        return DecodeContents(field, field.width);
    }

    Outcome DecodeHalf(const FieldRow& field, std::int64_t position) {
        if (field.value != kNone) {
            // A half octet takes 4 bits whatever its type makes of them.
            static_cast<void>(DecodeValue(context_, RowAt(context_, field.value), position,
                                          cells_[field.element], 4));
        }
        cursor_ += 4;
        return CheckEnd(field);
    }

    Outcome DecodeCounted(const FieldRow& field, std::int32_t lengthWidth) {
        const std::int64_t octets = window_.Read(cursor_, lengthWidth);
        cursor_ += lengthWidth;
        if (octets < field.leastOctets || octets > field.mostOctets) {
            if (octets > field.mostOctets && context_.surplus != nullptr &&
                cursor_ + 8 * octets <= end_) {
                return TakeResult(field, ValueOf(field, 8 * std::int64_t{field.mostOctets}),
                                  8 * octets);
            }
            Refuse(field, field.sizeNumber, "Size error decoding IE");
            return kSizeError;
        }
        return DecodeContents(field, 8 * octets);
    }

    Outcome DecodeContents(const FieldRow& field, std::int64_t length) {
        const Outcome result = ValueOf(field, length);
        if (field.unchecked) {
            cursor_ += length;
            return kGoOn;
        }
        return TakeResult(field, result, length);
    }

    Outcome ValueOf(const FieldRow& field, std::int64_t length) {
        return DecodeValue(context_, RowAt(context_, field.value), cursor_, cells_[field.element],
                           length);
    }

    /// Behind a value that came to `result`: passes the `length` bits of its element.
    Outcome TakeResult(const FieldRow& field, Outcome result, std::int64_t length) {
        if ((result.Failed() || result.Bits() != length) &&
            !KeepsRest(context_, field, cells_[field.element], result, cursor_, length, end_)) {
            Refuse(field, field.valueNumber, "Error decoding subfield");
            if (const Outcome failure = FailureOf(field); failure.Failed()) {
                return failure;
            }
        }
        cursor_ += length;
        return CheckEnd(field);
    }

    Outcome CheckEnd(const FieldRow& field) {
        if (cursor_ <= end_) {
            return kGoOn;
        }
        Refuse(field, field.shortNumber, "Message too short decoding subfield");
        if (field.presence == Presence::kOptional) {
            cursor_ = end_;
        }
        return FailureOf(field);
    }

    void Refuse(const FieldRow& field, std::uint32_t number, std::string_view text) {
        if (context_.surplus != nullptr) {
            // The element may reach behind the message, and a message inside with it.
            context_.surplus->DropPast(end_);
        }
        if (field.value == kNone) {
            context_.diagnostics.Report(number, text, field.name, {nullptr, cursor_});
        } else {
            context_.diagnostics.Refuse(cells_[field.element], cursor_, number, text, field.name);
        }
    }

    /// What a field's failure means: an optional one is taken for absent.
    Outcome FailureOf(const FieldRow& field) {
        switch (field.presence) {
            case Presence::kOptional:
                cells_[field.element].present = false;
                return kGoOn;
            case Presence::kConditional:
                return kConditionalError;
            case Presence::kMandatory:
                break;
        }
        return kMandatoryError;
    }

    Outcome DecodeWithIei(const FieldRow& field) {
        const bool optional = field.presence == Presence::kOptional;
        const std::int32_t width = InfoOf(field.format).ieiWidth;
        const auto iei = static_cast<std::uint8_t>(field.iei >> (8 - width));
        const Outcome absent = optional ? kGoOn : Outcome(kMessageTooShort);
        // What the search would answer at once.
        if (end_ - cursor_ < width) {
            return absent;
        }
        if (window_.Read(cursor_, width) == iei) {
            return DecodeFound(field, optional, width);
        }
        const IeOrderRow* order = optional ? &context_.tables.orders[field.order] : nullptr;
        if (order != nullptr && claim_.LeavesOut(order, cursor_)) {
            return kGoOn;
        }
        const IeOrderRow* claiming = nullptr;
        const IeSearch found =
            context_.surplus == nullptr
                ? FindIe(iei, width, context_.reader, cursor_, end_, context_.tables.formats, order,
                         &claiming)
                : FindIeTolerantly(context_, cell_, iei, width, cursor_, end_, order);
        if (claiming != nullptr) {
            claim_ = {claiming, cursor_};
        }
        if (found == IeSearch::kBlocked) {
            return kUnknownIei;
        }
        if (found == IeSearch::kAbsent) {
            return absent;
        }
        return DecodeFound(field, optional, width);
    }

    /// The field whose identifier stands at the cursor.
    Outcome DecodeFound(const FieldRow& field, bool optional, std::int32_t width) {
        cells_[field.element].present = optional;
        cursor_ += width;
        return DecodeBehindIei(field);
    }

    /// The element at `position` belongs to `field`, and to none of the fields ahead of it: those
    /// still to come are absent without a search of their own, whose cost would grow with the
    /// square of the fields.
    struct Claim {
        const IeOrderRow* field = nullptr;
        std::int64_t position = 0;

        [[nodiscard]] bool LeavesOut(const IeOrderRow* order, std::int64_t cursor) const {
            return cursor == position && order < field;
        }
    };

    DecodeContext& context_;
    Claim claim_;
    std::span<const FieldRow> fields_;
    const Cell& cell_;
    Cell* cells_;
    std::int64_t start_;
    std::int64_t end_;
    std::int64_t cursor_;
    bits::BitWindow window_;
};

/// Walks a message's header.
class HeaderDecoder {
  public:
    HeaderDecoder(const DecodeContext& context, const MessageRow& message, std::int64_t position,
                  Cell* cells)
        : context_(context),
          items_(
              context.tables.headerItems.subspan(message.firstHeaderItem, message.headerItemCount)),
          start_(position),
          cells_(cells) {}

    /// Stores the fields that stand before the body and returns the header's width.
    std::int64_t ReadFields() {
        std::int64_t cursor = start_;
        bool extended = false;
        for (const HeaderItemRow& item : items_) {
            switch (item.kind) {
                case HeaderItemKind::kField:
                    Store(item, cursor);
                    break;
                case HeaderItemKind::kExtendedIdentifier:
                    Store(item, cursor);
                    extended = cells_[item.element].number == kIdentifierExtended;
                    if (extended) {
                        cells_[item.element].number = context_.reader.Read(start_ + 9, 7);
                    }
                    break;
                case HeaderItemKind::kMessageType:
                    if (extended) {
                        cursor = PastIdentifierExtension(context_.reader, cursor);
                    }
                    break;
                case HeaderItemKind::kFieldAfterBody:  // see ReadFieldsAfterBody
                case HeaderItemKind::kConstant:
                case HeaderItemKind::kPseudoLength:
                    break;
            }
            cursor += item.width;
        }
        return cursor - start_;
    }

    /// Stores the fields that wait for a body without a failure.
    void ReadFieldsAfterBody() {
        std::int64_t cursor = start_;
        for (const HeaderItemRow& item : items_) {
            if (item.kind == HeaderItemRow::Kind::kFieldAfterBody) {
                Store(item, cursor);
            }
            cursor += item.width;
        }
    }

  private:
    void Store(const HeaderItemRow& item, std::int64_t position) {
        Cell& cell = cells_[item.element];
        cell.number = context_.reader.Read(position, item.width);
        cell.reached = true;
    }

    const DecodeContext& context_;
    std::span<const HeaderItemRow> items_;
    std::int64_t start_;
    Cell* cells_;
};

}  // namespace

Outcome DecodeMessage(DecodeContext& context, const MessageRow& message, std::int64_t position,
                      Cell& cell, std::int64_t length) {
    if (message.value != kNone) {
        return DecodeValue(context, RowAt(context, message.value), position, cell, length);
    }
    Cell* cells = bits::StructCells(context.arena, cell, message.members);
    HeaderDecoder header(context, message, position, cells);
    const std::int64_t width = header.ReadFields();
    const Outcome result =
        BodyDecoder(context, message, position + width, cell, length - width).Run();
    if (!result.Failed()) {
        header.ReadFieldsAfterBody();
    }
    return result.Plus(width);
}

Outcome DecodeMessageBody(DecodeContext& context, const MessageRow& message, std::int64_t position,
                          Cell& cell, std::int64_t length) {
    static_cast<void>(bits::StructCells(context.arena, cell, message.members));
    return BodyDecoder(context, message, position, cell, length).Run();
}

}  // namespace quorvane::iecodec
