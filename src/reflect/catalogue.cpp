#include "reflect/catalogue.h"

#include <algorithm>
#include <cassert>
#include <string_view>

namespace quorvane::reflect {
namespace {

/// Makes the descriptors of one catalogue.
class Builder {
  public:
    Builder(const TypeTables& tables, bits::Arena& arena, TEDClassBase** byType)
        : tables_(tables), arena_(arena), byType_(byType) {}

    /// The descriptor of `type`, made unless it stands already, after all that it refers to.
    /// An inline one is that of `member` in the type of the name `around`.
    TEDClassBase* Make(std::uint16_t type, std::string_view around, std::string_view member) {
        TEDClassBase*& made = byType_[type];
        const TypeRow& row = tables_.types[type];
        assert(made == nullptr || row.IsNamed());
        if (made == nullptr) {
            made = MakeNew(row,
                           row.IsNamed() ? tables_.NameOf(row) : Kept(InlineName(around, member)));
        }
        return made;
    }

  private:
    /// `name`, held as long as the catalogue.
    std::string_view Kept(std::string_view name) {
        char* kept = static_cast<char*>(arena_.Allocate(name.size()));
        std::copy(name.begin(), name.end(), kept);
        return {kept, name.size()};
    }

    TEDClassBase* MakeNew(const TypeRow& row, std::string_view name) {
        switch (row.kind) {
            case TypeKind::kInteger:
                return new (arena_) TEDClassInteger(arena_, name, row.size);
            case TypeKind::kEnumerated:
                return MakeEnumerated(row, name);
            case TypeKind::kBinary:
                return new (arena_) TEDClassBinary(arena_, name, row.size, row.fixed);
            case TypeKind::kSequence:
                return new (arena_)
                    TEDClassSequence(arena_, name, Make(row.first, name, kItemName),
                                     !tables_.types[row.first].IsNamed(), row.size, row.fixed);
            case TypeKind::kStruct:
                return WithElements(row, new (arena_) TEDClassStruct(arena_, name));
            case TypeKind::kUnion:
                break;
        }
        return WithElements(row, new (arena_) TEDClassUnion(arena_, name));
    }

    TEDClassBase* MakeEnumerated(const TypeRow& row, std::string_view name) {
        auto* made = new (arena_) TEDClassEnumerated(arena_, name, row.size);
        const EnumRow& values = tables_.enums[row.first];
        made->ReserveValues(values.valueCount);
        for (const EnumValueRow& value :
             tables_.enumValues.subspan(values.firstValue, values.valueCount)) {
            made->AdoptValue(new (arena_) TEDEnumValue(arena_, tables_.TextAt(value.rendered),
                                                       value.textLength, value.value));
        }
        if (values.hasOtherText) {
            made->BorrowOtherText(tables_.TextAt(values.otherText));
        }
        return made;
    }

    TEDClassBase* WithElements(const TypeRow& row, TEDClassStructured* made) {
        // Types first, so that the elements, which the rendering walks, stand side by side.
        for (const ElementRow& element : tables_.ElementsOf(row)) {
            Make(element.type, made->GetName(), tables_.NameOf(element));
        }
        made->ReserveElements(row.count);
        for (const ElementRow& element : tables_.ElementsOf(row)) {
            made->AdoptElement(new (arena_) TEDClassStructuredElement(
                arena_, tables_.TextAt(element.label), byType_[element.type],
                !tables_.types[element.type].IsNamed(), element.optional));
        }
        return made;
    }

    const TypeTables& tables_;
    bits::Arena& arena_;
    TEDClassBase** byType_;
};

}  // namespace

Catalogue::Catalogue(const TypeTables& tables)
    : tables_(tables),
      byType_(arena_.AllocateZeroed<TEDClassBase*>(tables.types.size())),
      named_(&arena_) {
    Builder builder(tables, arena_, byType_);
    for (const std::uint16_t type : tables.named) {
        named_.PushBack(builder.Make(type, {}, {}));
    }
}

}  // namespace quorvane::reflect
