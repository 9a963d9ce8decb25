#pragma once

// A second reader of CSN.1 that judges the machine and the description compiler: it walks the
// resolved syntax tree in plain recursion, with no code, no stack and no tables. It only reads.
//
// What it takes for the meaning of a description:
//   - A choice takes the first branch that matches; it never comes back for another one. Branches
//     with fields are tried first, then those without, then those that may be empty.
//   - A repetition takes as many iterations as match, and gives none of them back.
//   - A truncated group keeps its elements up to the first one that does not match.
//   - `A - B` refuses A if B matches a beginning of A's bits.
//   - `A & B` reads A's bits again as B. What follows B goes on where B stopped, and the end of A's
//     bits stays the end of what may be read.
//   - What does not match leaves no field behind if something else is tried in its place. The end
//     set by '&' or by an action stays.

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "compiler/csn/csn_syntax.h"
#include "reference/csn_walk.h"

namespace quorvane::reference {

/// A place where a field opens or closes.
struct Event {
    std::string name;         // of the member; empty where a field closes
    std::int32_t occurrence;  // how many of this name came before under the same parent; -1 where a
                              // field closes
    std::int32_t position;
    std::int32_t depth;  // open fields around it; one more where a field closes

    friend bool operator==(const Event&, const Event&) = default;
};

struct Reading {
    bool matches = false;
    std::int32_t taken = 0;     // bits, if it matches
    std::vector<Event> events;  // of what was accepted
};

/// Reads by one rule of a resolved description, which must outlive it. All fields of one name under
/// one parent must have the same width, or all a varying one.
class Reference {
  public:
    explicit Reference(const compiler::CsnRule& rule) : rule_(rule) {}

    /// Reads `bits`, '0' and '1' each, from bit `start` on.
    [[nodiscard]] Reading Read(const std::string& bits, std::int32_t start = 0);

  private:
    friend class Reader;

    /// The name of the member that a field is.
    const std::string& NameOf(const compiler::CsnNode& field);

    const compiler::CsnRule& rule_;
    std::map<const compiler::CsnNode*, std::string> names_;
    Branches branches_;
};

}  // namespace quorvane::reference
