#include "compiler/message_keys.h"

#include <algorithm>
#include <span>

namespace quorvane::compiler {

using iecodec::HeaderItemRow;

OctetBits OctetOf(const FamilyModel& model, const iecodec::MessageRow& message,
                  std::uint32_t index) {
    OctetBits octet;
    std::uint32_t end = 0;
    for (const HeaderItemRow& item :
         std::span(model.headerItems).subspan(message.firstHeaderItem, message.headerItemCount)) {
        end += item.width;
        const bool isType = item.kind == iecodec::HeaderItemKind::kMessageType;
        if (!isType && item.kind != iecodec::HeaderItemKind::kConstant) {
            continue;
        }
        const std::uint32_t value = isType ? message.code : item.constant;
        for (std::uint32_t bit = 0; bit < item.width; ++bit) {
            const std::uint32_t position = end - 1 - bit;
            if (position / 8 == index) {
                const std::uint32_t place = 7 - position % 8;
                octet.known |= 1U << place;
                octet.value |= (value >> bit & 1U) << place;
            }
        }
    }
    return octet;
}

namespace {

/// Whether a message whose octets have these bits can have the key.
bool CanHave(const SetModel& set, const OctetBits& high, const OctetBits& low, std::uint32_t key) {
    for (std::uint32_t first = 0; first <= 0xFF; ++first) {
        if (((first ^ high.value) & high.known) != 0) {
            continue;
        }
        if (set.row.keyForm == iecodec::KeyForm::kSixBits) {
            if (first >> 2 == key) {
                return true;
            }
            continue;
        }
        const std::uint32_t mask = iecodec::MaskFor(set.masks, first);
        const std::uint32_t known = mask & (0xFF00 | low.known);
        if ((key & ~mask) == 0 && ((key ^ (first << 8 | low.value)) & known) == 0) {
            return true;
        }
    }
    return false;
}

}  // namespace

void CheckKeys(Reporter& reporter, const SetSyntax& syntax, const SetModel& set,
               const FamilyModel& model) {
    std::vector<bool> reached(set.masks.size());
    for (std::uint32_t first = 0; first <= 0xFF; ++first) {
        if (const iecodec::KeyMaskRow* row = iecodec::FindMask(set.masks, first)) {
            reached[static_cast<std::size_t>(row - set.masks.data())] = true;
        }
    }
    for (std::size_t index = 0; index < reached.size(); ++index) {
        reporter.ErrorIf(!reached[index], syntax.masks[index].mask.span,
                         "no first octet selects this mask");
    }
    if (set.messages.size() != syntax.messages.size()) {
        return;  // reported
    }
    auto row = set.keys.begin();
    for (const SetSyntax::Message& message : syntax.messages) {
        for (const WideNumber& key : message.keys) {
            const std::uint32_t narrowed = row->key;
            const iecodec::MessageRow& body = model.messages[set.messages[row++->tag - 1U]];
            const OctetBits high = OctetOf(model, body, set.row.highOctet);
            const OctetBits low = OctetOf(model, body, set.row.lowOctet);
            if (narrowed != key.value) {
                continue;  // reported
            }
            if (!CanHave(set, {}, {}, narrowed)) {
                reporter.Error(key.span, "the masks of the set let no message have this key");
            } else if (!CanHave(set, high, low, narrowed)) {
                reporter.Error(key.span, "the header and the type of '" + message.name.text +
                                             "' contradict this key");
            }
        }
    }
}

}  // namespace quorvane::compiler
