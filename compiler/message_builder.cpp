#include "compiler/message_builder.h"

#include <algorithm>

namespace quorvane::compiler {
namespace {

using iecodec::FieldRow;
using iecodec::HeaderItemRow;
using iecodec::IeOrderRow;
using iecodec::kNone;
using iecodec::MessageRow;
using Format = FieldRow::Format;
using ValueEnd = iecodec::FieldFormatInfo::ValueEnd;
using Presence = FieldRow::Presence;

/// Whether values of the shape report failures under numbers of their own.
bool ReportsFailures(iecodec::Shape shape) {
    using iecodec::Shape;
    switch (shape) {
        case Shape::kBinary:
        case Shape::kSequence:
        case Shape::kExtension:
            return true;
        case Shape::kInteger:
        case Shape::kFixed:
        case Shape::kTruncatable:
        case Shape::kSerial:
        case Shape::kChoice:
        case Shape::kCsn:
        case Shape::kMessageSet:
        case Shape::kMessageBody:
        case Shape::kSpecial:
            break;
    }
    return false;
}

}  // namespace

MessageBuilder::MessageBuilder(Reporter& reporter, const FamilySyntax& family, TypeResolver& types,
                               ValueBuilder& values, FamilyModel& model)
    : reporter_(reporter), family_(family), types_(types), values_(values), model_(model) {
    for (const HeaderSyntax& header : family.headers) {
        if (!headers_.emplace(header.name.text, Header{&header, RecordOrder(header)}).second) {
            reporter_.Error(header.name.place,
                            "the header '" + header.name.text + "' is declared already");
        }
    }
}

/// The members that the header gives to a record: as on the wire, unless it names their order.
std::vector<const HeaderItemSyntax*> MessageBuilder::RecordOrder(const HeaderSyntax& syntax) {
    std::vector<const HeaderItemSyntax*> wire;
    for (const HeaderItemSyntax& item : syntax.items) {
        if (!item.name.text.empty()) {
            wire.push_back(&item);
        }
    }
    if (syntax.record.empty()) {
        return wire;
    }
    std::vector<const HeaderItemSyntax*> ordered;
    for (const Name& name : syntax.record) {
        const auto found = std::find_if(
            wire.begin(), wire.end(),
            [&](const HeaderItemSyntax* item) { return item->name.text == name.text; });
        if (found == wire.end()) {
            reporter_.Error(name.place, "'" + name.text + "' is no member of the header, or " +
                                            "stands in the record's order already");
            continue;
        }
        ordered.push_back(*found);
        wire.erase(found);
    }
    for (const HeaderItemSyntax* item : wire) {
        reporter_.Error(item->name.place,
                        "'" + item->name.text + "' is missing in the record's order");
    }
    return ordered;
}

void MessageBuilder::AddHeader(Header& header) {
    if (header.firstItem != kNone) {
        return;
    }
    header.firstItem = static_cast<std::uint16_t>(model_.headerItems.size());
    for (const HeaderItemSyntax& item : header.syntax->items) {
        const auto found = std::find(header.members.begin(), header.members.end(), &item);
        const auto element = static_cast<std::uint16_t>(found - header.members.begin());
        model_.headerItems.push_back({item.kind, found == header.members.end() ? kNone : element,
                                      static_cast<std::uint8_t>(item.bits), item.constant});
    }
}

FieldRow MessageBuilder::FieldOf(const MessageSyntax& message, const FieldSyntax& field,
                                 const TypeModel& type, std::uint16_t element) {
    FieldRow row{};
    row.name = field.name.text;
    row.format = field.format;
    row.element = element;
    row.order = kNone;
    row.conditionElement = kNone;
    row.leastOctets = static_cast<std::uint16_t>(field.least.value_or(0));
    row.mostOctets = static_cast<std::uint16_t>(field.most.value_or(0xFFFF));
    row.tag = static_cast<std::uint8_t>(field.tag.value_or(0));
    row.presence = field.condition ? Presence::kConditional
                   : InfoOf(row.format).identifierWidth != 0 && !field.mandatory
                       ? Presence::kOptional
                       : Presence::kMandatory;
    const bool exact = field.least && field.least == field.most;
    row.width = static_cast<std::uint16_t>(field.half ? 4 : exact ? 8 * *field.least : 0);
    row.value = InfoOf(row.format).valueEnd == ValueEnd::kNoValue
                    ? kNone
                    : values_.RowOf(field.type, type.elements[element].type, field.name.text,
                                    row.width, true);
    if (field.condition) {
        const auto& condition = *field.condition;
        const auto found = std::find_if(
            message.fields.begin(), message.fields.end(),
            [&](const FieldSyntax& other) { return other.name.text == condition.member.text; });
        if (found >= message.fields.begin() + (&field - message.fields.data())) {
            reporter_.Error(condition.member.place,
                            "'" + condition.member.text + "' is no field above this one");
        }
        const auto headerElements = static_cast<std::size_t>(element) -
                                    static_cast<std::size_t>(&field - message.fields.data());
        row.conditionElement = static_cast<std::uint16_t>(
            headerElements + static_cast<std::size_t>(found - message.fields.begin()));
        row.conditionMask = condition.mask.value_or(0xFFFFFFFF);
        row.conditionValue = condition.value;
    }
    return row;
}

void MessageBuilder::CheckLimits(const FieldSyntax& field) {
    const iecodec::FieldFormatInfo info = InfoOf(field.format);
    if ((info.identifierWidth != 0) != field.tag.has_value()) {
        reporter_.Error(
            field.name.place,
            field.tag ? "the format of '" + field.name.text +
                            "' has no identifier; TV, TLV, TLV-E and T have one"
                      : "'" + field.name.text + "' needs its identifier in front of the format");
    }
    if (field.mandatory && !field.tag) {
        reporter_.Error(field.name.place, "a field without an identifier is mandatory as it is");
    }
    if (field.halfTag != (field.half && field.tag.has_value())) {
        reporter_.Error(field.name.place,
                        "an identifier of half an octet goes with a value of half an octet: "
                        "'9- TV half'");
    }
    const bool sized = field.half || (field.least && field.least == field.most);
    if (info.valueEnd == ValueEnd::kWidth && !sized) {
        reporter_.Error(field.name.place, "the size of '" + field.name.text +
                                              "' is missing: a number of octets, or 'half'");
    }
    if (field.least && field.most && *field.least > *field.most) {
        reporter_.Error(field.name.place,
                        "the limits of '" + field.name.text + "' are the wrong way round");
    }
    if (info.valueEnd == ValueEnd::kLength && field.half) {
        reporter_.Error(field.name.place, "a field with a length is not half an octet");
    }
}

void MessageBuilder::CheckFit(const FieldSyntax& field, const FieldRow& row) {
    const std::uint32_t width = values_.WidthOf(row.value);
    if (InfoOf(row.format).valueEnd == ValueEnd::kWidth && width != 0 && row.width != 0 &&
        width != row.width) {
        reporter_.Error(field.type.place, "'" + field.name.text + "' has " +
                                              std::to_string(row.width) + " bits, its type " +
                                              std::to_string(width));
    }
}

void MessageBuilder::PairHalfOctets(const MessageSyntax& message, std::size_t firstField) {
    const FieldSyntax* first = nullptr;
    for (std::size_t index = 0; index < message.fields.size(); ++index) {
        const FieldSyntax& field = message.fields[index];
        FieldRow& row = model_.fields[firstField + index];
        const bool half = field.half && row.format == Format::kV;
        if (!half && first != nullptr) {
            reporter_.Error(first->name.place,
                            "the half octet '" + first->name.text +
                                "' needs a second one behind it; add a SpareHalfOctet");
            first = nullptr;
        }
        if (half) {
            row.format = first == nullptr ? Format::kHalfLow : Format::kHalfHigh;
            first = first == nullptr ? &field : nullptr;
        }
    }
    if (first != nullptr) {
        reporter_.Error(first->name.place, "the half octet '" + first->name.text +
                                               "' needs a second one behind it; add a "
                                               "SpareHalfOctet");
    }
}

void MessageBuilder::AddOrderRows(std::size_t firstField) {
    const auto optional = [](const FieldRow& row) { return row.presence == Presence::kOptional; };
    const auto begin = model_.fields.begin() + static_cast<std::ptrdiff_t>(firstField);
    if (std::none_of(begin, model_.fields.end(), optional)) {
        return;
    }
    for (auto row = begin; row != model_.fields.end(); ++row) {
        row->order = static_cast<std::uint16_t>(model_.orders.size());
        if (const std::int32_t width = InfoOf(row->format).identifierWidth; width != 0) {
            model_.orders.push_back(
                {row->tag, static_cast<std::uint8_t>(0xFFU << (8 - width)), IeOrderRow::kTagged});
        } else {
            model_.orders.push_back({0, 0, IeOrderRow::kUntagged});
        }
    }
    model_.orders.push_back({0, 0, IeOrderRow::kEnd});
}

void MessageBuilder::BuildMessage(const MessageSyntax& syntax) {
    const auto header = headers_.find(syntax.header.text);
    if (header == headers_.end()) {
        if (!syntax.header.text.empty()) {
            reporter_.Error(syntax.header.place,
                            "no header '" + syntax.header.text + "' is declared");
        }
        types_.DeclareMessage(syntax, {});
        return;
    }
    Header& headerRows = header->second;
    if (types_.Lookup(syntax.name.text) != nullptr) {
        types_.DeclareMessage(syntax, headerRows.members);  // reports the second one of the name
        return;
    }
    AddHeader(headerRows);
    types_.DeclareMessage(syntax, headerRows.members);
    const TypeModel* type = types_.Lookup(syntax.name.text);
    MessageRow row{};
    row.name = syntax.name.text;
    row.members = static_cast<std::uint16_t>(type->elements.size());
    row.code = syntax.code;
    row.firstHeaderItem = headerRows.firstItem;
    row.headerItemCount = static_cast<std::uint16_t>(headerRows.syntax->items.size());
    row.firstField = static_cast<std::uint16_t>(model_.fields.size());
    row.fieldCount = static_cast<std::uint16_t>(syntax.fields.size());
    std::size_t element = type->elements.size() - syntax.fields.size();
    for (const FieldSyntax& field : syntax.fields) {
        CheckLimits(field);
        model_.fields.push_back(FieldOf(syntax, field, *type, static_cast<std::uint16_t>(element)));
        CheckFit(field, model_.fields.back());
        ++element;
    }
    PairHalfOctets(syntax, row.firstField);
    AddOrderRows(row.firstField);
    const auto index = static_cast<std::uint16_t>(model_.messages.size());
    model_.messages.push_back(row);
    model_.messageTypes.push_back(type);
    messages_.emplace(syntax.name.text, index);
    values_.NoteMessage(syntax.name.text, index);
}

void MessageBuilder::BuildSet(const SetSyntax& syntax) {
    SetModel set;
    set.syntax = &syntax;
    set.type = types_.DeclareSet(syntax);
    std::map<std::uint32_t, const SetSyntax::Message*> taken;
    for (const SetSyntax::Message& message : syntax.messages) {
        const auto found = messages_.find(message.name.text);
        if (found == messages_.end()) {
            reporter_.Error(message.name.place,
                            "'" + message.name.text + "' is no message declared above");
            continue;
        }
        set.messages.push_back(found->second);
        const auto tag = static_cast<std::uint16_t>(set.messages.size());
        for (const std::uint32_t key : message.keys) {
            const auto [other, isNew] = taken.emplace(key, &message);
            if (!isNew) {
                reporter_.Error(message.name.place, "the key of '" + message.name.text +
                                                        "' is that of '" +
                                                        other->second->name.text + "' already");
            }
            set.keys.push_back({static_cast<std::uint16_t>(key), tag});
        }
    }
    std::sort(set.keys.begin(), set.keys.end(),
              [](const iecodec::KeyRow& a, const iecodec::KeyRow& b) { return a.key < b.key; });
    model_.sets.push_back(std::move(set));
}

void MessageBuilder::NumberDiagnostics() {
    std::uint32_t next = family_.firstNumber;
    const auto number = [&next] { return static_cast<std::uint16_t>(next++); };
    for (FieldRow& field : model_.fields) {
        field.encodeNumber = number();
        if (InfoOf(field.format).identifierWidth != 0) {
            number();  // the search, which reports nothing
        }
        if (InfoOf(field.format).lengthWidth != 0) {
            field.sizeNumber = number();
        }
        field.valueNumber = number();
        field.shortNumber = number();
    }
    for (iecodec::ValueRow& value : model_.values) {
        if (ReportsFailures(value.shape)) {
            value.encodeNumber = number();
            value.decodeNumber = number();
            value.shortNumber = number();
        }
    }
    for (iecodec::GroupRow& group : model_.groups) {
        group.missingNumber = number();
    }
}

}  // namespace quorvane::compiler
