// JSON objects in, octets out: lines in constant memory, or one object over many lines.

#include <cerrno>
#include <cstdint>

#include "quorvane/message.h"
#include "tools/commands.h"
#include "tools/function_name.h"
#include "tools/hex.h"
#include "tools/input_file.h"
#include "tools/line_reader.h"
#include "tools/message_reader.h"
#include "tools/system.h"
#include "tools/utf8.h"

namespace quorvane::tool {
namespace {

constexpr std::string_view kBlanks = " \t\r";

std::string_view WithoutBlanks(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
    return text.substr(0, text.find_last_not_of(kBlanks) + 1);  // npos + 1 is 0
}

class EncodeRun {
  public:
    explicit EncodeRun(Decoding decoding) : decoding_(decoding) {}

    void Line(std::string_view line) {
        ++lineNumber_;
        if (!whole_.empty()) {
            return Gather(line);
        }
        const std::string_view text = WithoutBlanks(line);
        if (text.empty()) {
            return;
        }
        // What prints an object over many lines puts the brace on the first one alone.
        if (!any_ && text == "{") {
            return Gather(line);
        }
        any_ = true;
        Write(text, "line " + std::to_string(lineNumber_) + ": ");
    }

    void TooLong() {
        ++lineNumber_;
        any_ = true;
        Refuse("line " + std::to_string(lineNumber_) + ": ", LineReader::TooLongWords());
    }

    void Pause() {
        Print(hex_);
        hex_.clear();
    }

    /// Of the last line that was read.
    [[nodiscard]] std::int64_t LineNumber() const { return lineNumber_; }

    /// Writes what is left. Whether all messages were good.
    bool Finish() {
        if (!whole_.empty() && whole_.size() <= LineReader::kLongestLine) {
            Write(whole_, "");
        } else if (!whole_.empty()) {
            Refuse("", "the object is longer than " + std::to_string(LineReader::kLongestLine) +
                           " characters");
        }
        Pause();
        return good_;
    }

  private:
    /// What is longer than it may be grows no more.
    void Gather(std::string_view line) {
        if (whole_.size() <= LineReader::kLongestLine) {
            whole_.append(line).append("\n");
        }
    }

    void Write(std::string_view json, const std::string& where) {
        if (const std::string problem = ReadMessage(json, decoding_, message_); !problem.empty()) {
            return Refuse(where, problem);
        }
        octets_.clear();
        const EncodeResult result = message_.Encode(octets_);
        if (result.error) {
            return Refuse(where, WordsOf(result.error));
        }
        hex_ += ToHex(octets_, "") + "\n";
        constexpr std::size_t kMostHeld = std::size_t{64} << 10;
        if (hex_.size() >= kMostHeld) {
            Pause();
        }
    }

    void Refuse(const std::string& where, const std::string& problem) {
        good_ = false;
        Pause();
        // It may quote the line.
        std::fprintf(stderr, "quorvane: %s%s\n", where.c_str(),
                     WithoutInvalidUtf8(problem).c_str());
    }

    Decoding decoding_;
    std::int64_t lineNumber_ = 0;
    bool any_ = false;   // line with an object
    std::string whole_;  // the object over many lines
    bool good_ = true;
    Message message_;
    std::vector<std::uint8_t> octets_;
    std::string hex_;
};

}  // namespace

int Encode(const std::string& function, const std::string& file) {
    const Decoding decoding = DecodingNamed(function);
    // unreachable from here: with all families
    if (!InfoOf(decoding).described) {
        std::fprintf(stderr, "quorvane: %s\n", NotDescribed(function).c_str());
        return kNotDescribed;
    }
    // to here
    CatchInterrupts();
    const InputFile input(file);
    EncodeRun run(decoding);
    const int error = ReadLines(input.Descriptor(), run);
    if (error == EINTR) {
        run.Pause();
        return Interrupted("line " + std::to_string(run.LineNumber()) + " of '" + file + "'");
    }
    const bool good = run.Finish();
    if (error != 0) {
        throw ReadError(file, error);
    }
    return good ? kDone : kNotFound;
}

}  // namespace quorvane::tool
