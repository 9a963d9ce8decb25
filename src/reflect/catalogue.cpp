#include "reflect/catalogue.h"

#include <algorithm>
#include <cassert>
#include <span>
#include <string_view>

#include "reflect/text_pieces.h"

namespace quorvane::reflect {
namespace {

/// Texts as the rendering copies them: all behind one another in one block of an arena, with
/// kCopyStep octets behind the last.
class LabelStore {
  public:
    LabelStore(bits::Arena& arena, std::size_t size)
        : next_(static_cast<char*>(arena.Allocate(size + kCopyStep))) {
        std::fill_n(next_ + size, kCopyStep, '\0');
    }

    /// `name` followed by ": ".
    std::string_view AddLabel(std::string_view name) { return Ends(PutLiteral(Put(name), ": ")); }
    static std::size_t LabelSize(std::string_view name) { return name.size() + 2; }

    /// The text of `row` followed by its value in parentheses.
    std::string_view AddEnumValue(const EnumValueRow& row) {
        char digits[kMostDigits + kOverwritten];
        const char* end = PutUnsigned(digits, row.value);
        char* at = PutLiteral(Put(row.text), " (");
        at = std::copy(static_cast<const char*>(digits), end, at);
        return Ends(PutLiteral(at, ")"));
    }
    static std::size_t EnumValueSize(const EnumValueRow& row) {
        char digits[kMostDigits + kOverwritten];
        return row.text.size() + static_cast<std::size_t>(PutUnsigned(digits, row.value) - digits) +
               3;
    }

  private:
    static constexpr std::size_t kOverwritten = 4;

    char* Put(std::string_view text) const { return std::copy(text.begin(), text.end(), next_); }
    std::string_view Ends(char* end) {
        const std::string_view text(next_, static_cast<std::size_t>(end - next_));
        next_ = end;
        return text;
    }

    char* next_;
};

/// Makes the descriptors of one catalogue.
class Builder {
  public:
    Builder(const TypeTables& tables, bits::Arena& arena, TEDClassBase** byType)
        : tables_(tables), arena_(arena), byType_(byType), labels_(arena, SizeOfLabels(tables)) {
        enumTexts_ = arena.AllocateZeroed<std::string_view>(tables.enumValues.size());
        for (std::size_t index = 0; index < tables.enumValues.size(); ++index) {
            enumTexts_[index] = labels_.AddEnumValue(tables.enumValues[index]);
        }
    }

    /// The descriptor of `type`, made unless it stands already, after all that it refers to.
    TEDClassBase* Make(std::uint16_t type) {
        TEDClassBase*& made = byType_[type];
        const TypeRow& row = tables_.types[type];
        assert(made == nullptr || row.named);
        if (made == nullptr) {
            made = MakeNew(row);
        }
        return made;
    }

  private:
    static std::size_t SizeOfLabels(const TypeTables& tables) {
        std::size_t size = 0;
        for (const ElementRow& element : tables.elements) {
            size += LabelStore::LabelSize(element.name);
        }
        for (const EnumValueRow& value : tables.enumValues) {
            size += LabelStore::EnumValueSize(value);
        }
        return size;
    }

    TEDClassBase* MakeNew(const TypeRow& row) {
        switch (row.kind) {
            case TypeKind::kInteger:
                return new (arena_) TEDClassInteger(arena_, row.name, row.size);
            case TypeKind::kEnumerated:
                return MakeEnumerated(row);
            case TypeKind::kBinary:
                return new (arena_) TEDClassBinary(arena_, row.name, row.size, row.fixed);
            case TypeKind::kSequence:
                return new (arena_)
                    TEDClassSequence(arena_, row.name, Make(row.first),
                                     !tables_.types[row.first].named, row.size, row.fixed);
            case TypeKind::kStruct:
                return WithElements(row, new (arena_) TEDClassStruct(arena_, row.name));
            case TypeKind::kUnion:
                break;
        }
        return WithElements(row, new (arena_) TEDClassUnion(arena_, row.name));
    }

    TEDClassBase* MakeEnumerated(const TypeRow& row) {
        auto* made = new (arena_) TEDClassEnumerated(arena_, row.name, row.size);
        const EnumRow& values = tables_.enums[row.first];
        made->ReserveValues(values.valueCount);
        for (std::uint32_t index = values.firstValue; index < values.firstValue + values.valueCount;
             ++index) {
            const EnumValueRow& value = tables_.enumValues[index];
            made->AdoptValue(new (arena_) TEDEnumValue(arena_, enumTexts_[index], value.text.size(),
                                                       value.value));
        }
        if (values.hasOtherText) {
            made->BorrowOtherText(values.otherText);
        }
        return made;
    }

    TEDClassBase* WithElements(const TypeRow& row, TEDClassStructured* made) {
        // Types first, so that the elements and their labels, which the rendering walks, stand
        // side by side.
        for (const ElementRow& element : tables_.ElementsOf(row)) {
            Make(element.type);
        }
        made->ReserveElements(row.count);
        for (const ElementRow& element : tables_.ElementsOf(row)) {
            made->AdoptElement(new (arena_) TEDClassStructuredElement(
                arena_, labels_.AddLabel(element.name), byType_[element.type],
                !tables_.types[element.type].named, element.optional));
        }
        return made;
    }

    const TypeTables& tables_;
    bits::Arena& arena_;
    TEDClassBase** byType_;
    LabelStore labels_;
    std::string_view* enumTexts_;  // of each row of TypeTables::enumValues
};

}  // namespace

Catalogue::Catalogue(const TypeTables& tables)
    : tables_(tables),
      byType_(arena_.AllocateZeroed<TEDClassBase*>(tables.types.size())),
      named_(&arena_) {
    Builder builder(tables, arena_, byType_);
    for (const std::uint16_t type : tables.named) {
        named_.PushBack(builder.Make(type));
    }
}

const Catalogue& LazyCatalogue::Build() {
    const std::lock_guard<std::mutex> lock(building_);
    const Catalogue* built = built_.load(std::memory_order_relaxed);
    if (built == nullptr) {
        built = new Catalogue(tables_);
        built_.store(built, std::memory_order_release);
    }
    return *built;
}

}  // namespace quorvane::reflect
