#include "compiler/csn/csn_resolver.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

#include "compiler/csn/csn_builtins.h"

namespace quorvane::compiler {
namespace {

using NodeKind = CsnNode::Kind;

/// Rules of more nodes get code of their own also where they are used only once, so that
/// alternatives stay within the reach of their jumps.
constexpr std::size_t kMostInlineNodes = 100;

constexpr std::int64_t kOctet = 8;

std::string Bracketed(const std::string& name) {
    return "'< " + name + " >'";
}

class Resolver {
  public:
    Resolver(CsnReporter& reporter, CsnSyntax& syntax) : reporter_(reporter), syntax_(syntax) {}

    void Run() {
        CollectRules();
        for (CsnRule& rule : syntax_.rules) {
            rule_ = &rule;
            BindReferences(*rule.body);
            CollectVariables(*rule.body);
        }
        for (CsnRule& rule : syntax_.rules) {
            rule_ = &rule;
            BindVariables(*rule.body);
        }
        FindUnused();
        for (CsnRule& rule : syntax_.rules) {
            rule.recursive = Reaches(rule, rule);
        }
        if (reporter_.HasErrors()) {
            return;  // what follows takes names for bound
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

    void FindUnused() {
        std::set<const CsnRule*> used;
        for (const CsnSection& section : syntax_.sections) {
            if (section.structure && !section.rules.empty()) {
                used.insert(section.rules.front());
                CollectReached(*section.rules.front(), used);
            }
        }
        for (const CsnRule& rule : syntax_.rules) {
            if (used.count(&rule) == 0) {
                reporter_.Error(rule.name.place, "no structure refers to the rule " +
                                                     Bracketed(rule.name.text) +
                                                     "; take it away or refer to it");
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
                    reporter_.Error(rule->name.place, "there is a rule " +
                                                          Bracketed(rule->name.text) +
                                                          " already; give this one another name");
                }
            }
        }
    }

    void CollectStructure(const CsnSection& section, std::set<std::string>& structures) {
        const CsnName& name = *section.structure;
        if (!structures.insert(name.text).second) {
            reporter_.Error(name.place, "there is a structure " + name.text +
                                            " already; give this one another name");
        }
        if (section.rules.empty()) {
            reporter_.Error(name.place, "the structure " + name.text +
                                            " has no rule; its first rule is where it begins");
        }
    }

    [[nodiscard]] bool IsEntry(const CsnRule& rule) const {
        const CsnSection& section = syntax_.sections[rule.section];
        return section.structure && section.rules.front() == &rule;
    }

    [[nodiscard]] CsnRule* FindRule(const std::string& name) const {
        const std::string key = CsnSpelling(name);
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
                reporter_.Error(node.place, "there is no rule " + Bracketed(node.name.text) +
                                                " in this structure or among the shared ones");
            } else {
                ++node.rule->references;
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

    [[nodiscard]] bool Reaches(const CsnRule& from, const CsnRule& target) const {
        std::set<const CsnRule*> reached;
        CollectReached(from, reached);
        return reached.count(&target) != 0;
    }

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

    /// What sets a variable in a rule.
    struct Setter {
        std::vector<CsnNode*> fields;
        CsnVariable* variable = nullptr;
    };

    void CollectVariables(CsnNode& node) {
        if (node.kind == NodeKind::kField) {
            setters_[rule_][CsnSpelling(node.name.text)].fields.push_back(&node);
        } else if (node.kind == NodeKind::kAction) {
            CollectAction(node);
        }
        for (CsnNode* child : node.children) {
            CollectVariables(*child);
        }
    }

    void CollectAction(CsnNode& node) {
        const CsnActionInfo* info = FindCsnAction(node.name.text);
        if (info == nullptr) {
            reporter_.Error(node.place, "'" + node.name.text + "' is no action; there are " +
                                            CsnActionNames());
            return;
        }
        const std::size_t count = node.arguments.size();
        if (count != info->parameters.size()) {
            reporter_.Error(node.place, "the action '" + node.name.text + "' takes " +
                                            std::to_string(info->parameters.size()) +
                                            " arguments, not " + std::to_string(count));
            return;
        }
        for (std::size_t index = 0; index < count; ++index) {
            const CsnArgument& argument = node.arguments[index];
            const bool wantsNumber = info->parameters[index] == CsnActionInfo::Parameter::kNumber;
            if (wantsNumber != argument.name.text.empty()) {
                reporter_.Error(argument.place, wantsNumber ? "a number is expected here"
                                                            : "a name is expected here");
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
            reporter_.Error(count.place, "the only product of a value is that with 8, from octets "
                                         "to bits");
        }
        if (count.form == CsnCount::Form::kNumber && form == CsnNode::Repetition::Form::kCount &&
            (count.number < 1 || count.number > kMostIterations)) {
            reporter_.Error(count.place, "a number of times from 1 to " +
                                             std::to_string(kMostIterations) +
                                             " is expected here");
        }
    }

    /// The variable that `use` means: one of this rule, or the only one of that name in the rules
    /// that this one sees.
    CsnVariable* FindVariable(const CsnName& use) {
        const std::string key = CsnSpelling(use.text);
        CsnRule* owner = nullptr;
        if (setters_[rule_].count(key) != 0) {
            owner = rule_;
        } else {
            std::vector<CsnRule*> candidates;
            for (const auto* rules : {&own_[rule_->section], &shared_}) {
                for (const auto& [name, rule] : *rules) {
                    if (setters_[rule].count(key) != 0) {
                        candidates.push_back(rule);
                    }
                }
                if (!candidates.empty()) {
                    break;
                }
            }
            if (candidates.empty()) {
                reporter_.Error(use.place, "there is no field or position '" + use.text +
                                               "' in this structure");
                return nullptr;
            }
            if (candidates.size() > 1) {
                reporter_.Error(use.place, "'" + use.text + "' is set in " +
                                               Bracketed(candidates[0]->name.text) + " and in " +
                                               Bracketed(candidates[1]->name.text) +
                                               "; use it in the rule that sets it");
                return nullptr;
            }
            owner = candidates.front();
        }
        Setter& setter = setters_[owner][key];
        if (setter.variable == nullptr) {
            setter.variable = &syntax_.variables.emplace_back();
            setter.variable->name = use.text;
            owners_[setter.variable] = owner;
            for (CsnNode* field : setter.fields) {
                field->variable = setter.variable;
            }
        }
        if (owner != rule_) {
            foreignUses_.emplace_back(setter.variable, rule_);
        }
        return setter.variable;
    }

    /// A rule drops its variables when it ends, unless one is used outside of what it calls.
    void FindKeptTags() {
        for (const auto& [variable, user] : foreignUses_) {
            CsnRule* owner = owners_[variable];
            if (!Reaches(*owner, *user)) {
                Keep(*owner, *user);
            }
        }
    }

    /// Keeps the variables of `owner` and of the rules through which `user` comes to it.
    void Keep(CsnRule& owner, const CsnRule& user) {
        owner.keepsTags = true;
        for (CsnRule& rule : syntax_.rules) {
            if (&rule != &user && Reaches(user, rule) && Reaches(rule, owner)) {
                rule.keepsTags = true;
            }
        }
    }

    CsnReporter& reporter_;
    CsnSyntax& syntax_;
    CsnRule* rule_ = nullptr;  // the one at hand
    std::map<std::string, CsnRule*> shared_;
    std::vector<std::map<std::string, CsnRule*>> own_;  // by section
    std::map<const CsnRule*, std::set<CsnRule*>> calls_;
    std::map<const CsnRule*, std::map<std::string, Setter>> setters_;
    std::map<const CsnVariable*, CsnRule*> owners_;
    std::vector<std::pair<CsnVariable*, const CsnRule*>> foreignUses_;
    std::map<const CsnRule*, std::size_t> sizes_;
};

}  // namespace

void ResolveCsn(CsnReporter& reporter, CsnSyntax& syntax) {
    Resolver(reporter, syntax).Run();
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
                std::all_of(node.children.begin(), node.children.end(),
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
        case NodeKind::kAnd:  // its end is where the second reading stops
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
    if (node.kind == NodeKind::kReference) {
        return node.rule->keepsTags || (!node.rule->called && !node.rule->recursive &&
                                         SetsTags(*node.rule->body));
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
