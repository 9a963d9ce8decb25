// The CSN.1-coded elements of the EPS and core-network families, over bits put together by hand.

#include <cstdio>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "compiler/csn_type_text.h"
#include "reference/csn_grammar.h"

namespace quorvane::compiler {
namespace {

using reference::Event;
using reference::Grammar;
using reference::Reading;

/// A family's structures, by name.
class Elements {
  public:
    explicit Elements(const std::string& family) : grammar_(test::CsnTextOf(family)) {
        EXPECT_EQ(grammar_.Errors(), "");
    }

    /// What `structure` takes of `bits`, blanks left out, and its fields in the order of the air
    /// interface: "name=value", a bit string that is no number with its width, groups in
    /// parentheses.
    std::string Show(const std::string& structure, std::string bits) {
        std::erase(bits, ' ');
        std::size_t index = 0;
        while (grammar_.Types(index).type->name != structure) {
            ++index;
        }
        const Reading reading = grammar_.Decode(bits, 0, index);
        std::string text = std::to_string(reading.taken) + ":";
        for (std::size_t event = 0; event < reading.events.size(); ++event) {
            const Event& here = reading.events[event];
            if (here.name.empty()) {
                text += " )";
                continue;
            }
            text += " " + here.name;
            const bool isPlain =
                event + 1 < reading.events.size() && reading.events[event + 1].name.empty();
            if (!isPlain) {
                text += "(";
                continue;
            }
            const auto begin = static_cast<std::size_t>(here.position);
            const auto end = static_cast<std::size_t>(reading.events[++event].position);
            text += "=" +
                    (end - begin > 32 || end == begin
                         ? "[" + std::to_string(end - begin) + "]"
                         : std::to_string(std::stoul(bits.substr(begin, end - begin), nullptr, 2)));
        }
        return text;
    }

