# SPDX-License-Identifier: MIT
# shellcheck shell=sh disable=SC2154 # from library.sh
#
# list shows every network in range and every saved one, in order, as a table and as JSON.

in_range Cafe Twins Home2 Antique
table='  ABCDEFGHIJKLMNOPQRSTUVWXYZ012345  [open, -45 dBm]
  Antique  [unsupported, -66 dBm]
  Bob \"5G\" C:\\net  [WPA personal, -45 dBm]
  Both  [WPA personal, -55 dBm]
  Caf\xc3\xa9  [WPA personal, -45 dBm]
  Cafe  [open, -45 dBm]
  Corner Shop  [WPA personal, -45 dBm]
  Home2  [WPA personal, -55 dBm]
  Mixed  [WPA personal, -55 dBm]
  Modern  [unsupported, -55 dBm]
  Office  [unsupported, -55 dBm]
  Quote  [WPA personal, -45 dBm]
  Twins  [WPA personal, -40 dBm]'
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
object() { # NAME BSSID FREQUENCY SIGNAL SECURITY SUPPORTED
    printf '{"bssid":"02:00:00:00:%s","current":false,"frequency":%s,"saved":false,' "$2" "$3"
    printf '"saved_id":-1,"security":"%s","signal":%s,"ssid":"%s","supported":%s}\n' \
        "$5" "$4" "$1" "$6"
}
json=$({
    object ABCDEFGHIJKLMNOPQRSTUVWXYZ012345 01:01 2412 -45 open true
    object Antique 05:00 2462 -66 unsupported false
    object 'Bob \\\"5G\\\" C:\\\\net' 01:03 2412 -45 'WPA personal' true
    object Both 02:03 2437 -55 'WPA personal' true
    object 'Caf\\xc3\\xa9' 01:04 2412 -45 'WPA personal' true
    object Cafe 01:00 2412 -45 open true
    object 'Corner Shop' 01:02 2412 -45 'WPA personal' true
    object Home2 02:00 2437 -55 'WPA personal' true
    object Mixed 02:01 2437 -55 'WPA personal' true
    object Modern 02:02 2437 -55 unsupported false
    object Office 02:04 2437 -55 unsupported false
    object Quote 01:05 2412 -45 'WPA personal' true
    object Twins 03:00 2422 -40 'WPA personal' true
} | sort)
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
