// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

#include "networks.hpp"

#include "words.hpp"

#include <algorithm>
#include <tuple>

using namespace Qt::StringLiterals;
using cvn::wifi::Network;

namespace {

enum Role { NetworkRole = Qt::UserRole, SectionRole };

/// "open", "password" or, for what only a file can set up, "other"; and the same in words.
std::pair<QString, QString> security_of(const Network& network)
{
    const auto mentions = [&](QLatin1String word) { return network.flags.contains(word); };
    if (network.bssid.isEmpty())
        return {};
    if (mentions("EAP"_L1))
        return {u"other"_s, Networks::tr("enterprise")};
    if (mentions("WEP"_L1))
        return {u"other"_s, u"WEP"_s};
    if (mentions("PSK"_L1) || mentions("SAE-"_L1))
        return {u"password"_s, Networks::tr("with password")};
    if (network.security == cvn::wifi::Security::Open)
        return {u"open"_s, Networks::tr("open")};
    return {u"other"_s, Networks::tr("other security")};
}

int bars_of(const Network& network)
{
    if (network.bssid.isEmpty())
        return 0;
    return 1 + (network.signal >= -77) + (network.signal >= -66) + (network.signal >= -55);
}

std::pair<QString, int> band_and_channel(int megahertz)
{
    if (megahertz < 3000)
        return {u"2.4"_s, megahertz == 2484 ? 14 : (megahertz - 2407) / 5};
    return megahertz < 5950 ? std::pair(u"5"_s, (megahertz - 5000) / 5)
                            : std::pair(u"6"_s, (megahertz - 5950) / 5);
}

} // namespace

QVariantMap described(const Network& network)
{
    const QString name = readable(network.ssid);
    const auto [band, channel] = band_and_channel(network.frequency);
    const auto [kind, security] = security_of(network);
    return {{u"ssid"_s, network.ssid},
            {u"name"_s, name},
            {u"bssid"_s, network.bssid},
            {u"isolated"_s, isolated(name)},
            {u"bars"_s, bars_of(network)},
            {u"signal"_s, network.signal},
            {u"channel"_s, channel},
            {u"band"_s, band},
            {u"kind"_s, kind},
            {u"security"_s, security},
            {u"id"_s, network.saved_id},
            {u"saved"_s, network.saved_id >= 0}};
}

void Networks::show(std::vector<Network> networks)
{
    std::ranges::sort(networks, {}, [](const Network& network) {
        return std::tuple(network.saved_id < 0, -bars_of(network), network.ssid);
    });
    wanted_.clear();
    for (const Network& network : networks)
        wanted_.append(described(network));
    if (!held_)
        update();
}

void Networks::set_held(bool held)
{
    held_ = held;
    if (!held_)
        update();
}

int Networks::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

QVariant Networks::data(const QModelIndex& index, int role) const
{
    const QVariantMap& row = rows_.at(index.row());
    return role == SectionRole ? row[u"saved"_s] : QVariant(row);
}

QHash<int, QByteArray> Networks::roleNames() const
{
    return {{NetworkRole, "network"}, {SectionRole, "section"}};
}

void Networks::update()
{
    const int size = static_cast<int>(wanted_.size());
    for (int row = 0; row < size; ++row)
        put(row, wanted_[row]);
    if (size < rowCount()) {
        beginRemoveRows({}, size, rowCount() - 1);
        rows_.resize(size);
        endRemoveRows();
    }
}

void Networks::put(int row, const QVariantMap& wanted)
{
    const auto is_at = [&](int place) {
        return rows_[place][u"ssid"_s] == wanted[u"ssid"_s]
            && rows_[place][u"saved"_s] == wanted[u"saved"_s];
    };
    int from = row;
    while (from < rowCount() && !is_at(from))
        ++from;
    if (from == rowCount()) {
        beginInsertRows({}, row, row);
        rows_.insert(row, wanted);
        endInsertRows();
    } else if (from != row) {
        beginMoveRows({}, from, from, {}, row);
        rows_.move(from, row);
        endMoveRows();
    }
    if (rows_[row] != wanted) {
        rows_[row] = wanted;
        emit dataChanged(index(row), index(row));
    }
}