  private:
    Grammar grammar_;
};

std::string Bits(const std::vector<int>& octets) {
    std::string bits;
    for (const int octet : octets) {
        for (int bit = 7; bit >= 0; --bit) {
            bits += (octet >> bit & 1) != 0 ? '1' : '0';
        }
    }
    return bits;
}

class EpsElements : public testing::Test {
  protected:
    Elements elements{"eps"};
};

class L3Elements : public testing::Test {
  protected:
    Elements elements{"l3"};
};

// ---- TS 24.301, 9.9.3.34 and 9.9.3.36 ----------------------------------------------------------

TEST_F(EpsElements, NetworkCapabilityTakesSpareOctets) {
    const std::string two =
        "p128_EEA0=1 p128_EEA1=1 p128_EEA2=0 EEA3=0 EEA4=0 EEA5=0 EEA6=0 EEA7=1 "
        "EIA0=0 p128_EIA1=1 p128_EIA2=1 EIA3=0 EIA4=0 EIA5=0 EIA6=0 EIA7=0";
    EXPECT_EQ(elements.Show("UENetworkCapability", Bits({0xC1, 0x60})), "16: " + two);
    const std::string octet5 =
        " octet_5( UEA0=1 UEA1=0 UEA2=0 UEA3=0 UEA4=0 UEA5=0 UEA6=0 UEA7=0 )";
    EXPECT_EQ(elements.Show("UENetworkCapability", Bits({0xC1, 0x60, 0x80})),
              "24: " + two + octet5);
    const std::string octet67 =
        " octet_6( UCS2=0 UIA1=1 UIA2=0 UIA3=0 UIA4=0 UIA5=0 UIA6=0 UIA7=1 )"
        " octet_7( LPP=1 LCS=0 p1xSR_VCC=1 ISR=0 )";
    EXPECT_EQ(elements.Show("UENetworkCapability", Bits({0xC1, 0x60, 0x80, 0x41, 0xFA})),
              "40: " + two + octet5 + octet67);
    EXPECT_EQ(
        elements.Show("UENetworkCapability", Bits({0xC1, 0x60, 0x80, 0x41, 0xFA, 0xFF, 0x00})),
        "56: " + two + octet5 + octet67);
}

TEST_F(EpsElements, SecurityCapabilityStopsBehindItsGroups) {
    const std::string two =
        "p128_EEA0=1 p128_EEA1=1 p128_EEA2=0 EEA3=0 EEA4=0 EEA5=0 EEA6=0 EEA7=1 "
        "p128_EIA1=1 p128_EIA2=1 EIA3=0 EIA4=0 EIA5=0 EIA6=0 EIA7=0";
    EXPECT_EQ(elements.Show("UESecurityCapability", Bits({0xC1, 0xE0})), "16: " + two);
    // Octet 5 without octet 6 is no group.
    EXPECT_EQ(elements.Show("UESecurityCapability", Bits({0xC1, 0xE0, 0x80})), "16: " + two);
    const std::string four = two +
                             " UEA_UIA( UEA0=1 UEA1=0 UEA2=0 UEA3=0 UEA4=0 UEA5=0 UEA6=0 UEA7=0"
                             " UIA1=1 UIA2=0 UIA3=0 UIA4=0 UIA5=0 UIA6=0 UIA7=0 )";
    EXPECT_EQ(elements.Show("UESecurityCapability", Bits({0xC1, 0xE0, 0x80, 0x40})), "32: " + four);
    EXPECT_EQ(elements.Show("UESecurityCapability", Bits({0xC1, 0xE0, 0x80, 0x40, 0x61, 0x00})),
              "40: " + four + " GEA( GEA1=1 GEA2=1 GEA3=0 GEA4=0 GEA5=0 GEA6=0 GEA7=1 )");
}

// ---- TS 24.301, 9.9.4.3; TS 24.008, 10.5.6.5 ---------------------------------------------------

TEST_F(EpsElements, QualityOfService) {
    EXPECT_EQ(elements.Show("EPS_QOS", Bits({9})), "8: QCI=9");
    EXPECT_EQ(elements.Show("EPS_QOS", Bits({1, 2, 3, 4})), "8: QCI=1");
    EXPECT_EQ(elements.Show("EPS_QOS", Bits({1, 2, 3, 4, 5, 6, 7, 8, 9, 10})),
              "72: QCI=1 basic( MaximumBitRateForUplink=2 MaximumBitRateForDownlink=3 "
              "GuaranteedBitRateForUplink=4 GuaranteedBitRateForDownlink=5 ) "
              "extended( MaximumBitRateForUplinkExt=6 MaximumBitRateForDownlinkExt=7 "
              "GuaranteedBitRateForUplinkExt=8 GuaranteedBitRateForDownlinkExt=9 )");
    const std::string twelve =
        "DelayClass=4 ReliabilityClass=3 PeakThroughput=9 PrecedenceClass=2 MeanThroughput=31 "
        "TrafficClass=3 DeliveryOrder=2 DeliveryOfErroneusSDU=3 MaximumSDUSize=150 "
        "MaximumBitRateForUplink=64 MaximumBitRateForDownlink=254 ResidualBER=7 SDUErrorRatio=4 "
        "TransderDelay=33 TrafficHandlingPriority=1 GuaranteedBitRateForUplink=5 "
        "GuaranteedBitRateForDownlink=6 SignalingIndication=1 SourceStatisticsDescriptor=1";
    const std::vector<int> octets = {0x23, 0x92, 0x1F, 0x73, 150, 64, 254, 0x74, 0x85, 5, 6, 0x11};
    EXPECT_EQ(elements.Show("epsQualityOfServ", Bits(octets)), "96: " + twelve);
    std::vector<int> sixteen = octets;
    sixteen.insert(sixteen.end(), {1, 2, 3, 4});
    EXPECT_EQ(elements.Show("epsQualityOfServ", Bits(sixteen)),
              "128: " + twelve +
                  " downlink( MaximumBitRateForDownlinkExt=1 GuaranteedBitRateForDownlinkExt=2 )"
                  " uplink( MaximumBitRateForUplinkExt=3 GuaranteedBitRateForUplinkExt=4 )");
    EXPECT_EQ(elements.Show("epsQualityOfServ", Bits({0x23, 0x92, 0x1F})).substr(0, 3), "-1:");
}

// ---- TS 24.008, 10.5.1.7 -----------------------------------------------------------------------

constexpr const char* kClassmarkHead =
    "0 101 1001 0011 0100"  // spare, two bands, A5/7 to A5/4, radio capabilities 2 and 1
    "0 0 1 0 0 0 0"         // no R-GSM, no HSCSD, UCS2, no extended measurement, no SMS/SM,
                            // positioning, ECSD
    "1 1 1 10 0"            // 8-PSK struct: modulation, power capability 1, not 2
    "1 10 0101"             // GSM 400 bands and radio capability
    "0 0 1 0 1";            // no GSM 850, no GSM 1900, UMTS FDD, not 3.84 Mcps TDD, CDMA 2000
constexpr const char* kClassmarkHeadFields =
    "Multiband_supported=5 A5_7=1 A5_6=0 A5_5=0 A5_4=1 Associated_Radio_Capability_2=3 "
    "Associated_Radio_Capability_1=4 UCS2_treatment=1 Extended_Measurement_Capability=0 "
    "Modulation_Capability=1 _8_PSK_RF_Power_Capability_1=2 GSM_400_Bands_Supported=2 "
    "GSM_400_Associated_Radio_Capability=5 UMTS_FDD_Radio_Access_Technology_Capability=1 "
    "UMTS_3_84_Mcps_TDD_Radio_Access_Technology_Capability=0 "
    "CDMA_2000_Radio_Access_Technology_Capability=1";
constexpr const char* kClassmarkTail =
    "0 0 0 1 0 0 0"  // no DTM, no single band, no GSM 750, 1.28 Mcps TDD, no feature
                     // package 1, no extended DTM, no high multislot
    "1 0011 1 10"    // GERAN Iu section of 3 bits: FLO, two spare
    "1 01 10"        // feature package 2, multislot power profiles
    "0 1 0110 11 0"  // no T-GSM 400, T-GSM 900, receiver performance, no DTM enhancements
    "0 1 0 0 0 1"    // no DTM high, repeated ACCH, no GSM 710, no T-GSM 810, no ciphering
                     // mode setting, positioning capabilities
    "1 0 1 0 1 10";  // E-UTRA FDD, TDD, measurement, priority, UTRA CSG, VAMOS
constexpr const char* kClassmarkTailFields =
    " UMTS_1_28_Mcps_TDD_Radio_Access_Technology_Capability=1 GERAN_Feature_Package_1=0"
    " Length=3 FLO_Iu_Capability=1 GERAN_Feature_Package_2=1 GMSK_Multislot_Power_Profile=1"
    " _8_PSK_Multislot_Power_Profile=2 T_GSM_900_Associated_Radio_Capability=6"
    " Downlink_Advanced_Receiver_Performance=3 DTM_Enhancements_Capability=0"
    " Repeated_ACCH_Capability=1 Ciphering_Mode_Setting_Capability=0"
    " Additional_Positioning_Capabilities=1 E_UTRA_FDD_support=1 E_UTRA_TDD_support=0"
    " E_UTRA_Measurement_and_Reporting_support=1 Priority_based_reselection_support=0"
    " UTRA_CSG_Cells_Reporting=1 VAMOS_Level=2";

TEST_F(EpsElements, ClassmarkMayEndBehindCdma) {
    const std::string head = kClassmarkHead;
    EXPECT_EQ(elements.Show("epsClassmark3Value", head),
              "41: " + std::string(kClassmarkHeadFields));
    // Two choices that say no, and then the end.
    EXPECT_EQ(elements.Show("epsClassmark3Value", head + "00"),
              "43: " + std::string(kClassmarkHeadFields));
    EXPECT_EQ(elements.Show("epsClassmark3Value", head + kClassmarkTail + "0000000"),
              "90: " + std::string(kClassmarkHeadFields) + kClassmarkTailFields);
    EXPECT_EQ(elements.Show("epsClassmark3Value", "0 011 0000 0000").substr(0, 3), "-1:");
}

TEST_F(L3Elements, ClassmarkIsWhole) {
    const std::string all = std::string(kClassmarkHead) + kClassmarkTail;
    EXPECT_EQ(elements.Show("Classmark3Value", all + "0000000"),
              "90: " + std::string(kClassmarkHeadFields) + kClassmarkTailFields);
    EXPECT_EQ(elements.Show("Classmark3Value", kClassmarkHead).substr(0, 3), "-1:");
}

TEST_F(L3Elements, AnEmptyIuSectionHasNoCapability) {
    std::string all = std::string(kClassmarkHead) + kClassmarkTail;
    std::string fields = std::string(kClassmarkHeadFields) + kClassmarkTailFields;
    all.replace(all.find("1 0011 1 10"), 11, "1 0000");
    fields.replace(fields.find("Length=3 FLO_Iu_Capability=1"), 28, "Length=0");
    EXPECT_EQ(elements.Show("Classmark3Value", all), "80: " + fields);
}

// ---- TS 24.008, 10.5.5.11 and 10.5.5.12 --------------------------------------------------------

TEST_F(L3Elements, ReceiveNPduNumbersArePaddedToTheOctet) {
    const std::string one = "sapi=5 Receive_N_PDU_Number_value=18";
    const std::string two = one + " sapi=6 Receive_N_PDU_Number_value=255";
    EXPECT_EQ(elements.Show("ReceiveNPduNumbersList", "0101 00010010 1111"), "16: " + one);
    EXPECT_EQ(elements.Show("ReceiveNPduNumbersList", "0101 00010010 0110 11111111"), "24: " + two);
    EXPECT_EQ(
        elements.Show("ReceiveNPduNumbersList", "0101 00010010 0110 11111111 0111 00000000 0000"),
        "40: " + two + " sapi=7 Receive_N_PDU_Number_value=0");
}

TEST_F(L3Elements, NetworkCapabilityIsCutBehindItsFirstOctets) {
    const std::string two =
        "GEA_1=1 SM_capabilities_via_dedicated_channels=1 SM_capabilities_via_GPRS_channels=1 "
        "UCS2_support=0 SS_Screening_Indicator=1 SoLSA_Capability=0 Revision_level_indicator=1 "
        "PFC_feature_mode=1 GEA_2=1 GEA_3=0 GEA_4=0 GEA_5=0 GEA_6=0 GEA_7=0 LCS_VA_capability=1";
    EXPECT_EQ(elements.Show("MsNetwkCpblty", Bits({0xE5, 0xC1})), "16: " + two);
    EXPECT_EQ(elements.Show("MsNetwkCpblty", Bits({0xE5, 0xC1, 0xA2, 0x00})),
              "32: " + two +
                  " PS_inter_RAT_HO_from_GERAN_to_UTRAN_Iu_mode_capability=1"
                  " PS_inter_RAT_HO_from_GERAN_to_E_UTRAN_S1_mode_capability=0"
                  " EMM_Combined_procedures_Capability=1 ISR_support=0"
                  " SRVCC_to_GERAN_UTRAN_capability=0 EPC_capability=0 NF_capability=1");
    EXPECT_EQ(elements.Show("MsNetwkCpblty", Bits({0xE5})).substr(0, 3), "-1:");
}

// ---- TS 24.008, 10.5.5.12a ---------------------------------------------------------------------

TEST_F(L3Elements, RadioAccessCapabilitySections) {
    const std::string content =
        "RF_Power_Capability=4 A5_bits( A5_1=1 A5_2=0 A5_3=1 A5_4=0 A5_5=1 A5_6=0 A5_7=1 ) "
        "ES_IND=1 PS=1 VGCS=0 VBS=0";
    const std::string sixteen = "100 1 1010101 1 1 0 0 0";
    EXPECT_EQ(elements.Show("MsRadioAccessCpblty", "0001 0010000" + sixteen + "0 0000"),
              "32: MS_RA_capability_value_part( Access_Technology_Type=1 Access_capabilities( "
              "Length=16 Access_capabilities( " +
                  content + " ) ) )");
    // A second technology with nothing in its section, and a list of others.
    EXPECT_EQ(
        elements.Show("MsRadioAccessCpblty", "0001 0010000" + sixteen +
                                                 "1 0011 0000000"
                                                 "1 1111 0010110 1 0100 001 10 1 0111 010 01"
                                                 "0 1 0 000"),
        "77: MS_RA_capability_value_part( Access_Technology_Type=1 Access_capabilities( "
        "Length=16 Access_capabilities( " +
            content +
            " ) ) "
            "Access_Technology_Type=3 Access_capabilities( Length=0 Access_capabilities=[0] ) "
            "Access_Technology_Type=15 Length=22 "
            "Additional_access_technologies( Access_Technology_Type=4 GMSK_Power_Class=1 "
            "_8PSK_Power_Class=2 ) Additional_access_technologies( Access_Technology_Type=7 "
            "GMSK_Power_Class=2 _8PSK_Power_Class=1 ) )");
}

TEST_F(L3Elements, ASectionBoundsWhatItHolds) {
    // Seven bits of content: the choice behind the power capability and what follows it is cut
    // off, the rest of the section is passed over.
    EXPECT_EQ(elements.Show("MsRadioAccessCpblty", "0101 0000111 100 0 1 0 1 0"),
              "19: MS_RA_capability_value_part( Access_Technology_Type=5 Access_capabilities( "
              "Length=7 Access_capabilities( RF_Power_Capability=4 ES_IND=1 PS=0 VGCS=1 ) ) )");
    // A length beyond the element reads up to its end, where the choice behind it is missing.
    EXPECT_EQ(elements.Show("MsRadioAccessCpblty", "0101 1111111 100 0 1 0 1 0").substr(0, 3),
              "-1:");
}

// ---- TS 24.008, 10.5.6.3 -----------------------------------------------------------------------

TEST_F(L3Elements, ProtocolConfigurationOptions) {
    EXPECT_EQ(elements.Show("ProtocolCfgOpt", Bits({0x80})), "8: ConfigurationProtocol=0");
    EXPECT_EQ(
        elements.Show("ProtocolCfgOpt", Bits({0x81, 0x80, 0x21, 2, 0xAB, 0xCD, 0xC2, 0x23, 0, 0,
                                              10,   0,    0xFF, 0, 5,    1,    2,    3,    4, 5})),
        "160: ConfigurationProtocol=1 "
        "ProtocolCfgs( ProtocolId=32801 Length=2 Contents=43981 ) "
        "ProtocolCfgs( ProtocolId=49699 Length=0 Contents=[0] ) "
        "ContainerCfgs( ContainerId=10 Length=0 Contents=[0] ) "
        "ContainerCfgs( ContainerId=65280 Length=5 Contents=[40] )");
    // Contents that are not all there.
    EXPECT_EQ(elements.Show("ProtocolCfgOpt", Bits({0x80, 0xC0, 0x21, 3, 1, 2})),
              "8: ConfigurationProtocol=0");
}

}  // namespace
}  // namespace quorvane::compiler
