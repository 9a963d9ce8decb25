#include "support/guarded_buffer.h"

#include <new>
#include <sys/mman.h>
#include <unistd.h>

namespace quorvane::test {

GuardedBuffer::GuardedBuffer(std::size_t most) {
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    usable_ = (most + page - 1) / page * page;
    mapped_ = usable_ + page;
    void* memory =
        mmap(nullptr, mapped_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED ||
        mprotect(static_cast<std::uint8_t*>(memory) + usable_, page, PROT_NONE) != 0) {
        throw std::bad_alloc();
    }
    memory_ = static_cast<std::uint8_t*>(memory);
}

GuardedBuffer::~GuardedBuffer() {
    munmap(memory_, mapped_);
}

std::span<std::uint8_t> GuardedBuffer::Last(std::size_t count) const {
    return {memory_ + usable_ - count, count};
}

}  // namespace quorvane::test
