#pragma once

// One call: octets to the result text, the same for all entry points.
//
// Tests: tests/unit/facade_*_test.cpp, tests/golden_test.cpp.

#include <cstdint>
#include <string>
#include <string_view>

#include "bits/bit_reader.h"
#include "bits/outcome.h"
#include "quorvane/decode.h"

namespace quorvane::facade {

/// The views are valid until the thread's next call.
struct Answer {
    bool found;
    /// Whether `text` is all ASCII, as nearly all texts are.
    bool ascii;
    /// Each octet is a character of the same value.
    std::string_view text;
    /// Lines, each with a line feed.
    std::string_view diagnostics;
};

/// Decodes the message of `length` octets at the start of what `reader` may read. Any length is
/// allowed.
Answer DecodeMessage(Decoding decoding, const bits::BitReader& reader, std::int64_t length);

/// "Decoder reported the following error: ", the text of `code`, and CR LF.
std::string ErrorLine(bits::Code code);

}  // namespace quorvane::facade
