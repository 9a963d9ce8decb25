#pragma once

// The radio resource elements that are C++, each as a named type with tables made by hand, and how
// their records show in expectations.

#include <string>
#include <string_view>

#include "codec_test_support.h"

namespace quorvane::families::test {

/// The type of that name: CellChannel, NeighbourCellDescription, NeighbourCellDescription2,
/// BaRange, TChType, TChDesc, TChDesc3, GrpChannelDesc, ChannelRequest, RRMobileId,
/// BitmapTypeReporting.
iecodec::test::TypeUnderTest Element(std::string_view type);

/// An integer as "5 [8,3]", value and location; one without a location as "5".
std::string Shown(const bits::Cell& cell);

/// The same of all items of a sequence, blanks between them.
std::string ItemsShown(const bits::Cell& sequence);

/// Octets as hexadecimal text: "101 00000 1" is "A0 80". Blanks do not count, the last octet is
/// filled with zeros.
std::string HexOf(std::string_view bits);

/// The low `count` bits of `value` as text.
std::string BitsOf(std::uint32_t value, int count);

}  // namespace quorvane::families::test
