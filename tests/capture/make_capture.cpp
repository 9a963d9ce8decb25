// Makes a capture, and the same messages as lines for `quorvane batch`, for benchmarks/captures:
//
//     quorvane_make_capture PACKETS CAPTURE LINES
//
// Golden messages of EPS, of RR on BCCH and of RLC/MAC, one a packet, over and over.

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "capture/capture_writer.h"
#include "tools/function_name.h"
#include "tools/hex.h"

namespace quorvane::capture::test {
namespace {

struct Packet {
    std::string record;  // as it is in the file
    std::string line;
};

std::vector<Packet> Packets() {
    std::vector<Packet> packets;
    const std::size_t header = CaptureWriter().File().size();
    const auto add = [&](Decoding decoding, const Octets& message, const Octets& packet) {
        CaptureWriter writer;
        writer.Add(packet);
        packets.push_back({writer.File().substr(header), std::string(tool::InfoOf(decoding).name) +
                                                             " " + std::to_string(message.size()) +
                                                             " " + tool::ToHex(message, "") +
                                                             "\n"});
    };
    const auto addNas = [&](Decoding decoding, bool uplink) {
        for (const Octets& message : GoldenMessages(decoding)) {
            // The tool reads behind security headers by itself in captures alone.
            if (message[0] < 0x10 || message[0] % 0x10 == 2) {
                add(decoding, message, GsmtapPacket(LteNas(uplink), message));
            }
        }
    };
    const auto addBlocks = [&](Decoding decoding, bool uplink) {
        for (Octets message : GoldenMessages(decoding)) {
            message.resize(22, 0x2B);
            Octets block = {0x40};
            block.insert(block.end(), message.begin(), message.end());
            add(decoding, message, GsmtapPacket(Um(kUmPdch, uplink), block));
        }
    };
    addNas(Decoding::EPS_MMDownlink, false);
    addNas(Decoding::EPS_MMUplink, true);
    addNas(Decoding::EPS_SMDownlink, false);
    addNas(Decoding::EPS_SMUplink, true);
    for (const Octets& message : GoldenMessages(Decoding::RRPLENDownlink)) {
        add(Decoding::RRPLENDownlink, message, GsmtapPacket(Um(kUmBcch), message));
    }
    addBlocks(Decoding::RLC_MACDownlink, false);
    addBlocks(Decoding::RLC_MACUplink, true);
    return packets;
}

int Make(std::size_t count, const char* capturePath, const char* linesPath) {
    std::ofstream packetFile(capturePath, std::ios::binary);
    std::ofstream lines(linesPath);
    packetFile << CaptureWriter().File();
    const std::vector<Packet> packets = Packets();
    for (std::size_t index = 0; index < count; ++index) {
        const Packet& packet = packets[index % packets.size()];
        packetFile << packet.record;
        lines << packet.line;
    }
    packetFile.close();
    lines.close();
    if (!packetFile || !lines) {
        std::fputs("the files cannot be written\n", stderr);
        return 1;
    }
    return 0;
}

}  // namespace
}  // namespace quorvane::capture::test

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fputs("usage: quorvane_make_capture PACKETS CAPTURE LINES\n", stderr);
        return 2;
    }
    return quorvane::capture::test::Make(std::strtoull(argv[1], nullptr, 10), argv[2], argv[3]);
}
