# SPDX-License-Identifier: MIT
#
# The known limits are as the README and the manual page describe them. If a check fails because
# something now works, update them.

# The default wait is shorter than a scan.
unset CORVANE_WIFI_SCAN_DELAY_MS
wifi list
result "the first list after a start is empty" 0 ""
in_range Cafe Home2 "Caf\\xc3\\xa9" Quote
wifi list --cached
check "the second list is complete" [ "$(printf '%s\n' "$out" | wc -l)" -eq 13 ]
check "list does not show a hidden network" sh -c '! grep -q Attic /tmp/out'

# SSIDs are used as wpa_supplicant prints them.
join "Café" cafe-password
result "connect does not find an SSID with a letter outside ASCII" 1 "" \
    "corvane-wifi: Network was not found. Run corvane-wifi list first."
with_short_timeout join 'Caf\xc3\xa9' cafe-password
result "connect to that SSID as list prints it times out" 1 "" \
    'corvane-wifi: Timed out connecting to Caf\xc3\xa9.'
with_short_timeout join 'Bob \"5G\" C:\\net' bobs-password
result "connect to an SSID with quotes and backslashes times out" 1 "" \
    'corvane-wifi: Timed out connecting to Bob \"5G\" C:\\net.'
same "connecting to unusual SSIDs leaves no profile" "" "$(profiles)"
id=$(ask add_network)
ask set_network "$id" ssid 436166c3a9 >/dev/null
ask set_network "$id" psk '"cafe-password"' >/dev/null
ask save_config >/dev/null
wifi connect 'Caf\xc3\xa9'
result "connect takes a saved SSID as list prints it" 0 'Connected to Caf\xc3\xa9.'
wifi forget --yes 'Caf\xc3\xa9'
result "forget takes a saved SSID as list prints it" 0 'Forgot Caf\xc3\xa9.'
same "forget removes that profile from the file" "$empty_conf" "$(cat "$conf")"

# wpa_supplicant takes what stands between the quotes as it is, the added backslashes too.
with_short_timeout join Quote 'say "friend"'
result "connect with a password that contains quotes times out" 1 "" \
    "corvane-wifi: Timed out connecting to Quote."
same "connecting with such a password leaves no profile" "" "$(profiles)"

join Home2 home2-password
wifi connect --open Cafe
same "adding the second network disables the first in wpa_supplicant" "Home2 [DISABLED]
Cafe [CURRENT]" "$(profiles | cut -f 2,4 | tr '\t' ' ')"
same "adding the second network disables the first in the file" "$empty_conf

network={
	ssid=\"Home2\"
	psk=\"home2-password\"
	key_mgmt=WPA-PSK$mesh
	disabled=1
}

network={
	ssid=\"Cafe\"
	key_mgmt=NONE$mesh
}" "$(cat "$conf")"

with_short_timeout join Modern modern-password
result "connect to a WPA3-only network times out" 1 "" \
    "corvane-wifi: Timed out connecting to Modern."
