#pragma once

// Messages out of the JSON that AppendJson writes (docs/json.md). Hostile input costs memory and
// time of the order of its size: it is parsed without recursion and walked no deeper than types
// are.
//
// Tests: tests/json/message_reader_test.cpp, fuzz/json_fuzz.cpp.

#include <optional>
#include <string>
#include <string_view>

#include "quorvane/message.h"

namespace quorvane::tool {

/// The words of an error, with the path of its field in front; empty if it is none.
std::string WordsOf(const MessageError& error);

/// Makes `message` the one that the JSON object `json` tells of, of the decoding `decoding`, or of
/// the one that the object names. Returns what is wrong and what would be right, with the path of
/// the field in front if it is about one, or nothing. With an error the message is one that holds
/// what was read by then, or the one from before.
std::string ReadMessage(std::string_view json, std::optional<Decoding> decoding, Message& message);

}  // namespace quorvane::tool
