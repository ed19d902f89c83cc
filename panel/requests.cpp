// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

#include "requests.hpp"

#include "words.hpp"

#include <QElapsedTimer>
#include <QThread>

using namespace Qt::StringLiterals;
using cvn::wifi::Client;
using cvn::wifi::Network;
using cvn::wifi::Status;

namespace {

constexpr int reply_timeout_ms = 3000;
constexpr int connect_timeout_ms = 15000;

/// Throws what the library would.
void confirm(const Client& client, const QByteArray& request, const char* operation)
{
    const QByteArray reply = client.command(request, reply_timeout_ms);
    if (reply != "OK")
        throw std::runtime_error("Could not " + std::string(operation) + ": "
                                 + reply.toStdString());
}

/// After a failure, which is the one to report.
void try_command(const Client& client, const QByteArray& request)
{
    failure_of([&] { client.command(request, reply_timeout_ms); });
}

void wait_connected(const Client& client, int id)
{
    bool ok = false;
    const int given_ms = qEnvironmentVariableIntValue("CORVANE_WIFI_CONNECT_TIMEOUT_MS", &ok);
    const int limit_ms = ok && given_ms >= 0 ? given_ms : connect_timeout_ms;
    if (limit_ms == 0)
        return;
    QElapsedTimer timer;
    for (timer.start(); timer.elapsed() < limit_ms;) {
        const Status status = client.status();
        if (status.state == "COMPLETED"_L1 && status.saved_id == id)
            return;
        QThread::msleep(400);
    }
    throw std::runtime_error("Timed out connecting to " + std::to_string(id) + ".");
}

void fill(const Client& client, const QByteArray& id, const QByteArray& ssid,
          const QString& password, bool hidden)
{
    const QByteArray set = "SET_NETWORK " + id;
    confirm(client, set + " ssid " + ssid.toHex(), "set Wi-Fi network name");
    if (hidden)
        confirm(client, set + " scan_ssid 1", "set Wi-Fi network name");
    if (password.isEmpty()) {
        confirm(client, set + " key_mgmt NONE", "set open-network security");
        return;
    }
    // One profile for WPA2, for WPA3 and for both; the latter need protected management frames.
    confirm(client, set + " key_mgmt WPA-PSK SAE", "set WPA security");
    confirm(client, set + " ieee80211w 1", "set WPA security");
    // wpa_supplicant takes what stands between the first and the last quote as it is.
    confirm(client, set + " psk \"" + password.toUtf8() + '"', "set WPA password");
}

/// Id of the profile that has this name. An earlier one may be another's after a restart.
int saved_as(const Client& client, const QByteArray& ssid)
{
    for (const Network& network : client.networks(false))
        if (bytes_of(network.ssid) == ssid)
            return network.saved_id;
    return -1;
}

void then_enable_all(const Client& client, const std::function<void()>& action)
{
    try {
        action();
    } catch (...) {
        try_command(client, "ENABLE_NETWORK all");
        throw;
    }
    confirm(client, "ENABLE_NETWORK all", "enable Wi-Fi network");
}

} // namespace

void join(const Client& client, const QByteArray& ssid, const QString& password, bool hidden)
{
    const int replaced = saved_as(client, ssid);
    const QByteArray id = client.command("ADD_NETWORK", reply_timeout_ms);
    QByteArray undo = "REMOVE_NETWORK " + id;
    bool ok = false;
    const int number = id.toInt(&ok);
    if (!ok)
        throw std::runtime_error("wpa_supplicant did not create a network profile.");
    try {
        fill(client, id, ssid, password, hidden);
        confirm(client, "SELECT_NETWORK " + id, "select Wi-Fi network");
        wait_connected(client, number);
        if (replaced >= 0) {
            confirm(client, "REMOVE_NETWORK " + QByteArray::number(replaced),
                    "remove Wi-Fi network");
            undo = "RECONFIGURE"; // which brings back the file's
        }
        confirm(client, "ENABLE_NETWORK all", "enable Wi-Fi network"); // or the file disables them
        confirm(client, "SAVE_CONFIG", "save Wi-Fi network");
    } catch (...) {
        try_command(client, undo);
        try_command(client, "ENABLE_NETWORK all");
        throw;
    }
}

void rejoin(const Client& client, int id, const QString& ssid)
{
    then_enable_all(client, [&] { client.connect_saved(id, ssid, connect_timeout_ms); });
}

void forget(const Client& client, const QString& ssid)
{
    then_enable_all(client, [&] { client.forget(ssid); });
}
