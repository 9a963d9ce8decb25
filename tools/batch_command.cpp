// Many messages: lines in, JSON objects out, in constant memory.

#include <cstdint>
#include <optional>

#include "tools/answerer.h"
#include "tools/commands.h"
#include "tools/input_file.h"
#include "tools/line_reader.h"
#include "tools/parallel_answerer.h"
#include "tools/progress.h"
#include "tools/system.h"

namespace quorvane::tool {
namespace {

/// How many octets there are in all files, if that is known.
std::optional<std::uint64_t> SizeOf(const std::vector<std::string>& files) {
    std::uint64_t all = 0;
    for (const std::string& name : files) {
        const auto size = SizeOfInput(name);
        if (!size) {
            return std::nullopt;
        }
        all += *size;
    }
    return all;
}

class BatchRun {
  public:
    BatchRun(const BatchOptions& options, std::optional<std::uint64_t> allOctets)
        : answerer_(options), progress_("lines", allOctets) {
        if (const unsigned threads = ThreadsOf(options.jobs); threads > 1) {
            parallel_.emplace(options, threads);
        }
    }

    /// Lines are of the file with that name from here on.
    void BeginFile(std::string_view name) {
        file_ = name;
        lineNumber_ = 0;
    }

    void Line(std::string_view line) {
        octets_ += line.size() + 1;
        Answer({line, ++lineNumber_, file_});
    }
    void TooLong() { Answer({{}, ++lineNumber_, file_, true}); }

    void Pause() {
        if (parallel_) {
            parallel_->Flush();
        } else {
            Print(answerer_.Answers().View());
            answerer_.Clear();
        }
        progress_.Show(lines_, octets_);
    }

    /// Shows what is left.
    void Finish() {
        Pause();
        if (parallel_) {
            parallel_->Finish();
        }
        progress_.Hide();
    }

    /// Says on standard error what is wrong with a file.
    void Tell(const FileError& error) {
        Pause();
        progress_.Hide();
        std::fprintf(stderr, "quorvane: %s\n", error.what());
    }

    /// Behind Finish.
    [[nodiscard]] Tally Counts() const {
        return parallel_ ? parallel_->Counts() : answerer_.Counts();
    }

    /// Of the file's last line that was read.
    [[nodiscard]] std::int64_t LineNumber() const { return lineNumber_; }

  private:
    static constexpr std::size_t kMostHeld = std::size_t{64} << 10;

    void Answer(const InputLine& line) {
        ++lines_;
        if (parallel_) {
            return parallel_->Add(line);
        }
        answerer_.Answer(line);
        if (answerer_.Answers().View().size() >= kMostHeld) {
            Pause();
        }
    }

    Answerer answerer_;
    std::optional<ParallelAnswerer> parallel_;  // in place of the one
    Progress progress_;
    std::string_view file_;
    std::int64_t lineNumber_ = 0;
    std::uint64_t lines_ = 0;
    std::uint64_t octets_ = 0;
};

/// Answers the lines of a file. Says on standard error what is wrong with it, and returns whether
/// it could be read.
bool AnswerFile(const std::string& name, bool isNamed, BatchRun& run) {
    try {
        const InputFile input(name);
        run.BeginFile(isNamed ? std::string_view(name) : std::string_view());
        if (const int error = ReadLines(input.Descriptor(), run);
            error != 0 && InterruptSignal() == 0) {
            throw ReadError(name, error);
        }
        return true;
    } catch (const FileError& error) {
        run.Tell(error);
        return false;
    }
}

int StatusOf(const Tally& counts, bool strict) {
    if (counts.BadLines() > 0 || (strict && counts.Unknown() > 0)) {
        return kNotFound;
    }
    return strict && counts.Faulty() > 0 ? kFaulty : kDone;
}

}  // namespace

int Batch(const std::vector<std::string>& files, const BatchOptions& options) {
    CatchInterrupts();
    BatchRun run(options, SizeOf(files));
    bool allRead = true;
    for (const std::string& name : files) {
        // What cannot be read keeps nothing else from being read.
        allRead = AnswerFile(name, files.size() > 1, run) && allRead;
        if (InterruptSignal() != 0) {
            run.Finish();
            return Interrupted("line " + std::to_string(run.LineNumber()) + " of '" + name + "'");
        }
    }
    run.Finish();
    const Tally counts = run.Counts();
    if (options.summary) {
        std::fputs(counts.Summary().c_str(), stderr);
    }
    return allRead ? StatusOf(counts, options.show.strict) : kWrongUse;
}

}  // namespace quorvane::tool
