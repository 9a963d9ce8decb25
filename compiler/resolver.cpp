#include "compiler/resolver.h"

#include "compiler/message_builder.h"
#include "compiler/type_resolver.h"
#include "compiler/value_builder.h"

namespace quorvane::compiler {
namespace {

/// Rows refer to each other by indices of 16 bits.
void CheckRowCounts(Reporter& reporter, const FamilySyntax& family, const FamilyModel& model) {
    const auto check = [&](std::size_t count, std::string_view what) {
        WithinRange(reporter, {count, family.family.span}, {0, iecodec::kNone, what});
    };
    std::size_t elements = 0;
    for (const TypeModel& type : model.store.types) {
        elements += type.elements.size();
    }
    check(model.store.types.size(), "types of a family");
    check(elements, "members of a family");
    check(model.orders.size(), "order rows of a family");
    check(model.fields.size(), "fields of a family");
    check(model.values.size(), "value rows of a family");
    check(model.parts.size(), "parts of a family");
    check(model.alternatives.size(), "alternatives of a family");
    check(model.octets.size(), "octets of a family");
    check(model.headerItems.size(), "header items of a family");
    check(model.messages.size(), "messages of a family");
}

}  // namespace

void Resolve(Reporter& reporter, const FamilySyntax& family, const CsnTypes& csn,
             FamilyModel& model) {
    using Kind = DeclarationSyntax::Kind;
    TypeResolver types(reporter, family, csn, model);
    ValueBuilder values(reporter, family, csn, types, model);
    MessageBuilder messages(reporter, family, types, values, model);
    for (const DeclarationSyntax& declaration : family.declarations) {
        if (declaration.broken) {
            types.DeclareBroken(declaration.name);
            messages.DeclareBroken(declaration.name);
            continue;
        }
        switch (declaration.kind) {
            case Kind::kStruct:
                types.DeclareStruct(family.structs[declaration.index]);
                values.BuildStruct(family.structs[declaration.index]);
                break;
            case Kind::kUnion:
                types.DeclareUnion(family.unions[declaration.index]);
                values.BuildUnion(family.unions[declaration.index]);
                break;
            case Kind::kSequence:
                types.DeclareSequence(family.sequences[declaration.index]);
                values.BuildSequence(family.sequences[declaration.index]);
                break;
            case Kind::kCsn:
                types.DeclareCsn(declaration.name);
                values.BuildCsn(declaration.name);
                break;
            case Kind::kMessage:
                messages.BuildMessage(family.messages[declaration.index]);
                break;
            case Kind::kSet:
                messages.BuildSet(family.sets[declaration.index]);
                break;
            case Kind::kDecoding:
                messages.BuildDecoding(family.sets[declaration.index]);
                break;
        }
    }
    messages.Finish();
    CheckRowCounts(reporter, family, model);
}

}  // namespace quorvane::compiler
