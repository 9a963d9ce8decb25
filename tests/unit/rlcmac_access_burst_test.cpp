// PACKET CONTROL ACKNOWLEDGEMENT as an access burst, TS 44.060, 11.2.2: all bursts of 8 and of 11
// bits. The bits of the message type take no part.

#include <array>
#include <gtest/gtest.h>
#include <string>

#include "quorvane/decode.h"

namespace quorvane {
namespace {

std::string TextOf(const std::string& decoded, const std::string& message,
                   const std::string& acknowledgement, bool fails) {
    return "Decoded using \"" + decoded + "\".\n" +
           (fails ? "\nDecoder reported the following error: MANDATORY IE SYNTAX ERROR\r\n\n"
                  : "") +
           "MESSAGE: " + message + "\n{\n  contents: {\n    CTRL_ACK: " + acknowledgement +
           "\n  }\n\n}\n";
}

TEST(AccessBurst, EveryOneOf8Bits) {
    for (unsigned burst = 0; burst < 256; ++burst) {
        const std::array<std::uint8_t, 1> octets{static_cast<std::uint8_t>(burst)};
        const Result result = Decode(Decoding::Packet_Control_Acknowledgement_8, octets);
        EXPECT_EQ(result.text, TextOf("Packet_channel_request_8_bit_message_content",
                                      "Packet_Control_Acknowledgement_8bit",
                                      "LOC:[6,2] " + std::to_string(burst & 3U), false))
            << burst;
        EXPECT_EQ(result.diagnostics, "");
    }
}

TEST(AccessBurst, EveryOneOf11Bits) {
    constexpr const char* kName = "Packet_Control_Acknowledgement_11bit_a";
    for (unsigned burst = 0; burst < 2048; ++burst) {
        const std::array<std::uint8_t, 2> octets{static_cast<std::uint8_t>(burst >> 3U),
                                                 static_cast<std::uint8_t>(burst << 5U)};
        const Result result = Decode(Decoding::Packet_Control_Acknowledgement_11, octets);
        // 001 stands in front of CTRL_ACK.
        const bool fails = (burst >> 2U & 7U) != 1;
        const std::string value = fails ? "0" : "LOC:[9,2] " + std::to_string(burst & 3U);
        EXPECT_EQ(result.text, TextOf(kName, kName, value, fails)) << burst;
        EXPECT_EQ(result.diagnostics.empty(), !fails) << burst;
    }
}

}  // namespace
}  // namespace quorvane
