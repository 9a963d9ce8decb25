#include "families/common/cell_information.h"

#include <array>

namespace quorvane::families {
namespace {

template <std::size_t kSize>
std::uint32_t BitsOf(const std::array<std::uint8_t, kSize>& bits, std::int32_t cells) {
    const bool listed = cells >= 1 && cells <= static_cast<std::int32_t>(kSize);
    return listed ? bits[static_cast<std::size_t>(cells) - 1] : 0;
}

}  // namespace

std::uint32_t FddCellInfoBits(std::int32_t cells) {
    static constexpr std::array<std::uint8_t, 16> kBits = {10, 19, 28, 36, 44,  52,  60,  67,
                                                           74, 81, 88, 95, 102, 109, 116, 122};
    return BitsOf(kBits, cells);
}

std::uint32_t TddCellInfoBits(std::int32_t cells) {
    static constexpr std::array<std::uint8_t, 20> kBits = {
        9, 17, 25, 32, 39, 46, 53, 59, 65, 71, 77, 83, 89, 95, 101, 106, 111, 116, 121, 126};
    return BitsOf(kBits, cells);
}

}  // namespace quorvane::families
