# SPDX-License-Identifier: MIT
# shellcheck shell=sh disable=SC2154 # from library.sh
#
# A wrong password leaves nothing, and the way back is open.

in_range Home2 Mixed
join Home2 home2-password
says "the right password connects" 0 "Connected to Home2."
before=$(identity)

CORVANE_WIFI_CONNECT_TIMEOUT_MS=20000 join Mixed not-the-password
says "a wrong one does not" 1 "" "corvane-wifi: Timed out connecting to Mixed."
check "for the access point has refused it" grep -q reason=WRONG_KEY /run/wpa.log
same "no profile is left in wpa_supplicant" "0	Home2	any" "$(profiles | cut -f 1-3)"
same "nor in the file, which is untouched" "$before" "$(identity)"
check "no socket is left" no_sockets_left
wifi connect Home2
says "the network before can be reached again" 0 "Connected to Home2."

join Mixed short
says "a password too short is refused" 1 "" \
    "corvane-wifi: A WPA password must contain 8 to 63 UTF-8 bytes."
in_vain wifi connect --open Office
same "an open profile for a protected network times out" \
    "1 corvane-wifi: Timed out connecting to Office." "$status $err"
wifi connect Nowhere
says "a name that is not there is not found" 1 "" \
    "corvane-wifi: Network was not found. Run corvane-wifi list first."
same "still no other profile is left" "0	Home2	any" "$(profiles | cut -f 1-3)"
same "and the file is untouched" "$before" "$(identity)"
join Mixed mixed-password
says "the right password works after all that" 0 "Connected to Mixed."
