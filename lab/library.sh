# SPDX-License-Identifier: MIT
#
# What the scenarios are written in. They run in the machine, under busybox's shell.
# shellcheck shell=sh disable=SC2034 # $out, $err and $status are for the scenarios

conf=/etc/wpa_supplicant.conf
base="ctrl_interface=DIR=/run/wpa_supplicant GROUP=netdev
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

# Checks: each prints one line, and what was expected when it does not hold.

check() { # TEXT COMMAND...: the command succeeds
    text=$1
    shift
    if "$@"; then
        echo "ok - $text"
    else
        echo "not ok - $text"
        show "this failed" "$*"
    fi
}
same() { # TEXT EXPECTED ACTUAL
    if [ "$2" = "$3" ]; then
        echo "ok - $1"
    else
        echo "not ok - $1"
        show expected "$2"
        show actual "$3"
    fi
}
show() { # WHAT TEXT
    printf '#   %s:\n' "$1"
    printf '%s\n' "$2" | sed 's/^/#     /'
}
says() { # TEXT STATUS OUTPUT [ERROR]: the whole of what the last run of wifi said
    same "$1" "exit status $2
$3
errors: ${4-}" "exit status $status
$out
errors: $err"
}

# The program.

wifi() { # ARGUMENT...: leaves $out, $err and $status
    status=0
    corvane-wifi "$@" >/tmp/out 2>/tmp/err || status=$?
    out=$(cat /tmp/out) err=$(cat /tmp/err)
}
join() { # NAME PASSWORD
    printf '%s\n' "$2" >/tmp/password
    wifi connect --password-stdin "$1" </tmp/password
}
in_vain() { # COMMAND...: one that can only time out
    CORVANE_WIFI_CONNECT_TIMEOUT_MS=5000 "$@"
}
typist() { # TEXT KEYS... -- COMMAND: leaves $out and $status
    status=0
    /lab/typist "$@" >/tmp/out || status=$?
    out=$(cat /tmp/out)
}
no_sockets_left() {
    set -- /tmp/corvane-wpa-*
    [ ! -e "$1" ]
}

# wpa_supplicant.

ask() { wpa_cli -i wlan0 "$@" 2>/dev/null; }
profiles() { ask list_networks | sed 1d; }
state() { ask status | sed -n 's/^wpa_state=//p'; }
identity() { stat -c '%i %s %y' "$conf" && sha256sum "$conf"; }
wait_for() { # COMMAND...: until it succeeds, or for a minute
    read -r now rest </proc/uptime
    end=$((${now%.*} + 60))
    until "$@"; do
        usleep 200000
        read -r now rest </proc/uptime
        [ "${now%.*}" -lt "$end" ] || return 1
    done
}
answers() { [ "$(ask ping)" = PONG ]; }
reaches_access_point() { ping -c 1 -W 1 10.66.0.1 >/dev/null; }
has_address() { ask status | grep -q ^ip_address=; }
state_is() { [ "$(state)" = "$1" ]; }
has_profile() { profiles | grep -q "	$1	"; }
start() {
    wpa_supplicant -B -Dnl80211 -iwlan0 -c "$conf" -P /run/wpa.pid -f /run/wpa.log >/dev/null
    if ! wait_for answers; then
        echo "not ok - wpa_supplicant answers"
        show "the end of its log" "$(tail -n 5 /run/wpa.log)"
    fi
    # A tablet has a DHCP client that follows the link.
    wpa_cli -i wlan0 -a /lab/online -P /run/online.pid -B
}
kill_daemon() { # SIGNAL
    kill "$(cat /run/online.pid)" 2>/dev/null
    pid=$(cat /run/wpa.pid)
    kill "-$1" "$pid"
    wait_for ended "$pid"
}
ended() { [ ! -e "/proc/$1" ]; }
fresh() { # starts anew with an empty list of networks
    [ ! -e /run/wpa.pid ] || kill_daemon TERM
    printf '%s\n' "$base" >"$conf"
    ip addr flush dev wlan0
    start
}
scanned() { # NAME...: asks as long as one is missing
    ask scan >/dev/null
    results=$(ask scan_results)
    for name; do
        case $results in *"]	$name"*) ;; *) return 1 ;; esac
    done
}
idle() { ! state_is SCANNING; }
in_range() {
    wait_for scanned "$@" || echo "# not in range: $*"
    wait_for idle || true
}

# The air: only radios of one group hear each other.

audible() { echo "$2" >"/sys/kernel/debug/ieee80211/phy$1/hwsim/group"; }
radio_off() { audible "$1" 2; }
radio_on() { audible "$1" 1; }
