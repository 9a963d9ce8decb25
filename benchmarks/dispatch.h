#pragma once

// A message's way into its record, without what the facade does around it.

#include <benchmark/benchmark.h>

#include "bits/arena.h"
#include "facade/decodings.h"
#include "iecodec/message_container.h"
#include "support/golden_file.h"

namespace quorvane::benchmarks {

/// Decodes into `container`, whose record is in `arena`.
inline bits::Outcome Dispatch(const test::GoldenFile& message, bits::Arena& arena,
                              iecodec::Diagnostics& diagnostics,
                              iecodec::MessageContainer& container) {
    const facade::Binding binding = facade::BindingOf(message.decoding);
    iecodec::DecodeContext context{
        binding.family->codec,
        {message.octets.data(), static_cast<std::int64_t>(message.octets.size())},
        arena,
        diagnostics};
    return iecodec::DispatchMessage(
        context, *binding.set, facade::RowOf(message.decoding).BitsOf(message.length), container);
}

/// Decodes into a record that is dropped.
inline void DecodeAndDrop(const test::GoldenFile& message, bits::Arena& arena,
                          iecodec::Diagnostics& diagnostics) {
    arena.Reset();
    diagnostics.Clear();
    iecodec::MessageContainer container;
    benchmark::DoNotOptimize(Dispatch(message, arena, diagnostics, container));
}

}  // namespace quorvane::benchmarks
