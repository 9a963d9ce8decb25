#include "capture/capture_writer.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>

#include "support/golden_file.h"
#include "tools/hex.h"

namespace quorvane::capture::test {
namespace {

void Put16(Octets& octets, unsigned number) {
    octets.push_back(static_cast<std::uint8_t>(number >> 8));
    octets.push_back(static_cast<std::uint8_t>(number));
}

void Append(Octets& octets, std::span<const std::uint8_t> more) {
    octets.insert(octets.end(), more.begin(), more.end());
}

}  // namespace

Octets Hex(const std::string& digits) {
    Octets octets;
    if (const std::string problem = tool::ParseHex(digits, octets); !problem.empty()) {
        throw std::invalid_argument(problem);
    }
    return octets;
}

Octets Gsmtap(const GsmtapHeader& header, std::span<const std::uint8_t> payload) {
    Octets octets = {2, 4, header.type, header.timeslot};
    Put16(octets, header.arfcn | (header.uplink ? 0x4000U : 0) | (header.isPcs ? 0x8000U : 0));
    octets.insert(octets.end(), {0xC4, 0x14});  // -60 dBm, 20 dB
    Put16(octets, header.tdmaFrame >> 16);
    Put16(octets, header.tdmaFrame & 0xFFFFU);
    octets.insert(octets.end(), {header.subType, 0, header.subslot, 0});
    Append(octets, payload);
    return octets;
}

GsmtapHeader Um(unsigned channel, bool uplink, unsigned subslot) {
    GsmtapHeader header;
    header.type = kGsmtapUm;
    header.subType = static_cast<std::uint8_t>(channel);
    header.uplink = uplink;
    header.subslot = static_cast<std::uint8_t>(subslot);
    header.arfcn = 871;
    header.timeslot = 1;
    header.tdmaFrame = 1234567;
    return header;
}

GsmtapHeader LteNas(bool uplink, unsigned form) {
    GsmtapHeader header;
    header.type = kGsmtapLteNas;
    header.subType = static_cast<std::uint8_t>(form);
    header.uplink = uplink;
    return header;
}

GsmtapHeader Abis() {
    GsmtapHeader header;
    header.type = kGsmtapAbis;
    return header;
}

Octets Udp(std::span<const std::uint8_t> payload, unsigned port) {
    Octets octets;
    Put16(octets, 40000);
    Put16(octets, port);
    Put16(octets, static_cast<unsigned>(8 + payload.size()));
    Put16(octets, 0);  // no checksum
    Append(octets, payload);
    return octets;
}

Octets Ipv4(std::span<const std::uint8_t> payload, unsigned protocol, unsigned fragment) {
    Octets octets = {0x45, 0};
    Put16(octets, static_cast<unsigned>(20 + payload.size()));
    Put16(octets, 1);
    Put16(octets, fragment);
    octets.insert(octets.end(), {64, static_cast<std::uint8_t>(protocol), 0, 0});
    octets.insert(octets.end(), {127, 0, 0, 1, 127, 0, 0, 1});
    Append(octets, payload);
    return octets;
}

Octets Ethernet(std::span<const std::uint8_t> payload, unsigned type) {
    Octets octets(12);
    Put16(octets, type);
    Append(octets, payload);
    return octets;
}

Octets GsmtapPacket(const GsmtapHeader& header, std::span<const std::uint8_t> payload) {
    return Ethernet(Ipv4(Udp(Gsmtap(header, payload))));
}

Octets Block(std::span<const std::uint8_t> contents) {
    Octets octets(contents.begin(), contents.end());
    octets.resize(23, 0x2B);
    return octets;
}

Octets LapdmBlock(unsigned control, std::span<const std::uint8_t> information, bool more,
                  unsigned sapi) {
    Octets octets = {static_cast<std::uint8_t>(sapi << 2 | 1), static_cast<std::uint8_t>(control),
                     static_cast<std::uint8_t>(information.size() << 2 | (more ? 3 : 1))};
    Append(octets, information);
    return Block(octets);
}

std::vector<Octets> LapdmSegments(std::span<const std::uint8_t> message, unsigned first) {
    constexpr std::size_t kSegment = 20;  // N201 of SDCCH and FACCH
    std::vector<Octets> blocks;
    while (!message.empty()) {
        const auto segment = message.first(std::min(kSegment, message.size()));
        message = message.subspan(segment.size());
        const auto number = static_cast<unsigned>(first + blocks.size()) & 7U;
        blocks.push_back(LapdmBlock(IFrame(number), segment, !message.empty()));
    }
    return blocks;
}

std::vector<Octets> GoldenMessages(Decoding decoding) {
    std::vector<Octets> messages;
    const std::filesystem::path folder =
        std::filesystem::path(QUORVANE_SOURCE_DIR) / "tests" / "golden";
    for (const std::filesystem::path& path : quorvane::test::FindGoldenFiles(folder)) {
        std::string problem;
        const auto golden = quorvane::test::ReadGoldenFile(path, problem);
        if (golden && golden->decoding == decoding && golden->result == 1 && golden->length > 0 &&
            static_cast<std::size_t>(golden->length) <= golden->octets.size()) {
            messages.push_back(golden->octets);
            messages.back().resize(static_cast<std::size_t>(golden->length));
        }
    }
    return messages;
}

CaptureWriter::CaptureWriter(FileForm form) : form_(form) {
    if (form_.pcapng) {
        Put32(0x0A0D0D0A);  // section header
        Put32(28);
        Put32(0x1A2B3C4D);
        Put16(1);
        Put16(0);
        Put(~std::uint64_t{0}, 8);  // of unknown length
        Put32(28);
        BeginInterface(form_.linkType);
        return;
    }
    Put32(form_.nanoseconds ? 0xA1B23C4D : 0xA1B2C3D4);
    Put16(2);
    Put16(4);
    Put32(0);
    Put32(0);
    Put32(0x40000);
    Put32(static_cast<std::uint32_t>(form_.linkType));
}

void CaptureWriter::BeginInterface(int linkType) {
    const std::uint32_t size = form_.nanoseconds ? 32 : 20;
    Put32(1);  // interface description
    Put32(size);
    Put16(static_cast<unsigned>(linkType));
    Put16(0);
    Put32(0x40000);
    if (form_.nanoseconds) {
        Put16(9);  // if_tsresol: 10 to the power of -9
        Put16(1);
        PutOctets(Octets{9, 0, 0, 0});
        Put32(0);
    }
    Put32(size);
    ++interfaces_;
}

void CaptureWriter::Add(const WrittenPacket& packet) {
    const auto size = static_cast<std::uint32_t>(packet.octets.size());
    const std::uint32_t fraction =
        form_.nanoseconds ? packet.nanoseconds : packet.nanoseconds / 1000;
    if (!form_.pcapng) {
        Put32(packet.seconds);
        Put32(fraction);
        Put32(size);
        Put32(size + packet.missing);
        PutOctets(packet.octets);
        return;
    }
    const std::uint32_t padding = -size & 3U;
    const std::uint64_t time =
        packet.seconds * std::uint64_t{form_.nanoseconds ? 1'000'000'000U : 1'000'000U} + fraction;
    Put32(6);  // enhanced packet
    Put32(32 + size + padding);
    Put32(interfaces_ - 1);
    Put32(static_cast<std::uint32_t>(time >> 32));
    Put32(static_cast<std::uint32_t>(time));
    Put32(size);
    Put32(size + packet.missing);
    PutOctets(packet.octets);
    PutOctets(Octets(padding));
    Put32(32 + size + padding);
}

CaptureWriter TwoLinkTypes(const Octets& nas) {
    constexpr int kEthernet = 1;
    constexpr int kRawIp = 101;
    const Octets ip = Ipv4(Udp(Gsmtap(LteNas(false), nas)));
    CaptureWriter writer({true, false, false, kEthernet});
    writer.Add(Ethernet(ip));
    writer.BeginInterface(kRawIp);
    writer.Add(ip);
    writer.BeginInterface(kEthernet);
    writer.Add(Ethernet(ip));
    return writer;
}

void CaptureWriter::Put(std::uint64_t number, int octets) {
    for (int index = 0; index < octets; ++index) {
        const int shift = 8 * (form_.bigEndian ? octets - 1 - index : index);
        file_.push_back(static_cast<char>(number >> shift));
    }
}

void CaptureWriter::PutOctets(std::span<const std::uint8_t> octets) {
    file_.append(octets.begin(), octets.end());
}

}  // namespace quorvane::capture::test
