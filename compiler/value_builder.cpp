#include "compiler/value_builder.h"

#include <algorithm>

#include "compiler/message_keys.h"

namespace quorvane::compiler {
namespace {

using iecodec::kNone;
using iecodec::PartRow;
using iecodec::Shape;
using iecodec::ValueRow;

template <typename T>
std::uint16_t IndexOfNext(const std::vector<T>& rows) {
    return static_cast<std::uint16_t>(rows.size());
}

/// The index of the struct's member of that name, kNone for bits without one.
std::uint16_t IndexOf(const TypeModel& type, const Name& name) {
    const auto found =
        std::find_if(type.elements.begin(), type.elements.end(),
                     [&](const ElementModel& element) { return element.name == name.text; });
    return found == type.elements.end() ? kNone
                                        : static_cast<std::uint16_t>(found - type.elements.begin());
}

constexpr std::uint64_t kMostBits = BitRange::kMostBits;

bool IsOpen(const PartRow& part) {
    return part.kind == PartRow::Kind::kRest || part.kind == PartRow::Kind::kCounted;
}

}  // namespace

std::string Shown(const BitRange& range) {
    const std::string least = std::to_string(range.least);
    return range.most == range.least ? least
           : range.most == kMostBits ? least + " or more"
                                     : least + " to " + std::to_string(range.most);
}

ValueBuilder::ValueBuilder(Reporter& reporter, const FamilySyntax& family, const CsnTypes& csn,
                           TypeResolver& types, FamilyModel& model)
    : reporter_(reporter), family_(family), csn_(csn), types_(types), model_(model) {}

std::uint16_t ValueBuilder::Add(ValueRow row) {
    model_.values.push_back(row);
    return static_cast<std::uint16_t>(model_.values.size() - 1);
}

std::uint16_t ValueBuilder::AddNamed(const Name& name, ValueRow row) {
    const std::uint16_t index = Add(row);
    named_.emplace(name.text, index);
    return index;
}

void ValueBuilder::NoteMessage(const std::string& name, std::uint16_t message) {
    messages_.emplace(name, message);
}

bool ValueBuilder::AlwaysHolds(std::uint16_t row, std::uint16_t element, std::uint64_t bits) const {
    const ValueRow value = row == kNone ? ValueRow{} : model_.values[row];
    const auto holds = [&](std::uint16_t first, std::uint16_t count) {
        const auto parts = std::span(model_.parts).subspan(first, count);
        return std::any_of(parts.begin(), parts.end(), [&](const PartRow& part) {
            return part.kind == PartRow::Kind::kInteger && part.element == element &&
                   part.offset + part.width <= bits;
        });
    };
    if (value.shape == Shape::kExtension) {
        const auto groups = std::span(model_.groups).subspan(value.first, value.count);
        return std::any_of(groups.begin(), groups.end(), [&](const iecodec::GroupRow& group) {
            const iecodec::OctetRow& octet = model_.octets[group.firstOctet];
            return group.mandatory && holds(octet.firstPart, octet.partCount);
        });
    }
    return value.shape != Shape::kTruncatable || holds(value.first, value.count);
}

BitRange ValueBuilder::BitsOf(std::uint16_t row) const {
    if (row == kNone) {
        return {};
    }
    const ValueRow& value = model_.values[row];
    switch (value.shape) {
        case Shape::kInteger:
        case Shape::kFixed:
            return {value.width, value.width};
        case Shape::kBinary:
            return value.width == 0 ? BitRange{} : BitRange{value.width, value.width};
        case Shape::kTruncatable:
        case Shape::kSerial: {
            const auto parts = std::span(model_.parts).subspan(value.first, value.count);
            const bool open = std::any_of(parts.begin(), parts.end(), IsOpen);
            return {value.shape == Shape::kSerial ? value.width : 0U,
                    open ? kMostBits : value.width};
        }
        case Shape::kChoice: {
            BitRange range = {kMostBits, 0};
            for (const auto& alternative :
                 std::span(model_.alternatives).subspan(value.first, value.count)) {
                const BitRange one = BitsOf(alternative.value);
                range = {std::min(range.least, one.least), std::max(range.most, one.most)};
            }
            return range;
        }
        case Shape::kSequence:
            return {0, std::min(value.capacity * BitsOf(value.item).most, kMostBits)};
        case Shape::kExtension: {
            const auto groups = std::span(model_.groups).subspan(value.first, value.count);
            const auto count = std::count_if(groups.begin(), groups.end(),
                                             [](const auto& group) { return group.mandatory; });
            return {8 * static_cast<std::uint64_t>(count), kMostBits};
        }
        case Shape::kCsn:
        case Shape::kMessageSet:
        case Shape::kMessageBody:
        case Shape::kSpecial:
            break;
    }
    return {};
}

std::uint32_t ValueBuilder::WidthOf(std::uint16_t row) const {
    const BitRange range = BitsOf(row);
    return range.least == range.most ? static_cast<std::uint32_t>(range.least) : 0;
}

std::uint16_t ValueBuilder::RowOfNamed(const Name& use) {
    if (const auto found = named_.find(use.text); found != named_.end()) {
        return found->second;
    }
    // A message as a value: its body without the header.
    const auto message = messages_.find(use.text);
    if (message != messages_.end() && message->second != kNone) {
        const TypeModel* type = types_.Lookup(use.text);
        ValueRow row = StructRow(*type);
        row.shape = Shape::kMessageBody;
        row.item = message->second;
        model_.usedMessages.insert(message->second);
        return AddNamed(use, row);
    }
    return kNone;
}

std::uint16_t ValueBuilder::RowOf(const TypeSyntax& syntax, const TypeModel* type,
                                  std::string_view name, const WideNumber& wireBits, bool located) {
    if (type == nullptr) {
        return kNone;
    }
    ValueRow row{};
    row.name = type->name;
    row.located = located;
    switch (syntax.kind) {
        case TypeSyntax::Kind::kNamed:
            return RowOfNamed(syntax.name);
        case TypeSyntax::Kind::kInteger:
        case TypeSyntax::Kind::kEnumerated:
            if (type->size == 0) {
                return kNone;  // reported
            }
            row.shape = Shape::kInteger;
            row.width = Narrow<std::uint16_t>(
                reporter_, wireBits.value == 0 ? WideNumber{type->size, syntax.span} : wireBits,
                {1, type->size, "bits of this integer"});
            break;
        case TypeSyntax::Kind::kBinary:
            row.shape = Shape::kBinary;
            row.name = name;
            row.capacity = type->size;
            if (type->fixed) {
                row.width =
                    Narrow<std::uint16_t>(reporter_, *syntax.size, {1, 0xFFFF, "bits of a value"});
            }
            return Add(row);
        case TypeSyntax::Kind::kSequence: {
            row.shape = Shape::kSequence;
            row.capacity = type->size;
            row.item =
                RowOf(syntax.item.front(), type->item, name, {}, located && family_.itemsLocated);
            return Add(row);
        }
        case TypeSyntax::Kind::kSpare:
            reporter_.Error(syntax.span,
                            "only half octets without an identifier and bits of a stated width "
                            "are spare; give this a type");
            return kNone;
        case TypeSyntax::Kind::kStruct:
            reporter_.Error(syntax.span,
                            "an inline struct has a wire form only inside a special element; "
                            "declare a struct of its own");
            return kNone;
    }
    const auto key = std::tuple(std::uint32_t{row.width}, located);
    const auto [entry, isNew] = integers_.emplace(key, IndexOfNext(model_.values));
    if (isNew) {
        Add(row);
    }
    return entry->second;
}

ValueRow ValueBuilder::StructRow(const TypeModel& type) {
    ValueRow row{};
    row.name = type.name;
    row.located = true;
    row.members = static_cast<std::uint16_t>(type.elements.size());
    row.item = kNone;
    row.element = kNone;
    return row;
}

std::uint16_t ValueBuilder::Special(const Name& name) {
    auto& names = model_.specials;
    const auto declares = [&](const SpecialsSyntax& specials) {
        return std::any_of(specials.names.begin(), specials.names.end(),
                           [&](const Name& declared) { return declared.text == name.text; });
    };
    reporter_.ErrorIf(std::none_of(family_.specials.begin(), family_.specials.end(), declares),
                      name.span,
                      "no C++ element '" + name.text +
                          "' is declared; name it in a block 'specials' behind the "
                          "header that declares it");
    const auto found = std::find(names.begin(), names.end(), name.text);
    const auto index = static_cast<std::uint16_t>(found - names.begin());
    if (found == names.end()) {
        names.push_back(name.text);
    }
    return index;
}

PartRow ValueBuilder::PartOf(const StructSyntax& owner, const MemberSyntax& member,
                             const TypeModel* type) {
    using Extent = MemberSyntax::Extent;
    PartRow part{};
    part.value = kNone;
    // A value of a declared type may look at the bits behind its place and need none of its own.
    const bool mayBeEmpty =
        owner.shape == StructSyntax::Shape::kFixed && member.type.kind == TypeSyntax::Kind::kNamed;
    const bool stated = member.extent == Extent::kBits && !mayBeEmpty;
    part.width = Narrow<std::uint16_t>(reporter_, member.bits,
                                       {stated ? 1U : 0U, 0xFFFF, "bits of a member"});
    if (member.name.text.empty() ||
        (member.type.kind == TypeSyntax::Kind::kSpare && member.extent == Extent::kBits)) {
        part.kind = PartRow::Kind::kSkip;
        return part;
    }
    part.value = RowOf(member.type, type, member.name.text, member.bits, !owner.unlocated);
    if (member.extent == Extent::kRest || member.extent == Extent::kCounted) {
        const bool rest = member.extent == Extent::kRest;
        part.kind = rest ? PartRow::Kind::kRest : PartRow::Kind::kCounted;
        reporter_.ErrorIf(!rest && owner.shape != StructSyntax::Shape::kSerial, member.name.span,
                          "only a serial struct has counted members");
        return part;
    }
    if (part.value == kNone) {
        return part;
    }
    const ValueRow& value = model_.values[part.value];
    part.kind = value.shape == Shape::kInteger ? PartRow::Kind::kInteger : PartRow::Kind::kValue;
    part.located = value.located;
    const std::uint32_t width = WidthOf(part.value);
    if (member.extent == Extent::kNone) {
        part.width = static_cast<std::uint16_t>(width);
        reporter_.ErrorIf(
            width == 0, member.name.span,
            "the width of '" + member.name.text + "' in bits is missing in front of the colon");
    } else if (part.kind == PartRow::Kind::kValue && !BitsOf(part.value).Holds(part.width)) {
        reporter_.Error(member.name.span, "'" + member.name.text + "' has " +
                                              std::to_string(part.width) + " bits here, its type " +
                                              Shown(BitsOf(part.value)));
    }
    return part;
}

std::uint16_t ValueBuilder::AddParts(const StructSyntax& owner,
                                     const std::vector<MemberSyntax>& members,
                                     std::uint64_t offset) {
    const TypeModel* type = types_.Lookup(owner.name.text);
    // Rows of nested values first, so that this struct's parts stand together.
    std::vector<PartRow> parts;
    for (const MemberSyntax& member : members) {
        const std::uint16_t element = IndexOf(*type, member.name);
        PartRow part =
            PartOf(owner, member, element == kNone ? nullptr : type->elements[element].type);
        part.element = element;
        part.offset = static_cast<std::uint16_t>(offset);
        offset += part.width;
        const bool octet = owner.shape == StructSyntax::Shape::kExtension;
        reporter_.ErrorIf(
            part.kind == PartRow::Kind::kRest && (octet || &member != &members.back()),
            member.name.span, "a member that takes the rest is the last one");
        reporter_.ErrorIf(member.optional && !octet, member.name.span,
                          "only the first member of an octet that may be absent is optional");
        parts.push_back(part);
    }
    model_.parts.insert(model_.parts.end(), parts.begin(), parts.end());
    return Narrow<std::uint16_t>(reporter_, {offset, owner.name.span},
                                 {0, 0xFFFF, "bits of a struct"});
}

std::uint16_t ValueBuilder::AddSpecialParts(const StructSyntax& syntax) {
    const std::uint16_t first = IndexOfNext(model_.parts);
    for (const MemberSyntax& member : syntax.members) {
        const auto element = static_cast<std::uint16_t>(model_.parts.size() - first);
        const bool named = member.type.kind == TypeSyntax::Kind::kNamed;
        model_.parts.push_back(
            {PartRow::Kind::kValue, element, 0, 0, named ? RowOfNamed(member.type.name) : kNone});
    }
    return first;
}

const TypeModel* ValueBuilder::TypeToBuild(const Name& name, TypeModel::Kind kind) const {
    const TypeModel* type = types_.Lookup(name.text);
    const bool isFirst = type != nullptr && type->kind == kind && named_.count(name.text) == 0;
    return isFirst ? type : nullptr;
}

void ValueBuilder::BuildStruct(const StructSyntax& syntax) {
    using StructShape = StructSyntax::Shape;
    const TypeModel* type = TypeToBuild(syntax.name, TypeModel::Kind::kStruct);
    if (type == nullptr) {
        return;
    }
    ValueRow row = StructRow(*type);
    switch (syntax.shape) {
        case StructShape::kFixed:
            row.shape = Shape::kFixed;
            if (!syntax.members.empty() &&
                syntax.members.back().extent == MemberSyntax::Extent::kRest) {
                reporter_.Error(syntax.members.back().name.span,
                                "a fixed struct has no member that takes the rest; use "
                                "truncatable or serial");
            }
            break;
        case StructShape::kTruncatable:
            row.shape = Shape::kTruncatable;
            break;
        case StructShape::kSerial:
            row.shape = Shape::kSerial;
            break;
        case StructShape::kExtension:
            BuildExtension(syntax, row);
            return;
        case StructShape::kSpecial:
            row.shape = Shape::kSpecial;
            row.item = Special(syntax.special);
            row.count = static_cast<std::uint16_t>(syntax.members.size());
            row.first = AddSpecialParts(syntax);
            AddNamed(syntax.name, row);
            return;
    }
    row.width = static_cast<std::uint16_t>(AddParts(syntax, syntax.members, 0));
    row.count = static_cast<std::uint16_t>(syntax.members.size());
    row.first = static_cast<std::uint16_t>(model_.parts.size() - row.count);
    AddNamed(syntax.name, row);
}

void ValueBuilder::AddOctet(const StructSyntax& owner, const OctetSyntax& octet, bool flagged) {
    iecodec::OctetRow row{};
    const std::uint16_t end = AddParts(owner, octet.members, 1);
    row.partCount = static_cast<std::uint16_t>(octet.members.size());
    row.firstPart = static_cast<std::uint16_t>(model_.parts.size() - row.partCount);
    row.flagElement = flagged && row.partCount > 0 ? model_.parts[row.firstPart].element : kNone;
    model_.octets.push_back(row);
    reporter_.ErrorIf(end != 8, octet.span,
                      "the members of an octet take 7 bits behind the extension "
                      "bit, not " +
                          std::to_string(end - 1));
    for (std::size_t index = 0; index < octet.members.size(); ++index) {
        const MemberSyntax& member = octet.members[index];
        const bool mayBeOptional = index == 0 && flagged;
        reporter_.ErrorIf(member.optional != mayBeOptional, member.name.span,
                          mayBeOptional
                              ? "the first member of an octet that may be absent is optional: "
                                "put a '?' behind its name"
                              : "only the first member of an octet that may be absent is "
                                "optional");
    }
}

std::uint16_t ValueBuilder::BuildExtension(const StructSyntax& syntax, ValueRow row) {
    const TypeModel* type = types_.Lookup(syntax.name.text);
    row.shape = Shape::kExtension;
    row.count = static_cast<std::uint16_t>(syntax.groups.size());
    reporter_.ErrorIf(syntax.groups.empty(), syntax.name.span, "the struct has no groups");
    std::vector<iecodec::GroupRow> groups;
    std::uint64_t last = 0;
    for (const GroupSyntax& group : syntax.groups) {
        iecodec::GroupRow groupRow{};
        groupRow.mandatory = !group.optional;
        // One digit tells the group in diagnostics.
        groupRow.number = Narrow<std::uint8_t>(reporter_, group.number,
                                               {last + 1, 9, "of the group's octet number"});
        last = groupRow.number;
        groupRow.firstOctet = IndexOfNext(model_.octets);
        groupRow.octetCount = static_cast<std::uint16_t>(group.octets.size());
        reporter_.ErrorIf(group.octets.empty(), group.span, "the group has no octets");
        for (const OctetSyntax& octet : group.octets) {
            const bool first = &octet == &group.octets.front();
            AddOctet(syntax, octet, !first || group.optional);
        }
        groups.push_back(groupRow);
    }
    row.first = IndexOfNext(model_.groups);
    model_.groups.insert(model_.groups.end(), groups.begin(), groups.end());
    if (syntax.remainder) {
        row.element = IndexOf(*type, syntax.remainder->name);
        row.item = RowOf(syntax.remainder->type, type->elements.back().type,
                         syntax.remainder->name.text, {}, true);
    }
    return AddNamed(syntax.name, row);
}

void ValueBuilder::BuildUnion(const UnionSyntax& syntax) {
    const TypeModel* type = TypeToBuild(syntax.name, TypeModel::Kind::kUnion);
    if (type == nullptr) {
        return;
    }
    ValueRow row = StructRow(*type);
    row.count = static_cast<std::uint16_t>(syntax.alternatives.size());
    switch (syntax.shape) {
        case UnionSyntax::Shape::kChoice: {
            // The selector lies inside of one alternative at least.
            std::uint64_t bits = syntax.alternatives.empty() ? kMostBits : 1;
            for (const AlternativeSyntax& alternative : syntax.alternatives) {
                bits = std::max(bits, BitsOf(RowOfNamed(alternative.type.name)).most);
            }
            row.shape = Shape::kChoice;
            row.selectorWidth =
                Narrow<std::uint16_t>(reporter_, syntax.selectorWidth,
                                      {1, std::min<std::uint64_t>(bits, 32), "bits of a selector"});
            row.selectorOffset =
                Narrow<std::uint16_t>(reporter_, syntax.selectorOffset,
                                      {0, bits - row.selectorWidth, "bits ahead of a selector"});
            break;
        }
        case UnionSyntax::Shape::kMessages:
            row.shape = Shape::kMessageSet;
            row.selectorOffset = static_cast<std::uint16_t>(
                8 * Narrow<std::uint16_t>(reporter_, syntax.selectorOffset,
                                          {0, 0xFFFF / 8, "octets ahead of a message type"}));
            row.selectorWidth = 8;
            break;
        case UnionSyntax::Shape::kSpecial:
            row.shape = Shape::kSpecial;
            row.item = Special(syntax.special);
            break;
    }
    std::vector<iecodec::AlternativeRow> alternatives;
    bool hasDefault = false;
    for (const AlternativeSyntax& alternative : syntax.alternatives) {
        iecodec::AlternativeRow out{};
        out.tag = static_cast<std::uint16_t>(alternatives.size() + 1);
        out.isDefault = alternative.isDefault;
        if (alternative.selector) {
            out.selector = Narrow<std::uint32_t>(reporter_, *alternative.selector,
                                                 {0, MostOf(row.selectorWidth), "of the selector"});
        }
        const bool chosen = alternative.selector.has_value() != alternative.isDefault;
        reporter_.ErrorIf(
            (row.shape == Shape::kChoice) != chosen || (alternative.isDefault && hasDefault),
            alternative.name.span,
            row.shape == Shape::kChoice
                ? "an alternative of a choice has 'when' and a value, one of them "
                  "'default'"
                : "only a choice has alternatives with 'when' or 'default'");
        hasDefault = hasDefault || alternative.isDefault;
        const bool named = alternative.type.kind == TypeSyntax::Kind::kNamed;
        const Name& use = alternative.type.name;
        reporter_.ErrorIf(!named && row.shape != Shape::kSpecial, alternative.type.span,
                          "only a special union has types that stand inline; declare this one "
                          "above and name it here");
        if (row.shape == Shape::kMessageSet) {
            const auto message = messages_.find(use.text);
            if (message == messages_.end()) {
                reporter_.ErrorIf(named, use.span,
                                  "'" + use.text + "' is no message declared above");
            } else if (message->second != kNone) {
                out.value = message->second;
                model_.usedMessages.insert(message->second);
                out.selector = model_.messages[message->second].code;
                const std::uint64_t index = syntax.selectorOffset.value;
                const OctetBits octet =
                    OctetOf(model_, model_.messages[message->second], row.selectorOffset / 8U);
                const bool there = octet.known == 0xFF && octet.value == out.selector;
                reporter_.ErrorIf(!there && row.selectorOffset / 8U == index, use.span,
                                  "the header of '" + use.text + "' has no message type in octet " +
                                      std::to_string(index));
            }
        } else {
            out.value = named ? RowOfNamed(use) : kNone;
        }
        const auto sameSelector = [&](const iecodec::AlternativeRow& other) {
            return !other.isDefault && other.selector == out.selector;
        };
        reporter_.ErrorIf(row.shape != Shape::kSpecial && !out.isDefault &&
                              std::any_of(alternatives.begin(), alternatives.end(), sameSelector),
                          alternative.name.span,
                          "an alternative above is chosen by the same value");
        alternatives.push_back(out);
    }
    reporter_.ErrorIf(row.shape == Shape::kChoice && !hasDefault, syntax.name.span,
                      "a choice needs a default alternative");
    row.first = IndexOfNext(model_.alternatives);
    model_.alternatives.insert(model_.alternatives.end(), alternatives.begin(), alternatives.end());
    AddNamed(syntax.name, row);
}

void ValueBuilder::BuildSequence(const SequenceSyntax& syntax) {
    const TypeModel* type = TypeToBuild(syntax.name, TypeModel::Kind::kSequence);
    if (type == nullptr) {
        return;
    }
    ValueRow row{};
    row.name = type->name;
    row.located = true;
    row.capacity = type->size;
    const std::uint16_t item = RowOf(syntax.type.item.front(), type->item, syntax.name.text, {},
                                     !syntax.special && family_.itemsLocated);
    row.shape = syntax.special ? Shape::kSpecial : Shape::kSequence;
    row.item = syntax.special ? Special(syntax.specialName) : item;
    row.first = syntax.special ? item : std::uint16_t{0};
    row.count = syntax.special ? 1 : 0;
    AddNamed(syntax.name, row);
}

void ValueBuilder::BuildCsn(const Name& name) {
    const auto found = csn_.byName.find(name.text);
    if (found == csn_.byName.end() || found->second.type == nullptr ||
        named_.count(name.text) != 0) {
        return;
    }
    ValueRow row = StructRow(*found->second.type);
    row.shape = Shape::kCsn;
    row.item = found->second.structure;
    AddNamed(name, row);
}

}  // namespace quorvane::compiler
