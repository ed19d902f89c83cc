// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

#include "wifi.hpp"

#include "requests.hpp"
#include "words.hpp"

#include <QCoreApplication>
#include <QDateTime>
#include <QWindow>

#include <algorithm>
#include <cstdlib>

using namespace Qt::StringLiterals;
using cvn::wifi::Client;
using cvn::wifi::Network;
using cvn::wifi::Status;

namespace {

constexpr int look_every_ms = 5000;
constexpr int look_soon_ms = 1000; ///< While a connection or its address is on its way.
constexpr int scan_every_ms = 30000;
constexpr int address_patience_ms = 10000;
constexpr int last_look_ms = 15000;

bool is_connected(const Status& status)
{
    return status.state == "COMPLETED"_L1;
}

bool is_on_its_way(const Status& status)
{
    return status.state.startsWith("ASSOCIAT"_L1) || status.state.startsWith("AUTH"_L1)
        || status.state.endsWith("HANDSHAKE"_L1);
}

bool is_same(const Status& left, const Status& right)
{
    return left.state == right.state && left.saved_id == right.saved_id && left.ssid == right.ssid;
}

} // namespace

Wifi::Wifi()
{
    worker_.moveToThread(&thread_);
    thread_.start();
    connect(&timer_, &QTimer::timeout, this, &Wifi::refresh);
    refresh(); // while the window is being made
}

Wifi::~Wifi()
{
    thread_.quit();
    if (!thread_.wait(last_look_ms)) // while a stopped service has a full queue, sending blocks
        std::_Exit(1);
}

QString Wifi::situation() const
{
    if (!problem_.isEmpty())
        return problem_;
    if (is_connected(status_) && !status_.address.isEmpty())
        return tr("Connected - %1").arg(status_.address);
    if (is_connected(status_))
        return without_address_.hasExpired(address_patience_ms)
            ? tr("Connected, but no address. Is a DHCP client running?")
            : tr("Connected, waiting for an address");
    if (status_.state == "INTERFACE_DISABLED"_L1)
        return tr("Wi-Fi is switched off.");
    if (is_on_its_way(status_))
        return tr("Connecting to %1").arg(isolated(readable(status_.ssid)));
    return status_.state.isEmpty() ? QString() : tr("Not connected");
}

bool Wifi::eventFilter(QObject* window, QEvent* event)
{
    const QEvent::Type type = event->type();
    if (type == QEvent::Expose)
        set_watched(static_cast<QWindow*>(window)->isExposed());
    else if (type == QEvent::TouchBegin || type == QEvent::MouseButtonPress)
        networks_->set_held(true);
    else if (type == QEvent::TouchEnd || type == QEvent::TouchCancel
             || type == QEvent::MouseButtonRelease)
        QTimer::singleShot(0, this, [this] { networks_->set_held(false); }); // after the tap
    return false;
}

void Wifi::set_watched(bool watched)
{
    if (watched_ == watched)
        return;
    watched_ = watched;
    timer_.stop();
    if (watched)
        refresh();
}

void Wifi::scan()
{
    run(tr("Looking for networks"), [](const Client& client) { client.networks(true); });
}

void Wifi::join(const QVariantMap& network, const QString& password)
{
    const QString name = network[u"name"_s].toString();
    const bool hidden = !network.contains(u"ssid"_s);
    const QByteArray ssid = hidden ? name.toUtf8() : bytes_of(network[u"ssid"_s].toString());
    connect_to(
        name, [=](const Client& client) { ::join(client, ssid, password, hidden); },
        hidden                   ? tr("Could not connect. Check the name and the password.")
            : password.isEmpty() ? tr("Could not connect to %1.").arg(isolated(name))
                                 : tr("Could not connect. Check the password."));
}

void Wifi::reconnect(const QVariantMap& network)
{
    const QString name = network[u"name"_s].toString();
    const QString ssid = network[u"ssid"_s].toString();
    const int id = network[u"id"_s].toInt();
    connect_to(
        name, [=](const Client& client) { rejoin(client, id, ssid); },
        tr("Could not connect to %1. It may be out of range, or its password has changed.")
            .arg(isolated(name)),
        [=, this](const QString& why) { emit failedSaved(why, network); });
}

