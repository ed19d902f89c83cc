// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

// Many exchanges, one after another and at once. scripts/load makes many more of them.

#include "cvn/wifi.hpp"
#include "support/fake_supplicant.hpp"
#include "support/program.hpp"

#include <gtest/gtest.h>
#include <malloc.h>
#include <sys/syscall.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
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
class Mirror : public ManualSupplicant {
public:
    Mirror()
        : thread_([this] {
            for (::Request request = receive(); !request.sender.empty(); request = receive())
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
void expect_own_reply(Outcome outcome)
{
    const std::string pid = outcome.out.substr(0, outcome.out.find('\n'));
    const std::string own = "/tmp/corvane-wpa-" + pid + "-0";
    // An earlier process with the same id may have been killed and have left other numbers.
    std::erase_if(outcome.left, [&](const std::string& path) { return path != own; });
    EXPECT_EQ(outcome,
              (Outcome{0, pid + "\nState: STATUS\nNetwork: " + own + "\nAddress: \n", ""}));
}

Client client_of(const ManualSupplicant& supplicant)
{
    return {QString::fromStdString(supplicant.path())};
}

void in_threads(int threads, const std::function<void(int)>& function)
{
    std::vector<std::thread> running;
    for (int i = 0; i < threads; ++i)
        running.emplace_back(function, i);
    for (std::thread& thread : running)
        thread.join();
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
    in_threads(8, [&](int thread) {
        for (int i = 0; i < calls / 8; ++i) {
            const QByteArray request = "CALL " + QByteArray::number(i) + " OF "
                + QByteArray::number(thread);
            ASSERT_TRUE(client.command(request, 30000).startsWith("wpa_state=" + request + '\n'));
        }
    });
}

struct Use {
    size_t heap;
    std::ptrdiff_t descriptors;
    std::ptrdiff_t files; ///< In /tmp, of this process or an earlier one with the same id.
};

Use use()
{
    const struct mallinfo2 heap = mallinfo2();
    const std::filesystem::directory_iterator descriptors("/proc/self/fd");
    const std::filesystem::directory_iterator files("/tmp");
    const std::string own = "/tmp/corvane-wpa-" + std::to_string(getpid()) + '-';
    return {heap.uordblks + heap.hblkhd, std::distance(begin(descriptors), {}),
            std::count_if(begin(files), {},
                          [&](const auto& file) { return file.path().string().starts_with(own); })};
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
    std::thread opener([&] {
        char byte = 0;
        for (int i = 0; i < runs; ++i)
            EXPECT_EQ(read(gate.arrived[0], &byte, 1), 1);
        close(gate.open[1]);
    });
    in_threads(
        runs, [&](int) { expect_own_reply(run({"status"}, environment, "", print_pid_and_wait)); });
    opener.join();
    for (const int descriptor : {gate.arrived[0], gate.arrived[1], gate.open[0]})
        close(descriptor);
}

TEST(ManyCalls, GetTheirOwnRepliesAndLeaveNothingBehind)
{
    const int calls = count("CORVANE_LOAD_CALLS", 20000);
    const Mirror supplicant;
    const Client client = client_of(supplicant);
    const auto make = [&](int half) {
        call_from_one_thread(client, half);
        call_from_eight_threads(client, half);
        return use();
    };
    const Use first = make(500);
    const Use last = make((calls - 1000) / 2);
    std::cout << "1000 calls: " << first.heap << " bytes, " << first.descriptors << " descriptors\n"
              << calls << " calls: " << last.heap << " bytes, " << last.descriptors
              << " descriptors\n";
    // More arenas for threads may need that much. A leak in each call would need far more.
    EXPECT_LE(last.heap, first.heap + 65536);
    EXPECT_EQ(last.descriptors, first.descriptors);
    EXPECT_LE(last.files, first.files);
}

TEST(ManyCalls, WaitWhileTheQueueIsFull)
{
    int queue = 0;
    std::ifstream("/proc/sys/net/unix/max_dgram_qlen") >> queue;
    const int threads = queue + 10;
    const ManualSupplicant supplicant;
    const Client client = client_of(supplicant);
    const std::string sending = std::to_string(SYS_sendto) + ' ';
    std::thread supplying([&] {
        wait_until("some cannot send", [&] {
            for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
                std::string call;
                std::getline(std::ifstream(task.path() / "syscall"), call);
                if (call.starts_with(sending))
                    return true;
            }
            return false;
        });
        for (int i = 0; i < threads; ++i) {
            const Request request = supplicant.receive();
            EXPECT_EQ(supplicant.send(request.sender, "re: " + request.bytes), 0);
        }
    });
    in_threads(threads, [&](int thread) {
        const QByteArray request = "CALL " + QByteArray::number(thread);
        EXPECT_EQ(client.command(request, -1), "re: " + request);
    });
    supplying.join();
}
