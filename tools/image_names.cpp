#include "tools/image_names.h"

#include <algorithm>
#include <cstddef>
#include <set>
#include <span>

#include "csn/assembly/instruction.h"

namespace quorvane::tool {

ImageNames::ImageNames(const families::Family& family) : family_(family) {
    CollectParents(*family.codec.structures.front().program);
}

// The field table has no end marks: the identifiers that the code uses tell where the pairs of
// each field end, as the next one's index stands there.
void ImageNames::CollectParents(const csn::CsnProgram& program) {
    const std::span<const std::uint8_t> code(program.code, program.codeSize);
    std::set<std::uint32_t> identifiers;
    for (std::uint32_t offset = 0; offset < code.size();) {
        const auto instruction = csn::DecodeInstruction(code, offset);
        if (!instruction) {
            break;
        }
        if (instruction->FieldId() != 0) {
            identifiers.insert(instruction->FieldId());
        }
        offset += instruction->size;
    }
    for (auto entry = identifiers.begin(); entry != identifiers.end(); ++entry) {
        const std::uint32_t identifier = *entry;
        const auto next = std::next(entry);
        const std::uint32_t end = next == identifiers.end() ? identifier + 2 : *next - 1;
        for (std::uint32_t pair = identifier; pair + 1 < end; pair += 2) {
            parentOfTag_[program.fieldTable[pair + 1]] = program.fieldTable[pair];
        }
        tagOfField_[identifier] = program.fieldTable[identifier + 1];
    }
}

ImageNames::Type ImageNames::TypeNamed(std::string_view name) const {
    const auto types = family_.types.types;
    const auto found = std::find_if(types.begin(), types.end(), [&](const reflect::TypeRow& type) {
        return type.IsNamed() && family_.types.NameOf(type) == name;
    });
    return found == types.end() ? nullptr : &*found;
}

ImageNames::Field ImageNames::FieldOf(const csn::CsnStructure& structure, std::uint16_t tag) const {
    const std::size_t index = static_cast<std::size_t>(tag) - structure.firstTag;
    const auto parent = parentOfTag_.find(tag);
    if (tag < structure.firstTag || index >= structure.fields.size() ||
        parent == parentOfTag_.end() ||
        structure.fields[index].kind == csn::CsnFieldRow::Kind::kNone) {
        return {nullptr, nullptr};
    }
    const Type owner = parent->second == structure.rootTag
                           ? TypeNamed(structure.name)
                           : FieldOf(structure, parent->second).insides;
    if (owner == nullptr || structure.fields[index].element >= owner->count) {
        return {nullptr, nullptr};
    }
    const reflect::ElementRow& element =
        family_.types.ElementsOf(*owner)[structure.fields[index].element];
    Type type = &family_.types.types[element.type];
    if (type->kind == reflect::TypeKind::kSequence) {
        type = &family_.types.types[type->first];
    }
    return {&element, type->kind == reflect::TypeKind::kStruct ? type : nullptr};
}

csn::ListingNames ImageNames::Listing() const {
    csn::ListingNames names;
    names.rule = [this](std::uint32_t label) {
        for (const csn::CsnStructure& structure : family_.codec.structures) {
            if (structure.label == label) {
                return std::string(structure.name);
            }
        }
        return std::string();
    };
    names.field = [this](std::uint32_t identifier) {
        const auto tag = tagOfField_.find(identifier);
        for (const csn::CsnStructure& structure : family_.codec.structures) {
            const Field field = tag == tagOfField_.end() ? Field{nullptr, nullptr}
                                                         : FieldOf(structure, tag->second);
            if (field.element != nullptr) {
                return std::string(family_.types.NameOf(*field.element));
            }
        }
        return std::string();
    };
    return names;
}

}  // namespace quorvane::tool
