#pragma once

// What differs between a golden file and the answers of the interfaces, in words for a reader.
//
// Tests: tests/unit/golden_check_test.cpp.

#include <filesystem>
#include <string>
#include <vector>

#include "support/golden_file.h"

namespace quorvane::test {

struct NamedAnswer {
    std::string interface;
    GoldenAnswer answer;
};

[[nodiscard]] bool AllEqual(const std::vector<NamedAnswer>& answers);

/// Empty if all answers are those of the file. Otherwise the file, the octets, and one difference
/// for each answer that is unlike the others, with the interfaces that gave it: lines that the
/// file expects have '-' in front, lines of the answer '+'.
[[nodiscard]] std::string GoldenDifference(const std::filesystem::path& path,
                                           const GoldenFile& golden,
                                           const std::vector<NamedAnswer>& answers);

}  // namespace quorvane::test
