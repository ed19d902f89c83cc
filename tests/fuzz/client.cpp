// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

// Proves that the library sends correct sequences of requests for any replies and failures.
//
// Replaces the system calls, the clock and wpa_supplicant. An input is a list of operations, each
// followed by its replies:
//     >WORD<tab>SSID<tab>TIME-OUT<tab>PASSWORD or id
//     REPLY, or !CALL if that system call fails, !short if too little is sent, !wait for no reply
// Requests after the last reply get none. No real time passes.

#include "fuzz.hpp"

#include "cvn/wifi.hpp"

#include <QElapsedTimer>
#include <QThread>

#include <dlfcn.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <typeinfo>

using cvn::wifi::Client;
using cvn::wifi::Security;
using cvn::wifi::Status;

namespace {

constexpr int our_descriptor = 1'000'000;
constexpr const char* server = "/run/fuzz/wlan0";

struct Exchange {
    QByteArray script;
    QByteArray request = {}; ///< Empty when a call before send() failed.
    QByteArray error = {};   ///< The end of the message if it fails.
    QByteArray reply = {};
    bool answered = false;
};

/// One operation in progress.
struct Stage {
    qint64 start_ms = 0;
    QByteArrayList script = {};
    std::vector<Exchange> exchanges = {};
    bool open = false;
    bool guarded = false;
    QByteArray file = {};
};
Stage stage;
qint64 clock_ms = 0;

bool fails(const char* call)
{
    Exchange& exchange = stage.exchanges.back();
    if (exchange.script.trimmed() != QByteArray("!") + call)
        return false;
    errno = ENOBUFS;
    exchange.error = std::strerror(errno);
    return true;
}

QByteArray path_in(const sockaddr* address, socklen_t length)
{
    const char* path = reinterpret_cast<const sockaddr_un*>(address)->sun_path;
    require(address->sa_family == AF_UNIX
                && length == offsetof(sockaddr_un, sun_path) + std::strlen(path) + 1,
            "addresses are paths with a NUL");
    return path;
}

} // namespace

// The linker prefers these to those of Qt and the C library. Except for close() and unlink(), only
// the library under test calls them.

void QThread::msleep(unsigned long ms)
{
    require(!stage.open, "no socket is open during a pause");
    require(ms == (stage.exchanges.back().request == "SCAN" ? 1400 : 400),
            "pauses have the documented length");
    clock_ms += static_cast<qint64>(ms);
}

void QElapsedTimer::start() noexcept
{
    t1 = clock_ms;
}

qint64 QElapsedTimer::elapsed() const noexcept
{
    return clock_ms - t1;
}

#ifndef __THROW // musl
#define __THROW
#endif

extern "C" {

int socket(int domain, int type, int) __THROW
{
    require(!stage.open && stage.file.isEmpty(), "nothing is left of the previous exchange");
    require(domain == AF_UNIX && type == SOCK_DGRAM, "sockets are local and for datagrams");
    stage.exchanges.push_back({stage.script.isEmpty() ? "!wait" : stage.script.takeFirst()});
    stage.guarded = false;
    stage.open = !fails("socket");
    return stage.open ? our_descriptor : -1;
}

int bind(int, const sockaddr* address, socklen_t length) __THROW
{
    if (fails("bind"))
        return -1;
    stage.file = path_in(address, length);
    return 0;
}

int chmod(const char* path, mode_t mode) __THROW
{
    stage.guarded = path == stage.file && mode == 0600;
    return fails("chmod") ? -1 : 0;
}

int connect(int, const sockaddr* address, socklen_t length)
{
    require(path_in(address, length) == server, "requests go to wpa_supplicant");
    return fails("connect") ? -1 : 0;
}

ssize_t send(int, const void* data, size_t size, int)
{
    require(stage.guarded, "the socket file is private before a request");
    Exchange& exchange = stage.exchanges.back();
    exchange.request = bytes(static_cast<const uint8_t*>(data), size);
    if (fails("send"))
        return -1;
    return static_cast<ssize_t>(size) - (exchange.script.trimmed() == "!short" ? 1 : 0);
}

int poll(pollfd*, nfds_t count, int timeout)
{
    require(count == 1 && timeout == 3000, "a reply has three seconds");
    require(stage.exchanges.back().script.trimmed() != "!short", "half a request has no reply");
    const bool failed = fails("poll");
    const bool silent = stage.exchanges.back().script.trimmed() == "!wait";
    clock_ms += silent ? timeout : 1;
    if (failed || silent)
        stage.exchanges.back().error = "Timed out waiting for wpa_supplicant.";
    return failed ? -1 : silent ? 0 : 1;
}

ssize_t recv(int, void* buffer, size_t size, int)
{
    if (fails("recv"))
        return -1;
    Exchange& exchange = stage.exchanges.back();
    exchange.answered = true;
    exchange.reply = exchange.script.left(static_cast<qsizetype>(size));
    const auto received = static_cast<size_t>(exchange.reply.size());
    std::memcpy(buffer, exchange.reply.constData(), received);
    while (exchange.reply.endsWith('\n') || exchange.reply.endsWith('\r'))
        exchange.reply.chop(1);
    if (exchange.request != "ADD_NETWORK")
        exchange.error = QString::fromUtf8(exchange.reply).toUtf8().constData(); // as what() ends
    return static_cast<ssize_t>(received);
}

int close(int descriptor)
{
    if (descriptor != our_descriptor)
        return reinterpret_cast<int (*)(int)>(dlsym(RTLD_NEXT, "close"))(descriptor);
    require(stage.open, "a descriptor is closed once");
    stage.open = false;
    errno = EDOM;
    return 0;
}

int unlink(const char* path) __THROW
{
    if (!QByteArray(path).startsWith("/tmp/corvane-wpa-"))
        return reinterpret_cast<int (*)(const char*)>(dlsym(RTLD_NEXT, "unlink"))(path);
    if (stage.file == path)
        stage.file.clear();
    errno = EDOM;
    return 0;
}
}

