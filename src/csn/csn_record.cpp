#include "csn/csn_record.h"

#include <algorithm>
#include <array>

#include "csn/machine.h"

namespace quorvane::csn {
namespace {

using bits::Cell;
using bits::Outcome;

/// The row of a field of the structure; null if the tag is another's.
const CsnFieldRow* RowOf(const CsnStructure& structure, std::int32_t tag) {
    const std::int64_t index = std::int64_t{tag} - structure.firstTag;
    const bool own = index >= 0 && index < static_cast<std::int64_t>(structure.fields.size());
    return own ? &structure.fields[static_cast<std::size_t>(index)] : nullptr;
}

/// Which item of its sequence `record` is.
std::int32_t ItemOf(const CsnStructure& structure, const CsnMachine& machine,
                    const CsnFieldRecord& record, const CsnFieldRow& row) {
    if (!row.mixed) {
        return record.occurrence;
    }
    const CsnFieldRecord* other = record.parent == nullptr ? machine.records : record.parent + 1;
    std::int32_t item = 0;
    for (; other != &record; ++other) {
        const CsnFieldRow* otherRow = RowOf(structure, other->tag);
        const bool isItem = other->occurrence >= 0 && other->parent == record.parent &&
                            otherRow != nullptr && otherRow->element == row.element;
        item += isItem ? 1 : 0;
    }
    return item;
}

std::size_t IndexOf(const CsnMachine& machine, const CsnFieldRecord& record) {
    return static_cast<std::size_t>(&record - machine.records);
}

/// The members of a struct by the index of the record that opened it: where the fields inside go.
template <typename CellType>
class OpenStructs {
  public:
    explicit OpenStructs(CellType* root) : root_(root) {}

    /// Members of the struct around `record`; null if it is no struct of this record.
    CellType* Around(const CsnMachine& machine, const CsnFieldRecord& record) const {
        return record.parent == nullptr ? root_ : members_[IndexOf(machine, *record.parent)];
    }
    void Open(const CsnMachine& machine, const CsnFieldRecord& record, CellType* members) {
        members_[IndexOf(machine, record)] = members;
    }

  private:
    CellType* root_;
    std::array<CellType*, kMostRecords> members_;  // set when a field opens, before those inside
};

/// Walks the field records of a run and stores what they stand for.
class Sink {
  public:
    Sink(const CsnStructure& structure, const CsnMachine& machine, bits::Arena& arena, Cell* root)
        : structure_(structure), machine_(machine), arena_(arena), open_(root) {}

    /// 0, or kSizeOutOfRange at the first item that its sequence refuses.
    Outcome Walk() {
        for (std::int32_t index = 0; index < machine_.recordCount; ++index) {
            const CsnFieldRecord& record = machine_.records[index];
            if (record.occurrence < 0) {
                continue;
            }
            if (const Outcome result = Store(record); result.Failed()) {
                return result;
            }
        }
        return 0;
    }

  private:
    Outcome Store(const CsnFieldRecord& record);
    [[nodiscard]] std::int32_t LengthOf(const CsnFieldRecord& record) const;

    const CsnStructure& structure_;
    const CsnMachine& machine_;
    bits::Arena& arena_;
    OpenStructs<Cell> open_;
};

Outcome Sink::Store(const CsnFieldRecord& record) {
    const CsnFieldRow* row = RowOf(structure_, record.tag);
    Cell* members = open_.Around(machine_, record);
    if (row == nullptr || members == nullptr) {
        open_.Open(machine_, record, nullptr);
        return 0;
    }
    if (row->kind == CsnFieldRow::Kind::kNone) {
        open_.Open(machine_, record, members);
        return 0;
    }
    Cell* cell = &members[row->element];
    cell->reached = true;
    if (row->optional) {
        cell->present = true;
    }
    if (row->bound > 0) {
        const std::int32_t item = ItemOf(structure_, machine_, record, *row);
        const Outcome result = SetSize(arena_, *cell, item + 1, row->bound);
        if (result.Failed()) {
            return result;
        }
        cell = &cell->cells[item];
        cell->reached = true;
    }
    Cell* inside = nullptr;
    switch (row->kind) {
        case CsnFieldRow::Kind::kNone:
        case CsnFieldRow::Kind::kMarker:
            break;
        case CsnFieldRow::Kind::kInteger:
            cell->number = machine_.reader.Read(record.bitPos, row->width);
            if (row->located) {
                bits::MakeFieldLocator(cell->location, record.bitPos, row->width);
            }
            break;
        case CsnFieldRow::Kind::kBinary:
            StoreBinary(arena_, *cell, machine_.reader, record.bitPos, LengthOf(record),
                        row->mostBits);
            if (!row->located) {
                cell->location = 0;
            }
            break;
        case CsnFieldRow::Kind::kStruct:
            if (row->repeats) {
                cell->cells = nullptr;  // nothing is left of an earlier occurrence
            }
            inside = StructCells(arena_, *cell, row->width);
            break;
    }
    open_.Open(machine_, record, inside);
    return 0;
}

/// How far it is to the next record. The last one, inside of whose field the run ended or the list
/// was full, counts as empty.
std::int32_t Sink::LengthOf(const CsnFieldRecord& record) const {
    const auto next = static_cast<std::int32_t>(IndexOf(machine_, record)) + 1;
    return next < machine_.recordCount ? machine_.records[next].bitPos - record.bitPos : 0;
}

/// Supplies the fields of a record as the machine asks for them.
class Source {
  public:
    Source(const CsnStructure& structure, const Cell* root) : structure_(structure), open_(root) {}

