# SPDX-License-Identifier: MIT
# shellcheck shell=bash disable=SC2154 # from lab/run
#
# Read by lab/run: makes $lab/root, a Debian kernel and Qt, and $lab/$suite.cpio, the machine's
# files with the wpa_supplicant of that suite. A file gets its name when it is complete, so an
# interrupted run leaves nothing that the next one would use.

root=$lab/root daemons=$lab/$suite base=$lab/base

unpack_packages() {
    local kernel=linux-image-$arch development=() own
    [ "$arch" != armhf ] || kernel=linux-image-armmp-lpae
    $native || development=(-- qt6-base-dev qmake6)
    if [ ! -d "$root" ]; then
        echo "# fetching the machine's kernel and Qt"
        own=$(sed -n s/^VERSION_CODENAME=//p /etc/os-release)
        scripts/unpack "$own" "$arch" "$root" "$kernel" iw busybox-static python3-pexpect \
            wireless-regdb libqt6core6 "${development[@]}"
    fi
    if [ ! -d "$daemons" ]; then
        echo "# fetching wpa_supplicant and hostapd of $suite"
        scripts/unpack "$suite" "$arch" "$daemons" wpasupplicant hostapd
    fi
}

add_programs() {
    mkdir -p "$base"/{bin,lib,usr/lib}
    ln -s ../bin "$base/usr/bin"
    cp "$root"/bin/{busybox,python3} "$root/sbin/iw" "$base/bin/"
    cp -r "$root/lib/$triplet" "$base/lib/"
    cp -r "$root"/usr/lib/python3* "$base/usr/lib/"
    (cd "$root" && cp -P --parents lib*/ld-linux* "$base")
}

# With libraries of their own, since those of another release do not suit corvane-wifi.
add_daemons() {
    local name
    cp -r "$daemons/lib/$triplet" "$base/suite"
    for name in hostapd hostapd_cli wpa_cli wpa_supplicant; do
        cp "$daemons/sbin/$name" "$base/suite/"
        cat >"$base/bin/$name" <<END
#!/bin/sh
export OPENSSL_MODULES=/suite/ossl-modules
exec /suite/ld-linux* --library-path /suite /suite/$name "\$@"
END
        chmod +x "$base/bin/$name"
    done
}

add_modules() {
    local release file name
    release=$(basename "$root"/lib/modules/*)
    mkdir -p "$base"/lib/{firmware,modules} "$base/lab"
    # The 5 GHz channels are closed without it.
    for name in regulatory.db regulatory.db.p7s; do
        cp "$root/lib/firmware/$name-debian" "$base/lib/firmware/$name"
    done
    /sbin/depmod -b "$root" "$release"
    for name in ctr ccm gcm ghash-generic cmac af_packet bridge mac80211_hwsim; do
        /sbin/modprobe -d "$root" -S "$release" --show-depends "$name"
    done | sed -n 's/^insmod \(.*\.ko\).*/\1/p' | while read -r file; do
        name=/lib/modules/$(basename "$file")
        [ ! -e "$base$name" ] || continue
        cp "$file" "$base$name"
        echo "$name"
    done | sed 's/hwsim.ko$/& radios=6/' >"$base/lab/modules"
}

add_users() {
    mkdir -p "$base/etc"
    printf '%s\n' root:x:0:0::/root:/bin/sh lena:x:1000:1000::/:/bin/sh \
        otto:x:1001:1001::/:/bin/sh >"$base/etc/passwd"
    printf '%s\n' root:x:0: netdev:x:108:lena lena:x:1000: otto:x:1001: >"$base/etc/group"
    echo '* PWD' >"$base/lab/eap-users"
}

unpack_packages
rm -rf "$base"
add_programs
add_daemons
add_modules
add_users
(cd "$base" && find . | sort | cpio --quiet -o -H newc -R 0:0) >"$base.cpio"
mv "$base.cpio" "$lab/$suite.cpio"
