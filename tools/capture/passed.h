#pragma once

// What a capture holds that gives no message, counted by kind: each packet gives a message or is
// counted once.
//
// Tests: tests/capture/dissector_test.cpp.

#include <compare>
#include <cstdint>
#include <map>
#include <string>

namespace quorvane::capture {

/// Why a packet gave no message.
enum class Passed : std::uint8_t {
    kCut,       // the capture has not all of it
    kLinkType,  // detail: the link type
    kNotIp,
    kBadHeader,  // of link layer, IP or UDP
    kFragment,
    kNotUdp,
    kOtherPort,
    kNotGsmtap,    // no header of version 2
    kGsmtapType,   // detail: the type
    kUmChannel,    // detail: the sub type
    kBlockLength,  // detail: the sub type of a channel whose blocks are of other lengths
    kAccessBurst,  // of 11 bits on RACH
    kLapdmEmpty,   // detail: the kind of frame, a LapdmKind
    kLapdmMalformed,
    kLapdmBroadcast,
    kLapdmRepeated,
    kLapdmJoined,  // its segment became part of a later packet's message
    kLapdmLost,    // its segment's message is not whole
    kRlcData,
    kRlcReserved,  // payload type
    kRlcExtended,  // extended segmentation
    kRlcJoined,
    kRlcLost,
    kProtocol,     // detail: the protocol discriminator of layer 3 in GSM
    kNasProtocol,  // detail: the same in EPS
    kNasType,      // detail: the GSMTAP sub type
    kEmpty,        // no octet where a message should be
    kRsl,          // detail: discriminator and type of an RSL message that gave none
    kRslMalformed,
    kAbisLink,  // a frame of LAPD without information
};

struct PassedKind {
    Passed reason{};
    std::uint16_t detail = 0;

    friend auto operator<=>(const PassedKind&, const PassedKind&) = default;
};

/// A kind in a few words: "IP fragments".
std::string WordsOf(PassedKind kind);

class PassedCounts {
  public:
    void Add(PassedKind kind) { ++counts_[kind]; }
    /// Packets that were counted as one kind turn out to be of another.
    void Move(PassedKind from, PassedKind to, std::uint64_t count) {
        if (count > 0) {
            counts_[from] -= count;
            counts_[to] += count;
        }
    }
    /// Counts of 0 may be among them.
    [[nodiscard]] const std::map<PassedKind, std::uint64_t>& All() const { return counts_; }
    [[nodiscard]] std::uint64_t Of(PassedKind kind) const {
        const auto found = counts_.find(kind);
        return found == counts_.end() ? 0 : found->second;
    }
    [[nodiscard]] std::uint64_t Sum() const {
        std::uint64_t sum = 0;
        for (const auto& [kind, count] : counts_) {
            sum += count;
        }
        return sum;
    }

  private:
    std::map<PassedKind, std::uint64_t> counts_;
};

}  // namespace quorvane::capture
