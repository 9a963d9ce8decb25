// One message, and the list of decodings.

#include <algorithm>
#include <cstdint>

#include "quorvane/decode.h"
#include "quorvane/json.h"
#include "tools/commands.h"
#include "tools/function_name.h"
#include "tools/input_file.h"
#include "tools/octet_text.h"
#include "tools/tolerant.h"
#include "tools/utf8.h"

namespace quorvane::tool {

std::string NotDescribed(std::string_view function) {
    return "the messages of " + std::string(function) + " are not described in this build";
}

Decoding DecodingNamed(const std::string& function) {
    const std::optional<Decoding> decoding = FindFunction(function);
    if (!decoding) {
        throw UsageError(UnknownFunction(function) + "; the command \"quorvane list\" shows all");
    }
    return *decoding;
}

int List() {
    std::size_t widest = 0;
    for (const DecodingInfo& info : Decodings()) {
        widest = std::max(widest, info.name.size());
    }
    std::string text;
    for (const DecodingInfo& info : Decodings()) {
        text += info.name;
        text.append(widest + 2 - info.name.size(), ' ');
        text += info.purpose;
        text += info.described ? "" : "; not described in this build";
        text += '\n';
    }
    Print(text);
    return kDone;
}

namespace {

bool PrintAsText(Decoding decoding, PaddedMessage octets, DecodeOptions options) {
    Message message;
    std::string text;
    std::string diagnostics;
    const bool found = DecodeAsText(message, decoding, octets, options, text, diagnostics);
    std::fwrite(diagnostics.data(), 1, diagnostics.size(), stderr);
    Print(text);
    return found;
}

bool PrintAsJson(Decoding decoding, PaddedMessage octets, DecodeOptions options) {
    Message message;
    const bool found = message.Decode(decoding, octets, options);
    std::string json;
    AppendJson(message, json);
    Print(json += '\n');
    return found;
}

std::string Joined(const std::vector<std::string>& pieces) {
    std::string joined;
    for (const std::string& piece : pieces) {
        joined += joined.empty() ? piece : " " + piece;
    }
    return joined;
}

}  // namespace

int Decode(const std::string& function, const OctetSource& source, MessageForm form,
           DecodeOptions options) {
    const Decoding decoding = DecodingNamed(function);
    std::vector<std::uint8_t> octets;
    const std::string text =
        source.file.empty() ? Joined(source.hex) : ReadMessageFile(source.file);
    if (const std::string problem = ParseOctets(text, octets); !problem.empty()) {
        const std::string where = source.file.empty() ? "HEX" : source.file;
        throw UsageError(WithoutInvalidUtf8(where + ", " + problem));
    }
    const PaddedMessage message(octets.data(), static_cast<std::int32_t>(octets.size()),
                                octets.size());
    const bool found = form == MessageForm::kJson ? PrintAsJson(decoding, message, options)
                                                  : PrintAsText(decoding, message, options);
    if (!Decodings()[static_cast<std::size_t>(decoding)].described) {
        std::fprintf(stderr, "quorvane: %s\n", NotDescribed(function).c_str());
        return kNotDescribed;
    }
    return found ? kDone : kNotFound;
}

}  // namespace quorvane::tool
