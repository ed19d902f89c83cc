// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

// Others on the same machine, and supplicants that do not play fair.

#include "cvn/wifi.hpp"
#include "support/fake_supplicant.hpp"
#include "support/program.hpp"
#include "support/replies.hpp"
#include "support/unix_address.hpp"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <future>

using cvn::wifi::Client;
using testing::SizeIs;

namespace {

constexpr uid_t stranger = 65534;
constexpr uid_t ordinary = 65533;

const Outcome idle = success("State: DISCONNECTED\nNetwork: \nAddress: \n");
const std::string taken = "Could not bind temporary Wi-Fi control socket: Address already in use";

/// The socket file of this process's first request. Fit for a Preparation.
const char* own_path()
{
    static char path[64];
    std::snprintf(path, sizeof(path), "/tmp/corvane-wpa-%d-0", static_cast<int>(getpid()));
    return path;
}

void put_socket()
{
    mknod(own_path(), S_IFSOCK | 0777, 0);
}

void become(uid_t user)
{
    if (setresgid(user, user, user) != 0 || setresuid(user, user, user) != 0)
        _exit(126);
}

void put_socket_as_a_stranger()
{
    if (seteuid(stranger) != 0)
        _exit(126);
    put_socket();
    if (seteuid(0) != 0)
        _exit(126);
}

void run_as_ordinary_user_behind_a_stranger()
{
    put_socket_as_a_stranger();
    become(ordinary);
}

/// What a link at the path of the temporary socket points to.
char link_target[64];

void put_link()
{
    if (symlink(link_target, own_path()) != 0)
        _exit(126);
}

/// The program's answer to whoever holds its path. What stays there is removed, and told in
/// `left`.
Outcome status_behind(Preparation obstacle)
{
    const FakeSupplicant supplicant({{"STATUS", {reply(idle_status)}}});
    Outcome outcome = run({"status"}, environment_for(supplicant.path()), "", obstacle);
    for (const std::string& path : outcome.left)
        std::filesystem::remove_all(path);
    return outcome;
}

/// The error that `user` gets for a datagram to the socket file `to`; 0 where it arrives.
int error_of_forgery(const std::string& to, uid_t user)
{
    const UnixAddress address(to);
    const pid_t pid = fork();
    if (pid == 0) {
        if (user != geteuid())
            become(user);
        const int descriptor = socket(AF_UNIX, SOCK_DGRAM, 0);
        const std::string forged = "wpa_state=FORGED\n";
        const bool sent =
            sendto(descriptor, forged.data(), forged.size(), 0, address.get(), address.size) > 0;
        _exit(sent ? 0 : errno);
    }
    int status = 0;
    waitpid(pid, &status, 0);
    return WEXITSTATUS(status);
}

/// Tries to answer in the supplicant's place, then lets the supplicant answer.
void expect_no_forged_reply(uid_t forger, int error)
{
    const ManualSupplicant supplicant;
    const Environment environment = environment_for(supplicant.path());
    auto ended = std::async(std::launch::async,
                            [&] { return run({"status"}, environment, "", [] { umask(0); }); });
    const Request request = supplicant.receive();
    EXPECT_EQ(error_of_forgery(request.sender, forger), error);
    EXPECT_EQ(supplicant.send(request.sender, "wpa_state=REAL\n"), 0);
    EXPECT_EQ(ended.get(), success("State: REAL\nNetwork: \nAddress: \n"));
}

} // namespace

TEST(TemporaryPath, IsFreedFromASocket)
{
    EXPECT_EQ(status_behind(put_socket), idle);
}

TEST(TemporaryPath, IsFreedFromALinkWhoseTargetIsUntouched)
{
    const TemporaryFolder folder;
    const std::string target = folder.path() + "/target";
    target.copy(link_target, sizeof(link_target) - 1);

    EXPECT_EQ(status_behind(put_link), idle) << "dangling";
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));

    std::ofstream(target) << "precious";
    std::filesystem::permissions(target, std::filesystem::perms{0444});
    EXPECT_EQ(status_behind(put_link), idle) << "to a file";
    std::string content;
    std::getline(std::ifstream(target), content);
    EXPECT_EQ(content, "precious");
    EXPECT_EQ(std::filesystem::status(target).permissions(), std::filesystem::perms{0444});

    std::filesystem::remove(target);
    std::filesystem::create_directory(target);
    EXPECT_EQ(status_behind(put_link), idle) << "to a directory";
    EXPECT_TRUE(std::filesystem::is_empty(target));
}

