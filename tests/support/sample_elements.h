#pragma once

// C++ of the tests' own family.

#include "iecodec/tables.h"

namespace quorvane::families {

/// An octet whose first bit chooses: the union { Flags, Pairs } of a sequence of bits and a struct
/// { Base, Steps }, 3 bits and two steps of 2 bits; a base of 0 counts as absent.
extern const iecodec::SpecialElement kSampleFormat;

}  // namespace quorvane::families
