#pragma once

// A decoded message as JSON: its fields, or its text as a string. docs/json.md describes the form
// of the fields, docs/json.schema.json is its schema.
//
//     #include <quorvane/json.h>
//
//     const std::uint8_t octets[] = {0x02, 0x01, 0xD0, 0x31};
//     quorvane::Message message;
//     message.Decode(quorvane::Decoding::EPS_SMUplink, octets);
//     std::string json;
//     quorvane::AppendJson(message, json);
//
// gives, on one line,
//
//     {"decoding":"EPS_SMUplink","type":"PDN_CONNECTIVITY_REQUEST","code":0,"bits":32,"fields":{
//     "EPSBearerIdentity":{"value":0},"ProcedureTransactionIdentity":{"value":1},
//     "RequestType":{"value":1,"words":"initial attach","at":[28,4]},
//     "PDNType":{"value":3,"words":"IPv4v6","at":[24,4]}}}
//
// The text is UTF-8 without line ends. Names and order are those of the fields of the message.

#include <cstdint>
#include <span>
#include <string>

#include "quorvane/decode.h"
#include "quorvane/export.h"
#include "quorvane/message.h"

namespace quorvane {

/// Appends one object that has all of `message`, also if it found none. Allocates nothing but what
/// `json` needs to grow, from a thread's second call on. Memory that runs out leaves as
/// std::bad_alloc; what stands in `json` is not specified then.
QUORVANE_API void AppendJson(const Message& message, std::string& json);

/// Decodes as DecodeInto does (quorvane/decode.h), but appends the text to `json` as a string of
/// JSON, quotes included: at the cost of the text alone, as nothing in it needs a second look.
/// Replaces what `diagnostics` holds. The two must be different strings.
QUORVANE_API bool AppendTextAsJson(Decoding decoding, std::span<const std::uint8_t> message,
                                   std::string& json, std::string& diagnostics);
QUORVANE_API bool AppendTextAsJson(Decoding decoding, PaddedMessage message, std::string& json,
                                   std::string& diagnostics);

}  // namespace quorvane
