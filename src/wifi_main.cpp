// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

#include "cvn/wifi.hpp"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>

#include <termios.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <csignal>
#include <exception>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace Qt::StringLiterals;
using cvn::wifi::Client;
using cvn::wifi::Network;
using cvn::wifi::Security;
using cvn::wifi::Status;

constexpr int connect_timeout_ms = 15000;

struct Switches {
    bool as_json;
    bool cached;
    bool password_stdin;
    bool open;
    bool yes;
};

std::ostream& operator<<(std::ostream& stream, const QString& text)
{
    return stream << text.toStdString();
}

// Terminal input. The signal handler reads only interrupted_terminal and echo_disabled.

constexpr std::array handled_signals = {SIGHUP, SIGINT, SIGQUIT, SIGTERM};
termios interrupted_terminal{};
volatile sig_atomic_t echo_disabled = 0;

extern "C" void restore_echo_and_exit(int signal)
{
    if (echo_disabled != 0)
        tcsetattr(STDIN_FILENO, TCSANOW, &interrupted_terminal);
    _exit(128 + signal);
}

/// Turns the terminal's echo off for its lifetime. A signal meanwhile turns it on again and exits.
/// If any step fails, the terminal and the signal dispositions stay as they were.
class EchoGuard {
public:
    explicit EchoGuard(bool requested)
    {
        if (!requested || isatty(STDIN_FILENO) == 0 || tcgetattr(STDIN_FILENO, &saved_) != 0)
            return;
        struct sigaction action { };
        action.sa_handler = restore_echo_and_exit;
        sigemptyset(&action.sa_mask);
        for (size_t i = 0; i < handled_signals.size(); ++i) {
            if (sigaction(handled_signals[i], &action, &previous_[i]) != 0) {
                while (i-- > 0)
                    sigaction(handled_signals[i], &previous_[i], nullptr);
                return;
            }
        }
        interrupted_terminal = saved_;
        // Only the flag is volatile: without the fence a compiler may set it before the settings
        // are copied, and the handler would then apply settings that are all zero.
        std::atomic_signal_fence(std::memory_order_seq_cst);
        echo_disabled = 1;
        termios hidden = saved_;
        hidden.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        // TCSAFLUSH discards what was typed ahead, while it was still echoed.
        if (tcsetattr(STDIN_FILENO, TCSAFLUSH, &hidden) == 0)
            active_ = true;
        else
            restore_handlers();
    }

    ~EchoGuard()
    {
        if (active_)
            tcsetattr(STDIN_FILENO, TCSAFLUSH, &saved_);
        restore_handlers();
    }

    EchoGuard(const EchoGuard&) = delete;
    EchoGuard& operator=(const EchoGuard&) = delete;

private:
    void restore_handlers()
    {
        if (!active_ && echo_disabled == 0)
            return;
        echo_disabled = 0; // first: from here on a signal leaves the terminal alone
        for (size_t i = 0; i < handled_signals.size(); ++i)
            sigaction(handled_signals[i], &previous_[i], nullptr);
        active_ = false;
    }

    termios saved_{};
    std::array<struct sigaction, handled_signals.size()> previous_{};
    bool active_ = false;
};

QString input_line(const QString& prompt, bool hidden)
{
    // std::cerr is tied to std::cout, so the table is flushed before the prompt.
    std::cerr << prompt << std::flush;
    const EchoGuard guard(hidden);
    std::string line;
    std::getline(std::cin, line);
    if (hidden && isatty(STDIN_FILENO) != 0)
        std::cerr << '\n';
    if (line.empty() && std::cin.fail())
        throw std::runtime_error("Could not read input.");
    return QString::fromStdString(line);
}

// Output.

void usage()
{
    std::cout << "Usage: corvane-wifi status [--json]\n"
                 "       corvane-wifi list [--json] [--cached]\n"
                 "       corvane-wifi pick\n"
                 "       corvane-wifi connect [--open|--password-stdin] SSID\n"
                 "       corvane-wifi disconnect\n"
                 "       corvane-wifi forget --yes SSID\n"
                 "\n"
                 "Scanning and switching saved networks do not write storage. Adding or\n"
                 "forgetting a network deliberately updates the firmware Wi-Fi file once.\n";
}

