#pragma once

// Between records and value trees, in both directions, for every type of a family: one walk over
// the family's type tables and the record's cells side by side.
//
// Tests: tests/unit/reflect_convert_test.cpp, tests/unit/reflect_from_tree_test.cpp.

#include <cstdint>
#include <string>

#include "bits/arena.h"
#include "bits/record.h"
#include "reflect/catalogue.h"
#include "reflect/ted_data.h"
#include "reflect/type_tables.h"

namespace quorvane::reflect {

/// The tree of the value in `cell`, of the type with index `type`, placed in `arena`. Never null.
/// A record is taken as it is, however far its decoder got: what was not reached shows its default
/// value or, if it is optional, is absent. A union whose tag is none of its alternatives shows the
/// first one with default values. An integer or enumerated value of width 0 is 0 and has no
/// location.
///
/// The octets of binary fields are viewed, not copied: they must live as long as the tree, best in
/// the same arena.
[[nodiscard]] TEDDataBase* ToTree(const Catalogue& catalogue, std::uint16_t type,
                                  const bits::Cell& cell, bits::Arena& arena);

/// As ToTree for the message with tag `tag` (from 1) of the message set (a union type) `setType`,
/// whose record is `body`; the root is a node of the set. Null for a tag outside the set.
[[nodiscard]] TEDDataUnion* ToSet(const Catalogue& catalogue, std::uint16_t setType,
                                  std::int32_t tag, const bits::Cell& body, bits::Arena& arena);

/// Fills `cell` from `node`. False, with the cell untouched, if the node's descriptor is not that
/// of `type`; true otherwise. Below that:
/// - a struct, union or sequence inside that is of another type leaves its cell as it was; of a
///   number or binary inside only the kind of node must be right;
/// - a mandatory member without a node leaves its cell as it was;
/// - numbers are narrowed to the 8, 16 or 32 bits that hold the field, a dynamic binary takes the
///   node's length as it stands, a fixed one keeps its own;
/// - each item of a sequence raises the cell's count by one and fills the item of its own index: a
///   record in use goes on growing up to the bound, and items beyond it are dropped. A sequence
///   without items leaves the cell as it was, and so does a union whose index is none of its
///   alternatives;
/// - locations stay as they were.
/// What the cell needs is placed in `arena`; nothing of the tree is viewed.
bool FromTree(const Catalogue& catalogue, std::uint16_t type, bits::Cell& cell,
              const TEDDataBase& node, bits::Arena& arena);

/// Fills `tag` and `body` from `node`, a node of the message set `setType` or of one of its
/// messages. `body` is kept where it has that message's tag already, and starts zeroed otherwise.
/// False, with nothing touched, if the node is neither.
bool FromSet(const Catalogue& catalogue, std::uint16_t setType, std::int32_t& tag, bits::Cell& body,
             const TEDDataBase& node, bits::Arena& arena);

/// Whether two records of the type with index `type` hold the same: presence, numbers, bits,
/// items, chosen alternatives, all the way down, and locations if asked for. What is absent or
/// of width 0 does not count; a value that was never reached equals its default.
[[nodiscard]] bool RecordsEqual(const TypeTables& tables, std::uint16_t type, const bits::Cell& a,
                                const bits::Cell& b, bool compareLocations);

/// Whether `read` holds what `set` does, locations aside; numbers of `set` that were never set may
/// be any. If not, `path` is that of the first difference.
[[nodiscard]] bool RecordsAgree(const TypeTables& tables, std::uint16_t type, const bits::Cell& set,
                                const bits::Cell& read, std::string& path);

}  // namespace quorvane::reflect
