#include "message_set.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>

#include "facade/decodings.h"
#include "quorvane/decode.h"
#include "tools/message_generator.h"

namespace quorvane::benchmarks {
namespace {

/// Adds sets of messages drawn at random: one for each family and one of all.
void AddGenerated(std::map<std::string, MessageSet>& sets) {
    constexpr int kOfEachDecoding = 100;
    constexpr std::uint64_t kSeed = 1;
    for (const DecodingInfo& info : Decodings()) {
        const facade::Binding& binding = facade::BindingOf(info.decoding);
        if (binding.set == nullptr) {
            continue;
        }
        const bool lengthIsFixed = facade::RowOf(info.decoding).fixedBits != 0;
        tool::MessageGenerator generator(
            *binding.family, kSeed,
            lengthIsFixed ? tool::MessageEnd::kAnyBit : tool::MessageEnd::kOctet);
        for (int count = 0; count < kOfEachDecoding; ++count) {
            const auto drawn = generator.Generate(*binding.set);
            if (!drawn) {
                continue;
            }
            test::GoldenFile message;
            message.decoding = info.decoding;
            message.octets = drawn->octets;
            message.length = static_cast<std::int32_t>(drawn->octets.size());
            message.result = 1;
            message.text = Decode(info.decoding, drawn->octets).text;
            for (const std::string& name :
                 {std::string(binding.family->name) + " generated", std::string("all generated")}) {
                MessageSet& set = sets[name];
                set.name = name;
                set.textOctets += message.text.size();
                set.messages.push_back(message);
            }
        }
    }
}

std::vector<MessageSet> LoadSets() {
    std::map<std::string, MessageSet> sets;
    for (const auto& path : test::FindGoldenFiles(QUORVANE_SOURCE_DIR "/tests/golden")) {
        std::string problem;
        auto golden = test::ReadGoldenFile(path, problem);
        if (!golden || golden->result == 0 || golden->length < 0 ||
            golden->octets.size() > static_cast<std::size_t>(golden->length)) {
            continue;
        }
        golden->octets.resize(static_cast<std::size_t>(golden->length));
        if (Decode(golden->decoding, golden->octets).text != golden->text) {
            std::fprintf(stderr, "%s: wrong text\n", path.c_str());
            std::exit(1);
        }
        for (const std::string& name :
             {path.parent_path().filename().string(), std::string("all")}) {
            MessageSet& set = sets[name];
            set.name = name;
            set.textOctets += golden->text.size();
            set.messages.push_back(*golden);
        }
    }
    AddGenerated(sets);
    std::vector<MessageSet> result;
    for (auto& [name, set] : sets) {
        result.push_back(std::move(set));
    }
    return result;
}

void CutPieces(std::string_view line, std::vector<std::string_view>& pieces) {
    const auto cut = [&](std::size_t count) {
        if (count > 0) {
            pieces.push_back(line.substr(0, count));
            line.remove_prefix(count);
        }
    };
    cut(std::min(line.find_first_not_of(' '), line.size() - 1));
    if (const std::size_t label = line.find(": "); label != std::string_view::npos) {
        cut(label + 2);
    }
    if (line.starts_with("LOC:[")) {
        cut(line.find(' ') + 1);
    }
    cut(line.size() - 1);
    cut(1);
}

}  // namespace

std::span<const MessageSet> MessageSets() {
    static const std::vector<MessageSet> sets = LoadSets();
    return sets;
}

std::vector<std::string_view> PiecesOf(std::string_view text) {
    std::vector<std::string_view> pieces;
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n') + 1);
        CutPieces(line, pieces);
        text.remove_prefix(line.size());
    }
    return pieces;
}

}  // namespace quorvane::benchmarks
