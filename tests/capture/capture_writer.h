#pragma once

// Captures for tests: golden messages and others in the frames of their channels, GSMTAP, UDP, IP
// and Ethernet, as a file in pcap or pcapng.

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "quorvane/decode.h"
#include "tools/capture/gsmtap.h"

namespace quorvane::capture::test {

using Octets = std::vector<std::uint8_t>;

/// The octets of "02 01 D0".
Octets Hex(const std::string& digits);

/// GSMTAP: `header` in front of `payload`.
Octets Gsmtap(const GsmtapHeader& header, std::span<const std::uint8_t> payload);

/// The headers of Um and LTE NAS.
GsmtapHeader Um(unsigned channel, bool uplink = false, unsigned subslot = 0);
GsmtapHeader LteNas(bool uplink, unsigned form = kNasPlain);
GsmtapHeader Abis();

/// UDP, and UDP in IP version 4 without options.
Octets Udp(std::span<const std::uint8_t> payload, unsigned port = 4729);
Octets Ipv4(std::span<const std::uint8_t> payload, unsigned protocol = 17, unsigned fragment = 0);
Octets Ethernet(std::span<const std::uint8_t> payload, unsigned type = 0x0800);

/// GSMTAP in all of them.
Octets GsmtapPacket(const GsmtapHeader& header, std::span<const std::uint8_t> payload);

/// A block of 23 octets, filled up with 2B.
Octets Block(std::span<const std::uint8_t> contents);

/// An LAPDm frame of format B, as a block of SDCCH or FACCH. `control` as in TS 44.006, 3.4.
Octets LapdmBlock(unsigned control, std::span<const std::uint8_t> information, bool more = false,
                  unsigned sapi = 0);
/// The control field of an I frame.
constexpr unsigned IFrame(unsigned number) {
    return number << 1;
}
inline constexpr unsigned kUiFrame = 0x03;
inline constexpr unsigned kSabmFrame = 0x3F;
inline constexpr unsigned kUaFrame = 0x73;
inline constexpr unsigned kDiscFrame = 0x53;

/// The message as I frames with the numbers `first`, `first` + 1, ...
std::vector<Octets> LapdmSegments(std::span<const std::uint8_t> message, unsigned first = 0);

/// Golden messages that the function knows, to their length, in the order of their names.
std::vector<Octets> GoldenMessages(Decoding decoding);

struct FileForm {
    bool pcapng = false;
    bool bigEndian = false;
    bool nanoseconds = false;
    int linkType = 1;
};

/// A packet with what the capture has of it: all octets, or the first `captured` ones.
struct WrittenPacket {
    Octets octets;
    std::uint32_t seconds = 1'700'000'000;
    std::uint32_t nanoseconds = 123'456'000;
    std::uint32_t missing = 0;  // octets behind those, which the capture has cut off
};

class CaptureWriter {
  public:
    explicit CaptureWriter(FileForm form = {});

    /// Of pcapng: the packets from here on come from another interface.
    void BeginInterface(int linkType);

    void Add(const WrittenPacket& packet);
    void Add(const Octets& packet) { Add(WrittenPacket{packet}); }

    [[nodiscard]] const std::string& File() const { return file_; }

  private:
    void Put16(unsigned number) { Put(number, 2); }
    void Put32(std::uint32_t number) { Put(number, 4); }
    void Put(std::uint64_t number, int octets);
    void PutOctets(std::span<const std::uint8_t> octets);

    FileForm form_;
    std::uint32_t interfaces_ = 0;
    std::string file_;
};

/// The NAS message three times: on an interface of Ethernet, on one of raw IP, and on one of
/// Ethernet again.
CaptureWriter TwoLinkTypes(const Octets& nas);

}  // namespace quorvane::capture::test
