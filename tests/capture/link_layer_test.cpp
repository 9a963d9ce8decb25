#include "tools/capture/link_layer.h"

#include <gtest/gtest.h>
#include <optional>

#include "capture/capture_writer.h"

namespace quorvane::capture {
namespace {

using test::Ethernet;
using test::Hex;
using test::Ipv4;
using test::Octets;
using test::Udp;

const Octets kPayload = {0xAA, 0xBB, 0xCC};

/// Nothing if the payload is found.
std::optional<Passed> Find(const Octets& octets, int linkType = kLinkEthernet,
                           std::uint32_t missing = 0) {
    Packet packet;
    packet.linkType = linkType;
    packet.octets = octets;
    packet.length = static_cast<std::uint32_t>(octets.size()) + missing;
    std::span<const std::uint8_t> payload;
    if (const auto passed = FindUdpPayload(packet, 4729, payload)) {
        return passed->reason;
    }
    EXPECT_EQ(Octets(payload.begin(), payload.end()), kPayload);
    return std::nullopt;
}

Octets Behind(const std::string& header, const Octets& octets) {
    Octets all = Hex(header);
    all.insert(all.end(), octets.begin(), octets.end());
    return all;
}

/// UDP in IP version 6, behind extension headers that begin with `next`.
Octets Ipv6(const std::string& next, const Octets& behind) {
    const Octets fixed = Hex("60 00 00 00 00 00 " + next + " 40");
    Octets all = fixed;
    all.resize(40);
    all.insert(all.end(), behind.begin(), behind.end());
    return all;
}

TEST(LinkLayer, FindsIpBehindEveryKnownHeader) {
    const Octets ip = Ipv4(Udp(kPayload));
    EXPECT_EQ(Find(Ethernet(ip)), std::nullopt);
    EXPECT_EQ(Find(ip, kLinkRaw), std::nullopt);
    EXPECT_EQ(Find(ip, kLinkIpv4), std::nullopt);
    EXPECT_EQ(Find(Behind("02 00 00 00", ip), kLinkNull), std::nullopt);
    EXPECT_EQ(Find(Behind("00 00 00 02", ip), kLinkLoop), std::nullopt);
    EXPECT_EQ(Find(Behind("00 00 03 04 00 06 00 00 00 00 00 00 00 00 08 00", ip), kLinkCooked),
              std::nullopt);
    EXPECT_EQ(Find(Behind("08 00 00 00 00 00 00 01 03 04 00 06 00 00 00 00 00 00 00 00", ip),
                   kLinkCooked2),
              std::nullopt);
    const Octets ip6 = Ipv6("11", Udp(kPayload));
    EXPECT_EQ(Find(ip6, kLinkIpv6), std::nullopt);
    EXPECT_EQ(Find(Ethernet(ip6, 0x86DD)), std::nullopt);
}

TEST(LinkLayer, PassesVlanTags) {
    const Octets ip = Ipv4(Udp(kPayload));
    EXPECT_EQ(Find(Ethernet(Behind("00 05 08 00", ip), 0x8100)), std::nullopt);
    EXPECT_EQ(Find(Ethernet(Behind("00 05 81 00 00 06 08 00", ip), 0x88A8)), std::nullopt);
    EXPECT_EQ(Find(Ethernet(Behind("00 05 08 00", ip), 0x9100)), std::nullopt);
    EXPECT_EQ(Find(Ethernet(Behind("00 05 08 06", ip), 0x8100)), Passed::kNotIp);
}

TEST(LinkLayer, PassesOptionsOfIpv4AndPaddingOfTheLink) {
    Octets ip = Ipv4(Udp(kPayload));
    ip[0] = 0x47;
    ip.insert(ip.begin() + 20, 8, 1);  // "no operation" eight times
    EXPECT_EQ(Find(ip, kLinkRaw), std::nullopt);
    ip.resize(ip.size() + 11);
    EXPECT_EQ(Find(ip, kLinkRaw), std::nullopt);
}

TEST(LinkLayer, PassesExtensionHeadersOfIpv6) {
    const Octets udp = Udp(kPayload);
    // Hop-by-hop of 8 octets, destination options of 16, routing of 8, authentication of 12, and a
    // fragment header of a packet that is whole.
    EXPECT_EQ(Find(Ipv6("00", Behind("3C 00 00 00 00 00 00 00"
                                     "2B 01 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
                                     "33 00 00 00 00 00 00 00"
                                     "2C 01 00 00 00 00 00 00 00 00 00 00"
                                     "11 FF 00 00 00 00 00 01",
                                     udp)),
                   kLinkRaw),
              std::nullopt);
    EXPECT_EQ(Find(Ipv6("2C", Behind("11 00 00 01 00 00 00 01", udp)), kLinkRaw),
              Passed::kFragment);
    EXPECT_EQ(Find(Ipv6("2C", Behind("11 00 00 08 00 00 00 01", udp)), kLinkRaw),
              Passed::kFragment);
    EXPECT_EQ(Find(Ipv6("3A", udp), kLinkRaw), Passed::kNotUdp);
}

TEST(LinkLayer, TellsWhatIsNotOurs) {
    const Octets udp = Udp(kPayload);
    EXPECT_EQ(Find(Ethernet(Ipv4(udp)), 105), Passed::kLinkType);
    EXPECT_EQ(Find(Ethernet(Ipv4(udp), 0x0806)), Passed::kNotIp);
    EXPECT_EQ(Find(Behind("50", udp), kLinkRaw), Passed::kNotIp);
    EXPECT_EQ(Find(Ipv4(udp, 6), kLinkRaw), Passed::kNotUdp);
    EXPECT_EQ(Find(Ipv4(udp, 17, 0x2000), kLinkRaw), Passed::kFragment);  // more follow
    EXPECT_EQ(Find(Ipv4(udp, 17, 0x0001), kLinkRaw), Passed::kFragment);  // the last one
    EXPECT_EQ(Find(Ipv4(udp, 17, 0x4000), kLinkRaw), std::nullopt);       // not to be fragmented
    EXPECT_EQ(Find(Ipv4(Udp(kPayload, 4730)), kLinkRaw), Passed::kOtherPort);
    Octets fromPort = udp;
    std::swap(fromPort[0], fromPort[2]);
    std::swap(fromPort[1], fromPort[3]);
    EXPECT_EQ(Find(Ipv4(fromPort), kLinkRaw), std::nullopt);
}

// Every packet that ends too early is cut by the capture, or malformed if the capture has all.
TEST(LinkLayer, TellsCutFromMalformed) {
    for (const Octets& whole :
         {Ethernet(Ipv4(Udp(kPayload))), Ethernet(Ipv6("11", Udp(kPayload)), 0x86DD)}) {
        for (std::size_t size = 0; size < whole.size(); ++size) {
            const Octets part(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
            const auto missing = static_cast<std::uint32_t>(whole.size() - size);
            EXPECT_EQ(Find(part, kLinkEthernet, missing), Passed::kCut) << size;
            EXPECT_EQ(Find(part), Passed::kBadHeader) << size;
        }
    }
    Octets shortUdp = Ipv4(Udp(kPayload));
    shortUdp[25] = 7;
    EXPECT_EQ(Find(shortUdp, kLinkRaw), Passed::kBadHeader);
    Octets shortIp = Ipv4(Udp(kPayload));
    shortIp[0] = 0x44;
    EXPECT_EQ(Find(shortIp, kLinkRaw), Passed::kBadHeader);
    Octets longIp = Ipv4({});
    longIp[0] = 0x46;  // 24 octets, of which 20 are there
    EXPECT_EQ(Find(longIp, kLinkRaw), Passed::kBadHeader);
    EXPECT_EQ(Find(Hex("02 00 00"), kLinkNull), Passed::kBadHeader);
    EXPECT_EQ(Find(Ethernet(Hex("00 05 08"), 0x8100)), Passed::kBadHeader);
    EXPECT_EQ(Find(Ipv6("00", Hex("11 00 00 00 00 00 00")), kLinkRaw), Passed::kBadHeader);
    EXPECT_EQ(Find(Ipv6("00", Hex("11 01 00 00 00 00 00 00")), kLinkRaw), Passed::kBadHeader);
}

}  // namespace
}  // namespace quorvane::capture
