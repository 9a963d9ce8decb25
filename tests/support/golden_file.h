#pragma once

// Golden files pin one decode each: octets in, text and diagnostics out.
//
//     # what the octets are, with the standard's clause
//     function: EPS_SMUplink
//     length: 3
//     hex: 02 01 DA
//     return: 1
//     --- text
//     Decoded using "EPS_SMUplink".
//     ...
//     --- diagnostics
//     <ERRID:*> Error decoding subfield X
//     --- end
//
// `hex` is the readable buffer, which may be longer than `length`; zeros follow it. The text
// stands to the letter; a carriage return is written \r. For return 0 it has no line end, though
// the file shows it as a line. Diagnostics have * for their numbers.

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "quorvane/decode.h"

namespace quorvane::test {

/// What a call answers.
struct GoldenAnswer {
    int result = 0;
    std::string text;
    std::string diagnostics;  // numbers as *

    friend bool operator==(const GoldenAnswer&, const GoldenAnswer&) = default;
};

struct GoldenFile : GoldenAnswer {
    Decoding decoding{};
    std::int32_t length = 0;
    std::vector<std::uint8_t> octets;
};

/// Reads a file; if it is not in the form above, `problem` says why.
std::optional<GoldenFile> ReadGoldenFile(const std::filesystem::path& path, std::string& problem);

/// The lines of a file from "return: " on, as this answer has them.
std::vector<std::string> AnswerLines(const GoldenAnswer& answer);

/// Replaces these lines in the file. What stands ahead of them, its comments included, stays.
/// False if the file cannot be read or written.
[[nodiscard]] bool UpdateGoldenFile(const std::filesystem::path& path, const GoldenAnswer& answer);

/// Whether a file or folder of that name below tests/golden belongs to a family that this build
/// leaves out: "l3/alerting".
bool OfLeftOutFamily(std::string_view name);

/// All files *.golden below `folder`, sorted, without those of families that this build leaves out.
std::vector<std::filesystem::path> FindGoldenFiles(const std::filesystem::path& folder);

}  // namespace quorvane::test
