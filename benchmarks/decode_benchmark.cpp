// Time per message for each stage of a call and for whole calls, and the floors they are held
// against. An iteration is a whole message set.

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "dispatch.h"
#include "measure.h"
#include "message_set.h"
#include "quorvane/decode.h"
#include "quorvane/engine.h"
#include "quorvane/json.h"
#include "quorvane/message.h"
#include "reflect/render.h"
#include "reflect/text_buffer.h"
#include "support/entry_points.h"

namespace quorvane::benchmarks {
namespace {

void DecodeAlone(benchmark::State& state, const MessageSet& set) {
    bits::Arena arena;
    iecodec::Diagnostics diagnostics;
    Measure(state, set.messages.size(), [&] {
        for (const test::GoldenFile& message : set.messages) {
            DecodeAndDrop(message, arena, diagnostics);
        }
    });
}

void RecordToText(benchmark::State& state, const MessageSet& set) {
    bits::Arena records;
    iecodec::Diagnostics diagnostics;
    std::vector<iecodec::MessageContainer> containers(set.messages.size());
    for (std::size_t index = 0; index < containers.size(); ++index) {
        static_cast<void>(Dispatch(set.messages[index], records, diagnostics, containers[index]));
    }
    reflect::TextBuffer text;
    Measure(state, containers.size(), [&] {
        for (std::size_t index = 0; index < containers.size(); ++index) {
            const facade::Binding binding = facade::BindingOf(set.messages[index].decoding);
            const iecodec::MessageContainer& container = containers[index];
            text.Clear();
            reflect::AppendText(text, binding.family->types,
                                binding.set->memberTypes[container.tag - 1], container.body);
            benchmark::DoNotOptimize(text.View().data());
        }
    });
}

void WholeSafeCall(benchmark::State& state, const MessageSet& set) {
    std::string text;
    std::string diagnostics;
    Measure(state, set.messages.size(), [&] {
        for (const test::GoldenFile& message : set.messages) {
            DecodeInto(message.decoding, message.octets, text, diagnostics);
            benchmark::DoNotOptimize(text.data());
        }
    });
}

/// A message decoded anew, and what `use` makes of it.
template <typename Use>
void DecodeAndUse(benchmark::State& state, const MessageSet& set, Use&& use) {
    Message decoded;
    Measure(state, set.messages.size(), [&] {
        for (const test::GoldenFile& message : set.messages) {
            decoded.Decode(message.decoding, message.octets);
            use(decoded);
        }
    });
}

/// Each field that is there, with what it holds.
void WholeWalk(benchmark::State& state, const MessageSet& set) {
    DecodeAndUse(state, set, [](const Message& message) {
        std::uint64_t sum = 0;
        Visit(message.Root(), [&](const Field& field, unsigned /*depth*/) {
            if (field.Status() == FieldStatus::kAbsent) {
                return false;
            }
            const std::optional<Place> place = field.GetPlace();
            sum += field.Name().size() + field.Number() + field.Octets().size() +
                   field.Words().size() + (place ? place->offset : 0);
            return true;
        });
        benchmark::DoNotOptimize(sum);
    });
}

void WholeJson(benchmark::State& state, const MessageSet& set) {
    std::string json;
    DecodeAndUse(state, set, [&](const Message& message) {
        json.clear();
        AppendJson(message, json);
        benchmark::DoNotOptimize(json.data());
    });
}

void WholePlainCall(benchmark::State& state, const MessageSet& set) {
    // Messages with diagnostics would measure the standard error stream; docs/performance.md says
    // so.
    MessageSet quiet{set.name, {}};
    for (const test::GoldenFile& message : set.messages) {
        if (message.diagnostics.empty()) {
            quiet.Add(message);
            quiet.messages.back().octets.resize(message.octets.size() + kReadAhead);
        }
    }
    CString text;
    Measure(state, quiet.messages.size(), [&] {
        for (const test::GoldenFile& message : quiet.messages) {
            test::EntryPoints()[static_cast<std::size_t>(message.decoding)].plain(
                message.octets.data(), message.length, text);
            benchmark::DoNotOptimize(text.GetString());
        }
    });
}

/// A step's copies are of this fixed length: the pieces must be readable, and the buffer writable,
/// so far behind their ends.
constexpr std::size_t kStep = 32;

/// The texts of a set cut into pieces, and a buffer for the longest.
struct CutTexts {
    CutTexts(const MessageSet& set, std::vector<std::string_view> (*cut)(std::string_view)) {
        std::size_t most = 0;
        texts.reserve(set.messages.size());
        for (const test::GoldenFile& message : set.messages) {
            most = std::max(most, message.text.size());
            texts.push_back(message.text + std::string(kStep, '\0'));
            pieces.push_back(cut(std::string_view(texts.back()).substr(0, message.text.size())));
        }
        buffer = std::make_unique<char[]>(most + kStep);
    }

    std::vector<std::string> texts;
    std::vector<std::vector<std::string_view>> pieces;  // of `texts`
    std::unique_ptr<char[]> buffer;
};

template <typename Copy>
void JoinPieces(benchmark::State& state, const CutTexts& cut, Copy&& copy) {
    Measure(state, cut.pieces.size(), [&] {
        for (const auto& message : cut.pieces) {
            char* next = cut.buffer.get();
            for (const std::string_view piece : message) {
                copy(next, piece);
                next += piece.size();
            }
            benchmark::DoNotOptimize(cut.buffer.get());
            benchmark::ClobberMemory();
        }
    });
}

void Floor(benchmark::State& state, const MessageSet& set) {
    JoinPieces(state, CutTexts(set, PiecesOf), [](char* to, std::string_view piece) {
        std::memcpy(to, piece.data(), piece.size());
    });
}

void MergedFloor(benchmark::State& state, const MessageSet& set) {
    JoinPieces(state, CutTexts(set, MergedPiecesOf), [](char* to, std::string_view piece) {
        std::size_t done = 0;
        do {
            std::memcpy(to + done, piece.data() + done, kStep);
            done += kStep;
        } while (done < piece.size());
    });
}

using SetMeasure = void (*)(benchmark::State&, const MessageSet&);

}  // namespace

void RegisterDecode() {
    const std::pair<const char*, SetMeasure> measures[] = {
        {"decode", DecodeAlone},
        {"text", RecordToText},
        {"whole_safe_call", WholeSafeCall},
        {"whole_plain_call", WholePlainCall},
        {"whole_walk", WholeWalk},
        {"whole_json", WholeJson},
        {"floor", Floor},
        {"merged_floor", MergedFloor},
    };
    for (const MessageSet& set : MessageSets()) {
        for (const auto& [name, measure] : measures) {
            benchmark::RegisterBenchmark(
                (set.name + "/" + name).c_str(),
                [&set, measure = measure](benchmark::State& state) { measure(state, set); });
        }
    }
}
}  // namespace quorvane::benchmarks
