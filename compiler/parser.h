#pragma once

// Reads description files into syntax. Mistakes are reported, the line or block that holds them is
// passed over, and reading goes on.

#include "compiler/lexer.h"
#include "compiler/syntax.h"

namespace quorvane::compiler {

/// Adds what `file` declares to `family`.
void ParseDescription(Reporter& reporter, std::uint32_t file, FamilySyntax& family);

}  // namespace quorvane::compiler
