#include "compiler/csn/csn_resolver.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <map>
#include <set>
#include <utility>

#include "compiler/csn/csn_builtins.h"

namespace quorvane::compiler {
namespace {

using NodeKind = CsnNode::Kind;

/// Rules of more nodes get code of their own also where they are used only once, so that jumps over
/// them stay short.
constexpr std::size_t kMostInlineNodes = 100;

constexpr std::int64_t kOctet = 8;

/// The scope of the shared rules' variables; a structure's is the index of its section.
constexpr std::size_t kShared = static_cast<std::size_t>(-1);

std::string Bracketed(const std::string& name) {
    return "'< " + name + " >'";
}

class Resolver {
  public:
    Resolver(Reporter& reporter, CsnSyntax& syntax) : reporter_(reporter), syntax_(syntax) {}

    void Run(const std::set<std::string>& wanted) {
        LeaveOutStructures(wanted);
        CollectRules();
        FindEntries();
        for (CsnRule& rule : syntax_.rules) {
            rule_ = &rule;
            BindReferences(*rule.body);
        }
        LeaveOutRules();
        for (CsnRule& rule : syntax_.rules) {
            rule_ = &rule;
            CollectUses(*rule.body);
        }
        for (CsnRule& rule : syntax_.rules) {
            rule_ = &rule;
            BindVariables(*rule.body);
        }
        RefuseDeepRules(reporter_, syntax_);
        DropBroken(reporter_, syntax_);  // what follows takes names for bound
        FindUnused();
        for (CsnRule& rule : syntax_.rules) {
            rule.recursive = Reaches(rule, rule);
        }
        ComputeFields();
        std::set<const CsnRule*> measured;
        for (CsnRule& rule : syntax_.rules) {
            Measure(rule, measured);
        }
        FindKeptTags();
        for (CsnRule& rule : syntax_.rules) {
            Size(rule);
        }
        std::uint32_t tag = 0;
        for (CsnVariable& variable : syntax_.variables) {
            variable.tag = ++tag;
        }
        syntax_.lastTag = tag;
    }

  private:
    // ---- Rules -----------------------------------------------------------------------------

    /// Takes the structures of common files away that the family does not name.
    void LeaveOutStructures(const std::set<std::string>& wanted) {
        std::erase_if(syntax_.sections, [&](const CsnSection& section) {
            if (!section.common || !section.structure || wanted.contains(section.structure->text)) {
                return false;
            }
            const std::set<const CsnRule*> rules(section.rules.begin(), section.rules.end());
            LeaveOut([&](const CsnRule& rule) { return rules.contains(&rule); });
            return true;
        });
    }

    /// Takes the shared rules of common files away that no structure refers to.
    void LeaveOutRules() {
        const std::set<const CsnRule*> used = Used();
        LeaveOut([&](const CsnRule& rule) {
            const CsnSection& section = syntax_.sections[rule.section];
            return section.common && !section.structure && !used.contains(&rule);
        });
    }

    void LeaveOut(const std::function<bool(const CsnRule& rule)>& isUnused) {
        for (auto rule = syntax_.rules.begin(); rule != syntax_.rules.end();) {
            const auto next = std::next(rule);
            if (isUnused(*rule)) {
                syntax_.leftOut.splice(syntax_.leftOut.end(), syntax_.rules, rule);
            }
            rule = next;
        }
    }

    /// Finds the rule in which each structure begins.
    void FindEntries() {
        for (CsnSection& section : syntax_.sections) {
            const auto target = std::find_if(
                syntax_.sections.begin(), syntax_.sections.end(), [&](const CsnSection& other) {
                    return section.runs && other.structure && !other.rules.empty() &&
                           other.structure->text == section.runs->text;
                });
            if (section.runs && target == syntax_.sections.end() && !syntax_.dropped.empty()) {
                section.broken = true;  // it may be one of those
            } else if (section.runs && target == syntax_.sections.end()) {
                reporter_.Error(section.runs->span, "there is no structure '" + section.runs->text +
                                                        "' with a rule of its own to run");
            }
            const CsnSection& owner = target == syntax_.sections.end() ? section : *target;
            section.entry = owner.rules.empty() ? nullptr : owner.rules.front();
        }
    }