void print_success(const QString& sentence, bool as_json)
{
    if (as_json)
        std::cout << "{\"ok\":true}\n";
    else
        std::cout << sentence << '\n';
}

void fill(QJsonObject& object, const Network& item)
{
    object.insert("ssid"_L1, item.ssid);
    object.insert("bssid"_L1, item.bssid);
    object.insert("signal"_L1, item.signal);
    object.insert("frequency"_L1, item.frequency);
    object.insert("security"_L1, Client::security_name(item.security));
    object.insert("supported"_L1, item.security != Security::Unsupported);
    object.insert("saved"_L1, item.saved_id >= 0);
    object.insert("saved_id"_L1, item.saved_id);
    object.insert("current"_L1, item.current);
}

QJsonObject json(const Network& item)
{
    // Inserting the keys is slow: every row starts as a copy of an object that has them.
    static const QJsonObject keys = [] {
        QJsonObject object;
        fill(object, Network());
        return object;
    }();
    QJsonObject object = keys;
    fill(object, item);
    return object;
}

void print_json(const QJsonDocument& document)
{
    std::cout << document.toJson(QJsonDocument::Compact).toStdString() << '\n';
}

void print_networks(const std::vector<Network>& items, bool as_json)
{
    if (as_json) {
        QJsonArray array;
        for (const Network& item : items)
            array.append(json(item));
        print_json(QJsonDocument(array));
        return;
    }
    int number = 0;
    for (const Network& item : items) {
        std::cout << ++number << (item.current ? ". * " : ".   ") << item.ssid << "  ["
                  << Client::security_name(item.security) << ", ";
        if (item.signal > -100)
            std::cout << item.signal << " dBm";
        else
            std::cout << "saved";
        std::cout << (item.saved_id >= 0 ? ", saved]\n" : "]\n");
    }
}

// Actions, in the order of the usage text.

void run_status(const Client& client, const QStringList&, const Switches& switches)
{
    const Status status = client.status();
    if (switches.as_json) {
        QJsonObject object;
        object.insert("state"_L1, status.state);
        object.insert("ssid"_L1, status.ssid);
        object.insert("address"_L1, status.address);
        object.insert("saved_id"_L1, status.saved_id);
        print_json(QJsonDocument(object));
        return;
    }
    std::cout << "State: " << status.state << "\nNetwork: " << status.ssid
              << "\nAddress: " << status.address << '\n';
}

void run_list(const Client& client, const QStringList& operands, const Switches& switches)
{
    if (!operands.isEmpty())
        throw std::runtime_error("list takes no network name.");
    print_networks(client.networks(!switches.cached), switches.as_json);
}

void run_pick(const Client& client, const QStringList& operands, const Switches&)
{
    if (!operands.isEmpty())
        throw std::runtime_error("pick takes no arguments.");
    const std::vector<Network> items = client.networks(true);
    print_networks(items, false);
    bool ok = false;
    const int choice = input_line(u"Network number: "_s, false).toInt(&ok);
    if (!ok || choice < 1 || static_cast<size_t>(choice) > items.size())
        throw std::runtime_error("Invalid network number.");

    const Network& item = items[static_cast<size_t>(choice) - 1];
    if (item.current) {
        std::cout << "Already connected.\n";
        return;
    }
    if (item.saved_id >= 0) {
        client.connect_saved(item.saved_id, item.ssid, connect_timeout_ms);
    } else if (item.security == Security::Unsupported) {
        throw std::runtime_error("That network uses an unsupported security mode.");
    } else {
        QString password;
        if (item.security == Security::Personal)
            password = input_line(u"Wi-Fi password: "_s, true);
        client.connect_new(item.ssid, item.security, password, connect_timeout_ms);
    }
    print_success(u"Connected to "_s + item.ssid + u'.', false);
}

