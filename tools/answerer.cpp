#include "tools/answerer.h"

#include <algorithm>

#include "quorvane/decode.h"
#include "quorvane/json.h"
#include "tools/function_name.h"
#include "tools/hex.h"
#include "tools/line_reader.h"
#include "tools/notes.h"
#include "tools/octet_text.h"
#include "tools/tolerant.h"
#include "tools/utf8.h"

namespace quorvane::tool {
namespace {

constexpr std::string_view kBlanks = " \t\r";

/// A line each.
std::string LinesOf(const std::vector<Decoding>& decodings) {
    std::string names;
    for (const Decoding decoding : decodings) {
        names.append(InfoOf(decoding).name).append("\n");
    }
    return names;
}

}  // namespace

void Answerer::Answer(const InputLine& line) {
    if (line.tooLong) {
        jsonRequest_.id.clear();
        return Refuse(line, LineReader::TooLongWords());
    }
    const std::size_t start = line.text.find_first_not_of(kBlanks);
    if (start == std::string_view::npos || line.text[start] == '#') {
        return;
    }
    if (const std::string problem = Read(line.text.substr(start)); !problem.empty()) {
        return Refuse(line, problem);
    }
    const bool found = Decode({octets_.data(), request_.length, octets_.size()});
    if (request_.hexBehindDoubt &&
        !(found && IsTold(function_) && !IsMessage(*request_.hexBehindDoubt))) {
        const std::string_view hex = request_.hex;
        return Refuse(line, DoubtfulLength(hex.substr(0, hex.find_first_of(kBlanks))));
    }
    Count(found);
    Begin(line);
    json_.Add("fn", function_.name);
    json_.Add("length", request_.length);
    json_.Add("hex", request_.hex);
    json_.Add("ret", found ? 1 : 0);
    // unreachable from here: with all families
    if (function_.decoding && !InfoOf(*function_.decoding).described) {
        json_.AddFlag("described", false);
    }
    // to here
    if (!request_.function.decoding) {
        json_.AddLines("others", LinesOf(choice_.others));
    }
    if (!choice_.otherDirection.empty()) {
        json_.AddLines("otherDirection", LinesOf(choice_.otherDirection));
    }
    if (options_.form == MessageForm::kJson) {
        text_.clear();
        AppendJson(message_, text_);
        json_.AddJson("message", text_);
    } else {
        if (textIsJson_) {
            json_.AddJson("text", text_);
        } else {
            json_.Add("text", text_);
        }
        json_.AddLines("diagnostics", diagnostics_);
    }
    json_.End();
}

std::string Answerer::Read(std::string_view text) {
    if (text.front() == '{') {
        return ReadJson(text);
    }
    jsonRequest_.id.clear();
    return ParseMessageLine(text, request_, octets_);
}

std::string Answerer::ReadJson(std::string_view text) {
    if (std::string problem = ParseJsonRequest(text, jsonRequest_); !problem.empty()) {
        return problem;
    }
    const std::optional<Function> function = FindFunction(jsonRequest_.function);
    if (!function) {
        return UnknownFunction(jsonRequest_.function);
    }
    if (!ParseHex(jsonRequest_.hex, octets_).empty()) {
        if (const std::string problem = ParseOctets(jsonRequest_.hex, octets_); !problem.empty()) {
            return "hex, " + problem;
        }
    }
    request_ = {jsonRequest_.hex, *function,
                jsonRequest_.length.value_or(static_cast<std::int32_t>(octets_.size())),
                std::nullopt};
    return {};
}

bool Answerer::Decode(PaddedMessage octets) {
    choice_.otherDirection.clear();
    textIsJson_ = false;
    function_ = request_.function;
    if (!function_.decoding) {
        Choose(octets);
    }
    const bool found = function_.decoding && DecodeAs(*function_.decoding, octets);
    if (!function_.decoding) {
        message_ = Message();
        text_ = NotFoundText(function_.name);
        diagnostics_.clear();
    } else if (!found) {
        Message message;
        choice_.otherDirection =
            OtherDirection(*function_.decoding, octets, options_.decode, message);
    }
    return found;
}

bool Answerer::DecodeAs(Decoding decoding, PaddedMessage octets) {
    if (options_.form == MessageForm::kJson) {
        return message_.Decode(decoding, octets, options_.decode);
    }
    if (!needsMessage_) {
        textIsJson_ = true;
        text_.clear();
        return AppendTextAsJson(decoding, octets, text_, diagnostics_);
    }
    const bool found =
        DecodeAsText(message_, decoding, octets, options_.decode, text_, diagnostics_);
    if (options_.notes) {
        text_ = WithNotes(text_, message_);
    }
    return found;
}

void Answerer::Choose(PaddedMessage octets) {
    choice_ = ChooseFunction(octets, function_.direction, options_.decode, message_);
    if (choice_.taken) {
        function_ = {InfoOf(*choice_.taken).name, choice_.taken};
    }
}

bool Answerer::IsTold(const Function& taken) const {
    return request_.function.decoding ||
           facade::RowOf(*taken.decoding).start == facade::Start::kDiscriminator;
}

bool Answerer::IsMessage(std::string_view hex) {
    Function function = request_.function;
    std::vector<std::uint8_t> octets;
    if (!ParseOctets(hex, octets).empty()) {
        return false;
    }
    const PaddedMessage padded(octets.data(), static_cast<std::int32_t>(octets.size()),
                               octets.size());
    Message message;
    if (!function.decoding) {
        function.decoding =
            ChooseFunction(padded, function.direction, options_.decode, message).taken;
    }
    return function.decoding && IsTold(function) &&
           message.Decode(*function.decoding, padded, options_.decode);
}

void Answerer::Count(bool found) {
    if (!found) {
        return tally_.AddUnknown();
    }
    tally_.AddMessage(needsMessage_ && IsFaulty(message_));
    if (summary_) {
        tally_.AddType(function_.name, message_.TypeName());
    }
}

void Answerer::Begin(const InputLine& line) {
    json_.Begin();
    if (!line.file.empty()) {
        json_.Add("file", WithoutInvalidUtf8(line.file));
    }
    json_.Add("line", line.number);
    if (!jsonRequest_.id.empty()) {
        json_.AddJson("id", jsonRequest_.id);
    }
}

void Answerer::Refuse(const InputLine& line, const std::string& problem) {
    tally_.AddBadLine();
    Begin(line);
    json_.Add("error", WithoutInvalidUtf8(problem));  // it may quote the line
    json_.End();
}

}  // namespace quorvane::tool
