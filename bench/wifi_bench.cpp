// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

/// What the library costs within a process, beside an exchange of datagrams that is nothing else.

#include "cvn/wifi.hpp"
#include "exchange.hpp"
#include "support/fake_supplicant.hpp"
#include "support/replies.hpp"

#include <benchmark/benchmark.h>

#include <sys/resource.h>

#include <string>

namespace {

using cvn::wifi::Client;
using cvn::wifi::Security;

const std::string cafe_status = connected_status("Caf\xc3\xa9", 0);

/// As many networks as fit in a reply of wpa_supplicant.
QByteArray full_scan()
{
    std::string rows;
    for (int i = 10; i < 77; ++i)
        rows += "02:00:00:00:00:" + std::to_string(i) + "\t2437\t-" + std::to_string(i)
            + "\t[WPA2-PSK-CCMP][ESS]\tNetwork " + std::to_string(i) + '\n';
    return QByteArray::fromStdString(scan_results(rows));
}

/// As many networks as fit in what command() reads, whose merging is the slowest.
QByteArray largest_scan()
{
    QByteArray scan;
    for (int i = 0; scan.size() < 65536 - 16; ++i)
        scan += "\t1\t1\t\t" + QByteArray::number(i, 36) + '\n';
    return scan;
}

double user_microseconds()
{
    rusage usage{};
    getrusage(RUSAGE_THREAD, &usage); // without the supplicant's
    return 1e6 * static_cast<double>(usage.ru_utime.tv_sec)
        + static_cast<double>(usage.ru_utime.tv_usec);
}

void command(benchmark::State& state, const std::string& path)
{
    const Client client(QString::fromStdString(path));
    for (auto _ : state)
        benchmark::DoNotOptimize(client.command("STATUS", 3000));
}

void bare_exchange(benchmark::State& state, const std::string& path)
{
    static char reply[65536];
    for (auto _ : state)
        benchmark::DoNotOptimize(exchange(path.c_str(), "STATUS", reply, sizeof reply));
}

/// The time outside the kernel and the other side is `user_us`.
void connect_new(benchmark::State& state, const std::string& path)
{
    const Client client(QString::fromStdString(path));
    const double before = user_microseconds();
    for (auto _ : state)
        client.connect_new(QStringLiteral("Caf\u00e9"), Security::Personal, "cafe-password", 15000);
    state.counters["user_us"] = benchmark::Counter(user_microseconds() - before,
                                                   benchmark::Counter::kAvgIterations);
}

void parse_status(benchmark::State& state)
{
    const QByteArray reply = QByteArray::fromStdString(cafe_status);
    for (auto _ : state)
        benchmark::DoNotOptimize(Client::parse_status(reply));
}

void parse_networks(benchmark::State& state, const QByteArray& scan, const QByteArray& saved)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(Client::parse_networks(scan, saved, {}));
}

} // namespace

int main(int argc, char** argv)
{
    const FakeSupplicant supplicant({{"STATUS", {reply(cafe_status)}}});
    const QByteArray saved = QByteArray::fromStdString(
        profile_list("0\tNetwork 10\tany\t[CURRENT]\n1\tNetwork 11\tany\t[DISABLED]\n"));
    benchmark::RegisterBenchmark("command", command, supplicant.path())->UseRealTime();
    benchmark::RegisterBenchmark("bare exchange", bare_exchange, supplicant.path())->UseRealTime();
    benchmark::RegisterBenchmark("connect_new", connect_new, supplicant.path())->UseRealTime();
    benchmark::RegisterBenchmark("parse_status", parse_status);
    benchmark::RegisterBenchmark("parse_networks, 67 rows", parse_networks, full_scan(), saved);
    benchmark::RegisterBenchmark("parse_networks, 65536 bytes", parse_networks, largest_scan(),
                                 QByteArray());
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
