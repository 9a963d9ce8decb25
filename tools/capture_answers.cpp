#include "tools/capture_answers.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <optional>

#include "facade/utf8.h"
#include "quorvane/decode.h"
#include "quorvane/json.h"
#include "tools/function_name.h"
#include "tools/hex.h"
#include "tools/tolerant.h"

namespace quorvane::tool {
namespace {

using capture::FoundMessage;
using capture::Source;

std::string_view InterfaceName(Source::Interface interface) {
    switch (interface) {
        case Source::Interface::kUm:
            return "Um";
        case Source::Interface::kAbis:
            return "Abis";
        case Source::Interface::kLteNas:
            return "LTE NAS";
    }
    return {};  // unreachable: each interface returns
}

std::string_view DirectionName(const Source& source) {
    return source.uplink ? "uplink" : "downlink";
}

bool HasChannel(const Source& source) {
    return source.interface != Source::Interface::kLteNas && source.channel != 0;
}

/// With zeros ahead of it, so that it has at least so many digits.
void AppendPadded(std::string& text, std::uint64_t number, std::size_t digits) {
    std::array<char, 20> buffer{};
    const char* end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number).ptr;
    const auto size = static_cast<std::size_t>(end - buffer.data());
    text.append(digits - std::min(digits, size), '0').append(buffer.data(), size);
}

/// "2026-11-22T10:54:27.000000000Z".
std::string Time(const Source& source) {
    using namespace std::chrono;
    const sys_seconds time{seconds(source.seconds)};
    const auto day = floor<days>(time);
    const year_month_day date(day);
    const auto clock = static_cast<std::uint64_t>((time - day).count());
    const int ofEra = static_cast<int>(date.year());
    std::string text;
    if (ofEra >= 0) {
        AppendPadded(text, static_cast<std::uint64_t>(ofEra), 4);
    } else {
        text.append(std::to_string(ofEra));
    }
    const auto append = [&text](char separator, std::uint64_t number, std::size_t digits) {
        text.push_back(separator);
        AppendPadded(text, number, digits);
    };
    append('-', static_cast<unsigned>(date.month()), 2);
    append('-', static_cast<unsigned>(date.day()), 2);
    append('T', clock / 3600, 2);
    append(':', clock / 60 % 60, 2);
    append(':', clock % 60, 2);
    append('.', source.nanoseconds, 9);
    text.push_back('Z');
    return text;
}

}  // namespace

void CaptureAnswers::Add(const FoundMessage& found, const Message& message) {
    switch (form_) {
        case CaptureForm::kText:
            return AddText(found, message);
        case CaptureForm::kJson:
            return AddJson(found, message);
        case CaptureForm::kCsv:
            return AddCsv(found, message);
    }
}

void CaptureAnswers::AddText(const FoundMessage& found, const Message& message) {
    const Source& source = found.source;
    output_.append("Frame ").append(std::to_string(source.packet)).append(", ");
    output_.append(Time(source)).append(", ").append(InterfaceName(source.interface)).append(", ");
    if (HasChannel(source)) {
        output_.append(capture::UmChannelName(source.channel)).append(" ");
    }
    output_.append(DirectionName(source));
    if (HasChannel(source)) {
        output_.append(", timeslot ").append(std::to_string(source.timeslot));
        output_.append(", subslot ").append(std::to_string(source.subslot));
    }
    if (source.interface == Source::Interface::kUm) {
        output_.append(", ARFCN ").append(std::to_string(source.arfcn));
        output_.append(source.isPcs ? " (PCS)" : "");
        output_.append(", TDMA frame ").append(std::to_string(source.tdmaFrame));
    }
    output_.append(":\n");
    ShowAsText(message, text_, diagnostics_);
    output_.append(text_);
    if (!text_.ends_with('\n')) {
        output_.append("\n");
    }
    output_.append(diagnostics_).append("\n");
}