const Network& find_network(const std::vector<Network>& items, const QString& ssid)
{
    for (const Network& item : items)
        if (item.ssid == ssid)
            return item;
    throw std::runtime_error("Network was not found. Run corvane-wifi list first.");
}

void run_connect(const Client& client, const QStringList& operands, const Switches& switches)
{
    if (operands.size() != 1 || (switches.open && switches.password_stdin))
        throw std::runtime_error("connect requires one SSID and one security choice.");
    const QString& ssid = operands.first();
    const std::vector<Network> items = client.networks(false);
    const Network& item = find_network(items, ssid);
    if (item.saved_id >= 0) {
        client.connect_saved(item.saved_id, ssid, connect_timeout_ms);
    } else if (switches.open) {
        client.connect_new(ssid, Security::Open, QString(), connect_timeout_ms);
    } else if (switches.password_stdin) {
        const QString password = input_line(QString(), false);
        client.connect_new(ssid, Security::Personal, password, connect_timeout_ms);
    } else {
        throw std::runtime_error("Use --password-stdin so the password does not enter shell "
                                 "history, or --open for an open network.");
    }
    print_success(u"Connected to "_s + ssid + u'.', switches.as_json);
}

void run_disconnect(const Client& client, const QStringList& operands, const Switches& switches)
{
    if (!operands.isEmpty())
        throw std::runtime_error("disconnect takes no arguments.");
    client.disconnect();
    print_success(u"Wi-Fi disconnected."_s, switches.as_json);
}

void run_forget(const Client& client, const QStringList& operands, const Switches& switches)
{
    if (!switches.yes || operands.size() != 1)
        throw std::runtime_error("Forgetting writes the saved Wi-Fi file. Use: corvane-wifi "
                                 "forget --yes SSID");
    client.forget(operands.first());
    print_success(u"Forgot "_s + operands.first() + u'.', switches.as_json);
}

/// Qt aborts after a fatal message, so this line is all the user learns.
void print_fatal_message(QtMsgType type, const QMessageLogContext&, const QString& message)
{
    if (type == QtFatalMsg)
        std::cerr << "corvane-wifi: " << message << '\n';
}

bool asks_for_help(const QString& word)
{
    return word == "help"_L1 || word == "--help"_L1 || word == "-h"_L1;
}

void run_action(const QString& action, const Client& client, const QStringList& operands,
                const Switches& switches)
{
    if (action == "status"_L1)
        return run_status(client, operands, switches);
    if (action == "list"_L1)
        return run_list(client, operands, switches);
    if (action == "pick"_L1)
        return run_pick(client, operands, switches);
    if (action == "connect"_L1)
        return run_connect(client, operands, switches);
    if (action == "disconnect"_L1)
        return run_disconnect(client, operands, switches);
    if (action == "forget"_L1)
        return run_forget(client, operands, switches);
    throw std::runtime_error("Unknown action. Run corvane-wifi --help.");
}

} // namespace

int main(int argc, char** argv)
{
    // Some Qt builds warn if the locale is not UTF-8. Text is UTF-8 here in any locale.
    const QtMessageHandler previous = qInstallMessageHandler(print_fatal_message);
    const QCoreApplication app(argc, argv);
    qInstallMessageHandler(previous);
    try {
        QStringList arguments = QCoreApplication::arguments();
        arguments.removeFirst();
        const auto take = [&arguments](QLatin1String flag) {
            return arguments.removeAll(flag) > 0;
        };
        const Switches switches{
            .as_json = take("--json"_L1),
            .cached = take("--cached"_L1),
            .password_stdin = take("--password-stdin"_L1),
            .open = take("--open"_L1),
            .yes = take("--yes"_L1),
        };
        if (arguments.isEmpty() || asks_for_help(arguments.first())) {
            usage();
            return 0;
        }
        const QString action = arguments.takeFirst();
        const Client client{QString()};
        run_action(action, client, arguments, switches);
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "corvane-wifi: " << error.what() << '\n';
        return 1;
    }
}
