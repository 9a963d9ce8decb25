# The message families, one entry each. Whatever knows families by name is made of this list: the
# tables that the library is built from, the names that the tool takes and shows, what tests and
# fuzz targets run over, the columns of the benchmarks.
#
# quorvane_family(<name> TITLE <text> [DESCRIPTIONS <file>...])
#
# Descriptions stand in src/families/<name>/, those with a folder in their names below src/families/
# ("common/elements.qd"). They are compiled in the order given: a type stands before its users. Source
# files in src/families/<name>/ and src/families/common/ are built too. A family without
# descriptions is known by name and title and has no messages yet.

quorvane_family(
    eps TITLE "EPS mobility and session management, TS 24.301"
    DESCRIPTIONS common/mobility.qd common/call.qd common/session.qd
                 eps.qd eps.csn1 esm.qd emm.qd sets.qd
                 common/core_network.csn1)
quorvane_family(epc TITLE "UE test mode, TS 36.509" DESCRIPTIONS epc.qd)
quorvane_family(
    l3 TITLE "core-network layer 3, TS 24.008"
    DESCRIPTIONS common/mobility.qd common/call.qd common/session.qd
                 l3.qd common.qd mm.qd bearer.qd cc_elements.qd cc.qd
                 gmm.qd sm.qd sets.qd l3.csn1 common/core_network.csn1)
quorvane_family(
    rr TITLE "GSM radio resource management, TS 44.018"
    DESCRIPTIONS common/mobility.qd
                 rr.qd channels.qd elements.qd structures.qd
                 dedicated.qd broadcast.qd uplink.qd short.qd sets.qd
                 gprs_elements.csn1 assignment.csn1 paging.csn1 system_information.csn1
                 neighbour_cells.csn1 measurement.csn1 packet_assignment.csn1 dedicated.csn1
                 group_calls.csn1 common/gprs.csn1 common/core_network.csn1)
quorvane_family(
    rlcmac TITLE "GPRS RLC/MAC control messages, TS 44.060"
    DESCRIPTIONS rlcmac.qd enumerations_assignment.qd enumerations_handover.qd
                 enumerations_broadcast.qd enumerations_neighbours.qd enumerations_control.qd
                 enumerations_uplink.qd downlink.qd uplink.qd sets.qd
                 elements.csn1 egprs_mode.csn1 assignment.csn1 multiple_assignment.csn1
                 reconfigure.csn1 release.csn1 handover.csn1 mbms.csn1 broadcast.csn1
                 neighbours.csn1 control.csn1 measurement_order.csn1 uplink.csn1 reports.csn1
                 short_access.csn1 unreached.csn1 common/gprs.csn1 common/core_network.csn1)
