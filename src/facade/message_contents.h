#pragma once

// What a Message holds.

#include <memory>

#include "bits/arena.h"
#include "facade/decoder.h"
#include "facade/tolerant_decoder.h"
#include "quorvane/message.h"

namespace quorvane {

struct Message::Contents {
    bits::Arena arena;
    iecodec::Diagnostics diagnostics;
    facade::DecodedRecord decoded;
    facade::Tolerated tolerated;
    Decoding decoding{};
    bool made = false;  // not decoded

    bool Decode(Decoding by, const bits::BitReader& reader, std::int64_t length,
                DecodeOptions options) {
        Clear(by);
        if (options.tolerant) {
            facade::DecodeTolerantly(decoding, reader, length, options.deciphered, arena,
                                     diagnostics, decoded, tolerated);
        } else {
            facade::DecodeRecord(decoding, reader, length, arena, diagnostics, decoded);
        }
        return decoded.Found();
    }

    /// Should memory run out behind this, nothing was found.
    void Clear(Decoding by) {
        decoded = {};
        decoding = by;
        made = false;
        arena.Reset();
        diagnostics.Clear();
        tolerated.Clear();
    }

    [[nodiscard]] const reflect::TypeTables& Types() const { return decoded.binding.family->types; }

    // Of a message that was found.

    [[nodiscard]] Field Root() const {
        Field root;
        root.message_ = this;
        root.cell_ = &decoded.container.body;
        root.type_ = decoded.Type();
        return root;
    }

    /// The field that `cell` is the value of; no field if it is none. Looks through the message.
    [[nodiscard]] Field FieldOf(const bits::Cell* cell) const {
        Field found;
        if (cell != nullptr && cell != &bits::kEmptyCell) {
            Visit(Root(), [&](const Field& field, unsigned) {
                if (!found && field.cell_ == cell) {
                    found = field;
                }
                return !found;
            });
        }
        return found;
    }
};

namespace facade {

/// What `held` points at, made on first use.
template <typename Contents>
Contents& ReadyFor(std::unique_ptr<Contents>& held) {
    if (held == nullptr) {
        held = std::make_unique<Contents>();
    }
    return *held;
}

}  // namespace facade
}  // namespace quorvane
