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
        ::operator delete(block);
        block = older;
    }
}

void Arena::Use(Block* block) {
    newest_ = block;
    next_ = block == nullptr ? nullptr : block->Data();
    end_ = block == nullptr ? nullptr : next_ + block->size;
}

void* Arena::AllocateInNewBlock(std::size_t size) {
    static_assert(sizeof(Block) % kAlignment == 0);
    const std::size_t doubled = newest_ == nullptr ? kFirstBlock : newest_->size * 2;
    const std::size_t blockSize = std::max(size, doubled);
    void* memory = ::operator new(sizeof(Block) + blockSize);
    Use(new (memory) Block{newest_, blockSize});
    void* result = next_;
    next_ += size;
    return result;
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
