# SPDX-License-Identifier: MIT
#
# Disconnecting keeps a saved network; forgetting removes it from wpa_supplicant and the file.

is_offline() { ! state_is COMPLETED; }

in_range Home2 Mixed
join Mixed mixed-password
join Home2 home2-password
before=$(file_identity)
wifi disconnect
result "disconnect succeeds" 0 "Wi-Fi disconnected."
check "wpa_supplicant is disconnected" wait_for state_is DISCONNECTED
wifi connect Home2
result "connect needs no password for a saved network" 0 "Connected to Home2."
same "neither disconnect nor connect writes the file" "$before" "$(file_identity)"

wifi forget --yes Home2
result "forget --yes succeeds" 0 "Forgot Home2."
check "forget --yes ends the connection" wait_for is_offline
same "forget --yes removes the profile from wpa_supplicant" Mixed "$(profiles | cut -f 2)"
same "forget --yes removes the profile from the file" '	ssid="Mixed"' "$(grep ssid= "$conf")"
wifi forget --yes Mixed
result "forget forgets the last network" 0 "Forgot Mixed."
same "the file is as at the beginning" "$empty_conf" "$(cat "$conf")"
