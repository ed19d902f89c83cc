// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

#pragma once

#include <cvn/wifi.hpp>

#include <QAbstractListModel>
#include <QVariantMap>
#include <qqmlregistration.h>

/// What the pages show of a network: its names, signal, band and kind of security.
QVariantMap described(const cvn::wifi::Network& network);

/// The list, without the network in use. Each row is found again by its name, so it keeps its place
/// on the screen. While `held`, as while a finger is down, the rows stay as they are.
class Networks : public QAbstractListModel {
    Q_OBJECT
    QML_ANONYMOUS

public:
    using QAbstractListModel::QAbstractListModel;
    void show(std::vector<cvn::wifi::Network> networks);
    void set_held(bool held);

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

private:
    void update();
    void put(int row, const QVariantMap& wanted);

    QList<QVariantMap> rows_, wanted_;
    bool held_ = false;
};
