#pragma once

// A CSN.1 structure between its bits and its record: runs its plan or, to encode, the machine, and
// moves the fields, by the rows of the structure, into cells or out of them.
//
// Tests: tests/unit/csn_record_test.cpp.

#include <cstdint>

#include "bits/arena.h"
#include "bits/bit_reader.h"
#include "bits/bit_writer.h"
#include "bits/record.h"
#include "csn/csn_program.h"

namespace quorvane::csn {

/// Decodes `bitLength` bits of `reader` at `bitPos` into the struct of `cell`. Returns the count of
/// bits passed, which the caller compares with what it expects; kSyntaxError if the structure does
/// not match; kSizeOutOfRange if a sequence has too many items. Fields that were found are
/// stored in every case, in the last one up to the item refused.
bits::Outcome DecodeCsn(const CsnStructure& structure, const bits::BitReader& reader,
                        bits::Arena& arena, std::int32_t bitPos, std::int32_t bitLength,
                        bits::Cell& cell);

/// Encodes the struct of `cell` at `bitPos` of `writer`. Returns the count of bits written, or
/// kSyntaxError if the structure cannot hold such a record. Check writer.Overflowed() afterwards.
/// Bits behind those written may have changed too.
bits::Outcome EncodeCsn(const CsnStructure& structure, bits::BitWriter& writer, std::int32_t bitPos,
                        const bits::Cell& cell);

}  // namespace quorvane::csn
