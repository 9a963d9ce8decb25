#include "random_image.h"

#include <array>

#include "csn/assembly/assembler.h"
#include "csn/functions.h"

namespace quorvane::fuzz {
namespace {

using csn::Assembler;
using csn::Opcode;
using Label = Assembler::Label;

// Tags of the actions below: what they share makes them meet.
constexpr std::int32_t kNoted = 1;
constexpr std::int32_t kCounted = 2;
constexpr std::int32_t kScope = 3;
constexpr std::int32_t kRunning = 4;
constexpr std::uint32_t kTags = 4;

using Effect = csn::VerifierAction::Effect;

/// An action and its effect, as the verifier takes it.
struct KnownAction {
    csn::CsnAction action;
    csn::VerifierAction effect;
};
constexpr csn::VerifierAction kNoEffect = {Effect::kNone};

constexpr std::array kKnownActions = {
    KnownAction{csn::functions::NotePosition<kNoted>, {Effect::kAdds, kNoted}},
    KnownAction{csn::functions::NotePositionAhead<kCounted, 5>, {Effect::kAdds, kCounted}},
    KnownAction{csn::functions::OpenScopeAtLengthEnd<kScope, 4>, {Effect::kAdds, kScope}},
    KnownAction{csn::functions::OpenScopeAtLengthStart<kScope, 4, 2>, {Effect::kAdds, kScope}},
    KnownAction{csn::functions::OpenScopeAtCodedLength<kScope>, {Effect::kAdds, kScope}},
    KnownAction{csn::functions::OpenFixedScope<kScope, 9>, {Effect::kAdds, kScope}},
    KnownAction{csn::functions::CloseScope<kScope>, kNoEffect},
    KnownAction{csn::functions::WriteBackLength<kNoted, 8, 0, 8>, kNoEffect},
    KnownAction{csn::functions::ClipToSpan<kNoted, 6>, kNoEffect},
    KnownAction{csn::functions::JumpOverElement<kNoted, 4, 4>, kNoEffect},
    KnownAction{csn::functions::KeepCount<kCounted, 3>, {Effect::kAdds, kCounted, 7}},
    KnownAction{csn::functions::SetCount<kRunning, csn::functions::Constant<0>>,
                {Effect::kAdds, kRunning, 0}},
    KnownAction{csn::functions::AddCount<kRunning, csn::functions::Constant<1>>,
                {Effect::kChanges, kRunning}},
    KnownAction{csn::functions::SetCount<kCounted, csn::functions::Ones<4>>,
                {Effect::kAdds, kCounted, 4}},
    KnownAction{csn::functions::AddCount<kRunning, csn::functions::OnesOf<kCounted>>,
                {Effect::kChanges, kRunning}},
    KnownAction{csn::functions::RaiseMaximum<kCounted, 3>, {Effect::kChanges, kCounted, 7}},
    KnownAction{csn::functions::RejectZero<3>, kNoEffect},
    KnownAction{csn::functions::RejectZeroAndOnes<3>, kNoEffect},
};

constexpr std::array kActions = [] {
    std::array<csn::CsnAction, kKnownActions.size()> actions{};
    for (std::size_t index = 0; index < actions.size(); ++index) {
        actions[index] = kKnownActions[index].action;
    }
    return actions;
}();

/// As a description may declare it.
std::uint32_t Few(std::int32_t number) {
    return static_cast<std::uint32_t>(number) & 3U;
}

struct KnownFunction {
    csn::CsnValueFunction function;
    csn::VerifierBound bound;
};

constexpr std::array kKnownFunctions = {
    KnownFunction{csn::functions::BitsToOctetBoundary, csn::VerifierBound{7}},
    KnownFunction{csn::functions::TagPlus<kCounted, -1>, csn::VerifierBound{-1, kCounted, 1}},
    KnownFunction{csn::functions::RestOf<kCounted, 6>, csn::VerifierBound{6, kCounted, 0}},
    KnownFunction{csn::functions::OctetsToBits<kCounted>, csn::VerifierBound{0, kCounted, 8}},
    KnownFunction{csn::functions::BitsLeftInSpan<kNoted, 16>, {}},
    KnownFunction{csn::functions::BitsLeftInSpanOrZeroBased<kNoted, 16>, {}},
    KnownFunction{csn::functions::BitsLeftInSpanIfAny<kNoted, 16>, {}},
    KnownFunction{csn::functions::BitsLeftToEnd<kScope>, {}},
    KnownFunction{csn::functions::Declared<kCounted, Few>, csn::VerifierBound{3}},
};

constexpr std::array kFunctions = [] {
    std::array<csn::CsnValueFunction, kKnownFunctions.size()> functions{};
    for (std::size_t index = 0; index < functions.size(); ++index) {
        functions[index] = kKnownFunctions[index].function;
    }
    return functions;
}();

// Every field has a tag under every parent, so that it may stand anywhere.
constexpr std::uint16_t kRootTag = 1;
constexpr std::uint16_t kFirstTag = 2;
constexpr std::uint16_t kFields = 6;
constexpr std::uint32_t kWordsOfAField = 1 + 2 * (1 + kFields);

std::vector<std::uint16_t> FieldTable() {
    std::vector<std::uint16_t> table;
    for (std::uint16_t field = 0; field < kFields; ++field) {
        table.push_back(field);
        for (std::uint16_t parent = kRootTag; parent < kFirstTag + kFields; ++parent) {
            table.push_back(parent);
            table.push_back(static_cast<std::uint16_t>(kFirstTag + field));
        }
    }
    return table;
}

class Maker {
  public:
    explicit Maker(Input& recipe) : recipe_(recipe) {}

