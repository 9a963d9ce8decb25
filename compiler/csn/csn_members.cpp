#include "compiler/csn/csn_members.h"

#include <algorithm>
#include <utility>

namespace quorvane::compiler {
namespace {

using NodeKind = CsnNode::Kind;
using RepetitionForm = CsnNode::Repetition::Form;

/// A count in the range of its type, whose largest number stands for any.
std::uint32_t Bounded(std::uint64_t count) {
    return static_cast<std::uint32_t>(std::min<std::uint64_t>(count, kUnbounded));
}

std::uint32_t Times(std::uint32_t left, std::uint32_t right) {
    return Bounded(std::uint64_t{left} * right);
}

void AddOccurrences(CsnMember& member, const CsnMember& other) {
    for (const CsnMember::Occurrence& occurrence : other.occurrences) {
        const auto same = [&](const auto& known) { return known.field == occurrence.field; };
        const auto found = std::find_if(member.occurrences.begin(), member.occurrences.end(), same);
        if (found == member.occurrences.end()) {
            member.occurrences.push_back(occurrence);
        } else {
            found->inErrorBranch |= occurrence.inErrorBranch;
        }
    }
}

}  // namespace

CsnMember& CsnMembers::Merge(const CsnMember& other) {
    const auto [entry, isNew] = index_.emplace(other.name, members_.size());
    if (isNew) {
        members_.push_back({other.name, 0, 0, {}});
    }
    CsnMember& member = members_[entry->second];
    AddOccurrences(member, other);
    return member;
}

void CsnMembers::Concatenate(const CsnMembers& other) {
    for (const CsnMember& theirs : other.members_) {
        CsnMember& member = Merge(theirs);
        member.least = Bounded(std::uint64_t{member.least} + theirs.least);
        member.most = Bounded(std::uint64_t{member.most} + theirs.most);
    }
}

void CsnMembers::Alternate(const CsnMembers& other) {
    for (CsnMember& member : members_) {
        if (other.index_.count(member.name) == 0) {
            member.least = 0;
        }
    }
    for (const CsnMember& theirs : other.members_) {
        const bool isNew = index_.count(theirs.name) == 0;
        CsnMember& member = Merge(theirs);
        member.least = isNew ? 0 : std::min(member.least, theirs.least);
        member.most = std::max(member.most, theirs.most);
    }
}

void CsnMembers::Multiply(std::uint32_t least, std::uint32_t most) {
    for (CsnMember& member : members_) {
        member.least = Times(member.least, least);
        member.most = Times(member.most, most);
    }
}

void CsnMembers::MarkErrorBranch() {
    for (CsnMember& member : members_) {
        for (CsnMember::Occurrence& occurrence : member.occurrences) {
            occurrence.inErrorBranch = true;
        }
    }
}

void CsnMembers::Add(CsnMember member) {
    CsnMembers one;
    one.index_.emplace(member.name, 0);
    one.members_.push_back(std::move(member));
    Concatenate(one);
}

CsnMembers CsnMemberFinder::Of(const CsnNode& node) {
    CsnMembers members;
    switch (node.kind) {
        case NodeKind::kField:
            members.Add({CsnMemberName(node), 1, 1, {{&node, false}}});
            break;
        case NodeKind::kReference:
            return OfRule(*node.rule);
        case NodeKind::kChoice:
        case NodeKind::kError:
        case NodeKind::kSend:
            members = Of(*node.children.front());
            for (std::size_t index = 1; index < node.children.size(); ++index) {
                CsnMembers branch = Of(*node.children[index]);
                if (node.kind == NodeKind::kError) {
                    branch.MarkErrorBranch();
                }
                members.Alternate(branch);
            }
            break;
        case NodeKind::kRepeat: {
            members = Of(*node.children.front());
            const CsnCount& count = node.repetition.count;
            if (node.repetition.form == RepetitionForm::kRange) {
                members.Multiply(node.low, node.high);
            } else if (node.repetition.form == RepetitionForm::kCount &&
                       count.form == CsnCount::Form::kNumber) {
                const auto number = static_cast<std::uint32_t>(count.number);
                members.Multiply(number, number);
            } else {
                members.Multiply(0, kUnbounded);
            }
            break;
        }
        default:  // one after another, or a second reading of the same
            for (const CsnNode* child : node.children) {
                members.Concatenate(Of(*child));
            }
            if (node.kind == NodeKind::kTruncate) {
                members.Multiply(0, 1);
            }
            break;
    }
    return members;
}

const CsnMembers& CsnMemberFinder::OfRule(const CsnRule& rule) {
    if (const auto found = rules_.find(&rule); found != rules_.end()) {
        return found->second;
    }
    CsnMembers members;
    if (rule.recursive) {
        std::set<const CsnRule*> seen = {&rule};
        CollectRecursive(*rule.body, false, seen, members);
    } else {
        members = Of(*rule.body);
    }
    return rules_.emplace(&rule, std::move(members)).first->second;
}

/// The members of a recursive rule: each field inside any number of times.
void CsnMemberFinder::CollectRecursive(const CsnNode& node, bool inErrorBranch,
                                       std::set<const CsnRule*>& seen, CsnMembers& members) {
    if (node.kind == NodeKind::kField) {
        members.Add({CsnMemberName(node), 0, kUnbounded, {{&node, inErrorBranch}}});
        return;
    }
    if (node.kind == NodeKind::kReference && seen.insert(node.rule).second) {
        CollectRecursive(*node.rule->body, inErrorBranch, seen, members);
    }
    for (const CsnNode* child : node.children) {
        const bool isFallback = node.kind == NodeKind::kError && child != node.children.front();
        CollectRecursive(*child, inErrorBranch || isFallback, seen, members);
    }
}

std::string CsnMemberName(const CsnNode& field) {
    return field.annotations.memberName ? field.annotations.memberName->text
                                        : CsnSpelling(field.name.text);
}

}  // namespace quorvane::compiler
