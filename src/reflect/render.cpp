// A line costs one check of the buffer's room where it can: indentation, label, location, number
// and line end are written as whole words under it, and only texts and octets of any length ask for
// more. Each function writes at `at`, where the buffer's slack stands open, and leaves at least as
// much room for the line end.

#include "reflect/render.h"

#include <algorithm>

#include "reflect/record_values.h"

namespace quorvane::reflect {
namespace {

using bits::Cell;

// A location and a number fit in the slack, with what a number overwrites, a comma and the line
// end.
static_assert(kMostLocation + kMostDigits + 4 + 1 + 2 <= TextBuffer::kSlack);
static_assert(kCopyStep <= TextBuffer::kSlack);

template <LineEnd kEnd>
class Renderer {
  public:
    Renderer(TextBuffer& stream, const TypeTables& tables) : stream_(stream), tables_(tables) {}

    char* PutValue(char* at, std::uint16_t type, const Cell& cell, std::size_t indent) {
        const TypeRow& row = tables_.types[type];
        // Nearly all items of sequences, which are worth no call of their own.
        if (row.kind == TypeKind::kInteger) {
            return PutInteger(at, NumberCell(row, cell));
        }
        return PutOther(at, row, cell, indent);
    }

    [[nodiscard]] bool IsPlain() const { return plain_; }

  private:
    static char* PutInteger(char* at, const Cell& held) {
        return PutSigned(PutLocation(at, held.location), static_cast<std::int32_t>(held.number));
    }

    char* PutOther(char* at, const TypeRow& row, const Cell& cell, std::size_t indent) {
        switch (row.kind) {
            case TypeKind::kInteger:
                break;
            case TypeKind::kEnumerated:
                return PutEnumerated(at, row, NumberCell(row, cell));
            case TypeKind::kBinary:
                return PutBinary(at, row, cell);
            case TypeKind::kSequence:
                return PutSequence(at, row, cell, indent);
            case TypeKind::kStruct:
                return PutStruct(at, row, cell, indent);
            case TypeKind::kUnion:
                return PutUnion(at, row, cell, indent);
        }
        return at;
    }

    char* PutEnumerated(char* at, const TypeRow& row, const Cell& held) {
        at = PutLocation(at, held.location);
        const EnumRow& values = tables_.enums[row.first];
        if (const EnumValueRow* listed = tables_.FindValue(values, held.number)) {
            plain_ = plain_ && listed->plain;
            return PutText(at, listed->rendered);
        }
        if (!values.hasOtherText) {
            return PutUnsigned(at, held.number);
        }
        plain_ = plain_ && values.otherIsPlain;
        at = PutLiteral(PutText(at, values.otherText), " (");
        at = PutUnsigned(at, held.number);
        return PutLiteral(at, ")");
    }

    char* PutBinary(char* at, const TypeRow& row, const Cell& cell) {
        const std::uint32_t bits = BitCount(row, cell);
        const std::uint32_t held = std::min(BitCount(cell), bits);
        at = stream_.RoomAt(PutLocation(at, cell.location), 3 * std::size_t{bits::OctetsOf(bits)});
        if (bits == 0) {
            return at;
        }
        // Whole octets of the record, the rest of its last one, zeros up to the field's end.
        char* const start = at;
        at = PutHex(at, cell.octets, held / 8);
        if (held % 8 != 0) {
            const auto last =
                static_cast<std::uint8_t>(cell.octets[held / 8] & ~(0xFFU >> held % 8));
            at = PutNextOctet(start, at, last);
        }
        for (std::uint32_t octet = bits::OctetsOf(held); octet < bits::OctetsOf(bits); ++octet) {
            at = PutNextOctet(start, at, 0);
        }
        return at;
    }

    static char* PutNextOctet(const char* start, char* at, std::uint8_t octet) {
        if (at != start) {
            *at++ = ' ';
        }
        return PutHex(at, &octet, 1);
    }

    char* PutSequence(char* at, const TypeRow& row, const Cell& cell, std::size_t indent) {
        at = PutLineEnd<kEnd>(PutLiteral(at, "["));
        const std::uint32_t count = ItemCount(cell);
        for (std::uint32_t index = 0; index < count; ++index) {
            at = PutIndent(stream_.RoomAt(at, 2 * (indent + 1)), indent + 1);
            at = PutValue(at, row.first, cell.cells[index], indent + 2);
            if (index + 1 < count) {
                *at++ = ',';
            }
            at = PutLineEnd<kEnd>(at);
        }
        return PutLiteral(PutIndent(stream_.RoomAt(at, 2 * indent), indent), "]");
    }

    char* PutStruct(char* at, const TypeRow& row, const Cell& cell, std::size_t indent) {
        at = PutLineEnd<kEnd>(PutLiteral(at, "{"));
        const std::size_t inner = indent + 1;
        const Cell* next = &CellAt(cell.cells, 0);
        const std::ptrdiff_t step = cell.cells == nullptr ? 0 : 1;
        for (const ElementRow& element : tables_.ElementsOf(row)) {
            const Cell& member = *next;
            next += step;
            const std::string_view label = tables_.TextAt(element.label);
            at = PutIndent(stream_.RoomAt(at, 2 * inner + label.size()), inner);
            at = PutPadded(at, label);
            if (element.optional && !member.present) {
                at = PutLiteral(at, "MISSING");
            } else if (element.integer) {
                at = PutInteger(at, member);
            } else {
                at = PutValue(at, element.type, member, inner);
            }
            at = PutLineEnd<kEnd>(at);
        }
        at = PutLiteral(PutIndent(stream_.RoomAt(at, 2 * indent), indent), "}");
        return PutLineEnd<kEnd>(at);
    }

    char* PutText(char* at, TextRef ref) {
        const std::string_view text = tables_.TextAt(ref);
        return PutPadded(stream_.RoomAt(at, text.size()), text);
    }

    char* PutUnion(char* at, const TypeRow& row, const Cell& cell, std::size_t indent) {
        if (row.count == 0) {
            return PutLiteral(at, "NOT SET");
        }
        const Choice choice = ChoiceOf(row, cell);
        const ElementRow& chosen = tables_.ElementsOf(row)[choice.index];
        return PutValue(PutText(at, chosen.label), chosen.type, *choice.body, indent + 1);
    }

    TextBuffer& stream_;
    const TypeTables& tables_;
    bool plain_ = true;  // names are, texts of enumerations need not be
};

template <LineEnd kEnd>
bool Append(TextBuffer& stream, const TypeTables& tables, std::uint16_t type, const Cell& cell,
            std::uint32_t indent) {
    Renderer<kEnd> renderer(stream, tables);
    stream.Advance(renderer.PutValue(stream.Room(0), type, cell, indent));
    return renderer.IsPlain();
}

}  // namespace

bool AppendText(TextBuffer& stream, const TypeTables& tables, std::uint16_t type, const Cell& cell,
                std::uint32_t indent, LineEnd lineEnd) {
    return lineEnd == LineEnd::kPlain ? Append<LineEnd::kPlain>(stream, tables, type, cell, indent)
                                      : Append<LineEnd::kJson>(stream, tables, type, cell, indent);
}

}  // namespace quorvane::reflect