TEST(TemporaryPath, OfADirectoryIsReportedAndLeft)
{
    const Preparation put_empty = [] { mkdir(own_path(), 0700); };
    const Preparation put_full = [] {
        mkdir(own_path(), 0700);
        if (chdir(own_path()) != 0 || mkdir("precious", 0700) != 0)
            _exit(126);
    };
    for (const Preparation obstacle : {put_empty, put_full}) {
        Outcome outcome = status_behind(obstacle);
        EXPECT_THAT(outcome.left, SizeIs(1));
        outcome.left.clear();
        EXPECT_EQ(outcome, failure(taken));
    }
}

TEST(TemporaryPath, OfAStrangerIsFreedByRootAndReportedByOthers)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "takes root to become others";
    EXPECT_EQ(status_behind(put_socket_as_a_stranger), idle);
    Outcome outcome = status_behind(run_as_ordinary_user_behind_a_stranger);
    if (outcome.status == 127)
        GTEST_SKIP() << "others have no access to the program";
    EXPECT_THAT(outcome.left, SizeIs(1));
    outcome.left.clear();
    EXPECT_EQ(outcome, failure(taken));
}

TEST(ForgedReply, OfAnotherProcessOfTheSameUserIsNotDelivered)
{
    expect_no_forged_reply(geteuid(), EPERM);
}

TEST(ForgedReply, OfAnotherUserIsNotDeliveredWhateverTheMask)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "takes root to become another";
    expect_no_forged_reply(stranger, EACCES);
}

TEST(ForgedReply, OfAnotherUserIsNotDeliveredBeforeTheSocketFileIsProtected)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "takes root to become another";
    const ManualSupplicant supplicant;
    Terminal terminal({"status"}, environment_for(supplicant.path(), fault("chmod", -SIGSTOP)),
                      [] { umask(0); });
    terminal.wait_until_stopped();
    const std::string socket = "/tmp/corvane-wpa-" + std::to_string(terminal.pid()) + "-0";
    EXPECT_EQ(error_of_forgery(socket, stranger), EACCES);
    kill(terminal.pid(), SIGCONT);
    EXPECT_EQ(supplicant.send(supplicant.receive().sender, "wpa_state=REAL\n"), 0);
    EXPECT_EQ(terminal.finish(), success(on_screen("State: REAL\nNetwork: \nAddress: \n")));
}

TEST(BelatedReply, FindsNobodyAndDisturbsNoLaterExchange)
{
    const ManualSupplicant supplicant;
    const Client client(QString::fromStdString(supplicant.path()));
    EXPECT_ANY_THROW(client.command("FIRST", 0));
    const std::string first = supplicant.receive().sender;
    for (const QByteArray request : {"SECOND", "THIRD"}) {
        auto reply = std::async(std::launch::async, [&] { return client.command(request, 30000); });
        const std::string sender = supplicant.receive().sender;
        EXPECT_EQ(supplicant.send(first, "to FIRST"), ENOENT);
        EXPECT_EQ(supplicant.send(sender, "to " + request.toStdString()), 0);
        supplicant.send(sender, "once more"); // which may find it gone
        EXPECT_EQ(reply.get(), "to " + request);
    }
}

TEST(NamesOfAForgedDaemon, ArePrintedAsTheyAreAndEscapedInJson)
{
    const std::string name = "\x1b[2J\x07\u202egnp.exe\u200f\x7f";
    FakeSupplicant supplicant({{"LIST_NETWORKS", {reply(profile_list("4\t" + name + "\tany\t\n"))}},
                               {"SCAN_RESULTS", {reply(scan_results(""))}}});
    const Environment environment = environment_for(supplicant.path());
    EXPECT_EQ(run({"list"}, environment),
              success("1.   " + name + "  [unsupported, saved, saved]\n"));
    EXPECT_THAT(run({"list", "--json"}, environment).out,
                testing::HasSubstr("\"ssid\":\"\\u001b[2J\\u0007\u202egnp.exe\u200f\x7f\""));
    EXPECT_EQ(run({"forget", "--yes", name}, environment), success("Forgot " + name + ".\n"));
}
