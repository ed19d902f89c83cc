// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

// Proves that any scan results and saved profiles give one correct record per name, in order.

#include "fuzz.hpp"

#include "cvn/wifi.hpp"

#include <QStringList>

#include <algorithm>
#include <initializer_list>
#include <tuple>

using cvn::wifi::Client;
using cvn::wifi::Network;
using cvn::wifi::Security;
using cvn::wifi::Status;

namespace {

struct Row {
    QString name;
    QByteArrayList columns;
};

int number(const Row& row, qsizetype column, bool* ok = nullptr)
{
    return row.columns[column].toInt(ok);
}

/// The rows with a name in column `name` and whole numbers in the columns `numbers`.
std::vector<Row> rows(const QByteArray& table, const char* heading, qsizetype name,
                      std::initializer_list<qsizetype> numbers)
{
    std::vector<Row> result;
    for (const QByteArray& line : table.split('\n')) {
        Row row{{}, line.split('\t')};
        if (line.startsWith(heading) || row.columns.size() <= name)
            continue;
        row.name = QString::fromUtf8(row.columns[name]);
        bool complete = !row.name.isEmpty();
        for (bool ok = false; const qsizetype column : numbers) {
            number(row, column, &ok);
            complete = complete && ok;
        }
        if (complete)
            result.push_back(std::move(row));
    }
    return result;
}

Security security(const QString& flags)
{
    const auto mention = [&](const char* word) {
        return flags.contains(QLatin1String(word), Qt::CaseInsensitive);
    };
    if (mention("PSK"))
        return mention("EAP") || mention("WEP") ? Security::Unsupported : Security::Personal;
    const auto words = {"EAP", "WEP", "SAE", "WPA", "RSN"};
    return std::ranges::any_of(words, mention) ? Security::Unsupported : Security::Open;
}

/// The record of that name, found by search instead of merging.
Network record(const QString& name, std::vector<Row> scanned, std::vector<Row> saved,
               const Status& status)
{
    const auto another = [&](const Row& row) { return row.name != name; };
    std::erase_if(scanned, another);
    std::erase_if(saved, another);
    Network result;
    result.ssid = name;
    if (!scanned.empty()) {
        const Row row = std::ranges::max(scanned, {}, [](const Row& r) { return number(r, 2); });
        result.bssid = QString::fromUtf8(row.columns[0]);
        result.frequency = number(row, 1);
        result.signal = number(row, 2);
        result.flags = QString::fromUtf8(row.columns[3]);
        result.security = security(result.flags);
    }
    if (!saved.empty()) {
        result.saved_id = number(saved.back(), 0);
        result.current = result.saved_id == status.saved_id
            || (status.ssid == name && status.state == QLatin1String("COMPLETED"));
    }
    return result;
}

auto fields(const Network& network)
{
    return std::tie(network.ssid, network.bssid, network.flags, network.frequency, network.signal,
                    network.saved_id, network.current, network.security);
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArrayList replies = texts(bytes(data, size)) + QByteArrayList(2);
    const std::vector<Row> scanned = rows(replies[0], "bssid", 4, {1, 2});
    const std::vector<Row> saved = rows(replies[1], "network id", 1, {0});
    const Status status = Client::parse_status(replies[2]);
    QStringList names;
    for (const std::vector<Row>& table : {scanned, saved})
        for (const Row& row : table)
            names += row.name;
    names.removeDuplicates();

    const std::vector<Network> networks = Client::parse_networks(replies[0], replies[1], status);
    require(static_cast<qsizetype>(networks.size()) == names.size(), "a record for every name");
    for (const Network& network : networks)
        require(fields(network) == fields(record(network.ssid, scanned, saved, status)),
                "the strongest access point and the profile listed last");
    const auto place = [&](const Network& network) {
        return std::tuple(!network.current, network.saved_id < 0, -qint64{network.signal},
                          names.indexOf(network.ssid));
    };
    require(std::ranges::adjacent_find(networks, std::ranges::greater_equal{}, place)
                == networks.end(),
            "no name twice; the current one first, then the saved ones, then by falling signal");
    return 0;
}
