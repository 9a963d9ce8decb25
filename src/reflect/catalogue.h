#pragma once

// The descriptors of one message family, built from its constant tables for whoever converts
// between records and value trees, or lists types. No decoding needs them.
//
// A catalogue keeps all of its descriptors in one arena and only views the tables' texts, so that
// building costs a few dozen nanoseconds a descriptor. It is read by any number of threads; it may
// go when no value tree of its family is left.
//
// Tests: tests/unit/reflect_catalogue_test.cpp.

#include <cstdint>

#include "bits/arena.h"
#include "reflect/ted_class.h"
#include "reflect/ted_vector.h"
#include "reflect/type_tables.h"

namespace quorvane::reflect {

class Catalogue {
  public:
    /// Builds all types of `tables`, whose texts must outlive the catalogue. In the tables each
    /// type that is not named is the type of exactly one member or sequence, and no type contains
    /// itself.
    explicit Catalogue(const TypeTables& tables);

    [[nodiscard]] const TypeTables& GetTables() const { return tables_; }

    /// The descriptor of a type by its index in the tables.
    [[nodiscard]] const TEDClassBase* GetDescriptor(std::uint16_t type) const {
        return byType_[type];
    }

    /// The named descriptors, in build order: a type stands behind those it refers to.
    [[nodiscard]] const TEDVector<TEDClassBase>& GetNamed() const { return named_; }

  private:
    TypeTables tables_;
    bits::Arena arena_;
    TEDClassBase** byType_;
    TEDVector<TEDClassBase> named_;  // goes before the arena that its items live in
};

}  // namespace quorvane::reflect
