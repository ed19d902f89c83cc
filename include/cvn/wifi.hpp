// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

/// Wi-Fi through wpa_supplicant's control interface.
///
///     const cvn::wifi::Client client(QString{});
///     for (const cvn::wifi::Network& network : client.networks(true))
///         if (network.ssid == wanted && network.saved_id >= 0)
///             client.connect_saved(network.saved_id, network.ssid, 15000);
///
/// Each operation sends one or more requests to wpa_supplicant, waits up to 3000 ms for each reply
/// and returns plain values. All calls block. Every failure throws a std::runtime_error; its what()
/// is an English message in UTF-8 that can be shown to the user. A system error's text in it is in
/// the language of the locale. Running out of memory throws a std::bad_alloc. Nothing is logged or
/// retried. A Client holds only a path: it can be copied, and several threads can use it at once.
/// Only connect_new() and forget() make wpa_supplicant write its configuration file.
///
/// Network names are exactly as wpa_supplicant prints them: double quotes, backslashes and bytes
/// other than printable ASCII appear as escapes (`Caf\xc3\xa9`). The library neither decodes nor
/// adds these escapes.

#pragma once

#include <QByteArray>
#include <QString>

#include <stdexcept>
#include <vector>

namespace cvn::wifi {

enum class Security : int {
    Open = 0,        ///< No encryption, no password.
    Personal = 1,    ///< WPA with a pre-shared key: a password of 8 to 63 UTF-8 bytes.
    Unsupported = 2, ///< Enterprise, WEP, SAE-only and others: listed, but cannot be added.
};

/// A network in range, a saved profile, or both merged under one name.
struct Network {
    QString ssid;
    QString bssid;     ///< Hardware address of the strongest access point; empty when not in range.
    QString flags;     ///< As in the scan results: `[WPA2-PSK-CCMP][ESS]`; empty when not in range.
    int frequency = 0; ///< MHz; 0 when not in range.
    int signal = -100; ///< dBm; -100 when not in range.
    int saved_id = -1; ///< wpa_supplicant's id of the saved profile; negative when not saved.
    bool current = false; ///< Whether this is the network in use. It may still be connecting.
    Security security = Security::Unsupported; ///< From `flags`; Unsupported when not in range.
};

/// The current connection. A field that wpa_supplicant does not report keeps its default.
struct Status {
    QString state;     ///< wpa_state: "COMPLETED" once associated and authenticated.
    QString ssid;      ///< Name of the network in use.
    QString address;   ///< IP address of the interface.
    int saved_id = -1; ///< Id of the profile in use.
};

class Client {
public:
    /// Uses the control socket at `socket_path`. If the path is empty, uses the value of
    /// CORVANE_WPA_SOCKET, or /run/wpa_supplicant/wlan0 if that is not set.
    /// Does not open the socket: with a wrong path, the first operation fails.
    Client(QString socket_path);

    /// Sends one request, without a line terminator, and returns the reply without trailing
    /// carriage returns and line feeds. The reply may be empty, or an error ("FAIL").
    ///
    /// `timeout_ms` is passed to poll(2) unchanged: 0 does not wait, a negative value waits
    /// forever. A signal handler of the caller that interrupts the wait ends it as a time-out.
    /// Sending blocks, without a time-out, while wpa_supplicant's receive queue is full (unix(7)).
    /// Replies are truncated to 65536 bytes; wpa_supplicant's are shorter than 4096.
    ///
    /// wpa_supplicant replies to the sender's address (unix(7)), so each call binds a new socket
    /// file, /tmp/corvane-wpa-PID-N with mode 0600, and removes it before it returns or throws.
    /// The file stays if the process is killed during the call or runs out of memory, which also
    /// leaves the socket's descriptor open.
    ///
    /// Throws if the request is empty or contains NUL, LF or CR, if the path is 108 bytes or
    /// longer, if a system call fails (the message ends with its error text), and on time-out.
    QByteArray command(const QByteArray& request, int timeout_ms) const;

    /// Sends STATUS. An error reply yields a default Status. Throws only as command() does.
    Status status() const;

