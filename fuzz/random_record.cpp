#include "random_record.h"

#include <algorithm>

namespace quorvane::fuzz {
namespace {

class Filler {
  public:
    Filler(const reflect::TypeTables& tables, Input& input, bits::Arena& arena)
        : tables_(tables), input_(input), arena_(arena) {}

    void Fill(std::uint16_t type, bits::Cell& cell) {
        if (input_.Empty()) {
            return;
        }
        const reflect::TypeRow& row = tables_.types[type];
        switch (row.kind) {
            case reflect::TypeKind::kInteger:
            case reflect::TypeKind::kEnumerated:
                cell.number = input_.Number(row.size > 8 ? 4 : 1);
                return;
            case reflect::TypeKind::kBinary:
                return FillBinary(row, cell);
            case reflect::TypeKind::kSequence:
                return FillSequence(row, cell);
            case reflect::TypeKind::kStruct:
                return FillStruct(row, cell);
            case reflect::TypeKind::kUnion:
                return FillUnion(row, cell);
        }
    }

  private:
    /// A dynamic binary may hold more bits than its type says: a tree can bring them.
    void FillBinary(const reflect::TypeRow& row, bits::Cell& cell) {
        const auto bits = static_cast<std::uint32_t>(
            row.fixed ? row.size : input_.Below(std::min<std::size_t>(row.size, 60000) + 40));
        const std::span<const std::uint8_t> octets = input_.Take((bits + 7) / 8);
        cell.octets = arena_.AllocateZeroed<std::uint8_t>((bits + 7) / 8);
        std::copy(octets.begin(), octets.end(), cell.octets);
        cell.number = bits;
    }

    void FillSequence(const reflect::TypeRow& row, bits::Cell& cell) {
        const auto size = static_cast<std::int32_t>(input_.Below(row.size + std::size_t{1}));
        Require(!bits::SetSize(arena_, cell, size, row.size).Failed(), "a size within the bound");
        for (std::uint32_t index = 0; index < cell.number; ++index) {
            Fill(row.first, cell.cells[index]);
        }
    }

    void FillStruct(const reflect::TypeRow& row, bits::Cell& cell) {
        bits::Cell* cells = bits::StructCells(arena_, cell, row.count);
        const std::span<const reflect::ElementRow> elements = tables_.ElementsOf(row);
        for (std::size_t index = 0; index < elements.size(); ++index) {
            // A chosen few of many optional members, so that some get far.
            const bool present = !elements[index].optional || input_.Below(3) != 0;
            if (present) {
                cells[index].present = elements[index].optional;
                Fill(elements[index].type, cells[index]);
            }
        }
    }

    void FillUnion(const reflect::TypeRow& row, bits::Cell& cell) {
        const auto tag = static_cast<std::uint32_t>(input_.Below(row.count + std::size_t{1}));
        if (tag > 0) {
            Fill(tables_.ElementsOf(row)[tag - 1].type, bits::ChooseAlternative(arena_, cell, tag));
        }
    }

    const reflect::TypeTables& tables_;
    Input& input_;
    bits::Arena& arena_;
};

}  // namespace

void FillRecord(const reflect::TypeTables& tables, std::uint16_t type, Input& input,
                bits::Arena& arena, bits::Cell& cell) {
    Filler(tables, input, arena).Fill(type, cell);
}

}  // namespace quorvane::fuzz
