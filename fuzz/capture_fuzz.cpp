// Captures in: whatever the octets are, reading them ends, and every packet gives a message or is
// counted once.
//
// Input: an octet that chooses. Even: a file in pcap or pcapng, as it is or by gzip. Odd: a link
// type by number, and packets straight to the dissector: a length octet ahead of each, whose octets
// follow; its top bit says that the capture has cut it.

#include <array>
#include <cstdio>
#include <string>
#include <unistd.h>

#include "fuzz_support.h"
#include "quorvane/message.h"
#include "tools/capture/capture_file.h"
#include "tools/capture/dissector.h"
#include "tools/capture/link_layer.h"

namespace quorvane {
namespace {

using fuzz::ExactOctets;
using fuzz::Require;

class Run {
  public:
    void Take(const capture::Packet& packet) {
        ++packets_;
        capture::FoundMessage found;
        if (dissector_.Take(packet, found)) {
            ++messages_;
            Require(!found.octets.empty(), "a message without an octet");
            message_.Decode(found.decoding, found.octets);
        }
    }

    void Finish() {
        dissector_.Finish();
        Require(dissector_.Counts().Sum() + messages_ == packets_, "packets get lost");
        for (const auto& [kind, count] : dissector_.Counts().All()) {
            Require(count <= packets_, "a count below 0");
            Require(!capture::WordsOf(kind).empty(), "a kind without words");
        }
    }

  private:
    capture::Dissector dissector_;
    Message message_;
    std::uint64_t packets_ = 0;
    std::uint64_t messages_ = 0;
};

void ReadFile(std::span<const std::uint8_t> octets, Run& run) {
    // By way of a pipe, as standard input may be one; what it has no room for is left out.
    std::array<int, 2> ends{};
    Require(pipe(ends.data()) == 0, "no pipe");
    constexpr std::size_t kRoom = 65536;
    const std::size_t size = octets.size() < kRoom ? octets.size() : kRoom;
    Require(write(ends[1], octets.data(), size) == static_cast<ssize_t>(size), "no room");
    close(ends[1]);
    try {
        capture::CaptureFile file("/dev/fd/" + std::to_string(ends[0]));
        capture::Packet packet;
        while (file.Next(packet)) {
            const ExactOctets exact(packet.octets);
            packet.octets = exact.View();
            run.Take(packet);
        }
    } catch (const capture::CaptureError& error) {
        Require(*error.what() != '\0', "an error without words");
    }
    close(ends[0]);
}

void ReadPackets(fuzz::Input input, Run& run) {
    constexpr std::array kLinkTypes = {
        capture::kLinkNull,   capture::kLinkEthernet, capture::kLinkRaw,     capture::kLinkLoop,
        capture::kLinkCooked, capture::kLinkIpv4,     capture::kLinkCooked2, capture::kLinkIpv6};
    capture::Packet packet;
    packet.linkType = kLinkTypes[input.Below(kLinkTypes.size())];
    while (!input.Empty()) {
        const std::uint8_t length = input.Octet();
        const ExactOctets exact(input.Take(length & 0x7FU));
        ++packet.number;
        packet.octets = exact.View();
        packet.length = static_cast<std::uint32_t>(exact.Size()) + (length >> 7);
        run.Take(packet);
    }
}

}  // namespace
}  // namespace quorvane

int LLVMFuzzerTestOneInput(const std::uint8_t* octets, std::size_t size) {
    using namespace quorvane;
    fuzz::Input input(octets, size);
    Run run;
    if (input.Octet() % 2 == 0) {
        ReadFile(input.Rest(), run);
    } else {
        ReadPackets(input, run);
    }
    run.Finish();
    return 0;
}
