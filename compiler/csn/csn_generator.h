#pragma once

// Byte-code from checked CSN.1 descriptions, in the forms that docs/csn1-notation.md lists.

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "compiler/csn/csn_syntax.h"
#include "compiler/csn/csn_types.h"
#include "compiler/reporter.h"
#include "csn/assembly/verifier.h"

namespace quorvane::compiler {

/// An image without what makes it C++.
struct CsnImage {
    std::vector<std::uint8_t> code;
    std::vector<std::uint16_t> fieldTable;
    std::uint32_t fieldCount = 0;
    std::vector<std::string> actions;                // C++ expressions
    std::vector<csn::VerifierAction> actionEffects;  // of each of them
    std::vector<std::string> functions;              // the same, of value functions
    std::vector<csn::VerifierBound> functionBounds;
    std::set<std::string> headers;  // of functions that descriptions declare

    std::map<std::uint32_t, std::string> fieldNames;  // by identifier
    std::map<std::uint32_t, std::string> ruleNames;   // by offset
    std::map<std::uint32_t, Span> ruleSpans;          // by offset
    std::map<std::uint32_t, std::string> tagNames;    // of variables, by tag
    std::vector<std::uint32_t> entries;               // offset of each structure's rule
};

/// Generates the code of all structures in the order of the rules. Mistakes go to the reporter.
CsnImage GenerateCsn(Reporter& reporter, const CsnSyntax& syntax, const CsnTypeTables& types);

}  // namespace quorvane::compiler
