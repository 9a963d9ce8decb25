#pragma once

// Lines for `batch` that are JSON objects: {"fn":..,"hex":..,"length":..,"id":..}.
//
// Tests: tests/tool/json_request_test.cpp.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quorvane::tool {

struct JsonRequest {
    std::string function;
    std::string hex;
    std::optional<std::int32_t> length;
    std::string id;  // JSON, as it came; empty: there is none
};

/// Reads an object. Other keys are passed over. Returns what is wrong, or nothing; an id that was
/// read by then is there nevertheless.
std::string ParseJsonRequest(std::string_view line, JsonRequest& request);

}  // namespace quorvane::tool
