#pragma once

// From packets to the messages that they carry.
//
// Tests: tests/capture/dissector_test.cpp, fuzz/capture_fuzz.cpp.

#include <cstdint>
#include <optional>
#include <span>

#include "quorvane/decode.h"
#include "tools/capture/gsmtap.h"
#include "tools/capture/lapdm.h"
#include "tools/capture/packet.h"
#include "tools/capture/passed.h"
#include "tools/capture/rlc_mac.h"

namespace quorvane::capture {

/// Where a message was found.
struct Source {
    enum class Interface : std::uint8_t { kUm, kAbis, kLteNas };

    std::uint64_t packet = 0;
    std::int64_t seconds = 0;
    std::uint32_t nanoseconds = 0;
    Interface interface {};
    bool uplink = false;
    std::uint8_t channel = 0;  // a sub type of Um; 0: none, or not known
    std::uint8_t timeslot = 0;
    std::uint8_t subslot = 0;
    bool isPcs = false;           // the ARFCN is one of the PCS band
    std::uint16_t arfcn = 0;      // kUm
    std::uint32_t tdmaFrame = 0;  // kUm
};

struct FoundMessage {
    Source source;
    Decoding decoding{};
    /// What it is, uplink, if `decoding` does not know it: senders of LTE NAS may say nothing of
    /// the direction.
    std::optional<Decoding> otherwise;
    bool isProtected = false;              // behind a security header of NAS
    std::span<const std::uint8_t> octets;  // valid until the next packet is taken
};

inline constexpr std::uint16_t kGsmtapPort = 4729;

class Dissector {
  public:
    explicit Dissector(std::uint16_t port = kGsmtapPort)
        : port_(port), lapdm_(passed_), rlcMac_(passed_) {}
    Dissector(const Dissector&) = delete;
    Dissector& operator=(const Dissector&) = delete;

    /// Whether the packet brings a message. If not, it is counted.
    bool Take(const Packet& packet, FoundMessage& message);

    /// There are no more packets.
    void Finish();

    [[nodiscard]] const PassedCounts& Counts() const { return passed_; }
    [[nodiscard]] std::uint64_t LapdmGaps() const { return lapdm_.Gaps(); }

  private:
    using Octets = std::span<const std::uint8_t>;

    std::optional<PassedKind> Find(const Packet& packet, FoundMessage& message);
    std::optional<PassedKind> FindUm(const GsmtapHeader& header, Octets block,
                                     FoundMessage& message);
    std::optional<PassedKind> FindDedicated(const GsmtapHeader& header, Octets block,
                                            FoundMessage& message);

    std::uint16_t port_;
    PassedCounts passed_;
    LapdmLinks lapdm_;
    RlcMacBlocks rlcMac_;
};

}  // namespace quorvane::capture
