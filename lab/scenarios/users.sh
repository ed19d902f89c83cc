# SPDX-License-Identifier: MIT
# shellcheck shell=sh disable=SC2034,SC2154 # from library.sh
#
# Who may: the members of the socket's group.

in_range Home2 Cafe
as() { # USER COMMAND
    status=0
    su "$1" -c "$2" >/tmp/out 2>/tmp/err || status=$?
    out=$(cat /tmp/out) err=$(cat /tmp/err)
}
denied="corvane-wifi: Could not connect to wpa_supplicant: Permission denied"
for action in status list "list --cached" "connect --open Cafe" disconnect "forget --yes Cafe"; do
    as otto "corvane-wifi $action"
    says "$action is denied to one outside the group" 1 "" "$denied"
done
check "no socket is left" no_sockets_left

as lena "corvane-wifi list --cached"
check "a member of it sees the networks" grep -q "  Home2  \[WPA personal, -55 dBm\]" /tmp/out
as lena "printf 'home2-password\n' | corvane-wifi connect --password-stdin Home2"
says "connects" 0 "Connected to Home2."
check "has it saved" grep -q 'ssid="Home2"' "$conf"
as lena "corvane-wifi disconnect"
says "disconnects" 0 "Wi-Fi disconnected."
as lena "corvane-wifi forget --yes Home2"
says "forgets" 0 "Forgot Home2."
same "and is obeyed" "$base" "$(cat "$conf")"
check "no socket is left" no_sockets_left
CORVANE_WPA_SOCKET=/run/nothing wifi status
says "where no wpa_supplicant runs, nobody can" 1 "" \
    "corvane-wifi: Could not connect to wpa_supplicant: No such file or directory"
