#pragma once

// Messages between octets and records, for the targets that go both ways.

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "families/family.h"
#include "fuzz_support.h"
#include "iecodec/message_container.h"
#include "reflect/catalogue.h"

namespace quorvane::fuzz {

/// A message set of a described family.
struct SetOfFamily {
    const families::Family* family;
    const iecodec::MessageSetRow* set;
    const reflect::Catalogue* catalogue;

    /// The type of the message with tag `tag`.
    [[nodiscard]] std::uint16_t MessageType(std::uint32_t tag) const {
        return set->memberTypes[tag - 1];
    }
};

/// All sets of all families. The same list at every call.
const std::vector<SetOfFamily>& AllSets();

struct Decoded {
    bits::Outcome result = 0;
    iecodec::MessageContainer container;
    std::string diagnostics;

    /// Whether no fault was found.
    [[nodiscard]] bool Clean() const { return !result.Failed() && diagnostics.empty(); }
};

/// Decodes `bits` bits of `octets`, by default all of them, zeros behind them. The record lives in
/// `arena`, and only it.
Decoded Decode(const SetOfFamily& set, std::span<const std::uint8_t> octets, bits::Arena& arena,
               std::optional<std::int64_t> bits = std::nullopt);

struct Encoded {
    bits::Outcome result = 0;
    bool fits = true;
    std::vector<std::uint8_t> octets;  // of the result, the last one filled up with zeros
    std::string diagnostics;

    [[nodiscard]] bool Clean() const { return !result.Failed() && fits && diagnostics.empty(); }
};

/// Encodes into a buffer of `room` octets. `checked`: what no decoder makes is refused.
Encoded Encode(const SetOfFamily& set, const iecodec::MessageContainer& container, std::size_t room,
               bool checked = false);

}  // namespace quorvane::fuzz
