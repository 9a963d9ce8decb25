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

const std::array<CsnActionInfo, 18>& Actions() {
    static const std::array<CsnActionInfo, 18> kActions = {{
        {"note", "NotePosition", {kSets}},
        {"note_ahead", "NotePositionAhead", {kSets, kNumber}},
        {"open_behind_length", "OpenScopeAtLengthEnd", {kSets, kNumber}},
        {"open_before_length", "OpenScopeAtLengthStart", {kSets, kNumber, kNumber}},
        {"open_coded_length", "OpenScopeAtCodedLength", {kSets}},
        {"open_fixed", "OpenFixedScope", {kSets, kNumber}},
        {"close", "CloseScope", {kUses}},
        {"write_back", "WriteBackLength", {kUses, kNumber, kNumber, kNumber}},
        {"clip", "ClipToSpan", {kUses, kNumber}},
        {"jump_over", "JumpOverElement", {kUses, kNumber, kNumber}},
        {"keep", "KeepCount", {kSets, kNumber}},
        {"start_count", "StartCount", {kSets}},
        {"count_one", "CountOne", {kUses}},
        {"keep_population", "KeepPopulation", {kSets, kNumber}},
        {"add_population", "AddPopulation", {kUses, kNumber}},
        {"raise_maximum", "RaiseMaximum", {kUses, kNumber}},
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
    std::vector<std::string> constants;
    for (const CsnArgument& argument : action.arguments) {
        const std::uint32_t value =
            argument.variable == nullptr ? argument.number : argument.variable->tag;
        constants.push_back(std::to_string(value));
    }
    return Call(FindCsnAction(action.name.text)->function, constants);
}

std::string CsnCountExpression(const CsnCount& count) {
    const std::string tag =
        count.variable == nullptr ? std::string() : std::to_string(count.variable->tag);
    const std::string number = std::to_string(count.number);
    switch (count.form) {
        case Form::kNumber:
            break;
        case Form::kValue:
            return Call("TagPlus", {tag, number});
        case Form::kRest:
            return Call("RestOf", {tag, number});
        case Form::kTimes:
            return Call("OctetsToBits", {tag});
        case Form::kOctetEnd:
            return Call("BitsToOctetBoundary", {});
        case Form::kLeft:
            return Call("BitsLeftInSpan", {tag, number});
        case Form::kLeftOrNone:
            return Call("BitsLeftInSpanIfAny", {tag, number});
        case Form::kLeftOrZero:
            return Call("BitsLeftInSpanOrZeroBased", {tag, number});
        case Form::kUntil:
            return Call("BitsLeftToEnd", {tag});
        case Form::kFddCells:
            return Call("FddCellInfo", {tag});
        case Form::kTddCells:
            return Call("TddCellInfo", {tag});
    }
    return {};
}

}  // namespace quorvane::compiler
