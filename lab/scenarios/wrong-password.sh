# SPDX-License-Identifier: MIT
#
# A failed connect leaves no profile, and the previous network can be reached again.

in_range Home2 Mixed
join Home2 home2-password
result "connect with the right password succeeds" 0 "Connected to Home2."
before=$(file_identity)

CORVANE_WIFI_CONNECT_TIMEOUT_MS=20000 join Mixed not-the-password
result "connect with a wrong password times out" 1 "" "corvane-wifi: Timed out connecting to Mixed."
check "the access point has refused the wrong password" grep -q reason=WRONG_KEY /run/wpa.log
same "a wrong password leaves no profile in wpa_supplicant" "0	Home2	any" \
    "$(profiles | cut -f 1-3)"
same "a wrong password does not write the file" "$before" "$(file_identity)"
check "a wrong password leaves no socket" no_sockets_left
wifi connect Home2
result "connect returns to the previous network" 0 "Connected to Home2."

with_short_timeout wifi connect --open Office
same "connect --open to a protected network times out" \
    "1 corvane-wifi: Timed out connecting to Office." "$status $err"
same "connect --open to it leaves no profile in wpa_supplicant" "0	Home2	any" \
    "$(profiles | cut -f 1-3)"
same "connect --open to it does not write the file" "$before" "$(file_identity)"
join Mixed mixed-password
result "connect with the right password succeeds after the failures" 0 "Connected to Mixed."
