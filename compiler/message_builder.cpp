#include "compiler/message_builder.h"

#include <algorithm>
#include <span>

#include "compiler/message_keys.h"
#include "compiler/record_order.h"

namespace quorvane::compiler {
namespace {

using iecodec::FieldRow;
using iecodec::HeaderItemRow;
using iecodec::IeOrderRow;
using iecodec::kNone;
using iecodec::MessageRow;
using Format = FieldRow::Format;
using iecodec::FieldFormatInfo;
using ValueEnd = FieldFormatInfo::ValueEnd;
using Presence = FieldRow::Presence;
using Kind = TypeModel::Kind;

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

/// The integer or enumerated member of that name, if `type` is a struct that always has one. Spare
/// members store nothing.
const ElementModel* NumberOf(const TypeModel& type, std::string_view name) {
    const auto found = std::find_if(
        type.elements.begin(), type.elements.end(), [name](const ElementModel& member) {
            return member.name == name && member.type != nullptr && !member.optional &&
                   member.type->size != 0 &&
                   (member.type->kind == Kind::kInteger || member.type->kind == Kind::kEnumerated);
        });
    return type.kind != Kind::kStruct || found == type.elements.end() ? nullptr : &*found;
}

/// How many fields a pseudo length counts if the message does not say: those ahead of its first
/// end check or of the field that takes all that is left.
std::size_t CountedFields(const MessageSyntax& message) {
    const auto end =
        std::find_if(message.fields.begin(), message.fields.end(), [](const FieldSyntax& field) {
            return field.format == Format::kEndCheck || field.format == Format::kRest;
        });
    return static_cast<std::size_t>(end - message.fields.begin());
}

constexpr NumberRange kNumbers = {1, 0xFFFF, "of the family's diagnostic numbers"};

/// The octets that a value may have.
NumberRange OctetsOf(Format format) {
    const std::int32_t lengthWidth = InfoOf(format).lengthWidth;
    return lengthWidth == 0   ? NumberRange{1, 0xFFFF / 8, "octets of a value without a length"}
           : lengthWidth == 8 ? NumberRange{0, 0xFF, "octets behind a length of one octet"}
                              : NumberRange{0, 0xFFFF, "octets behind a length of two octets"};
}

}  // namespace

MessageBuilder::MessageBuilder(Reporter& reporter, const FamilySyntax& family, TypeResolver& types,
                               ValueBuilder& values, FamilyModel& model)
    : reporter_(reporter),
      family_(family),
      types_(types),
      values_(values),
      model_(model),
      skipTable_(reporter) {
    for (const HeaderSyntax& header : family.headers) {
        Header entry{&header, {}};
        if (!header.broken) {
            entry.members = RecordOrder(reporter, header.items, header.record, "header");
        }
        reporter_.ErrorIf(!headers_.emplace(header.name.text, std::move(entry)).second,
                          header.name.span,
                          "the header '" + header.name.text + "' is declared already");
    }
}

void MessageBuilder::AddHeader(Header& header) {
    if (header.firstItem != kNone) {
        return;
    }
    header.firstItem = static_cast<std::uint16_t>(model_.headerItems.size());
    for (const HeaderItemSyntax& item : header.syntax->items) {
        const auto found = std::find(header.members.begin(), header.members.end(), &item);
        const auto element = static_cast<std::uint16_t>(found - header.members.begin());
        HeaderItemRow row{item.kind, found == header.members.end() ? kNone : element, 0, 0};
        row.width = Narrow<std::uint8_t>(reporter_, item.bits, {1, 32, "bits of a header's item"});
        row.constant = Narrow<std::uint32_t>(
            reporter_, item.constant,
            {0, MostOf(row.width), "in " + std::to_string(row.width) + " bits"});
        if (row.kind == HeaderItemRow::Kind::kMessageType) {
            reporter_.ErrorIf(header.typeBits != 0, item.span,
                              "the header has a message type already");
            header.typeBits = row.width;
        }
        reporter_.ErrorIf(row.kind == HeaderItemRow::Kind::kPseudoLength &&
                              (row.width != 8 || &item != &header.syntax->items.front()),
                          item.span, "a pseudo length is the first octet of a header");
        reporter_.ErrorIf(row.kind == HeaderItemRow::Kind::kExtendedIdentifier && row.width != 3,
                          item.bits.span, "a transaction identifier has 3 bits");
        reporter_.ErrorIf(!item.name.text.empty() && item.type.kind != TypeSyntax::Kind::kInteger &&
                              item.type.kind != TypeSyntax::Kind::kEnumerated,
                          item.type.span, "a member of a header is an integer or enumerated");
        model_.headerItems.push_back(row);
    }
}

FieldRow MessageBuilder::FieldOf(const MessageSyntax& message, const FieldSyntax& field,
                                 const TypeModel& type, std::uint16_t element) {
    FieldRow row{};
    row.name = field.name.text;
    row.format = field.format;
    row.element = element;
    row.order = kNone;
    row.unchecked = field.unchecked;
    row.conditionElement = kNone;
    row.conditionMember = kNone;
    const FieldFormatInfo& info = InfoOf(row.format);
    const NumberRange octets = OctetsOf(row.format);
    if (field.least) {
        row.leastOctets = Narrow<std::uint16_t>(reporter_, *field.least, octets);
        row.mostOctets = Narrow<std::uint16_t>(reporter_, *field.most, octets);
    } else {
        row.mostOctets = 0xFFFF;
    }
    row.iei = static_cast<std::uint8_t>(field.iei ? field.iei->value : 0);  // of two digits
    row.presence = field.condition                          ? Presence::kConditional
                   : info.ieiWidth != 0 && !field.mandatory ? Presence::kOptional
                                                            : Presence::kMandatory;
    const bool sized = info.lengthWidth == 0 && row.leastOctets == row.mostOctets;
    row.width = static_cast<std::uint16_t>(field.half ? 4 : sized ? 8 * row.leastOctets : 0);
    const bool spare =
        field.type.kind == TypeSyntax::Kind::kSpare && field.half && row.format == Format::kV;
    row.value = info.valueEnd == ValueEnd::kNoValue || spare
                    ? kNone
                    : values_.RowOf(field.type, type.elements[element].type, field.name.text,
                                    field.WireBits(), true);
    if (field.condition) {
        AddCondition(message, field, type, row);
    }
    return row;
}

void MessageBuilder::AddCondition(const MessageSyntax& message, const FieldSyntax& field,
                                  const TypeModel& type, FieldRow& row) {
    const FieldSyntax::Condition& condition = *field.condition;
    const std::string name = "'" + condition.field.text + "'";
    const auto refuse = [&](bool wrong, const std::string& text) {
        reporter_.ErrorIf(wrong, condition.field.span, text);
        return wrong;
    };
    const auto above =
        std::span(message.fields).first(static_cast<std::size_t>(&field - message.fields.data()));
    const auto found = std::find_if(above.begin(), above.end(), [&](const FieldSyntax& other) {
        return other.name.text == condition.field.text;
    });
    if (refuse(found == above.end(), name + " is no field above this one")) {
        return;
    }
    refuse(InfoOf(row.format).ieiWidth != 0,
           "a field with an identifier is there if its identifier is");
    refuse(field.half, "half octets are always there; a condition goes with whole octets");
    const auto back = static_cast<std::size_t>(above.end() - found);
    const FieldRow& decider = model_.fields[model_.fields.size() - back];
    const TypeModel* deciderType = type.elements[decider.element].type;
    if (deciderType == nullptr) {
        return;  // reported, or declared with mistakes
    }
    refuse(decider.presence != Presence::kMandatory,
           name + " may be absent; a field that is always there decides");
    row.conditionElement = decider.element;
    row.conditionMask = 0xFFFFFFFF;
    std::uint64_t width = 0;
    if (condition.member.text.empty()) {
        const bool integer = decider.value != kNone &&
                             model_.values[decider.value].shape == iecodec::Shape::kInteger;
        if (refuse(!integer, name + " is no integer")) {
            return;
        }
        width = model_.values[decider.value].width;
    } else {
        const ElementModel* member = NumberOf(*deciderType, condition.member.text);
        if (member == nullptr) {
            reporter_.Error(condition.member.span, name + " has no member '" +
                                                       condition.member.text +
                                                       "' that is a number and always there");
            return;
        }
        row.conditionMember = static_cast<std::uint16_t>(member - deciderType->elements.data());
        const unsigned bits = std::max<unsigned>(decider.width, 8U * decider.leastOctets);
        reporter_.ErrorIf(!values_.AlwaysHolds(decider.value, row.conditionMember, bits),
                          condition.member.span,
                          name + " may end ahead of '" + condition.member.text +
                              "'; a member that is always there decides");
        width = member->wireBits != 0 ? member->wireBits : member->type->size;
    }
    const std::uint64_t most = MostOf(width);
    const std::string what =
        "in '" + (condition.member.text.empty() ? condition.field : condition.member).text + "'";
    if (condition.mask) {
        row.conditionMask = Narrow<std::uint32_t>(reporter_, *condition.mask, {1, most, what});
    }
    row.conditionValue = Narrow<std::uint32_t>(reporter_, condition.value, {0, most, what});
    reporter_.ErrorIf((row.conditionValue & ~row.conditionMask) != 0, condition.value.span,
                      "the mask excludes the value");
}

void MessageBuilder::CheckLimits(const MessageSyntax& message, const FieldSyntax& field) {
    const FieldFormatInfo& info = InfoOf(field.format);
    const std::string name = "'" + field.name.text + "'";
    const auto refuse = [&](bool wrong, const std::string& text) {
        reporter_.ErrorIf(wrong, field.name.span, text);
    };
    const bool identified = info.ieiWidth != 0;
    const bool hasWidth = info.valueEnd == ValueEnd::kWidth;
    const bool hasLength = info.valueEnd == ValueEnd::kLength;
    refuse(!identified && field.iei,
           "the format of " + name + " has no identifier; TV, TLV, TLV-E and T have one");
    refuse(identified && !field.iei, name + " needs its identifier in front of the format");
    refuse(field.mandatory && !field.iei, "a field without an identifier is mandatory as it is");
    refuse(field.halfIei != (field.half && field.iei),
           "an identifier of half an octet goes with a value of half an octet: '9- TV half'");
    refuse(hasWidth && !field.half && !(field.least && field.least->value == field.most->value),
           "the size of " + name + " is missing: a number of octets, or 'half'");
    reporter_.ErrorIf(field.least && field.least->value > field.most->value,
                      field.least.value_or(WideNumber{}).span,
                      "the limits of " + name + " are the wrong way round");
    refuse(hasLength && field.half, "a field with a length is not half an octet");
    refuse(!hasWidth && !hasLength && (field.half || field.least),
           "the format of " + name + " has no size");
    refuse(field.unchecked && (field.half || !hasWidth),
           "only a field of a fixed number of octets is unchecked");
    refuse(field.format == Format::kRest && &field != &message.fields.back(),
           "a field that takes the rest is the last one");
}

/// The value's bits must be able to be those that its type takes.
void MessageBuilder::CheckFit(const FieldSyntax& field, const FieldRow& row) {
    const BitRange type = values_.BitsOf(row.value);
    const bool counted = InfoOf(row.format).lengthWidth != 0;
    const bool unread = field.least && (field.least->value == kUnknownNumber ||
                                        field.most->value == kUnknownNumber);
    if (row.value == kNone || field.unchecked || unread || row.leastOctets > row.mostOctets ||
        (field.half ? counted : !counted && row.width == 0)) {
        return;  // there is no value, or no size that could be checked
    }
    const std::uint64_t most = std::min<std::uint64_t>(row.mostOctets, OctetsOf(row.format).most);
    const BitRange room =
        counted ? BitRange{8U * row.leastOctets, 8 * most} : BitRange{row.width, row.width};
    const std::uint64_t unit = counted ? 8 : 1;
    const std::uint64_t least = (std::max(type.least, room.least) + unit - 1) / unit;
    reporter_.ErrorIf(
        least > std::min(type.most, room.most) / unit, field.type.span,
        "'" + field.name.text + "' has " + Shown(room) + " bits, its type " + Shown(type));
}

/// An identifier that stands again in a message is meant to: 'again' says so.
void MessageBuilder::CheckIdentifiers(const MessageSyntax& message) {
    for (const FieldSyntax& field : message.fields) {
        const Span span = field.iei ? field.iei->span : field.name.span;
        bool isNew = true;
        for (const FieldSyntax* other = message.fields.data(); other != &field; ++other) {
            const bool sameForm = other->halfIei == field.halfIei;
            const bool alike =
                field.iei && other->iei &&
                ((field.iei->value ^ other->iei->value) & (sameForm ? 0xFF : 0xF0)) == 0;
            isNew = isNew && !(alike && sameForm);
            reporter_.ErrorIf(alike && !sameForm, span,
                              "the identifiers of '" + other->name.text + "' and '" +
                                  field.name.text + "' begin alike, one of them half an octet");
        }
        reporter_.ErrorIf(isNew == field.again, span,
                          isNew ? "no field above has the identifier of '" + field.name.text + "'"
                                : "a field above has the identifier of '" + field.name.text +
                                      "' already; put 'again' behind the size if it is repeated");
    }
}

void MessageBuilder::PairHalfOctets(const MessageSyntax& message, std::size_t firstField) {
    const auto isHalf = [&fields = message.fields](std::size_t index) {
        return index < fields.size() && fields[index].half && fields[index].format == Format::kV;
    };
    for (std::size_t index = 0; index < message.fields.size(); ++index) {
        if (!isHalf(index)) {
            continue;
        }
        const Name& name = message.fields[index].name;
        model_.fields[firstField + index].format = Format::kHalfLow;
        if (isHalf(index + 1)) {
            model_.fields[firstField + ++index].format = Format::kHalfHigh;
        } else {
            reporter_.Error(name.span, "the half octet '" + name.text +
                                           "' needs a second one behind it; add a SpareHalfOctet");
        }
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
        if (const std::int32_t width = InfoOf(row->format).ieiWidth; width != 0) {
            model_.orders.push_back(
                {row->iei, static_cast<std::uint8_t>(0xFFU << (8 - width)), IeOrderRow::kWithIei});
        } else {
            model_.orders.push_back({0, 0, IeOrderRow::kWithoutIei});
        }
    }
    model_.orders.push_back({0, 0, IeOrderRow::kEnd});
}

void MessageBuilder::BuildMessage(const MessageSyntax& syntax) {
    const auto header = headers_.find(syntax.header.text);
    if (header == headers_.end() || header->second.syntax->broken) {
        reporter_.ErrorIf(header == headers_.end(), syntax.header.span,
                          "no header '" + syntax.header.text + "' is declared");
        types_.DeclareMessage(syntax, {});
        DeclareBroken(syntax.name);
        return;
    }
    Header& headerRows = header->second;
    if (types_.IsDeclared(syntax.name.text)) {
        types_.DeclareMessage(syntax, headerRows.members);  // reports the second one of the name
        return;
    }
    AddHeader(headerRows);
    types_.DeclareMessage(syntax, headerRows.members);
    const TypeModel* type = types_.Lookup(syntax.name.text);
    MessageRow row{};
    row.name = syntax.name.text;
    row.members = static_cast<std::uint16_t>(type->elements.size());
    if (syntax.code.has_value() != (headerRows.typeBits != 0)) {
        reporter_.Error(syntax.header.span,
                        syntax.code ? "the header '" + syntax.header.text + "' has no message type"
                                    : "the message type is missing behind the header's name");
    } else if (syntax.code) {
        row.code = Narrow<std::uint32_t>(reporter_, *syntax.code,
                                         {0, MostOf(headerRows.typeBits), "of the message type"});
    }
    row.firstHeaderItem = headerRows.firstItem;
    row.headerItemCount = static_cast<std::uint16_t>(headerRows.syntax->items.size());
    row.firstField = static_cast<std::uint16_t>(model_.fields.size());
    row.fieldCount = static_cast<std::uint16_t>(syntax.fields.size());
    const std::size_t counted = CountedFields(syntax);
    row.countedFields = static_cast<std::uint16_t>(syntax.countedFields.value_or(counted));
    reporter_.ErrorIf(row.countedFields > counted, syntax.countedEnd,
                      "the pseudo length ends at a field above already");
    const auto& items = headerRows.syntax->items;
    reporter_.ErrorIf(
        syntax.countedFields &&
            (items.empty() || items.front().kind != HeaderItemRow::Kind::kPseudoLength),
        syntax.countedEnd, "the header '" + syntax.header.text + "' has no pseudo length");
    std::size_t element = type->elements.size() - syntax.fields.size();
    for (const FieldSyntax& field : syntax.fields) {
        CheckLimits(syntax, field);
        model_.fields.push_back(FieldOf(syntax, field, *type, static_cast<std::uint16_t>(element)));
        CheckFit(field, model_.fields.back());
        if (field.iei && InfoOf(field.format).ieiWidth != 0) {
            skipTable_.Note(field, model_.fields.back());
        }
        ++element;
    }
    PairHalfOctets(syntax, row.firstField);
    CheckIdentifiers(syntax);
    AddOrderRows(row.firstField);
    const auto index = static_cast<std::uint16_t>(model_.messages.size());
    model_.messages.push_back(row);
    model_.messageTypes.push_back(type);
    messages_.emplace(syntax.name.text, index);
    values_.NoteMessage(syntax.name.text, index);
}

void MessageBuilder::DeclareBroken(const Name& name) {
    messages_.emplace(name.text, kNone);
    values_.NoteMessage(name.text, kNone);
}

void MessageBuilder::BuildSet(const SetSyntax& syntax) {
    SetModel set;
    set.type = types_.DeclareSet(syntax);
    set.row.name = syntax.name.text;
    reporter_.ErrorIf(!syntax.keyForm, syntax.name.span, "the set has no line 'key'");
    set.row.keyForm = syntax.keyForm.value_or(iecodec::KeyForm::kTwoOctets);
    constexpr NumberRange kOctet = {0, iecodec::kMostKeyOctet,
                                    "octets ahead of one that tells a message"};
    set.row.highOctet = Narrow<std::uint8_t>(reporter_, syntax.highOctet, kOctet);
    set.row.lowOctet = Narrow<std::uint8_t>(reporter_, syntax.lowOctet, kOctet);
    set.row.typeOctet =
        Narrow<std::uint8_t>(reporter_, syntax.typeOctet.value_or(WideNumber{1, {}}), kOctet);
    for (const KeyMaskSyntax& row : syntax.masks) {
        set.masks.push_back({row.highNibbles, row.lowNibbles,
                             Narrow<std::uint16_t>(reporter_, row.mask, {0, 0xFFFF, "of a mask"})});
    }
    const bool twoOctets = set.row.keyForm == iecodec::KeyForm::kTwoOctets;
    reporter_.ErrorIf(!twoOctets && syntax.typeOctet, syntax.name.span,
                      "only a key of two octets goes with a line 'shows'");
    const bool sixBits = set.row.keyForm == iecodec::KeyForm::kSixBits;
    reporter_.ErrorIf(sixBits && !syntax.masks.empty(), syntax.name.span,
                      "a key of six bits goes without a mask");
    const NumberRange keys = {0, sixBits ? 0x3FU : 0xFFFFU, "of a key"};
    std::map<std::uint64_t, const SetSyntax::Message*> taken;
    for (const SetSyntax::Message& message : syntax.messages) {
        const auto found = messages_.find(message.name.text);
        if (found == messages_.end()) {
            reporter_.Error(message.name.span,
                            "'" + message.name.text + "' is no message declared above");
            continue;
        }
        if (found->second == kNone) {
            continue;
        }
        set.messages.push_back(found->second);
        model_.usedMessages.insert(found->second);
        const auto tag = static_cast<std::uint16_t>(set.messages.size());
        for (const WideNumber& key : message.keys) {
            const auto [other, isNew] = taken.emplace(key.value, &message);
            if (!isNew) {
                reporter_.Error(key.span, "the key of '" + message.name.text + "' is that of '" +
                                              other->second->name.text + "' already");
            }
            set.keys.push_back({Narrow<std::uint16_t>(reporter_, key, keys), tag});
        }
    }
    CheckKeys(reporter_, syntax, set, model_);
    std::sort(set.keys.begin(), set.keys.end(),
              [](const iecodec::KeyRow& a, const iecodec::KeyRow& b) { return a.key < b.key; });
    AddSet(syntax.name, std::move(set));
}

void MessageBuilder::AddSet(const Name& name, SetModel set) {
    const auto same = [&](const SetModel& other) { return other.row.name == set.row.name; };
    reporter_.ErrorIf(std::any_of(model_.sets.begin(), model_.sets.end(), same), name.span,
                      "'" + name.text + "' is declared already; names are unique in a family");
    model_.sets.push_back(std::move(set));
}

void MessageBuilder::BuildDecoding(const SetSyntax& syntax) {
    const Name& name = syntax.messages.front().name;
    SetModel set;
    set.row.name = syntax.name.text;
    set.row.keyForm = iecodec::KeyForm::kKeyless;
    if (const auto found = messages_.find(name.text); found != messages_.end()) {
        set.messages.push_back(found->second);
        model_.usedMessages.insert(found->second);
    } else if (const TypeModel* type = types_.Find(name); type != nullptr) {
        reporter_.ErrorIf(type->kind != Kind::kStruct, name.span,
                          "'" + name.text + "' is neither a message nor a struct");
        TypeSyntax value;
        value.kind = TypeSyntax::Kind::kNamed;
        value.name = name;
        MessageRow row{};
        row.name = name.text;
        row.members = static_cast<std::uint16_t>(type->elements.size());
        row.value = values_.RowOf(value, type, name.text, {0, name.span}, true);
        set.messages.push_back(static_cast<std::uint16_t>(model_.messages.size()));
        model_.messages.push_back(row);
        model_.messageTypes.push_back(type);
    }
    AddSet(syntax.name, std::move(set));
}

/// A message that nothing refers to is never decoded, and a header without messages never checked.
void MessageBuilder::CheckUses() {
    for (const MessageSyntax& message : family_.messages) {
        const auto found = messages_.find(message.name.text);
        reporter_.ErrorIf(
            found != messages_.end() && model_.usedMessages.count(found->second) == 0,
            message.name.span,
            "'" + message.name.text + "' is in no message set, union, field or decoding");
    }
    for (const HeaderSyntax& header : family_.headers) {
        reporter_.ErrorIf(headers_.at(header.name.text).firstItem == kNone, header.name.span,
                          "the header '" + header.name.text + "' is used by no message");
    }
}

void MessageBuilder::Finish() {
    skipTable_.Build(family_.skipRows, model_.formats, model_.unknownFormats);
    NumberDiagnostics();
    if (!reporter_.HasErrors()) {  // a mistake may hide a use
        CheckUses();
    }
}

void MessageBuilder::NumberDiagnostics() {
    std::uint64_t next =
        Narrow<std::uint16_t>(reporter_, family_.firstNumber.value_or(WideNumber{1, {}}), kNumbers);
    const auto number = [&next] { return static_cast<std::uint16_t>(next++); };
    for (FieldRow& field : model_.fields) {
        field.encodeNumber = number();
        if (InfoOf(field.format).ieiWidth != 0) {
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
    const auto last = Narrow<std::uint16_t>(reporter_, family_.lastNumber, kNumbers);
    WithinRange(reporter_, {next - 1, family_.family.span}, {0, last, kNumbers.what});
}

}  // namespace quorvane::compiler
