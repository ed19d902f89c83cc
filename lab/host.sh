# SPDX-License-Identifier: MIT
# shellcheck shell=bash disable=SC2034,SC2154 # the scripts share variables, too
#
# What lab/run and lab/debian/run share. It runs outside the machine.

fail() { # STATUS MESSAGE
    echo "$self: $2" >&2
    exit "$1"
}

lock_folder() {
    mkdir -p "$lab"
    exec 9>"$lab/lock"
    flock -w 7200 9 || fail 1 "waited two hours for another run that uses $lab"
}

# The clock of an emulated machine counts instructions and skips idle time: no check notices how
# slow the machine is, and waiting takes no time.
emulated=(-cpu max -accel tcg -icount 'shift=1,sleep=off' -rtc clock=vm)

machine() { # SECONDS OPTION...
    timeout --foreground "$1" "$qemu" "${processor[@]}" -m 1024 -nodefaults -display none "${@:2}"
}

# Prints the results and notes of the machine as they come, and keeps all its output in LOG.
watch() { # LOG
    stdbuf -oL tr -d '\r' | tee "$1" | grep -a --line-buffered '^ok\|^not ok\|^#' || true
    grep -qa '^machine done' "$1" && return
    echo "not ok - the machine ended early or took too long, see $1"
    tail -n 3 "$1" | sed 's/^/#   /'
}

count() {
    local line passed=0 failed=0
    while IFS= read -r line; do
        echo "$line"
        case $line in
        'ok - '*) passed=$((passed + 1)) ;;
        'not ok - '*) failed=$((failed + 1)) ;;
        esac
    done
    echo "$passed passed, $failed failed"
    [ "$passed" -gt 0 ] && [ "$failed" -eq 0 ]
}
