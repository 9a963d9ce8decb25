#pragma once

// What keeps a CSN.1 structure from coming back to the record that it was decoded to. Nothing else
// may.

#include "bits/record.h"
#include "csn/csn_program.h"
#include "reflect/type_tables.h"

namespace quorvane::fuzz {

/// Whether the code of the structure, with the rules that it calls, has an action in it: those note
/// lengths that an encoder works out anew.
bool HasActions(const csn::CsnStructure& structure);

/// Whether a field in the record was longer in the message than its store.
bool HoldsCutField(const reflect::TypeTables& tables, std::uint16_t type, const bits::Cell& cell);

}  // namespace quorvane::fuzz
