#pragma once

// What a dissector makes of packets, kept.

#include <optional>
#include <vector>

#include "capture/capture_writer.h"
#include "tools/capture/dissector.h"

namespace quorvane::capture::test {

struct KeptMessage {
    Source source;
    Decoding decoding{};
    bool isProtected = false;
    Octets octets;
};

class Dissection {
  public:
    /// The message that the packet brings, if it brings one.
    std::optional<KeptMessage> Take(const Octets& octets, int linkType = 1,
                                    std::uint32_t missing = 0) {
        Packet packet;
        packet.number = ++packets_;
        packet.linkType = linkType;
        packet.length = static_cast<std::uint32_t>(octets.size()) + missing;
        packet.octets = octets;
        FoundMessage found;
        if (!dissector.Take(packet, found)) {
            return std::nullopt;
        }
        return KeptMessage{found.source, found.decoding, found.isProtected,
                           Octets(found.octets.begin(), found.octets.end())};
    }

    std::optional<KeptMessage> Take(const GsmtapHeader& header, const Octets& payload) {
        return Take(GsmtapPacket(header, payload));
    }

    /// How many packets were counted as that.
    [[nodiscard]] std::uint64_t CountOf(Passed reason, unsigned detail = 0) const {
        return dissector.Counts().Of({reason, static_cast<std::uint16_t>(detail)});
    }

    Dissector dissector;

  private:
    std::uint64_t packets_ = 0;
};

}  // namespace quorvane::capture::test
