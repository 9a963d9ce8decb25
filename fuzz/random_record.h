#pragma once

// Records of any type of a family, as no decoder would make them: every member at random, sizes up
// to their bounds, structs and unions that were never reached.

#include "bits/record.h"
#include "fuzz_support.h"
#include "reflect/type_tables.h"

namespace quorvane::fuzz {

/// Fills `cell`, which is zeroed, with a value of the type with index `type`. What the input has
/// not enough octets for stays as it is.
void FillRecord(const reflect::TypeTables& tables, std::uint16_t type, Input& input,
                bits::Arena& arena, bits::Cell& cell);

}  // namespace quorvane::fuzz
