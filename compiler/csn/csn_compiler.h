#pragma once

// Compiles a family's CSN.1 descriptions: from source files to the types, the byte-code image and
// the tables that the library runs them with. The notation is described in docs/csn1-notation.md.
//
//   TypeStore store;
//   const auto file = reporter.AddFile("eps.csn1", text);
//   const CompiledCsn csn = CompileCsn(reporter, {file}, {findEnum}, store);
//   if (!reporter.HasErrors()) {
//       EmitCsn(out, csn);
//   }
//
// Tests: tests/compiler/csn_*_test.cpp.

#include <iosfwd>
#include <string>
#include <vector>

#include "compiler/csn/csn_generator.h"
#include "compiler/csn/csn_types.h"
#include "compiler/model.h"
#include "compiler/reporter.h"
#include "csn/assembly/planner.h"
#include "csn/csn_program.h"

namespace quorvane::compiler {

/// One structure of an image.
struct CompiledCsnStructure {
    std::string name;
    std::string citation;  // the standard's clause
    TypeModel* type;       // a named struct, its members in the order of their names' bytes
    std::uint32_t label;   // offset of its rule in the image
    std::uint16_t rootTag;
    std::uint16_t firstTag;
    std::vector<csn::CsnFieldRow> fields;  // by tag, from firstTag on
    std::vector<std::string> paths;        // by tag: where in the type, "Member.Member[].Member"
};

/// The descriptions of a family, compiled.
struct CompiledCsn {
    CsnImage image;
    csn::Plan plan;  // of the image
    std::vector<CompiledCsnStructure>
        structures;                   // in the order of the sources, those without mistakes
    std::vector<std::string> broken;  // names of the others
};

/// Compiles the files `files` of `reporter`, which share their rules, into one image. The types of
/// the structures are added to `store`. The enumerations that `family` finds must outlive the
/// store. Mistakes go to the reporter.
[[nodiscard]] CompiledCsn CompileCsn(Reporter& reporter, const std::vector<std::uint32_t>& files,
                                     const CsnFamily& family, TypeStore& store);

/// Writes the tables of `csn` as C++ to stand in an unnamed namespace inside of quorvane::families:
/// kCsnProgram, and kCsnStructures, an array of csn::CsnStructure in the order of the structures.
/// It needs <array>, <cstdint>, <span>, csn/csn_program.h and csn/functions.h. The output depends
/// on the argument alone.
void EmitCsn(std::ostream& out, const CompiledCsn& csn);

}  // namespace quorvane::compiler
