#include "compiler/csn/csn_generator.h"

#include <algorithm>
#include <deque>
#include <map>
#include <utility>

#include "compiler/csn/csn_builtins.h"
#include "compiler/csn/csn_members.h"
#include "compiler/csn/csn_resolver.h"
#include "csn/assembly/assembler.h"
#include "csn/byte_code.h"
#include "csn/machine.h"

namespace quorvane::compiler {
namespace {

using csn::Assembler;
using csn::Opcode;
using Label = csn::Assembler::Label;
using NodeKind = CsnNode::Kind;
using RepetitionForm = CsnNode::Repetition::Form;

constexpr std::uint32_t kMostSkip = 63;
constexpr std::size_t kMostLiteral = 16;
constexpr std::size_t kMostFieldTable = 1U << 20;  // words; far above any image

class Generator {
  public:
    Generator(Reporter& reporter, const CsnSyntax& syntax, const CsnTypeTables& types)
        : reporter_(reporter), types_(types), syntax_(syntax), nextTag_(syntax.lastTag) {}

    CsnImage Run() {
        for (const CsnRule& rule : syntax_.rules) {
            MarkLoops(*rule.body, Loop::kNone);
        }
        for (const CsnRule& rule : syntax_.rules) {
            if (rule.called) {
                Rule(rule);
            }
        }
        for (const CsnVariable& variable : syntax_.variables) {
            image_.tagNames[variable.tag] = variable.name;
        }
        image_.code = code_.Finish();
        const std::size_t before = reporter_.ErrorCount();
        CheckSize();
        if (reporter_.ErrorCount() == before) {
            NameRules();
        }
        return std::move(image_);
    }

  private:
    // ---- Rules -----------------------------------------------------------------------------

    /// How a choice stands to the open repetition around it, with no field between.
    enum class Loop : std::uint8_t {
        kNone,   // there is none
        kItems,  // a field beside the choice is in every iteration: without items left it ends the
                 // writing
        kOpen    // the choice ends the writing
    };

    /// The body of a repetition with code of its own, so that its tags end with it.
    struct Outlined {
        const CsnNode* body;
        Label label;
        Loop loop;
    };

    void Rule(const CsnRule& rule) {
        code_.Bind(LabelOf(rule));
        loop_ = loops_[&rule];
        Node(*rule.body);
        code_.Emit(SetsTags(*rule.body) && !rule.keepsTags ? Opcode::kRetTags : Opcode::kRet);
        while (!outlined_.empty()) {
            const Outlined next = outlined_.front();
            outlined_.pop_front();
            code_.Bind(next.label);
            loop_ = next.loop;
            Node(*next.body);
            code_.Emit(Opcode::kRetTags);
        }
    }

    Label LabelOf(const CsnRule& rule) {
        const auto found = labels_.find(&rule);
        return found != labels_.end() ? found->second
                                      : labels_.emplace(&rule, code_.NewLabel()).first->second;
    }

    /// Finds the rules that an iteration of an open repetition runs into.
    void MarkLoops(const CsnNode& node, Loop around) {
        if (node.kind == NodeKind::kReference && around > loops_[node.rule]) {
            loops_[node.rule] = around;
            MarkLoops(*node.rule->body, around);
        }
        for (const CsnNode* child : node.children) {
            MarkLoops(*child, LoopAround(node, *child, around));
        }
    }

    /// What is around `child` of `node`, which has `around` around it.
    Loop LoopAround(const CsnNode& node, const CsnNode& child, Loop around) {
        const auto ends = [&](const CsnNode* other) {
            const CsnMembers members = other == &child ? CsnMembers() : finder_.Of(*other);
            return std::any_of(members.All().begin(), members.All().end(),
                               [](const CsnMember& member) { return member.least > 0; });
        };
        if (node.kind == NodeKind::kField) {
            return Loop::kNone;
        }
        if (node.kind == NodeKind::kRepeat && node.repetition.form != RepetitionForm::kCount) {
            return Loop::kOpen;
        }
        const bool beside = around == Loop::kOpen && node.kind == NodeKind::kConcat &&
                            std::any_of(node.children.begin(), node.children.end(), ends);
        return beside ? Loop::kItems : around;
    }

    // ---- Nodes -----------------------------------------------------------------------------

