#include "iecodec/message_container.h"

#include <algorithm>
#include <type_traits>

#include "iecodec/message_decoder.h"
#include "iecodec/transaction_identifier.h"

namespace quorvane::iecodec {
namespace {

struct MessageKey {
    std::uint32_t key;
    std::uint32_t pd;
    std::uint32_t type;
};

/// The start of nearly all messages. What is read there takes a constant `Start`, so that a start
/// elsewhere costs them nothing.
using AtFirstBit = std::integral_constant<std::int64_t, 0>;

/// The position of the message type octet of the message at `start`, behind a transaction
/// identifier that may be extended.
template <typename Start>
std::int64_t TypeBehindIdentifier(const bits::BitReader& reader, Start start) {
    return reader.Read(start + 1, 3) == kIdentifierExtended
               ? PastIdentifierExtension(reader, start + 8)
               : start + 8;
}

/// `octet` of the eight octets of `window`.
constexpr std::uint32_t OctetOf(std::uint64_t window, std::uint8_t octet) {
    return static_cast<std::uint32_t>(window >> (56 - 8 * octet) & 0xFFU);
}

template <typename Start>
MessageKey ReadKey(const bits::BitReader& reader, const MessageSetRow& set, Start start) {
    const std::uint64_t window = reader.ReadWindow(start);
    const std::uint32_t first = OctetOf(window, set.highOctet);
    const std::uint32_t pd = first & 15U;
    switch (set.keyForm) {
        case KeyForm::kTwoOctets:
            break;
        case KeyForm::kSixBits:
            return {first >> 2, 0, first >> 2};
        case KeyForm::kExtendedIdentifier: {
            const std::uint32_t type = reader.ReadOctet(TypeBehindIdentifier(reader, start));
            return {(first << 8 | type) & MaskFor(set.masks, first), pd, type};
        }
        case KeyForm::kKeyless:
            return {0, 0, 0};
    }
    return {(first << 8 | OctetOf(window, set.lowOctet)) & MaskFor(set.masks, first), pd,
            OctetOf(window, set.typeOctet)};
}

/// The message with this key; 0 if there is none.
std::uint32_t TagOf(const MessageSetRow& set, std::uint32_t key) {
    if (set.keyForm == KeyForm::kKeyless) {
        return 1;
    }
    const auto row = std::lower_bound(
        set.keys.begin(), set.keys.end(), key,
        [](const KeyRow& candidate, std::uint32_t wanted) { return candidate.key < wanted; });
    return row != set.keys.end() && row->key == key ? row->tag : 0U;
}

template <typename Start>
bits::Outcome Dispatch(DecodeContext& context, const MessageSetRow& set, Start start,
                       std::int64_t bitLength, MessageContainer& container) {
    const MessageKey key = ReadKey(context.reader, set, start);
    container.pd = key.pd;
    container.messageType = key.type;
    const std::uint32_t tag = TagOf(set, key.key);
    SetTag(container, tag);
    if (tag == 0) {
        return kUnknownMessage;
    }
    container.body = {};
    const MessageRow& message = context.tables.messages[set.messages[tag - 1U]];
    return DecodeMessage(context, message, start, container.body, bitLength);
}

}  // namespace

void SetTag(MessageContainer& container, std::uint32_t tag) {
    if (container.tag != tag) {
        container.tag = tag;
        container.body = {};
    }
}

bits::Outcome DispatchMessage(DecodeContext& context, const MessageSetRow& set,
                              std::int64_t bitLength, MessageContainer& container) {
    return Dispatch(context, set, AtFirstBit(), bitLength, container);
}

bits::Outcome DispatchMessageAt(DecodeContext& context, const MessageSetRow& set,
                                std::int64_t position, std::int64_t bitLength,
                                MessageContainer& container) {
    return Dispatch(context, set, position, bitLength, container);
}

}  // namespace quorvane::iecodec
