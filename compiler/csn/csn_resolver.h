#pragma once

// Binds the names of CSN.1 descriptions: references to rules, counts to the fields that tell them,
// actions. Decides which rules get code of their own, and refuses what could not run.

#include <optional>
#include <set>
#include <string>

#include "compiler/csn/csn_syntax.h"
#include "compiler/reporter.h"

namespace quorvane::compiler {

/// Resolves `syntax`, which has been parsed without a mistake. Mistakes go to the reporter. Of the
/// structures in common files those with the names `wanted` stay.
void ResolveCsn(Reporter& reporter, CsnSyntax& syntax, const std::set<std::string>& wanted = {});

/// Refuses rules that are nested too deeply with those that they refer to: the passes behind go
/// down by recursion.
void RefuseDeepRules(Reporter& reporter, CsnSyntax& syntax);

/// Refuses resolved descriptions that could not run: repetitions that never end, rules that call
/// themselves, or others for ever, without reading on, counts that are not known where they are
/// used.
void CheckCsn(Reporter& reporter, CsnSyntax& syntax);

/// The rule of a structure.
inline const CsnRule& EntryRule(const CsnSection& section) {
    return *section.entry;
}

/// The bits that `node` of a resolved description always takes, or nothing if that varies.
[[nodiscard]] std::optional<std::uint64_t> FixedWidth(const CsnNode& node);

/// Whether `node` of a checked description can match the empty string when reading.
[[nodiscard]] bool MayBeEmpty(const CsnNode& node);

/// Whether fields are delivered inside `node`, in rules that it refers to too.
[[nodiscard]] bool HasFields(const CsnNode& node);

/// Whether running `node` leaves tags behind.
[[nodiscard]] bool SetsTags(const CsnNode& node);

/// Whether `node` is `{ 0 | 1 }` or `{ L | H }`: one bit of any value.
[[nodiscard]] bool IsEitherBit(const CsnNode& node);

}  // namespace quorvane::compiler
