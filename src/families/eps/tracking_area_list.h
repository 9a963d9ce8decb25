#pragma once

// Tracking area identity list, TS 24.301, 9.9.3.33.
//
// Tests: tests/unit/tracking_area_list_test.cpp, tests/golden/eps.

#include "iecodec/tables.h"

namespace quorvane::families {

/// One partial list: the union { Type0, Type1, Type2 }. The type of list, bits 7 and 6 of the
/// first octet, chooses the alternative; the four low bits of the number of elements give the
/// length of types 0 and 2, behind the first octet. Type 1 is a structure over the first octet
/// too. Type 3 is a syntax error.
extern const iecodec::SpecialElement kTrackingAreaListItem;

}  // namespace quorvane::families
