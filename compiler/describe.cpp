#include "compiler/describe.h"

#include <algorithm>
#include <filesystem>
#include <set>
#include <sstream>

#include "compiler/csn/csn_compiler.h"
#include "compiler/emitter.h"
#include "compiler/parser.h"
#include "compiler/resolver.h"

namespace quorvane::compiler {
namespace {

CsnTypes TypesOf(const CompiledCsn& csn) {
    CsnTypes types;
    for (const std::string& name : csn.broken) {
        types.byName[name] = {nullptr, 0};
    }
    for (std::size_t index = 0; index < csn.structures.size(); ++index) {
        types.byName[csn.structures[index].name] = {csn.structures[index].type,
                                                    static_cast<std::uint16_t>(index)};
    }
    return types;
}

EmittedCsn CodeOf(const CompiledCsn& csn) {
    if (csn.structures.empty()) {
        return {"", "{}", {}};
    }
    std::ostringstream code;
    EmitCsn(code, csn);
    return {code.str(), "kCsnStructures", csn.image.headers};
}

/// The CSN.1 structures that the family's declarations name.
std::set<std::string> NamedStructures(const FamilySyntax& family) {
    std::set<std::string> names;
    for (const DeclarationSyntax& declaration : family.declarations) {
        if (declaration.kind == DeclarationSyntax::Kind::kCsn) {
            names.insert(declaration.name.text);
        }
    }
    return names;
}

}  // namespace

Description Describe(const std::vector<Source>& sources) {
    Reporter reporter;
    FamilySyntax family;
    std::vector<std::string> shownNames;
    std::vector<std::uint32_t> csnFiles;
    for (const Source& source : sources) {
        shownNames.push_back(std::filesystem::path(source.name).filename().string());
        const std::uint32_t file = reporter.AddFile(source.name, source.text);
        if (source.name.ends_with(".qd")) {
            ParseDescription(reporter, file, family);
        } else if (source.name.ends_with(".csn1")) {
            csnFiles.push_back(file);
        } else {
            reporter.Error({file, 0, 0}, "a description file ends in .qd or .csn1");
        }
    }
    if (family.family.text.empty() && !reporter.HasErrors()) {
        reporter.Error({0, 0, 0}, "no file says 'family' and the family's name");
    }
    const auto findEnum = [&](const std::string& name) -> const EnumModel* {
        const auto found = std::find_if(family.enums.begin(), family.enums.end(),
                                        [&](const EnumModel& model) { return model.name == name; });
        return found == family.enums.end() ? nullptr : &*found;
    };
    FamilyModel model;
    const CompiledCsn csn = CompileCsn(
        reporter, csnFiles, {findEnum, NamedStructures(family), family.itemsLocated}, model.store);
    Resolve(reporter, family, TypesOf(csn), model);
    if (reporter.HasErrors()) {
        return {"", reporter.Text()};
    }
    std::ostringstream code;
    Emit(code, family, model, CodeOf(csn), shownNames);
    return {code.str(), ""};
}

}  // namespace quorvane::compiler
