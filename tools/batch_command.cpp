// Many messages: lines in, JSON objects out, in constant memory.

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

#include "quorvane/decode.h"
#include "quorvane/json.h"
#include "tools/commands.h"
#include "tools/hex.h"
#include "tools/json_lines.h"
#include "tools/line_reader.h"
#include "tools/tolerant.h"
#include "tools/utf8.h"

namespace quorvane::tool {
namespace {

/// Counts on a terminal while the output goes elsewhere.
class Progress {
  public:
    Progress() : shown_(isatty(STDERR_FILENO) != 0 && isatty(STDOUT_FILENO) == 0) {}
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress() {
        if (any_) {
            std::fputs("\r\033[K", stderr);
        }
    }

    void Show(std::int64_t lines) {
        constexpr std::chrono::milliseconds kPause(200);
        if (!shown_) {
            return;
        }
        const auto now = std::chrono::steady_clock::now();
        if (now - last_ >= kPause) {
            last_ = now;
            any_ = true;
            std::fprintf(stderr, "\r%lld lines", static_cast<long long>(lines));
        }
    }

  private:
    bool shown_;
    bool any_ = false;
    std::chrono::steady_clock::time_point last_;
};

class File {
  public:
    explicit File(const std::string& name)
        : descriptor_(name == "-" ? STDIN_FILENO : open(name.c_str(), O_RDONLY | O_CLOEXEC)) {
        if (descriptor_ < 0) {
            throw UsageError("cannot open '" + name + "': " + std::strerror(errno));
        }
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;
    ~File() {
        if (descriptor_ != STDIN_FILENO) {
            close(descriptor_);
        }
    }

    [[nodiscard]] int Descriptor() const { return descriptor_; }

  private:
    int descriptor_;
};

/// The words of a line; the last one is all that is left.
struct Request {
    std::string_view function;
    std::string_view length;
    std::string_view hex;
};

constexpr std::string_view kBlanks = " \t\r";

std::string_view CutWord(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
    const std::string_view word = text.substr(0, text.find_first_of(kBlanks));
    text.remove_prefix(word.size());
    return word;
}

Request Split(std::string_view line) {
    Request request;
    request.function = CutWord(line);
    request.length = CutWord(line);
    line.remove_prefix(std::min(line.find_first_not_of(kBlanks), line.size()));
    request.hex = line.substr(0, line.find_last_not_of(kBlanks) + 1);  // npos + 1 is 0
    return request;
}

class BatchRun {
  public:
    BatchRun(int descriptor, MessageForm form, DecodeOptions options)
        : reader_(descriptor), form_(form), options_(options) {}

    /// Whether all lines were good.
    bool Run() {
        for (;;) {
            std::string_view line;
            switch (reader_.Next(line)) {
                case LineReader::Outcome::kLine:
                    ++lineNumber_;
                    Answer(line);
                    break;
                case LineReader::Outcome::kTooLong:
                    ++lineNumber_;
                    Refuse("the line is longer than " + std::to_string(LineReader::kLongestLine) +
                           " characters");
                    break;
                case LineReader::Outcome::kNeedsInput:
                    Flush();
                    progress_.Show(lineNumber_);
                    reader_.Fill();
                    break;
                case LineReader::Outcome::kEnd:
                    Flush();
                    return good_;
                case LineReader::Outcome::kError:
                    Flush();
                    throw UsageError(std::string("cannot read: ") + std::strerror(errno));
            }
            if (json_.View().size() >= kMostHeld) {
                Flush();
                progress_.Show(lineNumber_);
            }
        }
    }

  private:
    static constexpr std::size_t kMostHeld = std::size_t{64} << 10;
    static constexpr const char* kForm = "expected FUNCTION LENGTH HEX";

    void Answer(std::string_view line) {
        const Request request = Split(line);
        if (request.length.empty()) {
            return Refuse(kForm);
        }
        const std::optional<Decoding> decoding = FindDecoding(request.function);
        if (!decoding) {
            return Refuse("unknown function '" + std::string(request.function) + "'");
        }
        std::int32_t length = 0;
        const char* lengthEnd = request.length.data() + request.length.size();
        const auto [parsedEnd, status] = std::from_chars(request.length.data(), lengthEnd, length);
        if (status != std::errc() || parsedEnd != lengthEnd) {
            return Refuse("LENGTH, '" + std::string(request.length) +
                          "' is not a whole number of 32 bits");
        }
        if (request.hex.empty() && length > 0) {
            return Refuse(kForm);
        }
        if (const std::string problem = ParseHex(request.hex, octets_); !problem.empty()) {
            return Refuse("HEX, " + problem);
        }
        const PaddedMessage octets(octets_.data(), length, octets_.size());
        const bool found = DecodeMessage(*decoding, octets);
        json_.Begin();
        json_.Add("fn", request.function);
        json_.Add("length", length);
        json_.Add("hex", request.hex);
        json_.Add("ret", found ? 1 : 0);
        if (!Decodings()[static_cast<std::size_t>(*decoding)].described) {
            json_.AddFlag("described", false);
        }
        if (form_ == MessageForm::kJson) {
            text_.clear();
            AppendJson(message_, text_);
            json_.AddJson("message", text_);
        } else {
            json_.Add("text", text_);
            json_.AddLines("diagnostics", diagnostics_);
        }
        json_.End();
    }

    /// Into the message or the text, as the form says.
    bool DecodeMessage(Decoding decoding, PaddedMessage octets) {
        if (form_ == MessageForm::kJson) {
            return message_.Decode(decoding, octets, options_);
        }
        return options_.tolerant
                   ? DecodeAsText(message_, decoding, octets, options_, text_, diagnostics_)
                   : DecodeInto(decoding, octets, text_, diagnostics_);
    }

    void Refuse(const std::string& problem) {
        good_ = false;
        json_.Begin();
        json_.Add("line", lineNumber_);
        json_.Add("error", WithoutInvalidUtf8(problem));  // it may quote the line
        json_.End();
    }

    void Flush() {
        Print(json_.View());
        json_.Clear();
    }

    LineReader reader_;
    MessageForm form_;
    DecodeOptions options_;
    Progress progress_;
    std::int64_t lineNumber_ = 0;
    bool good_ = true;
    JsonLines json_;
    std::vector<std::uint8_t> octets_;
    Message message_;
    std::string text_;
    std::string diagnostics_;
};

}  // namespace

int Batch(const std::string& file, MessageForm form, DecodeOptions options) {
    const File input(file);
    return BatchRun(input.Descriptor(), form, options).Run() ? kDone : kNotFound;
}

}  // namespace quorvane::tool
