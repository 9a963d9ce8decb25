#include "reflect/text_buffer.h"

#include <algorithm>

namespace quorvane::reflect {

void TextBuffer::Clear() {
    if (GetCapacity() > kMostKept) {
        memory_.reset();
        limit_ = nullptr;
    }
    next_ = memory_.get();
}

void TextBuffer::Grow(std::size_t count) {
    const std::size_t used = View().size();
    // One more than asked for: Room takes an exact fit for too little.
    const std::size_t capacity = std::max({kFirstCapacity, 2 * GetCapacity(), used + count + 1});
    std::unique_ptr<char[]> grown(new char[capacity + kSlack]);
    if (used > 0) {
        std::memcpy(grown.get(), memory_.get(), used);
    }
    memory_ = std::move(grown);
    next_ = memory_.get() + used;
    limit_ = memory_.get() + capacity;
}

}  // namespace quorvane::reflect
