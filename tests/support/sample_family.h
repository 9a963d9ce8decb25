#pragma once

// The tests' own family, compiled from tests/families/sample.qd and sample.csn1.

#include "families/family.h"

namespace quorvane::families {

extern const Family kSampleFamily;

}  // namespace quorvane::families
