#include "compiler/type_resolver.h"

#include <algorithm>
#include <set>
#include <span>

#include "compiler/record_order.h"

namespace quorvane::compiler {
namespace {

using Kind = TypeModel::Kind;

constexpr NumberRange kIntegerBits = {1, 32, "bits of this integer"};
constexpr NumberRange kBinaryBits = {1, 8 * 0xFFFF, "bits of a binary"};
constexpr NumberRange kItems = {1, 0xFFFF, "items of a sequence"};

}  // namespace

TypeResolver::TypeResolver(Reporter& reporter, const FamilySyntax& family, const CsnTypes& csn,
                           FamilyModel& model)
    : reporter_(reporter), csn_(csn), model_(model) {
    for (const EnumModel& entry : family.enums) {
        std::set<std::uint64_t> values;
        for (const EnumModel::Value& value : entry.values) {
            reporter_.ErrorIf(!values.insert(value.value.value).second, value.value.span,
                              "the value stands in the enumeration already");
        }
        reporter_.ErrorIf(entry.values.empty() && !entry.otherText && !entry.broken, entry.span,
                          "the enumeration has no values");
        reporter_.ErrorIf(
            !enums_.emplace(entry.name, &entry).second, entry.span,
            "the enumeration '" + entry.name + "' is declared already; give it another name");
    }
}

const EnumModel* TypeResolver::FindEnum(const Name& use) {
    const auto found = enums_.find(use.text);
    if (found != enums_.end()) {
        return found->second;
    }
    reporter_.ErrorIf(!use.text.empty(), use.span, "no enumeration '" + use.text + "' is declared");
    return nullptr;
}

TypeModel* TypeResolver::Lookup(const std::string& name) const {
    const auto found = named_.find(name);
    return found == named_.end() ? nullptr : found->second;
}

TypeModel* TypeResolver::Find(const Name& use) {
    TypeModel* type = Lookup(use.text);
    reporter_.ErrorIf(
        !IsDeclared(use.text) && !use.text.empty(), use.span,
        "no type '" + use.text + "' is declared above; a type stands before its users");
    return type;
}

void TypeResolver::Declare(const Name& name, TypeModel* type) {
    type->named = true;
    if (!named_.emplace(name.text, type).second) {
        reporter_.Error(name.span,
                        "'" + name.text + "' is declared already; names are unique in a family");
        return;
    }
    model_.named.push_back(type);
}

void CheckValues(Reporter& reporter, const TypeModel& type, std::uint64_t bits) {
    if (type.enumeration == nullptr) {
        return;
    }
    const std::string what = "in the " + std::to_string(bits) + " bits of '" + type.name + "'";
    for (const EnumModel::Value& value : type.enumeration->values) {
        if (!value.unreachable) {
            WithinRange(reporter, value.value, {0, MostOf(bits), what});
        } else if (value.value.value <= MostOf(bits)) {
            reporter.Error(value.value.span, "the value is reachable " + what);
        }
    }
}

TypeModel* TypeResolver::Build(const TypeSyntax& syntax, const std::string& inlineName,
                               const WideNumber& wireBits) {
    TypeStore& store = model_.store;
    switch (syntax.kind) {
        case TypeSyntax::Kind::kNamed:
            return Find(syntax.name);
        case TypeSyntax::Kind::kSpare:
        case TypeSyntax::Kind::kInteger: {
            TypeModel* type = store.NewType(Kind::kInteger, inlineName, syntax.span);
            if (syntax.size) {
                type->size = Narrow<std::uint32_t>(reporter_, *syntax.size, kIntegerBits);
            }
            return type;
        }
        case TypeSyntax::Kind::kEnumerated: {
            TypeModel* type = store.NewType(Kind::kEnumerated, inlineName, syntax.span);
            type->enumeration = FindEnum(syntax.name);
            const WideNumber& size = syntax.size.value_or(wireBits);
            if (!syntax.size && wireBits.value == 0) {
                reporter_.Error(syntax.span,
                                "the width of the enumeration in bits is missing: 'enum8'");
                return type;
            }
            type->size = Narrow<std::uint32_t>(reporter_, size, kIntegerBits);
            CheckValues(reporter_, *type, wireBits.value == 0 ? type->size : wireBits.value);
            return type;
        }
        case TypeSyntax::Kind::kBinary: {
            TypeModel* type = store.NewType(Kind::kBinary, inlineName, syntax.span);
            type->size = Narrow<std::uint32_t>(reporter_, *syntax.size, kBinaryBits);
            type->fixed = syntax.fixed;
            return type;
        }
        case TypeSyntax::Kind::kSequence: {
            TypeModel* type = store.NewType(Kind::kSequence, inlineName, syntax.span);
            type->size = Narrow<std::uint32_t>(reporter_, *syntax.size, kItems);
            type->item =
                Build(syntax.item.front(), reflect::InlineName(inlineName, reflect::kItemName),
                      {0, syntax.item.front().span});
            return type;
        }
        case TypeSyntax::Kind::kStruct: {
            TypeModel* type = store.NewType(Kind::kStruct, inlineName, syntax.span);
            AddMembers(*type, syntax.members);
            CheckFormless(*type, syntax.members);
            return type;
        }
    }
    return nullptr;
}

void TypeResolver::AddMember(TypeModel& owner, const Name& name, TypeModel* type, bool optional) {
    const auto same = [&](const ElementModel& element) { return element.name == name.text; };
    reporter_.ErrorIf(std::any_of(owner.elements.begin(), owner.elements.end(), same), name.span,
                      "'" + owner.name + "' has a member '" + name.text +
                          "' already; a member has a name of its own");
    owner.elements.push_back({name.text, type, optional});
}

void TypeResolver::AddMembers(TypeModel& owner, const std::vector<MemberSyntax>& members,
                              const std::vector<Name>& record) {
    for (const MemberSyntax* member : RecordOrder(reporter_, members, record, "struct")) {
        AddMember(
            owner, member->name,
            Build(member->type, reflect::InlineName(owner.name, member->name.text), member->bits),
            member->optional);
        owner.elements.back().wireBits = member->bits.value;
    }
}

/// The C++ of a special element knows where its members lie, and which optional ones are there.
void TypeResolver::CheckFormless(const TypeModel& type, std::span<const MemberSyntax> members) {
    reporter_.ErrorIf(members.empty(), type.span, "the struct has no members");
    for (const MemberSyntax& member : members) {
        reporter_.ErrorIf(member.extent != MemberSyntax::Extent::kNone, member.name.span,
                          "a member has no width here, only a name and a type");
    }
}

void TypeResolver::DeclareStruct(const StructSyntax& syntax) {
    TypeModel* type = model_.store.NewType(Kind::kStruct, syntax.name.text, syntax.name.span);
    AddMembers(*type, syntax.members, syntax.record);
    for (const GroupSyntax& group : syntax.groups) {
        for (const OctetSyntax& octet : group.octets) {
            AddMembers(*type, octet.members);
        }
    }
    if (syntax.remainder) {
        AddMember(*type, syntax.remainder->name,
                  Build(syntax.remainder->type,
                        reflect::InlineName(syntax.name.text, syntax.remainder->name.text), {}),
                  syntax.remainder->optional);
        CheckFormless(*type, {&*syntax.remainder, 1});
        reporter_.ErrorIf(syntax.remainder->optional, syntax.remainder->name.span,
                          "a remainder is always there; leave the '?' out");
    }
    if (syntax.shape == StructSyntax::Shape::kSpecial) {
        CheckFormless(*type, syntax.members);
        if (!syntax.record.empty()) {
            reporter_.Error(syntax.record.front().span,
                            "the members of a special struct stand in the record's order already");
        }
    }
    reporter_.ErrorIf(type->elements.empty(), type->span, "the struct has no members");
    Declare(syntax.name, type);
}

void TypeResolver::DeclareUnion(const UnionSyntax& syntax) {
    TypeModel* type = model_.store.NewType(Kind::kUnion, syntax.name.text, syntax.name.span);
    for (const AlternativeSyntax& alternative : syntax.alternatives) {
        AddMember(*type, alternative.name,
                  Build(alternative.type,
                        reflect::InlineName(syntax.name.text, alternative.name.text), {}),
                  true);
    }
    reporter_.ErrorIf(type->elements.empty() && syntax.shape != UnionSyntax::Shape::kChoice,
                      type->span, "the union has no alternatives");
    Declare(syntax.name, type);
}

void TypeResolver::DeclareSequence(const SequenceSyntax& syntax) {
    Declare(syntax.name, Build(syntax.type, syntax.name.text, {}));
}

void TypeResolver::DeclareCsn(const Name& name) {
    const auto found = csn_.byName.find(name.text);
    if (found == csn_.byName.end()) {
        reporter_.Error(name.span, "no .csn1 file of the family has a structure '" + name.text +
                                       "' at its top");
        return;
    }
    if (found->second.type == nullptr) {
        DeclareBroken(name);
    } else {
        Declare(name, found->second.type);
    }
}

void TypeResolver::DeclareMessage(const MessageSyntax& syntax,
                                  const std::vector<const HeaderItemSyntax*>& headerMembers) {
    TypeModel* type = model_.store.NewType(Kind::kStruct, syntax.name.text, syntax.name.span);
    for (const HeaderItemSyntax* item : headerMembers) {
        AddMember(
            *type, item->name,
            Build(item->type, reflect::InlineName(syntax.name.text, item->name.text), item->bits),
            false);
    }
    for (const FieldSyntax& field : syntax.fields) {
        const bool optional = !field.mandatory && (field.iei || field.condition);
        AddMember(*type, field.name,
                  Build(field.type, reflect::InlineName(syntax.name.text, field.name.text),
                        field.WireBits()),
                  optional);
    }
    Declare(syntax.name, type);
}

TypeModel* TypeResolver::DeclareSet(const SetSyntax& syntax) {
    TypeModel* type = model_.store.NewType(Kind::kUnion, syntax.name.text, syntax.name.span);
    for (const SetSyntax::Message& message : syntax.messages) {
        AddMember(*type, message.name, Lookup(message.name.text), true);  // reported with the keys
    }
    reporter_.ErrorIf(type->elements.empty(), type->span, "the set has no messages");
    Declare(syntax.name, type);
    return type;
}

}  // namespace quorvane::compiler