    Image Make() {
        for (std::size_t count = 1 + Below(3); count > 0; --count) {
            rules_.push_back(code_.NewLabel());
        }
        for (const Label rule : rules_) {
            code_.Bind(rule);
            Items(kDeepest);
            code_.Emit(Below(3) == 0 ? Opcode::kRetTags : Opcode::kRet);
        }
        Image image;
        image.code = code_.Finish();
        image.fieldTable = FieldTable();
        image.actions = kActions;
        for (const KnownAction& action : kKnownActions) {
            image.actionEffects.push_back(action.effect);
        }
        image.functions = kFunctions;
        for (const KnownFunction& function : kKnownFunctions) {
            image.functionBounds.push_back(function.bound);
        }
        image.entries.push_back(
            {"first", code_.OffsetOf(rules_.front()), kRootTag, kFirstTag, kFields});
        return image;
    }

  private:
    static constexpr int kDeepest = 5;
    static constexpr int kMostItems = 120;

    std::size_t Below(std::size_t count) { return recipe_.Below(count); }
    std::uint32_t Small(std::uint32_t count) { return static_cast<std::uint32_t>(Below(count)); }
    bool Flag() { return Below(2) != 0; }
    std::uint32_t AField() { return 1 + kWordsOfAField * Small(kFields); }
    std::uint32_t ATag() { return 1 + Small(kTags); }
    std::uint32_t AFunction() { return Small(kFunctions.size()); }

    void Items(int depth) {
        for (std::size_t count = Below(5); count > 0; --count) {
            Item(depth);
        }
    }

    void Item(int depth) {
        constexpr std::size_t kLeaves = 14;
        constexpr std::size_t kNests = 10;
        if (recipe_.Empty() || ++items_ > kMostItems) {
            return;
        }
        const std::size_t choice = Below(depth > 0 ? kLeaves + kNests : kLeaves);
        if (choice < kLeaves) {
            Leaf(choice);
        } else {
            Nest(choice - kLeaves, depth - 1);
        }
    }

    void Leaf(std::size_t choice) {
        static constexpr std::array kBits = {Opcode::kBit0, Opcode::kBit1, Opcode::kBitH,
                                             Opcode::kBitL};
        static constexpr std::array kActs = {Opcode::kAct, Opcode::kActDec, Opcode::kActEnc};
        switch (choice) {
            case 0:
            case 1:
                return code_.Emit(kBits[Below(kBits.size())]);
            case 2:
                return code_.Emit(Opcode::kSkip, {Small(8)});
            case 3: {
                const std::uint32_t width = 1 + Small(16);
                const std::uint32_t value = recipe_.Number(2) & ((1U << width) - 1);
                return code_.Emit(Opcode::kLit, {Assembler::Literal(value, width)});
            }
            case 4:
            case 5:
                return code_.Emit(Opcode::kField, {AField(), Small(40)});
            case 6: {
                const std::uint32_t field = AField();
                const std::uint32_t width = 1 + Small(4);
                return code_.Emit(Opcode::kFieldLit,
                                  {field, Assembler::Literal(Small(1U << width), width)});
            }
            case 7: {
                const Opcode opcode = kActs[Below(kActs.size())];
                return code_.Emit(opcode, {Small(kActions.size())});
            }
            case 8:
                return code_.Emit(Opcode::kCall, {rules_[Below(rules_.size())]});
            case 9:
                return code_.Emit(Opcode::kTagPos, {ATag()});
            case 10:
                return code_.Emit(Opcode::kCommit);
            case 11:
                return Comparison();
            case 12:
                return Requirement();
            default:
                return code_.Emit(Flag() ? Opcode::kAtEnd : Opcode::kFail);
        }
    }

    void Comparison() {
        const std::uint32_t tag = ATag();
        switch (Below(4)) {
            case 0:
                return code_.Emit(Opcode::kValEq, {tag, Small(16)});
            case 1: {
                const std::uint32_t low = Small(8);
                return code_.Emit(Opcode::kValRange, {tag, low, low + Small(16)});
            }
            case 2:
                return code_.Emit(Opcode::kValEqFn, {tag, AFunction()});
            default: {
                const std::uint32_t low = AFunction();
                return code_.Emit(Opcode::kValRangeFn, {tag, low, AFunction()});
            }
        }
    }

    void Requirement() {
        switch (Below(3)) {
            case 0:
                return code_.Emit(Opcode::kCount, {Small(20)});
            case 1:
                return code_.Emit(Opcode::kCountFn, {AFunction()});
            default: {
                const std::uint32_t encoding = AFunction();
                return code_.Emit(Opcode::kCountFn2, {encoding, AFunction()});
            }
        }
    }

