#pragma once

// Octets that end right at a page that nobody may touch: a read or write behind them ends the
// test program.

#include <cstddef>
#include <cstdint>
#include <span>

namespace quorvane::test {

class GuardedBuffer {
  public:
    /// Room for up to `most` octets.
    explicit GuardedBuffer(std::size_t most);
    GuardedBuffer(const GuardedBuffer&) = delete;
    GuardedBuffer& operator=(const GuardedBuffer&) = delete;
    ~GuardedBuffer();

    /// The last `count` octets ahead of the guard page.
    [[nodiscard]] std::span<std::uint8_t> Last(std::size_t count) const;

  private:
    std::uint8_t* memory_;
    std::size_t usable_;
    std::size_t mapped_;
};

}  // namespace quorvane::test