void CaptureAnswers::AddJson(const FoundMessage& found, const Message& message) {
    const Source& source = found.source;
    json_.Begin();
    json_.Add("frame", static_cast<std::int64_t>(source.packet));
    json_.Add("time", Time(source));
    json_.Add("interface", InterfaceName(source.interface));
    if (HasChannel(source)) {
        json_.Add("channel", capture::UmChannelName(source.channel));
    }
    json_.Add("direction", DirectionName(source));
    if (HasChannel(source)) {
        json_.Add("timeslot", source.timeslot);
        json_.Add("subslot", source.subslot);
    }
    if (source.interface == Source::Interface::kUm) {
        json_.Add("arfcn", source.arfcn);
        json_.AddFlag("pcs", source.isPcs);
        json_.Add("tdma", source.tdmaFrame);
    }
    json_.Add("fn", InfoOf(found.decoding).name);
    json_.Add("length", static_cast<std::int64_t>(found.octets.size()));
    json_.Add("hex", ToHex(found.octets, ""));
    json_.Add("ret", message.IsFound() ? 1 : 0);
    text_.clear();
    AppendJson(message, text_);
    json_.AddJson("message", text_);
    json_.End();
}

void CaptureAnswers::AddCsv(const FoundMessage& found, const Message& message) {
    rowStart_ = std::to_string(found.source.packet);
    rowStart_.append(",").append(InfoOf(found.decoding).name).append(",");
    // The message itself: no path, its name as words, and all of its bits.
    output_.append(rowStart_).append(",,").append(message.TypeName()).append(",0,");
    output_.append(std::to_string(8 * found.octets.size())).append("\n");
    path_.clear();
    AddRows(message.Root());
}

void CaptureAnswers::AddRows(const Field& field) {
    const std::size_t pathSize = path_.size();
    std::size_t index = 0;
    for (const Field child : field) {
        const std::string_view name = child.Name();
        if (name.empty()) {
            path_.append("[").append(std::to_string(index)).append("]");
        } else {
            path_.append(path_.empty() ? "" : ".").append(name);
        }
        ++index;
        AddRow(child);
        path_.resize(pathSize);
    }
}

void CaptureAnswers::AddRow(const Field& field) {
    // What the decoder never came to has nothing of the message. Parts of what it refused may.
    const FieldStatus status = field.Status();
    if (status == FieldStatus::kAbsent || status == FieldStatus::kDefault) {
        return;
    }
    const bool hasParts = field.Kind() == FieldKind::kStruct || field.Kind() == FieldKind::kUnion ||
                          field.Kind() == FieldKind::kSequence;
    if (hasParts) {
        return AddRows(field);
    }
    if (status == FieldStatus::kRefused) {
        return;
    }
    std::optional<std::uint32_t> bits;
    output_.append(rowStart_).append(path_).append(",");
    if (field.Kind() == FieldKind::kBits) {
        output_.append(ToHex(field.Octets(), "")).append(",");
        bits = field.BitCount();
    } else {
        output_.append(std::to_string(field.Number())).append(",");
        AddCsvText(field.Words());
    }
    output_.append(",");
    if (const std::optional<Place> place = field.GetPlace()) {
        output_.append(std::to_string(place->offset));
        bits = place->length;
    }
    output_.append(",").append(bits ? std::to_string(*bits) : "").append("\n");
}

/// Quoted where it has to be, RFC 4180, 2.
void CaptureAnswers::AddCsvText(std::string_view text) {
    const bool isQuoted = text.find_first_of(",\"\r\n") != std::string_view::npos;
    output_.append(isQuoted ? "\"" : "");
    for (std::size_t quote = text.find('"'); quote != std::string_view::npos;
         quote = text.find('"')) {
        facade::AppendAsUtf8(output_, text.substr(0, quote + 1));
        output_.append("\"");
        text.remove_prefix(quote + 1);
    }
    facade::AppendAsUtf8(output_, text);
    output_.append(isQuoted ? "\"" : "");
}

}  // namespace quorvane::tool
