// Static checks of resolved CSN.1.

#include <algorithm>
#include <cstdint>
#include <map>
#include <set>
#include <utility>

#include "compiler/csn/csn_builtins.h"
#include "compiler/csn/csn_resolver.h"

namespace quorvane::compiler {
namespace {

using NodeKind = CsnNode::Kind;
using RepetitionForm = CsnNode::Repetition::Form;

/// How many times rules may be entered at one place of a message at most.
constexpr std::uint64_t kMostCalls = 1U << 16;

/// Whether an iteration over `node` may be followed by any number of others.
bool IsOpen(const CsnNode& node) {
    return node.kind == NodeKind::kRepeat &&
           (node.repetition.form == RepetitionForm::kAny ||
            node.repetition.form == RepetitionForm::kWriteCount ||
            (node.repetition.form == RepetitionForm::kRange && node.high == kUnbounded));
}

class Checker {
  public:
    Checker(Reporter& reporter, CsnSyntax& syntax) : reporter_(reporter), syntax_(syntax) {}

    void Run() {
        ComputeEmptiness();
        for (CsnRule& rule : syntax_.rules) {
            CheckRepetitions(*rule.body, false);
            CheckAsides(*rule.body);
            LeftEdge(*rule.body, edges_[&rule]);
        }
        CheckLeftRecursion();
        DropBroken(reporter_, syntax_);  // the walks below would not end
        CheckCalls();
        for (const CsnSection& section : syntax_.sections) {
            if (section.structure && !section.runs) {
                CheckIntersections(*EntryRule(section).body, false);
                CheckVariables(EntryRule(section), CsnNode::Direction::kReading);
                CheckVariables(EntryRule(section), CsnNode::Direction::kWriting);
            }
        }
    }

  private:
    using Variables = std::set<const CsnVariable*>;

    void ComputeEmptiness() {
        for (bool changed = true; changed;) {
            changed = false;
            for (CsnRule& rule : syntax_.rules) {
                if (!rule.mayBeEmpty && MayBeEmpty(*rule.body)) {
                    rule.mayBeEmpty = changed = true;
                }
            }
        }
    }

    /// `inValue`: inside of a field that a writer gives as a whole, whose length bounds it.
    void CheckRepetitions(const CsnNode& node, bool inValue) {
        if (IsOpen(node)) {
            const CsnNode& body = *node.children.front();
            if (MayBeEmpty(body)) {
                reporter_.Error(node.span,
                                "what is repeated without a bound may be empty, so "
                                "the repetition would not end");
            } else if (!inValue && !HasFields(body) && !node.repetition.leftOut &&
                       node.repetition.form != RepetitionForm::kWriteCount) {
                reporter_.Error(node.span,
                                "a repetition without a bound and without a field inside would "
                                "be written for ever; write '** = < no string >' if it is left "
                                "out, or '** write (COUNT)'");
            }
        }
        inValue = inValue || (node.kind == NodeKind::kField && !HasFields(*node.children.front()));
        for (const CsnNode* child : node.children) {
            CheckRepetitions(*child, inValue);
        }
    }

    /// The second operand of '-' only tests bits.
    void CheckAsides(const CsnNode& node) {
        if (node.kind == NodeKind::kExclude && HasFields(*node.children.back())) {
            reporter_.Error(node.children.back()->span,
                            "there can be no field in what is excluded");
        }
        if (node.kind == NodeKind::kRange && FixedWidth(*node.children.front()) > 32U) {
            reporter_.Error(node.span, "a range of values needs at most 32 bits");
        }
        for (const CsnNode* child : node.children) {
            CheckAsides(*child);
        }
    }

    /// The bits of 'a & b' end what can be read, so that nothing can follow. `isFollowed`: bits are
    /// read behind `node`.
    void CheckIntersections(const CsnNode& node, bool isFollowed) {
        if (node.kind == NodeKind::kIntersection && isFollowed &&
            intersections_.insert(&node).second) {
            reporter_.Error(node.span,
                            "nothing can follow 'a & b', whose end stays the end of what is read; "
                            "limit b by a scope instead: @open_fixed, @open_behind_length and the "
                            "like, and @close behind it");
        }
        if (node.kind == NodeKind::kReference && walked_.emplace(node.rule, isFollowed).second) {
            CheckIntersections(*node.rule->body, isFollowed);
        }
        const bool isRow = node.kind == NodeKind::kConcat || node.kind == NodeKind::kTruncate;
        isFollowed = isFollowed || node.kind == NodeKind::kRepeat;
        for (auto child = node.children.rbegin(); child != node.children.rend(); ++child) {
            CheckIntersections(**child, isFollowed);
            isFollowed = isFollowed || (isRow && FixedWidth(**child) != 0U);
        }
    }

