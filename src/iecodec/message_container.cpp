#include "iecodec/message_container.h"

#include <algorithm>

#include "iecodec/message_decoder.h"
#include "iecodec/transaction_identifier.h"

namespace quorvane::iecodec {
namespace {

struct MessageKey {
    std::uint32_t key;
    std::uint32_t pd;
    std::uint32_t type;
};

/// The position of the message type octet behind a transaction identifier that may be extended.
std::int64_t TypeBehindIdentifier(const bits::BitReader& reader) {
    return reader.Read(1, 3) == kIdentifierExtended ? PastIdentifierExtension(reader, 8) : 8;
}

MessageKey ReadKey(const bits::BitReader& reader, const MessageSetRow& set) {
    const std::uint32_t first = reader.ReadOctet(8 * std::int64_t{set.highOctet});
    const std::uint32_t pd = first & 15U;
    switch (set.keyForm) {
        case KeyForm::kTwoOctets:
            break;
        case KeyForm::kSixBits:
            return {first >> 2, 0, first >> 2};
        case KeyForm::kExtendedIdentifier: {
            const std::uint32_t type = reader.ReadOctet(TypeBehindIdentifier(reader));
            return {(first << 8 | type) & MaskFor(set.masks, first), pd, type};
        }
        case KeyForm::kKeyless:
            return {0, 0, 0};
    }
    const std::uint32_t low = reader.ReadOctet(8 * std::int64_t{set.lowOctet});
    return {(first << 8 | low) & MaskFor(set.masks, first), pd,
            reader.ReadOctet(8 * std::int64_t{set.typeOctet})};
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

}  // namespace

void SetTag(MessageContainer& container, std::uint32_t tag) {
    if (container.tag != tag) {
        container.tag = tag;
        container.body = {};
    }
}

bits::Outcome DispatchMessage(DecodeContext& context, const MessageSetRow& set,
                              std::int64_t bitLength, MessageContainer& container) {
    const MessageKey key = ReadKey(context.reader, set);
    container.pd = key.pd;
    container.messageType = key.type;
    const std::uint32_t tag = TagOf(set, key.key);
    SetTag(container, tag);
    if (tag == 0) {
        return kUnknownMessage;
    }
    container.body = {};
    const MessageRow& message = context.tables.messages[set.messages[tag - 1U]];
    return DecodeMessage(context, message, 0, container.body, bitLength);
}

}  // namespace quorvane::iecodec
