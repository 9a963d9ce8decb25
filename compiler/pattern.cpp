#include "compiler/pattern.h"

namespace quorvane::compiler {
namespace {

void Rename(Name& use, const TakenNames& names) {
    if (const auto found = names.find(use.text); found != names.end()) {
        use.text = found->second;
    }
}

void Rename(TypeSyntax& type, const TakenNames& names);

void Rename(std::vector<MemberSyntax>& members, const TakenNames& names) {
    for (MemberSyntax& member : members) {
        Rename(member.type, names);
    }
}

void Rename(TypeSyntax& type, const TakenNames& names) {
    if (type.kind == TypeSyntax::Kind::kNamed) {
        Rename(type.name, names);
    }
    for (TypeSyntax& item : type.item) {
        Rename(item, names);
    }
    Rename(type.members, names);
}

}  // namespace

StructSyntax Taken(StructSyntax pattern, const Name& name, const TakenNames& names) {
    pattern.name = name;
    Rename(pattern.members, names);
    for (GroupSyntax& group : pattern.groups) {
        for (OctetSyntax& octet : group.octets) {
            Rename(octet.members, names);
        }
    }
    if (pattern.remainder) {
        Rename(pattern.remainder->type, names);
    }
    return pattern;
}

UnionSyntax Taken(UnionSyntax pattern, const Name& name, const TakenNames& names) {
    pattern.name = name;
    for (AlternativeSyntax& alternative : pattern.alternatives) {
        Rename(alternative.type, names);
    }
    return pattern;
}

SequenceSyntax Taken(SequenceSyntax pattern, const Name& name, const TakenNames& names) {
    pattern.name = name;
    Rename(pattern.type, names);
    return pattern;
}

}  // namespace quorvane::compiler