    /// The rules that structures run, directly or through others.
    [[nodiscard]] std::set<const CsnRule*> Used() const {
        std::set<const CsnRule*> used;
        for (const CsnSection& section : syntax_.sections) {
            if (section.structure && section.entry != nullptr) {
                used.insert(section.entry);
                CollectReached(*section.entry, used);
            }
        }
        return used;
    }

    void FindUnused() {
        const std::set<const CsnRule*> used = Used();
        for (const CsnRule& rule : syntax_.rules) {
            // Who refers to a shared one may have been dropped.
            const bool allSeen =
                syntax_.dropped.empty() || syntax_.sections[rule.section].structure;
            if (allSeen && used.count(&rule) == 0) {
                reporter_.Error(rule.name.span, "no structure refers to the rule " +
                                                    Bracketed(rule.name.text) +
                                                    "; remove it or use it");
            }
        }
    }

    void CollectRules() {
        std::set<std::string> structures;
        own_.resize(syntax_.sections.size());
        for (std::size_t index = 0; index < syntax_.sections.size(); ++index) {
            CsnSection& section = syntax_.sections[index];
            if (section.structure) {
                CollectStructure(section, structures);
            }
            for (CsnRule* rule : section.rules) {
                rule->section = index;
                auto& rules = section.structure ? own_[index] : shared_;
                if (!rules.emplace(rule->key, rule).second) {
                    reporter_.Error(rule->name.span, "there is a rule " +
                                                         Bracketed(rule->name.text) +
                                                         " already; give this one another name");
                }
            }
        }
    }

    void CollectStructure(const CsnSection& section, std::set<std::string>& structures) {
        const Name& name = *section.structure;
        if (!structures.insert(name.text).second) {
            reporter_.Error(name.span, "there is a structure " + name.text +
                                           " already; give this one another name");
        }
        if (section.runs && !section.rules.empty()) {
            reporter_.Error(section.rules.front()->name.span,
                            "the structure " + name.text + " runs the rule of " +
                                section.runs->text + " and can have none of its own");
        }
        if (section.rules.empty() && !section.runs) {
            reporter_.Error(name.span, "the structure " + name.text +
                                           " has no rule; its first rule is where it begins");
        }
    }

    [[nodiscard]] bool IsEntry(const CsnRule& rule) const {
        const CsnSection& section = syntax_.sections[rule.section];
        return section.structure && section.rules.front() == &rule;
    }

    [[nodiscard]] CsnRule* FindRule(const std::string& name) const {
        const std::string key = CsnRuleKey(name);
        for (const auto* rules : {&own_[rule_->section], &shared_}) {
            if (const auto found = rules->find(key); found != rules->end()) {
                return found->second;
            }
        }
        return nullptr;
    }

    void BindReferences(CsnNode& node) {
        if (node.kind == NodeKind::kReference) {
            node.rule = FindRule(node.name.text);
            if (node.rule == nullptr) {
                reporter_.Error(node.span, "there is no rule " + Bracketed(node.name.text) +
                                               " in this structure or among the shared ones");
            } else {
                calls_[rule_].insert(node.rule);
            }
        }
        for (CsnNode* child : node.children) {
            BindReferences(*child);
        }
    }

    /// Adds the rules that `from` refers to, directly or through others.
    void CollectReached(const CsnRule& from, std::set<const CsnRule*>& reached) const {
        std::vector<const CsnRule*> left = {&from};
        while (!left.empty()) {
            const auto found = calls_.find(left.back());
            left.pop_back();
            if (found == calls_.end()) {
                continue;
            }
            for (const CsnRule* callee : found->second) {
                if (reached.insert(callee).second) {
                    left.push_back(callee);
                }
            }
        }
    }

    /// Whether `from` refers to `target`, directly or through others.
    [[nodiscard]] bool Reaches(const CsnRule& from, const CsnRule& target) const {
        std::set<const CsnRule*> reached;
        CollectReached(from, reached);
        return reached.count(&target) != 0;
    }

