// The safe entry points: the common answer as UTF-8.

#include "quorvane/decode.h"

#include "bits/bit_reader.h"
#include "facade/decoder.h"
#include "facade/utf8.h"

namespace quorvane {
namespace {

bool DecodeRun(Decoding decoding, const bits::BitReader& reader, std::int64_t length,
               std::string& text, std::string& diagnostics) {
    facade::CallMemory memory;
    const facade::Answer answer = facade::DecodeMessage(memory, decoding, reader, length);
    if (answer.plain) {
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
    return DecodeRun(decoding, facade::ReaderOf(message), message.length, text, diagnostics);
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
