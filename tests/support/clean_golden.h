#pragma once

// Golden messages that decode without a fault, for tests that write them again.

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "support/golden_file.h"

namespace quorvane::test {

/// A golden message, and why it is not what an encoder writes for its record.
struct CleanGolden {
    std::filesystem::path path;
    GoldenFile file;
    std::string reason;  // as in tests/golden/not_canonical.txt; empty if the message is canonical

    // What the reason begins with if the record does not come back, or is not written.
    [[nodiscard]] bool IsLost() const { return reason.starts_with("lost: "); }
    [[nodiscard]] bool IsRefused() const { return reason.starts_with("refused: "); }

    /// The octets of the message itself.
    [[nodiscard]] std::vector<std::uint8_t> Octets() const;
};

/// All of them. What is wrong with the list of reasons is added to `problems`.
std::vector<CleanGolden> FindCleanGolden(std::vector<std::string>& problems);

/// The octets without those of spare padding (TS 44.006, 5.2) that end them.
std::vector<std::uint8_t> WithoutPadding(std::vector<std::uint8_t> octets);

}  // namespace quorvane::test
