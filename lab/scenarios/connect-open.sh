# SPDX-License-Identifier: MIT
# shellcheck shell=sh disable=SC2154 # from library.sh
#
# On line through an open network: an address, traffic, and one profile in the file.

in_range Cafe
wifi status
says "at first there is no connection" 0 "State: INACTIVE
Network: 
Address: "
wifi connect Cafe
says "connect wants to be told how" 1 "" "corvane-wifi: Use --password-stdin so the password does \
not enter shell history, or --open for an open network."
same "and leaves nothing behind" "$base" "$(cat "$conf")"

wifi connect --open Cafe
says "connect --open connects" 0 "Connected to Cafe."
wait_for has_address
wifi status
says "status has the state, the name and an address" 0 "State: COMPLETED
Network: Cafe
Address: $(ask status | sed -n 's/^ip_address=//p')"
check "which the access point's network gave out" \
    sh -c 'ip -4 addr show wlan0 | grep -q "inet 10\.66\.0\.[1-9]"'
wifi status --json
says "status --json has the same" 0 "{\"address\":\"$(ask status | sed -n 's/^ip_address=//p')\",\
\"saved_id\":0,\"ssid\":\"Cafe\",\"state\":\"COMPLETED\"}"
check "the access point answers a ping" wait_for reaches_access_point
station=02:00:00:00:00:00
same "and counts this station" "Station $station" \
    "$(nsenter -t "$(cat /run/air)" -n iw dev wlan1 station dump | grep -o "^Station [0-9:]*")"
same "the file holds the profile once" "$base

network={
	ssid=\"Cafe\"
	key_mgmt=NONE$mesh
}" "$(cat "$conf")"
check "no socket is left" no_sockets_left
