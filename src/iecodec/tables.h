#pragma once

// What the type-length-value codec knows of a message family, as constant tables. The description
// compiler writes them; message_decoder, value_decoder and their encoding twins run them. A row
// refers to rows of other tables by index. All lengths are in bits unless a name says octets.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "bits/named_enum.h"
#include "bits/record.h"
#include "csn/csn_program.h"

namespace quorvane::iecodec {

struct DecodeContext;
struct EncodeContext;
struct ValueRow;

/// "No row" of a table, "no member" of a record.
inline constexpr std::uint16_t kNone = 0xFFFF;

/// A row of a family's skip table, sorted by identifier: how an information element that a message
/// has no field for is passed over.
struct IeFormatRow {
    std::uint8_t iei;   // bits outside the mask are 0
    std::uint8_t mask;  // 0xFF, or 0xF0 for a half-octet identifier
    std::int32_t size;  // > 0: the whole element, identifier included; < 0: minus the width of the
                        // length field behind the identifier; 0: cannot be skipped
};

/// The `size` of an element that no row tells of: its identifier says whether it is one octet or a
/// length of one octet follows (TS 24.007, 11.2.4).
constexpr std::int32_t UnknownIeFormat(std::uint8_t iei) {
    return (iei & 0x80U) != 0 ? 8 : -8;
}

QUORVANE_NAMED_ENUM(IeOrderKind, kWithIei,
                    kWithoutIei,  // mandatory, iei and mask 0: whatever stands there belongs to it
                    kEnd)

/// A row of a message's order table: what may still come while an optional field is looked for.
struct IeOrderRow {
    using Kind = IeOrderKind;
    using enum IeOrderKind;

    std::uint8_t iei;  // 8-bit form
    std::uint8_t mask;
    Kind kind;
};

/// The forms of a field in a message body (TS 24.007): enumerator, the word for it in descriptions,
/// the bits of the identifier and of the length field in front of the value, and what ends the
/// value.
// clang-format off
#define QUORVANE_FIELD_FORMATS(FORMAT)                                                                      \
    FORMAT(kV,        "V",        0, 0,  kWidth)                                                            \
    FORMAT(kHalfLow,  "V half",   0, 0,  kWidth)  /* first of two half octets: the low half */              \
    FORMAT(kHalfHigh, "V half",   0, 0,  kWidth)  /* second of two: the high half */                        \
    FORMAT(kLv,       "LV",       0, 8,  kLength)                                                           \
    FORMAT(kLvE,      "LV-E",     0, 16, kLength)                                                           \
    FORMAT(kTv,       "TV",       8, 0,  kWidth)                                                            \
    FORMAT(kTvHalf,   "TV half",  4, 0,  kWidth)  /* identifier in the high half octet, value in the low */ \
    FORMAT(kTlv,      "TLV",      8, 8,  kLength)                                                           \
    FORMAT(kTlvE,     "TLV-E",    8, 16, kLength)                                                           \
    FORMAT(kT,        "T",        8, 0,  kNoValue)                                                          \
    FORMAT(kRest,     "rest",     0, 0,  kMessageEnd)                                                       \
    FORMAT(kEndCheck, "endcheck", 0, 0,  kNoValue)
// clang-format on

#define QUORVANE_FORMAT_NAME(name, word, identifier, length, end) name,
QUORVANE_NAMED_ENUM(FieldFormat, QUORVANE_FIELD_FORMATS(QUORVANE_FORMAT_NAME))
#undef QUORVANE_FORMAT_NAME

struct FieldFormatInfo {
    enum class ValueEnd : std::uint8_t { kNoValue, kWidth, kLength, kMessageEnd };

    std::int32_t ieiWidth;     // 0: it has none
    std::int32_t lengthWidth;  // 0: it has none
    ValueEnd valueEnd;
};

inline constexpr FieldFormatInfo kFieldFormats[] = {
#define QUORVANE_FORMAT_INFO(name, word, identifier, length, end) \
    {identifier, length, FieldFormatInfo::ValueEnd::end},
    QUORVANE_FIELD_FORMATS(QUORVANE_FORMAT_INFO)
#undef QUORVANE_FORMAT_INFO
};

constexpr const FieldFormatInfo& InfoOf(FieldFormat format) {
    return kFieldFormats[static_cast<std::size_t>(format)];
}

QUORVANE_NAMED_ENUM(FieldPresence, kMandatory, kOptional, kConditional)

/// One field of a message body.
struct FieldRow {
    using Format = FieldFormat;
    using Presence = FieldPresence;

