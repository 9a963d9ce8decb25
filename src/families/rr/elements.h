#pragma once

// Radio resource elements that the notation of descriptions cannot express, TS 44.018. Their types
// give the members in the order stated here. All members and items are located unless it says
// otherwise. Frequency lists hold the bits as they stand: channel numbers are not computed.
//
// Tests: tests/unit/rr_frequency_list_test.cpp, rr_channel_description_test.cpp,
// rr_channel_request_test.cpp, rr_elements_test.cpp.

#include "iecodec/tables.h"

namespace quorvane::families {

/// A frequency list (10.5.2.1b, 10.5.2.13): the union { BitMap0, Range1024, Range512, Range256,
/// Range128, Variable }. BitMap0 is a sequence of bits, the ranges are { W, F0 or OrigARFCN },
/// Variable is { RRFCN, OrigARFCN }. Items are taken while they end inside of the element; the
/// result goes up to the next octet boundary. Format and header are read whatever the length.
extern const iecodec::SpecialElement kFrequencyList;

/// Neighbour cells (10.5.2.22): { CellDescription, ExtInd, BAInd }, a frequency list with flags in
/// bits of its first octet that its format leaves out. The result is that of the list.
extern const iecodec::SpecialElement kNeighbourCellDescription;

/// The same with two bits of MultibandReporting in place of ExtInd (10.5.2.22a).
extern const iecodec::SpecialElement kNeighbourCellDescription2;

/// Ranges of channel numbers (10.5.2.1a): a sequence, behind an octet that counts its items and
/// alone says how many there are. The result goes up to the next octet boundary. A count above the
/// bound is a syntax error.
extern const iecodec::SpecialElement kBaRange;

/// Channel type and TDMA offset (10.5.2.5): { ChType, Subchannel }, both optional and present, both
/// located at all 5 bits. Of values without a type both are 0 and not located.
extern const iecodec::SpecialElement kChannelType;

/// A channel (10.5.2.5): { ChType, TN, TSC, H, MAIO, HSN, spare, ARFCN }. Of the last four, which
/// are optional, H says which pair is there; spare is not located. 24 bits.
extern const iecodec::SpecialElement kChannelDescription;

/// The same from TSC on (10.5.2.5c). 16 bits.
extern const iecodec::SpecialElement kChannelDescription3;

/// A channel and MA, which takes the rest of the element (10.5.2.14b). 24 bits or more.
extern const iecodec::SpecialElement kGroupChannelDescription;

/// The octet of the random access channel (9.1.8): { MessageContent, Description, RandomReference
/// }. Only the octet is located, and it alone is written.
extern const iecodec::SpecialElement kChannelRequest;

/// A mobile identity: kMobileIdentity (families/common/elements.h) with locations.
extern const iecodec::SpecialElement kLocatedMobileIdentity;

/// Bit map type reporting (9.1.55): { BitmapLength, BitmapReporting of { Index,
/// REPORTING_QUANTITY } }. One bit for each index from 0, and behind a 1 the quantity. Index is
/// located at its bit. A 1 without a whole quantity behind it, or without room for its item, ends
/// the list and is not counted in the result. BitmapLength is not on the wire.
extern const iecodec::SpecialElement kBitmapTypeReporting;

}  // namespace quorvane::families
