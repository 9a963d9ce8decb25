#pragma once

// Elements of several families that the notation cannot express. Each is named in the descriptions
// of the families that have it; their types give the members in the order stated here.
//
// Tests: tests/unit/common_elements_test.cpp, tests/unit/traffic_flow_template_test.cpp.

#include "iecodec/tables.h"

namespace quorvane::families {

inline constexpr std::uint32_t kNumberDigits = 32;        // of a telephone or emergency number
inline constexpr std::uint32_t kIdentityDigitsKept = 15;  // of an EPS mobile identity
inline constexpr std::uint32_t kMobileIdentityKept = 17;  // of a mobile identity with its type
inline constexpr std::uint32_t kIdentityOfTmsi = 4;       // its type
inline constexpr std::uint32_t kGenericValueBits = 64;

/// Telephone digits (TS 24.008, 10.5.4.7, octets 4 ff.): a sequence of integers, two digits an
/// octet, low half first, 15 in the last high half a filler.
extern const iecodec::SpecialElement kTbcdDigits;

/// A mobile identity of which only the digits are kept: { IdentityDigit }. The first octet holds
/// the first digit, the odd/even bit and the type (TS 24.301, 9.9.3.12).
extern const iecodec::SpecialElement kIdentityDigits;

/// The same with its type: { IdentityDigit, IdentityType }. Of a TMSI the octets are stored
/// instead of digits (TS 24.008, 10.5.1.4).
extern const iecodec::SpecialElement kMobileIdentity;

/// A traffic flow template (TS 24.008, 10.5.6.12): { TFTOperationCode, PacketFilters of
/// { PacketFilterId, PacketFilterDirection, PacketFilterEvalPrecedence, FilterContents of
/// { ComponentTypeId, ComponentData } }, PacketParameters of { ParameterId, Contents } }.
extern const iecodec::SpecialElement kTrafficFlowTemplate;

/// A linked transaction identifier (TS 24.008, 10.5.6.7): { TIValue, TIFlag }.
extern const iecodec::SpecialElement kLinkedTransactionIdentifier;

/// One emergency number (TS 24.008, 10.5.3.13): { ServiceCategory, Numbers }, behind a length
/// octet of its own.
extern const iecodec::SpecialElement kEmergencyNumber;

/// A sequence whose field holds one item, which the sequence does not count: it shows as empty.
extern const iecodec::SpecialElement kUncountedItem;

/// A tag octet and a length in the form of ASN.1: { Tag, Value }.
extern const iecodec::SpecialElement kGenericTlv;

}  // namespace quorvane::families
