// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

#include "cvn/wifi.hpp"

#include <QElapsedTimer>
#include <QFile>
#include <QThread>

#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <utility>

namespace cvn::wifi {

using namespace Qt::StringLiterals;

namespace {

constexpr int reply_timeout_ms = 3000;

std::runtime_error failure(const QString& message)
{
    return std::runtime_error(message.toStdString());
}

QString system_error()
{
    return QString::fromLocal8Bit(std::strerror(errno));
}

int environment_milliseconds(const char* name, int fallback)
{
    bool ok = false;
    const int value = qEnvironmentVariableIntValue(name, &ok);
    return ok && value >= 0 ? value : fallback;
}

bool has_nul_or_line_end(const QByteArray& bytes)
{
    return bytes.contains('\0') || bytes.contains('\n') || bytes.contains('\r');
}

/// A file-system address and its length. The path must fit into sun_path with its NUL.
std::pair<sockaddr_un, socklen_t> unix_address(const QByteArray& path)
{
    const size_t size_with_nul = static_cast<size_t>(path.size()) + 1;
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.constData(), size_with_nul);
    return {address, static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + size_with_nul)};
}

/// Removes and returns the part of `text` before the next `separator`, or all of it.
QByteArrayView take(QByteArrayView& text, char separator)
{
    const qsizetype found = text.indexOf(separator);
    const QByteArrayView piece = text.first(found < 0 ? text.size() : found);
    text = text.sliced(found < 0 ? text.size() : found + 1);
    return piece;
}

QByteArrayView field(QByteArrayView line, int index)
{
    for (; index > 0; --index)
        take(line, '\t');
    return take(line, '\t');
}

Security classify(const QString& flags)
{
    const auto mention = [&flags](QLatin1String word) {
        return flags.contains(word, Qt::CaseInsensitive);
    };
    if (mention("EAP"_L1) || mention("WEP"_L1))
        return Security::Unsupported;
    // Before SAE: a network that offers both can be joined with its pre-shared key.
    if (mention("PSK"_L1))
        return Security::Personal;
    if (mention("SAE"_L1) || mention("WPA"_L1) || mention("RSN"_L1))
        return Security::Unsupported;
    return Security::Open;
}

void add_scanned(std::vector<Network>& networks, QByteArrayView line)
{
    if (line.startsWith("bssid"))
        return;
    bool frequency_ok = false;
    bool signal_ok = false;
    Network seen;
    seen.bssid = QString::fromUtf8(field(line, 0));
    seen.frequency = field(line, 1).toInt(&frequency_ok);
    seen.signal = field(line, 2).toInt(&signal_ok);
    seen.flags = QString::fromUtf8(field(line, 3));
    seen.ssid = QString::fromUtf8(field(line, 4));
    if (seen.ssid.isEmpty() || !frequency_ok || !signal_ok)
        return;
    seen.security = classify(seen.flags);

    const auto known = std::ranges::find(networks, seen.ssid, &Network::ssid);
    if (known == networks.end())
        networks.push_back(std::move(seen));
    else if (seen.signal > known->signal)
        *known = std::move(seen);
}

void add_saved(std::vector<Network>& networks, QByteArrayView line, const Status& status)
{
    bool id_ok = false;
    const int id = field(line, 0).toInt(&id_ok);
    const QString ssid = QString::fromUtf8(field(line, 1));
    if (!id_ok || ssid.isEmpty())
        return;

    auto known = std::ranges::find(networks, ssid, &Network::ssid);
    if (known == networks.end()) {
        Network unseen;
        unseen.ssid = ssid;
        known = networks.insert(networks.end(), std::move(unseen));
    }
    known->saved_id = id;
    known->current = id == status.saved_id
        || (!status.ssid.isEmpty() && status.ssid == ssid && status.state == "COMPLETED"_L1);
}

bool comes_before(const Network& left, const Network& right)
{
    if (left.current != right.current)
        return left.current;
    if ((left.saved_id >= 0) != (right.saved_id >= 0))
        return left.saved_id >= 0;
    return left.signal > right.signal;
}

QByteArray quote_secret(const QString& text)
{
    const QByteArray bytes = text.toUtf8();
    if (has_nul_or_line_end(bytes))
        throw failure(u"Wi-Fi passwords cannot contain NUL or newline characters."_s);
    QByteArray quoted = "\"";
    for (const char c : bytes) {
        if (c == '\\' || c == '"')
            quoted += '\\';
        quoted += c;
    }
    return quoted + '"';
}

} // namespace

Client::Client(QString socket_path)
    : socket_path_(std::move(socket_path))
{
    if (socket_path_.isEmpty())
        socket_path_ = qEnvironmentVariable("CORVANE_WPA_SOCKET", u"/run/wpa_supplicant/wlan0"_s);
}

