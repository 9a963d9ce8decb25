#pragma once

// The skip table of a family: how an element that a message has no field for is passed over. Rows
// follow from the fields of all messages; the description states what differs from that.

#include <map>

#include "compiler/resolver.h"

namespace quorvane::compiler {

class SkipTable {
  public:
    explicit SkipTable(Reporter& reporter) : reporter_(reporter) {}

    /// Takes note of a field with an identifier.
    void Note(const FieldSyntax& field, const iecodec::FieldRow& row);

    /// Puts the tables in the order of their identifiers, as the binary search over them needs:
    /// `rows`, and in `unknown` those of elements that no message knows.
    void Build(const std::vector<SkipRowSyntax>& stated, std::vector<iecodec::IeFormatRow>& rows,
               std::vector<iecodec::IeFormatRow>& unknown);

  private:
    struct Entry {
        iecodec::IeFormatRow row{};
        const FieldSyntax* field = nullptr;
        const FieldSyntax* other = nullptr;  // one with another format
        bool stated = false;
    };

    [[nodiscard]] std::uint8_t IeiOf(const SkipRowSyntax& syntax);
    void State(const SkipRowSyntax& syntax);
    void StateUnknown(const SkipRowSyntax& syntax);

    Reporter& reporter_;
    std::map<std::uint8_t, Entry> entries_;
    std::map<std::uint8_t, iecodec::IeFormatRow> unknown_;
};

}  // namespace quorvane::compiler
