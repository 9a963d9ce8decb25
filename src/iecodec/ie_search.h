#pragma once

// The search for an information element, and the way past those that stand before it.
//
// Tests: tests/unit/ie_search_test.cpp.

#include <cstdint>
#include <span>

#include "bits/bit_reader.h"
#include "iecodec/codec_context.h"

namespace quorvane::iecodec {

/// The row that the octet matches, or null. The search halves the table and compares the octet
/// with identifiers unmasked: a row whose mask leaves bits open is found only where it is probed.
const IeFormatRow* LookupIeFormat(std::uint8_t octet, std::span<const IeFormatRow> formats);

/// Moves the cursor over the element at it. Returns false, the cursor unmoved, if the element
/// cannot be skipped. The cursor may pass the end of the message.
bool SkipIe(const bits::BitReader& reader, std::int64_t& cursor,
            std::span<const IeFormatRow> formats);

/// The bits of the element at `position`, which has no row in a family's skip table, identifier
/// included. `unknown` has the rows of those that differ from UnknownIeFormat.
[[nodiscard]] std::int64_t UnknownIeSize(const bits::BitReader& reader, std::int64_t position,
                                         std::span<const IeFormatRow> unknown);

/// What a search came to.
enum class IeSearch : std::uint8_t {
    kFound,    // the cursor is on the element's identifier
    kAbsent,   // it isn't there
    kBlocked,  // an element stands in the way that cannot be skipped
};

/// Looks for the element with the identifier `iei` between the cursor and `end`. The identifier has
/// `ieiWidth` bits: 8, or 4, which are then the low half of `iei`. `order` is the field's own order
/// row with those behind it, up to the end row; null for a mandatory field. Where the search ends
/// at an element that one of these claims, `*claim` tells which one, unless `claim` is null.
[[nodiscard]] IeSearch FindIe(std::uint8_t iei, std::int32_t ieiWidth,
                              const bits::BitReader& reader, std::int64_t& cursor, std::int64_t end,
                              std::span<const IeFormatRow> formats, const IeOrderRow* order,
                              const IeOrderRow** claim = nullptr);

}  // namespace quorvane::iecodec
