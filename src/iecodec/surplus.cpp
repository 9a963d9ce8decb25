#include "iecodec/surplus.h"

#include <limits>

#include "bits/bit_buffer.h"

namespace quorvane::iecodec {

bool SurplusList::Keep(bits::Arena& arena, const bits::BitReader& reader, Surplus surplus) {
    const std::int64_t end = surplus.position + surplus.bitCount;
    if (end > 8 * reader.OctetCount() || end > std::numeric_limits<std::uint32_t>::max()) {
        return false;
    }
    if (items_.size() == kMostItems) {
        return true;
    }
    auto* octets = static_cast<std::uint8_t*>(
        arena.Allocate(bits::OctetsOf(static_cast<std::uint32_t>(surplus.bitCount))));
    reader.Copy(octets, surplus.position, surplus.bitCount);
    surplus.octets = octets;
    items_.push_back(surplus);
    return true;
}

void SurplusList::DropPast(std::int64_t end) {
    while (!items_.empty() && End() > end) {
        items_.pop_back();
    }
}

}  // namespace quorvane::iecodec