void Wifi::forget(const QVariantMap& network)
{
    const QString ssid = network[u"ssid"_s].toString();
    run(tr("Forgetting %1").arg(isolated(network[u"name"_s].toString())),
        [=](const Client& client) { ::forget(client, ssid); });
}

void Wifi::leave()
{
    run(tr("Disconnecting"), [](const Client& client) { client.disconnect(); });
}

void Wifi::end()
{
    ending_ = true;
    if (activity_.isEmpty())
        QCoreApplication::quit();
}

Wifi::View Wifi::look(const Client& client, const Status& last, bool scan)
{
    View view;
    view.problem = explained(failure_of([&] {
        if (scan) // which may be refused, as while the radio is off
            failure_of([&] { view.networks = client.networks(true); });
        view.status = client.status();
        if (!view.networks && !is_same(view.status, last))
            view.networks = client.networks(false);
    }));
    return view;
}

void Wifi::refresh()
{
    if (looking_ || !activity_.isEmpty())
        return;
    looking_ = true;
    // First the list of the last scan, then a scan.
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    const bool first = scanned_at_ == 0;
    const bool scan = !first && std::abs(now - scanned_at_) >= scan_every_ms;
    if (first || scan)
        scanned_at_ = first ? 1 : now;
    const Status last = status_;
    QMetaObject::invokeMethod(&worker_, [=, this] {
        const View view = look(Client{QString()}, last, scan);
        QMetaObject::invokeMethod(this, [=, this] {
            looking_ = false;
            take(view);
            if (first && problem_.isEmpty() && watched_)
                refresh();
        });
    });
}

void Wifi::run(const QString& activity, const Action& action, const Finish& then)
{
    if (!activity_.isEmpty())
        return;
    activity_ = activity;
    connecting_ = then != nullptr; // no other operation has a sequel
    notify({});
    QMetaObject::invokeMethod(&worker_, [=, this] {
        const Client client{QString()};
        const QString error = failure_of([&] { action(client); });
        const View view = look(client, {}, false);
        QMetaObject::invokeMethod(this, [=, this] {
            activity_.clear();
            connecting_ = false;
            take(view);
            if (then)
                then(error);
            else if (!error.isEmpty())
                notify(explained(error));
            if (ending_)
                QCoreApplication::quit();
        });
    });
}

/// `late` says what a time-out may mean.
void Wifi::connect_to(const QString& name, const Action& action, const QString& late,
                      const Finish& fail)
{
    run(tr("Connecting to %1").arg(isolated(name)), action, [=, this](const QString& error) {
        const QString why = error.startsWith("Timed out connecting"_L1) ? late : explained(error);
        if (error.isEmpty())
            emit joined();
        else if (fail)
            fail(why);
        else
            notify(why);
    });
}

void Wifi::notify(const QString& notice)
{
    notice_ = notice;
    emit changed();
}

void Wifi::take(const View& view)
{
    if (view.problem.isEmpty() && notice_ == problem_)
        notice_.clear();
    problem_ = view.problem;
    if (!problem_.isEmpty())
        scanned_at_ = 0;
    status_ = view.status;
    if (!is_connected(status_) || !status_.address.isEmpty())
        without_address_.invalidate();
    else if (!without_address_.isValid())
        without_address_.start();
    if (view.networks) {
        std::vector<Network> others = *view.networks;
        const auto used = std::ranges::find(others, true, &Network::current);
        current_.clear();
        if (used != others.end() && is_connected(status_)) {
            current_ = described(*used);
            others.erase(used);
        }
        networks_->show(others);
    }
    if (!current_.isEmpty())
        current_[u"address"_s] = status_.address;
    const bool soon = is_on_its_way(status_)
        || (without_address_.isValid() && !without_address_.hasExpired(address_patience_ms));
    if (watched_)
        timer_.start(soon ? look_soon_ms : look_every_ms);
    emit changed();
}
