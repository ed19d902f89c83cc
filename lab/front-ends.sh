# SPDX-License-Identifier: MIT
# shellcheck shell=sh disable=SC2154 # from library.sh

shows() { [ "$(tail -n 1 /tmp/bar | jq -r '.text + " " + .class')" = "$1" ]; }

export CORVANE_WPA_SOCKET=/run/wpa_supplicant/wlan0
dash /bin/status-bar >/tmp/bar &
bar=$!
check "the bar shows that there is no connection" wait_for shows "offline disconnected"
in_range Home2
CORVANE_PANEL_SSID=Home2 CORVANE_PANEL_PASSWORD=home2-password \
    panel_test --gtest_filter=WifiPanelOnRadios.Connects >/tmp/panel 2>&1 || cat /tmp/panel
check "the panel adds a network and connects to it" grep -q '  PASSED  . 1 test' /tmp/panel
check "it saves the network" grep -q 'ssid="Home2"' "$conf"
check "packets pass" wait_for reaches_access_point
check "the bar shows the network" wait_for shows "Home2 connected"
wifi disconnect
check "the bar shows that it was left" wait_for shows "offline disconnected"
check "nothing but changes" [ "$(uniq /tmp/bar | wc -l)" = "$(wc -l </tmp/bar)" ]
kill "$bar"
