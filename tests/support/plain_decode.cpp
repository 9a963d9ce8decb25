#include "support/plain_decode.h"

#include <array>
#include <memory>

#include "csn/machine.h"

namespace quorvane::csn::test {
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
class OpenStructs {
  public:
    explicit OpenStructs(Cell* root) : root_(root) {}

    /// Members of the struct around `record`; null if it is no struct of this record.
    [[nodiscard]] Cell* Around(const CsnMachine& machine, const CsnFieldRecord& record) const {
        return record.parent == nullptr ? root_ : members_[IndexOf(machine, *record.parent)];
    }
    void Open(const CsnMachine& machine, const CsnFieldRecord& record, Cell* members) {
        members_[IndexOf(machine, record)] = members;
    }

  private:
    Cell* root_;
    std::array<Cell*, kMostRecords> members_;  // set when a field opens, before those inside
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
    OpenStructs open_;
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

/// A field's opening or closing, "12 opens at 3".
std::string Event(std::int32_t tag, bool opens, std::int32_t bitPos) {
    return opens ? std::to_string(tag) + " opens at " + std::to_string(bitPos) + "\n"
                 : "closes at " + std::to_string(bitPos) + "\n";
}

std::string EventsOf(const CsnMachine& machine) {
    std::string text;
    for (std::int32_t index = 0; index < machine.recordCount; ++index) {
        const CsnFieldRecord& record = machine.records[index];
        text += Event(record.tag, record.occurrence >= 0, record.bitPos);
    }
    return text;
}

std::string EventsOf(const CsnLog& log) {
    std::string text;
    for (std::int32_t index = 0; index < log.count; ++index) {
        const CsnLogLine& line = log.lines[index];
        text += Event(line.tag, !line.Closes(), line.bitPos);
        if (!line.Opens() && !line.Closes()) {
            text += Event(line.tag, false, line.bitPos + line.width);
        }
    }
    return text;
}

}  // namespace

Outcome DecodePlainly(const CsnStructure& structure, const bits::BitReader& reader,
                      bits::Arena& arena, std::int32_t bitPos, std::int32_t bitLength, Cell& cell) {
    const auto machine = std::make_unique<CsnMachine>();
    CsnMachineInit(*machine, *structure.program, structure.label, reader, bitPos, bitLength);
    machine->rootTag = structure.rootTag;
    const Outcome result = CsnMachineRun(*machine, nullptr);
    Cell* root = StructCells(arena, cell, structure.memberCount);
    const Outcome stored = Sink(structure, *machine, arena, root).Walk();
    return stored.Failed() ? stored : result;
}

std::string DifferenceOfPlan(CsnMachine& machine, std::uint32_t step, Outcome& result) {
    CsnLog log;
    const Outcome planned =
        RunPlan(*machine.program, step, static_cast<std::uint16_t>(machine.rootTag), machine.reader,
                machine.bitPos, machine.bitLength, machine.instructionsLeft, log);
    result = CsnMachineRun(machine, nullptr);
    const std::string expected = EventsOf(machine);
    const std::string actual = EventsOf(log);
    if (planned == result && actual == expected) {
        return {};
    }
    return "the machine: " + std::to_string(result.Bits()) + "\n" + expected +
           "the plan: " + std::to_string(planned.Bits()) + "\n" + actual;
}

}  // namespace quorvane::csn::test