    static std::int32_t Answer(CsnFieldEvent& event) {
        return static_cast<Source*>(event.machine->userRecord)->Supply(event);
    }

  private:
    std::int32_t Supply(CsnFieldEvent& event);
    static void WriteUnstored(const CsnFieldEvent& event);
    static void WriteBinary(CsnFieldEvent& event, const CsnFieldRow& row, const Cell& cell);

    const CsnStructure& structure_;
    OpenStructs<const Cell> open_;
};

std::int32_t Source::Supply(CsnFieldEvent& event) {
    CsnMachine& machine = *event.machine;
    if (machine.recordCount < 1) {
        return kGiveUp;
    }
    const CsnFieldRecord& record = machine.records[machine.recordCount - 1];
    if (record.occurrence < 0) {
        return kGoOn;
    }
    const CsnFieldRow* row = RowOf(structure_, record.tag);
    const Cell* members = open_.Around(machine, record);
    open_.Open(machine, record, nullptr);
    if (row == nullptr) {
        WriteUnstored(event);
        return kGoOn;
    }
    if (row->kind == CsnFieldRow::Kind::kNone) {
        open_.Open(machine, record, members);
        WriteUnstored(event);
        return kGoOn;
    }
    const Cell* cell = members == nullptr ? &bits::kEmptyCell : &members[row->element];
    if (row->optional && !cell->present) {
        return kNotThere;
    }
    if (row->bound > 0) {
        const std::int32_t item = ItemOf(structure_, machine, record, *row);
        if (item >= static_cast<std::int64_t>(cell->number)) {
            return kNotThere;
        }
        cell = &cell->cells[item];
    } else if (record.occurrence > 0 && !row->repeats) {
        return kNotThere;
    }
    switch (row->kind) {
        case CsnFieldRow::Kind::kNone:
        case CsnFieldRow::Kind::kMarker:
            break;
        case CsnFieldRow::Kind::kInteger:
            machine.writer->Write(machine.bitPos, cell->number, row->width);
            event.bitLength = row->width;
            break;
        case CsnFieldRow::Kind::kBinary:
            WriteBinary(event, *row, *cell);
            break;
        case CsnFieldRow::Kind::kStruct:
            open_.Open(machine, record, cell->cells);
            break;
    }
    return kGoOn;
}

/// A field that the record has no member for: its fixed value, or zeros.
void Source::WriteUnstored(const CsnFieldEvent& event) {
    const bool fixed = event.literalWidth >= 0;
    event.machine->writer->Write(event.machine->bitPos, fixed ? event.literalValue : 0,
                                 fixed ? event.literalWidth : event.bitLength);
}

/// A fixed binary that was never set is written as zeros.
void Source::WriteBinary(CsnFieldEvent& event, const CsnFieldRow& row, const Cell& cell) {
    CsnMachine& machine = *event.machine;
    const std::uint32_t stored = cell.octets == nullptr ? 0 : std::min(cell.number, row.mostBits);
    const std::uint32_t length = row.fixed ? row.mostBits : stored;
    machine.writer->Copy(machine.bitPos, cell.octets, stored);
    machine.writer->Write(std::int64_t{machine.bitPos} + stored, 0,
                          static_cast<std::int32_t>(length - stored));
    event.bitLength = static_cast<std::int32_t>(length);
}

}  // namespace

Outcome DecodeCsn(const CsnStructure& structure, const bits::BitReader& reader, bits::Arena& arena,
                  std::int32_t bitPos, std::int32_t bitLength, Cell& cell) {
    CsnMachine machine;
    CsnMachineInit(machine, *structure.program, structure.label, reader, bitPos, bitLength);
    machine.rootTag = structure.rootTag;
    const Outcome result = CsnMachineRun(machine, nullptr);
    Cell* root = StructCells(arena, cell, structure.memberCount);
    const Outcome stored = Sink(structure, machine, arena, root).Walk();
    return stored.Failed() ? stored : result;
}

Outcome EncodeCsn(const CsnStructure& structure, bits::BitWriter& writer, std::int32_t bitPos,
                  const Cell& cell) {
    CsnMachine machine;
    Source source(structure, cell.cells);
    CsnMachineInit(machine, *structure.program, structure.label, writer, bitPos);
    machine.rootTag = structure.rootTag;
    machine.userRecord = &source;
    return CsnMachineRun(machine, Source::Answer);
}

}  // namespace quorvane::csn
