#pragma once

// All entry points by name, and calls of the plain functions as tests want them.

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "quorvane/decode.h"
#include "quorvane/engine.h"

namespace quorvane::test {

using PlainFunction = int (*)(const std::uint8_t*, std::int32_t, CString&);
using Member = int (CQuorvaneEngine::*)(const std::uint8_t*, std::int32_t, CString&);

struct EntryPoint {
    Decoding decoding;
    std::string_view name;
    PlainFunction plain;
    Member member;
};

/// In the order of the enumerators.
std::span<const EntryPoint> EntryPoints();

/// What a plain function gave: its result, and its text as UTF-8.
struct PlainResult {
    int value = -1;
    std::string text;
};

/// Calls the plain function with `readable` followed by zeros, as many as a decoder may look at.
PlainResult CallPlain(Decoding decoding, std::span<const std::uint8_t> readable,
                      std::int32_t length);

/// The characters of `text` as UTF-8.
std::string ToUtf8(const CString& text);

/// `diagnostics` with each number "<ERRID:n>" written as "<ERRID:*>".
std::string WithoutNumbers(std::string_view diagnostics);

}  // namespace quorvane::test
