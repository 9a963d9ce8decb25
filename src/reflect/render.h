#pragma once

// The text of a record, without a value tree in between.
//
// Tests: tests/unit/reflect_render_test.cpp, tests/round_trip_test.cpp.

#include <cstdint>

#include "bits/record.h"
#include "reflect/text_buffer.h"
#include "reflect/type_tables.h"

namespace quorvane::reflect {

/// Appends the text of the value in `cell`, of the type with index `type`, as a value at `indent`
/// levels: that which the tree of the same record prints, octet for octet, but for the line ends.
/// Returns whether it is plain (IsPlain) but for these.
bool AppendText(TextBuffer& stream, const TypeTables& tables, std::uint16_t type,
                const bits::Cell& cell, std::uint32_t indent = 0,
                LineEnd lineEnd = LineEnd::kPlain);

}  // namespace quorvane::reflect
