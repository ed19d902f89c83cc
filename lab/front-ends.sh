# SPDX-License-Identifier: MIT
# shellcheck shell=sh disable=SC2154 # from library.sh
#
# The panel joins on simulated radios what the command line cannot, and goes back to what worked;
# the status bar shows each change.

bar_shows() { [ "$(tail -n 1 /tmp/bar | jq -r '.text + " " + .class')" = "$1" ]; }
panel() { # SSID PASSWORD [VARIABLE=VALUE...]
    ssid=$1 password=$2
    shift 2
    env LC_ALL=C.UTF-8 CORVANE_PANEL_SSID="$ssid" CORVANE_PANEL_PASSWORD="$password" "$@" \
        timeout 300 panel_test --gtest_filter=OnRadios.Joins >/tmp/panel 2>&1 || cat /tmp/panel
    grep -q '  PASSED  . 1 test' /tmp/panel
}
saves() { grep -q "$1" "$conf" && ! grep -q disabled "$conf"; }

ln -sf /proc/self/fd/0 /dev/stdin # as on any system
ln -sf /proc/self/fd/1 /dev/stdout
export CORVANE_WPA_SOCKET=/run/wpa_supplicant/wlan0
dash /bin/status-bar >/tmp/bar &
bar=$!
check "the bar shows that there is no connection" wait_for bar_shows "offline disconnected"
in_range Home2
check "the panel joins a WPA2 network" panel Home2 home2-password
check "the panel saves it, and disables none" saves 'ssid="Home2"'
check "the access point answers a ping" wait_for reaches_access_point
check "the bar shows Home2" wait_for bar_shows "Home2 connected"
check "the panel joins a WPA3 network" panel Modern modern-password
check "the panel saves it, and disables none" saves 'ssid="Modern"'
check "the panel joins a network whose name is not ASCII" panel Café cafe-password
check "the panel saves it, and disables none" saves 'ssid=436166c3a9'
check "the panel joins with a password that has quotes" panel Quote 'say "friend"'
check "the panel joins a hidden network" panel Attic attic-password CORVANE_PANEL_HIDDEN=yes
check "the panel saves it, and disables none" saves scan_ssid=1
radio_off 5 # the one of Attic
check "without its radio, wpa_supplicant returns to another network" wait_for state_is COMPLETED
check "the panel tells a wrong password" \
    panel Mixed wrong-password "CORVANE_PANEL_RESULT=Could not connect. Check the password."
check "and wpa_supplicant returns to a network that works" wait_for state_is COMPLETED
check "of the wrong one, nothing is saved" sh -c "! grep -q Mixed $conf"
radio_on 5
wifi disconnect
check "the bar shows the end of the connection" wait_for bar_shows "offline disconnected"
check "the bar prints only changes" [ "$(uniq /tmp/bar | wc -l)" = "$(wc -l </tmp/bar)" ]
kill "$bar"
