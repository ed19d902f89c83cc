// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

// Proves that many exchanges, in sequence and at once, each get their own reply and leak nothing.
// scripts/load runs many more.

#include "cvn/wifi.hpp"
#include "support/fake_supplicant.hpp"
#include "support/program.hpp"

#include <gtest/gtest.h>
#include <malloc.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <future>
#include <iostream>
#include <iterator>
#include <thread>
#include <vector>

using cvn::wifi::Client;

namespace {

int count(const char* name, int quick)
{
    const char* value = std::getenv(name);
    return value == nullptr ? quick : std::atoi(value);
}

/// Reports a connection to a network named after the sender, so that no two get the same reply.
class Mirror : public Peer {
public:
    Mirror()
        : thread_([this] {
            for (::Request request = receive(-1); !request.sender.empty(); request = receive(-1))
                EXPECT_EQ(send(request.sender,
                               "wpa_state=" + request.bytes + "\nssid=" + request.sender + "\n"),
                          0);
        })
    {
    }
    ~Mirror()
    {
        stop();
        thread_.join();
    }

private:
    std::thread thread_;
};

/// Many processes wait here for each other before they become the program.
struct Gate {
    int arrived[2];
    int open[2];
} gate;

void print_pid()
{
    dprintf(STDOUT_FILENO, "%d\n", static_cast<int>(getpid()));
}

void print_pid_and_wait()
{
    print_pid();
    char byte = 0;
    close(gate.open[1]);
    if (write(gate.arrived[1], "", 1) != 1 || read(gate.open[0], &byte, 1) != 0)
        _exit(126);
}

/// Checks that the program, which printed its process id first, got its own reply.
void expect_own_reply(const Outcome& outcome)
{
    const std::string pid = outcome.out.substr(0, outcome.out.find('\n'));
    const std::string own = "/tmp/corvane-wpa-" + pid + "-0";
    EXPECT_EQ(outcome,
              (Outcome{0, pid + "\nState: STATUS\nNetwork: " + own + "\nAddress: \n", ""}));
}

void call_from_one_thread(const Client& client, int calls)
{
    const QString path = "/tmp/corvane-wpa-" + QString::number(getpid()) + '-';
    const int first = client.status().ssid.sliced(path.size()).toInt();
    for (int i = 1; i < calls; ++i)
        ASSERT_EQ(client.status().ssid, path + QString::number(first + i));
}

void call_from_eight_threads(const Client& client, int calls)
{
    const auto call = [&](int thread) {
        for (int i = 0; i < calls / 8; ++i) {
            const QByteArray request = "CALL " + QByteArray::number(i) + " OF "
                + QByteArray::number(thread);
            ASSERT_TRUE(client.command(request, 30000).startsWith("wpa_state=" + request + '\n'));
        }
    };
    std::vector<std::future<void>> threads;
    for (int thread = 0; thread < 8; ++thread)
        threads.push_back(std::async(std::launch::async, call, thread));
    for (std::future<void>& thread : threads)
        thread.get();
}

struct Resources {
    size_t heap;
    std::ptrdiff_t descriptors;
    size_t socket_files;
};

size_t heap_in_use()
{
#ifdef __GLIBC__
    const struct mallinfo2 heap = mallinfo2();
    return heap.uordblks + heap.hblkhd;
#else
    return 0; // musl does not say
#endif
}

Resources resources_in_use(int calls)
{
    const std::filesystem::directory_iterator descriptors("/proc/self/fd");
    return {heap_in_use(), std::distance(begin(descriptors), {}),
            socket_files_of(getpid(), calls).size()};
}

} // namespace

TEST(ManyRuns, OneAfterAnotherGetTheirOwnReplies)
{
    const Mirror supplicant;
    const Environment environment = environment_for(supplicant.path());
    for (int left = count("CORVANE_LOAD_RUNS", 100); left > 0 && !HasFailure(); --left)
        expect_own_reply(run({"status"}, environment, "", print_pid));
}

TEST(ManyRuns, AtOnceGetTheirOwnReplies)
{
    const int runs = count("CORVANE_LOAD_AT_ONCE", 50);
    const Mirror supplicant;
    const Environment environment = environment_for(supplicant.path());
    ASSERT_EQ(pipe(gate.arrived) + pipe(gate.open), 0);
    std::vector<std::future<Outcome>> outcomes;
    for (int i = 0; i < runs; ++i)
        outcomes.push_back(std::async(std::launch::async, [&] {
            return run({"status"}, environment, "", print_pid_and_wait);
        }));
    wait_until("all runs have started", [&] {
        int arrived = 0;
        ioctl(gate.arrived[0], FIONREAD, &arrived);
        return arrived == runs;
    });
    close(gate.open[1]);
    for (std::future<Outcome>& outcome : outcomes)
        expect_own_reply(outcome.get());
    for (const int descriptor : {gate.arrived[0], gate.arrived[1], gate.open[0]})
        close(descriptor);
}

TEST(ManyCalls, GetTheirOwnRepliesAndLeaveNothingBehind)
{
    const int calls = count("CORVANE_LOAD_CALLS", 4000);
    const Mirror supplicant;
    const Client client(QString::fromStdString(supplicant.path()));
    const auto make = [&](int half) {
        call_from_one_thread(client, half);
        call_from_eight_threads(client, half);
        return resources_in_use(calls);
    };
    const Resources first = make(500);
    const Resources last = make((calls - 1000) / 2);
    std::cout << "1000 calls: " << first.heap << " bytes, " << first.descriptors << " descriptors\n"
              << calls << " calls: " << last.heap << " bytes, " << last.descriptors
              << " descriptors\n";
    // More arenas for threads may need that much. A leak in each call would need far more.
    EXPECT_LE(last.heap, first.heap + 65536);
    EXPECT_EQ(last.descriptors, first.descriptors);
    EXPECT_EQ(last.socket_files, 0U);
}

TEST(ManyCalls, WaitWhileTheQueueIsFull)
{
    int queue = 0;
    std::ifstream("/proc/sys/net/unix/max_dgram_qlen") >> queue;
    const int threads = queue + 10;
    std::vector<std::future<QByteArray>> replies; // end with the supplicant at the latest
    const Peer supplicant;
    const Client client(QString::fromStdString(supplicant.path()));
    for (int thread = 0; thread < threads; ++thread)
        replies.push_back(std::async(std::launch::async, [client, thread] {
            return client.command("CALL " + QByteArray::number(thread), 30000);
        }));
    const std::string sending = std::to_string(SYS_sendto) + ' ';
    wait_until("some cannot send", [&] {
        return std::ranges::any_of(
            std::filesystem::directory_iterator("/proc/self/task"), [&](const auto& task) {
                return contents(task.path() / "syscall").starts_with(sending);
            });
    });
    for (int thread = 0; thread < threads; ++thread) {
        const Request request = supplicant.receive();
        ASSERT_FALSE(request.sender.empty()) << "no request has arrived";
        EXPECT_EQ(supplicant.send(request.sender, "re: " + request.bytes), 0);
    }
    for (int thread = 0; thread < threads; ++thread)
        EXPECT_EQ(replies[static_cast<size_t>(thread)].get(),
                  "re: CALL " + QByteArray::number(thread));
}
