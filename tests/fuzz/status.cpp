// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

// Proves that any status reply is read as the last value of each field.

#include "fuzz.hpp"

#include "cvn/wifi.hpp"

#include <QHash>

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray text = bytes(data, size);
    QHash<QByteArray, QByteArray> last;
    int id = -1;
    for (const QByteArray& line : text.split('\n')) {
        QByteArrayList parts = line.split('=');
        const QByteArray name = parts.takeFirst();
        if (parts.isEmpty())
            continue;
        last[name] = parts.join('=');
        bool ok = false;
        const int number = last[name].toInt(&ok);
        if (ok && name == "id")
            id = number;
    }
    const cvn::wifi::Status status = cvn::wifi::Client::parse_status(text);
    require(status.state == QString::fromUtf8(last["wpa_state"]), "the state is the last one");
    require(status.ssid == QString::fromUtf8(last["ssid"]), "the name is the last one");
    require(status.address == QString::fromUtf8(last["ip_address"]), "the address is the last one");
    require(status.saved_id == id, "the id is the last number");
    return 0;
}
