# SPDX-License-Identifier: MIT
# shellcheck disable=SC3028 # busybox's shell has RANDOM
#
# After each of 200 random actions, while access points come and go, the file has exactly the
# networks that were added and not forgotten.

RANDOM=20240229 # the same actions in each run
choose() { # WORD...: leaves one of them in $one
    shift $((RANDOM % $#))
    one=$1
}
export CORVANE_WIFI_SCAN_DELAY_MS=300

# The file as wpa_supplicant writes it, with its lines joined.
profile='network=\{;	ssid="[^";]+";	(psk="[^";]+"|key_mgmt=NONE);(	[a-z_]+=[^;]+;)*\};'
well_formed="ctrl_interface=[^;]+;update_config=1;(;$profile)*"
file_is_right() {
    tr '\n' ';' <"$conf" | grep -qxE "$well_formed" \
        && [ "$(sed -n 's/^	ssid="\(.*\)"$/\1/p' "$conf" | sort)" = "$(sort /tmp/known)" ]
}

: >/tmp/known # the networks that were added and connected, and not forgotten since
random_action() {
    # shellcheck disable=SC2046 # names are words
    choose $(cat /tmp/known) Home2
    known=$one
    choose Cafe Home2 Home2 Mixed Twins Office Nowhere
    join="connect --password-stdin $one"
    choose list "list --cached --json" status disconnect "forget --yes $one" \
        "forget --yes $known" "connect $one" "connect --open $one" "$join" "$join"
    action=$one
    name=${action##* }
    password=$(echo "$name-password" | tr HMT hmt)
    [ $((RANDOM % 8)) -gt 0 ] || password=wrong-password
    echo "$password" >/tmp/password
    # shellcheck disable=SC2086 # an action is words
    wifi $action </tmp/password
    case $out in
    "Connected to "*)
        connected=$((connected + 1))
        grep -qx "$name" /tmp/known || echo "$name" >>/tmp/known
        ;;
    "Forgot "*)
        forgot=$((forgot + 1))
        sed -i "/^$name\$/d" /tmp/known
        ;;
    esac
    failed=$((failed + status))
}

in_range Cafe Home2 Twins
# What is in range connects in a second, and the rest shall fail soon.
export CORVANE_WIFI_CONNECT_TIMEOUT_MS=3000
connected=0 forgot=0 failed=0 done=0
while [ "$done" -lt 200 ]; do
    choose true true true true true true true radio_on radio_on radio_off
    $one $((RANDOM % 3 + 1))
    random_action
    done=$((done + 1))
    if ! { [ "$status" -le 1 ] && no_sockets_left && file_is_right; }; then
        verdict "not ok" "action $done ($action) exits with 0 or 1 and leaves a correct file"
        show "the last result of corvane-wifi" "$(last_result)"
        show "added and not forgotten" "$(sort /tmp/known)"
        show "the file" "$(cat "$conf")"
        show "the sockets that are left" "$(ls /tmp/corvane-wpa-* 2>/dev/null || true)"
        break
    fi
    [ $((done % 20)) -ne 0 ] || verdict ok "$done random actions leave a correct file and no socket"
done
echo "# $connected times connected, $forgot times forgotten, $failed times refused or timed out"
check "some of the actions succeed and some fail" \
    [ "$connected" -ge 5 -a "$forgot" -ge 2 -a "$failed" -ge 10 ]
same "wpa_supplicant reads the file again" OK "$(ask reconfigure)"
same "wpa_supplicant then has the networks that were added" \
    "$(sort /tmp/known)" "$(profiles | cut -f 2 | sort)"
