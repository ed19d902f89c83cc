// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

/// What the library costs within a process, beside an exchange of datagrams in plain C.

#include "cvn/wifi.hpp"

#include <benchmark/benchmark.h>

#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <string>

// Of exchange.c.
extern "C" ssize_t exchange(const char* server, const char* request, char* reply, size_t size);
extern "C" int exchange_main(int argc, char** argv);

namespace {

using cvn::wifi::Client;
using cvn::wifi::Security;

std::string server_path;

QByteArray ask(const char* request)
{
    QByteArray reply(65536, Qt::Uninitialized);
    reply.truncate(exchange(server_path.c_str(), request, reply.data(), 65536));
    return reply;
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
    getrusage(RUSAGE_SELF, &usage);
    return 1e6 * static_cast<double>(usage.ru_utime.tv_sec)
        + static_cast<double>(usage.ru_utime.tv_usec);
}

void command(benchmark::State& state)
{
    const Client client(QString::fromStdString(server_path));
    for (auto _ : state)
        benchmark::DoNotOptimize(client.command("STATUS", 3000));
}

void bare_c(benchmark::State& state)
{
    static char reply[65536];
    for (auto _ : state)
        benchmark::DoNotOptimize(exchange(server_path.c_str(), "STATUS", reply, sizeof(reply)));
}

/// The time outside the kernel and the other side is `user_us`.
void connect_new(benchmark::State& state)
{
    const Client client(QString::fromStdString(server_path));
    const double before = user_microseconds();
    for (auto _ : state)
        client.connect_new(QStringLiteral("Caf\u00e9"), Security::Personal, "cafe-password", 15000);
    state.counters["user_us"] = benchmark::Counter(user_microseconds() - before,
                                                   benchmark::Counter::kAvgIterations);
}

void parse_status(benchmark::State& state)
{
    const QByteArray reply = ask("STATUS");
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
    char folder[] = "/tmp/corvane-bench-XXXXXX";
    if (mkdtemp(folder) == nullptr)
        return 1;
    server_path = std::string(folder) + "/wlan0";
    const pid_t server = fork();
    if (server == 0) {
        std::string option = "--serve";
        char* arguments[] = {argv[0], option.data(), server_path.data()};
        _exit(exchange_main(3, arguments));
    }
    while (access(server_path.c_str(), F_OK) != 0)
        usleep(1000);

    benchmark::RegisterBenchmark("command", command)->UseRealTime();
    benchmark::RegisterBenchmark("bare C", bare_c)->UseRealTime();
    benchmark::RegisterBenchmark("connect_new", connect_new)->UseRealTime();
    benchmark::RegisterBenchmark("parse_status", parse_status);
    benchmark::RegisterBenchmark("parse_networks, 67 rows", parse_networks, ask("SCAN_RESULTS"),
                                 ask("LIST_NETWORKS"));
    benchmark::RegisterBenchmark("parse_networks, 65536 bytes", parse_networks, largest_scan(),
                                 QByteArray());
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();

    kill(server, SIGKILL);
    unlink(server_path.c_str());
    rmdir(folder);
}
