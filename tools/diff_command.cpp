// Two messages, field by field.

#include <algorithm>

#include "quorvane/message.h"
#include "tools/auto_function.h"
#include "tools/commands.h"
#include "tools/function_name.h"
#include "tools/input_file.h"
#include "tools/message_diff.h"
#include "tools/message_line.h"
#include "tools/message_reader.h"
#include "tools/octet_text.h"
#include "tools/utf8.h"

namespace quorvane::tool {
namespace {

void Decode(const Function& function, PaddedMessage octets, Message& message) {
    const std::optional<Decoding> decoding =
        function.decoding ? function.decoding
                          : ChooseFunction(octets, function.direction, {}, message).taken;
    if (decoding) {
        message.Decode(*decoding, octets);
    } else {
        message = Message();
    }
}

/// Reads "FUNCTION HEX"; false if the argument is something else. What is wrong is in `problem`.
bool ReadArgument(std::string_view argument, Message& message, std::string& problem) {
    const std::size_t end = argument.find_first_of(" \t");
    if (end == std::string_view::npos) {
        return false;
    }
    const std::string_view name = argument.substr(0, end);
    const std::optional<Function> function = FindFunction(name);
    if (!function) {
        problem = NearestFunctions(name).empty() ? "" : UnknownFunction(name);
        return !problem.empty();
    }
    std::vector<std::uint8_t> octets;
    problem = ParseOctets(argument.substr(end + 1), octets);
    problem = problem.empty() ? problem : "HEX, " + problem;
    const auto length = static_cast<std::int32_t>(octets.size());
    Decode(*function, {octets.data(), length, octets.size()}, message);
    return true;
}

/// Reads a line "FUNCTION LENGTH HEX" or a JSON object. Returns what is wrong, or nothing.
std::string ReadLine(std::string_view text, Message& message) {
    constexpr std::string_view kBlanks = " \t\r\n";
    text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
    text = text.substr(0, text.find_last_not_of(kBlanks) + 1);  // npos + 1 is 0
    if (text.starts_with('{')) {
        return ReadMessage(text, std::nullopt, message);
    }
    if (text.find('\n') != std::string_view::npos) {
        return "there is more than one line; expected one with FUNCTION LENGTH HEX, or a JSON "
               "object";
    }
    MessageLine line;
    std::vector<std::uint8_t> octets;
    std::string problem = ParseMessageLine(text, line, octets);
    if (problem.empty()) {
        Decode(line.function, {octets.data(), line.length, octets.size()}, message);
    }
    return problem;
}

/// The message that an argument stands for.
Message Read(const std::string& argument) {
    Message message;
    std::string problem;
    if (!ReadArgument(argument, message, problem)) {
        problem = ReadLine(ReadMessageFile(argument), message);
    }
    if (problem.empty() && !message.IsFound()) {
        problem = "the octets start no message that this build describes";
    }
    if (!problem.empty()) {
        throw UsageError(WithoutInvalidUtf8(argument + ": " + problem));
    }
    return message;
}

}  // namespace

int Diff(const std::string& before, const std::string& after) {
    const std::string lines = DifferencesOf(Read(before), Read(after));
    Print(lines);
    return lines.empty() ? kDone : kNotFound;
}

}  // namespace quorvane::tool
