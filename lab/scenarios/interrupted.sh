# SPDX-License-Identifier: MIT
#
# A lost access point, a stopped wpa_supplicant or a killed connect leaves nothing in the file.

connect_to_silent_home2() { # in the background
    in_range Home2 Cafe
    radio_off 2
    printf 'home2-password\n' \
        | timeout 300 corvane-wifi connect --password-stdin Home2 >/tmp/out 2>/tmp/err &
    program=$!
}
is_searching() { has_profile Home2 && state_is SCANNING; }
await_program() { # under its time limit
    status=0
    wait "$program" 2>/dev/null || status=$?
    out=$(cat /tmp/out) err=$(cat /tmp/err)
    radio_on 2
}
nothing_is_left() { # AFTER
    same "wpa_supplicant has no profile after $1" "" "$(profiles)"
    same "the file has no profile after $1" "$empty_conf" "$(cat "$conf")"
    in_range Cafe
    wifi connect --open Cafe
    result "connect works after $1" 0 "Connected to Cafe."
    wifi forget --yes Cafe
    check "no socket is left after $1" no_sockets_left
}
lost="Could not connect to wpa_supplicant: Connection refused|\
Could not connect to wpa_supplicant: No such file or directory|\
Could not send Wi-Fi command: Connection refused|\
Could not read Wi-Fi response: Connection reset by peer|\
Timed out waiting for wpa_supplicant."
failed_with() { # MESSAGE|MESSAGE...: one of them
    case "|$1|" in
    *"|${err#corvane-wifi: }|"*) [ "$status" -eq 1 ] && [ -z "$out" ] ;;
    *) return 1 ;;
    esac
}

connect_to_silent_home2
wait_for is_searching
radio_on 2
await_program
result "connect succeeds when the access point comes back in time" 0 "Connected to Home2."
wifi forget --yes Home2

with_short_timeout connect_to_silent_home2
await_program
result "connect times out when the access point stays away" 1 "" \
    "corvane-wifi: Timed out connecting to Home2."
nothing_is_left "a lost access point"

connect_to_silent_home2
wait_for is_searching
kill_supplicant KILL
await_program
check "connect reports a killed wpa_supplicant: $err" failed_with "$lost"
wifi status
result "status reports a killed wpa_supplicant" 1 "" \
    "corvane-wifi: Could not connect to wpa_supplicant: Connection refused"
start_supplicant
nothing_is_left "wpa_supplicant was killed"

CORVANE_WIFI_CONNECT_TIMEOUT_MS=20000 connect_to_silent_home2
wait_for is_searching
kill_supplicant TERM
start_supplicant
await_program
check "connect reports a restart of wpa_supplicant or times out: $err" \
    failed_with "$lost|Timed out connecting to Home2."
nothing_is_left "a restart of wpa_supplicant"

connect_to_silent_home2
wait_for is_searching
kill -KILL "$program"
await_program
same "SIGKILL ends connect" 137 "$status"
same "the file has no profile after connect was killed" "$empty_conf" "$(cat "$conf")"
same "wpa_supplicant keeps the profile of the killed connect" "0	Home2	any" \
    "$(profiles | cut -f 1-3)"
in_range Home2
wifi connect Home2
result "the next connect uses that profile like a saved one" 0 "Connected to Home2."
wifi forget --yes Home2
result "forget removes that profile" 0 "Forgot Home2."
rm -f /tmp/corvane-wpa-* # a kill in the middle of a request leaves one
nothing_is_left "connect was killed and its profile forgotten"
