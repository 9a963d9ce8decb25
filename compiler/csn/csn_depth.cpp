// How deep the rules of CSN.1 descriptions are nested.

#include <algorithm>
#include <map>
#include <utility>
#include <vector>

#include "compiler/csn/csn_resolver.h"

namespace quorvane::compiler {
namespace {

constexpr std::size_t kMostDepth = 2000;

/// The depth of the groups in `node`; the rules that they refer to are added to `callees`.
std::size_t DepthOf(const CsnNode& node, std::vector<CsnRule*>& callees) {
    if (node.rule != nullptr) {
        callees.push_back(node.rule);
    }
    std::size_t depth = 0;
    for (const CsnNode* child : node.children) {
        depth = std::max(depth, DepthOf(*child, callees));
    }
    return depth + 1;
}

/// Goes down from rule to rule without recursion.
class DepthWalk {
  public:
    explicit DepthWalk(Reporter& reporter) : reporter_(reporter) {}

    void Run(CsnRule& rule) {
        Enter(rule);
        while (!steps_.empty()) {
            Step& step = steps_.back();
            if (step.callees.empty()) {
                Leave(step);
                steps_.pop_back();
                continue;
            }
            CsnRule& callee = *step.callees.back();
            if (const auto known = depths_.find(&callee); known != depths_.end()) {
                step.below = std::max(step.below, known->second);
                step.callees.pop_back();
            } else {
                Enter(callee);
            }
        }
    }

  private:
    struct Step {
        CsnRule* rule;
        std::size_t depth = 0;            // of the rule alone
        std::size_t below = 0;            // of the deepest that it refers to
        std::vector<CsnRule*> callees{};  // to look at
    };

    void Enter(CsnRule& rule) {
        if (depths_.emplace(&rule, 0).second) {
            Step step{&rule};
            step.depth = DepthOf(*rule.body, step.callees);
            steps_.push_back(std::move(step));
        }
    }

    void Leave(const Step& step) {
        const std::size_t depth = step.depth + step.below;
        depths_[step.rule] = depth;
        if (depth > kMostDepth) {
            step.rule->broken = true;
            // Those that refer to it are too deep as well, and are not told.
            reporter_.ErrorIf(step.below <= kMostDepth, step.rule->name.span,
                              "the rule '< " + step.rule->name.text + " >' is nested more than " +
                                  std::to_string(kMostDepth) +
                                  " groups and rules deep, with the rules that it refers to; "
                                  "write several of them as one");
        }
    }

    Reporter& reporter_;
    std::map<const CsnRule*, std::size_t> depths_;  // 0 for those of the steps
    std::vector<Step> steps_;
};

}  // namespace

void RefuseDeepRules(Reporter& reporter, CsnSyntax& syntax) {
    DepthWalk walk(reporter);
    for (CsnRule& rule : syntax.rules) {
        walk.Run(rule);
    }
}

}  // namespace quorvane::compiler
