# SPDX-License-Identifier: MIT
# shellcheck shell=sh disable=SC2154 # from library.sh
#
# All that is in the air, in its order, as a table and as JSON.

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
# Networks of one level may come in any order.
by_name() { printf '%s\n' "$out" | sed 's/^[0-9]*\. //' | sort; }
levels() { printf '%s\n' "$out" | sed 's/.*, \(-[0-9]*\) dBm.*/\1/'; }
numbers() { printf '%s\n' "$out" | sed 's/\. .*//'; }

wifi list
same "list shows every name once, with its security and level" "$table" "$(by_name)"
same "the strongest come first" "$(levels | sort -nr)" "$(levels)"
same "the lines are numbered" "$(seq 1 13)" "$(numbers)"
same "nothing is said on standard error" "0 " "$status $err"

wifi list --cached
same "list --cached shows the same" "$table" "$(by_name)"
wait_for idle
same "and has started no scan, for another starts" OK "$(ask scan)"
same "during which none can be started" FAIL-BUSY "$(ask scan)"
wifi list
same "list during a scan shows them all" "$table" "$(by_name)"

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
same "list --json holds the same" "$json" \
    "$(printf '%s\n' "$out" | sed 's/^\[//; s/\]$//; s/},{/}\n{/g' | sort)"

radio_off 3
ask bss_flush 0 >/dev/null # else its last beacons count for half a minute
in_range Twins Home2 Antique
wifi list --cached
same "the name with two access points takes the other one's level" \
    "13.   Twins  [WPA personal, -75 dBm]" "$(printf '%s\n' "$out" | tail -n 1)"
radio_on 3

id=$(ask add_network)
ask set_network "$id" ssid '"Nowhere"' >/dev/null
join Home2 home2-password
wifi list
same "the current one comes first, then the saved" "1. * Home2  [WPA personal, -55 dBm, saved]
2.   Nowhere  [unsupported, saved, saved]" "$(printf '%s\n' "$out" | head -n 2)"
