// Many messages: lines in, JSON objects out, in constant memory.

#include <chrono>
#include <cstdint>
#include <unistd.h>

#include "quorvane/decode.h"
#include "quorvane/json.h"
#include "tools/commands.h"
#include "tools/input_file.h"
#include "tools/json_lines.h"
#include "tools/line_reader.h"
#include "tools/message_line.h"
#include "tools/octet_text.h"
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

class BatchRun {
  public:
    BatchRun(MessageForm form, DecodeOptions options) : form_(form), options_(options) {}

    void Line(std::string_view line) {
        ++lineNumber_;
        Answer(line);
        FlushIfFull();
    }

    void TooLong() {
        ++lineNumber_;
        Refuse(LineReader::TooLongWords());
        FlushIfFull();
    }

    void Pause() {
        Flush();
        progress_.Show(lineNumber_);
    }

    /// Shows what is left. Whether all lines were good.
    bool Finish() {
        Flush();
        return good_;
    }

  private:
    static constexpr std::size_t kMostHeld = std::size_t{64} << 10;

    void Answer(std::string_view line) {
        MessageLine request;
        if (const std::string problem = ParseMessageLine(line, request, octets_);
            !problem.empty()) {
            return Refuse(problem);
        }
        const PaddedMessage octets(octets_.data(), request.length, octets_.size());
        const bool found = DecodeMessage(request.decoding, octets);
        if (!found && request.hexBehindDoubt &&
            IsKnown(request.decoding, *request.hexBehindDoubt)) {
            return Refuse(DoubtfulLength(request.hex.substr(0, request.hex.find(' '))));
        }
        json_.Begin();
        json_.Add("fn", Decodings()[static_cast<std::size_t>(request.decoding)].name);
        json_.Add("length", request.length);
        json_.Add("hex", request.hex);
        json_.Add("ret", found ? 1 : 0);
        if (!Decodings()[static_cast<std::size_t>(request.decoding)].described) {
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

    bool IsKnown(Decoding decoding, std::string_view hex) {
        std::vector<std::uint8_t> octets;
        return ParseOctets(hex, octets).empty() && message_.Decode(decoding, octets, options_);
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

    void FlushIfFull() {
        if (json_.View().size() >= kMostHeld) {
            Pause();
        }
    }

    void Flush() {
        Print(json_.View());
        json_.Clear();
    }

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
    const InputFile input(file);
    BatchRun run(form, options);
    const int error = ReadLines(input.Descriptor(), run);
    const bool good = run.Finish();
    if (error != 0) {
        ThrowReadError(error);
    }
    return good ? kDone : kNotFound;
}

}  // namespace quorvane::tool
