#include "compiler/resolver.h"

#include <algorithm>

#include "compiler/message_builder.h"
#include "compiler/type_resolver.h"
#include "compiler/value_builder.h"

namespace quorvane::compiler {
namespace {

/// The skip table in the order of its tags, as the binary search over it needs.
void BuildSkipTable(Reporter& reporter, const FamilySyntax& family, FamilyModel& model) {
    std::vector<const SkipRowSyntax*> rows;
    for (const SkipRowSyntax& row : family.skipRows) {
        rows.push_back(&row);
    }
    std::stable_sort(rows.begin(), rows.end(), [](const SkipRowSyntax* a, const SkipRowSyntax* b) {
        return a->tag < b->tag;
    });
    const SkipRowSyntax* before = nullptr;
    for (const SkipRowSyntax* row : rows) {
        if (row->tag > 0xFF || (row->half && (row->tag & 0x0F) != 0)) {
            reporter.Error(row->place, row->half ? "the tag of a half-octet row ends in 0"
                                                 : "a tag has two hexadecimal digits");
        }
        if (before != nullptr && before->tag == row->tag) {
            reporter.Error(row->place, "the tag stands in the skip table already");
        }
        before = row;
        model.formats.push_back({static_cast<std::uint8_t>(row->tag),
                                 static_cast<std::uint8_t>(row->half ? 0xF0 : 0xFF), row->size});
    }
}

}  // namespace

void Resolve(Reporter& reporter, const FamilySyntax& family, const CsnTypes& csn,
             FamilyModel& model) {
    using Kind = DeclarationSyntax::Kind;
    TypeResolver types(reporter, family, csn, model);
    ValueBuilder values(reporter, family, csn, types, model);
    MessageBuilder messages(reporter, family, types, values, model);
    BuildSkipTable(reporter, family, model);
    for (const DeclarationSyntax& declaration : family.declarations) {
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
        }
    }
    messages.NumberDiagnostics();
}

}  // namespace quorvane::compiler
