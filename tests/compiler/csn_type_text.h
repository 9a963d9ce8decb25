#pragma once

// Types as text, one line a member, for comparing them with lists.

#include <string>

#include "compiler/model.h"
#include "support/family_files.h"

namespace quorvane::compiler {

inline std::string TypeText(const TypeModel& type) {
    switch (type.kind) {
        case TypeModel::Kind::kInteger:
            return "integer " + std::to_string(type.size);
        case TypeModel::Kind::kEnumerated:
            return "enumerated " + type.name;
        case TypeModel::Kind::kBinary:
            return (type.fixed ? "fixed binary " : "binary ") + std::to_string(type.size);
        case TypeModel::Kind::kSequence:
            return "sequence " + type.name + " " + std::to_string(type.size) + " of " +
                   TypeText(*type.item);
        case TypeModel::Kind::kStruct:
            return "struct " + type.name;
        case TypeModel::Kind::kUnion:
            break;
    }
    return "union " + type.name;
}

inline std::string MembersText(const TypeModel& type, const std::string& indent = "  ") {
    std::string text;
    for (const ElementModel& element : type.elements) {
        const TypeModel* inner = element.type->item == nullptr ? element.type : element.type->item;
        text += indent + element.name + ": " + TypeText(*element.type) +
                (element.optional ? " optional" : "") + "\n" + MembersText(*inner, indent + "  ");
    }
    return text;
}

using test::SourceText;

}  // namespace quorvane::compiler
