#pragma once

// LAPDm, the data link layer of GSM's dedicated channels (TS 44.006): takes layer 3 messages out of
// its frames, and puts together those that came in several.
//
// Segments are put together for each link: ARFCN, timeslot, channel, subslot, direction and SAPI.
// Of links with a message in the making or a frame to compare with, the kMostLinks used last are
// remembered.
//
// Tests: tests/capture/lapdm_test.cpp.

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "tools/capture/bounded_table.h"
#include "tools/capture/gsmtap.h"
#include "tools/capture/passed.h"

namespace quorvane::capture {

/// Kinds of frames, as far as they are counted apart.
enum class LapdmKind : std::uint8_t { kUi, kSupervisory, kI, kSetUp, kRelease };

/// A message of layer 3, and what its octets begin with.
struct LapdmMessage {
    enum class Form : std::uint8_t {
        kPlain,         // the protocol discriminator
        kPseudoLength,  // the L2 pseudo length, on SACCH from the network
        kShort,         // the short protocol discriminator
    };

    Form form = Form::kPlain;
    bool uplink = false;  // by whom it was made: UA repeats the message of the SABM it answers
    std::span<const std::uint8_t> octets;  // valid until the next frame is taken
};

class LapdmLinks {
  public:
    static constexpr std::size_t kMostLinks = 4096;
    /// No message of layer 3 on these links is longer; longer ones are dropped.
    static constexpr std::size_t kLongestMessage = 512;

    /// Of frames that were counted as kLapdmJoined, `counts` is corrected when their message gets
    /// lost. It has to outlive the links.
    explicit LapdmLinks(PassedCounts& counts) : counts_(counts), links_(kMostLinks) {}

    /// Takes a block of SDCCH, FACCH or, with the header of layer 1 in front, SACCH. Returns
    /// nothing if it brings a message, or why it brings none.
    std::optional<PassedKind> Take(const GsmtapHeader& header, std::span<const std::uint8_t> block,
                                   LapdmMessage& message);

    /// There are no more frames: messages that are not whole are lost.
    void Finish();

    /// How often the numbers of frames left one out.
    [[nodiscard]] std::uint64_t Gaps() const { return gaps_; }

  private:
    static constexpr std::size_t kLongestSegment = 20;

    struct Link {
        std::uint8_t lastNumber = 0;  // N(S)
        std::uint8_t lastSize = 0;
        bool lastHasMore = false;
        bool isKnown = false;     // the last frame is
        bool isSkipping = false;  // up to the end of a message that is not whole
        std::array<std::uint8_t, kLongestSegment> last{};
        std::uint32_t segments = 0;  // held
        std::vector<std::uint8_t> message;
    };

    struct Segment {
        std::uint8_t number;
        bool hasMore;
        std::span<const std::uint8_t> octets;
    };

    std::optional<PassedKind> TakeUnnumbered(std::uint8_t control, std::uint64_t key,
                                             const Segment& segment, LapdmMessage& message);
    std::optional<PassedKind> TakeSegment(std::uint64_t key, const Segment& segment,
                                          LapdmMessage& message);
    void Lose(Link& link);
    void Forget(std::uint64_t key);

    PassedCounts& counts_;
    BoundedTable<Link> links_;
    std::vector<std::uint8_t> whole_;
    std::uint64_t gaps_ = 0;
};

}  // namespace quorvane::capture
