// The safe entry points: the common answer as UTF-8.

#include "quorvane/decode.h"

#include <algorithm>

#include "bits/bit_reader.h"
#include "facade/decoder.h"
#include "facade/utf8.h"

namespace quorvane {
namespace {

bool DecodeRun(Decoding decoding, const bits::BitReader& reader, std::int64_t length,
               std::string& text, std::string& diagnostics) {
    const facade::Answer answer = facade::DecodeMessage(decoding, reader, length);
    if (answer.ascii) {
        text.assign(answer.text);
    } else {
        facade::AssignAsUtf8(text, answer.text);
    }
    diagnostics.assign(answer.diagnostics);
    return answer.found;
}

}  // namespace

bool DecodeInto(Decoding decoding, std::span<const std::uint8_t> message, std::string& text,
                std::string& diagnostics) {
    const auto length = static_cast<std::int64_t>(message.size());
    return DecodeRun(decoding, {message.data(), length}, length, text, diagnostics);
}

bool DecodeInto(Decoding decoding, PaddedMessage message, std::string& text,
                std::string& diagnostics) {
    const std::size_t farthest = static_cast<std::size_t>(std::max(message.length, 0)) + kReadAhead;
    const auto readable = static_cast<std::int64_t>(std::min(message.capacity, farthest));
    return DecodeRun(decoding, {message.octets, readable}, message.length, text, diagnostics);
}

Result Decode(Decoding decoding, std::span<const std::uint8_t> message) {
    Result result;
    result.found = DecodeInto(decoding, message, result.text, result.diagnostics);
    return result;
}

Result Decode(Decoding decoding, PaddedMessage message) {
    Result result;
    result.found = DecodeInto(decoding, message, result.text, result.diagnostics);
    return result;
}

}  // namespace quorvane
