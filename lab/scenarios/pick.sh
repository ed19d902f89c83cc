# SPDX-License-Identifier: MIT
#
# At a terminal, pick asks for a number and then for a password, which it does not show.

in_range Home2 Mixed Cafe
export CORVANE_WIFI_SCAN_DELAY_MS=300 # the last scan is good enough
# Another scenario checks the table and which number a network gets.
dialogue() {
    printf '%s\n' "$out" | tr -d '\r' | sed '/^[0-9]*\. /d; s/^\(Network number: .*\]\)[0-9]*$/\1N/'
}

typist "Network number: " "#Home2" "Wi-Fi password: " home2-password -- corvane-wifi pick
same "pick asks for a number and a hidden password, and connects" "0 Network number: [echo on]N
Wi-Fi password: [echo off]
Connected to Home2.
[echo on]" "$status $(dialogue)"
same "wpa_supplicant is connected to Home2" "COMPLETED Home2" "$(state) $(current ssid)"
check "the file has the profile" grep -q 'ssid="Home2"' "$conf"

before=$(file_identity)
typist "Network number: " "#Home2" -- corvane-wifi pick
same "picking the current network changes nothing" "0 Network number: [echo on]N
Already connected.
[echo on]" "$status $(dialogue)"
check "pick lists the current network first" sh -c 'grep -q "^1\. \* Home2  \[" /tmp/out'
typist "Network number: " "#Mixed" "Wi-Fi password: " "^C" -- corvane-wifi pick
same "Ctrl-C at the password prompt turns echo on again" "130 Network number: [echo on]N
Wi-Fi password: [echo off]
[echo on]" "$status $(dialogue | sed 's/\^C//; s/\(off\]\)\(\[\)/\1\n\2/')"
same "a pick that does not connect does not write the file" "$before" "$(file_identity)"

typist "Network number: " "#Cafe" -- corvane-wifi pick
same "pick asks for no password for an open network" "0 Network number: [echo on]N
Connected to Cafe.
[echo on]" "$status $(dialogue)"
before=$(file_identity)
typist "Network number: " "#Home2" -- corvane-wifi pick
same "pick asks for no password for a saved network" "0 Network number: [echo on]N
Connected to Home2.
[echo on]" "$status $(dialogue)"
same "picking a saved network does not write the file" "$before" "$(file_identity)"
