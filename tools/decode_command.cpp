// One message, and the list of decodings.

#include <algorithm>
#include <cstdint>

#include "quorvane/decode.h"
#include "quorvane/json.h"
#include "tools/commands.h"
#include "tools/hex.h"

namespace quorvane::tool {

std::string NotDescribed(std::string_view function) {
    return "the messages of " + std::string(function) + " are not described in this build";
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

bool PrintAsText(Decoding decoding, std::span<const std::uint8_t> octets) {
    const Result result = quorvane::Decode(decoding, octets);
    std::fwrite(result.diagnostics.data(), 1, result.diagnostics.size(), stderr);
    Print(result.text);
    return result.found;
}

bool PrintAsJson(Decoding decoding, std::span<const std::uint8_t> octets) {
    Message message;
    const bool found = message.Decode(decoding, octets);
    std::string json;
    AppendJson(message, json);
    Print(json += '\n');
    return found;
}

}  // namespace

int Decode(const std::string& function, const std::vector<std::string>& hex, MessageForm form) {
    const std::optional<Decoding> decoding = FindDecoding(function);
    if (!decoding) {
        throw UsageError("unknown function '" + function +
                         "'; the command \"quorvane list\" shows all");
    }
    std::string joined;
    for (const std::string& piece : hex) {
        joined += joined.empty() ? piece : " " + piece;
    }
    std::vector<std::uint8_t> octets;
    if (const std::string problem = ParseHex(joined, octets); !problem.empty()) {
        throw UsageError("HEX, " + problem);
    }
    const bool found = form == MessageForm::kJson ? PrintAsJson(*decoding, octets)
                                                  : PrintAsText(*decoding, octets);
    if (!Decodings()[static_cast<std::size_t>(*decoding)].described) {
        std::fprintf(stderr, "quorvane: %s\n", NotDescribed(function).c_str());
        return kNotDescribed;
    }
    return found ? kDone : kNotFound;
}

}  // namespace quorvane::tool
