// What `compare` measures of a library: the calls of one commit in a shared object of their own, so
// that one program can hold two commits. Uses the public headers alone.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "quorvane/decode.h"
#include "quorvane/message.h"

namespace {

std::string text;
std::string diagnostics;
quorvane::Message message;

}  // namespace

extern "C" {

[[gnu::visibility("default")]] void CallWithText(int decoding, const std::uint8_t* octets,
                                                 std::size_t count) {
    quorvane::DecodeInto(static_cast<quorvane::Decoding>(decoding), std::span(octets, count), text,
                         diagnostics);
}

[[gnu::visibility("default")]] void CallWithoutText(int decoding, const std::uint8_t* octets,
                                                    std::size_t count) {
    message.Decode(static_cast<quorvane::Decoding>(decoding), std::span(octets, count));
}

}  // extern "C"
