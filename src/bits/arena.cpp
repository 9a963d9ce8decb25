#include "bits/arena.h"

#include <algorithm>
#include <new>

namespace quorvane::bits {

struct Arena::Block {
    Block* older;
    std::size_t size;  // octets behind this header

    std::byte* Data() { return reinterpret_cast<std::byte*>(this + 1); }
};

Arena::~Arena() {
    FreeFrom(newest_);
}

void Arena::FreeFrom(Block* block) {
    while (block != nullptr) {
        Block* older = block->older;
        Unpoison(block->Data(), block->size);
        ::operator delete(block);
        block = older;
    }
}

void Arena::Use(Block* block) {
    newest_ = block;
    if (block == nullptr) {
        next_ = end_ = nullptr;
        return;
    }
    Poison(block->Data(), block->size);
    next_ = block->Data();
    end_ = next_ + block->size;
}

void Arena::AddBlock(std::size_t leastSize) {
    static_assert(sizeof(Block) % kAlignment == 0);
    const std::size_t doubled = newest_ == nullptr ? kFirstBlock : newest_->size * 2;
    const std::size_t size = std::max(leastSize, doubled);
    void* memory = ::operator new(sizeof(Block) + size);
    Use(new (memory) Block{newest_, size});
}

void Arena::Reset() {
    if (newest_ == nullptr) {
        return;
    }
    // Each block is at least twice its older one: the newest alone will hold the next call.
    FreeFrom(newest_->older);
    newest_->older = nullptr;
    if (newest_->size > kMostKept) {
        FreeFrom(newest_);
        Use(nullptr);
        return;
    }
    Use(newest_);
}

}  // namespace quorvane::bits
