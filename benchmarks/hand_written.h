#pragma once

// Six messages decoded by hand: shifts and masks at known places into a struct, without a look at
// what else the octets could be. No decoder can be cheaper; the record's decoder is held against
// it.

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "support/golden_file.h"

namespace quorvane::benchmarks {

struct HandWritten {
    std::string_view golden;  // the file below tests/golden, which this is written for
    void (*pass)(const std::uint8_t* octets);                          // fills the struct, once
    std::vector<std::uint32_t> (*values)(const std::uint8_t* octets);  // its members, in order
    test::GoldenFile message;
};

/// Those whose family is built. Ends the program if one finds other values than the record has.
std::span<const HandWritten> HandWrittenDecoders();

}  // namespace quorvane::benchmarks