    void Node(const CsnNode& node) {
        switch (node.kind) {
            case NodeKind::kNull:
                break;
            case NodeKind::kBits:
                Bits(node.text);
                break;
            case NodeKind::kAnyBits:
                for (std::uint32_t left = node.width; left > 0; left -= std::min(left, kMostSkip)) {
                    code_.Emit(Opcode::kSkip, {std::min(left, kMostSkip)});
                }
                break;
            case NodeKind::kConcat:
                Concatenation(node);
                break;
            case NodeKind::kChoice:
                Choice(node);
                break;
            case NodeKind::kError:
                ErrorBranch(node);
                break;
            case NodeKind::kRepeat:
                Repetition(node);
                break;
            case NodeKind::kTruncate:
                Truncation(node);
                break;
            case NodeKind::kIntersection:
                code_.Emit(Opcode::kMark);
                Node(*node.children[0]);
                code_.Emit(Opcode::kRescan);
                Node(*node.children[1]);
                code_.Emit(Opcode::kRescanEnd);
                break;
            case NodeKind::kExclude:
                Exclusion(node);
                break;
            case NodeKind::kSend:
                Sending(node);
                break;
            case NodeKind::kRange: {
                const std::uint32_t tag = ++nextTag_;
                code_.Emit(Opcode::kTagPos, {tag});
                Node(*node.children[0]);
                code_.Emit(Opcode::kValRange, {tag, node.low, node.high});
                break;
            }
            case NodeKind::kField:
                Field(node);
                break;
            case NodeKind::kReference:
                if (node.rule->called) {
                    code_.Emit(Opcode::kCall, {LabelOf(*node.rule)});
                } else {
                    Node(*node.rule->body);
                }
                break;
            case NodeKind::kAction:
                Action(node);
                break;
        }
    }

    /// Fixed bits: runs of 0 and 1 as patterns, L and H one by one.
    void Bits(const std::string& text) {
        for (std::size_t begin = 0; begin < text.size();) {
            if (text[begin] == 'L' || text[begin] == 'H') {
                code_.Emit(text[begin] == 'L' ? Opcode::kBitL : Opcode::kBitH);
                ++begin;
                continue;
            }
            const std::size_t end =
                begin + std::min(text.substr(begin, kMostLiteral).find_first_of("LH"),
                                 std::min(text.size() - begin, kMostLiteral));
            const auto width = static_cast<std::uint32_t>(end - begin);
            const std::uint32_t value = ValueOf(text.substr(begin, end - begin));
            if (width == 1) {
                code_.Emit(value == 0 ? Opcode::kBit0 : Opcode::kBit1);
            } else {
                code_.Emit(Opcode::kLit, {Assembler::Literal(value, width)});
            }
            begin = end;
        }
    }

    static std::uint32_t ValueOf(const std::string& bits) {
        std::uint32_t value = 0;
        for (const char bit : bits) {
            value = value << 1 | (bit == '1' ? 1U : 0U);
        }
        return value;
    }

    /// Fixed bits that follow each other are put together.
    void Concatenation(const CsnNode& node) {
        std::string bits;
        for (const CsnNode* child : node.children) {
            if (child->kind == NodeKind::kBits) {
                bits += child->text;
                continue;
            }
            Bits(bits);
            bits.clear();
            const Loop around = std::exchange(loop_, LoopAround(node, *child, loop_));
            Node(*child);
            loop_ = around;
        }
        Bits(bits);
    }

    /// The branches in the order in which they are tried: those with fields, those without, and
    /// those that may be empty.
    static std::vector<const CsnNode*> BranchesOf(const CsnNode& choice) {
        std::vector<const CsnNode*> branches(choice.children.begin(), choice.children.end());
        const auto rank = [](const CsnNode* branch) {
            return (MayBeEmpty(*branch) ? 2 : 0) + (HasFields(*branch) ? 0 : 1);
        };
        if (!choice.inOrder) {
            std::stable_sort(
                branches.begin(), branches.end(),
                [&](const auto* left, const auto* right) { return rank(left) < rank(right); });
        }
        return branches;
    }

    void Choice(const CsnNode& node) {
        const std::vector<const CsnNode*> branches = BranchesOf(node);
        const Label join = code_.NewLabel();
        for (std::size_t index = 0; index < branches.size(); ++index) {
            const Label next = code_.NewLabel();
            Alternative(*branches[index], next, index + 1 == branches.size());
            Node(*branches[index]);
            code_.Emit(Opcode::kJmp, {join});
            code_.Bind(next);
        }
        code_.Emit(Opcode::kFail);
        code_.Bind(join);
        code_.Emit(Opcode::kPop);
    }

    /// Opens a branch. The last one has its flag set, which makes a writer in an open repetition
    /// pass over it: that is what ends the repetition when there are no more items. In there the
    /// flag marks every branch without fields instead, since these can always be written; a last
    /// branch with fields ends the repetition itself. Where a field beside the choice ends it, no
    /// branch has the flag.
    void Alternative(const CsnNode& branch, Label next, bool isLast) {
        AltTo(next, loop_ == Loop::kNone ? isLast : loop_ == Loop::kOpen && !HasFields(branch));
    }

    void AltTo(Label target, bool flag) {
        code_.Emit(Opcode::kAlt, {Assembler::Branch(target, flag)});
    }

