// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

#include "window.hpp"

#include <QDeadlineTimer>
#include <QGuiApplication>
#include <QLocalServer>
#include <QLocalSocket>
#include <QLockFile>
#include <QSocketNotifier>
#include <QStandardPaths>
#include <QTranslator>
#include <QtQml/qqmlextensionplugin.h>

#include <csignal>
#include <sys/signalfd.h>
#include <unistd.h>

Q_IMPORT_QML_PLUGIN(Corvane_PanelPlugin)

using namespace Qt::StringLiterals;

namespace {

constexpr int first_start_ms = 3000;
constexpr int first_end_ms = 20000;

/// The ending signals arrive at a descriptor, also those that come while a request is under way.
int block_signals()
{
    sigset_t ending;
    sigemptyset(&ending);
    for (const int signal : {SIGHUP, SIGINT, SIGTERM})
        sigaddset(&ending, signal);
    sigprocmask(SIG_BLOCK, &ending, nullptr);
    return signalfd(-1, &ending, SFD_CLOEXEC | SFD_NONBLOCK);
}

/// With Wayland a window may come to the front only with this token, which the launcher made.
constexpr const char* token_name = "XDG_ACTIVATION_TOKEN";

/// False if there is none, and if it is about to end.
bool show_first_instance(const QString& address)
{
    QLocalSocket socket;
    socket.connectToServer(address);
    return socket.waitForConnected(first_start_ms) && socket.write(qgetenv(token_name) + '\n') > 0
        && socket.waitForReadyRead(first_start_ms);
}

void come_to_front(QQuickWindow& window, const QByteArray& token)
{
    if (!token.isEmpty())
        qputenv(token_name, token);
    window.show();
    window.raise();
    window.requestActivate();
}

} // namespace

int main(int argc, char** argv)
{
    const int signals_descriptor = block_signals();
    QGuiApplication app(argc, argv);
    QGuiApplication::setDesktopFileName(u"corvane-wifi-panel"_s);
    QGuiApplication::setQuitOnLastWindowClosed(false);

    const QString folder = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    const QString address = folder + u"/corvane-wifi-panel"_s;
    QLockFile lock(address + u".lock"_s);
    const QDeadlineTimer first_ends(first_end_ms);
    while (!lock.tryLock(100) && lock.error() == QLockFile::LockFailedError)
        if (show_first_instance(address) || first_ends.hasExpired())
            return first_ends.hasExpired();
    QLocalServer::removeServer(address);
    QLocalServer server;
    server.setSocketOptions(QLocalServer::UserAccessOption);
    server.listen(address);

    QTranslator translator;
    if (!QLocale().uiLanguages().value(0).startsWith(u"en"_s)
        && translator.load(QLocale(), u"panel"_s, u"_"_s, u":/i18n"_s)) {
        QCoreApplication::installTranslator(&translator);
        QGuiApplication::setLayoutDirection(QLocale().textDirection());
    }
    QQmlApplicationEngine engine;
    QQuickWindow* const window = load_window(engine);
    if (window == nullptr)
        return 1;
    Wifi& wifi = wifi_of(engine);
    window->show();

    QObject::connect(&server, &QLocalServer::newConnection, &app, [&] {
        QLocalSocket* second = server.nextPendingConnection();
        QObject::connect(second, &QLocalSocket::readyRead, &app, [&, second] {
            wifi.stay();
            come_to_front(*window, second->readLine().trimmed());
            second->write("\n");
            second->flush();
            second->deleteLater();
        });
    });
    const QSocketNotifier signal_came(signals_descriptor, QSocketNotifier::Read);
    QObject::connect(&signal_came, &QSocketNotifier::activated, &app, [&] {
        signalfd_siginfo signal;
        while (read(signals_descriptor, &signal, sizeof signal) > 0)
            continue;
        window->hide();
        wifi.end();
    });
    return QGuiApplication::exec();
}
