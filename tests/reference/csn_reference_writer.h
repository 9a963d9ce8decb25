#pragma once

// A second writer of CSN.1 that judges the encoder and the description compiler: it walks the
// resolved syntax tree with a record, in plain recursion, with no code and no stack.
//
// What it takes for the meaning of a description, besides what the reference reader does:
//   - A field is written if the record has it. What the record has not fails where it stands.
//   - A field without fields inside is written whole; then its bits are read by what is inside,
//     which has to end where they do.
//   - Of a choice in an open repetition only branches with fields are written, unless a field that
//     always stands beside the choice ends the repetition.
//   - What is read a second time is not written again.

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "compiler/csn/csn_types.h"
#include "reference/csn_slow_record.h"
#include "reference/csn_walk.h"

namespace quorvane::reference {

/// Writes records of one structure. What it is made of must outlive it.
class ReferenceWriter {
  public:
    ReferenceWriter(const compiler::CsnTypeTables& tables,
                    const compiler::CsnStructureTypes& structure)
        : tables_(tables), structure_(structure) {}

    /// The bits that encoding the record writes from bit `start` on, '0' and '1' each; nothing if
    /// the structure cannot hold it.
    [[nodiscard]] std::optional<std::string> Write(const SlowValue& record, std::int32_t start);

  private:
    friend class Writer;

    /// Whether a member is in all that the node stands for.
    bool AlwaysHasAField(const compiler::CsnNode& node);

    const compiler::CsnTypeTables& tables_;
    const compiler::CsnStructureTypes& structure_;
    Branches branches_;
    std::map<const compiler::CsnNode*, bool> alwaysHaveAField_;
};

}  // namespace quorvane::reference
