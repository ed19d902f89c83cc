# shellcheck shell=sh
# SPDX-License-Identifier: MIT
#
# Turns radios 1 to 5 into access points with a DHCP server, in a network namespace of their own.
# lab/init reads it under busybox's shell, lab/debian/air-up under dash.

# In one namespace the kernel would hand packets between station and access point directly.
air=/run/netns/air
mkdir -p /run/netns
touch "$air"
unshare --net="$air" true
in_air() { nsenter --net="$air" "$@"; }
for n in 1 2 3 4 5; do iw phy "phy$n" set netns name air; done
in_air ip link add br0 type bridge
in_air ip addr add 10.66.0.1/24 dev br0
in_air ip link set br0 up

radio() { # NUMBER CHANNEL DBM: the networks that follow are on this radio
    number=$1 bss=0 mode=g power=20
    [ "$2" -le 14 ] || mode=a power=23
    # The power is added to it, and a negative number has to come in this form.
    printf %u $(($3 - power)) >"/sys/kernel/debug/ieee80211/phy$1/hwsim/rx_rssi"
    printf '%s\n' "interface=wlan$1" driver=nl80211 "hw_mode=$mode" "channel=$2" \
        ctrl_interface=/run/hostapd >"/run/radio$1.conf"
}
network() { # NAME [SETTING...]
    {
        [ "$bss" -eq 0 ] || echo "bss=wlan${number}_$bss"
        printf '%s\n' bridge=br0 "ssid=$1"
        shift
        [ $# -eq 0 ] || printf '%s\n' "$@"
    } >>"/run/radio$number.conf"
    bss=$((bss + 1))
}
rsn="wpa=2 rsn_pairwise=CCMP"
personal() { # NAME PASSWORD [SETTING...]
    name=$1 password=$2
    shift 2
    # shellcheck disable=SC2086 # settings hold no blanks
    network "$name" $rsn "wpa_passphrase=$password" "$@"
}

radio 1 1 -45
network Cafe
network ABCDEFGHIJKLMNOPQRSTUVWXYZ012345
personal "Corner Shop" corner-password
personal 'Bob "5G" C:\net' bobs-password
personal "Café" cafe-password
personal Quote 'say "friend"'
radio 2 6 -55
personal Home2 home2-password
personal Mixed mixed-password "wpa_key_mgmt=WPA-PSK SAE" ieee80211w=1
personal Modern modern-password wpa_key_mgmt=SAE ieee80211w=2
personal Both both-password wpa=3 wpa_pairwise=TKIP
# shellcheck disable=SC2086 # settings hold no blanks
network Office $rsn wpa_key_mgmt=WPA-EAP ieee8021x=1 eap_server=1 eap_user_file=/lab/eap-users
radio 3 3 -40
personal Twins twins-password
radio 4 44 -75
personal Twins twins-password
radio 5 11 -66
network Antique wep_default_key=0 'wep_key0="12345"'
personal Attic attic-password ignore_broadcast_ssid=1
in_air hostapd -B -f /run/hostapd.log /run/radio*.conf >/dev/null || cat /run/hostapd.log

cat >/run/udhcpd.conf <<END
start 10.66.0.10
end 10.66.0.90
interface br0
lease_file /run/udhcpd.leases
option subnet 255.255.255.0
option dns 10.66.0.1
END
touch /run/udhcpd.leases
in_air busybox udhcpd /run/udhcpd.conf 2>/dev/null
