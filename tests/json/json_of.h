#pragma once

// Messages as JSON, for the tests of its form.

#include <cstdint>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "quorvane/json.h"

namespace quorvane::test {

using Octets = std::vector<std::uint8_t>;

inline std::string JsonOf(Decoding decoding, const Octets& octets, DecodeOptions options = {}) {
    Message message;
    message.Decode(decoding, octets, options);
    std::string json;
    AppendJson(message, json);
    return json;
}

inline testing::AssertionResult Has(const std::string& json, const std::string& part) {
    return json.find(part) != std::string::npos ? testing::AssertionSuccess()
                                                : testing::AssertionFailure() << json;
}

}  // namespace quorvane::test