    void ErrorBranch(const CsnNode& node) {
        const Label fallback = code_.NewLabel();
        const Label fail = code_.NewLabel();
        const Label join = code_.NewLabel();
        AltTo(fallback, false);
        Node(*node.children[0]);
        code_.Emit(Opcode::kJmp, {join});
        code_.Bind(fallback);
        if (node.readOnly) {
            code_.Emit(Opcode::kSkipEnc, {fail});
        }
        Alternative(*node.children[1], fail, true);
        Node(*node.children[1]);
        code_.Emit(Opcode::kJmp, {join});
        code_.Bind(fail);
        code_.Emit(Opcode::kFail);
        code_.Bind(join);
        code_.Emit(Opcode::kPop);
    }

    void Repetition(const CsnNode& node) {
        const Label exit = code_.NewLabel();
        const auto exitOperand = Assembler::Exit(exit, node.repetition.leftOut);
        switch (node.repetition.form) {
            case RepetitionForm::kAny:
                code_.Emit(Opcode::kRepAny, {exitOperand});
                break;
            case RepetitionForm::kRange:
                RangeOf(node, exitOperand);
                break;
            case RepetitionForm::kWriteCount:
                code_.Emit(Opcode::kRepFnEnc, {exitOperand, FunctionOf(node.repetition.count)});
                break;
            case RepetitionForm::kCount:
                CountOf(node.repetition.count, exitOperand);
                break;
        }
        const CsnNode& child = *node.children.front();
        const Loop around = std::exchange(loop_, LoopAround(node, child, loop_));
        const Label body = code_.BindNew();
        if (SetsTags(child)) {
            const Label block = code_.NewLabel();
            code_.Emit(Opcode::kCall, {block});
            outlined_.push_back({&child, block, loop_});
        } else {
            Node(child);
        }
        code_.Emit(Opcode::kLoop, {body});
        code_.Bind(exit);
        loop_ = around;
    }

    void RangeOf(const CsnNode& node, const Assembler::Operand& exit) {
        const bool unbounded = node.high == kUnbounded;
        if (unbounded && node.low < 2) {
            code_.Emit(node.low == 0 ? Opcode::kRepAny : Opcode::kRepMore, {exit});
        } else {
            code_.Emit(Opcode::kRepRange,
                       {exit, node.low, unbounded ? csn::kOpenEndedCount : node.high});
        }
    }

    void CountOf(const CsnCount& count, const Assembler::Operand& exit) {
        if (count.form == CsnCount::Form::kNumber) {
            code_.Emit(Opcode::kRep, {exit, static_cast<std::uint32_t>(count.number)});
        } else if (count.form == CsnCount::Form::kValue && count.number == 0) {
            code_.Emit(Opcode::kRepTag, {exit, count.variable->tag});
        } else {
            code_.Emit(Opcode::kRepFn, {exit, FunctionOf(count)});
        }
    }

    /// One alternative whose choice point moves up with each element that is complete. An action
    /// goes with the element behind it.
    void Truncation(const CsnNode& node) {
        const Label end = code_.NewLabel();
        AltTo(end, false);
        bool commits = false;
        for (const CsnNode* child : node.children) {
            if (commits) {
                code_.Emit(Opcode::kCommit);
            }
            Node(*child);
            commits = child->kind != NodeKind::kAction;
        }
        code_.Emit(Opcode::kPop);
        code_.Bind(end);
    }

    void Exclusion(const CsnNode& node) {
        const Label behind = code_.NewLabel();
        code_.Emit(Opcode::kMark);
        Node(*node.children[0]);
        code_.Emit(Opcode::kExclude, {behind});
        Node(*node.children[1]);
        code_.Emit(Opcode::kExcludeEnd);
        code_.Bind(behind);
    }

    void Sending(const CsnNode& node) {
        const Label written = code_.NewLabel();
        const Label end = code_.NewLabel();
        code_.Emit(Opcode::kSkipEnc, {written});
        Node(*node.children[0]);
        if (node.children[1]->kind == NodeKind::kNull) {
            code_.Bind(written);
            return;
        }
        code_.Emit(Opcode::kJmp, {end});
        code_.Bind(written);
        Node(*node.children[1]);
        code_.Bind(end);
    }

    void Action(const CsnNode& node) {
        const Opcode opcode = node.direction == CsnNode::Direction::kReading   ? Opcode::kActDec
                              : node.direction == CsnNode::Direction::kWriting ? Opcode::kActEnc
                                                                               : Opcode::kAct;
        const std::uint32_t index = IndexOf(image_.actions, CsnActionExpression(node));
        code_.Emit(opcode, {index});
        image_.actionEffects.resize(image_.actions.size());
        image_.actionEffects[index] = CsnActionEffect(node);
    }

