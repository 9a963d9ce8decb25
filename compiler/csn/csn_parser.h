#pragma once

// Reads CSN.1 descriptions. The notation is described in docs/csn1-notation.md.

#include "compiler/csn/csn_syntax.h"
#include "compiler/reporter.h"

namespace quorvane::compiler {

/// Adds the sections of the file `file` of `reporter` to `syntax`. Mistakes go to the reporter;
/// what could be read is there in spite of them.
void ParseCsn(Reporter& reporter, std::uint32_t file, CsnSyntax& syntax);

}  // namespace quorvane::compiler
