#include "reference/csn_reference.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "compiler/csn/csn_members.h"

namespace quorvane::reference {
namespace {

using compiler::CsnNode;
using compiler::CsnRule;
using compiler::CsnVariable;
using Kind = CsnNode::Kind;
using Form = CsnNode::Repetition::Form;

}  // namespace

// ---- The reader --------------------------------------------------------------------------------

class Reader : Walk {
  public:
    Reader(Reference& reference, const std::string& bits, std::int32_t start)
        : Walk(bits, start), reference_(reference) {}

    Reading Run(const CsnRule& rule, std::int32_t start) {
        Reading reading;
        try {
            reading.matches = Rule(rule);
        } catch (const Ended&) {
            reading.matches = false;
        }
        reading.taken = position_ - start;
        reading.events = std::move(events_);
        return reading;
    }

  private:
    /// What is taken back when something else is tried.
    struct State {
        std::int32_t position;
        std::size_t events;
        std::size_t variables;
        std::size_t open;
    };

    [[nodiscard]] State Now() const {
        return {position_, events_.size(), variables_.size(), open_.size()};
    }
    void Back(const State& state) {
        position_ = state.position;
        events_.resize(state.events);
        variables_.resize(state.variables);
        open_.resize(state.open);
    }

    bool Rule(const CsnRule& rule) {
        const std::size_t variables = variables_.size();
        if (!Node(*rule.body)) {
            return false;
        }
        if (!rule.keepsTags) {
            variables_.resize(variables);
        }
        return true;
    }

    bool Node(const CsnNode& node) {
        switch (node.kind) {
            case Kind::kNull:
                return true;
            case Kind::kBits:
                return std::all_of(node.text.begin(), node.text.end(),
                                   [&](char bit) { return Bit(bit); });
            case Kind::kAnyBits:
                return Skip(static_cast<std::int32_t>(node.width));
            case Kind::kConcat:
                return std::all_of(node.children.begin(), node.children.end(),
                                   [&](const CsnNode* child) { return Node(*child); });
            case Kind::kChoice:
                return Choice(node);
            case Kind::kError: {
                const State before = Now();
                if (Node(*node.children[0])) {
                    return true;
                }
                Back(before);
                if (Node(*node.children[1])) {
                    return true;
                }
                Back(before);
                return false;
            }
            case Kind::kRepeat:
                return Repeat(node);
            case Kind::kTruncate:
                return Truncate(node);
            case Kind::kIntersection:
                return And(node);
            case Kind::kExclude:
                return Exclude(node);
            case Kind::kSend:
                return Node(*node.children[0]);
            case Kind::kRange: {
                const std::int32_t begin = position_;
                if (!Node(*node.children[0])) {
                    return false;
                }
                const std::uint32_t value = Value(begin, position_);
                return value >= node.low && value <= node.high;
            }
            case Kind::kField:
                return Field(node);
            case Kind::kReference:
                return Rule(*node.rule);
            case Kind::kAction:
                Action(node);
                return true;
        }
        return false;
    }

    bool Bit(char wanted) {
        if (position_ + 1 > end_) {
            return false;
        }
        const bool matches = At(position_) == Meaning(wanted);
        position_ += matches ? 1 : 0;
        return matches;
    }

    bool Skip(std::int32_t count) {
        if (position_ + count > end_) {
            return false;
        }
        position_ += count;
        return true;
    }

    bool Choice(const CsnNode& node) {
        const State before = Now();
        for (const CsnNode* branch : reference_.branches_.Of(node)) {
            if (Node(*branch)) {
                return true;
            }
            Back(before);
        }
        return false;
    }

    bool Repeat(const CsnNode& node) {
        std::uint64_t least = 0;
        std::uint64_t most = UINT64_MAX;
        if (node.repetition.form == Form::kCount) {
            least = most = Count(node.repetition.count);
        } else if (node.repetition.form == Form::kRange) {
            least = node.low;
            most = node.high == compiler::kUnbounded ? UINT64_MAX : node.high;
        }
        for (std::uint64_t done = 0; done < most; ++done) {
            const State before = Now();
            const bool matches = Node(*node.children[0]);
            if (!matches && done < least) {
                return false;
            }
            if (!matches) {
                Back(before);
                return true;
            }
            variables_.resize(before.variables);
        }
        return true;
    }

    bool Truncate(const CsnNode& node) {
        State kept = Now();
        for (const CsnNode* child : node.children) {
            if (!Node(*child)) {
                Back(kept);
                return true;
            }
            if (child->kind != Kind::kAction) {
                kept = Now();
            }
        }
        return true;
    }

