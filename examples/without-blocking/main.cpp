// SPDX-License-Identifier: MIT
// Lists the networks in range while the event loop goes on: the library's calls block for seconds,
// so a thread of their own makes them, and the result comes back to the thread of the user
// interface.

#include <cvn/wifi.hpp>

#include <QCoreApplication>
#include <QThreadPool>
#include <QTimer>
#include <QtConcurrentRun>

#include <cstdio>

struct Result {
    std::vector<cvn::wifi::Network> networks;
    QString error;
};

static Result list()
{
    try {
        return {cvn::wifi::Client(QString()).networks(true), {}};
    } catch (const std::exception& error) {
        return {{}, QString::fromUtf8(error.what()) + '\n'};
    }
}

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    QThreadPool worker; // one request after the other; its destructor waits for the last
    worker.setMaxThreadCount(1);

    QTimer ticks; // stands for a user interface
    QObject::connect(&ticks, &QTimer::timeout, [] { std::fputs("...\n", stderr); });
    ticks.start(100);

    QTimer::singleShot(0, &application, [&] { // when the event loop runs
        QtConcurrent::run(&worker, list).then(&application, [](const Result& result) {
            for (const cvn::wifi::Network& network : result.networks)
                std::printf("%s, %d dBm\n", qPrintable(network.ssid), network.signal);
            std::fputs(qPrintable(result.error), stderr);
            QCoreApplication::exit(result.error.isEmpty() ? 0 : 1);
        });
    });
    return QCoreApplication::exec();
}