    std::string_view name;
    Format format;
    Presence presence;
    std::uint8_t iei;           // 8-bit form
    std::uint16_t element;      // member of the message's record
    std::uint16_t value;        // ValueRow; kNone: a spare half octet, an end check: nothing stored
    std::uint16_t width;        // formats without a length field
    std::uint16_t leastOctets;  // limits of a length field
    std::uint16_t mostOctets;
    std::uint16_t order;  // own IeOrderRow

    bool unchecked;  // neither the value's result nor the end behind it is compared

    // kConditional: there if the integer member `conditionElement`, or the member `conditionMember`
    // of that struct, masked, has the value.
    std::uint16_t conditionElement;
    std::uint16_t conditionMember;  // kNone: of no struct
    std::uint32_t conditionMask;
    std::uint32_t conditionValue;

    // Diagnostic numbers.
    std::uint16_t encodeNumber;
    std::uint16_t sizeNumber;
    std::uint16_t valueNumber;
    std::uint16_t shortNumber;
};

/// Whether the record `cells` has the value that a conditional field asks for.
inline bool ConditionHolds(const FieldRow& field, const bits::Cell* cells) {
    const bits::Cell* decider = &cells[field.conditionElement];
    if (field.conditionMember != kNone) {
        if (decider->cells == nullptr) {
            return false;
        }
        decider = &decider->cells[field.conditionMember];
    }
    return (decider->number & field.conditionMask) == field.conditionValue;
}

/// The wire forms of a value.
QUORVANE_NAMED_ENUM(
    Shape,
    kInteger,      // `width` bits
    kBinary,       // as many bits as there are, `capacity` of them stored
    kFixed,        // parts at fixed offsets, `width` bits whatever the length
    kTruncatable,  // the same, ending ahead of the first part that the length does not reach
    kSerial,       // parts one behind the other, some of them counted
    kChoice,       // a selector inside the value chooses the alternative
    kSequence,     // items of `item` while length is left
    kExtension,    // octet groups cut by their extension bits, and a remainder
    kCsn,          // a CSN.1 structure
    kMessageSet,   // a whole message of the set `item`, chosen by its type
    kMessageBody,  // the fields of message `item`, without its header
    kSpecial)      // C++: SpecialElement `item`

/// How one type of value lies on the wire.
struct ValueRow {
    std::string_view name;  // of the type, for diagnostics
    Shape shape;
    bool located;            // kInteger: notes its location
    std::uint16_t members;   // struct types: members of the record
    std::uint32_t capacity;  // kBinary: bits; kSequence: items
    std::uint16_t width;     // kInteger, kFixed; kBinary: bits if always the same
    std::uint16_t first;     // kFixed, kTruncatable, kSerial: PartRow; kChoice: AlternativeRow;
    std::uint16_t count;     //   kExtension: GroupRow; kMessageSet: AlternativeRow
    std::uint16_t item;      // see Shape; kCsn: CsnStructure; kExtension: remainder's ValueRow
    std::uint16_t element;   // kExtension: remainder's member
    std::uint16_t selectorOffset;  // kChoice
    std::uint16_t selectorWidth;
    std::uint16_t decodeNumber;  // diagnostic of a sequence or a remainder
    std::uint16_t encodeNumber;
    std::uint16_t shortNumber;  // kExtension: an announced octet is not there
};

QUORVANE_NAMED_ENUM(PartKind,
                    kSkip,     // spare bits
                    kInteger,  // `width` bits
                    kValue,    // a nested ValueRow over `width` bits
                    kCounted,  // a length octet, then that many octets to the ValueRow (kSerial)
                    kRest)     // the rest of the value to the ValueRow

/// A part of a structure.
struct PartRow {
    using Kind = PartKind;

