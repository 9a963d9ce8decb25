#include "traffic.h"

namespace quorvane::benchmarks {
namespace {

using enum Decoding;

// EPS. In captures of whole test runs 13 % of the messages were attach and tracking area update
// requests, with 44 % of the time; 12 % had diagnostics, at three times the mean cost; a text had
// 1912 octets on average. The first rows come near these shares: long requests with
// capabilities of several systems. The rest is what belongs to registrations and bearers, in pairs,
// with the texts of networks that fill most optional elements.
constexpr TrafficRow kEps[] = {
    {EPS_MMUplink, "ATTACH_REQUEST", 55, 0, {7500, 12000}},
    {EPS_MMUplink, "ATTACH_REQUEST", 0, 45, {3000, 9000}},
    {EPS_MMUplink, "TRACKING_AREA_UPDATE_REQUEST", 30, 0, {7500, 12000}},
    {EPS_MMDownlink, "ATTACH_ACCEPT", 40, 60, {2800, 5000}},
    {EPS_MMUplink, "ATTACH_COMPLETE", 80, 0, {400, 700}},
    {EPS_MMDownlink, "TRACKING_AREA_UPDATE_ACCEPT", 40, 0, {2500, 3500}},
    {EPS_MMUplink, "TRACKING_AREA_UPDATE_COMPLETE", 25, 0},
    {EPS_MMDownlink, "IDENTITY_REQUEST", 10, 0},
    {EPS_MMUplink, "IDENTITY_RESPONSE", 10, 0},
    {EPS_MMDownlink, "AUTHENTICATION_REQUEST", 55, 0},
    {EPS_MMUplink, "AUTHENTICATION_RESPONSE", 55, 0},
    {EPS_MMDownlink, "SECURITY_MODE_COMMAND", 65, 5, {850, 1600}},
    {EPS_MMUplink, "SECURITY_MODE_COMPLETE", 60, 0},
    {EPS_MMUplink, "SERVICE_REQUEST", 40, 0},
    {EPS_MMUplink, "EXTENDED_SERVICE_REQUEST", 10, 0},
    {EPS_MMDownlink, "EMM_INFORMATION", 40, 0, {600, 1400}},
    {EPS_MMUplink, "EPS_DETACH_REQUEST_UP", 25, 0},
    {EPS_MMDownlink, "EPS_DETACH_ACCEPT_DN", 12, 0},
    {EPS_MMDownlink, "DOWNLINK_NAS_TRANSPORT", 10, 0},
    {EPS_MMUplink, "UPLINK_NAS_TRANSPORT", 10, 0},
    {EPS_SMUplink, "PDN_CONNECTIVITY_REQUEST", 25, 0, {400, 700}},
    {EPS_SMDownlink, "ESM_INFORMATION_REQUEST", 15, 0},
    {EPS_SMUplink, "ESM_INFORMATION_RESPONSE", 15, 0, {300, 500}},
    {EPS_SMDownlink, "ACTIVATE_DEFAULT_EPS_BEARER_CONTEXT_REQUEST", 55, 0, {2500, 3500}},
    {EPS_SMUplink, "ACTIVATE_DEFAULT_EPS_BEARER_CONTEXT_ACCEPT", 45, 0},
    {EPS_SMDownlink, "ACTIVATE_DEDICATED_EPS_BEARER_CONTEXT_REQUEST", 25, 10, {1500, 4000}},
    {EPS_SMUplink, "ACTIVATE_DEDICATED_EPS_BEARER_CONTEXT_ACCEPT", 20, 0},
    {EPS_SMDownlink, "DEACTIVATE_EPS_BEARER_CONTEXT_REQUEST", 9, 0},
    {EPS_SMUplink, "DEACTIVATE_EPS_BEARER_CONTEXT_ACCEPT", 9, 0},
};

// Layer 3. In the same captures 9 % of the messages had radio access capabilities, with 62 % of the
// time: attach and routing area update requests with several access technologies each. A text had
// 1692 octets on average. The rest is calls and registrations.
constexpr TrafficRow kL3[] = {
    {L3Uplink, "ATTACH_REQUEST_UP", 32, 0, {11500, 25000}},
    {L3Uplink, "ATTACH_REQUEST_UP", 0, 13, {9500, 25000}},
    {L3Uplink, "ROUTING_AREA_UPDATE_REQUEST_UP", 45, 0, {11500, 25000}},
    {L3Downlink, "ATTACH_ACCEPT_DN", 30, 3, {1000, 2000}},
    {L3Uplink, "ATTACH_COMPLETE_UP", 30, 0},
    {L3Downlink, "ROUTING_AREA_UPDATE_ACCEPT_DN", 40, 0, {900, 2000}},
    {L3Uplink, "ROUTING_AREA_UPDATE_COMPLETE_UP", 35, 0},
    {L3Downlink, "AUTHENTICATION_AND_CIPHERING_REQUEST_DN", 45, 0},
    {L3Uplink, "AUTHENTICATION_AND_CIPHERING_RESPONSE_UP", 45, 0},
    {L3Downlink, "GMM_INFORMATION_DN", 20, 0},
    {L3Uplink, "SERVICE_REQUEST_UP", 30, 0},
    {L3Downlink, "SERVICE_ACCEPT_DN", 20, 0},
    {L3Uplink, "DETACH_REQUEST_UP", 12, 0},
    {L3Downlink, "DETACH_ACCEPT_DN", 8, 0},
    {L3Uplink, "LOCATION_UPDATING_REQUEST_UP", 40, 0, {900, 1300}},
    {L3Downlink, "LOCATION_UPDATING_ACCEPT_DN", 35, 3, {384, 900}},
    {L3Uplink, "TMSI_REALLOCATION_COMPLETE_UP", 35, 0},
    {L3Uplink, "CM_SERVICE_REQUEST_UP", 35, 0},
    {L3Downlink, "CM_SERVICE_ACCEPT_DN", 15, 0},
    {L3Downlink, "AUTHENTICATION_REQUEST_DN", 40, 0},
    {L3Uplink, "AUTHENTICATION_RESPONSE_UP", 40, 0},
    {L3Downlink, "IDENTITY_REQUEST_DN", 15, 0},
    {L3Uplink, "IDENTITY_RESPONSE_UP", 15, 0},
    {L3Downlink, "MM_INFORMATION_DN", 20, 2},
    {L3Uplink, "IMSI_DETACH_INDICATION_UP", 10, 0},
    {L3Uplink, "SETUP_UP", 25, 2, {1000, 4000}},
    {L3Downlink, "SETUP_DN", 25, 2, {700, 2500}},
    {L3Downlink, "CALL_PROCEEDING_DN", 25, 0, {300, 900}},
    {L3Uplink, "CALL_CONFIRMED_UP", 20, 3, {240, 900}},
    {L3Downlink, "ALERTING_DN", 25, 2},
    {L3Uplink, "ALERTING_UP", 20, 0},
    {L3Downlink, "PROGRESS_DN", 12, 2},
    {L3Downlink, "CONNECT_DN", 20, 1},
    {L3Uplink, "CONNECT_UP", 18, 0},
    {L3Uplink, "CONNECT_ACKNOWLEDGE", 20, 0},
    {L3Downlink, "DISCONNECT_DN", 15, 0},
    {L3Uplink, "DISCONNECT_UP", 20, 2},
    {L3Downlink, "RELEASE_DN", 15, 1},
    {L3Uplink, "RELEASE_UP", 15, 0},
    {L3Uplink, "RELEASE_COMPLETE_UP", 18, 0},
    {L3Downlink, "FACILITY_DN", 4, 0},
};

// Radio resource, as one mobile station hears and says it. On the slow channel beside a call a
// report and a system information of type 5 or 6 each half second; when idle the broadcast channel
// over and over, with the types that tell of neighbours and GPRS, and the paging channel; calls and
// hand-overs are few.
constexpr TrafficRow kRr[] = {
    {RRUplink, "MEASUREMENT_REPORT_UP", 200, 6, {400, 1300}},
    {RRSPD, "ENHANCED_MEASUREMENT_REPORT", 25, 0, {450, 1300}},
    {RRSPD, "MEASUREMENT_INFORMATION", 25, 2, {1000, 2500}},
    {RRPLENDownlink, "SYSTEM_INFORMATION_TYPE_5_DN", 45, 0, {600, 3500}},
    {RRPLENDownlink, "SYSTEM_INFORMATION_TYPE_5BIS_DN", 5, 0, {600, 3500}},
    {RRPLENDownlink, "SYSTEM_INFORMATION_TYPE_5TER_DN", 10, 0, {600, 3500}},
    {RRPLENDownlink, "SYSTEM_INFORMATION_TYPE_6_DN", 60, 2},
    {RRPLENDownlink, "SYSTEM_INFORMATION_TYPE_1_DN", 25, 0},
    {RRPLENDownlink, "SYSTEM_INFORMATION_TYPE_2_DN", 25, 0},
    {RRPLENDownlink, "SYSTEM_INFORMATION_TYPE_2BIS_DN", 5, 0},
    {RRPLENDownlink, "SYSTEM_INFORMATION_TYPE_2TER_DN", 15, 1},
    {RRPLENDownlink, "SYSTEM_INFORMATION_TYPE_2QUATER_DN", 35, 1, {1000, 3000}},
    {RRPLENDownlink, "SYSTEM_INFORMATION_TYPE_3_DN", 50, 1},
    {RRPLENDownlink, "SYSTEM_INFORMATION_TYPE_4_DN", 45, 2},
    {RRPLENDownlink, "SYSTEM_INFORMATION_TYPE_13_DN", 31, 0, {600, 3000}},
    {RRPLENDownlink, "PAGING_REQUEST_TYPE_1_DN", 120, 3, {1000, 1500}},
    {RRPLENDownlink, "PAGING_REQUEST_TYPE_2_DN", 20, 0, {600, 1500}},
    {RRPLENDownlink, "PAGING_REQUEST_TYPE_3_DN", 8, 0},
    {RRPLENDownlink, "IMMEDIATE_ASSIGNMENT_DN", 60, 3, {2000, 3000}},
    {RRPLENDownlink, "IMMEDIATE_ASSIGNMENT_EXTENDED_DN", 12, 0},
    {RRPLENDownlink, "IMMEDIATE_ASSIGNMENT_REJECT_DN", 4, 0},
    {ChannelRequest, "ChannelRequest", 15, 0},
    {RRUplink, "PAGING_RESPONSE_UP", 10, 1},
    {RRUplink, "CLASSMARK_CHANGE_UP", 10, 1, {1300, 4100}},
    {RRUplink, "GPRS_SUSPENSION_REQUEST_UP", 6, 0},
    {RRDownlink, "CIPHERING_MODE_COMMAND_DN", 12, 0},
    {RRUplink, "CIPHERING_MODE_COMPLETE_UP", 12, 0},
    {RRDownlink, "ASSIGNMENT_COMMAND_DN", 10, 1, {1200, 3000}},
    {RRUplink, "ASSIGNMENT_COMPLETE_UP", 10, 0},
    {RRDownlink, "HANDOVER_COMMAND_DN", 12, 1, {1700, 4000}},
    {RRUplink, "HANDOVER_COMPLETE_UP", 12, 0, {200, 300}},
    {RRDownlink, "PHYSICAL_INFORMATION_DN", 4, 0},
    {RRDownlink, "CHANNEL_MODE_MODIFY_DN", 4, 0, {400, 1300}},
    {RRUplink, "CHANNEL_MODE_MODIFY_ACKNOWLEDGE_UP", 4, 0},
    {RRDownlink, "CHANNEL_RELEASE_DN", 16, 1, {500, 1500}},
};

// RLC/MAC control on the packet associated channel of data transfers: acknowledgements in both
// directions, most of them EGPRS, then assignments and the answers to polls; what a cell change,
// reports and power control take is little, and dummy blocks fill the gaps.
constexpr TrafficRow kRlcMac[] = {
    {RLC_MACDownlink, "Packet_Uplink_Ack_Nack", 240, 2, {800, 1800}},
    {RLC_MACUplink, "EGPRS_Packet_Downlink_Ack_Nack", 180, 6, {700, 1800}},
    {RLC_MACUplink, "Packet_Downlink_Ack_Nack", 90, 4, {900, 1600}},
    {RLC_MACDownlink, "Packet_Uplink_Assignment", 110, 2, {1700, 3500}},
    {RLC_MACDownlink, "Packet_Downlink_Assignment", 110, 3, {1900, 3500}},
    {RLC_MACDownlink, "Packet_Timeslot_Reconfigure", 20, 0, {2500, 4000}},
    {RLC_MACUplink, "Packet_Control_Acknowledgement", 60, 2},
    {Packet_Control_Acknowledgement_8, "Packet_Control_Acknowledgement_8bit", 15, 0},
    {Packet_Control_Acknowledgement_11, "Packet_Control_Acknowledgement_11bit_a", 15, 0},
    {RLC_MACUplink, "Packet_Resource_Request", 15, 1, {1100, 3000}},
    {RLC_MACDownlink, "Packet_Power_Control_Timing_Advance", 15, 0},
    {RLC_MACDownlink, "Packet_Polling_Request", 12, 0},
    {RLC_MACDownlink, "Packet_TBF_Release", 10, 0},
    {RLC_MACDownlink, "Packet_Access_Reject", 4, 0, {400, 1200}},
    {RLC_MACDownlink, "Packet_Paging_Request", 8, 0, {400, 1500}},
    {RLC_MACDownlink, "Packet_Measurement_Order", 5, 0, {1200, 3500}},
    {RLC_MACUplink, "Packet_Measurement_Report", 12, 1},
    {RLC_MACUplink, "Packet_Cell_Change_Notification", 4, 0},
    {RLC_MACDownlink, "Packet_Neighbour_Cell_Data", 8, 0},
    {RLC_MACDownlink, "Packet_Cell_Change_Order", 6, 0, {500, 3000}},
    {RLC_MACDownlink, "Packet_Serving_Cell_Data", 3, 0},
    {RLC_MACDownlink, "PSI13", 4, 0, {600, 2500}},
    {RLC_MACDownlink, "Packet_Downlink_Dummy_Control_Block", 25, 0},
    {RLC_MACUplink, "Packet_Uplink_Dummy_Control_Block", 20, 0},
};

constexpr TrafficSet kSets[] = {
    {"eps traffic", kEps},
    {"l3 traffic", kL3},
    {"rr traffic", kRr},
    {"rlcmac traffic", kRlcMac},
};

}  // namespace

std::span<const TrafficSet> TrafficSets() {
    return kSets;
}

}  // namespace quorvane::benchmarks