    /// Finds the rules with fields; recursion makes it a matter of rounds.
    void ComputeFields() {
        for (bool changed = true; changed;) {
            changed = false;
            for (CsnRule& rule : syntax_.rules) {
                if (!rule.hasFields && HasFields(*rule.body)) {
                    rule.hasFields = changed = true;
                }
            }
        }
    }

    /// Computes the width of `rule` behind those of the rules that it refers to. A recursive one
    /// has none.
    void Measure(CsnRule& rule, std::set<const CsnRule*>& measured) {
        if (!measured.insert(&rule).second) {
            return;
        }
        for (CsnRule* callee : calls_[&rule]) {
            Measure(*callee, measured);
        }
        rule.width = rule.recursive ? std::nullopt : FixedWidth(*rule.body);
    }

    /// Decides whether `rule` gets code of its own, and returns its nodes where it does not.
    std::size_t Size(CsnRule& rule) {
        if (const auto known = sizes_.find(&rule); known != sizes_.end()) {
            return known->second;
        }
        sizes_[&rule] = 1;  // for recursion, which always calls
        const std::size_t size = NodesOf(*rule.body);
        const bool trivial = rule.body->children.empty() && rule.body->kind != NodeKind::kReference;
        // A rule of its own code drops what it keeps under tags when it ends.
        rule.called = IsEntry(rule) || rule.recursive || SetsTags(*rule.body) ||
                      (!trivial && (rule.references > 1 || size > kMostInlineNodes));
        return sizes_[&rule] = rule.called ? 1 : size;
    }

    std::size_t NodesOf(const CsnNode& node) {
        std::size_t nodes = 1;
        if (node.rule != nullptr) {
            nodes += Size(*node.rule);
        }
        for (const CsnNode* child : node.children) {
            nodes += NodesOf(*child);
        }
        return nodes;
    }

    // ---- Variables -------------------------------------------------------------------------

    /// What a rule refers to and sets.
    void CollectUses(CsnNode& node) {
        if (node.rule != nullptr) {
            ++node.rule->references;
        }
        if (node.kind == NodeKind::kField) {
            setters_[rule_][CsnSpelling(node.name.text)].push_back(&node);
        } else if (node.kind == NodeKind::kAction) {
            CollectAction(node);
        }
        for (CsnNode* child : node.children) {
            CollectUses(*child);
        }
    }

    void CollectAction(CsnNode& node) {
        const CsnActionInfo* info = FindCsnAction(node.name.text);
        if (info == nullptr) {
            reporter_.Error(node.span,
                            "'" + node.name.text + "' is no action; there are " + CsnActionNames());
            node.arguments.clear();
            return;
        }
        const std::size_t count = node.arguments.size();
        if (count != info->parameters.size()) {
            reporter_.Error(node.span, "the action '" + node.name.text + "' takes " +
                                           std::to_string(info->parameters.size()) +
                                           " arguments, not " + std::to_string(count));
            node.arguments.clear();
            return;
        }
        for (std::size_t index = 0; index < count; ++index) {
            CsnArgument& argument = node.arguments[index];
            const bool wantsNumber = info->parameters[index] == CsnActionInfo::Parameter::kNumber;
            const bool wantsCount = info->parameters[index] == CsnActionInfo::Parameter::kCount;
            const bool isNumber = argument.count && argument.count->form == CsnCount::Form::kNumber;
            if (wantsNumber ? !isNumber : wantsCount != argument.count.has_value()) {
                reporter_.Error(argument.span, wantsNumber  ? "a number is expected here"
                                               : wantsCount ? "a count is expected here"
                                                            : "a name is expected here");
                argument.name.text.clear();
                argument.count.reset();
            } else if (info->parameters[index] == CsnActionInfo::Parameter::kSets) {
                setters_[rule_][CsnSpelling(argument.name.text)];
            }
        }
    }

    void BindVariables(CsnNode& node) {
        if (node.kind == NodeKind::kRepeat) {
            BindCount(node.repetition.count, node.repetition.form);
        }
        for (CsnArgument& argument : node.arguments) {
            if (!argument.name.text.empty()) {
                argument.variable = FindVariable(argument.name);
            } else if (argument.count) {
                BindCount(*argument.count, CsnNode::Repetition::Form::kAny);
            }
        }
        for (CsnNode* child : node.children) {
            BindVariables(*child);
        }
    }