    bool And(const CsnNode& node) {
        const std::int32_t begin = position_;
        if (!Node(*node.children[0])) {
            return false;
        }
        const std::int32_t end = std::exchange(end_, position_);
        position_ = begin;
        if (!Node(*node.children[1])) {
            end_ = end;
            return false;
        }
        return true;
    }

    bool Exclude(const CsnNode& node) {
        const std::int32_t begin = position_;
        if (!Node(*node.children[0])) {
            return false;
        }
        const State behind = Now();
        const std::int32_t end = std::exchange(end_, position_);
        position_ = begin;
        const bool excluded = Node(*node.children[1]);
        end_ = end;
        if (excluded) {
            return false;
        }
        Back(behind);
        return true;
    }

    // ---- Fields ----------------------------------------------------------------------------

    bool Field(const CsnNode& node) {
        const std::int32_t begin = position_;
        if (PlainWidth(node) >= 0) {
            if (!Node(*node.children[0])) {
                return false;
            }
            const std::int32_t end = std::exchange(position_, begin);
            OpenField(node);
            position_ = end;
            CloseField();
            return true;
        }
        OpenField(node);
        if (!Node(*node.children[0])) {
            return false;
        }
        CloseField();
        if (node.variable != nullptr) {
            variables_.emplace_back(node.variable,
                                    static_cast<std::int32_t>(Value(begin, position_)));
        }
        return true;
    }

    void OpenField(const CsnNode& node) {
        const std::string& name = reference_.NameOf(node);
        const auto isSibling = [&](const Event& event) {
            return event.name == name && event.depth == static_cast<std::int32_t>(open_.size());
        };
        // Fields of this depth behind the opening of the parent have the same parent.
        const auto first = static_cast<std::ptrdiff_t>(open_.empty() ? 0 : open_.back() + 1);
        const auto occurrence = std::count_if(events_.begin() + first, events_.end(), isSibling);
        open_.push_back(events_.size());
        events_.push_back({name, static_cast<std::int32_t>(occurrence), position_,
                           static_cast<std::int32_t>(open_.size()) - 1});
    }

    void CloseField() {
        events_.push_back({"", -1, position_, static_cast<std::int32_t>(open_.size())});
        open_.pop_back();
    }

    // ---- Actions ---------------------------------------------------------------------------

    void SetEnd(std::int32_t end) {
        scopeEnd_ = end;
        end_ = std::min(end, static_cast<std::int32_t>(bits_.size()));
    }

    void Action(const CsnNode& node) {
        if (node.direction == CsnNode::Direction::kWriting) {
            return;
        }
        const auto number = [&](std::size_t index) {
            return static_cast<std::int32_t>(node.arguments[index].count->number);
        };
        const CsnVariable* variable = node.arguments[0].variable;
        if (node.name.text == "open_behind_length") {
            variables_.emplace_back(variable, end_);
            const auto length = static_cast<std::int32_t>(Value(position_ - number(1), position_));
            SetEnd(position_ + length);
        } else if (node.name.text == "open_before_length") {
            variables_.emplace_back(variable, end_);
            const auto length = static_cast<std::int32_t>(Value(position_, position_ + number(1)));
            SetEnd(position_ + length + number(2));
        } else if (node.name.text == "open_coded_length") {
            variables_.emplace_back(variable, end_);
            const auto code = static_cast<std::int32_t>(Value(position_, position_ + 6));
            SetEnd(position_ + (code < 6 ? code + 65 : code + 1));
        } else if (node.name.text == "open_fixed") {
            variables_.emplace_back(variable, end_);
            SetEnd(position_ + number(1));
        } else if (node.name.text == "close") {
            // The rest of a scope counts as read, also what the run does not have of it.
            if (position_ == static_cast<std::int32_t>(bits_.size())) {
                position_ = std::max(position_, scopeEnd_);
            }
            SetEnd(Variable(variable));
        } else if (node.name.text == "jump_over") {
            const std::int32_t noted = Variable(variable);
            const auto length = static_cast<std::int32_t>(Value(noted, noted + number(1)));
            position_ = noted + length + number(2);
        } else if (!Act(node)) {
            std::abort();  // no grammar of the tests uses it
        }
    }

    Reference& reference_;
    std::vector<Event> events_;
    std::vector<std::size_t> open_;  // events of the fields that are open
};

const std::string& Reference::NameOf(const CsnNode& field) {
    const auto [entry, isNew] = names_.try_emplace(&field);
    if (isNew) {
        entry->second = compiler::CsnMemberName(field);
    }
    return entry->second;
}

Reading Reference::Read(const std::string& bits, std::int32_t start) {
    return Reader(*this, bits, start).Run(rule_, start);
}

}  // namespace quorvane::reference
