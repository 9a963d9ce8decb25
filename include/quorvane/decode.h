#pragma once

// Quorvane decodes one air-interface signalling message into a text. This header is the safe way
// in; quorvane/engine.h has the class and the plain functions with wide strings.
//
//     #include <quorvane/decode.h>
//
//     const std::uint8_t octets[] = {0x02, 0x01, 0xD0, 0x31};
//     const quorvane::Result result =
//         quorvane::Decode(quorvane::Decoding::EPS_SMUplink, octets);
//     std::cout << result.text;
//
// prints
//
//     Decoded using "EPS_SMUplink".
//     MESSAGE: PDN_CONNECTIVITY_REQUEST
//     {
//       EPSBearerIdentity: 0
//       ProcedureTransactionIdentity: 1
//       RequestType: LOC:[28,4] initial attach (1)
//     ...
//
// What goes in. The caller says by a Decoding which family and direction a message is of; the
// library tells the message itself from its first octets. Octets come in the order of
// transmission, most significant bit first.
//
// What comes out. `found` is false if the octets start no message that the decoding knows; the
// text is then `Failed to decode "..." message`, without a line end. Decodings() says which
// decodings know no message at all, as this build has no description of them. Otherwise the text
// names the decoding, the error if there was one, the message and every field of it with its value.
// A message that is cut short or malformed is shown as far as it could be decoded, behind a line
// "Decoder reported the following error: ..."; `found` is true for it. `diagnostics` has a line
// "<ERRID:n> ..." for each fault; n tells the place in the decoder that found it.
//
// The text is UTF-8 and, but for one text that has U+00DF, plain ASCII. Lines end in a line feed.
// "LOC:[28,4]" gives the location of a field: bit 28 of the message, 4 bits long.
// docs/result-text.md describes the whole form.
//
// What is guaranteed. Any octets of any length give a result; the same octets give the same
// result. Nothing outside the span is read: the decoders behave as if zeros followed its end.
// All functions may be called from any number of threads at once, first calls included, and until
// the very end: from destructors of static and thread_local objects, from functions given to
// std::atexit, and in a child process that was made while threads were calling. Nothing is read
// from files or the environment, and nothing is written anywhere but to the result.
//
// What is not. Memory that runs out leaves as std::bad_alloc; nothing is leaked then, but the
// contents of the strings handed in are not specified.
//
// A call needs less than 64 KiB of stack. A thread keeps some working memory for its next call
// until it ends (mostly below 100 KiB, never more than 3 MiB), so that a call on a used thread
// allocates nothing but what the caller's strings need to grow. A call that comes when an ending
// thread has given it back takes memory for itself alone.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "quorvane/export.h"

namespace quorvane {

/// The family and direction of a message.
enum class Decoding : std::uint8_t {
    RRDownlink,
    RRUplink,
    ChannelRequest,
    RRPLENDownlink,
    RRSPD,
    L3Downlink,
    L3Uplink,
    RLC_MACDownlink,
    RLC_MACUplink,
    EPS_MMDownlink,
    EPS_MMUplink,
    EPS_SMDownlink,
    EPS_SMUplink,
    EPC_SS2UE,
    EPC_UE2SS,
    Packet_Control_Acknowledgement_8,
    Packet_Control_Acknowledgement_11,
};

/// A decoding, its name and what it is for.
struct DecodingInfo {
    Decoding decoding;
    std::string_view name;     // that of the enumerator
    std::string_view purpose;  // a few words, with the standard
    bool described = false;    // whether this build of the library knows its messages
};

/// All decodings, in the order of the enumerators, also those that are not described in this build:
/// they find no message in any octets.
QUORVANE_API std::span<const DecodingInfo> Decodings() noexcept;

/// The decoding of that name, to the letter.
QUORVANE_API std::optional<Decoding> FindDecoding(std::string_view name) noexcept;

/// The outcome of one call.
struct Result {
    bool found = false;
    std::string text;
    std::string diagnostics;  // each line ends in a line feed; empty without faults
};

/// How far behind a message's length, in octets, a decoder can look at most.
///
/// Decoders read an element before they test it against the message's end. The farthest look, in
/// octets: a nested message of at most 598 with its length field of 2, announced where the message
/// ends; a traffic flow template with identifier and length of 2, announced where the nested
/// message ends; and in that, whatever its length says, 1 and then 8 filters of 3 with 7 components
/// of 1 + 32 each. That makes 2475, rounded up to the next power of two.
inline constexpr std::size_t kReadAhead = 4096;
static_assert((2 + 598) + 2 + 1 + 8 * (3 + 7 * (1 + 32)) <= kReadAhead);

/// A message in a larger buffer, for decoding with a view of what follows it.
///
/// The plain functions of quorvane/engine.h read what lies behind a message that is cut short, and
/// it may show in the text of fields that an error line follows. A PaddedMessage gives the same
/// texts: it promises that `capacity` octets are readable at `octets`, and a capacity of
/// length + kReadAhead or more is all that a decoder can look at. Where the capacity is less, zeros
/// follow; nothing behind it is read.
struct PaddedMessage {
    constexpr PaddedMessage(const std::uint8_t* firstOctet, std::int32_t lengthInOctets,
                            std::size_t readableOctets) noexcept
        : octets(firstOctet), length(lengthInOctets), capacity(readableOctets) {}

    const std::uint8_t* octets;  // not owned; may be null if `capacity` is 0
    std::int32_t length;         // of the message; any value is allowed, negative ones included
    std::size_t capacity;        // how many octets may be read
};

/// Decodes `message`. A `decoding` that is none of the enumerators finds no message and has an
/// empty name in the text.
[[nodiscard]] QUORVANE_API Result Decode(Decoding decoding, std::span<const std::uint8_t> message);
[[nodiscard]] QUORVANE_API Result Decode(Decoding decoding, PaddedMessage message);

/// The same for loops: replaces what `text` and `diagnostics` hold and keeps their memory. Returns
/// whether a message was found. The two must be different strings.
QUORVANE_API bool DecodeInto(Decoding decoding, std::span<const std::uint8_t> message,
                             std::string& text, std::string& diagnostics);
QUORVANE_API bool DecodeInto(Decoding decoding, PaddedMessage message, std::string& text,
                             std::string& diagnostics);

}  // namespace quorvane
