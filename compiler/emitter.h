#pragma once

// Writes a family's tables as C++.

#include <iosfwd>
#include <set>
#include <string>
#include <vector>

#include "compiler/resolver.h"

namespace quorvane::compiler {

/// What the emitter needs to know of the family's CSN.1 structures.
struct EmittedCsn {
    std::string code;               // C++ that defines the tables, to stand in an unnamed namespace
    std::string structures;         // expression for the span of CsnStructure
    std::set<std::string> headers;  // that the code needs
};

/// Writes the C++ of `model` to `out`: the definition of quorvane::families::k...Family. Output
/// depends on the arguments alone. `sources` are named in the first line.
void Emit(std::ostream& out, const FamilySyntax& family, FamilyModel& model, const EmittedCsn& csn,
          const std::vector<std::string>& sources);

}  // namespace quorvane::compiler