QByteArray Client::command(const QByteArray& request, int timeout_ms) const
{
    if (request.isEmpty() || has_nul_or_line_end(request))
        throw failure(u"Invalid wpa_supplicant control command."_s);
    const QByteArray server = QFile::encodeName(socket_path_);
    if (static_cast<size_t>(server.size()) >= sizeof(sockaddr_un::sun_path))
        throw failure(u"Wi-Fi control socket path is too long."_s);
    const int descriptor = socket(AF_UNIX, SOCK_DGRAM, 0);
    if (descriptor < 0)
        throw failure(u"Could not open Wi-Fi control socket: %1"_s.arg(system_error()));

    static std::atomic<unsigned int> serial{0};
    const QByteArray local = "/tmp/corvane-wpa-" + QByteArray::number(getpid()) + '-'
        + QByteArray::number(serial.fetch_add(1));
    const auto cleanup = [&] {
        close(descriptor);
        unlink(local.constData());
    };
    const auto clean_failure = [&](const QString& prefix) {
        const QString message = prefix + system_error(); // close() and unlink() may change errno
        cleanup();
        return failure(message);
    };

    unlink(local.constData());             // left by an earlier process with the same id
    fchmod(descriptor, S_IRUSR | S_IWUSR); // on Linux bind() takes the file's mode from here
    const auto [own, own_length] = unix_address(local);
    if (bind(descriptor, reinterpret_cast<const sockaddr*>(&own), own_length) != 0)
        throw clean_failure(u"Could not bind temporary Wi-Fi control socket: "_s);
    if (chmod(local.constData(), S_IRUSR | S_IWUSR) != 0) // no other user may send replies
        throw clean_failure(u"Could not protect temporary Wi-Fi control socket: "_s);
    const auto [peer, peer_length] = unix_address(server);
    errno = ECONNREFUSED; // an empty path is an abstract address, which any user can bind (unix(7))
    if (server.isEmpty()
        || ::connect(descriptor, reinterpret_cast<const sockaddr*>(&peer), peer_length) != 0)
        throw clean_failure(u"Could not connect to wpa_supplicant: "_s);
    if (send(descriptor, request.constData(), static_cast<size_t>(request.size()), 0)
        != request.size())
        throw clean_failure(u"Could not send Wi-Fi command: "_s);

    pollfd waiting{descriptor, POLLIN, 0};
    if (poll(&waiting, 1, timeout_ms) <= 0) {
        cleanup();
        throw failure(u"Timed out waiting for wpa_supplicant."_s);
    }
    QByteArray reply(65536, Qt::Uninitialized);
    const ssize_t received = recv(descriptor, reply.data(), static_cast<size_t>(reply.size()), 0);
    if (received < 0)
        throw clean_failure(u"Could not read Wi-Fi response: "_s);
    cleanup();

    reply.truncate(received);
    while (reply.endsWith('\n') || reply.endsWith('\r'))
        reply.chop(1);
    return reply;
}

Status Client::status() const
{
    return parse_status(command("STATUS", reply_timeout_ms));
}

std::vector<Network> Client::networks(bool scan) const
{
    if (scan) {
        const QByteArray reply = command("SCAN", reply_timeout_ms);
        if (!reply.startsWith("FAIL-BUSY"))
            require_ok(reply, "start Wi-Fi scan");
        const int delay_ms = environment_milliseconds("CORVANE_WIFI_SCAN_DELAY_MS", 1400);
        QThread::msleep(static_cast<unsigned long>(delay_ms));
    }
    const QByteArray scanned = command("SCAN_RESULTS", reply_timeout_ms);
    const QByteArray saved = command("LIST_NETWORKS", reply_timeout_ms);
    return parse_networks(scanned, saved, status());
}

void Client::connect_saved(int id, const QString& ssid, int timeout_ms) const
{
    if (id < 0)
        throw failure(u"The selected network is not saved."_s);
    require_ok(command("SELECT_NETWORK " + QByteArray::number(id), reply_timeout_ms),
               "select saved Wi-Fi network");
    wait_connected(ssid, environment_milliseconds("CORVANE_WIFI_CONNECT_TIMEOUT_MS", timeout_ms));
}

