#pragma once

// Checks of a message set's keys against its masks and the headers of its messages.

#include "compiler/resolver.h"

namespace quorvane::compiler {

/// The bits of an octet that are the same in every message of a type.
struct OctetBits {
    std::uint32_t known = 0;  // a mask
    std::uint32_t value = 0;
};

/// What the header and the type of `message` say of an octet, counted from 0.
OctetBits OctetOf(const FamilyModel& model, const iecodec::MessageRow& message,
                  std::uint32_t index);

/// Reports masks that no first octet selects, and keys that no message can have. The keys of
/// `set` stand in the order of `syntax`, as far as its messages are known.
void CheckKeys(Reporter& reporter, const SetSyntax& syntax, const SetModel& set,
               const FamilyModel& model);

}  // namespace quorvane::compiler