    std::uint32_t FunctionOf(const CsnCount& count) {
        const CsnValueFunction function = CsnFunctionOf(count);
        const std::uint32_t index = IndexOf(image_.functions, function.expression);
        image_.functionBounds.resize(image_.functions.size());
        image_.functionBounds[index] = function.bound;
        if (count.function != nullptr) {
            image_.headers.insert(count.function->header);
        }
        return index;
    }

    static std::uint32_t IndexOf(std::vector<std::string>& table, const std::string& entry) {
        const auto found = std::find(table.begin(), table.end(), entry);
        const auto index = static_cast<std::uint32_t>(found - table.begin());
        if (found == table.end()) {
            table.push_back(entry);
        }
        return index;
    }

    // ---- Fields ----------------------------------------------------------------------------

    void Field(const CsnNode& node) {
        const std::uint32_t id = NumberField(node);
        const CsnNode& content = *node.children.front();
        if (node.variable == nullptr && !node.annotations.sized) {
            if (content.kind == NodeKind::kAnyBits || IsEitherBit(content)) {
                code_.Emit(Opcode::kField,
                           {id, static_cast<std::uint32_t>(FixedWidth(content).value_or(0))});
                return;
            }
            if (content.kind == NodeKind::kBits && content.text.size() <= kMostLiteral &&
                content.text.find_first_of("LH") == std::string::npos) {
                const auto width = static_cast<std::uint32_t>(content.text.size());
                code_.Emit(Opcode::kFieldLit,
                           {id, Assembler::Literal(ValueOf(content.text), width)});
                return;
            }
        }
        // A field without fields inside is delivered whole, unless it has no bits.
        const bool isGroup = HasFields(content) || content.kind == NodeKind::kNull;
        const auto delimiter = Assembler::Delimiter(id, !isGroup || node.annotations.sized);
        const Loop around = std::exchange(loop_, Loop::kNone);
        code_.Emit(Opcode::kBegin, {delimiter});
        Node(content);
        if (node.variable == nullptr) {
            code_.Emit(Opcode::kEnd, {delimiter});
        } else {
            code_.Emit(Opcode::kEndTag, {delimiter, node.variable->tag});
        }
        loop_ = around;
    }

    /// Numbers an occurrence of a field: its index, then its tags by parent.
    std::uint32_t NumberField(const CsnNode& node) {
        std::vector<std::uint16_t>& table = image_.fieldTable;
        const auto id = static_cast<std::uint32_t>(table.size() + 1);
        image_.fieldNames[id] = CsnMemberName(node);
        table.push_back(static_cast<std::uint16_t>(image_.fieldCount++));
        const auto found = types_.tags.find(&node);
        if (found == types_.tags.end() || table.size() > kMostFieldTable) {
            return id;
        }
        std::vector<CsnTypeTables::TagPair> pairs = found->second;
        std::sort(pairs.begin(), pairs.end());
        pairs.erase(std::unique(pairs.begin(), pairs.end()), pairs.end());
        for (const CsnTypeTables::TagPair& pair : pairs) {
            table.push_back(pair.parent);
            table.push_back(pair.tag);
        }
        return id;
    }

    // ---- Afterwards ------------------------------------------------------------------------

    void CheckSize() {
        const std::size_t before = reporter_.ErrorCount();
        if (image_.fieldCount > 0x7FFF) {
            reporter_.Error(types_.structures.back().section->structure->span,
                            "the descriptions have more fields than can be numbered");
        }
        if (reporter_.ErrorCount() == before && !code_.Errors().empty()) {
            reporter_.Error(types_.structures.front().section->structure->span,
                            code_.Errors().front());
        }
    }

    void NameRules() {
        for (const auto& [rule, label] : labels_) {
            image_.ruleNames[code_.OffsetOf(label)] = rule->name.text;
            image_.ruleSpans[code_.OffsetOf(label)] = rule->name.span;
        }
        for (const CsnStructureTypes& structure : types_.structures) {
            const CsnRule& entry = EntryRule(*structure.section);
            image_.entries.push_back(code_.OffsetOf(LabelOf(entry)));
            if (!structure.section->runs) {
                image_.ruleNames[image_.entries.back()] = structure.section->structure->text;
            }
        }
    }

    Reporter& reporter_;
    const CsnTypeTables& types_;
    const CsnSyntax& syntax_;
    Assembler code_;
    CsnImage image_;
    std::map<const CsnRule*, Label> labels_;
    std::map<const CsnRule*, Loop> loops_;
    std::deque<Outlined> outlined_;
    CsnMemberFinder finder_;
    Loop loop_ = Loop::kNone;  // around what is generated
    std::uint32_t nextTag_;    // the last tag in use
};

}  // namespace

CsnImage GenerateCsn(Reporter& reporter, const CsnSyntax& syntax, const CsnTypeTables& types) {
    return Generator(reporter, syntax, types).Run();
}

}  // namespace quorvane::compiler
