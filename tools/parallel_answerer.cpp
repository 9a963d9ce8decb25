#include "tools/parallel_answerer.h"

namespace quorvane::tool {

namespace {

std::vector<Answerer> MakeAnswerers(const BatchOptions& options, std::size_t count) {
    std::vector<Answerer> answerers;
    for (std::size_t index = 0; index < count; ++index) {
        answerers.emplace_back(options);
    }
    return answerers;
}

}  // namespace

ParallelAnswerer::ParallelAnswerer(const BatchOptions& options, std::size_t threads)
    : answerers_(MakeAnswerers(options, threads)),
      jobs_(
          threads,
          [this](std::size_t thread, Block& block) {
              std::string_view text = block.text;
              for (Block::Line& each : block.lines) {
                  each.line.text = text.substr(0, each.size);
                  answerers_[thread].Answer(each.line);
                  text.remove_prefix(each.size);
              }
              answerers_[thread].Exchange(block.answers);
          },
          [](Block& block) {
              Print(block.answers.View());
              block.Clear();
          }) {}

void ParallelAnswerer::Add(const InputLine& line) {
    constexpr std::size_t kFullBlock = std::size_t{8} << 10;
    block_.text.append(line.text);
    block_.lines.push_back({line.text.size(), {{}, line.number, line.file, line.tooLong}});
    if (block_.text.size() >= kFullBlock) {
        Flush();
    }
}

void ParallelAnswerer::Flush() {
    if (!block_.lines.empty()) {
        jobs_.Submit(block_);
    }
}

void ParallelAnswerer::Finish() {
    Flush();
    jobs_.Finish();
}

Tally ParallelAnswerer::Counts() const {
    Tally counts;
    for (const Answerer& answerer : answerers_) {
        counts.Add(answerer.Counts());
    }
    return counts;
}

}  // namespace quorvane::tool
