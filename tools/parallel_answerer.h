#pragma once

// Answers lines for `batch` on several threads, in their order.

#include <cstddef>
#include <string>
#include <vector>

#include "tools/answerer.h"
#include "tools/ordered_jobs.h"

namespace quorvane::tool {

class ParallelAnswerer {
  public:
    ParallelAnswerer(const BatchOptions& options, std::size_t threads);

    /// Takes a line. The file's name has to stay until Finish.
    void Add(const InputLine& line);

    /// Has all lines answered that were added, without waiting for that.
    void Flush();

    /// Waits until all answers are written.
    void Finish();

    /// Behind Finish.
    [[nodiscard]] Tally Counts() const;

  private:
    /// Lines that one thread answers, and the answers.
    struct Block {
        std::string text;  // of all lines
        struct Line {
            std::size_t size;
            InputLine line;  // without its text
        };
        std::vector<Line> lines;
        JsonLines answers;

        void Clear() {
            text.clear();
            lines.clear();
            answers.Clear();
        }
    };

    std::vector<Answerer> answerers_;  // one for each thread
    Block block_;
    OrderedJobs<Block> jobs_;  // the last member: its threads end first
};

}  // namespace quorvane::tool
