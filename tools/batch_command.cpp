// Many messages: lines in, JSON objects out, in constant memory.

#include <chrono>
#include <cstdint>
#include <cstring>
#include <unistd.h>

#include "tools/answerer.h"
#include "tools/commands.h"
#include "tools/input_file.h"
#include "tools/line_reader.h"

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
    explicit BatchRun(const BatchOptions& options) : answerer_(options) {}

    /// Lines are of the file with that name from here on.
    void BeginFile(std::string_view name) {
        file_ = name;
        lineNumber_ = 0;
    }

    void Line(std::string_view line) { Answer({line, ++lineNumber_, file_}); }
    void TooLong() { Answer({{}, ++lineNumber_, file_, true}); }

    void Pause() {
        Flush();
        progress_.Show(allLines_);
    }

    /// Shows what is left.
    void Finish() { Flush(); }

    [[nodiscard]] const Tally& Counts() const { return answerer_.Counts(); }

  private:
    static constexpr std::size_t kMostHeld = std::size_t{64} << 10;

    void Answer(const InputLine& line) {
        ++allLines_;
        answerer_.Answer(line);
        if (answerer_.Answers().View().size() >= kMostHeld) {
            Pause();
        }
    }

    void Flush() {
        Print(answerer_.Answers().View());
        answerer_.Clear();
    }

    Answerer answerer_;
    Progress progress_;
    std::string_view file_;
    std::int64_t lineNumber_ = 0;
    std::int64_t allLines_ = 0;
};

int StatusOf(const Tally& counts, bool strict) {
    if (counts.BadLines() > 0 || (strict && counts.Unknown() > 0)) {
        return kNotFound;
    }
    return strict && counts.Faulty() > 0 ? kFaulty : kDone;
}

}  // namespace

int Batch(const std::vector<std::string>& files, const BatchOptions& options) {
    BatchRun run(options);
    bool allRead = true;
    for (const std::string& name : files) {
        // What cannot be read keeps nothing else from being read.
        try {
            const InputFile input(name);
            run.BeginFile(files.size() > 1 ? std::string_view(name) : std::string_view());
            if (const int error = ReadLines(input.Descriptor(), run); error != 0) {
                throw ReadError(name, error);
            }
        } catch (const FileError& error) {
            run.Pause();
            std::fprintf(stderr, "quorvane: %s\n", error.what());
            allRead = false;
        }
    }
    run.Finish();
    const Tally& counts = run.Counts();
    if (options.summary) {
        std::fputs(counts.Summary().c_str(), stderr);
    }
    return allRead ? StatusOf(counts, options.show.strict) : kWrongUse;
}

}  // namespace quorvane::tool
