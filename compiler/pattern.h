#pragma once

// Types that several families have: the bodies stand once, as patterns, and each family takes them
// under names of its own.

#include "compiler/syntax.h"

namespace quorvane::compiler {

/// The names of a family's own types for the patterns that it has taken.
using TakenNames = std::map<std::string, std::string>;

// The pattern as a type of the family: under the name given, and with those of the family for what
// it is made of.
StructSyntax Taken(StructSyntax pattern, const Name& name, const TakenNames& names);
UnionSyntax Taken(UnionSyntax pattern, const Name& name, const TakenNames& names);
SequenceSyntax Taken(SequenceSyntax pattern, const Name& name, const TakenNames& names);

}  // namespace quorvane::compiler
