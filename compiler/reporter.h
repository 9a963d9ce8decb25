#pragma once

// Source files, spans of their text, and the errors of a run. Passes report and go on; a run shows
// all mistakes, in the order of their spans.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quorvane::compiler {

/// A stretch of a source file, in octets from its start.
struct Span {
    std::uint32_t file = 0;
    std::uint32_t begin = 0;
    std::uint32_t end = 0;
};

struct Name {
    std::string text;
    Span span;
};

struct SourceFile {
    std::string name;  // as printed in front of errors
    std::string text;
};

class Reporter {
  public:
    /// Takes a file over and gives its number for spans.
    std::uint32_t AddFile(std::string name, std::string text);
    [[nodiscard]] const SourceFile& File(std::uint32_t file) const { return files_[file]; }

    /// Notes an error: what is wrong and what would be right, without a full stop.
    void Error(Span span, std::string message);
    void ErrorIf(bool wrong, Span span, std::string message) {
        if (wrong) {
            Error(span, std::move(message));
        }
    }
    [[nodiscard]] bool HasErrors() const { return !errors_.empty(); }
    [[nodiscard]] std::size_t ErrorCount() const { return errors_.size(); }
    /// Where the errors behind the first `from` ones stand.
    [[nodiscard]] std::vector<Span> ErrorSpans(std::size_t from) const;

    /// The errors as lines `name:line:column: error: message`, ordered by file and span, each
    /// once.
    [[nodiscard]] std::string Text() const;

  private:
    struct Entry {
        Span span;
        std::string message;
    };

    std::vector<SourceFile> files_;
    std::vector<Entry> errors_;
};

}  // namespace quorvane::compiler
