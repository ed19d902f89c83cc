// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

#pragma once

#include "networks.hpp"

#include <QElapsedTimer>
#include <QThread>
#include <QTimer>

#include <functional>
#include <optional>

/// What the window shows and does. All requests block, so a thread of its own makes them, one after
/// the other. An operation that the user waits for has a name, `activity`, until it ends.
///
/// As the event filter of the window, it looks at once when that is seen, and then every few
/// seconds until it is not. The rows keep still while the window is touched.
class Wifi : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(Networks* networks MEMBER networks_ CONSTANT)
    Q_PROPERTY(QVariantMap current MEMBER current_ NOTIFY changed) ///< Empty if not connected.
    Q_PROPERTY(QString situation READ situation NOTIFY changed)    ///< A sentence.
    Q_PROPERTY(QString problem MEMBER problem_ NOTIFY changed)     ///< Why there are no replies.
    Q_PROPERTY(QString activity MEMBER activity_ NOTIFY changed)   ///< Empty if there is none.
    Q_PROPERTY(bool connecting MEMBER connecting_ NOTIFY changed)  ///< Whether that is a connect.
    Q_PROPERTY(QString notice MEMBER notice_ NOTIFY changed)       ///< For the user.

public:
    Wifi();
    ~Wifi() override; ///< Waits for the request that is under way.

    QString situation() const;
    Q_INVOKABLE void scan();
    /// A network of which only the name is known is hidden.
    Q_INVOKABLE void join(const QVariantMap& network, const QString& password);
    Q_INVOKABLE void reconnect(const QVariantMap& network);
    Q_INVOKABLE void forget(const QVariantMap& network);
    Q_INVOKABLE void leave();
    Q_INVOKABLE qsizetype size(const QString& text) const ///< In UTF-8 bytes.
    {
        return text.toUtf8().size();
    }
    /// Ends the program, but not before the activity has ended.
    Q_INVOKABLE void end();
    void stay() ///< Takes end() back.
    {
        ending_ = false;
    }

signals:
    void changed();
    void joined();
    void failedSaved(const QString& why, const QVariantMap& network);

private:
    bool eventFilter(QObject* window, QEvent* event) override;
    void set_watched(bool watched);
    /// What came of a look at wpa_supplicant. Without networks the list stays.
    struct View {
        cvn::wifi::Status status = {};
        std::optional<std::vector<cvn::wifi::Network>> networks = {};
        QString problem = {};
    };
    using Action = std::function<void(const cvn::wifi::Client&)>;
    using Finish = std::function<void(const QString& error)>;

    static View look(const cvn::wifi::Client& client, const cvn::wifi::Status& last, bool scan);
    void refresh();
    void run(const QString& activity, const Action& action, const Finish& then = {});
    void connect_to(const QString& name, const Action& action, const QString& late,
                    const Finish& fail = {});
    void notify(const QString& notice);
    void take(const View& view);

    Networks* const networks_ = new Networks(this);
    cvn::wifi::Status status_;
    QVariantMap current_;
    QString problem_, activity_, notice_;
    bool connecting_ = false, watched_ = false, looking_ = false, ending_ = false;
    qint64 scanned_at_ = 0;         ///< Milliseconds of the clock that goes on while suspended.
    QElapsedTimer without_address_; ///< Valid while connected without one.
    QTimer timer_;
    QThread thread_;
    QObject worker_;
};
