#pragma once

// One call: octets to the result text, the same for all entry points.
//
// Tests: tests/unit/facade_*_test.cpp, tests/golden_test.cpp.

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "bits/arena.h"
#include "bits/bit_reader.h"
#include "bits/outcome.h"
#include "facade/decodings.h"
#include "iecodec/message_container.h"
#include "quorvane/decode.h"
#include "reflect/text_buffer.h"

namespace quorvane::facade {

/// What a call works with. All give back what a very large message made them take.
struct Workspace {
    bits::Arena arena;
    reflect::TextBuffer text;
    iecodec::Diagnostics diagnostics;

    void Clear();
};

/// The empty workspace of a call: the one that the thread keeps from call to call, so that a thread
/// has one CallMemory at a time. A thread that is ending may have given it back before its last
/// call, which then has a workspace of its own.
class CallMemory {
  public:
    CallMemory();
    CallMemory(const CallMemory&) = delete;
    CallMemory& operator=(const CallMemory&) = delete;

    Workspace* operator->() { return workspace_; }

  private:
    std::unique_ptr<Workspace> own_;
    Workspace* workspace_;
};

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

/// The text of `code`; empty if it has none.
std::string_view ErrorText(bits::Code code);

/// The views are valid as long as the memory of the call.
struct Answer {
    bool found;
    /// Whether the fields of `text` are plain (reflect::IsPlain) but for line ends, as nearly
    /// always.
    bool plain;
    /// Each octet is a character of the same value.
    std::string_view text;
    /// Lines, each with a line feed.
    std::string_view diagnostics;
};

/// Strict reading, with the record as text. `memory` serves one call.
Answer DecodeMessage(CallMemory& memory, Decoding decoding, const bits::BitReader& reader,
                     std::int64_t length);

/// The same with the text as it stands between the quotes of a string of JSON if it is `plain`; not
/// escaped at all otherwise.
Answer DecodeMessageForJson(CallMemory& memory, Decoding decoding, const bits::BitReader& reader,
                            std::int64_t length);

/// DecodeMessage of a record that was decoded before, without diagnostics.
Answer TextOf(CallMemory& memory, Decoding decoding, const DecodedRecord& decoded);

/// "Decoder reported the following error: ", the text of `code`, and CR LF.
std::string ErrorLine(bits::Code code);

}  // namespace quorvane::facade