    /// Collects the rules that may begin where `node` does. Returns whether what follows `node`
    /// may begin there too.
    bool LeftEdge(const CsnNode& node, std::set<const CsnRule*>& rules) {
        switch (node.kind) {
            case NodeKind::kReference:
                rules.insert(node.rule);
                break;
            case NodeKind::kConcat:
            case NodeKind::kTruncate:
                for (const CsnNode* child : node.children) {
                    if (!LeftEdge(*child, rules)) {
                        return node.kind == NodeKind::kTruncate;
                    }
                }
                break;
            default:
                for (const CsnNode* child : node.children) {
                    LeftEdge(*child, rules);
                }
                break;
        }
        return MayBeEmpty(node);
    }

    /// The rules that a run of `rule` may enter before it reads a bit.
    [[nodiscard]] std::set<const CsnRule*> FirstIn(const CsnRule& rule) const {
        std::set<const CsnRule*> first;
        std::vector<const CsnRule*> left = {&rule};
        while (!left.empty()) {
            const CsnRule* next = left.back();
            left.pop_back();
            for (const CsnRule* callee : edges_.at(next)) {
                if (first.insert(callee).second) {
                    left.push_back(callee);
                }
            }
        }
        return first;
    }

    /// Reports each cycle of rules once, at the first of them.
    void CheckLeftRecursion() {
        std::set<const CsnRule*> told;
        for (const CsnRule& rule : syntax_.rules) {
            if (!rule.recursive || told.count(&rule) != 0) {
                continue;
            }
            const std::set<const CsnRule*> first = FirstIn(rule);
            if (first.count(&rule) == 0) {
                continue;
            }
            reporter_.Error(
                rule.name.span,
                "the rule '< " + rule.name.text +
                    " >' is left-recursive: it refers to itself before it has read a bit");
            for (const CsnRule* other : first) {
                if (FirstIn(*other).count(&rule) != 0) {
                    told.insert(other);
                }
            }
        }
    }

    // ---- Calls without a bit ---------------------------------------------------------------

    /// How often `node` is run at most where it stands.
    static std::uint64_t MostTimes(const CsnNode& node) {
        if (node.kind != NodeKind::kRepeat || IsOpen(node) || !MayBeEmpty(*node.children.front())) {
            return 1;
        }
        const CsnNode::Repetition& repetition = node.repetition;
        return repetition.form == RepetitionForm::kRange ? node.high
               : repetition.count.form == CsnCount::Form::kNumber
                   ? static_cast<std::uint64_t>(repetition.count.number)
                   : 1;
    }

    /// How many times a run of `node` may enter rules before it reads a bit, kMostCalls + 1 for all
    /// that is more.
    std::uint64_t CallsOf(const CsnNode& node) {
        if (node.kind == NodeKind::kReference) {
            return std::min(kMostCalls, CallsOf(*node.rule)) + 1;
        }
        const bool isRow = node.kind == NodeKind::kConcat || node.kind == NodeKind::kTruncate;
        std::uint64_t calls = 0;
        for (const CsnNode* child : node.children) {
            calls = std::min(kMostCalls + 1, calls + MostTimes(node) * CallsOf(*child));
            if (isRow && !MayBeEmpty(*child)) {
                break;
            }
        }
        return calls;
    }

    std::uint64_t CallsOf(const CsnRule& rule) {
        const auto known = calls_.find(&rule);
        return known != calls_.end() ? known->second : calls_[&rule] = CallsOf(*rule.body);
    }

    /// Tells of the rules that are the first to have too many.
    void CheckCalls() {
        for (const CsnRule& rule : syntax_.rules) {
            const auto& first = edges_[&rule];
            reporter_.ErrorIf(
                CallsOf(rule) > kMostCalls && std::all_of(first.begin(), first.end(),
                                                          [&](const CsnRule* callee) {
                                                              return CallsOf(*callee) <= kMostCalls;
                                                          }),
                rule.name.span,
                "a run of the rule '< " + rule.name.text + " >' may enter rules more than " +
                    std::to_string(kMostCalls) +
                    " times before it reads a bit; let it read bits in between");
        }
    }

    // ---- Variables are set before they are used ---------------------------------------------

    void CheckVariables(const CsnRule& entry, CsnNode::Direction direction) {
        direction_ = direction;
        known_.clear();
        under_.clear();
        Variables set;
        WalkRule(entry, set);
    }

    void WalkRule(const CsnRule& rule, Variables& set) {
        if (!under_.insert(&rule).second) {
            return;  // recursion: the outer walk looks at it
        }
        const auto key = std::pair(&rule, set);
        if (const auto found = known_.find(key); found != known_.end()) {
            set = found->second;
        } else {
            Variables before = set;
            Walk(*rule.body, set);
            if (rule.called && !rule.keepsTags) {
                set = std::move(before);
            }
            known_.emplace(key, set);
        }
        under_.erase(&rule);
    }

