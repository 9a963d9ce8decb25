#pragma once

// Messages that need not end with an octet, as octets.

#include <cstddef>
#include <cstdint>
#include <vector>

namespace quorvane::tool {

/// Leaves the first `bits` bits, with zeros behind them in the last octet. There are as many.
inline void CutToBits(std::vector<std::uint8_t>& octets, std::int64_t bits) {
    octets.resize(static_cast<std::size_t>((bits + 7) / 8));
    if (const auto unused = static_cast<std::uint32_t>(-bits & 7); unused != 0) {
        octets.back() = static_cast<std::uint8_t>(octets.back() >> unused << unused);
    }
}

}  // namespace quorvane::tool
