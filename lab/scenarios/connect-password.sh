# SPDX-License-Identifier: MIT
# shellcheck shell=sh disable=SC2154 # from library.sh
#
# Two networks with a password, and changing between them, which writes nothing.

in_range Home2 Mixed "Corner Shop"
join Home2 home2-password
says "WPA2-PSK connects" 0 "Connected to Home2."
same "with the pre-shared key" WPA2-PSK "$(ask status | sed -n 's/^key_mgmt=//p')"
join Mixed mixed-password
says "WPA2-PSK+SAE connects" 0 "Connected to Mixed."
same "with the pre-shared key" WPA2-PSK "$(ask status | sed -n 's/^key_mgmt=//p')"
join "Corner Shop" corner-password
says "a name with a blank connects" 0 "Connected to Corner Shop."
check "and is soon online" wait_for reaches_access_point
same "the file holds each of them once" "	ssid=\"Home2\"
	psk=\"home2-password\"
	ssid=\"Mixed\"
	psk=\"mixed-password\"
	ssid=\"Corner Shop\"
	psk=\"corner-password\"" "$(grep '	ssid=\|	psk=' "$conf")"

before=$(identity)
for name in Home2 Mixed Home2 "Corner Shop"; do
    wifi connect "$name"
    says "switching to $name" 0 "Connected to $name."
    same "wpa_supplicant is there" "$name" "$(ask status | sed -n 's/^ssid=//p')"
done
wifi connect --json Home2
says "and with --json" 0 '{"ok":true}'
wifi list
same "neither that nor a scan has written the file" "$before" "$(identity)"
