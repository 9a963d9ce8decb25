#pragma once

// The descriptors of one message family, built from its constant tables at first use.
//
// A catalogue keeps all of its descriptors in one arena and only views the tables' texts, so that
// building costs a few dozen nanoseconds a descriptor. It is read by any number of threads; it may
// go when no value tree of its family is left.
//
// Tests: tests/unit/reflect_catalogue_test.cpp.

#include <atomic>
#include <cstdint>
#include <mutex>

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

/// A catalogue that is built when it is first asked for, by whichever thread comes first; the
/// others wait. Meant for static storage: it costs nothing before its first use, and is destroyed
/// when the process ends or the library is unloaded.
class LazyCatalogue {
  public:
    constexpr explicit LazyCatalogue(const TypeTables& tables) : tables_(tables) {}
    LazyCatalogue(const LazyCatalogue&) = delete;
    LazyCatalogue& operator=(const LazyCatalogue&) = delete;
    ~LazyCatalogue() { delete built_.load(std::memory_order_relaxed); }

    /// The catalogue; the same object at every call. Throws std::bad_alloc if it cannot be built
    /// for want of memory; the next call tries again.
    [[nodiscard]] const Catalogue& Get() {
        const Catalogue* built = built_.load(std::memory_order_acquire);
        return built != nullptr ? *built : Build();
    }

    [[nodiscard]] bool IsBuilt() const { return built_.load(std::memory_order_acquire) != nullptr; }

  private:
    const Catalogue& Build();

    const TypeTables& tables_;
    std::mutex building_;
    std::atomic<const Catalogue*> built_{nullptr};
};

}  // namespace quorvane::reflect
