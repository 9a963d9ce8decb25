// Channel descriptions.

#include <bit>

#include "families/rr/elements.h"
#include "families/rr/located_field.h"
#include "iecodec/value_decoder.h"
#include "iecodec/value_encoder.h"

namespace quorvane::families {
namespace {

using bits::Cell;
using bits::Outcome;
using iecodec::DecodeContext;
using iecodec::EncodeContext;
using iecodec::MemberOf;
using iecodec::ValueRow;

void StoreOptional(DecodeContext& context, Cell& cell, std::int64_t position, std::int32_t width) {
    cell.present = true;
    StoreField(context, cell, position, width);
}

/// The value of an optional member, 0 if it is absent.
std::uint32_t ValueOf(const Cell& cell) {
    return cell.present ? cell.number : 0;
}

constexpr std::int32_t kTypeBits = 5;

// TCH/F is 1 and has no subchannels. The other types are the highest bit that is set of 2, 4 and
// 8; the bits below it are the subchannel.
constexpr std::uint32_t kFullRate = 1;
constexpr std::uint32_t kTypesWithSubchannels = 2 | 4 | 8;

Outcome DecodeChannelType(DecodeContext& context, const ValueRow& row, std::int64_t position,
                          Cell& cell, std::int64_t /*length*/) {
    Cell* members = bits::StructCells(context.arena, cell, row.members);
    const std::uint32_t value = context.reader.Read(position, kTypeBits);
    const std::uint32_t type =
        value == kFullRate ? kFullRate : std::bit_floor(value & kTypesWithSubchannels);
    for (Cell* member : {&members[0], &members[1]}) {
        member->present = true;
        if (type != 0) {
            bits::MakeFieldLocator(member->location, position, kTypeBits);
        }
    }
    members[0].number = type;
    members[1].number = type == 0 ? 0 : value & (type - 1);
    return kTypeBits;
}

Outcome EncodeChannelType(EncodeContext& context, const ValueRow& /*row*/, std::int64_t position,
                          const Cell& cell) {
    const std::uint32_t value = ValueOf(MemberOf(cell, 0)) | ValueOf(MemberOf(cell, 1));
    context.writer.Write(position, value, kTypeBits);
    return kTypeBits;
}

// The two octets that all descriptions end in: members from TSC on.
constexpr std::int64_t kSelectorBits = 16;
enum SelectorMember : std::uint8_t { kTsc, kH, kMaio, kHsn, kSpare, kArfcn };

void DecodeSelector(DecodeContext& context, std::int64_t position, Cell* members) {
    StoreField(context, members[kTsc], position, 3);
    StoreField(context, members[kH], position + 3, 1);
    if (members[kH].number == 1) {
        StoreOptional(context, members[kMaio], position + 4, 6);
        StoreOptional(context, members[kHsn], position + 10, 6);
    } else {
        members[kSpare].present = true;
        StoreOptional(context, members[kArfcn], position + 6, 10);
    }
}

void EncodeSelector(EncodeContext& context, std::int64_t position, const Cell& cell,
                    std::size_t first) {
    const std::uint32_t hopping = MemberOf(cell, first + kH).number;
    context.writer.Write(position, MemberOf(cell, first + kTsc).number, 3);
    context.writer.Write(position + 3, hopping, 1);
    if (hopping == 1) {
        context.writer.Write(position + 4, ValueOf(MemberOf(cell, first + kMaio)), 6);
        context.writer.Write(position + 10, ValueOf(MemberOf(cell, first + kHsn)), 6);
    } else {
        context.writer.Write(position + 4, 0, 2);
        context.writer.Write(position + 6, ValueOf(MemberOf(cell, first + kArfcn)), 10);
    }
}

Outcome DecodeChannel3(DecodeContext& context, const ValueRow& row, std::int64_t position,
                       Cell& cell, std::int64_t /*length*/) {
    DecodeSelector(context, position, bits::StructCells(context.arena, cell, row.members));
    return kSelectorBits;
}

Outcome EncodeChannel3(EncodeContext& context, const ValueRow& /*row*/, std::int64_t position,
                       const Cell& cell) {
    EncodeSelector(context, position, cell, 0);
    return kSelectorBits;
}

// A whole description: ChType, TN, the members from TSC on, and MA if it is of a group channel.
constexpr std::size_t kTn = 1;
constexpr std::size_t kSelector = 2;
constexpr std::size_t kMa = 8;
constexpr std::int64_t kChannelBits = 8 + kSelectorBits;

Outcome DecodeChannel(DecodeContext& context, const ValueRow& row, std::int64_t position,
                      Cell& cell, std::int64_t length) {
    Cell* members = bits::StructCells(context.arena, cell, row.members);
    // A channel type never fails.
    static_cast<void>(iecodec::DecodeValue(context, MemberRow(context.tables, row, 0), position,
                                           members[0], kTypeBits));
    StoreField(context, members[kTn], position + kTypeBits, 3);
    DecodeSelector(context, position + 8, members + kSelector);
    if (row.members <= kMa) {
        return kChannelBits;
    }
    // A sequence, empty if nothing is left.
    return iecodec::DecodeValue(context, MemberRow(context.tables, row, kMa),
                                position + kChannelBits, members[kMa], length - kChannelBits)
        .Plus(kChannelBits);
}

Outcome EncodeChannel(EncodeContext& context, const ValueRow& row, std::int64_t position,
                      const Cell& cell) {
    static_cast<void>(iecodec::EncodeValue(context, MemberRow(context.tables, row, 0), position,
                                           MemberOf(cell, 0)));
    context.writer.Write(position + kTypeBits, MemberOf(cell, kTn).number, 3);
    EncodeSelector(context, position + 8, cell, kSelector);
    if (row.members <= kMa) {
        return kChannelBits;
    }
    return iecodec::EncodeValue(context, MemberRow(context.tables, row, kMa),
                                position + kChannelBits, MemberOf(cell, kMa))
        .Plus(kChannelBits);
}

}  // namespace

const iecodec::SpecialElement kChannelType{"kChannelType", DecodeChannelType, EncodeChannelType};
const iecodec::SpecialElement kChannelDescription{"kChannelDescription", DecodeChannel,
                                                  EncodeChannel};
const iecodec::SpecialElement kChannelDescription3{"kChannelDescription3", DecodeChannel3,
                                                   EncodeChannel3};
const iecodec::SpecialElement kGroupChannelDescription{"kGroupChannelDescription", DecodeChannel,
                                                       EncodeChannel};

}  // namespace quorvane::families
