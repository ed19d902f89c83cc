# SPDX-License-Identifier: MIT
# shellcheck shell=sh disable=SC2154 # from library.sh
#
# What does not work today. A check that fails here may well be good news: see what changed, and
# tell the users.

# The default wait is shorter than a scan.
unset CORVANE_WIFI_SCAN_DELAY_MS
wifi list
says "the first list after a start is empty" 0 ""
in_range Cafe Home2 "Caf\\xc3\\xa9" Quote
wifi list --cached
check "the next one is not" [ "$(printf '%s\n' "$out" | wc -l)" -eq 13 ]
check "a hidden network is never shown" sh -c '! grep -q Attic /tmp/out'

# Names are used as wpa_supplicant prints them.
join "Café" cafe-password
says "a name with other than ASCII letters is not found" 1 "" \
    "corvane-wifi: Network was not found. Run corvane-wifi list first."
in_vain join 'Caf\xc3\xa9' cafe-password
says "as printed it times out" 1 "" 'corvane-wifi: Timed out connecting to Caf\xc3\xa9.'
in_vain join 'Bob \"5G\" C:\\net' bobs-password
says "so does one with quotes and backslashes" 1 "" \
    'corvane-wifi: Timed out connecting to Bob \"5G\" C:\\net.'
same "and no profile is left" "" "$(profiles)"
id=$(ask add_network)
ask set_network "$id" ssid 436166c3a9 >/dev/null
ask set_network "$id" psk '"cafe-password"' >/dev/null
ask save_config >/dev/null
wifi connect 'Caf\xc3\xa9'
says "saved by other means it connects as printed" 0 'Connected to Caf\xc3\xa9.'
wifi forget --yes 'Caf\xc3\xa9'
says "and is forgotten as printed" 0 'Forgot Caf\xc3\xa9.'
same "leaving nothing" "$base" "$(cat "$conf")"

# wpa_supplicant takes what stands between the quotes as it is, the added backslashes too.
in_vain join Quote 'say "friend"'
says "a password with a quote does not match" 1 "" "corvane-wifi: Timed out connecting to Quote."
same "and no profile is left" "" "$(profiles)"

join Home2 home2-password
says "one network is saved" 0 "Connected to Home2."
wifi connect --open Cafe
says "and a second" 0 "Connected to Cafe."
same "wpa_supplicant has disabled the first" "Home2 [DISABLED]
Cafe [CURRENT]" "$(profiles | cut -f 2,4 | tr '\t' ' ')"
same "and stored that" "$base

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

in_vain join Modern modern-password
says "a WPA3-only network times out" 1 "" "corvane-wifi: Timed out connecting to Modern."
