# SPDX-License-Identifier: MIT
#
# Networks with a password connect and are saved, and switching between them writes nothing.

in_range Home2 Mixed "Corner Shop"
join Home2 home2-password
result "connect to a WPA2-PSK network succeeds" 0 "Connected to Home2."
same "Home2 uses the pre-shared key" WPA2-PSK "$(current key_mgmt)"
join Mixed mixed-password
result "connect to a WPA2-PSK+SAE network succeeds" 0 "Connected to Mixed."
same "Mixed uses the pre-shared key" WPA2-PSK "$(current key_mgmt)"
join "Corner Shop" corner-password
result "connect to an SSID with a space succeeds" 0 "Connected to Corner Shop."
check "Corner Shop is online" wait_for reaches_access_point
same "the file has each of the three profiles once" "	ssid=\"Home2\"
	psk=\"home2-password\"
	ssid=\"Mixed\"
	psk=\"mixed-password\"
	ssid=\"Corner Shop\"
	psk=\"corner-password\"" "$(grep '	ssid=\|	psk=' "$conf")"

before=$(file_identity)
for name in Home2 Mixed Home2 "Corner Shop"; do
    wifi connect "$name"
    result "connect switches to $name" 0 "Connected to $name."
    same "wpa_supplicant has switched to $name" "$name" "$(current ssid)"
done
wifi list
same "neither switching nor a scan writes the file" "$before" "$(file_identity)"
