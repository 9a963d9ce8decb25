#pragma once

// Lines of a file or a pipe in constant memory.

#include <cerrno>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace quorvane::tool {

class LineReader {
  public:
    /// Reads of the file descriptor, which stays the caller's.
    explicit LineReader(int descriptor) : descriptor_(descriptor), buffer_(kBuffer) {}

    enum class Outcome { kLine, kTooLong, kNeedsInput, kEnd, kError };

    /// Gives the next line, without its line feed and a byte order mark ahead of the first one,
    /// valid until the next call. kTooLong stands for a line of more than kLongestLine characters,
    /// which is passed over. kNeedsInput asks for a call of Fill; the caller may want to show its
    /// output before, as that may wait.
    Outcome Next(std::string_view& line);

    /// Reads more. kError leaves the reason in errno.
    void Fill();

    /// 65,535 octets as "0xNN " each, and as much again.
    static constexpr std::size_t kLongestLine = std::size_t{640} << 10;
    static std::string TooLongWords() {
        return "the line is longer than " + std::to_string(kLongestLine) + " characters";
    }

  private:
    /// Passes over a byte order mark.
    void PassMark();

    static constexpr std::size_t kBuffer = kLongestLine + (std::size_t{64} << 10);

    int descriptor_;
    std::vector<char> buffer_;
    std::size_t begin_ = 0;    // of the line
    std::size_t scanned_ = 0;  // no line feed ahead of it
    std::size_t end_ = 0;
    bool atStart_ = true;    // nothing has been read, or a part of a byte order mark
    bool skipping_ = false;  // the rest of a line that was too long
    bool atEnd_ = false;
    bool failed_ = false;
};

/// Hands all lines to `handler`: `Line(line)`, `TooLong()` for one that is passed over, and
/// `Pause()` ahead of what may wait for input. Returns 0, or the errno of a read that failed, which
/// may be EINTR (ReadSome).
template <typename Handler>
int ReadLines(int descriptor, Handler& handler) {
    LineReader reader(descriptor);
    for (;;) {
        std::string_view line;
        switch (reader.Next(line)) {
            case LineReader::Outcome::kLine:
                handler.Line(line);
                break;
            case LineReader::Outcome::kTooLong:
                handler.TooLong();
                break;
            case LineReader::Outcome::kNeedsInput:
                handler.Pause();
                reader.Fill();
                break;
            case LineReader::Outcome::kEnd:
                return 0;
            case LineReader::Outcome::kError:
                return errno;
        }
    }
}

}  // namespace quorvane::tool
