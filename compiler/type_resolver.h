#pragma once

// Builds the types of a family from their declarations.

#include <map>
#include <span>
#include <string>

#include "compiler/resolver.h"

namespace quorvane::compiler {

/// Values of an enumerated type that no field of so many bits can have are mistakes.
void CheckValues(Reporter& reporter, const TypeModel& type, std::uint64_t bits);

class TypeResolver {
  public:
    TypeResolver(Reporter& reporter, const FamilySyntax& family, const CsnTypes& csn,
                 FamilyModel& model);

    /// The named type, or null with an error at `use` if it isn't declared above.
    TypeModel* Find(const Name& use);
    /// The named type, or null.
    [[nodiscard]] TypeModel* Lookup(const std::string& name) const;
    /// Whether a declaration has the name, also a broken one.
    [[nodiscard]] bool IsDeclared(const std::string& name) const { return named_.count(name) != 0; }

    /// The type that `syntax` tells, as that of the member `name` of `owner`: an inline type with
    /// a compound name, or a named one. `wireBits` is the width on the wire, 0 if it varies.
    TypeModel* Build(const TypeSyntax& syntax, const std::string& inlineName,
                     const WideNumber& wireBits);

    /// Adds a named type to the catalogue; a second one of that name is an error.
    void Declare(const Name& name, TypeModel* type);

    // The types of the declarations.
    void DeclareStruct(const StructSyntax& syntax);
    void DeclareUnion(const UnionSyntax& syntax);
    void DeclareSequence(const SequenceSyntax& syntax);
    void DeclareCsn(const Name& name);
    /// What has mistakes is known by its name, so that its users are not told of them too.
    void DeclareBroken(const Name& name) { named_.emplace(name.text, nullptr); }
    /// `headerMembers`: the members that the header gives, in the order of the record.
    void DeclareMessage(const MessageSyntax& syntax,
                        const std::vector<const HeaderItemSyntax*>& headerMembers);
    TypeModel* DeclareSet(const SetSyntax& syntax);

    /// Adds a member and reports a name that the type has already.
    void AddMember(TypeModel& owner, const Name& name, TypeModel* type, bool optional);

  private:
    const EnumModel* FindEnum(const Name& use);
    void CheckFormless(const TypeModel& type, std::span<const MemberSyntax> members);
    void AddMembers(TypeModel& owner, const std::vector<MemberSyntax>& members,
                    const std::vector<Name>& record = {});

    Reporter& reporter_;
    const CsnTypes& csn_;
    FamilyModel& model_;
    std::map<std::string, const EnumModel*> enums_;
    std::map<std::string, TypeModel*> named_;
};

}  // namespace quorvane::compiler
