#pragma once

// Checks of a message set's keys against its masks and the headers of its messages.

#include "compiler/resolver.h"

namespace quorvane::compiler {

/// Reports masks that no first octet comes to, and keys that no message can have. The keys of
/// `set` stand in the order of `syntax`, as far as its messages are known.
void CheckKeys(Reporter& reporter, const SetSyntax& syntax, const SetModel& set,
               const FamilyModel& model);

}  // namespace quorvane::compiler
