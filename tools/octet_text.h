#pragma once

// Octets as logs have them: digits in many forms, and the lines of dumps. docs/logs.md has the
// grammar.
//
// Tests: tests/tool/octet_text_test.cpp.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace quorvane::tool {

/// Replaces `octets` by those of the one message that `text` holds, on one line or several. Blank
/// lines and those that begin with # are passed over. Returns what is wrong and where, or nothing.
std::string ParseOctets(std::string_view text, std::vector<std::uint8_t>& octets);

/// Whether a text of one line can be nothing but a line of a dump: it begins with an offset that is
/// 0 or has a colon.
bool BeginsWithOffset(std::string_view line);

}  // namespace quorvane::tool
