# SPDX-License-Identifier: MIT
# shellcheck shell=sh disable=SC2154 # from library.sh
#
# At a terminal: the number, and the password that nobody sees.

in_range Home2 Modern Cafe
export CORVANE_WIFI_SCAN_DELAY_MS=300 # the last scan is good enough
# The table is the business of another scenario, and so is the number of a name.
said() { printf '%s\n' "$out" | sed '/^[0-9]*\. /d; s/^\(Network number: .*\]\)[0-9]*$/\1N/'; }

typist "Network number: " "#Home2" "Wi-Fi password: " home2-password -- corvane-wifi pick
same "pick asks for a number and a hidden password, and connects" "Network number: [echo on]N
Wi-Fi password: [echo off]
Connected to Home2.
[echo on]" "$(said)"
same "with exit status 0" 0 "$status"
same "wpa_supplicant is there" "COMPLETED Home2" \
    "$(state) $(ask status | sed -n 's/^ssid=//p')"
check "the profile is in the file" grep -q 'ssid="Home2"' "$conf"

before=$(identity)
typist "Network number: " "#Home2" -- corvane-wifi pick
same "the current one is no work" "0 Network number: [echo on]N
Already connected.
[echo on]" "$status $(said)"
check "and stands first" sh -c 'grep -q "^1\. \* Home2  \[" /tmp/out'
typist "Network number: " "#Modern" -- corvane-wifi pick
same "an unsupported one is refused" "1 Network number: [echo on]N
corvane-wifi: That network uses an unsupported security mode.
[echo on]" "$status $(said)"
typist "Network number: " 99 -- corvane-wifi pick
same "so is a number that is not there" "1 Network number: [echo on]N
corvane-wifi: Invalid network number.
[echo on]" "$status $(said)"
typist "Network number: " "#Mixed" "Wi-Fi password: " "^C" -- corvane-wifi pick
same "interrupted at the password, the echo is back" "130 Network number: [echo on]N
Wi-Fi password: [echo off]
[echo on]" "$status $(said | sed 's/\^C//; s/\(off\]\)\(\[\)/\1\n\2/')"
same "none of these has written the file" "$before" "$(identity)"

typist "Network number: " "#Cafe" -- corvane-wifi pick
same "an open one needs no password" "0 Network number: [echo on]N
Connected to Cafe.
[echo on]" "$status $(said)"
before=$(identity)
typist "Network number: " "#Home2" -- corvane-wifi pick
same "a saved one needs none either" "0 Network number: [echo on]N
Connected to Home2.
[echo on]" "$status $(said)"
same "and is not written again" "$before" "$(identity)"
