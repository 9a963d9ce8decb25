#include "tools/message_generator.h"

#include "iecodec/message_encoder.h"
#include "tools/octets.h"
#include "tools/value_generator.h"

namespace quorvane::tool {
namespace {

constexpr std::size_t kRoom = 8192;  // octets; no message of the tables is longer

/// One of the message's keys; 0 where there are none.
std::uint32_t DrawKey(const iecodec::MessageSetRow& set, std::uint32_t tag, Random& random) {
    std::vector<std::uint32_t> keys;
    for (const iecodec::KeyRow& key : set.keys) {
        if (key.tag == tag) {
            keys.push_back(key.key);
        }
    }
    return keys.empty() ? 0 : keys[random.UpTo(static_cast<std::uint32_t>(keys.size() - 1))];
}

}  // namespace

std::uint64_t Random::Next() {
    // SplitMix64.
    state_ += 0x9E3779B97F4A7C15U;
    std::uint64_t mixed = state_;
    mixed = (mixed ^ mixed >> 30) * 0xBF58476D1CE4E5B9U;
    mixed = (mixed ^ mixed >> 27) * 0x94D049BB133111EBU;
    return mixed ^ mixed >> 31;
}

std::optional<GeneratedMessage> MessageGenerator::Generate(const iecodec::MessageSetRow& set,
                                                           std::uint32_t tag) {
    constexpr int kTries = 400;
    const iecodec::MessageRow& message = family_.codec.messages[set.messages[tag - 1]];
    for (int attempt = 0; attempt < kTries; ++attempt) {
        arena_.Reset();
        ValueGenerator values(family_, random_, arena_, drops_);
        GeneratedMessage out;
        iecodec::SetTag(out.container, tag);
        const std::uint32_t key = DrawKey(set, tag, random_);
        if (!values.FillMessage(message, out.container.body, key,
                                iecodec::MaskFor(set.masks, key >> 8))) {
            continue;
        }
        out.octets.resize(kRoom);
        bits::BitWriter writer(out.octets.data(), kRoom);
        iecodec::Diagnostics diagnostics;
        iecodec::EncodeContext context{family_.codec, writer, diagnostics};
        const bits::Outcome written = iecodec::EncodeContainer(context, set, out.container);
        const bool ends =
            end_ == MessageEnd::kAnyBit || (!written.Failed() && written.Bits() % 8 == 0);
        if (!written.Failed() && !writer.Overflowed() && ends) {
            out.bits = written.Bits();
            CutToBits(out.octets, out.bits);
            return out;
        }
    }
    return std::nullopt;
}

std::optional<GeneratedMessage> MessageGenerator::Generate(const iecodec::MessageSetRow& set) {
    const auto last = static_cast<std::uint32_t>(set.messages.size() - 1);
    constexpr int kDraws = 20;  // some messages may never end where they should
    std::optional<GeneratedMessage> drawn;
    for (int count = 0; count < kDraws && !drawn; ++count) {
        drawn = Generate(set, 1 + random_.UpTo(last));
    }
    return drawn;
}

}  // namespace quorvane::tool
