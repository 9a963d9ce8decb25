#pragma once

// The messages that are measured: golden messages, whose right answers are known, and generated
// ones.

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "support/golden_file.h"

namespace quorvane::benchmarks {

struct MessageSet {
    std::string name;
    std::vector<test::GoldenFile> messages;
    std::size_t textOctets = 0;  // of all results together
};

/// For each family and for all together a set of golden messages and one of generated ones. Of the
/// golden ones only messages that are found and that span and padded
/// form decode alike. Ends the program if a message's text is not the golden one: a wrong answer
/// is not worth measuring.
std::span<const MessageSet> MessageSets();

/// The pieces that a text is put together from: indentation, label, location, value, line end.
std::vector<std::string_view> PiecesOf(std::string_view text);

}  // namespace quorvane::benchmarks
