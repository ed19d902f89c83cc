// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

/// Wi-Fi through wpa_supplicant's control interface.
///
///     const cvn::wifi::Client client(QString{});
///     for (const cvn::wifi::Network& network : client.networks(true))
///         if (network.ssid == wanted && network.saved_id >= 0)
///             client.connect_saved(network.saved_id, network.ssid, 15000);
///
/// Every operation sends requests to wpa_supplicant one after another, waits up to 3000 ms for
/// each reply and returns plain values. Every failure is a std::runtime_error whose what() is a
/// complete English sentence in UTF-8, fit to be shown to the user. Nothing is logged or retried.
/// Calls block. A Client holds nothing but a path, so it may be copied, and used from several
/// threads at once. Only connect_new() and forget() make wpa_supplicant write its configuration.
///
/// Network names are text exactly as wpa_supplicant prints them: bytes other than printable ASCII
/// come as its escapes (`Caf\xc3\xa9`), and those are neither decoded nor made here.

#pragma once

#include <QByteArray>
#include <QString>

#include <stdexcept>
#include <vector>

namespace cvn::wifi {

enum class Security : int {
    Open = 0,        ///< No encryption: joined without a password.
    Personal = 1,    ///< WPA with a pre-shared key: joined with a password of 8 to 63 UTF-8 bytes.
    Unsupported = 2, ///< Enterprise, WEP, SAE-only and other networks: listed, never configured.
};

/// A network in range, a saved profile, or both merged under one name.
struct Network {
    QString ssid;
    QString bssid; ///< Hardware address of the strongest access point; empty when not in range.
    QString flags; ///< Capabilities as scanned, `[WPA2-PSK-CCMP][ESS]`; empty when not in range.
    int frequency = 0; ///< MHz; 0 when not in range.
    int signal = -100; ///< dBm; -100 when not in range.
    int saved_id = -1; ///< wpa_supplicant's id of the saved profile; negative when not saved.
    bool current = false;
    Security security = Security::Unsupported; ///< From `flags`; Unsupported when not in range.
};

/// The present connection; a field that wpa_supplicant did not report keeps its default.
struct Status {
    QString state;     ///< wpa_supplicant's word; "COMPLETED" once associated and authenticated.
    QString ssid;      ///< Name of the network in use.
    QString address;   ///< IP address of the interface.
    int saved_id = -1; ///< Id of the profile in use.
};

class Client {
public:
    /// Talks to the control socket at `socket_path`. An empty path stands for the value of
    /// CORVANE_WPA_SOCKET, or for /run/wpa_supplicant/wlan0 where that is not set.
    /// Opens and sends nothing, so a wrong path shows at the first operation.
    Client(QString socket_path);

    /// Sends one request line, without terminator, and returns the reply without the carriage
    /// returns and line feeds at its end. The reply may be empty, and may say "FAIL".
    ///
    /// `timeout_ms` goes to poll(2) unchanged: 0 does not wait, a negative value waits for ever.
    /// A reply is cut after 65536 bytes; wpa_supplicant's own stay below 4096.
    ///
    /// wpa_supplicant answers to the sender's address (unix(7)), so each call binds a fresh socket
    /// file, /tmp/corvane-wpa-PID-N, mode 0600, and removes it however the exchange ends.
    ///
    /// Throws when the request is empty or holds NUL, LF or CR, when the path has 108 bytes or
    /// more, when a system call fails (with the system's text for it), and on time-out.
    QByteArray command(const QByteArray& request, int timeout_ms) const;

    /// Sends STATUS. An error reply gives a default Status; only a failed exchange throws.
    Status status() const;

    /// Lists networks: the current one first, then the saved ones, then by falling signal.
    /// Saved profiles that are out of range are part of the list; hidden networks are not.
    ///
    /// With `scan`, sends SCAN first and sleeps CORVANE_WIFI_SCAN_DELAY_MS (1400 when unset,
    /// negative or no number); a scan under way, FAIL-BUSY, is as good as a new one. Without, asks
    /// for what the last scan found. Then sends SCAN_RESULTS, LIST_NETWORKS and STATUS.
    /// Throws when the scan is refused.
    std::vector<Network> networks(bool scan) const;

    /// Switches to the saved profile `id` and waits until `ssid` is connected. Writes nothing.
    ///
    /// Sends SELECT_NETWORK, which also disables the other profiles until they are enabled again,
    /// then STATUS every 400 ms. CORVANE_WIFI_CONNECT_TIMEOUT_MS replaces `timeout_ms` when it is
    /// 0 or more; a time below 1 ms means not to wait at all and to take success for granted.
    ///
    /// Throws when `id` is negative, the selection is refused, or the time is up; the selection
    /// then stays as it is.
    void connect_saved(int id, const QString& ssid, int timeout_ms) const;

    /// Adds a profile for `ssid`, connects to it as connect_saved() does, and saves it.
    ///
    /// Sends ADD_NETWORK, SET_NETWORK for name, key management and password, ENABLE_NETWORK and
    /// SELECT_NETWORK, waits, and only then SAVE_CONFIG, the one write. `password` is not looked
    /// at for an open network.
    ///
    /// Throws before anything is sent when the name is empty, the security is Unsupported, or the
    /// password of a Personal network has not 8 to 63 UTF-8 bytes. Throws on any refusal and when
    /// the time is up; the new profile is then removed again (REMOVE_NETWORK, its own failure is
    /// ignored) and the stored configuration is as before.
    void connect_new(const QString& ssid, Security security, const QString& password,
                     int timeout_ms) const;

    /// Sends DISCONNECT. Saved profiles stay as they are. Throws when it is refused.
    void disconnect() const;

    /// Removes the saved profile called `ssid` and saves the configuration.
    ///
    /// Sends LIST_NETWORKS, STATUS, REMOVE_NETWORK and SAVE_CONFIG. Of several profiles of that
    /// name it removes the one listed last; call again for the next.
    ///
    /// Throws when no profile has exactly that name, with nothing changed, and when the removal or
    /// the save is refused. After a refused save the profile is gone from the running
    /// wpa_supplicant and still stands in its file.
    void forget(const QString& ssid) const;

    /// Reads a reply to STATUS, lines of `name=value`. Never throws: what is no status listing
    /// gives a default Status.
    static Status parse_status(const QByteArray& text);

    /// Merges the replies to SCAN_RESULTS and LIST_NETWORKS, either of which may be empty, into
    /// the list that networks() returns. One record per name: the strongest access point, the
    /// profile listed last. Never throws: malformed lines are skipped.
    static std::vector<Network> parse_networks(const QByteArray& scan, const QByteArray& saved,
                                               const Status& status);

    /// "open", "WPA personal" or "unsupported".
    static QString security_name(Security value);

    /// The name as SET_NETWORK takes it unquoted: two lower-case hexadecimal digits per UTF-8 byte.
    static QByteArray encode_ssid(const QString& text);

    /// The password between double quotes, with a backslash before each `"` and `\`.
    /// Throws when it holds NUL, LF or CR; its length is not checked.
    static QByteArray encode_password(const QString& text);

private:
    QString socket_path_;

    static void require_ok(const QByteArray& reply, const char* operation);
    void wait_connected(const QString& ssid, int timeout_ms) const;
};

} // namespace cvn::wifi
