#!/bin/sh
# The NAS messages that S1AP carries in a capture, as lines for "quorvane batch":
#
#   examples/s1ap_to_batch.sh log.pcap | quorvane batch --tolerant
#
# tshark reads S1AP. A packet may have several procedures and messages; they are as many as each
# other but where one procedure brings several messages, which are all of its direction.

set -eu
tshark -r "$1" -Y s1ap.NAS_PDU -T fields -e s1ap.procedureCode -e s1ap.NAS_PDU -E separator=' ' |
    awk '{
        procedures = split($1, procedure, ",")
        messages = split($2, message, ",")
        for (i = 1; i <= messages; ++i) {
            code = procedure[i <= procedures ? i : procedures]
            # TS 36.413, 9.3.6: initialUEMessage, uplinkNASTransport, NASNonDeliveryIndication
            direction = code == 12 || code == 13 || code == 16 ? "Uplink" : "Downlink"
            gsub(":", "", message[i])
            print "EPS_MM" direction, length(message[i]) / 2, message[i]
        }
    }'
