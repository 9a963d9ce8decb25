#pragma once

// What a record shows of how the decoder got on with a field.
//
// Tests: tests/unit/json_fields_test.cpp, tests/unit/facade_message_test.cpp.

#include <algorithm>
#include <cstddef>

#include "quorvane/message.h"
#include "reflect/record_values.h"
#include "reflect/type_tables.h"

namespace quorvane::facade {

/// Whether the record shows that a decoder came to the value.
inline bool HasTrace(const bits::Cell& cell) {
    return cell.reached || cell.location != 0 || cell.number != 0 || cell.cells != nullptr ||
           cell.present;
}

/// The status of `cell`, child `index` of the field `around` of the type `row`. `made`: by a
/// program, not by a decoder.
inline FieldStatus StatusOf(const reflect::TypeTables& tables, const reflect::TypeRow& row,
                            const bits::Cell& around, std::size_t index, const bits::Cell& cell,
                            bool made) {
    const auto decodedIf = [](bool reached) {
        return reached ? FieldStatus::kDecoded : FieldStatus::kDefault;
    };
    if (cell.refused) {
        return FieldStatus::kRefused;
    }
    if (row.kind == reflect::TypeKind::kSequence) {
        return FieldStatus::kDecoded;  // no item stands there that was not decoded
    }
    if (row.kind == reflect::TypeKind::kUnion) {
        return decodedIf(reflect::IsTagOf(row, around.number));
    }
    const reflect::ElementRow& element = tables.ElementsOf(row)[index];
    if (element.optional) {
        return cell.present ? FieldStatus::kDecoded : FieldStatus::kAbsent;
    }
    if (HasTrace(cell)) {
        return FieldStatus::kDecoded;
    }
    // What has no bits is passed by without a trace. Decoding goes on from member to member.
    const reflect::TypeRow& type = tables.types[element.type];
    return decodedIf(
        around.cells != nullptr &&
        ((reflect::IsNumber(type) && type.size == 0) ||
         (!made && std::any_of(around.cells + index + 1, around.cells + row.count, HasTrace))));
}

}  // namespace quorvane::facade
