#pragma once

// One call: octets to the result text, the same for all entry points.
//
// Tests: tests/unit/facade_*_test.cpp, tests/golden_test.cpp.

#include <cstdint>
#include <string>
#include <string_view>

#include "bits/bit_reader.h"
#include "bits/outcome.h"
#include "facade/decodings.h"
#include "iecodec/message_container.h"
#include "quorvane/decode.h"
#include "reflect/text_buffer.h"

namespace quorvane::facade {

/// What `message` promises to be readable, as far as a decoder can look.
bits::BitReader ReaderOf(const PaddedMessage& message);

/// A decoded record, in the arena that it was decoded with.
struct DecodedRecord {
    Binding binding{};
    iecodec::MessageContainer container;
    bits::Outcome outcome = iecodec::kUnknownMessage;

    [[nodiscard]] bool Found() const { return outcome != iecodec::kUnknownMessage; }

    /// The type of the message that was found.
    [[nodiscard]] std::uint16_t Type() const { return binding.set->memberTypes[container.tag - 1]; }
};

/// Decodes the message of `length` octets at the start of what `reader` may read into `decoded`.
/// Any length is allowed.
void DecodeRecord(Decoding decoding, const bits::BitReader& reader, std::int64_t length,
                  bits::Arena& arena, iecodec::Diagnostics& diagnostics, DecodedRecord& decoded);

/// An empty text in memory that the thread keeps. DecodeMessage writes to the same one.
reflect::TextBuffer& ThreadText();

/// The text of `code`; empty if it has none.
std::string_view ErrorText(bits::Code code);

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

/// Strict reading, with the record as text, in memory that the thread keeps from call to call.
Answer DecodeMessage(Decoding decoding, const bits::BitReader& reader, std::int64_t length);

/// The same of a record that was decoded before, without diagnostics.
Answer TextOf(Decoding decoding, const DecodedRecord& decoded);

/// "Decoder reported the following error: ", the text of `code`, and CR LF.
std::string ErrorLine(bits::Code code);

}  // namespace quorvane::facade
