#pragma once

// A compiled CSN.1 description: the byte-code image of a family with its tables, and for each
// structure in it the entry into the image and where its fields go in a record. All of it is
// constant data that the description compiler writes.
//
// Tests: tests/unit/csn_machine_test.cpp, tests/unit/csn_record_test.cpp.

#include <cstdint>
#include <span>
#include <string_view>

#include "bits/named_enum.h"
#include "csn/plan.h"

namespace quorvane::csn {

struct CsnRun;

using CsnAction = void (*)(CsnRun& run);
using CsnValueFunction = std::uint32_t (*)(CsnRun& run);

struct CsnProgram {
    const std::uint8_t* code;
    std::uint32_t codeSize;  // octets
    /// For a field identifier id: [id - 1] its index (signed 16 bits), from [id] on pairs of a
    /// parent tag and the field's tag under that parent.
    const std::uint16_t* fieldTable;
    const CsnAction* actionTable;
    const CsnValueFunction* valueTable;
    std::uint32_t fieldCount;  // how many field identifiers the compiler numbered
    const PlanStep* plan;      // the code made ready for decoding
};

QUORVANE_NAMED_ENUM(CsnFieldKind,
                    kNone,     // delimits only: nothing is stored
                    kInteger,  // the field's bits as a number, also of an enumerated member
                    kBinary,   // a bit string, its length that of the field
                    kStruct,   // opens a struct whose members are the fields inside
                    kMarker)   // a field of no bits: its presence is all

/// What a field of a structure is in the record, one row for each field tag.
struct CsnFieldRow {
    using Kind = CsnFieldKind;

    Kind kind;
    bool optional;           // the member has a presence flag
    std::uint16_t element;   // the member's index in the enclosing struct
    std::uint16_t width;     // kInteger: bits, 1 to 32; kStruct: how many members it has
    std::uint16_t bound;     // the member is a sequence of that many items at most; 0: it is not
    std::uint32_t mostBits;  // kBinary: capacity
    bool fixed;              // kBinary: always `mostBits` bits
    bool located;            // kInteger, kBinary: notes where it lay
    bool repeats = false;    // a single member that stands in several places, the last one counting
    bool mixed = false;  // other rows have items of this sequence, which are counted with its own

    /// Whether it is a number that is no item of a sequence.
    [[nodiscard]] constexpr bool IsNumber() const { return kind == Kind::kInteger && bound == 0; }
};

/// One structure of an image.
struct CsnStructure {
    std::string_view name;
    const CsnProgram* program;
    std::uint32_t label;     // offset of its rule in the image
    std::uint16_t step;      // index of its rule in the plan
    std::uint16_t rootTag;   // parent tag of its outermost fields
    std::uint16_t firstTag;  // its field tags are firstTag .. firstTag + fields.size() - 1
    std::uint16_t memberCount;
    std::span<const CsnFieldRow> fields;
};

}  // namespace quorvane::csn
