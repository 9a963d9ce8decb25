#pragma once

// What the fuzz targets share: reading choices off the input, checks that end the run, and octets
// in memory of exactly their size, so that the address sanitizer sees a look behind them.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

namespace quorvane::fuzz {

/// Prints `what` and ends the program: the input has shown a fault.
[[noreturn]] void Fail(std::string_view what);

inline void Require(bool holds, std::string_view what) {
    if (!holds) {
        Fail(what);
    }
}

/// The same for two texts, which are printed if they differ.
void RequireEqual(std::string_view left, std::string_view right, std::string_view what);

/// A copy on the heap of exactly the size asked for.
class ExactOctets {
  public:
    /// The first `size` octets of `source`, zeros where it ends.
    ExactOctets(std::span<const std::uint8_t> source, std::size_t size)
        : octets_(new std::uint8_t[size]()), size_(size) {
        const std::size_t copied = source.size() < size ? source.size() : size;
        if (copied > 0) {
            std::memcpy(octets_.get(), source.data(), copied);
        }
    }
    explicit ExactOctets(std::span<const std::uint8_t> source)
        : ExactOctets(source, source.size()) {}

    [[nodiscard]] std::uint8_t* Data() const { return octets_.get(); }
    [[nodiscard]] std::size_t Size() const { return size_; }
    [[nodiscard]] std::span<const std::uint8_t> View() const { return {octets_.get(), size_}; }

  private:
    std::unique_ptr<std::uint8_t[]> octets_;
    std::size_t size_;
};

/// Takes an input apart from its front. What is used up gives zeros.
class Input {
  public:
    Input(const std::uint8_t* octets, std::size_t size) : rest_(octets, size) {}

    [[nodiscard]] bool Empty() const { return rest_.empty(); }
    [[nodiscard]] std::span<const std::uint8_t> Rest() const { return rest_; }

    std::uint8_t Octet() {
        if (rest_.empty()) {
            return 0;
        }
        const std::uint8_t octet = rest_.front();
        rest_ = rest_.subspan(1);
        return octet;
    }

    /// A number of `octets` octets, 4 at most.
    std::uint32_t Number(int octets = 4) {
        std::uint32_t number = 0;
        for (int index = 0; index < octets; ++index) {
            number = number << 8 | Octet();
        }
        return number;
    }

    /// A number below `count`, which is not 0.
    std::size_t Below(std::size_t count) {
        return count <= 256 ? Octet() % count : Number(count <= 65536 ? 2 : 4) % count;
    }

    /// Up to `count` octets.
    std::span<const std::uint8_t> Take(std::size_t count) {
        const auto taken = rest_.first(count < rest_.size() ? count : rest_.size());
        rest_ = rest_.subspan(taken.size());
        return taken;
    }

  private:
    std::span<const std::uint8_t> rest_;
};

}  // namespace quorvane::fuzz

/// The entry of every target, under the name that the fuzzing engine wants.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* octets, std::size_t size);
