#include "bits/bit_writer.h"

namespace quorvane::bits {

void BitWriter::Write(std::int64_t position, std::uint32_t value, std::int32_t count) {
    for (std::int32_t place = count - 1; place >= 0; --place, ++position) {
        if (position < 0 || (position >> 3) >= octetCount_) {
            overflowed_ = true;
            continue;
        }
        std::uint8_t& octet = octets_[position >> 3];
        const auto mask = static_cast<std::uint8_t>(0x80U >> (position & 7));
        const bool bit = (value >> (static_cast<std::uint32_t>(place) & 31U) & 1U) != 0;
        octet = static_cast<std::uint8_t>(bit ? octet | mask : octet & ~mask);
    }
}

void BitWriter::Copy(std::int64_t position, const std::uint8_t* source, std::int64_t count) {
    const BitReader reader(source, (count + 7) / 8);
    for (std::int64_t done = 0; done < count; done += 32) {
        const auto part = static_cast<std::int32_t>(count - done < 32 ? count - done : 32);
        Write(position + done, reader.Read(done, part), part);
    }
}

}  // namespace quorvane::bits
