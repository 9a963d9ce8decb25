#include "reference/csn_reference.h"

#include <algorithm>
#include <set>
#include <utility>

#include "compiler/csn/csn_members.h"

namespace quorvane::reference {
namespace {

using compiler::CsnCount;
using compiler::CsnNode;
using compiler::CsnRule;
using compiler::CsnVariable;
using Kind = CsnNode::Kind;
using Form = CsnNode::Repetition::Form;

// ---- Facts about descriptions, found the slow way ----------------------------------------------

bool HasFields(const CsnNode& node, std::set<const CsnRule*> seen = {}) {
    if (node.kind == Kind::kField) {
        return true;
    }
    if (node.kind == Kind::kReference && seen.insert(node.rule).second &&
        HasFields(*node.rule->body, seen)) {
        return true;
    }
    return std::any_of(node.children.begin(), node.children.end(),
                       [&](const CsnNode* child) { return HasFields(*child, seen); });
}

bool CanBeEmpty(const CsnNode& node, std::set<const CsnRule*> seen = {}) {
    const auto empty = [&](const CsnNode* child) { return CanBeEmpty(*child, seen); };
    switch (node.kind) {
        case Kind::kBits:
        case Kind::kAnyBits:
            return false;
        case Kind::kConcat:
            return std::all_of(node.children.begin(), node.children.end(), empty);
        case Kind::kChoice:
        case Kind::kError:
            return std::any_of(node.children.begin(), node.children.end(), empty);
        case Kind::kRepeat:
            switch (node.repetition.form) {
                case Form::kCount:
                    return node.repetition.count.form != CsnCount::Form::kNumber ||
                           empty(node.children[0]);
                case Form::kRange:
                    return node.low == 0 || empty(node.children[0]);
                case Form::kAny:
                case Form::kWriteCount:
                    return true;
            }
            return true;
        case Kind::kIntersection:
            return empty(node.children[1]);
        case Kind::kExclude:
        case Kind::kSend:
        case Kind::kRange:
        case Kind::kField:
            return empty(node.children[0]);
        case Kind::kReference:
            return seen.insert(node.rule).second && CanBeEmpty(*node.rule->body, seen);
        case Kind::kNull:
        case Kind::kTruncate:
        case Kind::kAction:
            return true;
    }
    return true;
}

/// The width of a field that is a plain number of bits, either bit or a pattern, which is only
/// noted when all of it is there; -1 for others, which are noted where they open.
std::int32_t PlainWidth(const CsnNode& field) {
    const CsnNode& content = *field.children[0];
    if (field.variable != nullptr) {
        return -1;
    }
    if (content.kind == Kind::kAnyBits) {
        return static_cast<std::int32_t>(content.width);
    }
    if (content.kind == Kind::kChoice && content.children.size() == 2 &&
        content.children[0]->kind == Kind::kBits && content.children[1]->kind == Kind::kBits) {
        const std::string both = content.children[0]->text + content.children[1]->text;
        return both == "LH" || both == "HL" || both == "01" || both == "10" ? 1 : -1;
    }
    if (content.kind == Kind::kBits && content.text.find_first_of("LH") == std::string::npos) {
        return static_cast<std::int32_t>(content.text.size());
    }
    return -1;
}

}  // namespace

// ---- The reader --------------------------------------------------------------------------------

class Reader {
  public:
    Reader(Reference& reference, const std::string& bits, std::int32_t start)
        : reference_(reference),
          bits_(bits),
          position_(start),
          end_(static_cast<std::int32_t>(bits.size())) {}

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
    /// Thrown when a count below 0 ends the reading.
    struct Ended {};

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
        const bool padding =
            std::string("00101011")[static_cast<std::size_t>(position_ % 8)] == '1';
        const bool bit = At(position_);
        const bool matches = wanted == 'L'   ? bit == padding
                             : wanted == 'H' ? bit != padding
                                             : bit == (wanted == '1');
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
        for (const CsnNode* branch : reference_.BranchesOf(node)) {
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

    // ---- Numbers ---------------------------------------------------------------------------

    /// Bits outside of the message are 0: a length may be read there.
    [[nodiscard]] bool At(std::int32_t position) const {
        const auto index = static_cast<std::size_t>(position);
        return position >= 0 && index < bits_.size() && bits_[index] == '1';
    }

    [[nodiscard]] std::uint32_t Value(std::int32_t from, std::int32_t to) const {
        std::uint32_t value = 0;
        for (std::int32_t position = from; position < to; ++position) {
            value = value << 1 | (At(position) ? 1U : 0U);
        }
        return value;
    }

    [[nodiscard]] std::int32_t Variable(const CsnVariable* variable) const {
        const auto found = std::find_if(variables_.rbegin(), variables_.rend(),
                                        [&](const auto& entry) { return entry.first == variable; });
        return found == variables_.rend() ? -1 : found->second;
    }

    /// Changes the newest value, which nothing takes back.
    void Change(const CsnVariable* variable, std::int64_t value) {
        const auto found = std::find_if(variables_.rbegin(), variables_.rend(),
                                        [&](const auto& entry) { return entry.first == variable; });
        if (found != variables_.rend()) {
            found->second = static_cast<std::int32_t>(value);
        }
    }

    [[nodiscard]] std::uint64_t Count(const CsnCount& count) const {
        const std::int64_t number = Number(count);
        return number < 0 ? throw Ended() : static_cast<std::uint64_t>(number);
    }

    [[nodiscard]] std::int64_t Number(const CsnCount& count) const {
        const std::int64_t value =
            count.variable == nullptr ? 0 : std::int64_t{Variable(count.variable)};
        switch (count.form) {
            case CsnCount::Form::kNumber:
                return count.number;
            case CsnCount::Form::kValue:
                return value + count.number;
            case CsnCount::Form::kRest:
                return count.number - value;
            case CsnCount::Form::kTimes:
                return count.number * value;
            case CsnCount::Form::kOnes: {
                const std::int64_t width = count.variable == nullptr ? count.number : value;
                std::int64_t ones = 0;
                for (std::int64_t back = 1; back <= std::min<std::int64_t>(width, 32); ++back) {
                    ones += At(position_ - static_cast<std::int32_t>(back)) ? 1 : 0;
                }
                return ones;
            }
            case CsnCount::Form::kOctetEnd:
                return (8 - position_ % 8) % 8;
            case CsnCount::Form::kDeclared:
                return count.function->name == "FddCellInfoBits"
                           ? CellBits(value, "0a13 1c24 2c34 3c43 4a51 585f 666d 747a")
                           : CellBits(value, "0911 1920 272e 353b 4147 4d53 595f 656a 6f74 797e");
            default:
                std::abort();  // no grammar of the tests uses it
        }
    }

    /// The width of a cell information field for `cells` cells, the first of which has the first
    /// width of `widths`: two hexadecimal digits each.
    static std::int64_t CellBits(std::int64_t cells, std::string widths) {
        std::erase(widths, ' ');
        const auto most = static_cast<std::int64_t>(widths.size() / 2);
        if (cells < 1 || cells > most) {
            return 0;
        }
        const auto first = static_cast<std::size_t>(cells - 1) * 2;
        return std::stol(widths.substr(first, 2), nullptr, 16);
    }

    void Action(const CsnNode& node) {
        if (node.direction == CsnNode::Direction::kWriting) {
            return;
        }
        const auto number = [&](std::size_t index) {
            return static_cast<std::int32_t>(node.arguments[index].count->number);
        };
        const CsnVariable* variable = node.arguments[0].variable;
        const auto runEnd = static_cast<std::int32_t>(bits_.size());
        if (node.name.text == "note") {
            variables_.emplace_back(variable, position_);
        } else if (node.name.text == "open_behind_length") {
            variables_.emplace_back(variable, end_);
            const auto length = static_cast<std::int32_t>(Value(position_ - number(1), position_));
            end_ = std::min(position_ + length, runEnd);
        } else if (node.name.text == "open_before_length") {
            variables_.emplace_back(variable, end_);
            const auto length = static_cast<std::int32_t>(Value(position_, position_ + number(1)));
            end_ = std::min(position_ + length + number(2), runEnd);
        } else if (node.name.text == "open_coded_length") {
            variables_.emplace_back(variable, end_);
            const auto code = static_cast<std::int32_t>(Value(position_, position_ + 6));
            end_ = std::min(position_ + (code < 6 ? code + 65 : code + 1), runEnd);
        } else if (node.name.text == "open_fixed") {
            variables_.emplace_back(variable, end_);
            end_ = std::min(position_ + number(1), runEnd);
        } else if (node.name.text == "close") {
            end_ = std::min(Variable(variable), runEnd);
        } else if (node.name.text == "set") {
            const std::int64_t kept = Number(*node.arguments[1].count);
            variables_.emplace_back(variable, static_cast<std::int32_t>(kept));
        } else if (node.name.text == "add") {
            Change(variable, Variable(variable) + Number(*node.arguments[1].count));
        } else if (node.name.text == "raise_maximum") {
            const auto value = static_cast<std::int32_t>(Value(position_ - number(1), position_));
            Change(variable, std::max(Variable(variable), value));
        } else if (node.name.text == "clip") {
            position_ = std::min(position_, Variable(variable) + number(1));
        } else if (node.name.text == "jump_over") {
            const std::int32_t noted = Variable(variable);
            const auto length = static_cast<std::int32_t>(Value(noted, noted + number(1)));
            position_ = noted + length + number(2);
        } else {
            std::abort();  // no grammar of the tests uses it
        }
    }

    Reference& reference_;
    const std::string& bits_;
    std::int32_t position_;
    std::int32_t end_;
    std::vector<Event> events_;
    std::vector<std::size_t> open_;  // events of the fields that are open
    std::vector<std::pair<const CsnVariable*, std::int32_t>> variables_;
};

const std::vector<const CsnNode*>& Reference::BranchesOf(const CsnNode& choice) {
    const auto [entry, isNew] = branches_.try_emplace(&choice);
    std::vector<const CsnNode*>& branches = entry->second;
    if (isNew) {
        branches.assign(choice.children.begin(), choice.children.end());
        const auto withFields = [](const CsnNode* node) { return HasFields(*node); };
        const auto notEmpty = [](const CsnNode* node) { return !CanBeEmpty(*node); };
        if (!choice.inOrder) {
            std::stable_partition(branches.begin(), branches.end(), withFields);
            std::stable_partition(branches.begin(), branches.end(), notEmpty);
        }
    }
    return branches;
}

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
