#include "csn_limits.h"

#include <set>
#include <vector>

#include "csn/assembly/instruction.h"
#include "csn/machine.h"
#include "fuzz_support.h"
#include "support/reviewed_list.h"

namespace quorvane::fuzz {
namespace {

bool HasActions(const csn::CsnStructure& structure) {
    const std::span<const std::uint8_t> code(structure.program->code, structure.program->codeSize);
    std::set<std::uint32_t> seen;
    std::vector<std::uint32_t> open{structure.label};
    while (!open.empty()) {
        const std::uint32_t offset = open.back();
        open.pop_back();
        if (!seen.insert(offset).second) {
            continue;
        }
        const auto instruction = csn::DecodeInstruction(code, offset);
        Require(instruction.has_value(), "the code of a structure ends inside an instruction");
        switch (instruction->Code()) {
            case csn::Opcode::kAct:
            case csn::Opcode::kActDec:
            case csn::Opcode::kActEnc:
                return true;
            case csn::Opcode::kRet:
            case csn::Opcode::kRetTags:
                continue;
            default:
                break;
        }
        open.push_back(offset + instruction->size);
        if (const auto target = instruction->Target()) {
            open.push_back(static_cast<std::uint32_t>(*target));
        }
    }
    return false;
}

bool IsNamedException(const families::Family& family, std::string_view structure) {
    static std::vector<std::string> problems;
    static const auto kReviewed =
        test::ReadReviewedList(QUORVANE_SOURCE_DIR "/tests/round_trip_exceptions.txt", problems);
    Require(!kReviewed.empty(), "the list of exceptions is there");
    return kReviewed.contains(std::string(family.name) + "/" + std::string(structure));
}

std::size_t CountFields(const reflect::TypeTables& tables, std::uint16_t type,
                        const bits::Cell& cell) {
    const reflect::TypeRow& row = tables.types[type];
    if (row.kind != reflect::TypeKind::kStruct && row.kind != reflect::TypeKind::kSequence) {
        return 1;
    }
    if (cell.cells == nullptr) {
        return 0;
    }
    const bool isSequence = row.kind == reflect::TypeKind::kSequence;
    std::size_t count = isSequence ? 0 : 1;
    for (std::uint32_t index = 0; index < (isSequence ? cell.number : row.count); ++index) {
        const reflect::ElementRow* element = isSequence ? nullptr : &tables.ElementsOf(row)[index];
        if (element == nullptr || !element->optional || cell.cells[index].present) {
            count += CountFields(tables, element == nullptr ? row.first : element->type,
                                 cell.cells[index]);
        }
    }
    return count;
}

}  // namespace

bool IsLossy(const families::Family& family, const csn::CsnStructure& structure) {
    return HasActions(structure) || IsNamedException(family, structure.name);
}

bool HoldsManyFields(const reflect::TypeTables& tables, std::uint16_t type,
                     const bits::Cell& cell) {
    constexpr std::size_t kMany = csn::kMostRecords / 2 - 16;
    return CountFields(tables, type, cell) > kMany;
}

bool HoldsCutField(const reflect::TypeTables& tables, std::uint16_t type, const bits::Cell& cell) {
    const reflect::TypeRow& row = tables.types[type];
    if (row.kind == reflect::TypeKind::kBinary) {
        return (cell.location & 0xFFFFU) > cell.number;
    }
    if (cell.cells == nullptr || row.kind == reflect::TypeKind::kInteger ||
        row.kind == reflect::TypeKind::kEnumerated) {
        return false;
    }
    // A structure of CSN.1 has no unions.
    const bool isSequence = row.kind == reflect::TypeKind::kSequence;
    const std::uint32_t count = isSequence ? cell.number : row.count;
    for (std::uint32_t index = 0; index < count; ++index) {
        const std::uint16_t inner = isSequence ? row.first : tables.ElementsOf(row)[index].type;
        if (HoldsCutField(tables, inner, cell.cells[index])) {
            return true;
        }
    }
    return false;
}

}  // namespace quorvane::fuzz
