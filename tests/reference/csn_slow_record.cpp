#include "reference/csn_slow_record.h"

#include <algorithm>
#include <optional>
#include <sstream>

namespace quorvane::reference {
namespace {

using Kind = csn::CsnFieldKind;

/// Finds the values that the fields of a run stand for.
class Places {
  public:
    Places(const csn::CsnStructure& structure, const SlowMachine& machine)
        : structure_(structure), machine_(machine) {}

    /// Null for a tag outside of the structure's range.
    [[nodiscard]] const csn::CsnFieldRow* RowOf(const SlowRecord& record) const {
        const std::int64_t index = std::int64_t{record.tag} - structure_.firstTag;
        if (index < 0 || index >= static_cast<std::int64_t>(structure_.fields.size())) {
            return nullptr;
        }
        return &structure_.fields[static_cast<std::size_t>(index)];
    }

    /// Which item of its sequence the record with that index is: its occurrence, or, where several
    /// fields share the sequence, how many of them came before under the same parent.
    [[nodiscard]] std::size_t ItemOf(std::size_t index) const {
        const SlowRecord& record = machine_.records[index];
        const csn::CsnFieldRow& row = *RowOf(record);
        if (!row.mixed) {
            return static_cast<std::size_t>(record.occurrence);
        }
        std::size_t item = 0;
        for (std::size_t before = 0; before < index; ++before) {
            const SlowRecord& other = machine_.records[before];
            const csn::CsnFieldRow* otherRow = RowOf(other);
            if (other.occurrence >= 0 && other.parent == record.parent && otherRow != nullptr &&
                otherRow->element == row.element) {
                ++item;
            }
        }
        return item;
    }

    /// The struct in `root` that the record with that index is a member of; null if it is none's.
    template <typename Value>
    Value* Around(std::size_t index, Value& root) const {
        const std::optional<std::size_t> parent = machine_.records[index].parent;
        return parent ? Inside(*parent, root) : &root;
    }

  private:
    /// The struct that a field's own fields belong to.
    template <typename Value>
    Value* Inside(std::size_t index, Value& root) const {
        const csn::CsnFieldRow* row = RowOf(machine_.records[index]);
        if (row == nullptr) {
            return nullptr;
        }
        Value* around = Around(index, root);
        if (row->kind == Kind::kNone) {
            return around;
        }
        if (row->kind != Kind::kStruct || around == nullptr || around->members.empty()) {
            return nullptr;
        }
        Value& member = around->members.at(row->element);
        return row->bound > 0 ? &member.items.at(ItemOf(index)) : &member;
    }

