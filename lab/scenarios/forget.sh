# SPDX-License-Identifier: MIT
# shellcheck shell=sh disable=SC2154 # from library.sh
#
# Disconnecting keeps a network, forgetting does not.

in_range Home2 Mixed
join Mixed mixed-password
says "one network is saved" 0 "Connected to Mixed."
join Home2 home2-password
says "and a second" 0 "Connected to Home2."
before=$(identity)
wifi disconnect
says "disconnect disconnects" 0 "Wi-Fi disconnected."
check "wpa_supplicant agrees" wait_for state_is DISCONNECTED
wifi connect Home2
says "connect needs no password again" 0 "Connected to Home2."
same "neither has written the file" "$before" "$(identity)"

wifi forget Home2
says "forget wants --yes" 1 "" "corvane-wifi: Forgetting writes the saved Wi-Fi file. Use: \
corvane-wifi forget --yes SSID"
same "and is harmless without" "$before" "$(identity)"
check "so the connection stays" state_is COMPLETED
wifi forget --yes Home2
says "forget --yes forgets" 0 "Forgot Home2."
off_line() { ! state_is COMPLETED; }
check "the connection is gone" wait_for off_line
same "and the profile, from wpa_supplicant" "Mixed" "$(profiles | cut -f 2)"
same "and from the file" '	ssid="Mixed"' "$(grep ssid= "$conf")"
wifi connect Home2
same "connect would need the password now" 1 "$status"
wifi forget --yes Home2
same "there is nothing more to forget" 1 "$status"
wifi forget --yes --json Mixed
says "the last one goes too" 0 '{"ok":true}'
same "the file is as in the beginning" "$base" "$(cat "$conf")"