    Kind kind;
    std::uint16_t element;
    std::uint16_t offset;  // from the start of the structure or octet; unused in kSerial
    std::uint16_t width;
    std::uint16_t value;   // ValueRow
    bool located = false;  // kInteger: notes its location, as its ValueRow does
};

/// An alternative of a choice, or a message of a nested set.
struct AlternativeRow {
    std::uint32_t selector;
    bool isDefault;       // taken by every selector value without a row of its own
    std::uint16_t tag;    // from 1
    std::uint16_t value;  // ValueRow, or MessageRow
};

/// An octet of a 0/1ext information element, without its extension bit.
struct OctetRow {
    std::uint16_t firstPart;  // offsets count from the octet's first bit
    std::uint16_t partCount;
    std::uint16_t flagElement;  // optional member whose presence says that the octet was there
};

/// An octet group: octets n, na, nb, ...
struct GroupRow {
    bool mandatory;
    std::uint8_t number;  // the standard's octet number
    std::uint16_t firstOctet;
    std::uint16_t octetCount;
    std::uint16_t missingNumber;  // diagnostic
};

/// A value with a hand-written codec. Both functions follow the rules of DecodeValue and
/// EncodeValue (value_decoder.h, value_encoder.h).
struct SpecialElement {
    std::string_view name;
    bits::Outcome (*decode)(DecodeContext& context, const ValueRow& row, std::int64_t position,
                            bits::Cell& cell, std::int64_t length);
    bits::Outcome (*encode)(EncodeContext& context, const ValueRow& row, std::int64_t position,
                            const bits::Cell& cell);
};

QUORVANE_NAMED_ENUM(HeaderItemKind,
                    kField,               // a member of the record
                    kFieldAfterBody,      // one that is stored only after a body that did not fail
                    kConstant,            // e.g. the protocol discriminator
                    kMessageType,         // the message's own code
                    kExtendedIdentifier,  // a 3-bit transaction identifier, extended if it is 7
                    kPseudoLength)        // passed; written as the octets that follow, times 4,
                                          // plus 1

/// A piece of a message's header, in wire order.
struct HeaderItemRow {
    using Kind = HeaderItemKind;

    Kind kind;
    std::uint16_t element;
    std::uint8_t width;
    std::uint32_t constant;
};

struct MessageRow {
    std::string_view name;
    std::uint16_t members;  // of the record
    std::uint32_t code;     // message type on the wire
    std::uint16_t firstHeaderItem;
    std::uint16_t headerItemCount;
    std::uint16_t firstField;
    std::uint16_t fieldCount;
    std::uint16_t countedFields;  // a pseudo length ends behind so many
    std::uint16_t value = kNone;  // of a struct without header and fields: the ValueRow of it all
};

/// A mask for the keys of some first octets: those whose halves are in the nibble sets.
struct KeyMaskRow {
    std::uint16_t highNibbles;  // bit n: n is in the set
    std::uint16_t lowNibbles;
    std::uint16_t mask;
};

/// The first row for the first octet `first`, or null.
constexpr const KeyMaskRow* FindMask(std::span<const KeyMaskRow> rows, std::uint32_t first) {
    for (const KeyMaskRow& row : rows) {
        if ((row.highNibbles >> (first >> 4) & row.lowNibbles >> (first & 15U) & 1U) != 0) {
            return &row;
        }
    }
    return nullptr;
}

/// The mask for the key behind that octet.
constexpr std::uint32_t MaskFor(std::span<const KeyMaskRow> rows, std::uint32_t first) {
    const KeyMaskRow* row = FindMask(rows, first);
    return row == nullptr ? 0xFFFF : row->mask;
}

struct KeyRow {
    std::uint16_t key;
    std::uint16_t tag;
};

/// The most of the octets below that tell a message from the others: one look at a message has all.
inline constexpr std::uint8_t kMostKeyOctet = 7;

QUORVANE_NAMED_ENUM(
    KeyForm,
    kTwoOctets,           // octets `highOctet` and `lowOctet`, masked
    kSixBits,             // the upper six bits of the first octet
    kExtendedIdentifier,  // the type octet stands behind the transaction identifier's extension
    kKeyless)             // one message, whatever the octets

/// The messages of one direction of a family, in the order of their tags; or the one message of a
/// decoding that has nothing to choose.
struct MessageSetRow {
    std::string_view name;
    std::uint16_t type;  // the union, in the family's type table; kNone with KeyForm::kKeyless
    KeyForm keyForm;
    std::uint8_t highOctet;
    std::uint8_t lowOctet;
    std::uint8_t typeOctet;  // what the container shows as message type
    std::span<const KeyMaskRow> masks;
    std::span<const KeyRow> keys;                // sorted by key
    std::span<const std::uint16_t> messages;     // MessageRow by tag - 1
    std::span<const std::uint16_t> memberTypes;  // type of each message, by tag - 1
};

/// All tables of a family's codec.
struct CodecTables {
    std::span<const IeFormatRow> formats;
    std::span<const IeFormatRow> unknownFormats;  // identifiers that UnknownIeFormat is wrong about
    std::span<const IeOrderRow> orders;
    std::span<const FieldRow> fields;
    std::span<const ValueRow> values;
    std::span<const PartRow> parts;
    std::span<const AlternativeRow> alternatives;
    std::span<const GroupRow> groups;
    std::span<const OctetRow> octets;
    std::span<const HeaderItemRow> headerItems;
    std::span<const MessageRow> messages;
    std::span<const MessageSetRow> sets;
    std::span<const csn::CsnStructure> structures;
    std::span<const SpecialElement* const> specials;
};

}  // namespace quorvane::iecodec