    void Walk(const CsnNode& node, Variables& set) {
        switch (node.kind) {
            case NodeKind::kChoice:
            case NodeKind::kError:
                WalkBranches(node, set);
                return;
            case NodeKind::kRepeat:
                Use(node.repetition.count.variable, node.repetition.count.span,
                    IsOptional(node.repetition.count.form), set);
                WalkAside(node, set);
                return;
            case NodeKind::kTruncate:
                WalkAside(node, set);
                return;
            case NodeKind::kExclude:
            case NodeKind::kSend: {
                const bool second =
                    node.kind == NodeKind::kSend && direction_ == CsnNode::Direction::kWriting;
                Walk(*node.children[second ? 1 : 0], set);
                return;
            }
            case NodeKind::kReference:
                WalkRule(*node.rule, set);
                return;
            case NodeKind::kAction:
                WalkAction(node, set);
                return;
            default:
                for (const CsnNode* child : node.children) {
                    Walk(*child, set);
                }
                if (node.variable != nullptr) {
                    set.insert(node.variable);
                }
                return;
        }
    }

    /// The children of a repetition or truncation, which may not be reached.
    void WalkAside(const CsnNode& node, const Variables& set) {
        Variables inside = set;
        for (const CsnNode* child : node.children) {
            Walk(*child, inside);
        }
    }

    void WalkBranches(const CsnNode& node, Variables& set) {
        Variables common;
        bool isFirst = true;
        for (const CsnNode* child : node.children) {
            if (node.readOnly && child != node.children.front() &&
                direction_ == CsnNode::Direction::kWriting) {
                continue;
            }
            Variables branch = set;
            Walk(*child, branch);
            if (isFirst) {
                common = std::move(branch);
            } else {
                std::erase_if(common,
                              [&](const auto* variable) { return !branch.count(variable); });
            }
            isFirst = false;
        }
        set = std::move(common);
    }

    void WalkAction(const CsnNode& node, Variables& set) {
        if (node.direction != CsnNode::Direction::kBoth && node.direction != direction_) {
            return;
        }
        const CsnActionInfo& info = *FindCsnAction(node.name.text);
        const CsnVariable* kept = nullptr;
        for (std::size_t index = 0; index < node.arguments.size(); ++index) {
            const CsnArgument& argument = node.arguments[index];
            if (info.parameters[index] == CsnActionInfo::Parameter::kSets) {
                kept = argument.variable;
            } else if (argument.count) {
                Use(argument.count->variable, argument.span, IsOptional(argument.count->form), set);
            } else {
                Use(argument.variable, argument.span, false, set);
            }
        }
        if (kept != nullptr) {
            set.insert(kept);
        }
    }

    /// These functions take a variable that is not set as 0.
    static bool IsOptional(CsnCount::Form form) {
        return form == CsnCount::Form::kLeftOrZero || form == CsnCount::Form::kUntil;
    }

    void Use(const CsnVariable* variable, Span span, bool optional, const Variables& set) {
        if (variable != nullptr && !optional && set.count(variable) == 0) {
            reporter_.Error(
                span, "'" + variable->name + "' is not known here on every way that " +
                          (direction_ == CsnNode::Direction::kReading ? "reading" : "writing") +
                          " can take; it must be set before");
        }
    }

    Reporter& reporter_;
    CsnSyntax& syntax_;
    std::map<const CsnRule*, std::set<const CsnRule*>> edges_;
    CsnNode::Direction direction_ = CsnNode::Direction::kReading;
    std::map<std::pair<const CsnRule*, Variables>, Variables> known_;
    std::set<const CsnRule*> under_;
    std::set<const CsnNode*> intersections_;            // reported
    std::set<std::pair<const CsnRule*, bool>> walked_;  // for them
    std::map<const CsnRule*, std::uint64_t> calls_;     // CallsOf
};

}  // namespace

bool MayBeEmpty(const CsnNode& node) {
    const auto childMay = [](const CsnNode* child) { return MayBeEmpty(*child); };
    const auto& children = node.children;
    switch (node.kind) {
        case NodeKind::kBits:
        case NodeKind::kAnyBits:
            return false;
        case NodeKind::kConcat:
            return std::all_of(children.begin(), children.end(), childMay);
        case NodeKind::kChoice:
        case NodeKind::kError:
            return std::any_of(children.begin(), children.end(), childMay);
        case NodeKind::kRepeat:
            if ((node.repetition.form == RepetitionForm::kRange && node.low > 0) ||
                (node.repetition.form == RepetitionForm::kCount &&
                 node.repetition.count.form == CsnCount::Form::kNumber)) {
                return childMay(children.front());
            }
            return true;
        case NodeKind::kIntersection:
            return childMay(children.back());
        case NodeKind::kExclude:
        case NodeKind::kSend:
        case NodeKind::kRange:
        case NodeKind::kField:
            return childMay(children.front());
        case NodeKind::kReference:
            return node.rule->mayBeEmpty;
        case NodeKind::kNull:
        case NodeKind::kTruncate:
        case NodeKind::kAction:
            break;
    }
    return true;
}

void CheckCsn(Reporter& reporter, CsnSyntax& syntax) {
    Checker(reporter, syntax).Run();
}

}  // namespace quorvane::compiler
