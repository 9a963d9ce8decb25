#pragma once

// What keeps a CSN.1 structure from coming back to the record that it was decoded to. Nothing else
// may.

#include "bits/record.h"
#include "csn/csn_program.h"
#include "families/family.h"
#include "reflect/type_tables.h"

namespace quorvane::fuzz {

/// Whether records of the structure may change by its description: its code, with the rules that it
/// calls, has an action in it, which may note a length that an encoder works out anew, or
/// tests/round_trip_exceptions.txt names it.
bool IsLossy(const families::Family& family, const csn::CsnStructure& structure);

/// Whether the record has so many fields that an encoder, which notes those of branches that it
/// tries too, may have no room for them.
bool HoldsManyFields(const reflect::TypeTables& tables, std::uint16_t type, const bits::Cell& cell);

/// Whether a field in the record was longer in the message than its store.
bool HoldsCutField(const reflect::TypeTables& tables, std::uint16_t type, const bits::Cell& cell);

}  // namespace quorvane::fuzz
