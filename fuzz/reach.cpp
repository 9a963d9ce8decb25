#include "reach.h"

#include <algorithm>
#include <cstdio>

#include "facade/decoder.h"
#include "fuzz_support.h"

namespace quorvane::fuzz {
namespace {

using bits::Cell;
using reflect::ElementRow;
using reflect::TypeKind;
using reflect::TypeRow;
using reflect::TypeTables;

// libFuzzer clears these ahead of each input, and finds them by the section.
#ifdef __ELF__
[[gnu::section("__libfuzzer_extra_counters")]]
#endif
std::uint8_t extraCounters[std::size_t{1} << 15];

/// Of a member that has to be there. What a special element consists of is not noted as reached.
bool IsReached(const Cell& cell) {
    return cell.reached || cell.location != 0 || cell.number != 0 || cell.cells != nullptr;
}

class PrintedReach : public Reach {
  public:
    PrintedReach() : Reach(extraCounters) {}
    PrintedReach(const PrintedReach&) = delete;
    PrintedReach& operator=(const PrintedReach&) = delete;
    ~PrintedReach() {
        const Count messages = Messages();
        const Count fields = Fields();
        std::printf("reached %zu of %zu messages, %zu of %zu fields\n", messages.reached,
                    messages.all, fields.reached, fields.all);
    }
};

}  // namespace

Reach::Reach(std::span<std::uint8_t> counters) : counters_(counters) {
    std::size_t elementCount = 0;
    for (const families::Family* family : families::AllFamilies()) {
        firstRows_[family->types.types.data()] = {typeCount_, elementCount};
        typeCount_ += family->types.types.size();
        elementCount += family->types.elements.size();
    }
    rows_.resize(typeCount_ + elementCount);
    Require(rows_.size() <= counters_.size(), "there are too few counters");
    for (const DecodingInfo& info : Decodings()) {
        const facade::Binding binding = facade::BindingOf(info.decoding);
        if (binding.set == nullptr) {
            continue;
        }
        for (const std::uint16_t type : binding.set->memberTypes) {
            AddMessage(binding.family->types, type);
        }
    }
}

void Reach::AddMessage(const TypeTables& types, std::uint16_t type) {
    rows_[firstRows_[types.types.data()].type + type] = Row::kNotReached;
    AddFields(types, type);
}

void Reach::AddFields(const TypeTables& types, std::uint16_t type) {
    const TypeRow& row = types.types[type];
    if (row.kind == TypeKind::kSequence) {
        return AddFields(types, row.first);
    }
    if (row.kind != TypeKind::kStruct && row.kind != TypeKind::kUnion) {
        return;
    }
    const std::size_t first =
        typeCount_ + firstRows_[types.types.data()].element + std::size_t{row.first};
    for (std::size_t index = 0; index < row.count; ++index) {
        if (rows_[first + index] == Row::kOther) {
            rows_[first + index] = Row::kNotReached;
            AddFields(types, types.ElementsOf(row)[index].type);
        }
    }
}

void Reach::NoteMessage(const families::Family& family, const iecodec::MessageSetRow& set,
                        const iecodec::MessageContainer& container) {
    if (container.tag == 0) {
        return;
    }
    const std::uint16_t type = set.memberTypes[container.tag - 1];
    Set(firstRows_[family.types.types.data()].type + type);
    NoteValue(family.types, type, container.body);
}

void Reach::NoteMessage(Decoding decoding, const PaddedMessage& message) {
    bits::Arena arena;
    iecodec::Diagnostics diagnostics;
    facade::DecodedRecord decoded;
    facade::DecodeRecord(decoding, facade::ReaderOf(message), message.length, arena, diagnostics,
                         decoded);
    if (decoded.Found()) {
        NoteMessage(*decoded.binding.family, *decoded.binding.set, decoded.container);
    }
}

void Reach::NoteMessage(Decoding decoding, std::span<const std::uint8_t> octets) {
    NoteMessage(decoding, PaddedMessage(octets.data(), static_cast<std::int32_t>(octets.size()),
                                        octets.size()));
}

void Reach::NoteValue(const TypeTables& types, std::uint16_t type, const Cell& cell) {
    const TypeRow& row = types.types[type];
    if (cell.cells == nullptr) {
        return;
    }
    switch (row.kind) {
        case TypeKind::kInteger:
        case TypeKind::kEnumerated:
        case TypeKind::kBinary:
            return;
        case TypeKind::kSequence:
            return NoteItems(types, row, cell);
        case TypeKind::kStruct:
            return NoteStruct(types, row, cell);
        case TypeKind::kUnion:
            return NoteUnion(types, row, cell);
    }
}

void Reach::NoteItems(const TypeTables& types, const TypeRow& row, const Cell& cell) {
    constexpr std::uint32_t kMostItems = 100;  // further ones hardly show another field
    for (std::uint32_t index = 0; index < std::min(cell.number, kMostItems); ++index) {
        NoteValue(types, row.first, cell.cells[index]);
    }
}

void Reach::NoteStruct(const TypeTables& types, const TypeRow& row, const Cell& cell) {
    const std::size_t first = typeCount_ + firstRows_[types.types.data()].element + row.first;
    const std::span<const ElementRow> elements = types.ElementsOf(row);
    for (std::size_t index = 0; index < elements.size(); ++index) {
        const Cell& member = cell.cells[index];
        if (elements[index].optional ? member.present : IsReached(member)) {
            Set(first + index);
            NoteValue(types, elements[index].type, member);
        }
    }
}

void Reach::NoteUnion(const TypeTables& types, const TypeRow& row, const Cell& cell) {
    if (cell.number == 0 || cell.number > row.count) {
        return;
    }
    const std::size_t first = typeCount_ + firstRows_[types.types.data()].element + row.first;
    Set(first + cell.number - 1);
    NoteValue(types, types.ElementsOf(row)[cell.number - 1].type, *cell.cells);
}

void Reach::Set(std::size_t row) {
    if (rows_[row] != Row::kOther) {
        counters_[row] = 1;
        rows_[row] = Row::kReached;
    }
}

Reach::Count Reach::CountOf(std::size_t first, std::size_t end) const {
    Count count;
    for (std::size_t row = first; row < end; ++row) {
        count.all += static_cast<std::size_t>(rows_[row] != Row::kOther);
        count.reached += static_cast<std::size_t>(rows_[row] == Row::kReached);
    }
    return count;
}

Reach::Count Reach::Messages() const {
    return CountOf(0, typeCount_);
}

Reach::Count Reach::Fields() const {
    return CountOf(typeCount_, rows_.size());
}

Reach& ReachOfThisRun() {
    static PrintedReach reach;
    return reach;
}

}  // namespace quorvane::fuzz
