#include "message_set.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <unistd.h>

#include "facade/decodings.h"
#include "quorvane/decode.h"
#include "quorvane/message.h"
#include "tools/hex.h"
#include "tools/message_generator.h"
#include "traffic.h"

namespace quorvane::benchmarks {
namespace {

constexpr std::uint64_t kSeed = 1;

[[noreturn]] void Refuse(const std::string& what, const char* why) {
    std::fprintf(stderr, "%s: %s\n", what.c_str(), why);
    std::exit(1);
}

tool::MessageGenerator GeneratorFor(Decoding decoding) {
    const bool lengthIsFixed = facade::RowOf(decoding).fixedBits != 0;
    return {*facade::BindingOf(decoding).family, kSeed,
            lengthIsFixed ? tool::MessageEnd::kAnyBit : tool::MessageEnd::kOctet};
}

test::GoldenFile WithAnswer(Decoding decoding, const std::vector<std::uint8_t>& octets) {
    Result answer = Decode(decoding, octets);
    test::GoldenFile message;
    message.decoding = decoding;
    message.octets = octets;
    message.length = static_cast<std::int32_t>(octets.size());
    message.result = answer.found ? 1 : 0;
    message.text = std::move(answer.text);
    message.diagnostics = std::move(answer.diagnostics);
    return message;
}

MessageSet LoadGolden() {
    MessageSet set{"golden", {}};
    for (const auto& path : test::FindGoldenFiles(QUORVANE_SOURCE_DIR "/tests/golden")) {
        std::string problem;
        auto golden = test::ReadGoldenFile(path, problem);
        if (!golden || golden->result == 0 || golden->length < 0 ||
            golden->octets.size() > static_cast<std::size_t>(golden->length)) {
            continue;
        }
        golden->octets.resize(static_cast<std::size_t>(golden->length));
        if (Decode(golden->decoding, golden->octets).text != golden->text) {
            Refuse(path.string(), "wrong text");
        }
        set.Add(*golden);
    }
    return set;
}

MessageSet Generate() {
    constexpr int kOfEachDecoding = 100;
    MessageSet set{"generated", {}};
    for (const DecodingInfo& info : Decodings()) {
        if (!info.described) {
            continue;
        }
        tool::MessageGenerator generator = GeneratorFor(info.decoding);
        for (int count = 0; count < kOfEachDecoding; ++count) {
            if (const auto drawn = generator.Generate(*facade::BindingOf(info.decoding).set)) {
                set.Add(WithAnswer(info.decoding, drawn->octets));
            }
        }
    }
    return set;
}

bool IsOfKind(const test::GoldenFile& message, const TrafficRow& row, bool faulty) {
    return message.decoding == row.decoding && message.diagnostics.empty() != faulty &&
           message.text.size() >= row.text.least && message.text.size() <= row.text.most &&
           message.text.find("\nMESSAGE: " + std::string(row.message) + '\n') != std::string::npos;
}

/// The message's place in its set, from 1; 0 if it is the only one.
std::uint32_t TagOf(const TrafficRow& row) {
    for (std::size_t index = 0; index < MessageTypes::Count(row.decoding); ++index) {
        if (MessageTypes::At(row.decoding, index).Name() == row.message) {
            return static_cast<std::uint32_t>(index + 1);
        }
    }
    return 0;
}

/// Golden messages of that kind, and generated ones until there are enough to choose from.
std::vector<test::GoldenFile> Candidates(const MessageSet& golden, const TrafficRow& row,
                                         bool faulty) {
    constexpr std::size_t kEnough = 24;
    constexpr int kDraws = 200;
    std::vector<test::GoldenFile> candidates;
    for (const test::GoldenFile& message : golden.messages) {
        if (IsOfKind(message, row, faulty)) {
            candidates.push_back(message);
        }
    }
    const std::uint32_t tag = TagOf(row);
    tool::MessageGenerator generator = GeneratorFor(row.decoding);
    for (int draw = 0; tag != 0 && draw < kDraws && candidates.size() < kEnough; ++draw) {
        const auto drawn = generator.Generate(*facade::BindingOf(row.decoding).set, tag);
        if (!drawn) {
            continue;
        }
        test::GoldenFile message = WithAnswer(row.decoding, drawn->octets);
        if (IsOfKind(message, row, faulty)) {
            candidates.push_back(std::move(message));
        }
    }
    if (candidates.empty()) {
        Refuse(std::string(row.message), "no such message for the set");
    }
    return candidates;
}

/// The order is random, so that no message is measured behind others of its kind.
MessageSet Draw(const MessageSet& golden, const TrafficSet& traffic) {
    std::vector<test::GoldenFile> messages;
    for (const TrafficRow& row : traffic.rows) {
        for (const bool faulty : {false, true}) {
            const int wanted = faulty ? row.faulty : row.quiet;
            if (wanted == 0) {
                continue;
            }
            const auto candidates = Candidates(golden, row, faulty);
            for (int count = 0; count < wanted; ++count) {
                messages.push_back(candidates[static_cast<std::size_t>(count) % candidates.size()]);
            }
        }
    }
    tool::Random random(kSeed);
    MessageSet set{std::string(traffic.name), {}};
    for (std::size_t left = messages.size(); left > 0; --left) {
        std::swap(messages[random.UpTo(static_cast<std::uint32_t>(left - 1))], messages[left - 1]);
        set.Add(messages[left - 1]);
    }
    return set;
}

std::vector<MessageSet> LoadSets() {
    MessageSet golden = LoadGolden();
    std::vector<MessageSet> sets;
    for (const TrafficSet& traffic : TrafficSets()) {
        if (facade::BindingOf(traffic.rows.front().decoding).set != nullptr) {
            sets.push_back(Draw(golden, traffic));
        }
    }
    sets.push_back(std::move(golden));
    sets.push_back(Generate());
    return sets;
}

enum class PieceForm : std::uint8_t { kSingle, kMerged };

void CutPieces(std::string_view line, PieceForm form, std::vector<std::string_view>& pieces) {
    const auto cut = [&](std::size_t count) {
        if (count > 0) {
            pieces.push_back(line.substr(0, count));
            line.remove_prefix(count);
        }
    };
    const bool single = form == PieceForm::kSingle;
    if (single) {
        cut(std::min(line.find_first_not_of(' '), line.size() - 1));
    }
    if (const std::size_t label = line.find(": "); label != std::string_view::npos) {
        cut(label + 2);
    }
    if (line.starts_with("LOC:[")) {
        cut(line.find(' ') + 1);
    }
    if (single) {
        cut(line.size() - 1);
    }
    cut(line.size());
}

std::vector<std::string_view> CutText(std::string_view text, PieceForm form) {
    std::vector<std::string_view> pieces;
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n') + 1);
        CutPieces(line, form, pieces);
        text.remove_prefix(line.size());
    }
    return pieces;
}

}  // namespace

