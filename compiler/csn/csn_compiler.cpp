#include "compiler/csn/csn_compiler.h"

#include <utility>

#include "compiler/csn/csn_parser.h"
#include "compiler/csn/csn_resolver.h"
#include "csn/assembly/verifier.h"

namespace quorvane::compiler {
namespace {

/// Reports what is wrong with the code at `offset` at the rule whose code it is.
void ErrorInCode(Reporter& reporter, const CompiledCsn& csn, std::uint32_t offset,
                 const std::string& text) {
    auto rule = csn.image.ruleSpans.upper_bound(offset);
    if (rule != csn.image.ruleSpans.begin()) {
        --rule;
    }
    reporter.Error(rule->second, "the code of this rule " + text);
}

/// Proves the image and makes its plan.
void VerifyImage(Reporter& reporter, CompiledCsn& csn) {
    csn::VerifierInput input;
    input.code = csn.image.code;
    input.fieldTable = csn.image.fieldTable;
    input.actions = csn.image.actionEffects;
    input.functions = csn.image.functionBounds;
    for (const CompiledCsnStructure& structure : csn.structures) {
        input.entries.push_back({structure.name, structure.label, structure.rootTag,
                                 structure.firstTag,
                                 static_cast<std::uint16_t>(structure.fields.size())});
    }
    const csn::VerifierReport report = csn::Verify(input);
    for (const csn::VerifierFinding& finding : report.findings) {
        ErrorInCode(reporter, csn, finding.offset,
                    "cannot be proven to run safely, at offset " + std::to_string(finding.offset) +
                        ": " + finding.text);
    }
    if (report.findings.empty()) {
        csn.plan = csn::MakePlan(csn.image.code, csn.image.fieldTable);
        if (!csn.plan.error.empty()) {
            ErrorInCode(reporter, csn, csn.plan.errorOffset,
                        "is too large for the library, at offset " +
                            std::to_string(csn.plan.errorOffset) + ": " + csn.plan.error);
        }
    }
}

}  // namespace

CompiledCsn CompileCsn(Reporter& reporter, const std::vector<std::uint32_t>& files,
                       const CsnFamily& family, TypeStore& store) {
    CsnSyntax syntax;
    for (const std::uint32_t file : files) {
        ParseCsn(reporter, file, syntax);
    }
    CompiledCsn csn;
    for (const CsnSection& section : syntax.sections) {
        if (section.structure) {
            csn.broken.push_back(section.structure->text);
        }
    }
    // Each pass goes on with what the ones before it have found no mistake in.
    DropBroken(reporter, syntax);
    ResolveCsn(reporter, syntax, family.structures);
    DropBroken(reporter, syntax);
    CheckCsn(reporter, syntax);
    DropBroken(reporter, syntax);
    CsnTypeTables types = DeriveCsnTypes(reporter, syntax, family, store);
    if (DropBroken(reporter, syntax)) {
        types = DeriveCsnTypes(reporter, syntax, family, store);
    }
    if (types.structures.empty()) {
        return csn;
    }
    csn.image = GenerateCsn(reporter, syntax, types);
    const bool isGenerated = csn.image.entries.size() == types.structures.size();
    for (CsnStructureTypes& structure : types.structures) {
        const std::string& name = structure.section->structure->text;
        std::erase(csn.broken, name);
        csn.structures.push_back({name, structure.section->citation, structure.type,
                                  isGenerated ? csn.image.entries[csn.structures.size()] : 0,
                                  structure.rootTag, structure.firstTag,
                                  std::move(structure.fields), std::move(structure.paths)});
    }
    if (isGenerated) {
        VerifyImage(reporter, csn);
    }
    return csn;
}

}  // namespace quorvane::compiler
