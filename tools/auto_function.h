#pragma once

// Which function a message belongs to, by trying them. docs/logs.md has the rule.
//
// Tests: tests/tool/auto_test.cpp.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "facade/decodings.h"
#include "quorvane/message.h"

namespace quorvane::tool {

/// What the functions make of a message.
struct AutoChoice {
    std::optional<Decoding> taken;
    std::vector<Decoding> others;  // that know it too, the most fitting one first
    /// Functions of the direction that was not asked for that know the message: if no other does,
    /// or if a discriminator tells them and none tells the one that is taken.
    std::vector<Decoding> otherDirection;
};

/// Tries the functions of a direction, of both for kBoth. `message` is used for that.
AutoChoice ChooseFunction(PaddedMessage octets, facade::Direction direction, DecodeOptions options,
                          Message& message);

/// The functions of the family of `decoding` that know the message and have the other direction.
std::vector<Decoding> OtherDirection(Decoding decoding, PaddedMessage octets, DecodeOptions options,
                                     Message& message);

/// The text for a message that no function knows, as functions have it for theirs.
std::string NotFoundText(std::string_view name);

/// "A, B and C".
std::string NamesOf(const std::vector<Decoding>& decodings);

}  // namespace quorvane::tool
