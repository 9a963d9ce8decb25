// Takes what has mistakes out of CSN.1 descriptions.

#include <algorithm>
#include <map>
#include <utility>

#include "compiler/csn/csn_syntax.h"

namespace quorvane::compiler {
namespace {

bool RefersToBroken(const CsnNode& node) {
    return (node.rule != nullptr && node.rule->broken) ||
           std::any_of(node.children.begin(), node.children.end(),
                       [](const CsnNode* child) { return RefersToBroken(*child); });
}

/// Marks the rules and sections that the spans lie in: those that begin last before them.
void MarkOwners(const std::vector<Span>& spans, CsnSyntax& syntax) {
    std::map<std::pair<std::uint32_t, std::uint32_t>, bool*> owners;
    for (CsnSection& section : syntax.sections) {
        owners[{section.span.file, section.span.begin}] = &section.broken;
    }
    for (auto* rules : {&syntax.rules, &syntax.dropped}) {
        for (CsnRule& rule : *rules) {
            owners[{rule.name.span.file, rule.name.span.begin}] = &rule.broken;
        }
    }
    for (const Span& span : spans) {
        auto owner = owners.upper_bound({span.file, span.begin});
        if (owner != owners.begin() && (--owner)->first.first == span.file) {
            *owner->second = true;
        }
    }
}

/// A structure goes with each of its rules, a rule with each one that it refers to.
void Spread(CsnSyntax& syntax) {
    for (bool changed = true; changed;) {
        changed = false;
        for (CsnSection& section : syntax.sections) {
            const auto broken = [](const CsnRule* rule) { return rule->broken; };
            const bool runsBroken = section.entry != nullptr && section.entry->broken;
            if (section.structure &&
                (runsBroken || std::any_of(section.rules.begin(), section.rules.end(), broken))) {
                section.broken = true;
            }
            for (CsnRule* rule : section.rules) {
                rule->broken = rule->broken || (section.structure && section.broken);
            }
        }
        for (CsnRule& rule : syntax.rules) {
            if (!rule.broken && RefersToBroken(*rule.body)) {
                rule.broken = changed = true;
            }
        }
    }
}

}  // namespace

bool DropBroken(const Reporter& reporter, CsnSyntax& syntax) {
    const std::vector<Span> spans = reporter.ErrorSpans(syntax.errorsSeen);
    syntax.errorsSeen += spans.size();
    MarkOwners(spans, syntax);
    Spread(syntax);
    const std::size_t before = syntax.dropped.size();
    for (auto rule = syntax.rules.begin(); rule != syntax.rules.end();) {
        const auto next = std::next(rule);
        if (rule->broken) {
            syntax.dropped.splice(syntax.dropped.end(), syntax.rules, rule);
        }
        rule = next;
    }
    for (CsnSection& section : syntax.sections) {
        if (section.structure && section.broken) {
            section.structure.reset();
            section.rules.clear();
        }
    }
    return syntax.dropped.size() != before;
}

}  // namespace quorvane::compiler
