#pragma once

// Writing into a buffer of known size. Bits outside it are dropped and remembered as an overflow,
// so that an encoder may check once, at its end.
//
// Tests: tests/unit/bit_writer_test.cpp.

#include <cstdint>

#include "bits/bit_reader.h"

namespace quorvane::bits {

class BitWriter {
  public:
    /// Writes into the `octetCount` octets at `octets`, which must outlive the writer. Octets that
    /// nothing is written to keep what they hold.
    BitWriter(std::uint8_t* octets, std::int64_t octetCount)
        : octets_(octets), octetCount_(octetCount) {}

    /// Stores the low `count` bits of `value` at bit `position`, as BitBufferWrite does.
    void Write(std::int64_t position, std::uint32_t value, std::int32_t count);

    /// Copies `count` bits from the start of `source` to bit `position`.
    void Copy(std::int64_t position, const std::uint8_t* source, std::int64_t count);

    /// Whether a bit was dropped.
    [[nodiscard]] bool Overflowed() const { return overflowed_; }

    /// Looks at the same buffer.
    [[nodiscard]] BitReader Reader() const { return {octets_, octetCount_}; }

  private:
    std::uint8_t* octets_;
    std::int64_t octetCount_;
    bool overflowed_ = false;
};

}  // namespace quorvane::bits
