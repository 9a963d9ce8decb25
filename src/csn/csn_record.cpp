#include "csn/csn_record.h"

#include <algorithm>
#include <array>

#include "csn/machine.h"
#include "csn/runner.h"

namespace quorvane::csn {
namespace {

using bits::Cell;
using bits::Outcome;

/// The row of a field of the structure; null if the tag is another's.
const CsnFieldRow* RowOf(const CsnStructure& structure, std::int32_t tag) {
    const auto index = static_cast<std::uint32_t>(tag - structure.firstTag);
    return index < structure.fields.size() ? &structure.fields[index] : nullptr;
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

/// The members of a struct by the index of the record that opened it: where the fields inside come
/// from.
class OpenStructs {
  public:
    explicit OpenStructs(const Cell* root) : root_(root) {}

    /// Members of the struct around `record`; null if it is no struct of this record.
    const Cell* Around(const CsnMachine& machine, const CsnFieldRecord& record) const {
        return record.parent == nullptr ? root_ : members_[IndexOf(machine, *record.parent)];
    }
    void Open(const CsnMachine& machine, const CsnFieldRecord& record, const Cell* members) {
        members_[IndexOf(machine, record)] = members;
    }

  private:
    const Cell* root_;
    std::array<const Cell*, kMostRecords> members_;  // set when a field opens, before those inside
};

/// Walks the log of a run and stores what it tells of.
class Sink {
  public:
    Sink(const CsnStructure& structure, const bits::BitReader& reader, const CsnLog& log,
         bits::Arena& arena)
        : structure_(structure), reader_(reader), log_(log), arena_(arena) {}

    /// Into the struct of `cell`: 0, or kSizeOutOfRange at the first item that its sequence
    /// refuses.
    Outcome Walk(Cell& cell) {
        Open(StructOf(cell, structure_.memberCount), 0);
        bits::BitWindow window(reader_);
        Cell* members = open_[0].members;
        const CsnLogLine* const end = log_.lines + log_.count;
        for (const CsnLogLine* line = log_.lines; line != end; ++line) {
            const CsnFieldRow* const row = line->IsWhole() ? RowOf(structure_, line->tag) : nullptr;
            if (row != nullptr && row->IsNumber() && members != nullptr) {
                // As most fields are: Store does the same with more questions.
                StoreInteger(Reach(members, *row), *line, *row,
                             window.Read(line->bitPos, row->width));
                continue;
            }
            if (line->Closes()) {
                --depth_;
            } else if (const Outcome result = Store(*line); result.Failed()) {
                return result;
            }
            members = open_[depth_ - 1].members;
        }
        return 0;
    }

  private:
    /// Where the fields inside of an open one go.
    struct Inside {
        Cell* members;        // null: nowhere
        bool counts;          // the sequences in it hold what this field has brought and no more
        std::int32_t opened;  // its line in the log
    };

    void Open(Inside inside, std::int32_t line) {
        inside.opened = line;
        open_[depth_++] = inside;
    }
    Inside StructOf(Cell& cell, std::uint32_t memberCount) {
        const bool isNew = cell.cells == nullptr;
        return {StructCells(arena_, cell, memberCount), isNew, 0};
    }
    /// The one of `members` that the field `row` is of, or an item of.
    static Cell& Reach(Cell* members, const CsnFieldRow& row) {
        Cell& cell = members[row.element];
        cell.reached = true;
        cell.present |= row.optional;
        return cell;
    }
    static void StoreInteger(Cell& cell, const CsnLogLine& line, const CsnFieldRow& row,
                             std::uint32_t number) {
        cell.number = number;
        if (row.located) {
            bits::MakeFieldLocator(cell.location, line.bitPos, row.width);
        }
    }
    // Out of line, so that Walk has its registers to itself.
    [[gnu::noinline]] Outcome Store(const CsnLogLine& line);
    Outcome StoreIn(Inside& around, const CsnLogLine& line, const CsnFieldRow& row, Inside& inside);
    [[nodiscard]] std::int32_t ItemOf(const CsnLogLine& line, const CsnFieldRow& row) const;
    [[nodiscard]] std::int32_t LengthOf(const CsnLogLine& line) const;

    const CsnStructure& structure_;
    const bits::BitReader& reader_;
    const CsnLog& log_;
    bits::Arena& arena_;
    std::int32_t depth_ = 0;
    Inside open_[kMostRecords + 1];  // of the first `depth_`
};

Outcome Sink::Store(const CsnLogLine& line) {
    const CsnFieldRow* row = RowOf(structure_, line.tag);
    Inside& around = open_[depth_ - 1];
    Inside inside{nullptr, false, 0};
    if (row != nullptr && around.members != nullptr) {
        const Outcome result = StoreIn(around, line, *row, inside);
        if (result.Failed()) {
            return result;
        }
    }
    if (line.Opens()) {
        Open(inside, static_cast<std::int32_t>(&line - log_.lines));
    }
    return 0;
}

Outcome Sink::StoreIn(Inside& around, const CsnLogLine& line, const CsnFieldRow& row,
                      Inside& inside) {
    if (row.kind == CsnFieldRow::Kind::kNone) {
        // What it delimits goes where it stands itself.
        inside.members = around.members;
        around.counts = false;
        return 0;
    }
    Cell* cell = &Reach(around.members, row);
    if (row.bound > 0) {
        const std::int32_t item =
            around.counts ? static_cast<std::int32_t>(cell->number) : ItemOf(line, row);
        const Outcome result = SetSize(arena_, *cell, item + 1, row.bound);
        if (result.Failed()) {
            return result;
        }
        cell = &cell->cells[item];
        cell->reached = true;
    }
    switch (row.kind) {
        case CsnFieldRow::Kind::kNone:
        case CsnFieldRow::Kind::kMarker:
            break;
        case CsnFieldRow::Kind::kInteger:
            StoreInteger(*cell, line, row, reader_.Read(line.bitPos, row.width));
            break;
        case CsnFieldRow::Kind::kBinary:
            StoreBinary(arena_, *cell, reader_, line.bitPos, LengthOf(line), row.mostBits);
            if (!row.located) {
                cell->location = 0;
            }
            break;
        case CsnFieldRow::Kind::kStruct:
            if (row.repeats) {
                cell->cells = nullptr;  // nothing is left of an earlier occurrence
            }
            inside = StructOf(*cell, row.width);
            break;
    }
    return 0;
}

/// Which item of its sequence a field is: as many as came before under the same open field.
std::int32_t Sink::ItemOf(const CsnLogLine& line, const CsnFieldRow& row) const {
    const CsnLogLine* const first = log_.lines + (depth_ > 1 ? open_[depth_ - 1].opened + 1 : 0);
    std::int32_t item = 0;
    std::int32_t depth = 0;
    for (const CsnLogLine* other = first; other != &line; ++other) {
        if (other->Closes()) {
            --depth;
            continue;
        }
        if (depth == 0) {
            const CsnFieldRow* otherRow = RowOf(structure_, other->tag);
            item += otherRow != nullptr && otherRow->element == row.element &&
                            (row.mixed || other->tag == line.tag)
                        ? 1
                        : 0;
        }
        depth += other->Opens() ? 1 : 0;
    }
    return item;
}

/// The width of a whole field; of one that opens, how far it is to the next line. The last one,
/// inside of whose field the run ended or the list was full, counts as empty.
std::int32_t Sink::LengthOf(const CsnLogLine& line) const {
    if (!line.Opens()) {
        return line.width;
    }
    const CsnLogLine* next = &line + 1;
    return next < log_.lines + log_.count ? next->bitPos - line.bitPos : 0;
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
    OpenStructs open_;
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
    CsnLog log;
    const Outcome result = RunPlan(*structure.program, structure.step, structure.rootTag, reader,
                                   bitPos, bitLength, InstructionCeiling(bitLength), log);
    const Outcome stored = Sink(structure, reader, log, arena).Walk(cell);
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
