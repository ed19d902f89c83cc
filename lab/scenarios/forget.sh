# SPDX-License-Identifier: MIT
# shellcheck shell=sh disable=SC2154 # from library.sh
#
# Disconnecting keeps a saved network; forgetting removes it from wpa_supplicant and the file.

is_offline() { ! state_is COMPLETED; }

in_range Home2 Mixed
join Mixed mixed-password
result "connect adds Mixed" 0 "Connected to Mixed."
join Home2 home2-password
result "connect adds Home2" 0 "Connected to Home2."
before=$(file_identity)
wifi disconnect
result "disconnect succeeds" 0 "Wi-Fi disconnected."
check "wpa_supplicant is disconnected" wait_for state_is DISCONNECTED
wifi connect Home2
result "connect needs no password for a saved network" 0 "Connected to Home2."
same "neither disconnect nor connect writes the file" "$before" "$(file_identity)"

wifi forget Home2
result "forget requires --yes" 1 "" "corvane-wifi: Forgetting writes the saved Wi-Fi file. Use: \
corvane-wifi forget --yes SSID"
same "forget without --yes does not write the file" "$before" "$(file_identity)"
check "forget without --yes keeps the connection" state_is COMPLETED
wifi forget --yes Home2
result "forget --yes succeeds" 0 "Forgot Home2."
check "forget --yes ends the connection" wait_for is_offline
same "forget --yes removes the profile from wpa_supplicant" Mixed "$(profiles | cut -f 2)"
same "forget --yes removes the profile from the file" '	ssid="Mixed"' "$(grep ssid= "$conf")"
wifi connect Home2
same "connect to the forgotten network fails without its password" 1 "$status"
wifi forget --yes Home2
same "forgetting the same network again fails" 1 "$status"
wifi forget --yes --json Mixed
result "forget --json forgets the last network" 0 '{"ok":true}'
same "the file is as at the beginning" "$empty_conf" "$(cat "$conf")"
