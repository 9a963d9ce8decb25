// The octet of the random access channel.

#include <algorithm>
#include <array>

#include "families/rr/elements.h"
#include "families/rr/located_field.h"
#include "iecodec/value_encoder.h"

namespace quorvane::families {
namespace {

using bits::Cell;
using bits::Outcome;

/// A row of table 9.1.8.1: octets with these bits under the mask ask for `description`. The bits
/// outside the mask are the random reference.
struct RequestRow {
    std::uint8_t mask;
    std::uint8_t bits;
    std::uint8_t description;
};

// There are no rows for 12 (0000xxxx) and 13 (0001xxxx), which
// a network that sets the NECI bit would read: such octets are 11 and 5 here.
constexpr std::array<RequestRow, 21> kRequests = {{
    {0xE0, 0xA0, 0},   // 101xxxxx
    {0xE0, 0xC0, 1},   // 110xxxxx
    {0xFC, 0x68, 2},   // 011010xx
    {0xFC, 0x6C, 3},   // 011011xx
    {0xE0, 0x80, 4},   // 100xxxxx
    {0xF0, 0x10, 5},   // 0001xxxx
    {0xF0, 0x20, 6},   // 0010xxxx
    {0xF0, 0x30, 7},   // 0011xxxx
    {0xE0, 0xE0, 8},   // 111xxxxx
    {0xF0, 0x40, 9},   // 0100xxxx
    {0xF0, 0x50, 10},  // 0101xxxx
    {0xE0, 0x00, 11},  // 000xxxxx
    {0xFC, 0x78, 14},  // 011110xx
    {0xFA, 0x78, 14},  // 01111x0x
    {0xF9, 0x78, 14},  // 01111xx0
    {0xF8, 0x70, 15},  // 01110xxx
    {0xFF, 0x67, 16},  // 01100111
    {0xF9, 0x60, 17},  // 01100xx0
    {0xFB, 0x61, 18},  // 01100x01
    {0xFF, 0x63, 18},  // 01100011
    {0xFF, 0x7F, 18},  // 01111111
}};

/// The first row that holds. The last one is for what the others leave.
const RequestRow& FindRequest(std::uint32_t octet) {
    return *std::find_if(kRequests.begin(), kRequests.end() - 1,
                         [&](const RequestRow& row) { return (octet & row.mask) == row.bits; });
}

/// The bits of `octet` outside `mask`, pushed together.
std::uint32_t RandomBits(std::uint32_t octet, std::uint32_t mask) {
    std::uint32_t random = 0;
    for (std::uint32_t bit = 128; bit != 0; bit >>= 1) {
        if ((mask & bit) == 0) {
            random = random << 1 | ((octet & bit) != 0 ? 1U : 0U);
        }
    }
    return random;
}

Outcome DecodeChannelRequest(iecodec::DecodeContext& context, const iecodec::ValueRow& row,
                             std::int64_t position, Cell& cell, std::int64_t /*length*/) {
    Cell* members = bits::StructCells(context.arena, cell, row.members);
    StoreField(context, members[0], position, 8);
    const RequestRow& request = FindRequest(members[0].number);
    members[1].number = request.description;
    members[2].number = RandomBits(members[0].number, request.mask);
    return 8;
}

Outcome EncodeChannelRequest(iecodec::EncodeContext& context, const iecodec::ValueRow& /*row*/,
                             std::int64_t position, const Cell& cell) {
    context.writer.Write(position, iecodec::MemberOf(cell, 0).number, 8);
    return 8;
}

}  // namespace

const iecodec::SpecialElement kChannelRequest{"kChannelRequest", DecodeChannelRequest,
                                              EncodeChannelRequest};

}  // namespace quorvane::families
