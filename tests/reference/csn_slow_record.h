#pragma once

// What a run of the slow machine stores, and the record that an encoder takes its fields from.

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "bits/record.h"
#include "csn/csn_program.h"
#include "reference/csn_slow_machine.h"
#include "reflect/type_tables.h"

namespace quorvane::reference {

/// A value of any type, with only what that type uses.
struct SlowValue {
    std::uint32_t number = 0;
    std::string bits;  // '0' and '1'
    std::uint32_t location = 0;
    bool present = false;
    std::vector<SlowValue> members;  // empty if nothing has reached the struct
    std::vector<SlowValue> items;

    friend bool operator==(const SlowValue&, const SlowValue&) = default;
};

/// "{12@3 - [1 2]}": numbers and bits with their location in hexadecimal, '-' for what is zero.
[[nodiscard]] std::string TextOf(const SlowValue& value);

/// The library's record of a value of the type with that index.
[[nodiscard]] SlowValue ValueOf(const reflect::TypeTables& tables, std::uint16_t type,
                                const bits::Cell& cell);

/// Stores the fields that a run has left. Gives 0, or -13 at the first item that its sequence has
/// no room for.
std::int32_t StoreRecords(const csn::CsnStructure& structure, const SlowMachine& machine,
                          SlowValue& record);

/// Supplies the fields of a record, which must outlive the source.
[[nodiscard]] SlowSource SourceOf(const csn::CsnStructure& structure, const SlowValue& record);

}  // namespace quorvane::reference
