// A struct costs one check of the buffer's room where it can: indentation, label, location, number
// and line end are written as whole words under it, and only what may be of any length asks for
// more, and behind it for the rest of the lines anew. Each function writes at `at`, where the
// buffer's slack stands open, and leaves at least as much room for the line end.

#include "reflect/render.h"

#include "reflect/record_values.h"

namespace quorvane::reflect {
namespace {

using bits::Cell;

// The most octets of a line behind its label if it holds a number: location, number, a comma and
// the line end.
constexpr std::size_t kMostNumber = kMostLocation + kMostDigits + 1 + 2;
static_assert(kMostNumber + sizeof(ReadyNumber) <= TextBuffer::kSlack);
static_assert(kCopyStep <= TextBuffer::kSlack);

template <LineEnd kEnd>
class Renderer {
  public:
    Renderer(TextBuffer& stream, const TypeTables& tables) : stream_(stream), tables_(tables) {}

    char* PutValue(char* at, const TypeRow& row, const Cell& cell, std::size_t indent) {
        switch (row.kind) {
            case TypeKind::kInteger:
                return PutInteger(at, NumberCell(row, cell));
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
        return at;  // unreachable: each kind returns
    }

    [[nodiscard]] bool IsPlain() const { return plain_; }

  private:
    static char* PutInteger(char* at, const Cell& held) {
        return PutSigned(PutLocation(at, held.location), static_cast<std::int32_t>(held.number));
    }

    // A call of its own would be 1 % of one of layer 3.
    [[gnu::always_inline]] char* PutEnumerated(char* at, const TypeRow& row, const Cell& held) {
        at = PutLocation(at, held.location);
        const EnumRow& values = tables_.enums[row.first];
        if (const EnumValueRow* listed = tables_.FindValue(values, held.number)) {
            plain_ &= listed->plain;
            return PutText(at, listed->rendered);
        }
        if (!values.hasOtherText) {
            return PutUnsigned(at, held.number);
        }
        plain_ &= values.otherIsPlain;
        at = PutLiteral(PutText(at, values.otherText), " (");
        at = PutUnsigned(at, held.number);
        return PutLiteral(at, ")");
    }

    char* PutBinary(char* at, const TypeRow& row, const Cell& cell) {
        const std::uint32_t bits = BitCount(row, cell);
        const std::uint32_t held = HeldBitCount(row, cell);
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
        const TypeRow& item = tables_.types[row.first];
        // Nearly all items, which are worth no call of their own.
        const bool integers = item.kind == TypeKind::kInteger;
        at = PutLineEnd<kEnd>(PutLiteral(at, "["));
        const std::uint32_t count = ItemCount(cell);
        for (std::uint32_t index = 0; index < count; ++index) {
            at = PutIndent(stream_.RoomAt(at, 2 * (indent + 1)), indent + 1);
            const Cell& held = cell.cells[index];
            at = integers ? PutInteger(at, NumberCell(item, held))
                          : PutValue(at, item, held, indent + 2);
            if (index + 1 < count) {
                *at++ = ',';
            }
            at = PutLineEnd<kEnd>(at);
        }
        return PutLiteral(PutIndent(stream_.RoomAt(at, 2 * indent), indent), "]");
    }

    char* PutStruct(char* at, const TypeRow& row, const Cell& cell, std::size_t indent) {
        const std::size_t inner = indent + 1;
        const std::size_t room = row.size + row.count * (2 * inner + kMostNumber) + 2 * indent;
        at = stream_.RoomAt(PutLineEnd<kEnd>(PutLiteral(at, "{")), room);
        const Cell* next = &CellAt(cell.cells, 0);
        const std::ptrdiff_t step = cell.cells == nullptr ? 0 : 1;
        for (const ElementRow& element : tables_.ElementsOf(row)) {
            const Cell& member = *next;
            next += step;
            if (element.optional && !member.present) {
                // Ahead of the label, which makes a short loop of absent members in a row.
                at = PutPadded(PutIndent(at, inner), tables_.TextAt(element.label));
                at = PutMissing(at);
                continue;
            }
            at = PutPadded(PutIndent(at, inner), tables_.TextAt(element.label));
            if (element.line == LineKind::kInteger) {
                at = PutInteger(at, member);
            } else {
                const TypeRow& type = tables_.types[element.type];
                at = element.line == LineKind::kEnumerated ? PutEnumerated(at, type, member)
                                                           : PutValue(at, type, member, inner);
                at = stream_.RoomAt(at, room);
            }
            at = PutLineEnd<kEnd>(at);
        }
        return PutLineEnd<kEnd>(PutLiteral(PutIndent(at, indent), "}"));
    }

    static char* PutMissing(char* at) {
        if constexpr (kEnd == LineEnd::kJson) {
            return PutLiteral(at, "MISSING\\n");
        } else {
            return PutLiteral(at, "MISSING\n");
        }
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
        return PutValue(PutText(at, chosen.label), tables_.types[chosen.type], *choice.body,
                        indent + 1);
    }

    TextBuffer& stream_;
    const TypeTables& tables_;
    bool plain_ = true;  // names are, texts of enumerations need not be
};

template <LineEnd kEnd>
bool Append(TextBuffer& stream, const TypeTables& tables, std::uint16_t type, const Cell& cell,
            std::uint32_t indent) {
    Renderer<kEnd> renderer(stream, tables);
    stream.Advance(renderer.PutValue(stream.Room(0), tables.types[type], cell, indent));
    return renderer.IsPlain();
}

}  // namespace

bool AppendText(TextBuffer& stream, const TypeTables& tables, std::uint16_t type, const Cell& cell,
                std::uint32_t indent, LineEnd lineEnd) {
    return lineEnd == LineEnd::kPlain ? Append<LineEnd::kPlain>(stream, tables, type, cell, indent)
                                      : Append<LineEnd::kJson>(stream, tables, type, cell, indent);
}

}  // namespace quorvane::reflect
