#pragma once

// A message's faults, set beside what they explain.
//
// Tests: tests/tool/report_test.cpp.

#include <string>
#include <string_view>

#include "quorvane/message.h"

namespace quorvane::tool {

/// The message's text with a line behind that of each field that a fault tells of: "^", the path of
/// the field, the bit where the decoder stood, and the fault's words. A fault of the message itself
/// stands behind its name.
std::string WithNotes(std::string_view text, const Message& message);

}  // namespace quorvane::tool
