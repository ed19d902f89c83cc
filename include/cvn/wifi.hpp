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
/// and returns plain values. All calls block. Every failure is a std::runtime_error whose what() is
/// a complete English sentence in UTF-8 that can be shown to the user; running out of memory is a
/// std::bad_alloc. Nothing is logged or retried. A Client holds only a path: it can be copied, and
/// several threads can use it at once. Only connect_new() and forget() make wpa_supplicant write
/// its configuration file.
///
/// Network names are text exactly as wpa_supplicant prints them: bytes other than printable ASCII
/// appear as escapes (`Caf\xc3\xa9`). The library neither decodes nor adds these escapes.

#pragma once

#include <QByteArray>
#include <QString>

#include <stdexcept>
#include <vector>

namespace cvn::wifi {

enum class Security : int {
    Open = 0,        ///< No encryption, no password.
    Personal = 1,    ///< WPA with a pre-shared key: a password of 8 to 63 UTF-8 bytes.
    Unsupported = 2, ///< Enterprise, WEP, SAE-only and others: listed, but not configured.
};

/// A network in range, a saved profile, or both merged under one name.
struct Network {
    QString ssid;
    QString bssid; ///< Hardware address of the strongest access point; empty when not in range.
    QString flags; ///< Capabilities from the scan, `[WPA2-PSK-CCMP][ESS]`; empty when not in range.
    int frequency = 0;    ///< MHz; 0 when not in range.
    int signal = -100;    ///< dBm; -100 when not in range.
    int saved_id = -1;    ///< wpa_supplicant's id of the saved profile; negative when not saved.
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
    /// Uses the control socket at `socket_path`. With an empty path, uses the value of
    /// CORVANE_WPA_SOCKET, or /run/wpa_supplicant/wlan0 if that is not set.
    /// Opens and sends nothing: a wrong path shows at the first operation.
    Client(QString socket_path);

    /// Sends one request, without a line terminator, and returns the reply without the carriage
    /// returns and line feeds at its end. The reply may be empty, and may be an error ("FAIL").
    ///
    /// `timeout_ms` is passed to poll(2) as it is: 0 does not wait, a negative value waits without
    /// limit. Sending blocks, without a time-out, while wpa_supplicant's receive queue is full
    /// (unix(7)). A reply is cut after 65536 bytes; wpa_supplicant's own are shorter than 4096.
    ///
    /// wpa_supplicant replies to the sender's address (unix(7)), so each call binds a new socket
    /// file, /tmp/corvane-wpa-PID-N with mode 0600, and removes it before it returns or throws.
    /// The file stays if the process is killed during the call or runs out of memory.
    ///
    /// Throws if the request is empty or contains NUL, LF or CR, if the path is 108 bytes or
    /// longer, if a system call fails (the message ends with its error text) and on time-out.
    QByteArray command(const QByteArray& request, int timeout_ms) const;

    /// Sends STATUS. An error reply yields a default Status; throws only as command() does.
    Status status() const;

    /// Returns the networks in range and the saved profiles, one record per name: the current
    /// network first, then the saved ones, then the others, each group by falling signal.
    /// A network that hides its name is included only if it is saved.
    ///
    /// With `scan`, sends SCAN and sleeps for CORVANE_WIFI_SCAN_DELAY_MS milliseconds (1400 if
    /// unset, negative or not a number). A scan that is already running (FAIL-BUSY) will do.
    /// Without `scan`, uses the results of the last one. Then sends SCAN_RESULTS, LIST_NETWORKS and
    /// STATUS. Right after wpa_supplicant's start the list may still be empty.
    ///
    /// Throws if the scan is refused, and as command() does.
    std::vector<Network> networks(bool scan) const;

    /// Switches to the saved profile `id` and waits until `ssid` is connected. Writes nothing.
    ///
    /// Sends SELECT_NETWORK, then STATUS every 400 ms. CORVANE_WIFI_CONNECT_TIMEOUT_MS replaces
    /// `timeout_ms` if it is a number of 0 or more. A time-out below 1 ms means not to wait, and
    /// assumes success.
    ///
    /// Throws if `id` is negative, if the selection is refused, on time-out, and as command() does.
    /// The selection then stays. SELECT_NETWORK also disables all other profiles in the running
    /// wpa_supplicant, so it does not return to another network by itself.
    void connect_saved(int id, const QString& ssid, int timeout_ms) const;

    /// Adds a profile for `ssid`, connects to it as connect_saved() does, and saves it.
    ///
    /// Sends ADD_NETWORK, SET_NETWORK for name, key management and password, ENABLE_NETWORK and
    /// SELECT_NETWORK, waits, and only then sends SAVE_CONFIG, which writes the configuration file
    /// once. `password` is ignored for an open network.
    ///
    /// Throws before anything is sent if the name is empty, the security is Unsupported, or the
    /// password of a Personal network is not 8 to 63 UTF-8 bytes long. Throws on any refusal, on
    /// time-out, and as command() does. The new profile is then removed again (REMOVE_NETWORK,
    /// whose own failure is ignored), but the earlier connection is not restored: the other
    /// profiles stay disabled in the running wpa_supplicant until one is selected. The
    /// configuration file is unchanged, unless wpa_supplicant took longer than 3000 ms to write it.
    /// If the process ends while it waits, the profile stays in the running wpa_supplicant.
    void connect_new(const QString& ssid, Security security, const QString& password,
                     int timeout_ms) const;

    /// Sends DISCONNECT. Saved profiles are not changed. Throws if it is refused, and as command()
    /// does.
    void disconnect() const;

    /// Removes the saved profile named `ssid` and saves the configuration.
    ///
    /// Sends LIST_NETWORKS, STATUS, REMOVE_NETWORK and SAVE_CONFIG, which writes the configuration
    /// file once. If several profiles have this name, removes the one listed last; call again for
    /// the next.
    ///
    /// Throws if no profile has exactly this name (nothing is changed), if the removal or the save
    /// is refused, and as command() does. After a failed save the profile is gone from the running
    /// wpa_supplicant but may still be in its file.
    void forget(const QString& ssid) const;

    /// Parses a reply to STATUS: lines of `name=value`. Never throws; any other input yields a
    /// default Status.
    static Status parse_status(const QByteArray& text);

    /// Merges the replies to SCAN_RESULTS and LIST_NETWORKS, either of which may be empty, into
    /// the list that networks() returns. Of several access points with one name the strongest
    /// counts, of several profiles the one listed last. Never throws; malformed lines are skipped.
    static std::vector<Network> parse_networks(const QByteArray& scan, const QByteArray& saved,
                                               const Status& status);

    /// "open", "WPA personal" or "unsupported".
    static QString security_name(Security value);

    /// The name as an unquoted SET_NETWORK value: two lower-case hexadecimal digits per UTF-8 byte.
    static QByteArray encode_ssid(const QString& text);

    /// The password in double quotes, with a backslash before each `"` and `\`.
    /// Throws if it contains NUL, LF or CR. Its length is not checked.
    static QByteArray encode_password(const QString& text);

private:
    QString socket_path_;

    static void require_ok(const QByteArray& reply, const char* operation);
    void wait_connected(const QString& ssid, int timeout_ms) const;
};

} // namespace cvn::wifi
