// Nanoseconds per message for each stage of a call and for whole calls, and the floor they are
// held against. An iteration is a whole message set; the counter "per_message" divides.

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "bits/arena.h"
#include "facade/decodings.h"
#include "iecodec/message_container.h"
#include "message_set.h"
#include "quorvane/decode.h"
#include "quorvane/engine.h"
#include "reflect/render.h"
#include "reflect/text_buffer.h"
#include "support/entry_points.h"

namespace quorvane::benchmarks {
namespace {

void Report(benchmark::State& state, const MessageSet& set) {
    const auto messages = static_cast<double>(set.messages.size());
    state.counters["per_message"] = benchmark::Counter(
        messages, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
    state.counters["text_octets"] = static_cast<double>(set.textOctets) / messages;
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(set.messages.size()));
}

bits::Outcome Dispatch(const test::GoldenFile& message, bits::Arena& arena,
                       iecodec::Diagnostics& diagnostics, iecodec::MessageContainer& container) {
    const facade::Binding binding = facade::BindingOf(message.decoding);
    iecodec::DecodeContext context{
        binding.family->codec,
        {message.octets.data(), static_cast<std::int64_t>(message.octets.size())},
        arena,
        diagnostics};
    return iecodec::DispatchMessage(
        context, *binding.set, facade::RowOf(message.decoding).BitsOf(message.length), container);
}

void DecodeAlone(benchmark::State& state, const MessageSet& set) {
    bits::Arena arena;
    iecodec::Diagnostics diagnostics;
    for ([[maybe_unused]] auto iteration : state) {
        for (const test::GoldenFile& message : set.messages) {
            arena.Reset();
            diagnostics.Clear();
            iecodec::MessageContainer container;
            benchmark::DoNotOptimize(Dispatch(message, arena, diagnostics, container));
        }
    }
    Report(state, set);
}

void RecordToText(benchmark::State& state, const MessageSet& set) {
    bits::Arena records;
    iecodec::Diagnostics diagnostics;
    std::vector<iecodec::MessageContainer> containers(set.messages.size());
    for (std::size_t index = 0; index < containers.size(); ++index) {
        static_cast<void>(Dispatch(set.messages[index], records, diagnostics, containers[index]));
    }
    reflect::TextBuffer text;
    for ([[maybe_unused]] auto iteration : state) {
        for (std::size_t index = 0; index < containers.size(); ++index) {
            const facade::Binding binding = facade::BindingOf(set.messages[index].decoding);
            const iecodec::MessageContainer& container = containers[index];
            text.Clear();
            reflect::AppendText(text, binding.family->types,
                                binding.set->memberTypes[container.tag - 1], container.body);
            benchmark::DoNotOptimize(text.View().data());
        }
    }
    Report(state, set);
}

void WholeSafeCall(benchmark::State& state, const MessageSet& set) {
    std::string text;
    std::string diagnostics;
    for ([[maybe_unused]] auto iteration : state) {
        for (const test::GoldenFile& message : set.messages) {
            DecodeInto(message.decoding, message.octets, text, diagnostics);
            benchmark::DoNotOptimize(text.data());
        }
    }
    Report(state, set);
}

void WholePlainCall(benchmark::State& state, const MessageSet& set) {
    // Messages with diagnostics would measure the standard error stream; docs/performance.md says
    // so.
    MessageSet quiet{set.name, {}, 0};
    for (const test::GoldenFile& message : set.messages) {
        if (message.diagnostics.empty()) {
            quiet.messages.push_back(message);
            quiet.messages.back().octets.resize(message.octets.size() + kReadAhead);
            quiet.textOctets += message.text.size();
        }
    }
    CString text;
    for ([[maybe_unused]] auto iteration : state) {
        for (const test::GoldenFile& message : quiet.messages) {
            test::EntryPoints()[static_cast<std::size_t>(message.decoding)].plain(
                message.octets.data(), message.length, text);
            benchmark::DoNotOptimize(text.GetString());
        }
    }
    Report(state, quiet);
}

void Floor(benchmark::State& state, const MessageSet& set) {
    std::vector<std::vector<std::string_view>> pieces;
    std::size_t most = 0;
    for (const test::GoldenFile& message : set.messages) {
        pieces.push_back(PiecesOf(message.text));
        most = std::max(most, message.text.size());
    }
    const auto buffer = std::make_unique<char[]>(most);
    for ([[maybe_unused]] auto iteration : state) {
        for (const auto& message : pieces) {
            char* next = buffer.get();
            for (const std::string_view piece : message) {
                std::memcpy(next, piece.data(), piece.size());
                next += piece.size();
            }
            benchmark::DoNotOptimize(buffer.get());
            benchmark::ClobberMemory();
        }
    }
    Report(state, set);
}

using Measure = void (*)(benchmark::State&, const MessageSet&);

[[maybe_unused]] const bool kRegistered = [] {
    const std::pair<const char*, Measure> measures[] = {
        {"decode", DecodeAlone},
        {"text", RecordToText},
        {"whole_safe_call", WholeSafeCall},
        {"whole_plain_call", WholePlainCall},
        {"floor", Floor},
    };
    for (const MessageSet& set : MessageSets()) {
        for (const auto& [name, measure] : measures) {
            benchmark::RegisterBenchmark(
                (set.name + "/" + name).c_str(),
                [&set, measure = measure](benchmark::State& state) { measure(state, set); });
        }
    }
    return true;
}();

}  // namespace
}  // namespace quorvane::benchmarks
