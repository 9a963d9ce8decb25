#pragma once

// The fields of a record as JSON, by the type tables: what a walk over the Fields of a Message
// tells, several times as fast.
//
// Tests: tests/json/json_schema_test.cpp, which walks, and its siblings.

#include <cstdint>
#include <span>

#include "bits/record.h"
#include "quorvane/message.h"
#include "reflect/text_buffer.h"
#include "reflect/type_tables.h"

namespace quorvane::facade {

/// Writes the members of a struct that are there, as an object. Writes at `at`, where the slack of
/// `text` stands open, and returns the end, behind which a few octets more have room. `made`: by a
/// program, not by a decoder.
char* PutMembersAsJson(reflect::TextBuffer& text, char* at, const reflect::TypeTables& tables,
                       const reflect::TypeRow& row, const bits::Cell& cell, bool made);

/// Closes an object or a list that ends at `at`, perhaps with a comma too many.
char* PutEndAsJson(reflect::TextBuffer& text, char* at, char bracket);

// Members of an object, likewise. Each makes sure of its own room.

/// "hex" and "bits": a bit string.
char* PutBitsAsJson(reflect::TextBuffer& text, char* at, std::span<const std::uint8_t> octets,
                    std::uint32_t bitCount);
/// "at", with a comma ahead.
char* PutPlaceAsJson(reflect::TextBuffer& text, char* at, const Place& place);

}  // namespace quorvane::facade
