#pragma once

// Functions as users name them: in any case of letters, and with slips.
//
// Tests: tests/tool/function_name_test.cpp.

#include <optional>
#include <string>
#include <string_view>

#include "facade/decodings.h"
#include "quorvane/decode.h"

namespace quorvane::tool {

inline const DecodingInfo& InfoOf(Decoding decoding) {
    return Decodings()[static_cast<std::size_t>(decoding)];
}

/// What reads a message: a decoding, or all of a direction are tried (auto_function.h).
struct Function {
    std::string_view name;                                   // to the letter
    std::optional<Decoding> decoding;                        // nothing: auto
    facade::Direction direction = facade::Direction::kBoth;  // of auto
};

/// The function of that name, in any case of letters.
std::optional<Function> FindFunction(std::string_view name);

/// "EPS_MMUplink or EPS_MMDownlink": the names that differ least from `name`, if it may be a slip
/// of them; else empty.
std::string NearestFunctions(std::string_view name);

/// What to say of a name that is none, with those that may be meant.
std::string UnknownFunction(std::string_view name);

}  // namespace quorvane::tool
