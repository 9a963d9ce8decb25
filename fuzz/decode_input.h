#pragma once

// The input of decode_fuzz: the decoding; the kind of length; the length, as that kind wants it;
// the octets.
//
// Tests: tests/unit/message_coverage_test.cpp.

#include <cstdint>
#include <span>
#include <vector>

#include "quorvane/decode.h"

namespace quorvane::fuzz {

struct DecodeInput {
    Decoding decoding{};
    std::int32_t length = 0;  // of the message, in octets
    std::span<const std::uint8_t> readable;
};

/// What an input of the target, whatever it is, stands for.
DecodeInput ReadDecodeInput(std::span<const std::uint8_t> octets);

/// An input that stands for that.
std::vector<std::uint8_t> WriteDecodeInput(const DecodeInput& input);

}  // namespace quorvane::fuzz
