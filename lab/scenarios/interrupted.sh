# SPDX-License-Identifier: MIT
# shellcheck shell=sh disable=SC2154 # from library.sh
#
# The access point, wpa_supplicant or the program itself goes away while it is connecting.

# Starts connecting to Home2, which does not answer.
begin() {
    in_range Home2 Cafe
    radio_off 2
    printf 'home2-password\n' | corvane-wifi connect --password-stdin Home2 >/tmp/out 2>/tmp/err &
    program=$!
}
is_searching() { has_profile Home2 && state_is SCANNING; }
finish() {
    status=0
    wait "$program" 2>/dev/null || status=$?
    out=$(cat /tmp/out) err=$(cat /tmp/err)
    radio_on 2
}
works() { # AFTER
    in_range Cafe
    wifi connect --open Cafe
    says "after $1 the next command works" 0 "Connected to Cafe."
    wifi forget --yes Cafe
    check "and no socket is left" no_sockets_left
}
gone="Could not connect to wpa_supplicant: Connection refused|\
Could not connect to wpa_supplicant: No such file or directory|\
Could not send Wi-Fi command: Connection refused|\
Could not read Wi-Fi response: Connection reset by peer|\
Timed out waiting for wpa_supplicant.|Timed out connecting to Home2."
one_of() { # SENTENCES
    sentence=${err#corvane-wifi: }
    case "|$1|" in *"|$sentence|"*) [ "$status" -eq 1 ] && [ -z "$out" ] ;; *) return 1 ;; esac
}

begin
wait_for is_searching
radio_on 2
finish
says "an access point that comes back in time is connected to" 0 "Connected to Home2."
wifi forget --yes Home2

in_vain begin
finish
says "one that stays away is given up" 1 "" "corvane-wifi: Timed out connecting to Home2."
same "its profile is removed" "" "$(profiles)"
same "and the file has none" "$base" "$(cat "$conf")"
works "a lost access point"

begin
wait_for is_searching
kill_daemon KILL
finish
check "a killed wpa_supplicant is reported: $err" one_of "${gone%|Timed out connecting*}"
wifi status
says "so it is by the next command" 1 "" \
    "corvane-wifi: Could not connect to wpa_supplicant: Connection refused"
start
same "its successor knows no profile" "" "$(profiles)"
same "for the file has none" "$base" "$(cat "$conf")"
works "a killed wpa_supplicant"

CORVANE_WIFI_CONNECT_TIMEOUT_MS=20000 begin
wait_for is_searching
kill_daemon TERM
start
finish
check "a restarted wpa_supplicant is reported, or waited for in vain: $err" one_of "$gone"
same "no profile is left" "" "$(profiles)"
same "and the file has none" "$base" "$(cat "$conf")"
works "a restart"

begin
wait_for is_searching
kill -KILL "$program"
finish
same "the program can be killed" 137 "$status"
same "the file has no profile then" "$base" "$(cat "$conf")"
same "wpa_supplicant keeps the unfinished one" "0	Home2	any" "$(profiles | cut -f 1-3)"
in_range Home2
wifi connect Home2
says "which the next run takes for a saved one and connects" 0 "Connected to Home2."
wifi forget --yes Home2
says "and another forgets" 0 "Forgot Home2."
same "then nothing is left" "" "$(profiles)"
rm -f /tmp/corvane-wpa-* # a kill in the middle of a request leaves one
works "a killed run"
