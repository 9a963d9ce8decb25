#include "tools/capture/lapdm.h"

#include <algorithm>

namespace quorvane::capture {
namespace {

using Octets = std::span<const std::uint8_t>;

constexpr std::size_t kBlock = 23;
constexpr std::size_t kLayer1Header = 2;  // power and timing advance, on SACCH

// The control field of unnumbered frames without the P/F bit, TS 44.006, 3.4.
constexpr std::uint8_t kPollBit = 0x10;
constexpr std::uint8_t kUi = 0x03;
constexpr std::uint8_t kDm = 0x0F;
constexpr std::uint8_t kSabm = 0x2F;
constexpr std::uint8_t kDisc = 0x43;
constexpr std::uint8_t kUa = 0x63;

constexpr std::uint64_t kUplinkOfKey = std::uint64_t{1} << 63;

std::uint64_t KeyOf(const GsmtapHeader& header, unsigned sapi) {
    return (header.uplink ? kUplinkOfKey : 0) | std::uint64_t{header.isPcs} << 56 |
           std::uint64_t{header.arfcn} << 40 | std::uint64_t{header.timeslot} << 32 |
           std::uint64_t{header.subType} << 24 | std::uint64_t{header.subslot} << 16 | sapi;
}

PassedKind Empty(LapdmKind kind) {
    return {Passed::kLapdmEmpty, static_cast<std::uint16_t>(kind)};
}

/// Whether what stands behind address and control begins with an L2 pseudo length and a message of
/// radio resource management (TS 44.018, 10.5.2.19), as system information on SACCH does.
bool HasPseudoLength(Octets octets) {
    constexpr unsigned kRadioResource = 6;
    return (octets[0] & 3U) == 1 && octets[0] >> 2 > 0 && (octets[1] & 15U) == kRadioResource;
}

}  // namespace

std::optional<PassedKind> LapdmLinks::Take(const GsmtapHeader& header, Octets block,
                                           LapdmMessage& message) {
    if (block.size() != kBlock) {
        return PassedKind{Passed::kBlockLength, header.subType};
    }
    const bool slow = (header.subType & kUmSlowAssociated) != 0;
    Octets octets = block.subspan(slow ? kLayer1Header : 0);
    const std::uint8_t address = octets[0];
    message.uplink = header.uplink;
    if ((address & 1U) == 0) {
        // Format Bter: two bits of a short header end the first octet, TS 44.006, 2.1.
        if (!slow) {
            return PassedKind{Passed::kLapdmMalformed};
        }
        message.form = LapdmMessage::Form::kShort;
        message.octets = octets;
        return std::nullopt;
    }
    if ((address >> 5 & 3U) == 1) {
        return PassedKind{Passed::kLapdmBroadcast};
    }
    const std::uint8_t control = octets[1];
    octets = octets.subspan(2);
    const bool isUi = (control & ~kPollBit) == kUi;
    if (slow && !header.uplink && isUi && HasPseudoLength(octets)) {
        // Format B4, which has no length of its own.
        message.form = LapdmMessage::Form::kPseudoLength;
        message.octets = octets;
        return std::nullopt;
    }
    const std::size_t length = octets[0] >> 2;
    const bool isLastLengthOctet = (octets[0] & 1U) != 0;
    if ((address >> 5 & 3U) != 0 || !isLastLengthOctet || length > octets.size() - 1) {
        return PassedKind{Passed::kLapdmMalformed};
    }
    message.form = LapdmMessage::Form::kPlain;
    const Segment segment{static_cast<std::uint8_t>(control >> 1 & 7U), (octets[0] & 2U) != 0,
                          octets.subspan(1, length)};
    const std::uint64_t key = KeyOf(header, address >> 2 & 7U);
    if ((control & 1U) == 0) {
        return TakeSegment(key, segment, message);
    }
    return (control & 3U) == 1 ? Empty(LapdmKind::kSupervisory)
                               : TakeUnnumbered(control, key, segment, message);
}

std::optional<PassedKind> LapdmLinks::TakeUnnumbered(std::uint8_t control, std::uint64_t key,
                                                     const Segment& segment,
                                                     LapdmMessage& message) {
    switch (control & ~kPollBit) {
        case kUi:
            if (segment.octets.empty()) {
                return Empty(LapdmKind::kUi);
            }
            message.octets = segment.octets;
            return std::nullopt;
        case kSabm:
        case kUa:
            Forget(key);
            if (segment.octets.empty()) {
                return Empty(LapdmKind::kSetUp);
            }
            message.uplink = true;  // contention resolution, TS 44.006, 5.4.1.4
            message.octets = segment.octets;
            return std::nullopt;
        case kDisc:
        case kDm:
            Forget(key);
            return Empty(LapdmKind::kRelease);
        default:
            return PassedKind{Passed::kLapdmMalformed};
    }
}

std::optional<PassedKind> LapdmLinks::TakeSegment(std::uint64_t key, const Segment& segment,
                                                  LapdmMessage& message) {
    if (segment.octets.empty() || segment.octets.size() > kLongestSegment) {
        return segment.octets.empty() ? Empty(LapdmKind::kI) : PassedKind{Passed::kLapdmMalformed};
    }
    Link& link = links_.At(key, [this](Link& old) { Lose(old); });
    if (link.isKnown) {
        const Octets last(link.last.data(), link.lastSize);
        if (segment.number == link.lastNumber && segment.hasMore == link.lastHasMore &&
            std::equal(last.begin(), last.end(), segment.octets.begin(), segment.octets.end())) {
            return PassedKind{Passed::kLapdmRepeated};
        }
        if (segment.number != ((link.lastNumber + 1U) & 7U)) {
            ++gaps_;
            // What follows belongs to the message that is in the making, or it begins one.
            link.isSkipping = link.isSkipping || link.lastHasMore;
            Lose(link);
        }
    }
    link.isKnown = true;
    link.lastNumber = segment.number;
    link.lastHasMore = segment.hasMore;
    link.lastSize = static_cast<std::uint8_t>(segment.octets.size());
    std::copy(segment.octets.begin(), segment.octets.end(), link.last.begin());
    if (!link.isSkipping && link.message.size() + segment.octets.size() > kLongestMessage) {
        Lose(link);
        link.isSkipping = true;
    }
    if (link.isSkipping) {
        link.isSkipping = segment.hasMore;
        return PassedKind{Passed::kLapdmLost};
    }
    if (segment.hasMore || !link.message.empty()) {
        link.message.insert(link.message.end(), segment.octets.begin(), segment.octets.end());
    }
    if (segment.hasMore) {
        ++link.segments;
        return PassedKind{Passed::kLapdmJoined};
    }
    message.octets = segment.octets;
    if (!link.message.empty()) {
        whole_.swap(link.message);
        link.message.clear();
        link.segments = 0;
        message.octets = whole_;
    }
    return std::nullopt;
}

void LapdmLinks::Lose(Link& link) {
    counts_.Move({Passed::kLapdmJoined}, {Passed::kLapdmLost}, link.segments);
    link.segments = 0;
    link.message.clear();
}

void LapdmLinks::Forget(std::uint64_t key) {
    for (const std::uint64_t each : {key, key ^ kUplinkOfKey}) {
        if (Link* link = links_.Find(each)) {
            Lose(*link);
            links_.Erase(each);
        }
    }
}

void LapdmLinks::Finish() {
    links_.ForEach([this](Link& link) { Lose(link); });
}

}  // namespace quorvane::capture
