# SPDX-License-Identifier: MIT
#
# Connecting to an open network gives an address and traffic, and saves one profile.

in_range Cafe
wifi status
result "status shows no connection at first" 0 "State: INACTIVE
Network: 
Address: "
wifi connect --open Cafe
result "connect --open connects to Cafe" 0 "Connected to Cafe."
wait_for has_address
wifi status
result "status shows the state, the SSID and the address" 0 "State: COMPLETED
Network: Cafe
Address: $(current ip_address)"
check "the address is from the access point's network" \
    sh -c 'ip -4 addr show wlan0 | grep -q "inet 10\.66\.0\.[1-9]"'
check "the access point answers a ping" wait_for reaches_access_point
same "the access point lists this station" "Station 02:00:00:00:00:00" \
    "$(nsenter --net=/run/netns/air iw dev wlan1 station dump | grep -o "^Station [0-9:]*")"
same "the file has the profile once" "$empty_conf

network={
	ssid=\"Cafe\"
	key_mgmt=NONE$mesh
}" "$(cat "$conf")"
check "no socket is left" no_sockets_left
