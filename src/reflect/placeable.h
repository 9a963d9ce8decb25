#pragma once

// Objects that live on the heap or in an arena and are deleted alike wherever they live.
//
// A catalogue and a value tree are made of thousands of small objects that come and go together;
// they are cut from an arena. Single objects made with plain `new` (copies, default values, types
// built by hand) live on the heap. Either kind may own the other, and `delete` is right for both:
// it runs the destructor, and gives memory back only to the heap. An object whose arena is reset
// without having been deleted is simply gone, so anything that it owns on the heap leaks: who hangs
// a heap object into an arena tree deletes the tree's root before the reset.
//
// Tests: tests/unit/reflect_ownership_test.cpp.

#include <cstddef>
#include <memory>
#include <new>

#include "bits/arena.h"

namespace quorvane::reflect {

/// Base of everything that can live in an arena. What is placed with `new (arena) T(arena, ...)`
/// passes the arena on to this base's constructor as well, since only a constructor can note it.
class Placeable {
  public:
    virtual ~Placeable() = default;

    static void* operator new(std::size_t size) { return ::operator new(size); }
    static void* operator new(std::size_t size, bits::Arena& arena) { return arena.Allocate(size); }

    /// What `delete` calls, instead of the destructor.
    static void operator delete(Placeable* object, std::destroying_delete_t) {
        const bool inArena = object->inArena_;
        object->~Placeable();
        if (!inArena) {
            ::operator delete(object);
        }
    }

    // For an object whose constructor threw.
    // unreachable from here: only without memory does one throw
    static void operator delete(void* memory) { ::operator delete(memory); }
    static void operator delete(void*, bits::Arena&) {}
    // to here

  protected:
    Placeable() = default;
    explicit Placeable(bits::Arena&) : inArena_(true) {}

    // Where an object lives is not part of its value.
    Placeable(const Placeable&) {}
    Placeable& operator=(const Placeable&) { return *this; }

  private:
    bool inArena_ = false;
};

/// An array of zero-initialised items from `arena`, or from the heap if that is null.
template <typename T>
[[nodiscard]] T* NewArray(bits::Arena* arena, std::size_t count) {
    return arena != nullptr ? arena->AllocateZeroed<T>(count) : new T[count]();
}

/// Releases an array of NewArray, made with the same `arena`.
template <typename T>
void DeleteArray(const bits::Arena* arena, const T* items) {
    if (arena == nullptr) {
        delete[] items;
    }
}

}  // namespace quorvane::reflect
