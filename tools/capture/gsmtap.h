#pragma once

// The header of GSMTAP, version 2: 16 octets in front of what was heard.
//
//     0  version                8  frame number of TDMA
//     1  length in 32-bit words 12 sub type: the channel of Um, the form of LTE NAS
//     2  type                   13 antenna
//     3  timeslot               14 subslot
//     4  ARFCN, with two flags  15 reserved
//     6  signal, 7 noise
//
// Tests: tests/capture/dissector_test.cpp.

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "tools/capture/passed.h"

namespace quorvane::capture {

enum GsmtapType : std::uint8_t {
    kGsmtapUm = 0x01,
    kGsmtapAbis = 0x02,
    kGsmtapLteNas = 0x12,
};

/// Sub types of kGsmtapUm.
enum UmChannel : std::uint8_t {
    kUmBcch = 0x01,
    kUmCcch = 0x02,
    kUmRach = 0x03,
    kUmAgch = 0x04,
    kUmPch = 0x05,
    kUmSdcch = 0x06,
    kUmSdcch4 = 0x07,
    kUmSdcch8 = 0x08,
    kUmFacchF = 0x09,
    kUmFacchH = 0x0A,
    kUmPacch = 0x0B,
    kUmPdch = 0x0D,
    kUmSlowAssociated = 0x80,  // a flag: the SACCH of the channel
};

/// Sub types of kGsmtapLteNas.
enum LteNasForm : std::uint8_t { kNasPlain = 0, kNasProtected = 1 };

/// "SDCCH/8"; "channel 77" for what has no name.
std::string UmChannelName(unsigned subType);

struct GsmtapHeader {
    std::uint8_t type = 0;
    std::uint8_t subType = 0;
    std::uint8_t timeslot = 0;
    std::uint8_t subslot = 0;
    std::uint16_t arfcn = 0;  // 14 bits
    bool isPcs = false;       // the ARFCN is one of the PCS band
    bool uplink = false;
    std::uint32_t tdmaFrame = 0;
};

/// Takes the header off. Returns nothing then, or why there is none.
std::optional<PassedKind> ReadGsmtapHeader(std::span<const std::uint8_t>& octets,
                                           GsmtapHeader& header);

}  // namespace quorvane::capture
