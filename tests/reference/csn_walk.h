#pragma once

// What the reference reader and writer share: facts about descriptions, found the slow way, and the
// bits, numbers and counts on the way through one.

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "compiler/csn/csn_syntax.h"

namespace quorvane::reference {

/// Whether there is a field in the node or in rules that it refers to.
[[nodiscard]] bool HasFields(const compiler::CsnNode& node);

/// The branches of choices in the order in which they are tried.
class Branches {
  public:
    const std::vector<const compiler::CsnNode*>& Of(const compiler::CsnNode& choice);

  private:
    std::map<const compiler::CsnNode*, std::vector<const compiler::CsnNode*>> known_;
};

/// The width of a field that is a plain number of bits, either bit or a pattern, which is only
/// noted when all of it is there; -1 for others, which are noted where they open.
[[nodiscard]] std::int32_t PlainWidth(const compiler::CsnNode& field);

class Walk {
  protected:
    /// Thrown when a count below 0 ends the run.
    struct Ended {};

    Walk(std::string bits, std::int32_t start)
        : bits_(std::move(bits)), position_(start), end_(static_cast<std::int32_t>(bits_.size())) {}

    /// Bits outside of the message are 0: a length may be read there.
    [[nodiscard]] bool At(std::int32_t position) const;
    [[nodiscard]] std::uint32_t Value(std::int32_t from, std::int32_t to) const;
    /// The bit that `wanted` (0, 1, L, H) stands for at the position.
    [[nodiscard]] bool Meaning(char wanted) const;

    /// The newest value, or -1.
    [[nodiscard]] std::int32_t Variable(const compiler::CsnVariable* variable) const;
    /// Changes the newest value, which nothing takes back.
    void Change(const compiler::CsnVariable* variable, std::int64_t value);

    /// Does what an action does in both directions; false if it does something else.
    bool Act(const compiler::CsnNode& action);

    [[nodiscard]] std::int64_t Number(const compiler::CsnCount& count) const;
    [[nodiscard]] std::uint64_t Count(const compiler::CsnCount& count) const;

    std::string bits_;
    std::int32_t position_;
    std::int32_t end_;
    std::int32_t scopeEnd_ = 0;
    std::vector<std::pair<const compiler::CsnVariable*, std::int32_t>> variables_;
};

}  // namespace quorvane::reference
