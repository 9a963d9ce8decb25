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

    void Add(const test::GoldenFile& message);
};

/// First the sets that are like traffic (traffic.h), drawn from golden and generated messages, then
/// all golden messages and as many generated ones of each decoding. Of the golden ones only
/// messages that are found and that span and padded form decode alike. Ends the program if a
/// message's text is not the golden one (a wrong answer is not worth measuring), or if there is no
/// message of a kind that a set wants.
std::span<const MessageSet> MessageSets();

/// Writes the set as lines for `quorvane batch`, over and over up to `lines`. False if the file
/// cannot be written.
[[nodiscard]] bool WriteLines(const MessageSet& set, std::size_t lines, const std::string& path);

/// Such a file in the folder for temporary files, which goes with the object. Ends the program if
/// it cannot be written.
class LinesFile {
  public:
    LinesFile(const MessageSet& set, std::size_t lines);
    LinesFile(const LinesFile&) = delete;
    LinesFile& operator=(const LinesFile&) = delete;
    ~LinesFile();

    [[nodiscard]] const std::string& Path() const { return path_; }

  private:
    std::string path_;
};

/// The messages of such a file, without their answers. False if it is not of that form.
[[nodiscard]] bool ReadLines(const std::string& path, MessageSet& set);

/// The pieces that a text is put together from: indentation, label, location, value, line end.
std::vector<std::string_view> PiecesOf(std::string_view text);

/// The same with the indentation in the label's piece and the line end in the value's.
std::vector<std::string_view> MergedPiecesOf(std::string_view text);

}  // namespace quorvane::benchmarks
