#pragma once

// What a decode or an encode carries along: tables, octets, memory and the way faults are reported.

#include <cstdint>
#include <string>
#include <string_view>

#include "bits/arena.h"
#include "bits/bit_reader.h"
#include "bits/bit_writer.h"
#include "bits/outcome.h"
#include "iecodec/tables.h"

namespace quorvane::iecodec {

using enum bits::Code;

/// Collects the fault lines of a call, "<ERRID:n> text name\n" each. Every fault of the codec is
/// told through Report and nowhere else.
class Diagnostics {
  public:
    void Report(std::uint32_t number, std::string_view text, std::string_view name = {});

    [[nodiscard]] const std::string& Lines() const { return lines_; }
    void Clear() { lines_.clear(); }

  private:
    std::string lines_;
};

struct DecodeContext {
    const CodecTables& tables;
    bits::BitReader reader{nullptr, 0};
    bits::Arena& arena;
    Diagnostics& diagnostics;
};

struct EncodeContext {
    const CodecTables& tables;
    bits::BitWriter& writer;
    Diagnostics& diagnostics;
};

}  // namespace quorvane::iecodec