    /// Returns the networks in range and the saved profiles, one record per name: the current
    /// network first, then the saved ones, then the others, each group with the strongest first.
    /// A network that sends an empty name is included only if it is saved; one that sends NUL bytes
    /// instead of its name appears as `\x00\x00...`.
    ///
    /// With `scan`, sends SCAN and sleeps for CORVANE_WIFI_SCAN_DELAY_MS milliseconds (1400 if
    /// unset or not an int of 0 or more). If a scan is already running (FAIL-BUSY), uses that one.
    /// Without `scan`, uses the results of the last one. Then sends SCAN_RESULTS, LIST_NETWORKS and
    /// STATUS. Right after wpa_supplicant starts, the list may still be empty.
    ///
    /// Throws if the scan is refused, and as command() does.
    std::vector<Network> networks(bool scan) const;

    /// Switches to the saved profile `id` and waits until `ssid` is connected. Writes nothing.
    ///
    /// Sends SELECT_NETWORK, then STATUS every 400 ms. CORVANE_WIFI_CONNECT_TIMEOUT_MS replaces
    /// `timeout_ms` if it is an int of 0 or more. With a time-out of 0 or less, does not wait and
    /// assumes success.
    ///
    /// Throws if `id` is negative, if the selection is refused, on time-out, and as command() does.
    /// After a time-out the profile stays selected. SELECT_NETWORK also disables all other profiles
    /// in the running wpa_supplicant, so it does not return to another network by itself.
    void connect_saved(int id, const QString& ssid, int timeout_ms) const;

    /// Adds a profile for `ssid`, connects to it as connect_saved() does, and saves it.
    ///
    /// Sends ADD_NETWORK, SET_NETWORK for the name, key management and password, ENABLE_NETWORK and
    /// SELECT_NETWORK, waits, and only then sends SAVE_CONFIG, which writes the configuration file
    /// once. `password` is ignored for an open network.
    ///
    /// Throws before anything is sent if the name is empty, the security is Unsupported, or the
    /// password of a Personal network is not 8 to 63 UTF-8 bytes long. Also throws if a request is
    /// refused, on time-out, as encode_password() does, and as command() does. The new profile is
    /// then removed again (REMOVE_NETWORK; if that fails too, its error is ignored), but the
    /// previous connection is not restored: the other profiles stay disabled in the running
    /// wpa_supplicant until one is selected. The configuration file is unchanged, unless
    /// wpa_supplicant took longer than 3000 ms to write it.
    /// If the process ends while it waits, the profile stays in the running wpa_supplicant.
    void connect_new(const QString& ssid, Security security, const QString& password,
                     int timeout_ms) const;

    /// Sends DISCONNECT. Does not change the saved profiles. Throws if the request is refused, and
    /// as command() does.
    void disconnect() const;

    /// Removes the saved profile named `ssid` and saves the configuration.
    ///
    /// Sends LIST_NETWORKS, STATUS, REMOVE_NETWORK and SAVE_CONFIG, which writes the configuration
    /// file once. If several profiles have this name, removes the one listed last. Call it again to
    /// remove the next.
    ///
    /// Throws if no profile has exactly this name (nothing is changed), if the removal or the save
    /// is refused, and as command() does. After a failed save the profile is gone from the running
    /// wpa_supplicant but may still be in its file.
    void forget(const QString& ssid) const;

    /// Parses a reply to STATUS: lines of `name=value`. Never throws; any other input yields a
    /// default Status.
    static Status parse_status(const QByteArray& text);

    /// Merges the replies to SCAN_RESULTS and LIST_NETWORKS, either of which may be empty, into
    /// the list that networks() returns. If several access points have one name, uses the
    /// strongest; if several profiles do, uses the one listed last. Never throws; skips malformed
    /// lines.
    static std::vector<Network> parse_networks(const QByteArray& scan, const QByteArray& saved,
                                               const Status& status);

    /// Returns "open", "WPA personal" or "unsupported".
    static QString security_name(Security value);

    /// Returns the name as an unquoted SET_NETWORK value: two lowercase hex digits per UTF-8 byte.
    static QByteArray encode_ssid(const QString& text);

    /// Returns the password in double quotes, with a backslash before each `"` and `\`.
    /// Throws if it contains NUL, LF or CR. Does not check its length.
    static QByteArray encode_password(const QString& text);

private:
    QString socket_path_;

    static void require_ok(const QByteArray& reply, const char* operation);
    void wait_connected(const QString& ssid, int timeout_ms) const;
};

} // namespace cvn::wifi
