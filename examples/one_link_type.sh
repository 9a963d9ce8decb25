#!/bin/sh
# The GSMTAP of a capture whose interfaces are of several link types, as a capture of one:
#
#   examples/one_link_type.sh log.pcapng | quorvane capture
#
# tshark reads all interfaces; text2pcap, of the same package, writes the UDP packets of GSMTAP with
# their times. Frames are counted anew.

set -eu
tshark -r "$1" -Y udp.port==4729 -T fields -e frame.time_epoch -e udp.payload |
    awk '{ gsub(/../, "& ", $2); print $1; print "0", $2 }' |
    text2pcap -q -t %s.%f -u 4729,4729 - -