    void BindCount(CsnCount& count, CsnNode::Repetition::Form form) {
        if (!count.name.text.empty()) {
            count.variable = FindVariable(count.name);
        }
        if (count.form == CsnCount::Form::kTimes && count.number != kOctet) {
            reporter_.Error(count.span,
                            "the only product of a value is that with 8, from octets to bits");
        }
        if (count.form == CsnCount::Form::kOnes && count.name.text.empty() &&
            (count.number < 1 || count.number > 32)) {
            reporter_.Error(count.span, "ones() counts among the last 1 to 32 bits");
        }
        if (count.form == CsnCount::Form::kNumber &&
            form == CsnNode::Repetition::Form::kWriteCount) {
            reporter_.Error(count.span, "'** write' needs a count that is computed");
        }
        if (count.form == CsnCount::Form::kNumber && form == CsnNode::Repetition::Form::kCount &&
            (count.number < 1 || count.number > kMostIterations)) {
            reporter_.Error(count.span, "a number of times from 1 to " +
                                            std::to_string(kMostIterations) + " is expected here");
        }
    }

    /// The variable that `use` means: one that this rule sets, or else rules through which this one
    /// is reached, or else any that this one sees.
    CsnVariable* FindVariable(const Name& use) {
        const std::string key = CsnSpelling(use.text);
        if (setters_[rule_].count(key) != 0) {
            const bool isShared = !syntax_.sections[rule_->section].structure;
            return Variable(use, isShared ? kShared : rule_->section, {rule_});
        }
        for (const std::size_t scope : {rule_->section, kShared}) {
            std::vector<CsnRule*> callers;
            std::vector<CsnRule*> others;
            for (const auto& [name, rule] : scope == kShared ? shared_ : own_[scope]) {
                if (setters_[rule].count(key) != 0) {
                    (Reaches(*rule, *rule_) ? callers : others).push_back(rule);
                }
            }
            if (!callers.empty()) {
                return Variable(use, scope, callers);
            }
            if (!others.empty()) {
                for (CsnRule* other : others) {
                    keptFor_.emplace_back(other, rule_);
                }
                return Variable(use, scope, others);
            }
        }
        const auto broken = [](const auto& entry) { return entry.second->broken; };
        if (std::any_of(shared_.begin(), shared_.end(), broken)) {
            rule_->broken = true;  // a shared rule that could not be read may set it
        } else {
            reporter_.Error(use.span,
                            "there is no field or position '" + use.text + "' in this structure");
        }
        return nullptr;
    }

    /// The variable of that name in `scope`, set by the rules `setters`.
    CsnVariable* Variable(const Name& use, std::size_t scope,
                          const std::vector<CsnRule*>& setters) {
        const std::string key = CsnSpelling(use.text);
        CsnVariable*& variable = variables_[{scope, key}];
        if (variable == nullptr) {
            variable = &syntax_.variables.emplace_back();
            variable->name = use.text;
        }
        for (CsnRule* rule : setters) {
            for (CsnNode* field : setters_[rule][key]) {
                field->variable = variable;
            }
        }
        return variable;
    }

    /// A rule drops its variables when it ends, unless one is used behind it: then it and the
    /// rules through which the user refers to it keep them.
    void FindKeptTags() {
        for (const auto& [setter, user] : keptFor_) {
            setter->keepsTags = true;
            for (CsnRule& rule : syntax_.rules) {
                if (&rule != user && Reaches(*user, rule) && Reaches(rule, *setter)) {
                    rule.keepsTags = true;
                }
            }
        }
    }