    const csn::CsnStructure& structure_;
    const SlowMachine& machine_;
};

std::uint32_t LocationOf(std::int32_t position, std::int32_t length) {
    const bool fits = position >= 0 && position <= 65535 && length >= 0 && length <= 65535;
    return fits ? static_cast<std::uint32_t>(position) << 16U | static_cast<std::uint32_t>(length)
                : 0;
}

void StoreBits(const SlowMachine& machine, const csn::CsnFieldRow& row, std::int32_t position,
               std::int32_t length, SlowValue& value) {
    value.location = row.located ? LocationOf(position, length) : 0;
    const std::int64_t stored = std::min<std::int64_t>(length, row.mostBits);
    if (stored <= 0) {
        return;
    }
    value.bits.clear();
    for (std::int64_t bit = 0; bit < stored; ++bit) {
        value.bits += machine.Read(position + bit, 1) != 0 ? '1' : '0';
    }
}

/// A field that the record has no member for: its fixed value, or zeros.
void WriteUnstored(SlowMachine& machine, const SlowEvent& event) {
    if (event.literalWidth >= 0) {
        machine.Write(machine.bitPos, event.literalValue, event.literalWidth);
    } else {
        machine.Write(machine.bitPos, 0, event.bitLength);
    }
}

void WriteBits(SlowMachine& machine, SlowEvent& event, const csn::CsnFieldRow& row,
               const std::string& stored) {
    std::string bits = stored.substr(0, row.mostBits);
    if (row.fixed) {
        bits.resize(row.mostBits, '0');
    }
    for (std::size_t bit = 0; bit < bits.size(); ++bit) {
        machine.Write(machine.bitPos + static_cast<std::int64_t>(bit), bits[bit] == '1' ? 1 : 0, 1);
    }
    event.bitLength = static_cast<std::int32_t>(bits.size());
}

std::int32_t Supply(const csn::CsnStructure& structure, const SlowValue& root, SlowMachine& machine,
                    SlowEvent& event) {
    constexpr std::int32_t kGoOn = 0;
    constexpr std::int32_t kNotThere = 1;
    constexpr std::int32_t kGiveUp = 2;
    static const SlowValue kNothing;
    if (machine.records.empty()) {
        return kGiveUp;
    }
    const std::size_t index = machine.records.size() - 1;
    const SlowRecord& record = machine.records[index];
    if (record.occurrence < 0) {
        return kGoOn;
    }
    const Places places(structure, machine);
    const csn::CsnFieldRow* row = places.RowOf(record);
    if (row == nullptr || row->kind == Kind::kNone) {
        WriteUnstored(machine, event);
        return kGoOn;
    }
    const SlowValue* around = places.Around(index, root);
    const SlowValue* value = around == nullptr || around->members.empty()
                                 ? &kNothing
                                 : &around->members.at(row->element);
    if (row->optional && !value->present) {
        return kNotThere;
    }
    if (row->bound > 0) {
        const std::size_t item = places.ItemOf(index);
        if (item >= value->items.size()) {
            return kNotThere;
        }
        value = &value->items[item];
    } else if (record.occurrence > 0 && !row->repeats) {
        return kNotThere;
    }
    if (row->kind == Kind::kInteger) {
        machine.Write(machine.bitPos, value->number, row->width);
        event.bitLength = row->width;
    } else if (row->kind == Kind::kBinary) {
        WriteBits(machine, event, *row, value->bits);
    }
    return kGoOn;
}

}  // namespace

std::string TextOf(const SlowValue& value) {
    if (value == SlowValue{}) {
        return "-";
    }
    std::ostringstream text;
    text << (value.present ? "+" : "") << value.number;
    if (!value.bits.empty()) {
        text << "'" << value.bits << "'";
    }
    if (value.location != 0) {
        text << "@" << std::hex << value.location;
    }
    if (!value.members.empty()) {
        text << "{";
        for (const SlowValue& member : value.members) {
            text << " " << TextOf(member);
        }
        text << " }";
    }
    if (!value.items.empty()) {
        text << "[";
        for (const SlowValue& item : value.items) {
            text << " " << TextOf(item);
        }
        text << " ]";
    }
    return text.str();
}

SlowValue ValueOf(const reflect::TypeTables& tables, std::uint16_t type, const bits::Cell& cell) {
    const reflect::TypeRow& row = tables.types[type];
    SlowValue value;
    value.location = cell.location;
    value.present = cell.present;
    switch (row.kind) {
        case reflect::TypeKind::kInteger:
        case reflect::TypeKind::kEnumerated:
            value.number = cell.number;
            break;
        case reflect::TypeKind::kBinary:
            for (std::uint32_t bit = 0; bit < cell.number; ++bit) {
                value.bits += (cell.octets[bit / 8] & 0x80U >> bit % 8) != 0 ? '1' : '0';
            }
            break;
        case reflect::TypeKind::kSequence:
            for (std::uint32_t item = 0; item < cell.number; ++item) {
                value.items.push_back(ValueOf(tables, row.first, cell.cells[item]));
            }
            break;
        case reflect::TypeKind::kStruct:
        case reflect::TypeKind::kUnion:  // of which structures of CSN.1 have none
            for (std::size_t index = 0; cell.cells != nullptr && index < row.count; ++index) {
                value.members.push_back(
                    ValueOf(tables, tables.ElementsOf(row)[index].type, cell.cells[index]));
            }
            break;
    }
    return value;
}

std::int32_t StoreRecords(const csn::CsnStructure& structure, const SlowMachine& machine,
                          SlowValue& root) {
    constexpr std::int32_t kNoRoom = -13;
    const Places places(structure, machine);
    root.members.resize(structure.memberCount);
    for (std::size_t index = 0; index < machine.records.size(); ++index) {
        const SlowRecord& record = machine.records[index];
        const csn::CsnFieldRow* row = record.occurrence < 0 ? nullptr : places.RowOf(record);
        if (row == nullptr || row->kind == Kind::kNone) {
            continue;
        }
        SlowValue* around = places.Around(index, root);
        if (around == nullptr) {
            continue;
        }
        SlowValue* value = &around->members.at(row->element);
        value->present = value->present || row->optional;
        if (row->bound > 0) {
            const std::size_t item = places.ItemOf(index);
            if (item + 1 > row->bound) {
                return kNoRoom;
            }
            value->items.resize(item + 1);
            value = &value->items[item];
        }
        if (row->kind == Kind::kInteger) {
            value->number = machine.Read(record.bitPos, row->width);
            value->location = row->located ? LocationOf(record.bitPos, row->width) : 0;
        } else if (row->kind == Kind::kBinary) {
            const bool last = index + 1 == machine.records.size();
            const std::int32_t end = last ? record.bitPos : machine.records[index + 1].bitPos;
            StoreBits(machine, *row, record.bitPos, end - record.bitPos, *value);
        } else if (row->kind == Kind::kStruct) {
            if (row->repeats) {
                value->members.clear();  // the last one counts
            }
            value->members.resize(row->width);
        }
    }
    return 0;
}

SlowSource SourceOf(const csn::CsnStructure& structure, const SlowValue& record) {
    return [&](SlowMachine& machine, SlowEvent& event) {
        return Supply(structure, record, machine, event);
    };
}

}  // namespace quorvane::reference
