#include "compiler/csn/csn_builtins.h"

#include <array>
#include <string>

namespace quorvane::compiler {
namespace {

using Form = CsnCount::Form;
using Parameter = CsnActionInfo::Parameter;

constexpr Parameter kSets = Parameter::kSets;
constexpr Parameter kUses = Parameter::kUses;
constexpr Parameter kNumber = Parameter::kNumber;
constexpr Parameter kCount = Parameter::kCount;
using enum CsnActionInfo::Leaves;

const std::array<CsnActionInfo, 16>& Actions() {
    static const std::array<CsnActionInfo, 16> kActions = {{
        {"note", "NotePosition", {kSets}, kAny},
        {"note_ahead", "NotePositionAhead", {kSets, kNumber}, kAny},
        {"open_behind_length", "OpenScopeAtLengthEnd", {kSets, kNumber}, kAny},
        {"open_before_length", "OpenScopeAtLengthStart", {kSets, kNumber, kNumber}, kAny},
        {"open_coded_length", "OpenScopeAtCodedLength", {kSets}, kAny},
        {"open_fixed", "OpenFixedScope", {kSets, kNumber}, kAny},
        {"close", "CloseScope", {kUses}},
        {"write_back", "WriteBackLength", {kUses, kNumber, kNumber, kNumber}},
        {"clip", "ClipToSpan", {kUses, kNumber}},
        {"jump_over", "JumpOverElement", {kUses, kNumber, kNumber}},
        {"keep", "KeepCount", {kSets, kNumber}, kBits},
        {"set", "SetCount", {kSets, kCount}, kResult},
        {"add", "AddCount", {kUses, kCount}, kAny},
        {"raise_maximum", "RaiseMaximum", {kUses, kNumber}, kBits},
        {"reject_zero", "RejectZero", {kNumber}},
        {"reject_zero_and_ones", "RejectZeroAndOnes", {kNumber}},
    }};
    return kActions;
}

std::string Call(std::string_view function, const std::vector<std::string>& constants) {
    std::string result = "&csn::functions::" + std::string(function);
    for (std::size_t index = 0; index < constants.size(); ++index) {
        result += (index == 0 ? "<" : ", ") + constants[index];
    }
    return constants.empty() ? result : result + ">";
}

}  // namespace

const CsnActionInfo* FindCsnAction(std::string_view name) {
    for (const CsnActionInfo& info : Actions()) {
        if (info.name == name) {
            return &info;
        }
    }
    return nullptr;
}

std::string CsnActionNames() {
    std::string result;
    for (const CsnActionInfo& info : Actions()) {
        const bool isLast = &info == &Actions().back();
        result += result.empty() ? "" : isLast ? " and " : ", ";
        result += info.name;
    }
    return result;
}

std::string CsnActionExpression(const CsnNode& action) {
    const CsnActionInfo& info = *FindCsnAction(action.name.text);
    std::vector<std::string> constants;
    for (std::size_t index = 0; index < action.arguments.size(); ++index) {
        const CsnArgument& argument = action.arguments[index];
        constants.push_back(
            info.parameters[index] == kCount ? CsnFunctionOf(*argument.count).expression
            : argument.variable == nullptr   ? std::to_string(argument.count->number)
                                             : std::to_string(argument.variable->tag));
    }
    return Call(info.function, constants);
}

csn::VerifierAction CsnActionEffect(const CsnNode& action) {
    using Effect = csn::VerifierAction::Effect;
    const CsnActionInfo& info = *FindCsnAction(action.name.text);
    if (info.leaves == kAsBefore) {
        return {Effect::kNone};
    }
    std::uint32_t most = csn::kNoBound;
    if (info.leaves == kBits && action.arguments[1].count->number < 32) {
        most = (1U << action.arguments[1].count->number) - 1;
    } else if (info.leaves == kResult) {
        const csn::VerifierBound bound = CsnFunctionOf(*action.arguments[1].count).bound;
        most = bound.tag ? csn::kNoBound : static_cast<std::uint32_t>(bound.offset);
    }
    const bool adds = info.parameters.front() == kSets;
    return {adds ? Effect::kAdds : Effect::kChanges, action.arguments.front().variable->tag, most};
}

CsnValueFunction CsnFunctionOf(const CsnCount& count) {
    const std::uint32_t variable = count.variable == nullptr ? 0 : count.variable->tag;
    const std::string tag = std::to_string(variable);
    const std::string number = std::to_string(count.number);
    switch (count.form) {
        case Form::kNumber:
            return {Call("Constant", {number}), {count.number}};
        case Form::kOnes:
            return variable == 0 ? CsnValueFunction{Call("Ones", {number}), {count.number}}
                                 : CsnValueFunction{Call("OnesOf", {tag}), {32}};
        case Form::kValue:
            return {Call("TagPlus", {tag, number}), {count.number, variable, 1}};
        case Form::kRest:
            return {Call("RestOf", {tag, number}), {count.number, variable, 0}};
        case Form::kTimes:
            return {Call("OctetsToBits", {tag}), {0, variable, 8}};
        case Form::kOctetEnd:
            return {Call("BitsToOctetBoundary", {}), {7}};
        case Form::kLeft:  // how far positions are from each other is not known
            return {Call("BitsLeftInSpan", {tag, number}), {}};
        case Form::kLeftOrNone:
            return {Call("BitsLeftInSpanIfAny", {tag, number}), {}};
        case Form::kLeftOrZero:
            return {Call("BitsLeftInSpanOrZeroBased", {tag, number}), {}};
        case Form::kUntil:
            return {Call("BitsLeftToEnd", {tag}), {}};
        case Form::kDeclared:
            return {Call("Declared", {tag, count.function->name}), {count.function->most}};
    }
    return {};  // unreachable: each form returns
}

}  // namespace quorvane::compiler