    Reporter& reporter_;
    CsnSyntax& syntax_;
    CsnRule* rule_ = nullptr;  // the current one
    std::map<std::string, CsnRule*> shared_;
    std::vector<std::map<std::string, CsnRule*>> own_;  // by section
    std::map<const CsnRule*, std::set<CsnRule*>> calls_;
    /// By rule and name: the fields that may set a variable; actions that do are not listed.
    std::map<const CsnRule*, std::map<std::string, std::vector<CsnNode*>>> setters_;
    std::map<std::pair<std::size_t, std::string>, CsnVariable*> variables_;  // by scope and name
    std::vector<std::pair<CsnRule*, const CsnRule*>> keptFor_;  // who sets, who uses behind it
    std::map<const CsnRule*, std::size_t> sizes_;
};

}  // namespace

void ResolveCsn(Reporter& reporter, CsnSyntax& syntax, const std::set<std::string>& wanted) {
    Resolver(reporter, syntax).Run(wanted);
}

std::optional<std::uint64_t> FixedWidth(const CsnNode& node) {
    constexpr std::uint64_t kMostWidth = 1U << 24;  // far above what a tag or a record can hold
    std::uint64_t width = 0;
    switch (node.kind) {
        case NodeKind::kNull:
        case NodeKind::kAction:
            return 0;
        case NodeKind::kBits:
            return node.text.size();
        case NodeKind::kAnyBits:
            return node.width;
        case NodeKind::kConcat:
            for (const CsnNode* child : node.children) {
                const auto part = FixedWidth(*child);
                if (!part || width + *part > kMostWidth) {
                    return std::nullopt;
                }
                width += *part;
            }
            return width;
        case NodeKind::kChoice:
        case NodeKind::kError: {
            const auto first = FixedWidth(*node.children.front());
            const bool same =
                std::all_of(node.children.begin() + 1, node.children.end(),
                            [&](const CsnNode* child) { return FixedWidth(*child) == first; });
            return same ? first : std::nullopt;
        }
        case NodeKind::kRepeat: {
            const auto part = FixedWidth(*node.children.front());
            const CsnCount& count = node.repetition.count;
            if (!part || node.repetition.form != CsnNode::Repetition::Form::kCount ||
                count.form != CsnCount::Form::kNumber || *part > kMostWidth) {
                return std::nullopt;
            }
            width = *part * static_cast<std::uint64_t>(std::max<std::int64_t>(count.number, 0));
            return width > kMostWidth ? std::nullopt : std::optional(width);
        }
        case NodeKind::kExclude:
        case NodeKind::kSend:
        case NodeKind::kRange:
        case NodeKind::kField:
            return FixedWidth(*node.children.front());
        case NodeKind::kReference:
            return node.rule->width;
        case NodeKind::kIntersection:  // its end is where the second reading stops
            return FixedWidth(*node.children.back());
        case NodeKind::kTruncate:
            break;
    }
    return std::nullopt;
}

bool HasFields(const CsnNode& node) {
    if (node.kind == NodeKind::kField || (node.rule != nullptr && node.rule->hasFields)) {
        return true;
    }
    return std::any_of(node.children.begin(), node.children.end(),
                       [](const CsnNode* child) { return HasFields(*child); });
}

bool SetsTags(const CsnNode& node) {
    if (node.kind == NodeKind::kRange || node.variable != nullptr) {
        return true;
    }
    if (node.kind == NodeKind::kRepeat) {
        return false;  // an iteration drops what it keeps
    }
    if (node.kind == NodeKind::kReference) {
        return node.rule->keepsTags ||
               (!node.rule->called && !node.rule->recursive && SetsTags(*node.rule->body));
    }
    if (node.kind == NodeKind::kAction) {
        const auto& parameters = FindCsnAction(node.name.text)->parameters;
        return std::count(parameters.begin(), parameters.end(), CsnActionInfo::Parameter::kSets) !=
               0;
    }
    return std::any_of(node.children.begin(), node.children.end(),
                       [](const CsnNode* child) { return SetsTags(*child); });
}

bool IsEitherBit(const CsnNode& node) {
    if (node.kind != NodeKind::kChoice || node.children.size() != 2) {
        return false;
    }
    const CsnNode& first = *node.children[0];
    const CsnNode& second = *node.children[1];
    if (first.kind != NodeKind::kBits || second.kind != NodeKind::kBits) {
        return false;
    }
    const std::string both = first.text + second.text;
    return both == "01" || both == "10" || both == "LH" || both == "HL";
}

}  // namespace quorvane::compiler
