// Session-management messages of TS 24.008 as text: no entry point decodes them, so that there are
// no golden files of theirs.

#include <gtest/gtest.h>
#include <string>

#include "codec_test_support.h"

namespace quorvane::iecodec {
namespace {

using test::Zeros;

std::string TextOf(const char* set, const std::string& octets) {
    test::SetUnderTest messages(families::kL3Family, set);
    EXPECT_EQ(messages.Decode(octets), 8 * static_cast<std::int64_t>(test::FromHex(octets).size()));
    EXPECT_EQ(messages.Diagnostics(), "");
    return messages.Text();
}

std::string Uplink(const std::string& octets) {
    return TextOf("Message_set_XTIDUplink", octets);
}

std::string Downlink(const std::string& octets) {
    return TextOf("Message_set_XTIDDownlink", octets);
}

TEST(XtidText, ActivatePdpContextRequest) {
    // 8A 41: flag 1, identifier 0; 05: NSAPI 5; 03: SAPI 3; 03 0B 92 1F: quality of service, octets
    // 3 to 5; 02 01 21: IPv4, dynamic; 28: "abc"; 27: IPCP with two octets, container 0003; A1
    EXPECT_EQ(
        Uplink("8A 41 05 03 03 0B 92 1F 02 01 21 28 03 61 62 63 27 09 80 80 21 02 AA BB 00 03 "
               "00 A1"),
        "{\n"
        "  TI_Value: 0\n"
        "  TI_Flag: 1\n"
        "  ReqNsapi: {\n"
        "    spare: 0\n"
        "    NSAPIValue: LOC:[20,4] NSAPI 5 (5)\n"
        "  }\n"
        "\n"
        "  ReqLlcSapi: {\n"
        "    spare: 0\n"
        "    LLCSAPIValue: LOC:[28,4] SAPI 3 (3)\n"
        "  }\n"
        "\n"
        "  ReqQos: {\n"
        "    spare1: 0\n"
        "    DelayClass: LOC:[42,3] Delay class 1 (1)\n"
        "    ReliabilityClass: LOC:[45,3] Unacknowledged GTP and LLC; Acknowledged RLC, "
        "Protected data (3)\n"
        "    PeakThroughput: LOC:[48,4] Up to 256 000 octet/s (9)\n"
        "    spare2: 0\n"
        "    PrecedenceClass: LOC:[53,3] Normal priority (2)\n"
        "    spare3: 0\n"
        "    MeanThroughput: LOC:[59,5] Best effort (31)\n"
        "    TrafficClass: Subscribed traffic class (0)\n"
        "    DeliveryOrder: Subscribed delivery order (0)\n"
        "    DeliveryOfErroneusSDU: Subscribed delivery of erroneous SDUs (0)\n"
        "    MaximumSDUSize: Subscribed maximum SDU size (0)\n"
        "    MaximumBitRateForUplink: Subscribed maximum bit rate for uplink (0)\n"
        "    MaximumBitRateForDownlink: Subscribed maximum bit rate for uplink (0)\n"
        "    ResidualBER: Reserved (0)\n"
        "    SDUErrorRatio: Subscribed SDU error ratio (0)\n"
        "    TransderDelay: 0\n"
        "    TrafficHandlingPriority: Subscribed traffic handling priority (0)\n"
        "    GuaranteedBitRateForUplink: 0\n"
        "    GuaranteedBitRateForDownlink: 0\n"
        "    spare4: 0\n"
        "    SignalingIndication: Not optimised for signalling traffic (0)\n"
        "    SourceStatisticsDescriptor: unknown (0)\n"
        "    MaximumBitRateForDownlinkExt: 0\n"
        "    GuaranteedBitRateForDownlinkExt: 0\n"
        "    MaximumBitRateForUplinkExt: 0\n"
        "    GuaranteedBitRateForUplinkExt: 0\n"
        "  }\n"
        "\n"
        "  ReqPdpAddr: {\n"
        "    spare: 0\n"
        "    PDPTypeOrganisation: LOC:[76,4] IETF allocated address (1)\n"
        "    PDPTypeNumber: LOC:[80,8] IPv4 address (33)\n"
        "    AddressInformation: LOC:[88,0] \n"
        "  }\n"
        "\n"
        "  AccessPointName: {\n"
        "    text: LOC:[104,24] 61 62 63\n"
        "  }\n"
        "\n"
        "  ProtocolCfgOpt: {\n"
        "    ConfigurationProtocol: LOC:[149,3] 0\n"
        "    ContainerCfgs: [\n"
        "      {\n"
        "          ContainerId: LOC:[192,16] DNS Server Address Request (3)\n"
        "          Contents: LOC:[216,0] \n"
        "          Length: LOC:[208,8] 0\n"
        "        }\n"
        "\n"
        "    ]\n"
        "    ProtocolCfgs: [\n"
        "      {\n"
        "          Contents: LOC:[176,16] AA BB\n"
        "          Length: LOC:[168,8] 2\n"
        "          ProtocolId: LOC:[152,16] IPCP (32801)\n"
        "        }\n"
        "\n"
        "    ]\n"
        "  }\n"
        "\n"
        "  RequestType: LOC:[220,4] initial request (1)\n"
        "}\n");
}

TEST(XtidText, ModifyPdpContextRequestOfTheUplink) {
    // 32 03: SAPI 3; 31 FF: template of 255 octets, no operation, one parameter of 252
    std::string contents = "A5";
    for (int octet = 1; octet < 32; ++octet) {
        contents += " 00";
    }
    EXPECT_EQ(Uplink("3A 4A 32 03 31 FF D0 01 FC A5 " + Zeros(251)),
              "{\n"
              "  TI_Value: 3\n"
              "  TI_Flag: 0\n"
              "  ReqLlcSapi: {\n"
              "    spare: 0\n"
              "    LLCSAPIValue: LOC:[28,4] SAPI 3 (3)\n"
              "  }\n"
              "\n"
              "  ReqNewQos: MISSING\n"
              "  NewTft: {\n"
              "    TFTOperationCode: No TFT operation (6)\n"
              "    PacketFilters: [\n"
              "    ]\n"
              "    PacketParameters: [\n"
              "      {\n"
              "          ParameterId: 1\n"
              "          Contents: " +
                  contents +
                  "\n"
                  "        }\n"
                  ",\n"
                  "      {\n"
                  "          ParameterId: 0\n"
                  "          Contents: \n"
                  "        }\n"
                  "\n"
                  "    ]\n"
                  "  }\n"
                  "\n"
                  "  ProtocolConfigOpt: MISSING\n"
                  "}\n");
}

TEST(XtidText, DeactivatePdpContextRequest) {
    // 24: regular deactivation; 91: tear down; 27: no protocols; 35: contexts 5 and 8
    const std::string octets = "5A 46 24 91 27 01 80 35 02 20 01";
    const char* text =
        "{\n"
        "  TI_Value: 5\n"
        "  TI_Flag: 0\n"
        "  SmCause: {\n"
        "    Cause: LOC:[16,8] Regular deactivation (36)\n"
        "  }\n"
        "\n"
        "  TearDownInd: {\n"
        "    spare: 0\n"
        "    TDIFlag: LOC:[31,1] tear down requested (1)\n"
        "  }\n"
        "\n"
        "  ProtocolConfigOpt: {\n"
        "    ConfigurationProtocol: LOC:[53,3] 0\n"
        "    ContainerCfgs: [\n"
        "    ]\n"
        "    ProtocolCfgs: [\n"
        "    ]\n"
        "  }\n"
        "\n"
        "  MBMSContextStatus: LOC:[72,16] 20 01\n"
        "}\n";
    EXPECT_EQ(Uplink(octets), text);
    EXPECT_EQ(Downlink(octets), text);
}

TEST(XtidText, DeactivatePdpContextAccept) {
    EXPECT_EQ(Uplink("6A 47 35 00"),
              "{\n"
              "  TI_Value: 6\n"
              "  TI_Flag: 0\n"
              "  ProtocolConfigOpt: MISSING\n"
              "  MBMSContextStatus: LOC:[32,0] \n"
              "}\n");
    EXPECT_EQ(Downlink("EA 47"),
              "{\n"
              "  TI_Value: 6\n"
              "  TI_Flag: 1\n"
              "  ProtocolConfigOpt: MISSING\n"
              "  MBMSContextStatus: MISSING\n"
              "}\n");
}

TEST(XtidText, RequestPdpContextActivationReject) {
    // 1F: cause 31; the container 7FFF has no name; its two octets are AA BB
    EXPECT_EQ(Uplink("2A 45 1F 27 06 85 7F FF 02 AA BB"),
              "{\n"
              "  TI_Value: 2\n"
              "  TI_Flag: 0\n"
              "  SmCause: {\n"
              "    Cause: LOC:[16,8] Activation rejected, unspecified (31)\n"
              "  }\n"
              "\n"
              "  ProtocolConfigOpt: {\n"
              "    ConfigurationProtocol: LOC:[45,3] 5\n"
              "    ContainerCfgs: [\n"
              "      {\n"
              "          ContainerId: LOC:[48,16] 32767\n"
              "          Contents: LOC:[72,16] AA BB\n"
              "          Length: LOC:[64,8] 2\n"
              "        }\n"
              "\n"
              "    ]\n"
              "    ProtocolCfgs: [\n"
              "    ]\n"
              "  }\n"
              "\n"
              "}\n");
}

TEST(XtidText, ActivateMbmsContextRequest) {
    EXPECT_EQ(Uplink("0A 56 80 00 02 40 10 02 01 21 03 61 62 63 35 01 80"),
              "{\n"
              "  TI_Value: 0\n"
              "  TI_Flag: 0\n"
              "  ReqMbmsNsapi: LOC:[16,8] 128\n"
              "  ReqLlcSapi: {\n"
              "    spare: 0\n"
              "    LLCSAPIValue: LOC:[28,4] LLC SAPI not assigned (0)\n"
              "  }\n"
              "\n"
              "  SupportedMBMSBearerCapabilities: {\n"
              "    MaximumBitRateDownlink: LOC:[40,8] 64\n"
              "    MaximumBitRateDownlinkExt: LOC:[48,8] 16\n"
              "  }\n"
              "\n"
              "  RequestedMulticastAddress: {\n"
              "    spare: 0\n"
              "    PDPTypeOrganisation: LOC:[68,4] IETF allocated address (1)\n"
              "    PDPTypeNumber: LOC:[72,8] IPv4 address (33)\n"
              "    AddressInformation: LOC:[80,0] \n"
              "  }\n"
              "\n"
              "  AccessPointName: LOC:[88,24] 61 62 63\n"
              "  MBMSProtocolConfigOpts: LOC:[128,8] 80\n"
              "}\n");
}

TEST(XtidText, RequestMbmsContextActivationReject) {
    EXPECT_EQ(Uplink("0A 5A 18 35 02 01 02"),
              "{\n"
              "  TI_Value: 0\n"
              "  TI_Flag: 0\n"
              "  SmCause: {\n"
              "    Cause: LOC:[16,8] MBMS bearer capabilities insufficient for the service (24)\n"
              "  }\n"
              "\n"
              "  MBMSProtocolConfigOpts: LOC:[40,16] 01 02\n"
              "}\n");
}

TEST(XtidText, ActivatePdpContextAccept) {
    // 03: SAPI 3; 10 ..: quality of service, octets 3 to 18; 02: radio priority 2; 2B: IPv4
    // 10.0.0.1; 27: container 000D; 34: packet flow 2; 39: cause 50
    EXPECT_EQ(Downlink("8A 42 03 10 0B 92 1F 73 96 40 FE 74 4B 49 30 11 10 20 30 40 02 2B 06 01 21 "
                       "0A 00 00 01 27 04 80 00 0D 00 34 01 02 39 01 32"),
              "{\n"
              "  TI_Value: 0\n"
              "  TI_Flag: 1\n"
              "  NegotiatedLlcSapi: {\n"
              "    spare: 0\n"
              "    LLCSAPIValue: LOC:[20,4] SAPI 3 (3)\n"
              "  }\n"
              "\n"
              "  NegotiatedQos: {\n"
              "    spare1: 0\n"
              "    DelayClass: LOC:[34,3] Delay class 1 (1)\n"
              "    ReliabilityClass: LOC:[37,3] Unacknowledged GTP and LLC; Acknowledged RLC, "
              "Protected data (3)\n"
              "    PeakThroughput: LOC:[40,4] Up to 256 000 octet/s (9)\n"
              "    spare2: 0\n"
              "    PrecedenceClass: LOC:[45,3] Normal priority (2)\n"
              "    spare3: 0\n"
              "    MeanThroughput: LOC:[51,5] Best effort (31)\n"
              "    TrafficClass: LOC:[56,3] Interactive class (3)\n"
              "    DeliveryOrder: LOC:[59,2] Without delivery order ('no') (2)\n"
              "    DeliveryOfErroneusSDU: LOC:[61,3] Erroneous SDUs are not delivered ('no') (3)\n"
              "    MaximumSDUSize: LOC:[64,8] 150\n"
              "    MaximumBitRateForUplink: LOC:[72,8] The maximum bit rate is 64 kbps + ((the "
              "binary coded value in 8 bits -01000000) * 8 kbps) (64)\n"
              "    MaximumBitRateForDownlink: LOC:[80,8] giving a range of values from 576 kbps to "
              "8640 kbps in 64 kbps increments. (254)\n"
              "    ResidualBER: LOC:[88,4] 1*10-5 (7)\n"
              "    SDUErrorRatio: LOC:[92,4] 1*10-4 (4)\n"
              "    TransderDelay: LOC:[96,6] 18\n"
              "    TrafficHandlingPriority: LOC:[102,2] Priority level 3 (3)\n"
              "    GuaranteedBitRateForUplink: LOC:[104,8] 73\n"
              "    GuaranteedBitRateForDownlink: LOC:[112,8] 48\n"
              "    spare4: 0\n"
              "    SignalingIndication: LOC:[123,1] Optimised for signalling traffic (1)\n"
              "    SourceStatisticsDescriptor: LOC:[124,4] speech (1)\n"
              "    MaximumBitRateForDownlinkExt: LOC:[128,8] 16\n"
              "    GuaranteedBitRateForDownlinkExt: LOC:[136,8] 32\n"
              "    MaximumBitRateForUplinkExt: LOC:[144,8] 48\n"
              "    GuaranteedBitRateForUplinkExt: LOC:[152,8] 64\n"
              "  }\n"
              "\n"
              "  RadioPriority: LOC:[164,4] 2\n"
              "  SpareHalfOctet: 0\n"
              "  PdpAddr: {\n"
              "    spare: 0\n"
              "    PDPTypeOrganisation: LOC:[188,4] IETF allocated address (1)\n"
              "    PDPTypeNumber: LOC:[192,8] IPv4 address (33)\n"
              "    AddressInformation: LOC:[200,32] 0A 00 00 01\n"
              "  }\n"
              "\n"
              "  ProtocolCfgOpt: {\n"
              "    ConfigurationProtocol: LOC:[253,3] 0\n"
              "    ContainerCfgs: [\n"
              "      {\n"
              "          ContainerId: LOC:[256,16] DNS Server IPv4 Address Request (13)\n"
              "          Contents: LOC:[280,0] \n"
              "          Length: LOC:[272,8] 0\n"
              "        }\n"
              "\n"
              "    ]\n"
              "    ProtocolCfgs: [\n"
              "    ]\n"
              "  }\n"
              "\n"
              "  PacketFlowId: {\n"
              "    spare: 0\n"
              "    PacketFlowIdentifierValue: LOC:[297,7] SMS (2)\n"
              "  }\n"
              "\n"
              "  SMCause: {\n"
              "    Cause: LOC:[320,8] PDP type IPv4 only allowed (50)\n"
              "  }\n"
              "\n"
              "}\n");
}

TEST(XtidText, RequestPdpContextActivation) {
    // 06 01 57 ..: IPv6, four octets; 28: "x"; 27: no protocols
    EXPECT_EQ(Downlink("0A 44 06 01 57 20 01 0D B8 28 01 78 27 01 80"),
              "{\n"
              "  TI_Value: 0\n"
              "  TI_Flag: 0\n"
              "  OfferedPdpAddr: {\n"
              "    spare: 0\n"
              "    PDPTypeOrganisation: LOC:[28,4] IETF allocated address (1)\n"
              "    PDPTypeNumber: LOC:[32,8] IPv6 address (87)\n"
              "    AddressInformation: LOC:[40,32] 20 01 0D B8\n"
              "  }\n"
              "\n"
              "  AccessPointName: LOC:[88,8] 78\n"
              "  ProtocolConfigOpt: {\n"
              "    ConfigurationProtocol: LOC:[117,3] 0\n"
              "    ContainerCfgs: [\n"
              "    ]\n"
              "    ProtocolCfgs: [\n"
              "    ]\n"
              "  }\n"
              "\n"
              "}\n");
}

TEST(XtidText, ModifyPdpContextAcceptOfTheDownlink) {
    // 32 05: SAPI 5; 84: radio priority 4; 34: packet flow 1
    EXPECT_EQ(Downlink("0A 4B 32 05 84 34 01 01"),
              "{\n"
              "  TI_Value: 0\n"
              "  TI_Flag: 0\n"
              "  NegotiatedQos: MISSING\n"
              "  NegotiatedLlcSapi: {\n"
              "    spare: 0\n"
              "    LLCSAPIValue: LOC:[28,4] SAPI 5 (5)\n"
              "  }\n"
              "\n"
              "  NewRadioPriority: LOC:[36,4] 4\n"
              "  PacketFlowId: {\n"
              "    spare: 0\n"
              "    PacketFlowIdentifierValue: LOC:[57,7] Signaling (1)\n"
              "  }\n"
              "\n"
              "  ProtocolConfigOpt: MISSING\n"
              "}\n");
}

TEST(XtidText, Notification) {
    EXPECT_EQ(Downlink("0A 5D 01 01"),
              "{\n"
              "  TI_Value: 0\n"
              "  TI_Flag: 0\n"
              "  NotificationIndicator: LOC:[24,8] SRVCC handover cancelled, IMS session "
              "re-establishment required (1)\n"
              "}\n");
    EXPECT_EQ(Downlink("9A 5D 01 02"),
              "{\n"
              "  TI_Value: 1\n"
              "  TI_Flag: 1\n"
              "  NotificationIndicator: LOC:[24,8] Reserved (2)\n"
              "}\n");
}

TEST(XtidText, ActivateMbmsContextAccept) {
    EXPECT_EQ(Downlink("0A 57 06 01 02 03 62 F2 10 03 35 01 FF"),
              "{\n"
              "  TI_Value: 0\n"
              "  TI_Flag: 0\n"
              "  TempMobileGroupId: {\n"
              "    MBMSServiceId: LOC:[24,24] 66051\n"
              "    Numbers: {\n"
              "      MCC2: LOC:[48,4] 6\n"
              "      MCC1: LOC:[52,4] 2\n"
              "      MNC3: LOC:[56,4] 15\n"
              "      MCC3: LOC:[60,4] 2\n"
              "      MNC2: LOC:[64,4] 1\n"
              "      MNC1: LOC:[68,4] 0\n"
              "    }\n"
              "\n"
              "  }\n"
              "\n"
              "  NegotiatedLlcSapi: {\n"
              "    spare: 0\n"
              "    LLCSAPIValue: LOC:[76,4] SAPI 3 (3)\n"
              "  }\n"
              "\n"
              "  MBMSProtocolConfigOpts: LOC:[96,8] FF\n"
              "}\n");
}

TEST(XtidText, RequestMbmsContextActivation) {
    // 05: NSAPI 5; 02 F1 21: spare bits set; 01 78: "x"
    EXPECT_EQ(Downlink("0A 59 05 02 F1 21 01 78"),
              "{\n"
              "  TI_Value: 0\n"
              "  TI_Flag: 0\n"
              "  LinkedNSAPI: {\n"
              "    spare: 0\n"
              "    NSAPIValue: LOC:[20,4] NSAPI 5 (5)\n"
              "  }\n"
              "\n"
              "  OfferedMulticastAddr: {\n"
              "    spare: 0\n"
              "    PDPTypeOrganisation: LOC:[36,4] IETF allocated address (1)\n"
              "    PDPTypeNumber: LOC:[40,8] IPv4 address (33)\n"
              "    AddressInformation: LOC:[48,0] \n"
              "  }\n"
              "\n"
              "  AccessPointName: LOC:[56,8] 78\n"
              "  MBMSProtocolConfigOpts: MISSING\n"
              "}\n");
}

}  // namespace
}  // namespace quorvane::iecodec
