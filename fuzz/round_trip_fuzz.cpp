// Encoding after decoding: what decodes without a fault encodes, and what comes out decodes to the
// same record and encodes to the same octets.
//
// The encoder has rules of its own that keep some records from coming back: it writes a truncatable
// structure whole, whatever was cut off; it takes no care that a CSN.1 structure ends with an
// octet, and works out anew the lengths inside of it; of some structures the record does not tell
// all; some read what stands behind them; a digit list that was refused has gone. All of that shows
// in the field alone: see ComesBack. Nothing else may be lost.
//
// Input: the message set; the octets.

#include <algorithm>
#include <vector>

#include "csn_limits.h"
#include "fuzz_support.h"
#include "iecodec/value_encoder.h"
#include "message_codec.h"
#include "reach.h"
#include "reflect/convert.h"

namespace quorvane {
namespace {

using fuzz::Decoded;
using fuzz::Encoded;
using fuzz::Require;

using Format = iecodec::FieldRow::Format;

constexpr std::size_t kRoom = 65536;

bool ComesBack(const families::Family& family, const iecodec::MessageRow& message,
               const bits::Cell& body);

/// Whether `bits` are what a field of this format can hold.
bool Fits(const iecodec::FieldRow& field, std::int64_t bits) {
    switch (field.format) {
        case Format::kV:
        case Format::kTv:
            return field.unchecked || bits == field.width;
        case Format::kLv:
        case Format::kLvE:
        case Format::kTlv:
        case Format::kTlvE:
            return bits % 8 == 0 && bits >= 8 * field.leastOctets && bits <= 8 * field.mostOctets;
        case Format::kRest:
        case Format::kHalfLow:
        case Format::kHalfHigh:
        case Format::kTvHalf:
        case Format::kT:
        case Format::kEndCheck:
            break;
    }
    return true;
}

/// Whether a part of the value has no bits of its own: it is read from what follows, and not
/// written there.
bool ReadsBehind(const iecodec::CodecTables& tables, const iecodec::ValueRow& row) {
    if (row.shape != iecodec::Shape::kFixed && row.shape != iecodec::Shape::kTruncatable) {
        return false;
    }
    const auto parts = tables.parts.subspan(row.first, row.count);
    return std::any_of(parts.begin(), parts.end(), [&](const iecodec::PartRow& part) {
        return part.kind == iecodec::PartKind::kValue &&
               (part.width == 0 || ReadsBehind(tables, tables.values[part.value]));
    });
}

/// Whether the encoder's rules let a CSN.1 structure come back.
bool StructureComesBack(const families::Family& family, const csn::CsnStructure& structure,
                        const bits::Cell& cell) {
    const auto types = family.types.named;
    const auto type = std::find_if(types.begin(), types.end(), [&](std::uint16_t index) {
        return family.types.NameOf(family.types.types[index]) == structure.name;
    });
    Require(type != types.end(), "a structure has a named type");
    return !fuzz::IsLossy(family, structure) && !fuzz::HoldsCutField(family.types, *type, cell) &&
           !fuzz::HoldsManyFields(family.types, *type, cell);
}

/// Whether the encoder's rules let this field come back.
bool FieldComesBack(const families::Family& family, const iecodec::FieldRow& field,
                    const bits::Cell& cell) {
    const iecodec::CodecTables& tables = family.codec;
    const iecodec::ValueRow& row = tables.values[field.value];
    const fuzz::ExactOctets octets({}, kRoom);
    bits::BitWriter writer(octets.Data(), static_cast<std::int64_t>(octets.Size()));
    iecodec::Diagnostics diagnostics;
    iecodec::EncodeContext context{tables, writer, diagnostics};
    const bits::Outcome result = iecodec::EncodeValue(context, row, 0, cell);
    if (row.shape == iecodec::Shape::kCsn &&
        !StructureComesBack(family, tables.structures[row.item], cell)) {
        return false;
    }
    Require(!result.Failed(), "what decodes does not encode");
    if (!Fits(field, result.Bits()) || ReadsBehind(tables, row)) {
        return false;
    }
    if (row.shape == iecodec::Shape::kMessageBody) {
        return ComesBack(family, tables.messages[row.item], cell);
    }
    if (row.shape == iecodec::Shape::kMessageSet) {
        for (const auto& alternative : tables.alternatives.subspan(row.first, row.count)) {
            if (alternative.tag == cell.number) {
                return ComesBack(family, tables.messages[alternative.value], *cell.cells);
            }
        }
    }
    return true;
}

bool ComesBack(const families::Family& family, const iecodec::MessageRow& message,
               const bits::Cell& body) {
    const auto fields = family.codec.fields.subspan(message.firstField, message.fieldCount);
    return std::all_of(fields.begin(), fields.end(), [&](const iecodec::FieldRow& field) {
        if (field.value == iecodec::kNone) {
            return true;
        }
        const bits::Cell& cell = iecodec::MemberOf(body, field.element);
        const bool written =
            field.presence == iecodec::FieldRow::Presence::kMandatory || cell.present;
        return !written || FieldComesBack(family, field, cell);
    });
}

void CheckRoundTrip(const fuzz::SetOfFamily& set, const Decoded& decoded, bits::Arena& arena) {
    const Encoded encoded = fuzz::Encode(set, decoded.container, kRoom);
    const std::uint16_t message = set.set->messages[decoded.container.tag - 1];
    if (!ComesBack(*set.family, set.family->codec.messages[message], decoded.container.body)) {
        return;
    }
    Require(encoded.Clean(), "what decodes does not encode");
    const Decoded again = fuzz::Decode(set, encoded.octets, arena, encoded.result.Bits());
    Require(again.Clean(), "what was encoded does not decode");
    Require(again.container.tag == decoded.container.tag, "another message comes back");
    Require(reflect::RecordsEqual(set.family->types, set.MessageType(decoded.container.tag),
                                  decoded.container.body, again.container.body, false),
            "another record comes back");
    const Encoded second = fuzz::Encode(set, again.container, kRoom);
    Require(second.result == encoded.result && second.octets == encoded.octets,
            "the second encoding differs from the first");
}

}  // namespace
}  // namespace quorvane

int LLVMFuzzerTestOneInput(const std::uint8_t* octets, std::size_t size) {
    using namespace quorvane;
    fuzz::Input input(octets, size);
    const fuzz::SetOfFamily& set = fuzz::AllSets()[input.Below(fuzz::AllSets().size())];
    bits::Arena arena;
    const Decoded decoded = fuzz::Decode(set, input.Rest(), arena);
    fuzz::ReachOfThisRun().NoteMessage(*set.family, *set.set, decoded.container);
    if (decoded.Clean()) {
        CheckRoundTrip(set, decoded, arena);
    } else {
        // Nothing is promised of the octets then.
        static_cast<void>(fuzz::Encode(set, decoded.container, input.Rest().size()));
    }
    return 0;
}
