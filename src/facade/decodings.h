#pragma once

// The decodings: their names, and which message set of which family each one runs.
//
// Tests: tests/unit/facade_decodings_test.cpp.

#include <cstdint>
#include <optional>
#include <string_view>

#include "families/family.h"
#include "quorvane/decode.h"

namespace quorvane::facade {

/// Who sends the messages of a decoding.
enum class Direction : std::uint8_t { kBoth, kDownlink, kUplink };

/// What the messages of a decoding begin with, from what tells most of them to what tells nothing.
enum class Start : std::uint8_t {
    kDiscriminator,       // protocol discriminator and message type, perhaps behind a length
    kMessageType,         // message type alone
    kShortDiscriminator,  // protocol discriminator of a bit, and message type
    kNothing,
};

struct DecodingRow {
    /// As it stands in the texts; not always that of the entry point.
    std::string_view textName;
    /// The family that describes its messages.
    std::string_view family;
    /// The message set, a union of that name in the family's catalogue, or the decoding without
    /// one.
    std::string_view set;
    Direction direction = Direction::kBoth;
    Start start = Start::kNothing;
    /// What the decoder is given as the message's length in bits; 0: the caller's length.
    std::int32_t fixedBits = 0;
    /// If messages may stand behind a security header: what session management messages there are
    /// decoded as.
    std::optional<Decoding> sessionManagement = std::nullopt;

    /// The same of a message of `octets` octets.
    [[nodiscard]] std::int64_t BitsOf(std::int64_t octets) const {
        return fixedBits > 0 ? fixedBits : 8 * octets;
    }
};

/// Whether it is one of the enumerators.
bool IsDecoding(Decoding decoding);

/// An empty row if it is none of the enumerators.
const DecodingRow& RowOf(Decoding decoding);

/// Where a decoding's messages are described. All are null if they are not.
struct Binding {
    const families::Family* family;
    const iecodec::MessageSetRow* set;
};

/// May be called from any thread at once, the first time included.
Binding BindingOf(Decoding decoding);

}  // namespace quorvane::facade
