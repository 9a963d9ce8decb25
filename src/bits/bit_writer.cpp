#include "bits/bit_writer.h"

#include <algorithm>

#include "bits/bit_buffer.h"

namespace quorvane::bits {

void BitWriter::Write(std::int64_t position, std::uint32_t value, std::int32_t count) {
    for (std::int32_t place = count - 1; place >= 0; --place, ++position) {
        if (position < 0 || (position >> 3) >= octetCount_) {
            overflowed_ = true;
            continue;
        }
        const std::uint32_t bit = value >> (static_cast<std::uint32_t>(place) & 31U);
        BitBufferWrite(octets_ + (position >> 3), static_cast<std::int32_t>(position & 7), bit, 1);
    }
}

void BitWriter::Copy(std::int64_t position, const std::uint8_t* source, std::int64_t count) {
    const BitReader reader(source, (count + 7) / 8);
    for (std::int64_t done = 0; done < count; done += 32) {
        const auto part = static_cast<std::int32_t>(std::min<std::int64_t>(count - done, 32));
        Write(position + done, reader.Read(done, part), part);
    }
}

}  // namespace quorvane::bits
