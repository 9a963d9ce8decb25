#include "csn/assembly/verifier_flow.h"

#include <algorithm>
#include <deque>
#include <iterator>

#include "csn/machine.h"

namespace quorvane::csn {
namespace {

constexpr std::uint32_t kTooMany = RuleSummary::kTooMany;

std::uint32_t Add(std::uint32_t left, std::uint32_t right) {
    return std::min(kTooMany, left + right);
}

/// A stack entry as far as the instructions show it.
struct Item {
    enum class Kind : std::uint8_t {
        kAlternative,
        kField,
        kMark,
        kLoopExit,
        kCounter,
        kExcludeChoice,
        kExcludeEnd,
        kRescanEnd,
    };

    Kind kind;
    std::vector<std::uint32_t> targets;  // where a choice point goes back to, sorted
    std::uint32_t instruction = 0;       // kCounter: offset of its REP
    std::uint32_t operand = 0;           // kField: of its BEGIN
    std::uint16_t tag = 0;               // kField
    std::uint32_t bits = 0;              // kMark: bits taken so far, at least
    std::uint32_t begin = 0;             // kField: offset of its BEGIN, the first of several
    std::uint32_t iterations = 0;        // kCounter: at most

    /// Whether both can stand at the same place.
    [[nodiscard]] bool Matches(const Item& other) const {
        return kind == other.kind && instruction == other.instruction && operand == other.operand &&
               tag == other.tag;
    }
};

/// What holds in front of an instruction.
struct State {
    std::vector<Item> stack;
    std::uint32_t tags = 0;                 // at most
    std::uint32_t mostTags = 0;             // at most, at any time up to here
    std::uint32_t bits = 0;                 // taken since the rule began, at least
    TagBounds bounds;                       // of the tags
    std::optional<std::uint32_t> loopExit;  // if it is known

    void AddTag(const VerifierInput& input, std::uint32_t tag, std::uint32_t most) {
        tags = Add(tags, 1);
        csn::AddTag(input, bounds, tag, most);
    }
    [[nodiscard]] bool TopIs(Item::Kind kind) const {
        return !stack.empty() && stack.back().kind == kind;
    }
    [[nodiscard]] State Popped(std::size_t entries) const {
        State result = *this;
        result.stack.resize(stack.size() - entries);
        return result;
    }
};

/// Walks one rule under one parent tag until nothing changes.
class RuleWalk {
  public:
    using CalleeSummary = std::function<RuleSummary(std::uint32_t label, std::uint16_t parent,
                                                    const TagBounds& bounds)>;

    RuleWalk(const VerifierInput& input, const InstructionMap& instructions,
             const TagFinder& findTag, std::uint16_t parent, CalleeSummary callee,
             const FindingSink& sink)
        : input_(input),
          instructions_(instructions),
          findTag_(findTag),
          parent_(parent),
          callee_(std::move(callee)),
          sink_(sink) {}

    RuleSummary Walk(std::uint32_t label, const TagBounds& bounds) {
        summary_.leastBits = kTooMany;
        State first;
        first.bounds = boundsBefore_ = bounds;
        Reach(label, label, std::move(first));
        while (!pending_.empty()) {
            const std::uint32_t offset = pending_.front();
            pending_.pop_front();
            waiting_.erase(offset);
            const State state = states_.at(offset);  // a copy: its place may change meanwhile
            Execute(instructions_.at(offset), state);
        }
        if (!summary_.returns) {
            summary_.leastBits = 0;
        }
        return summary_;
    }

  private:
    void Execute(const Instruction& instruction, const State& state);
    void Repeat(const Instruction& instruction, const State& state);
    void Loop(const Instruction& instruction, const State& state);
    void Call(const Instruction& instruction, const State& state);
    void Exclude(const Instruction& instruction, const State& state);
    void OpenField(const Instruction& instruction, const State& state);
    void CloseField(const Instruction& instruction, const State& state);
    void Return(const Instruction& instruction, const State& state);
    void MoveChoice(const Instruction& instruction, State moved, bool inside);
    void Pop(const Instruction& instruction, const State& state, Item::Kind kind, const char* what);

    void Reach(std::uint32_t from, std::uint32_t offset, State state);
    void Next(const Instruction& instruction, State state) {
        Reach(instruction.offset, instruction.offset + instruction.size, std::move(state));
    }
    void Jump(const Instruction& instruction, State state) {
        Reach(instruction.offset, TargetOf(instruction), std::move(state));
    }
    static std::uint32_t TargetOf(const Instruction& instruction) {
        return static_cast<std::uint32_t>(instruction.Target().value_or(0));
    }
    bool Merge(std::uint32_t from, State& known, const State& state);

