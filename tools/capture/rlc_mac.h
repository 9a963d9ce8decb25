#pragma once

// Blocks of GPRS packet channels (TS 44.060, 10.3.1): takes control messages out of their RLC/MAC
// control blocks, and puts together those that the network sends in two.
//
// Tests: tests/capture/rlc_mac_test.cpp.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "quorvane/decode.h"
#include "tools/capture/bounded_table.h"
#include "tools/capture/gsmtap.h"
#include "tools/capture/passed.h"

namespace quorvane::capture {

class RlcMacBlocks {
  public:
    static constexpr std::size_t kMostHeld = 1024;

    /// As with LapdmLinks, `counts` is corrected when segments get lost.
    explicit RlcMacBlocks(PassedCounts& counts) : counts_(counts), held_(kMostHeld) {}

    /// Takes a block or access burst of a packet channel. Returns nothing if it brings a message,
    /// whose octets are valid until the next block is taken, or why it brings none.
    std::optional<PassedKind> Take(const GsmtapHeader& header, std::span<const std::uint8_t> block,
                                   Decoding& decoding, std::span<const std::uint8_t>& octets);

    void Finish();

  private:
    std::optional<PassedKind> TakeSegmented(const GsmtapHeader& header,
                                            std::span<const std::uint8_t> contents,
                                            std::span<const std::uint8_t>& octets);
    void Lose(std::vector<std::uint8_t>& segment);

    PassedCounts& counts_;
    BoundedTable<std::vector<std::uint8_t>> held_;  // first segments, empty without one
    std::vector<std::uint8_t> whole_;
};

}  // namespace quorvane::capture
