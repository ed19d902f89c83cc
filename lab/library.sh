# SPDX-License-Identifier: MIT
#
# Functions for the scenarios, which run in the machine, under busybox's shell, and for debian/boot.
# shellcheck shell=sh disable=SC2034 # $out, $err and $status are for the scenarios

conf=/etc/wpa_supplicant.conf
empty_conf="ctrl_interface=DIR=/run/wpa_supplicant GROUP=netdev
update_config=1"
# Debian's wpa_supplicant writes this line into each profile since 2.10.
case $(wpa_supplicant -v) in
*" v2.9"*) mesh="" ;;
*) mesh="
	mesh_fwding=1" ;;
esac
# A scan takes about 2 s here, and 5 s while connected.
export CORVANE_WIFI_SCAN_DELAY_MS=2500
# A busy machine may need longer than the default for a connection.
export CORVANE_WIFI_CONNECT_TIMEOUT_MS=60000

run_scenario() { # NAME
    scenario=$1
    read -r began rest </proc/uptime
    (
        for n in 1 2 3 4 5; do radio_on "$n"; done
        start_afresh
        set -e
        # shellcheck source=/dev/null # each is checked by itself
        . "/lab/$scenario.sh"
    )
    status=$?
    [ "$status" -eq 0 ] || verdict "not ok" "the scenario ended early with status $status"
    read -r ended rest </proc/uptime
    echo "# $scenario took $((${ended%.*} - ${began%.*})) s"
}

# Checks: each prints one line, and what was expected when it does not hold.

verdict() { echo "$1 - ${scenario:+$scenario: }$2"; } # RESULT SENTENCE
check() { # SENTENCE COMMAND...: the command succeeds
    sentence=$1
    shift
    if "$@"; then
        verdict ok "$sentence"
    else
        verdict "not ok" "$sentence"
        show "this failed" "$*"
        show "the last result of corvane-wifi" "$(last_result)"
    fi
}
same() { # SENTENCE EXPECTED ACTUAL
    if [ "$2" = "$3" ]; then
        verdict ok "$1"
    else
        verdict "not ok" "$1"
        show expected "$2"
        show actual "$3"
    fi
}
show() { # WHAT TEXT
    printf '#   %s:\n' "$1"
    printf '%s\n' "$2" | sed 's/^/#     /'
}
last_result() { printf 'exit status %s\n%s\nerrors: %s\n' "${status-}" "${out-}" "${err-}"; }
result() { # SENTENCE STATUS OUTPUT [ERRORS]: all of the last result of corvane-wifi
    same "$1" "$(status=$2 out=$3 err=${4-} && last_result)" "$(last_result)"
}

# The program.

run() { # COMMAND...: leaves $out, $err and $status
    status=0
    "$@" >/tmp/out 2>/tmp/err || status=$?
    out=$(cat /tmp/out) err=$(cat /tmp/err)
}
wifi() { run timeout 300 corvane-wifi "$@"; }
join() { # SSID PASSWORD
    printf '%s\n' "$2" >/tmp/password
    wifi connect --password-stdin "$1" </tmp/password
}
with_short_timeout() { # COMMAND...: one that can only time out
    CORVANE_WIFI_CONNECT_TIMEOUT_MS=5000 "$@"
}
typist() { # TEXT KEYS... -- COMMAND
    run /lab/typist "$@"
    [ -z "$err" ] || show "the typist's errors" "$err"
}
no_sockets_left() {
    set -- /tmp/corvane-wpa-*
    [ ! -e "$1" ]
}

# wpa_supplicant.

ask() { wpa_cli -i wlan0 "$@" 2>/dev/null; }
profiles() { ask list_networks | sed 1d; }
state() { current wpa_state; }
current() { ask status | sed -n "s/^$1=//p"; } # FIELD
file_identity() { stat -c '%i %s %y' "$conf" && sha256sum "$conf"; }
within_a_minute() { # COMMAND...: it succeeds
    read -r now rest </proc/uptime
    end=$((${now%.*} + 60))
    until "$@"; do
        usleep 200000
        read -r now rest </proc/uptime
        [ "${now%.*}" -lt "$end" ] || return 1
    done
}
wait_for() { # COMMAND...
    within_a_minute "$@" && return
    echo "# waited a minute for: $*"
    return 1
}
is_answering() { [ "$(ask ping)" = PONG ]; }
reaches_access_point() { ping -c 1 -W 1 10.66.0.1 >/dev/null; }
has_address() { [ -n "$(current ip_address)" ]; }
state_is() { [ "$(state)" = "$1" ]; }
has_profile() { profiles | grep -q "	$1	"; }
start_supplicant() {
    wpa_supplicant -B -Dnl80211 -iwlan0 -c "$conf" -P /run/wpa.pid -f /run/wpa.log >/dev/null
    if ! wait_for is_answering; then
        verdict "not ok" "wpa_supplicant answers"
        show "the end of its log" "$(tail -n 5 /run/wpa.log)"
    fi
    # A tablet has a DHCP client that follows the link.
    wpa_cli -i wlan0 -a /lab/online -P /run/online.pid -B
}
kill_supplicant() { # SIGNAL
    kill "$(cat /run/online.pid)" 2>/dev/null
    pid=$(cat /run/wpa.pid)
    kill "-$1" "$pid"
    wait_for has_ended "$pid"
}
has_ended() { [ ! -e "/proc/$1" ]; }
start_afresh() { # with no saved network
    [ ! -e /run/wpa.pid ] || kill_supplicant TERM
    printf '%s\n' "$empty_conf" >"$conf"
    ip addr flush dev wlan0
    start_supplicant
}
scan_finds() { # SSID...: asks as long as one is missing
    ask scan >/dev/null
    results=$(ask scan_results)
    for name; do
        case $results in *"]	$name"*) ;; *) return 1 ;; esac
    done
}
is_idle() { ! state_is SCANNING; }
in_range() { # SSID...
    wait_for scan_finds "$@" || true
    wait_for is_idle || true
}

# The air: only radios of one group hear each other.

set_group() { echo "$2" >"/sys/kernel/debug/ieee80211/phy$1/hwsim/group"; }
radio_off() { set_group "$1" 2; }
radio_on() { set_group "$1" 1; }