namespace {

struct Operation {
    QByteArray word;
    QString ssid;
    int timeout;
    QByteArray last;

    bool adds() const
    {
        return word == "open" || word == "personal";
    }
};

void run(const Operation& operation)
{
    const Client client{QString::fromUtf8(server)};
    const QString& ssid = operation.ssid;
    if (operation.word == "status")
        client.status();
    else if (operation.word == "list" || operation.word == "scan")
        client.networks(operation.word == "scan");
    else if (operation.word == "saved")
        client.connect_saved(operation.last.toInt(), ssid, operation.timeout);
    else if (operation.adds())
        client.connect_new(ssid, operation.word == "open" ? Security::Open : Security::Personal,
                           QString::fromUtf8(operation.last), operation.timeout);
    else if (operation.word == "disconnect")
        client.disconnect();
    else if (operation.word == "forget")
        client.forget(ssid);
    else
        throw std::runtime_error("Not an operation.");
}

/// Whether the operation may continue after that exchange.
bool accepted(const Exchange& exchange)
{
    const QByteArray& request = exchange.request;
    bool ok = false;
    if (request == "STATUS" || request == "SCAN_RESULTS" || request == "LIST_NETWORKS")
        return exchange.answered;
    if (request == "ADD_NETWORK")
        return exchange.answered && exchange.reply.toInt(&ok) >= 0 && ok;
    return exchange.answered
        && (exchange.reply == "OK"
            || (request == "SCAN" && exchange.reply.startsWith("FAIL-BUSY")));
}

bool is_connected(const Exchange& exchange, const QString& ssid)
{
    const Status status = Client::parse_status(exchange.reply);
    return exchange.request == "STATUS" && exchange.answered && status.ssid == ssid
        && status.state == QLatin1String("COMPLETED");
}

/// `error` is the message of the operation's error, null on success.
void check(const Operation& operation, std::vector<Exchange> exchanges, const QByteArray& error)
{
    if (operation.adds() && !error.isNull() && !exchanges.empty() && accepted(exchanges[0])) {
        const QByteArray id = QByteArray::number(exchanges[0].reply.toInt());
        const QByteArray& last = exchanges.back().request;
        require(exchanges.size() > 1 && (last.isEmpty() || last == "REMOVE_NETWORK " + id),
                "a profile that failed is removed");
        exchanges.pop_back();
    }
    for (size_t i = 0; i < exchanges.size(); ++i) {
        const Exchange& exchange = exchanges[i];
        require(accepted(exchange) || i + 1 == exchanges.size(), "an error ends the operation");
        require(accepted(exchange) || (!error.isNull() && error.endsWith(exchange.error)),
                "the first error is reported");
        if (exchange.request.startsWith("REMOVE_NETWORK"))
            require(operation.word == "forget", "a connected profile stays");
        if (exchange.request != "SAVE_CONFIG")
            continue;
        if (operation.adds())
            require(operation.timeout < 1 || is_connected(exchanges[i - 1], operation.ssid),
                    "a profile is saved only when connected");
        else
            require(exchanges[i - 1].request.startsWith("REMOVE_NETWORK"),
                    "only adding and forgetting save");
    }
    if (!error.isNull()) {
        // The first three requests can be refused by the library: a name, a password.
        require(exchanges.size() <= 3 || !accepted(exchanges.back())
                    || clock_ms - stage.start_ms >= operation.timeout,
                "an operation fails for a reason");
        return;
    }
    const QByteArray last = exchanges.back().request;
    require(last == "SAVE_CONFIG" || (!operation.adds() && operation.word != "forget"),
            "adding and forgetting end with one save");
    require(operation.word != "saved" || operation.timeout < 1
                || is_connected(exchanges.back(), operation.ssid),
            "success is a connection");
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    for (QByteArrayList parts = texts(bytes(data, size)); !parts.isEmpty();) {
        const QByteArrayList words = parts.takeFirst().split('\t') + QByteArrayList(3);
        const Operation operation{words[0].mid(1), QString::fromUtf8(words[1]), words[2].toInt(),
                                  words[3]};
        stage = {clock_ms};
        while (!parts.isEmpty() && !parts.first().startsWith('>'))
            stage.script << parts.takeFirst();
        QByteArray message;
        try {
            run(operation);
        } catch (const std::runtime_error& error) {
            require(typeid(error) == typeid(std::runtime_error), "errors have one type");
            message = error.what();
        }
        require(!stage.open && stage.file.isEmpty(), "no descriptor and no file is left");
        check(operation, stage.exchanges, message);
    }
    return 0;
}