    /// The tag of the innermost open field.
    [[nodiscard]] std::uint16_t Parent(const State& state) const {
        for (auto item = state.stack.rbegin(); item != state.stack.rend(); ++item) {
            if (item->kind == Item::Kind::kField) {
                return item->tag;
            }
        }
        return parent_;
    }
    std::uint16_t TagOf(const Instruction& instruction, const State& state);

    const VerifierInput& input_;
    const InstructionMap& instructions_;
    const TagFinder& findTag_;
    const std::uint16_t parent_;
    const CalleeSummary callee_;
    const FindingSink& sink_;

    RuleSummary summary_;
    TagBounds boundsBefore_;
    std::map<std::uint32_t, State> states_;
    std::deque<std::uint32_t> pending_;
    std::set<std::uint32_t> waiting_;
};

bool RuleWalk::Merge(std::uint32_t from, State& known, const State& state) {
    const auto matches = [](const Item& left, const Item& right) { return left.Matches(right); };
    if (!std::equal(known.stack.begin(), known.stack.end(), state.stack.begin(), state.stack.end(),
                    matches)) {
        sink_(from, "leads to a place that is reached with another stack");
        return false;
    }
    bool changed = false;
    for (std::size_t place = 0; place < known.stack.size(); ++place) {
        Item& item = known.stack[place];
        const Item& other = state.stack[place];
        if (item.targets != other.targets) {
            std::vector<std::uint32_t> both;
            std::set_union(item.targets.begin(), item.targets.end(), other.targets.begin(),
                           other.targets.end(), std::back_inserter(both));
            changed = changed || both != item.targets;
            item.targets = std::move(both);
        }
        changed = changed || other.bits < item.bits || other.begin < item.begin ||
                  other.iterations > item.iterations;
        item.bits = std::min(item.bits, other.bits);
        item.begin = std::min(item.begin, other.begin);
        item.iterations = std::max(item.iterations, other.iterations);
    }
    changed = Weaken(known.bounds, state.bounds) || changed;
    changed = changed || state.tags > known.tags || state.mostTags > known.mostTags ||
              state.bits < known.bits;
    known.tags = std::max(known.tags, state.tags);
    known.mostTags = std::max(known.mostTags, state.mostTags);
    known.bits = std::min(known.bits, state.bits);
    if (known.loopExit && known.loopExit != state.loopExit) {
        known.loopExit.reset();
        changed = true;
    }
    return changed;
}

void RuleWalk::Reach(std::uint32_t from, std::uint32_t offset, State state) {
    const auto depth = static_cast<std::uint32_t>(state.stack.size());
    summary_.stackMost = std::max(summary_.stackMost, depth);
    state.mostTags = std::max(state.mostTags, state.tags);
    summary_.tagsMost = std::max(summary_.tagsMost, state.mostTags);
    if (instructions_.find(offset) == instructions_.end()) {
        sink_(from, "runs off the end of the image");
        return;
    }
    const auto [place, added] = states_.try_emplace(offset, state);
    if ((added || Merge(from, place->second, state)) && waiting_.insert(offset).second) {
        pending_.push_back(offset);
    }
}

std::uint16_t RuleWalk::TagOf(const Instruction& instruction, const State& state) {
    const std::uint16_t parent = Parent(state);
    if (parent == kNoRecords) {
        return parent;
    }
    const auto tag = findTag_(instruction.FieldId(), parent);
    if (!tag) {
        sink_(instruction.offset, "field " + std::to_string(instruction.FieldId()) +
                                      " has no tag under the parent " + std::to_string(parent));
    }
    return tag.value_or(kNoRecords);
}

void RuleWalk::Pop(const Instruction& instruction, const State& state, Item::Kind kind,
                   const char* what) {
    if (state.TopIs(kind)) {
        Next(instruction, state.Popped(1));
    } else {
        sink_(instruction.offset, what);
    }
}

void RuleWalk::Execute(const Instruction& instruction, const State& state) {
    State next = state;
    switch (instruction.Code()) {
        case Opcode::kFail:
            return;
        case Opcode::kField:
        case Opcode::kFieldLit:
            TagOf(instruction, state);
            [[fallthrough]];
        case Opcode::kBit0:
        case Opcode::kBit1:
        case Opcode::kBitH:
        case Opcode::kBitL:
        case Opcode::kLit:
        case Opcode::kSkip:
            next.bits = Add(next.bits, std::min(kTooMany, BitsTaken(instruction).value_or(0)));
            break;
        case Opcode::kPop:
            return Pop(instruction, state, Item::Kind::kAlternative,
                       "the top of the stack is no alternative");
        case Opcode::kExclude:
            return Exclude(instruction, state);
        case Opcode::kExcludeEnd:
            if (state.stack.size() < 2 || !state.TopIs(Item::Kind::kExcludeEnd)) {
                sink_(instruction.offset, "no exclusion is open");
            }
            return;
        case Opcode::kAct:
        case Opcode::kActDec:
        case Opcode::kActEnc: {
            const VerifierAction& action = input_.actions[instruction.operands[0]];
            if (action.effect == VerifierAction::Effect::kAdds) {
                next.AddTag(input_, action.tag, action.most);
            }
            if (instruction.Code() != Opcode::kAct) {
                Next(instruction, state);  // in the other direction
            }
            break;
        }
        case Opcode::kCall:
            return Call(instruction, state);
        case Opcode::kRescan:
            if (!state.TopIs(Item::Kind::kMark)) {
                return sink_(instruction.offset, "the top of the stack is no mark");
            }
            next.bits = state.stack.back().bits;
            next.stack.back() = {Item::Kind::kRescanEnd, {}};
            break;
        case Opcode::kRescanEnd:
            return Pop(instruction, state, Item::Kind::kRescanEnd, "no second reading is open");
        case Opcode::kSkipEnc:
            Jump(instruction, state);
            break;
        case Opcode::kBegin:
            return OpenField(instruction, state);
        case Opcode::kEnd:
        case Opcode::kEndTag:
            return CloseField(instruction, state);
        case Opcode::kRep:
        case Opcode::kRepBit:
        case Opcode::kRepTag:
        case Opcode::kRepAny:
        case Opcode::kRepMore:
        case Opcode::kRepRange:
        case Opcode::kRepFn:
        case Opcode::kRepFn2:
        case Opcode::kRepFnEnc:
            return Repeat(instruction, state);
        case Opcode::kLoop:
            return Loop(instruction, state);
        case Opcode::kCount:
        case Opcode::kCountFn:
        case Opcode::kCountFn2: {
            if (!state.TopIs(Item::Kind::kCounter)) {
                return sink_(instruction.offset, "the top of the stack is no repetition");
            }
            const std::uint32_t exit = TargetOf(instructions_.at(state.stack.back().instruction));
            if (state.loopExit != exit) {
                return sink_(instruction.offset, "another repetition may have been entered last");
            }
            Reach(instruction.offset, exit, state.Popped(2));
            break;
        }
        case Opcode::kMark:
            next.stack.push_back({Item::Kind::kMark, {}, 0, 0, 0, state.bits});
            break;
        case Opcode::kRet:
        case Opcode::kRetTags:
            return Return(instruction, state);
        case Opcode::kTagPos:
            next.AddTag(input_, instruction.operands[0], kNoBound);
            break;
        case Opcode::kCommit:
            MoveChoice(instruction, state, false);
            break;
        case Opcode::kJmp:
            return Jump(instruction, state);
        case Opcode::kAlt: {
            State other = state;
            other.loopExit.reset();
            Jump(instruction, other);
            next.stack.push_back({Item::Kind::kAlternative, {TargetOf(instruction)}});
            break;
        }
        case Opcode::kNop:
        case Opcode::kValEq:
        case Opcode::kValRange:
        case Opcode::kValEqFn:
        case Opcode::kValRangeFn:
        case Opcode::kAtEnd:
            break;
    }
    Next(instruction, std::move(next));
}

void RuleWalk::Exclude(const Instruction& instruction, const State& state) {
    if (!state.TopIs(Item::Kind::kMark)) {
        return sink_(instruction.offset, "the top of the stack is no mark");
    }
    State behind = state.Popped(1);
    behind.loopExit.reset();
    Jump(instruction, behind);
    State inside = state.Popped(1);
    inside.bits = state.stack.back().bits;
    inside.stack.push_back({Item::Kind::kExcludeChoice, {TargetOf(instruction)}});
    inside.stack.push_back({Item::Kind::kExcludeEnd, {}});
    Next(instruction, inside);
}

void RuleWalk::OpenField(const Instruction& instruction, const State& state) {
    State next = state;
    const std::uint16_t tag = TagOf(instruction, state);
    next.stack.push_back(
        {Item::Kind::kField, {}, 0, instruction.operands[0], tag, 0, instruction.offset});
    Next(instruction, next);
}

void RuleWalk::CloseField(const Instruction& instruction, const State& state) {
    if (!state.TopIs(Item::Kind::kField) || state.stack.back().operand != instruction.operands[0]) {
        return sink_(instruction.offset, "does not close the field that was opened last");
    }
    State next = state.Popped(1);
    if (instruction.Code() == Opcode::kEndTag) {
        next.AddTag(input_, instruction.operands[1],
                    MostBetween(instructions_, state.stack.back().begin, instruction.offset));
    }
    Next(instruction, next);
}

void RuleWalk::Repeat(const Instruction& instruction, const State& state) {
    const Iterations iterations = IterationsOf(input_, instruction, state.bounds);
    if (iterations.least == 0) {
        State behind = state;
        behind.loopExit.reset();
        Jump(instruction, behind);
    }
    State inside = state;
    inside.loopExit = TargetOf(instruction);
    inside.stack.push_back({Item::Kind::kLoopExit, {TargetOf(instruction)}});
    inside.stack.push_back(
        {Item::Kind::kCounter, {}, instruction.offset, 0, 0, 0, 0, iterations.most});
    Next(instruction, inside);
}

void RuleWalk::Loop(const Instruction& instruction, const State& state) {
    if (!state.TopIs(Item::Kind::kCounter)) {
        return sink_(instruction.offset, "the top of the stack is no repetition");
    }
    const Instruction& repetition = instructions_.at(state.stack.back().instruction);
    const State& start = states_.at(repetition.offset);
    const std::uint32_t body = repetition.offset + repetition.size;
    if (TargetOf(instruction) != body) {
        return sink_(instruction.offset, "does not lead to the start of its repetition");
    }
    const std::uint32_t most = state.stack.back().iterations;
    if (most == kNoBound && state.bits <= start.bits) {
        sink_(instruction.offset, "an iteration may take no bits");
    }
    State again = state;
    again.tags = start.tags;  // tags added per iteration are counted below
    again.mostTags = start.mostTags;
    Reach(instruction.offset, body, again);

    State behind = state.Popped(2);
    if (state.tags > start.tags) {
        if (most == kNoBound) {
            sink_(instruction.offset, "every iteration adds tags, without a bound");
        }
        const std::uint32_t each = state.tags - start.tags;
        const std::uint32_t times = std::min(kTooMany, most);
        behind.tags = Add(start.tags, each * times);
        behind.mostTags = Add(state.mostTags, times == 0 ? 0 : each * (times - 1));
    }
    State failed = behind;
    failed.loopExit.reset();
    Reach(instruction.offset, TargetOf(repetition), failed);
    Next(instruction, behind);
}

void RuleWalk::Call(const Instruction& instruction, const State& state) {
    const RuleSummary callee = callee_(TargetOf(instruction), Parent(state), state.bounds);
    const auto depth = static_cast<std::uint32_t>(state.stack.size());
    summary_.stackMost = std::max(summary_.stackMost, Add(depth + 1, callee.stackMost));
    const std::uint32_t tags = Add(state.tags, callee.tagsMost);
    summary_.tagsMost = std::max(summary_.tagsMost, tags);
    if (callee.commits) {
        State moved = state;
        moved.tags = tags;
        moved.bounds.clear();
        MoveChoice(instruction, std::move(moved), callee.commitsInside);
    }
    if (!callee.returns) {
        return;
    }
    State next = state;
    next.loopExit.reset();
    if (callee.tagsLeft > 0) {
        next.tags = Add(next.tags, callee.tagsLeft);
        next.bounds = callee.bounds;
    }
    next.mostTags = std::max(next.mostTags, tags);
    next.bits = Add(next.bits, callee.leastBits);
    Next(instruction, next);
}

void RuleWalk::Return(const Instruction& instruction, const State& state) {
    if (!state.stack.empty()) {
        return sink_(instruction.offset, "returns with entries of its rule on the stack");
    }
    const bool drops = instruction.Code() == Opcode::kRetTags;
    const TagBounds& bounds = drops ? boundsBefore_ : state.bounds;
    if (summary_.returns) {
        Weaken(summary_.bounds, bounds);
    } else {
        summary_.bounds = bounds;
    }
    summary_.returns = true;
    summary_.tagsLeft = std::max(summary_.tagsLeft, drops ? 0 : state.tags);
    summary_.leastBits = std::min(summary_.leastBits, state.bits);
}

/// The nearest choice point, and any repetition in front of it, may now go back to this state.
/// `inside`: a field was opened since, which would stay open.
void RuleWalk::MoveChoice(const Instruction& instruction, State moved, bool inside) {
    moved.loopExit.reset();
    while (!moved.stack.empty()) {
        const Item item = moved.stack.back();
        moved.stack.pop_back();
        inside = inside || item.kind == Item::Kind::kField;
        if (!item.targets.empty()) {
            if (inside) {
                return sink_(instruction.offset,
                             "moves up a choice point outside the field that is open");
            }
            for (const std::uint32_t target : item.targets) {
                Reach(instruction.offset, target, moved);
            }
            if (item.kind != Item::Kind::kLoopExit) {
                return;
            }
        }
    }
    summary_.commits = true;
    summary_.commitsInside = summary_.commitsInside || inside;
}

/// Makes `summary` no better than `stored` was, so that it changes but a few times more: what grew
/// has no bound, and what went to and fro counts as the worse of both.
void Widen(RuleSummary& summary, const RuleSummary& stored) {
    const auto widen = [](std::uint32_t& count, std::uint32_t old) {
        count = count > old ? kTooMany : old;
    };
    widen(summary.tagsLeft, stored.tagsLeft);
    widen(summary.tagsMost, stored.tagsMost);
    widen(summary.stackMost, stored.stackMost);
    summary.leastBits = std::min(summary.leastBits, stored.leastBits);
    Weaken(summary.bounds, stored.bounds);
    summary.returns = summary.returns || stored.returns;
    summary.commits = summary.commits || stored.commits;
    summary.commitsInside = summary.commitsInside || stored.commitsInside;
}

}  // namespace

FlowVerifier::FlowVerifier(const VerifierInput& input, const InstructionMap& instructions,
                           TagFinder findTag)
    : input_(input), instructions_(instructions), findTag_(std::move(findTag)) {}

RuleSummary FlowVerifier::Summary(std::uint32_t label, std::uint16_t parent) const {
    const auto found = summaries_.find({label, parent});
    return found == summaries_.end() ? RuleSummary{} : found->second;
}

RuleSummary FlowVerifier::Known(const Context& context, const TagBounds& bounds) {
    const auto [place, added] = summaries_.try_emplace(context);
    if (added) {
        bounds_[context] = bounds;
        const RuleSummary summary = Walk(context);
        summaries_[context] = summary;
        order_.push_back(context);  // behind those that it calls
        return summary;
    }
    // A rule that is still being walked calls itself: what it does is not known yet.
    const bool weaker = Weaken(bounds_[context], bounds);
    again_ = again_ || weaker || !finished_.contains(context);
    return place->second;
}

RuleSummary FlowVerifier::Walk(const Context& context) {
    const FindingSink collect = [this](std::uint32_t offset, const std::string& text) {
        findings_[offset].insert(text);
    };
    const RuleWalk::CalleeSummary callee = [this](std::uint32_t label, std::uint16_t parent,
                                                  const TagBounds& bounds) {
        return Known({label, parent}, bounds);
    };
    RuleWalk walk(input_, instructions_, findTag_, context.second, callee, collect);
    const TagBounds bounds = bounds_[context];  // a copy: a call of itself may weaken them
    const RuleSummary summary = walk.Walk(context.first, bounds);
    finished_.insert(context);
    return summary;
}

void FlowVerifier::Run(const FindingSink& sink) {
    for (const VerifierEntry& entry : input_.entries) {
        (void)Known({entry.label, entry.rootTag}, {});
    }
    // With rules that call themselves, or that are called where less is known of the tags, all is
    // walked again until no summary changes. What keeps growing has no bound.
    constexpr std::uint32_t kMostChanges = 8;
    std::map<Context, std::uint32_t> changes;
    while (again_) {
        again_ = false;
        findings_.clear();
        for (std::size_t place = 0; place < order_.size(); ++place) {
            const Context context = order_[place];
            RuleSummary summary = Walk(context);
            RuleSummary& stored = summaries_[context];
            if (changes[context] > kMostChanges) {
                Widen(summary, stored);
            }
            if (!(summary == stored)) {
                ++changes[context];
                stored = summary;
                again_ = true;
            }
        }
    }
    for (const auto& [offset, texts] : findings_) {
        for (const std::string& text : texts) {
            sink(offset, text);
        }
    }
}

}  // namespace quorvane::csn
