# SPDX-License-Identifier: MIT
# shellcheck shell=sh disable=SC2154 # from library.sh
#
# The touch panel connects on simulated radios, and the status bar shows each change.

bar_shows() { [ "$(tail -n 1 /tmp/bar | jq -r '.text + " " + .class')" = "$1" ]; }

export CORVANE_WPA_SOCKET=/run/wpa_supplicant/wlan0
dash /bin/status-bar >/tmp/bar &
bar=$!
check "the bar shows that there is no connection" wait_for bar_shows "offline disconnected"
in_range Home2
CORVANE_PANEL_SSID=Home2 CORVANE_PANEL_PASSWORD=home2-password timeout 300 \
    panel_test --gtest_filter=WifiPanelOnRadios.Connects >/tmp/panel 2>&1 || cat /tmp/panel
check "the panel adds Home2 and connects to it" grep -q '  PASSED  . 1 test' /tmp/panel
check "the panel saves Home2 in the file" grep -q 'ssid="Home2"' "$conf"
check "the access point answers a ping" wait_for reaches_access_point
check "the bar shows Home2" wait_for bar_shows "Home2 connected"
wifi disconnect
check "the bar shows the end of the connection" wait_for bar_shows "offline disconnected"
check "the bar prints only changes" [ "$(uniq /tmp/bar | wc -l)" = "$(wc -l </tmp/bar)" ]
kill "$bar"