void MessageSet::Add(const test::GoldenFile& message) {
    textOctets += message.text.size();
    messages.push_back(message);
}

std::span<const MessageSet> MessageSets() {
    static const std::vector<MessageSet> sets = LoadSets();
    return sets;
}

bool ReadLines(const std::string& path, MessageSet& set) {
    std::ifstream in(path);
    std::string decoding;
    std::string length;
    std::string hex;
    while (in >> decoding >> length >> hex) {
        const auto known = FindDecoding(decoding);
        test::GoldenFile message;
        if (!known || !tool::ParseHex(hex, message.octets).empty()) {
            return false;
        }
        message.decoding = *known;
        message.length = static_cast<std::int32_t>(message.octets.size());
        set.messages.push_back(std::move(message));
    }
    return !set.messages.empty();
}

bool WriteLines(const MessageSet& set, std::size_t lines, const std::string& path) {
    std::ofstream out(path, std::ios::binary);
    for (std::size_t line = 0; line < lines; ++line) {
        const test::GoldenFile& message = set.messages[line % set.messages.size()];
        out << Decodings()[static_cast<std::size_t>(message.decoding)].name << ' ' << message.length
            << ' ' << tool::ToHex(message.octets, "") << '\n';
    }
    out.close();
    return !out.fail();
}

LinesFile::LinesFile(const MessageSet& set, std::size_t lines)
    : path_(std::filesystem::temp_directory_path() /
            ("quorvane_messages_" + std::to_string(getpid()))) {
    if (!WriteLines(set, lines, path_)) {
        Refuse(path_, "cannot be written");
    }
}

LinesFile::~LinesFile() {
    std::remove(path_.c_str());
}

std::vector<std::string_view> PiecesOf(std::string_view text) {
    return CutText(text, PieceForm::kSingle);
}

std::vector<std::string_view> MergedPiecesOf(std::string_view text) {
    return CutText(text, PieceForm::kMerged);
}

}  // namespace quorvane::benchmarks
