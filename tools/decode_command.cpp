// One message, and the list of decodings.

#include <algorithm>
#include <cstdint>

#include "quorvane/decode.h"
#include "quorvane/json.h"
#include "tools/auto_function.h"
#include "tools/commands.h"
#include "tools/function_name.h"
#include "tools/input_file.h"
#include "tools/notes.h"
#include "tools/octet_text.h"
#include "tools/tolerant.h"
#include "tools/utf8.h"

namespace quorvane::tool {

std::string NotDescribed(std::string_view function) {
    return "the messages of " + std::string(function) + " are not described in this build";
}

Function FunctionNamed(const std::string& name) {
    const std::optional<Function> function = FindFunction(name);
    if (!function) {
        throw UsageError(UnknownFunction(name) + "; the command \"quorvane list\" shows all");
    }
    return *function;
}

Decoding DecodingNamed(const std::string& name) {
    const Function function = FunctionNamed(name);
    if (!function.decoding) {
        throw UsageError("'" + name +
                         "' tries functions on octets; name one, as the command "
                         "\"quorvane list\" shows them");
    }
    return *function.decoding;
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

void Tell(const std::string& words) {
    std::fprintf(stderr, "quorvane: %s\n", words.c_str());
}

void PrintAsText(Decoding decoding, PaddedMessage octets, const ShowOptions& options,
                 Message& message) {
    std::string text;
    std::string diagnostics;
    DecodeAsText(message, decoding, octets, options.decode, text, diagnostics);
    std::fwrite(diagnostics.data(), 1, diagnostics.size(), stderr);
    Print(options.notes ? WithNotes(text, message) : text);
}

std::string JsonOf(const Message& message) {
    std::string json;
    AppendJson(message, json);
    return json += '\n';
}

void TellOtherDirection(const std::vector<Decoding>& known) {
    if (!known.empty()) {
        Tell("the message is known in the other direction, to " + NamesOf(known));
    }
}

/// The decoding that `function`, which is auto, takes; tells of others on standard error.
std::optional<Decoding> Choose(const Function& function, PaddedMessage octets,
                               DecodeOptions options, Message& message) {
    const AutoChoice choice = ChooseFunction(octets, function.direction, options, message);
    if (choice.taken) {
        const std::string others = NamesOf(choice.others);
        const char* know = choice.others.size() == 1 ? " knows it too" : " know it too";
        Tell("taken as " + NamesOf({*choice.taken}) + (others.empty() ? "" : "; " + others + know));
    } else if (choice.otherDirection.empty()) {
        Tell("no function knows the message");
    }
    TellOtherDirection(choice.otherDirection);
    return choice.taken;
}

std::string Joined(const std::vector<std::string>& pieces) {
    std::string joined;
    for (const std::string& piece : pieces) {
        joined += joined.empty() ? piece : " " + piece;
    }
    return joined;
}

}  // namespace

int Decode(const std::string& name, const OctetSource& source, const ShowOptions& options) {
    const Function function = FunctionNamed(name);
    std::vector<std::uint8_t> octets;
    const std::string text =
        source.file.empty() ? Joined(source.hex) : ReadMessageFile(source.file);
    if (const std::string problem = ParseOctets(text, octets); !problem.empty()) {
        const std::string where = source.file.empty() ? "HEX" : source.file;
        throw UsageError(WithoutInvalidUtf8(where + ", " + problem));
    }
    const PaddedMessage padded(octets.data(), static_cast<std::int32_t>(octets.size()),
                               octets.size());
    Message message;
    const bool asJson = options.form == MessageForm::kJson;
    const std::optional<Decoding> decoding =
        function.decoding ? function.decoding : Choose(function, padded, options.decode, message);
    if (!decoding) {
        message = Message();
        Print(asJson ? JsonOf(message) : NotFoundText(function.name));
        return kNotFound;
    }
    if (asJson) {
        message.Decode(*decoding, padded, options.decode);
        Print(JsonOf(message));
    } else {
        PrintAsText(*decoding, padded, options, message);
    }
    const DecodingInfo& info = InfoOf(*decoding);
    // unreachable from here: with all families
    if (!info.described) {
        Tell(NotDescribed(info.name));
        return kNotDescribed;
    }
    // to here
    if (!message.IsFound()) {
        TellOtherDirection(OtherDirection(*decoding, padded, options.decode, message));
        return kNotFound;
    }
    return options.strict && IsFaulty(message) ? kFaulty : kDone;
}

}  // namespace quorvane::tool
