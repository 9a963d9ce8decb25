#pragma once

// The verifier's walk through the rules of an image whose instructions and tables are in order.
// For csn/assembly/verifier.cpp alone.

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "csn/assembly/instruction.h"
#include "csn/assembly/verifier.h"
#include "csn/assembly/verifier_numbers.h"

namespace quorvane::csn {

/// The tag of field `id` under `parent`, if it has one.
using TagFinder =
    std::function<std::optional<std::uint16_t>(std::uint32_t id, std::uint16_t parent)>;

using FindingSink = std::function<void(std::uint32_t offset, const std::string& text)>;

/// What a rule does to the state of its caller. Counts that grow without a bound stop at kTooMany.
struct RuleSummary {
    static constexpr std::uint32_t kTooMany = 1000;

    std::uint32_t tagsLeft = 0;   // when it returns, at most
    std::uint32_t tagsMost = 0;   // while it runs
    std::uint32_t stackMost = 0;  // while it runs, its return address not counted
    std::uint32_t leastBits = 0;  // that it takes
    TagBounds bounds;             // when it returns
    bool returns = false;
    bool commits = false;        // may move up a choice point of its caller
    bool commitsInside = false;  // does so inside a field that it opened

    bool operator==(const RuleSummary&) const = default;
};

class FlowVerifier {
  public:
    FlowVerifier(const VerifierInput& input, const InstructionMap& instructions, TagFinder findTag);

    /// Walks everything that the entries reach. Findings go to `sink`, each place once.
    void Run(const FindingSink& sink);

    [[nodiscard]] RuleSummary Summary(std::uint32_t label, std::uint16_t parent) const;

  private:
    /// A rule under the tag of the field that encloses its use.
    using Context = std::pair<std::uint32_t, std::uint16_t>;

    RuleSummary Known(const Context& context, const TagBounds& bounds);
    RuleSummary Walk(const Context& context);

    const VerifierInput& input_;
    const InstructionMap& instructions_;
    TagFinder findTag_;
    std::map<Context, RuleSummary> summaries_;
    std::map<Context, TagBounds> bounds_;  // that hold wherever the rule is called
    std::set<Context> finished_;           // walked at least once
    std::vector<Context> order_;           // rules behind those that they call
    bool again_ = false;                   // a rule was walked by what does not hold any more
    std::map<std::uint32_t, std::set<std::string>> findings_;
};

}  // namespace quorvane::csn
