#include "facade/json_fields.h"

#include "bits/bit_buffer.h"
#include "facade/field_status.h"
#include "facade/json_string.h"
#include "reflect/record_values.h"
#include "reflect/text_pieces.h"

namespace quorvane::facade {
namespace {

using bits::Cell;
using reflect::PutLiteral;
using reflect::PutPadded;
using reflect::PutUnsigned;
using reflect::TypeKind;
using reflect::TypeRow;

// What stands behind a value fits in the slack, with what a number overwrites and a comma.
static_assert(sizeof R"(,"at":[65535,65535],"status":"refused"})" + 3 + 1 <=
              reflect::TextBuffer::kSlack);

char* PutPlace(char* at, std::uint32_t offset, std::uint32_t length) {
    at = PutUnsigned(PutLiteral(at, R"(,"at":[)"), offset);
    *at++ = ',';
    return PutLiteral(PutUnsigned(at, length), "]");
}

char* PutOctets(char* at, std::span<const std::uint8_t> octets) {
    for (const std::uint8_t octet : octets) {
        at = reflect::PutHexPair(at, octet);
    }
    return at;
}

class FieldsWriter {
  public:
    FieldsWriter(reflect::TextBuffer& text, const reflect::TypeTables& tables, bool made)
        : text_(text), tables_(tables), made_(made) {}

    char* PutMembers(char* at, const TypeRow& row, const Cell& cell) {
        at = PutLiteral(text_.RoomAt(at, 0), "{");
        const auto elements = tables_.ElementsOf(row);
        for (std::size_t index = 0; index < elements.size(); ++index) {
            const Cell& member = reflect::CellAt(cell.cells, index);
            const FieldStatus status = StatusOf(tables_, row, cell, index, member, made_);
            if (status != FieldStatus::kAbsent) {
                at = PutField(PutName(at, elements[index]), tables_.types[elements[index].type],
                              member, status);
                *at++ = ',';
            }
        }
        return PutEndAsJson(text_, at, '}');
    }

  private:
    char* PutField(char* at, const TypeRow& row, const Cell& cell, FieldStatus status) {
        at = PutContents(PutLiteral(text_.RoomAt(at, 0), "{"), row, cell);
        at = text_.RoomAt(at, 0);
        if (const bits::FieldLocator location = reflect::LocationOf(row, cell); location != 0) {
            at = PutPlace(at, location >> 16, location & 0xFFFFU);
        }
        if (status == FieldStatus::kDefault) {
            at = PutLiteral(at, R"(,"status":"default")");
        } else if (status == FieldStatus::kRefused) {
            at = PutLiteral(at, R"(,"status":"refused")");
        }
        return PutLiteral(at, "}");
    }

    char* PutContents(char* at, const TypeRow& row, const Cell& cell) {
        switch (row.kind) {
            case TypeKind::kInteger:
                return PutValue(at, reflect::NumberCell(row, cell));
            case TypeKind::kEnumerated:
                return PutWords(PutValue(at, reflect::NumberCell(row, cell)), row,
                                reflect::NumberCell(row, cell).number);
            case TypeKind::kBinary:
                return PutBits(at, row, cell);
            case TypeKind::kStruct:
                return PutMembers(PutLiteral(at, R"("fields":)"), row, cell);
            case TypeKind::kUnion:
                return PutChoice(PutLiteral(at, R"("choice":{)"), row, cell);
            case TypeKind::kSequence:
                break;
        }
        return PutItems(PutLiteral(at, R"("items":[)"), row, cell);
    }

    static char* PutValue(char* at, const Cell& cell) {
        return PutUnsigned(PutLiteral(at, R"("value":)"), cell.number);
    }

    char* PutWords(char* at, const TypeRow& row, std::uint32_t number) {
        const reflect::EnumRow& values = tables_.enums[row.first];
        const reflect::EnumValueRow* listed = tables_.FindValue(values, number);
        const std::string_view words =
            listed != nullptr ? tables_.TextOf(*listed) : tables_.TextAt(values.otherText);
        if (words.empty()) {
            return at;
        }
        at = PutLiteral(text_.RoomAt(at, JsonStringRoom(words.size())), R"(,"words":)");
        if (listed != nullptr ? !listed->plain : !values.otherIsPlain) {
            return PutJsonString(at, words);
        }
        return PutLiteral(PutPadded(PutLiteral(at, "\""), words), "\"");
    }

    char* PutBits(char* at, const TypeRow& row, const Cell& cell) {
        const std::uint32_t count = reflect::HeldBitCount(row, cell);
        return PutBitsAsJson(text_, at, {cell.octets, bits::OctetsOf(count)}, count);
    }

    char* PutItems(char* at, const TypeRow& row, const Cell& cell) {
        const TypeRow& item = tables_.types[row.first];
        const std::uint32_t count = reflect::ItemCount(cell);
        for (std::uint32_t index = 0; index < count; ++index) {
            const Cell& held = cell.cells[index];
            at = PutField(at, item, held, StatusOf(tables_, row, cell, index, held, made_));
            *at++ = ',';
        }
        return PutEndAsJson(text_, at, ']');
    }

    char* PutChoice(char* at, const TypeRow& row, const Cell& cell) {
        if (row.count > 0) {
            const reflect::Choice choice = reflect::ChoiceOf(row, cell);
            const reflect::ElementRow& chosen = tables_.ElementsOf(row)[choice.index];
            at = PutField(PutName(at, chosen), tables_.types[chosen.type], *choice.body,
                          StatusOf(tables_, row, cell, choice.index, *choice.body, made_));
        }
        return PutEndAsJson(text_, at, '}');
    }

    char* PutName(char* at, const reflect::ElementRow& element) {
        const std::string_view name = tables_.NameOf(element);
        at = PutLiteral(text_.RoomAt(at, name.size()), "\"");
        return PutLiteral(PutPadded(at, name), "\":");
    }

    reflect::TextBuffer& text_;
    const reflect::TypeTables& tables_;
    const bool made_;
};

}  // namespace

char* PutMembersAsJson(reflect::TextBuffer& text, char* at, const reflect::TypeTables& tables,
                       const TypeRow& row, const Cell& cell, bool made) {
    return FieldsWriter(text, tables, made).PutMembers(at, row, cell);
}

char* PutEndAsJson(reflect::TextBuffer& text, char* at, char bracket) {
    at = text.RoomAt(at[-1] == ',' ? at - 1 : at, 0);
    *at++ = bracket;
    return at;
}

char* PutBitsAsJson(reflect::TextBuffer& text, char* at, std::span<const std::uint8_t> octets,
                    std::uint32_t bitCount) {
    at = PutLiteral(text.RoomAt(at, 2 * octets.size()), R"("hex":")");
    return PutUnsigned(PutLiteral(PutOctets(at, octets), R"(","bits":)"), bitCount);
}

char* PutPlaceAsJson(reflect::TextBuffer& text, char* at, const Place& place) {
    return PutPlace(text.RoomAt(at, 0), place.offset, place.length);
}

}  // namespace quorvane::facade
