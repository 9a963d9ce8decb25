#pragma once

// Messages as texts, read strictly or tolerantly, with what is wrong with them.
//
// Tests: tests/tool/tolerant_test.cpp.

#include <string>

#include "quorvane/message.h"

namespace quorvane::tool {

/// As DecodeInto, by `message` as `options` say. Behind the text stands a line for the security
/// header that the message was found behind, and one for each piece that was set aside.
bool DecodeAsText(Message& message, Decoding decoding, PaddedMessage octets, DecodeOptions options,
                  std::string& text, std::string& diagnostics);

/// The same of a message that is decoded.
void ShowAsText(const Message& message, std::string& text, std::string& diagnostics);

/// Whether anything is wrong with a message that was decoded: an error may come without a fault.
bool IsFaulty(const Message& message);

}  // namespace quorvane::tool
