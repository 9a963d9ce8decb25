#include "reference/csn_walk.h"

#include <algorithm>
#include <set>

namespace quorvane::reference {
namespace {

using compiler::CsnCount;
using compiler::CsnNode;
using compiler::CsnRule;
using compiler::CsnVariable;
using Kind = CsnNode::Kind;
using Form = CsnNode::Repetition::Form;

bool HasFieldsBut(const CsnNode& node, std::set<const CsnRule*> seen) {
    if (node.kind == Kind::kField) {
        return true;
    }
    if (node.kind == Kind::kReference && seen.insert(node.rule).second &&
        HasFieldsBut(*node.rule->body, seen)) {
        return true;
    }
    return std::any_of(node.children.begin(), node.children.end(),
                       [&](const CsnNode* child) { return HasFieldsBut(*child, seen); });
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

/// The width of a cell information field for `cells` cells, the first of which has the first
/// width of `widths`: two hexadecimal digits each.
std::int64_t CellBits(std::int64_t cells, std::string widths) {
    std::erase(widths, ' ');
    const auto most = static_cast<std::int64_t>(widths.size() / 2);
    if (cells < 1 || cells > most) {
        return 0;
    }
    const auto first = static_cast<std::size_t>(cells - 1) * 2;
    return std::stol(widths.substr(first, 2), nullptr, 16);
}

}  // namespace

bool HasFields(const CsnNode& node) {
    return HasFieldsBut(node, {});
}

const std::vector<const CsnNode*>& Branches::Of(const CsnNode& choice) {
    const auto [entry, isNew] = known_.try_emplace(&choice);
    std::vector<const CsnNode*>& branches = entry->second;
    if (isNew) {
        branches.assign(choice.children.begin(), choice.children.end());
        const auto notEmpty = [](const CsnNode* node) { return !CanBeEmpty(*node); };
        if (!choice.inOrder) {
            std::stable_partition(branches.begin(), branches.end(),
                                  [](const CsnNode* node) { return HasFields(*node); });
            std::stable_partition(branches.begin(), branches.end(), notEmpty);
        }
    }
    return branches;
}

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

bool Walk::At(std::int32_t position) const {
    const auto index = static_cast<std::size_t>(position);
    return position >= 0 && index < bits_.size() && bits_[index] == '1';
}

std::uint32_t Walk::Value(std::int32_t from, std::int32_t to) const {
    std::uint32_t value = 0;
    for (std::int32_t position = from; position < to; ++position) {
        value = value << 1 | (At(position) ? 1U : 0U);
    }
    return value;
}

std::int32_t Walk::Variable(const CsnVariable* variable) const {
    const auto found = std::find_if(variables_.rbegin(), variables_.rend(),
                                    [&](const auto& entry) { return entry.first == variable; });
    return found == variables_.rend() ? -1 : found->second;
}

void Walk::Change(const CsnVariable* variable, std::int64_t value) {
    const auto found = std::find_if(variables_.rbegin(), variables_.rend(),
                                    [&](const auto& entry) { return entry.first == variable; });
    if (found != variables_.rend()) {
        found->second = static_cast<std::int32_t>(value);
    }
}

bool Walk::Act(const CsnNode& action) {
    const std::string& name = action.name.text;
    const CsnVariable* variable = action.arguments[0].variable;
    const auto number = [&] {
        return static_cast<std::int32_t>(action.arguments[1].count->number);
    };
    if (name == "note") {
        variables_.emplace_back(variable, position_);
    } else if (name == "set") {
        const std::int64_t kept = Number(*action.arguments[1].count);
        variables_.emplace_back(variable, static_cast<std::int32_t>(kept));
    } else if (name == "add") {
        Change(variable, Variable(variable) + Number(*action.arguments[1].count));
    } else if (name == "raise_maximum") {
        const auto value = static_cast<std::int32_t>(Value(position_ - number(), position_));
        Change(variable, std::max(Variable(variable), value));
    } else if (name == "clip") {
        position_ = std::min(position_, Variable(variable) + number());
    } else {
        return false;
    }
    return true;
}

std::uint64_t Walk::Count(const CsnCount& count) const {
    const std::int64_t number = Number(count);
    return number < 0 ? throw Ended() : static_cast<std::uint64_t>(number);
}

std::int64_t Walk::Number(const CsnCount& count) const {
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
        case CsnCount::Form::kLeft:
            return value + count.number - position_;
        case CsnCount::Form::kLeftOrNone:
            return std::max<std::int64_t>(value + count.number - position_, 0);
        case CsnCount::Form::kLeftOrZero:
            return std::max<std::int64_t>(value, 0) + count.number - position_;
        case CsnCount::Form::kUntil:
            return std::max<std::int64_t>(value - position_, 0);
    }
    return 0;
}

bool Walk::Meaning(char wanted) const {
    const bool padding = std::string("00101011")[static_cast<std::size_t>(position_ % 8)] == '1';
    return wanted == 'L' ? padding : wanted == 'H' ? !padding : wanted == '1';
}

}  // namespace quorvane::reference
