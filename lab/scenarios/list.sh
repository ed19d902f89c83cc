# SPDX-License-Identifier: MIT
#
# list shows every network in range and every saved one, in order, as a table and as JSON.

in_range Cafe Twins Home2 Antique
networks='ABCDEFGHIJKLMNOPQRSTUVWXYZ012345|01:01|2412|-45|open
Antique|05:00|2462|-66|unsupported
Bob \"5G\" C:\\net|01:03|2412|-45|WPA personal
Both|02:03|2437|-55|WPA personal
Caf\xc3\xa9|01:04|2412|-45|WPA personal
Cafe|01:00|2412|-45|open
Corner Shop|01:02|2412|-45|WPA personal
Home2|02:00|2437|-55|WPA personal
Mixed|02:01|2437|-55|WPA personal
Modern|02:02|2437|-55|unsupported
Office|02:04|2437|-55|unsupported
Quote|01:05|2412|-45|WPA personal
Twins|03:00|2422|-40|WPA personal'
columns='\(.*\)|\(.*\)|\(.*\)|\(.*\)|\(.*\)'
table=$(printf '%s\n' "$networks" | sed "s/$columns/  \1  [\5, \4 dBm]/")
object='{"bssid":"02:00:00:00:\2","current":false,"frequency":\3,"saved":false,"saved_id":-1,'
object=$object'"security":"\5","signal":\4,"ssid":"\1","supported":true}'
json=$(printf '%s\n' "$networks" | sed "s/[\\\\\"]/\\\\&/g; s/$columns/$object/
    /unsupported/s/true}$/false}/" | sort)
# Networks with the same signal level may come in any order.
by_name() { printf '%s\n' "$out" | sed 's/^[0-9]*\. //' | sort; }
levels() { printf '%s\n' "$out" | sed 's/.*, \(-[0-9]*\) dBm.*/\1/'; }
numbers() { printf '%s\n' "$out" | sed 's/\. .*//'; }

wifi list
same "list shows every SSID once, with its security and level" "$table" "$(by_name)"
same "list shows the strongest networks first" "$(levels | sort -nr)" "$(levels)"
same "list numbers its lines" "$(seq 1 13)" "$(numbers)"
same "list prints no errors" "0 " "$status $err"

wifi list --cached
same "list --cached shows the same networks" "$table" "$(by_name)"
wait_for is_idle
same "list --cached has not started a scan, so one can start now" OK "$(ask scan)"
same "a second scan cannot start during the first" FAIL-BUSY "$(ask scan)"
wifi list
same "list shows all networks when a scan is already running" "$table" "$(by_name)"

wifi list --json --cached
same "list --json shows the same networks" "$json" \
    "$(printf '%s\n' "$out" | sed 's/^\[//; s/\]$//; s/},{/}\n{/g' | sort)"

radio_off 3
ask bss_flush 0 >/dev/null # else its last beacons count for half a minute
in_range Twins Home2 Antique
wifi list --cached
same "an SSID with two access points takes the level of the one left" \
    "13.   Twins  [WPA personal, -75 dBm]" "$(printf '%s\n' "$out" | tail -n 1)"
radio_on 3

id=$(ask add_network)
ask set_network "$id" ssid '"Nowhere"' >/dev/null
join Home2 home2-password
wifi list
same "list shows the current network first, then the saved one" \
    "1. * Home2  [WPA personal, -55 dBm, saved]
2.   Nowhere  [unsupported, saved, saved]" "$(printf '%s\n' "$out" | head -n 2)"
