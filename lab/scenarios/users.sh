# SPDX-License-Identifier: MIT
#
# Only members of the socket's group can use corvane-wifi: lena is one, otto is not.

in_range Home2 Cafe
as() { run timeout 300 su "$1" -c "$2"; } # USER COMMAND
denied="corvane-wifi: Could not connect to wpa_supplicant: Permission denied"
for action in status list "list --cached" "connect --open Cafe" disconnect "forget --yes Cafe"; do
    as otto "corvane-wifi $action"
    result "otto's $action is denied" 1 "" "$denied"
done
check "otto's commands leave no socket" no_sockets_left

as lena "corvane-wifi list --cached"
check "lena's list shows Home2" grep -q "  Home2  \[WPA personal, -55 dBm\]" /tmp/out
as lena "printf 'home2-password\n' | corvane-wifi connect --password-stdin Home2"
result "lena's connect succeeds" 0 "Connected to Home2."
check "lena's connect saves the profile in the file" grep -q 'ssid="Home2"' "$conf"
as lena "corvane-wifi disconnect"
result "lena's disconnect succeeds" 0 "Wi-Fi disconnected."
as lena "corvane-wifi forget --yes Home2"
result "lena's forget succeeds" 0 "Forgot Home2."
same "lena's forget removes the profile from the file" "$empty_conf" "$(cat "$conf")"
check "lena's commands leave no socket" no_sockets_left
