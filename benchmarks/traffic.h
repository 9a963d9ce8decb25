#pragma once

// How often the kinds of messages come in sets that are like real traffic.

#include <cstddef>
#include <limits>
#include <span>
#include <string_view>

#include "quorvane/decode.h"

namespace quorvane::benchmarks {

struct TextRange {
    std::size_t least = 0;
    std::size_t most = std::numeric_limits<std::size_t>::max();
};

struct TrafficRow {
    Decoding decoding;
    std::string_view message;  // as behind "MESSAGE: "
    int quiet;                 // how many of a set are without diagnostics
    int faulty;                // how many have diagnostics
    TextRange text{};          // octets of text that such messages have
};

struct TrafficSet {
    std::string_view name;
    std::span<const TrafficRow> rows;
};

/// Of about a thousand messages each.
std::span<const TrafficSet> TrafficSets();

}  // namespace quorvane::benchmarks
