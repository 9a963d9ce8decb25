#pragma once

// The one way in which a decoder looks at a message. A BitReader owns the bound of what may be
// read: bits outside it read as 0, so that no position, however it was computed, reaches memory
// that the caller did not hand over.
//
// Tests: tests/unit/bit_reader_test.cpp.

#include <cstdint>
#include <cstring>

namespace quorvane::bits {

/// What GSM fills frames and rest octets with.
inline constexpr std::uint8_t kFillOctet = 0x2B;

class BitReader {
  public:
    /// Reads of the `octetCount` octets at `octets`, which must outlive the reader.
    BitReader(const std::uint8_t* octets, std::int64_t octetCount)
        : octets_(octets), octetCount_(octetCount) {}

    /// The `count` bits (0 to 32) at bit `position`, most significant first; bits outside the
    /// buffer read as 0.
    [[nodiscard]] std::uint32_t Read(std::int64_t position, std::int32_t count) const {
        const std::int64_t index = position >> 3;
        const std::int64_t over = index + kWindow - octetCount_;  // octets of the window behind it
        if (position < 0 || over >= kWindow || octetCount_ < kWindow) {
            return ReadNearEdge(position, count);
        }
        if (count < 1) {
            return 0;
        }
        // The last window of a buffer serves all bits up to its end.
        const std::int64_t back = over > 0 ? over : 0;
        const std::uint64_t window = Window(octets_ + index - back) << (8 * back) << (position & 7);
        return static_cast<std::uint32_t>(window >> (64 - count));
    }

    /// The bit at `position`; 0 outside the buffer.
    [[nodiscard]] std::uint32_t ReadBit(std::int64_t position) const {
        const std::int64_t index = position >> 3;
        if (index < 0 || index >= octetCount_) {
            return 0;
        }
        return octets_[index] >> (7 - (position & 7)) & 1U;
    }

    /// The octet at bit `position`.
    [[nodiscard]] std::uint8_t ReadOctet(std::int64_t position) const {
        return static_cast<std::uint8_t>(Read(position, 8));
    }

    /// The 64 bits from the octet of bit `position` on, the first one on top; bits outside the
    /// buffer are 0.
    [[nodiscard]] std::uint64_t ReadWindow(std::int64_t position) const {
        const std::int64_t index = position >> 3;
        return index >= 0 && index <= octetCount_ - kWindow ? Window(octets_ + index)
                                                            : WindowNearEdge(index);
    }

    /// Copies `count` bits at bit `position` to the start of `destination`, which holds at least
    /// (count + 7) / 8 octets. The unused low bits of the last octet become 0. A count below 1 does
    /// nothing.
    void Copy(std::uint8_t* destination, std::int64_t position, std::int64_t count) const;

    /// How many octets may be read.
    [[nodiscard]] std::int64_t OctetCount() const { return octetCount_; }

  private:
    static constexpr std::int64_t kWindow = 8;

    /// Eight octets as one number. Compilers make one load and a byte swap of this form.
    static std::uint64_t Window(const std::uint8_t* octets) {
        return std::uint64_t{octets[0]} << 56 | std::uint64_t{octets[1]} << 48 |
               std::uint64_t{octets[2]} << 40 | std::uint64_t{octets[3]} << 32 |
               std::uint64_t{octets[4]} << 24 | std::uint64_t{octets[5]} << 16 |
               std::uint64_t{octets[6]} << 8 | std::uint64_t{octets[7]};
    }

    [[nodiscard]] std::uint32_t ReadNearEdge(std::int64_t position, std::int32_t count) const;
    [[nodiscard]] std::uint64_t WindowNearEdge(std::int64_t index) const;

    const std::uint8_t* octets_;
    std::int64_t octetCount_;
};

/// Reads of bits that lie close together: one look at the message serves many.
class BitWindow {
  public:
    explicit BitWindow(const BitReader& reader) : reader_(reader) {}

    /// As BitReader::Read.
    [[nodiscard]] std::uint32_t Read(std::int64_t position, std::int32_t count) {
        auto offset = static_cast<std::uint64_t>(position - start_);
        if (offset > static_cast<std::uint64_t>(kBits - count)) {
            start_ = position & ~std::int64_t{7};
            window_ = reader_.ReadWindow(position);
            offset = static_cast<std::uint64_t>(position - start_);
        }
        // In two steps: 64 is too far for one, and 0 bits have to give 0.
        return static_cast<std::uint32_t>(window_ << offset >> 1 >> (kBits - 1 - count));
    }

  private:
    static constexpr std::int64_t kBits = 64;

    const BitReader& reader_;
    std::int64_t start_ = -kBits;  // nothing is in the window
    std::uint64_t window_ = 0;
};

}  // namespace quorvane::bits