void Client::connect_new(const QString& ssid, Security security, const QString& password,
                         int timeout_ms) const
{
    if (ssid.isEmpty())
        throw failure(u"The network name cannot be empty."_s);
    if (security == Security::Unsupported)
        throw failure(u"Corvane does not configure enterprise, WEP, or SAE-only networks yet."_s);
    const QByteArray password_bytes = password.toUtf8();
    if (security == Security::Personal && (password_bytes.size() < 8 || password_bytes.size() > 63))
        throw failure(u"A WPA password must contain 8 to 63 UTF-8 bytes."_s);

    bool id_ok = false;
    const int id = command("ADD_NETWORK", reply_timeout_ms).toInt(&id_ok);
    if (!id_ok || id < 0)
        throw failure(u"wpa_supplicant did not create a network profile."_s);

    const auto confirm = [this](const QByteArray& request, const char* operation) {
        require_ok(command(request, reply_timeout_ms), operation);
    };
    try { // allocate inside: then running out of memory removes the profile, too
        const QByteArray profile = QByteArray::number(id);
        const QByteArray set = "SET_NETWORK " + profile;
        confirm(set + " ssid " + encode_ssid(ssid), "set Wi-Fi network name");
        if (security == Security::Open) {
            confirm(set + " key_mgmt NONE", "set open-network security");
        } else {
            confirm(set + " key_mgmt WPA-PSK", "set WPA security");
            confirm(set + " psk " + encode_password(password), "set WPA password");
        }
        confirm("ENABLE_NETWORK " + profile, "enable Wi-Fi network");
        confirm("SELECT_NETWORK " + profile, "select Wi-Fi network");
        wait_connected(ssid,
                       environment_milliseconds("CORVANE_WIFI_CONNECT_TIMEOUT_MS", timeout_ms));
        confirm("SAVE_CONFIG", "save Wi-Fi network");
    } catch (...) {
        try {
            command("REMOVE_NETWORK " + QByteArray::number(id), reply_timeout_ms);
        } catch (...) { // the first failure is the one to report
        }
        throw;
    }
}

void Client::disconnect() const
{
    require_ok(command("DISCONNECT", reply_timeout_ms), "disconnect Wi-Fi");
}

void Client::forget(const QString& ssid) const
{
    const QByteArray saved = command("LIST_NETWORKS", reply_timeout_ms);
    std::vector<int> ids;
    for (const Network& network : parse_networks({}, saved, status()))
        if (network.ssid == ssid && network.saved_id >= 0)
            ids.push_back(network.saved_id);
    if (ids.empty())
        throw failure(u"%1 is not a saved network."_s.arg(ssid));
    for (const int id : ids)
        require_ok(command("REMOVE_NETWORK " + QByteArray::number(id), reply_timeout_ms),
                   "remove Wi-Fi network");
    require_ok(command("SAVE_CONFIG", reply_timeout_ms), "save removed Wi-Fi network");
}

Status Client::parse_status(const QByteArray& text)
{
    Status status;
    for (QByteArrayView lines = text; !lines.isEmpty();) {
        QByteArrayView value = take(lines, '\n');
        if (!value.contains('='))
            continue;
        const QByteArrayView name = take(value, '=');
        if (name == "wpa_state") {
            status.state = QString::fromUtf8(value);
        } else if (name == "ssid") {
            status.ssid = QString::fromUtf8(value);
        } else if (name == "ip_address") {
            status.address = QString::fromUtf8(value);
        } else if (name == "id") {
            bool ok = false;
            const int id = value.toInt(&ok);
            if (ok)
                status.saved_id = id;
        }
    }
    return status;
}

std::vector<Network> Client::parse_networks(const QByteArray& scan, const QByteArray& saved,
                                            const Status& status)
{
    std::vector<Network> networks;
    for (QByteArrayView lines = scan; !lines.isEmpty();)
        add_scanned(networks, take(lines, '\n'));
    for (QByteArrayView lines = saved; !lines.isEmpty();)
        add_saved(networks, take(lines, '\n'), status);
    std::ranges::stable_sort(networks, comes_before);
    return networks;
}

QString Client::security_name(Security value)
{
    switch (value) {
    case Security::Open:
        return u"open"_s;
    case Security::Personal:
        return u"WPA personal"_s;
    case Security::Unsupported:
        break;
    }
    return u"unsupported"_s;
}

QByteArray Client::encode_ssid(const QString& text)
{
    return text.toUtf8().toHex();
}

QByteArray Client::encode_password(const QString& text)
{
    return quote_secret(text);
}

void Client::require_ok(const QByteArray& reply, const char* operation)
{
    if (reply != "OK")
        throw failure(
            u"Could not %1: %2"_s.arg(QString::fromUtf8(operation), QString::fromUtf8(reply)));
}

void Client::wait_connected(const QString& ssid, int timeout_ms) const
{
    if (timeout_ms < 1)
        return;
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < timeout_ms) {
        const Status current = status();
        if (current.state == "COMPLETED"_L1 && current.ssid == ssid)
            return;
        QThread::msleep(400);
    }
    throw failure(u"Timed out connecting to %1."_s.arg(ssid));
}

} // namespace cvn::wifi
