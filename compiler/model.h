#pragma once

// The types of a family as the compiler resolves them: what the catalogue will hold. Both front
// ends, that of the type-length-value descriptions and that of CSN.1, build these.

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "compiler/number.h"
#include "reflect/type_tables.h"

namespace quorvane::compiler {

/// An enumeration's values in the order of the protocol's table.
struct EnumModel {
    struct Value {
        std::string text;
        WideNumber value;
        bool unreachable = false;  // no field has the bits for it, and the description says so
    };

    std::string name;  // by which descriptions refer to it
    Span span;
    std::vector<Value> values;
    std::optional<std::string> otherText;
    bool broken = false;  // has mistakes in the notation
};

struct TypeModel;

struct ElementModel {
    std::string name;
    TypeModel* type = nullptr;
    bool optional = false;
    std::uint64_t wireBits = 0;  // if they are stated
};

/// A descriptor: a named type, or the inline type of one member or sequence, which has the name
/// reflect::InlineName.
struct TypeModel {
    using Kind = reflect::TypeKind;

    Kind kind = Kind::kInteger;
    std::string name;
    Span span;
    bool named = false;
    bool fixed = false;                      // binaries
    std::uint32_t size = 0;                  // bits, most bits, or bound
    std::vector<ElementModel> elements;      // struct, union
    TypeModel* item = nullptr;               // sequence
    const EnumModel* enumeration = nullptr;  // enumerated

    std::uint32_t index = 0;  // in the emitted table, given when all types stand
};

/// Owns the types and enumerations of a family; addresses stay valid while it grows.
struct TypeStore {
    std::deque<TypeModel> types;
    std::deque<EnumModel> enums;

    TypeModel* NewType(TypeModel::Kind kind, std::string name, Span span) {
        TypeModel& type = types.emplace_back();
        type.kind = kind;
        type.name = std::move(name);
        type.span = span;
        return &type;
    }
};

}  // namespace quorvane::compiler
