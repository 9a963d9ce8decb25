#pragma once

// The members that a CSN.1 description gives the struct around it: every named field that is
// reached without passing into another named field, with how often it can occur.

#include <map>
#include <set>
#include <string>
#include <vector>

#include "compiler/csn/csn_syntax.h"

namespace quorvane::compiler {

/// All occurrences of one name under one parent.
struct CsnMember {
    struct Occurrence {
        const CsnNode* field;
        bool inErrorBranch;
    };

    std::string name;
    std::uint32_t least = 0;
    std::uint32_t most = 0;
    std::vector<Occurrence> occurrences;  // in the order of the description, each once
};

/// Members in the order of their first occurrence.
class CsnMembers {
  public:
    [[nodiscard]] const std::vector<CsnMember>& All() const { return members_; }
    [[nodiscard]] bool Empty() const { return members_.empty(); }

    /// `other` follows this: counts add.
    void Concatenate(const CsnMembers& other);
    /// `other` stands instead of this: the smaller least and the larger most count.
    void Alternate(const CsnMembers& other);
    /// `times` of this.
    void Multiply(std::uint32_t least, std::uint32_t most);
    void MarkErrorBranch();
    void Add(CsnMember member);

  private:
    CsnMember& Merge(const CsnMember& other);

    std::vector<CsnMember> members_;
    std::map<std::string, std::size_t> index_;
};

/// Computes members; keeps those of rules that were asked for.
class CsnMemberFinder {
  public:
    [[nodiscard]] CsnMembers Of(const CsnNode& node);

  private:
    const CsnMembers& OfRule(const CsnRule& rule);
    static void CollectRecursive(const CsnNode& node, bool inErrorBranch,
                                 std::set<const CsnRule*>& seen, CsnMembers& members);

    std::map<const CsnRule*, CsnMembers> rules_;
};

/// The name of the member that `field` is an occurrence of.
[[nodiscard]] std::string CsnMemberName(const CsnNode& field);

}  // namespace quorvane::compiler
