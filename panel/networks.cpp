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

bool is_same(const QVariantMap& left, const QVariantMap& right)
{
    return left[u"ssid"_s] == right[u"ssid"_s] && left[u"saved"_s] == right[u"saved"_s];
}

bool comes_before(const QVariantMap& left, const QVariantMap& right)
{
    const auto key = [](const QVariantMap& row) {
        return std::tuple(!row[u"saved"_s].toBool(), -row[u"bars"_s].toInt(),
                          row[u"ssid"_s].toString());
    };
    return key(left) < key(right);
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

void Networks::show(const std::vector<Network>& networks)
{
    wanted_.clear();
    for (const Network& network : networks)
        wanted_.push_back(described(network));
    std::ranges::sort(wanted_, comes_before);
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
    const QVariantMap& row = rows_.at(static_cast<size_t>(index.row()));
    return role == SectionRole ? row[u"saved"_s] : QVariant(row);
}

QHash<int, QByteArray> Networks::roleNames() const
{
    return {{NetworkRole, "network"}, {SectionRole, "section"}};
}

void Networks::update()
{
    for (int row = 0; row < static_cast<int>(wanted_.size()); ++row)
        put(row, wanted_[static_cast<size_t>(row)]);
    const int left = static_cast<int>(wanted_.size());
    if (left < rowCount()) {
        beginRemoveRows({}, left, rowCount() - 1);
        rows_.resize(wanted_.size());
        endRemoveRows();
    }
}

void Networks::put(int row, const QVariantMap& wanted)
{
    const auto place = rows_.begin() + row;
    const auto found = std::find_if(place, rows_.end(),
                                    [&](const QVariantMap& it) { return is_same(it, wanted); });
    if (found == rows_.end()) {
        beginInsertRows({}, row, row);
        rows_.insert(place, wanted);
        endInsertRows();
        return;
    }
    if (found != place) {
        const int from = static_cast<int>(found - rows_.begin());
        beginMoveRows({}, from, from, {}, row);
        std::rotate(place, found, found + 1);
        endMoveRows();
    }
    if (*place != wanted) {
        *place = wanted;
        emit dataChanged(index(row), index(row));
    }
}
