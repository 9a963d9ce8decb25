#include "tools/capture/rlc_mac.h"

namespace quorvane::capture {
namespace {

using Octets = std::span<const std::uint8_t>;

// Control blocks are of CS-1. Blocks of other sizes are RLC data blocks of faster schemes.
constexpr std::size_t kControlBlock = 23;

enum PayloadType : std::uint8_t {
    kData = 0,
    kControl = 1,
    kControlWithHeader = 2,  // to the mobile station alone
};

std::uint64_t KeyOf(const GsmtapHeader& header, unsigned transaction) {
    return std::uint64_t{header.isPcs} << 40 | std::uint64_t{header.arfcn} << 24 |
           std::uint64_t{header.timeslot} << 16 | transaction;
}

}  // namespace

std::optional<PassedKind> RlcMacBlocks::Take(const GsmtapHeader& header, Octets block,
                                             Decoding& decoding, Octets& octets) {
    if (block.size() < kControlBlock) {
        if (!header.uplink || block.empty() || block.size() > 2) {
            return PassedKind{Passed::kBlockLength, header.subType};
        }
        decoding = block.size() == 1 ? Decoding::Packet_Control_Acknowledgement_8
                                     : Decoding::Packet_Control_Acknowledgement_11;
        octets = block;
        return std::nullopt;
    }
    if (block.size() > kControlBlock) {
        return PassedKind{Passed::kRlcData};
    }
    decoding = header.uplink ? Decoding::RLC_MACUplink : Decoding::RLC_MACDownlink;
    octets = block.subspan(1);
    switch (block[0] >> 6) {
        case kData:
            return PassedKind{Passed::kRlcData};
        case kControl:
            return std::nullopt;
        case kControlWithHeader:
            if (!header.uplink) {
                return TakeSegmented(header, octets, octets);
            }
            break;
        default:
            break;
    }
    return PassedKind{Passed::kRlcReserved};
}

// RBSN, RTI, FS and AC in the first octet; with AC, PR, TFI and D in a second one.
std::optional<PassedKind> RlcMacBlocks::TakeSegmented(const GsmtapHeader& header, Octets contents,
                                                      Octets& octets) {
    const bool isSecond = (contents[0] & 0x80U) != 0;
    const bool isFinal = (contents[0] & 2U) != 0;
    const bool hasAddress = (contents[0] & 1U) != 0;
    const unsigned transaction = contents[0] >> 2 & 31U;
    octets = contents.subspan(hasAddress ? 2 : 1);
    if (isFinal && !isSecond) {
        return std::nullopt;
    }
    if (isSecond && !isFinal) {
        return PassedKind{Passed::kRlcExtended};
    }
    std::vector<std::uint8_t>& first =
        held_.At(KeyOf(header, transaction), [this](auto& old) { Lose(old); });
    if (!isSecond) {
        Lose(first);
        first.assign(octets.begin(), octets.end());
        return PassedKind{Passed::kRlcJoined};
    }
    if (first.empty()) {
        return PassedKind{Passed::kRlcLost};
    }
    whole_.swap(first);
    first.clear();
    whole_.insert(whole_.end(), octets.begin(), octets.end());
    octets = whole_;
    return std::nullopt;
}

void RlcMacBlocks::Lose(std::vector<std::uint8_t>& segment) {
    counts_.Move({Passed::kRlcJoined}, {Passed::kRlcLost}, segment.empty() ? 0 : 1);
    segment.clear();
}

void RlcMacBlocks::Finish() {
    held_.ForEach([this](auto& segment) { Lose(segment); });
}

}  // namespace quorvane::capture
