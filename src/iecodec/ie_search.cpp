#include "iecodec/ie_search.h"

namespace quorvane::iecodec {
namespace {

/// The first field from here on that claims the octet; null if none does.
const IeOrderRow* ClaimOf(std::uint8_t octet, const IeOrderRow* order) {
    for (; order->kind != IeOrderRow::kEnd; ++order) {
        if ((octet & order->mask) == order->iei) {
            return order;
        }
        if (order->kind == IeOrderRow::kWithoutIei) {
            break;
        }
    }
    return nullptr;
}

/// The bits of the element at `position`, identifier included; `size` as in its row.
std::int64_t SizeOf(std::int32_t size, const bits::BitReader& reader, std::int64_t position) {
    if (size > 0) {
        return size;
    }
    const std::int32_t width = -size;
    return 8 + width + 8 * std::int64_t{reader.Read(position + 8, width)};
}

}  // namespace

const IeFormatRow* LookupIeFormat(std::uint8_t octet, std::span<const IeFormatRow> formats) {
    std::ptrdiff_t low = 0;
    std::ptrdiff_t high = static_cast<std::ptrdiff_t>(formats.size()) - 1;
    while (low <= high) {
        const std::ptrdiff_t middle = (low + high) / 2;
        const IeFormatRow& row = formats[static_cast<std::size_t>(middle)];
        if ((octet & row.mask) == row.iei) {
            return &row;
        }
        if (octet < row.iei) {
            high = middle - 1;
        } else {
            low = middle + 1;
        }
    }
    return nullptr;
}

bool SkipIe(const bits::BitReader& reader, std::int64_t& cursor,
            std::span<const IeFormatRow> formats) {
    const IeFormatRow* row = LookupIeFormat(reader.ReadOctet(cursor), formats);
    if (row == nullptr || row->size == 0) {
        return false;
    }
    cursor += SizeOf(row->size, reader, cursor);
    return true;
}

std::int64_t UnknownIeSize(const bits::BitReader& reader, std::int64_t position,
                           std::span<const IeFormatRow> unknown) {
    const std::uint8_t octet = reader.ReadOctet(position);
    const IeFormatRow* row = LookupIeFormat(octet, unknown);
    return SizeOf(row == nullptr ? UnknownIeFormat(octet) : row->size, reader, position);
}

IeSearch FindIe(std::uint8_t iei, std::int32_t ieiWidth, const bits::BitReader& reader,
                std::int64_t& cursor, std::int64_t end, std::span<const IeFormatRow> formats,
                const IeOrderRow* order, const IeOrderRow** claim) {
    while (end - cursor >= ieiWidth) {
        const std::uint32_t bits = reader.Read(cursor, ieiWidth);
        if (bits == iei) {
            return IeSearch::kFound;
        }
        const auto octet =
            static_cast<std::uint8_t>(ieiWidth == 8 ? bits : reader.ReadOctet(cursor));
        const IeOrderRow* claiming = order == nullptr ? nullptr : ClaimOf(octet, order);
        if (claiming != nullptr) {
            if (claim != nullptr) {
                *claim = claiming;
            }
            return IeSearch::kAbsent;
        }
        if (!SkipIe(reader, cursor, formats)) {
            return IeSearch::kBlocked;
        }
    }
    return IeSearch::kAbsent;
}

}  // namespace quorvane::iecodec