    void Nest(std::size_t choice, int depth) {
        switch (choice) {
            case 0:
            case 1:
                return Alternatives(depth);
            case 2:
            case 3:
            case 4:
                return Repetition(depth);
            case 5:
                return Truncation(depth);
            case 6:
                return SecondReading(depth);
            case 7:
                return Sending(depth);
            default:
                return Group(depth);
        }
    }

    void Alternatives(int depth) {
        const Label join = code_.NewLabel();
        for (std::size_t count = 1 + Below(3); count > 0; --count) {
            const Label next = code_.NewLabel();
            code_.Emit(Opcode::kAlt, {Assembler::Branch(next, Flag())});
            Items(depth);
            code_.Emit(Opcode::kJmp, {join});
            code_.Bind(next);
        }
        code_.Emit(Opcode::kFail);
        code_.Bind(join);
        code_.Emit(Opcode::kPop);
    }

    void Repetition(int depth) {
        const Label exit = code_.NewLabel();
        EmitRepetition(Assembler::Exit(exit, Flag()));
        const Label body = code_.BindNew();
        if (Flag()) {
            code_.Emit(Opcode::kBit1);
        }
        Items(depth);
        code_.Emit(Opcode::kLoop, {body});
        code_.Bind(exit);
    }

    void EmitRepetition(const Assembler::Operand& exit) {
        switch (Below(9)) {
            case 0:
                return code_.Emit(Opcode::kRep, {exit, Small(6)});
            case 1: {
                const std::uint32_t tag = ATag();
                return code_.Emit(Opcode::kRepBit, {exit, tag, Small(8)});
            }
            case 2:
                return code_.Emit(Opcode::kRepTag, {exit, ATag()});
            case 3:
                return code_.Emit(Opcode::kRepAny, {exit});
            case 4:
                return code_.Emit(Opcode::kRepMore, {exit});
            case 5: {
                const std::uint32_t least = Small(4);
                const std::uint32_t most = Flag() ? csn::kOpenEndedCount : least + Small(6);
                return code_.Emit(Opcode::kRepRange, {exit, least, most});
            }
            case 6:
                return code_.Emit(Opcode::kRepFn, {exit, AFunction()});
            case 7: {
                const std::uint32_t encoding = AFunction();
                return code_.Emit(Opcode::kRepFn2, {exit, encoding, AFunction()});
            }
            default:
                return code_.Emit(Opcode::kRepFnEnc, {exit, AFunction()});
        }
    }

    void Truncation(int depth) {
        const Label end = code_.NewLabel();
        code_.Emit(Opcode::kAlt, {Assembler::Branch(end, Flag())});
        for (std::size_t count = 1 + Below(3); count > 0; --count) {
            Items(depth);
            if (count > 1) {
                code_.Emit(Opcode::kCommit);
            }
        }
        code_.Emit(Opcode::kPop);
        code_.Bind(end);
    }

    void SecondReading(int depth) {
        code_.Emit(Opcode::kMark);
        Items(depth);
        if (Flag()) {
            code_.Emit(Opcode::kRescan);
            Items(depth);
            return code_.Emit(Opcode::kRescanEnd);
        }
        const Label behind = code_.NewLabel();
        code_.Emit(Opcode::kExclude, {behind});
        Items(depth);
        code_.Emit(Opcode::kExcludeEnd);
        code_.Bind(behind);
    }

    void Sending(int depth) {
        const Label written = code_.NewLabel();
        const Label end = code_.NewLabel();
        code_.Emit(Opcode::kSkipEnc, {written});
        Items(depth);
        code_.Emit(Opcode::kJmp, {end});
        code_.Bind(written);
        Items(depth);
        code_.Bind(end);
    }

    void Group(int depth) {
        const auto delimiter = Assembler::Delimiter(AField(), Flag());
        code_.Emit(Opcode::kBegin, {delimiter});
        Items(depth);
        if (Flag()) {
            code_.Emit(Opcode::kEnd, {delimiter});
        } else {
            code_.Emit(Opcode::kEndTag, {delimiter, ATag()});
        }
    }

    Input& recipe_;
    Assembler code_;
    std::vector<Label> rules_;
    int items_ = 0;
};

}  // namespace

csn::VerifierReport Image::Verify() const {
    csn::VerifierInput input;
    input.code = code;
    input.fieldTable = fieldTable;
    input.entries = entries;
    input.actions = actionEffects;
    input.functions = functionBounds;
    return csn::Verify(input);
}

Image MakeImage(Input& recipe) {
    return Maker(recipe).Make();
}

void DamageImage(Input& recipe, Image& image) {
    for (std::size_t count = recipe.Below(8); count > 0 && !recipe.Empty(); --count) {
        if (recipe.Below(8) == 0) {
            const std::size_t place = recipe.Below(image.fieldTable.size());
            image.fieldTable[place] = static_cast<std::uint16_t>(recipe.Number(2));
        } else {
            const std::size_t place = recipe.Below(image.code.size());
            image.code[place] = recipe.Octet();
        }
    }
}

}  // namespace quorvane::fuzz
