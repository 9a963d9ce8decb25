#include "compiler/skip_table.h"

namespace quorvane::compiler {
namespace {

using iecodec::IeFormatRow;

IeFormatRow RowOf(std::uint8_t iei, bool half, std::int32_t size) {
    return {iei, static_cast<std::uint8_t>(half ? 0xF0 : 0xFF), size};
}

bool Same(const IeFormatRow& a, const IeFormatRow& b) {
    return a.mask == b.mask && a.size == b.size;
}

}  // namespace

void SkipTable::Note(const FieldSyntax& field, const iecodec::FieldRow& row) {
    const iecodec::FieldFormatInfo info = InfoOf(row.format);
    const std::int32_t whole = info.ieiWidth + row.width;
    const IeFormatRow format =
        RowOf(row.iei, field.halfIei, info.lengthWidth != 0 ? -info.lengthWidth : whole);
    const auto [entry, isNew] = entries_.emplace(row.iei, Entry{format, &field, nullptr, false});
    if (!isNew && !Same(entry->second.row, format)) {
        entry->second.other = &field;
    }
}

std::uint8_t SkipTable::IeiOf(const SkipRowSyntax& syntax) {
    return Narrow<std::uint8_t>(reporter_, syntax.iei, {0, 0xFF, "of an identifier"});
}

void SkipTable::State(const SkipRowSyntax& syntax) {
    const std::uint8_t iei = IeiOf(syntax);
    reporter_.ErrorIf(syntax.half && (iei & 0x0F) != 0, syntax.iei.span,
                      "the identifier of a half-octet row ends in 0");
    const IeFormatRow row = RowOf(iei, syntax.half, syntax.size);
    Entry& entry = entries_[iei];
    if (entry.stated) {
        reporter_.Error(syntax.iei.span, "the identifier stands in the skip table already");
    } else if (entry.field == nullptr ? row.size == 0
                                      : entry.other == nullptr && Same(entry.row, row)) {
        reporter_.Error(syntax.iei.span,
                        "this follows from the messages; only what differs is stated");
    }
    entry.row = row;
    entry.stated = true;
}

void SkipTable::StateUnknown(const SkipRowSyntax& syntax) {
    const std::uint8_t iei = IeiOf(syntax);
    if (!unknown_.emplace(iei, RowOf(iei, false, syntax.size)).second) {
        reporter_.Error(syntax.iei.span, "an unknown element has this identifier already");
    } else if (syntax.size == iecodec::UnknownIeFormat(iei)) {
        reporter_.Error(syntax.iei.span,
                        "this follows from the identifier; only what differs is stated");
    } else if (const auto known = entries_.find(iei);
               known != entries_.end() && known->second.row.size != 0) {
        reporter_.Error(syntax.iei.span, "the skip table has a row for this identifier");
    }
}

void SkipTable::Build(const std::vector<SkipRowSyntax>& stated, std::vector<IeFormatRow>& rows,
                      std::vector<IeFormatRow>& unknown) {
    for (const SkipRowSyntax& row : stated) {
        if (!row.unknown) {
            State(row);
        }
    }
    for (const SkipRowSyntax& row : stated) {
        if (row.unknown) {
            StateUnknown(row);
        }
    }
    for (const auto& [iei, row] : unknown_) {
        unknown.push_back(row);
    }
    const auto report = [&](const FieldSyntax& at, const FieldSyntax& other) {
        reporter_.Error(at.iei->span, "'" + other.name.text +
                                          "' has this identifier with another format; state in "
                                          "'skip' which of them passes over it");
    };
    for (const auto& [iei, entry] : entries_) {
        if (entry.other != nullptr && !entry.stated) {
            report(*entry.field, *entry.other);
            report(*entry.other, *entry.field);
        }
        if (entry.row.size != 0) {
            rows.push_back(entry.row);
        }
    }
}

}  // namespace quorvane::compiler
