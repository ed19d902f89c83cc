// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

// Proves that no other user or process can forge a reply, misuse the path of the program's socket
// file, or disturb a later exchange.

#include "cvn/wifi.hpp"
#include "support/fake_supplicant.hpp"
#include "support/program.hpp"
#include "support/replies.hpp"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <future>
#include <iostream>

using cvn::wifi::Client;

namespace {

constexpr uid_t other_user = 65534;
constexpr uid_t ordinary_user = 65533;

const Outcome twins = success("State: COMPLETED\nNetwork: Twins\nAddress: 10.66.2.48\n");

void become(uid_t user)
{
    if (setresgid(user, user, user) != 0 || setresuid(user, user, user) != 0)
        _exit(126);
}

void put_socket_of_other_user()
{
    if (seteuid(other_user) != 0)
        _exit(126);
    mknod(own_socket_path(0), S_IFSOCK | 0777, 0);
    if (seteuid(0) != 0)
        _exit(126);
}

char link_target[64];

void put_link()
{
    if (symlink(link_target, own_socket_path(0)) != 0)
        _exit(126);
}

/// Runs `status` with an obstacle at the path of its socket.
Outcome status_with(Preparation obstacle)
{
    return run({"status"}, environment_for(FakeSupplicant().path()), "", obstacle);
}

void expect_obstacle_left(const Outcome& outcome)
{
    Outcome expected = failure(
        "Could not bind temporary Wi-Fi control socket: Address already in use");
    expected.left = {"0"};
    EXPECT_EQ(outcome, expected);
}

Request next_request(const Peer& supplicant)
{
    Request request = supplicant.receive();
    if (request.sender.empty())
        throw std::runtime_error("timed out waiting until a request has arrived");
    return request;
}

/// The error number when `user` sends a forged reply to the socket file `to`; 0 if it arrives.
int error_of_forgery(const std::string& to, uid_t user)
{
    const pid_t pid = fork();
    if (pid == 0) {
        if (user != geteuid())
            become(user);
        try {
            _exit(Peer().send(to, "wpa_state=FORGED\n"));
        } catch (const std::exception& error) {
            std::cerr << error.what() << '\n';
            _exit(126);
        }
    }
    return status_of(pid);
}

/// Sends a forged reply that fails with `error`, then the real one.
void expect_no_forged_reply(uid_t forger, int error)
{
    const Peer supplicant;
    const Environment environment = environment_for(supplicant.path());
    auto ended = std::async(std::launch::async,
                            [&] { return run({"status"}, environment, "", [] { umask(0); }); });
    const Request request = next_request(supplicant);
    EXPECT_EQ(error_of_forgery(request.sender, forger), error);
    EXPECT_EQ(supplicant.send(request.sender, "wpa_state=REAL\n"), 0);
    EXPECT_EQ(ended.get(), success("State: REAL\nNetwork: \nAddress: \n"));
}

class OtherUser : public testing::Test {
protected:
    void SetUp() override
    {
        if (!may_change_user())
            GTEST_SKIP() << "only root can become another user";
    }
};

} // namespace

TEST(TemporaryPath, IsFreedFromALinkWhoseTargetIsUntouched)
{
    const TemporaryFolder folder;
    const std::string target = folder.path() + "/target";
    target.copy(link_target, sizeof(link_target) - 1);

    EXPECT_EQ(status_with(put_link), twins) << "dangling";
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));

    std::ofstream(target) << "precious";
    std::filesystem::permissions(target, std::filesystem::perms{0444});
    EXPECT_EQ(status_with(put_link), twins) << "to a file";
    EXPECT_EQ(contents(target), "precious");
    EXPECT_EQ(std::filesystem::status(target).permissions(), std::filesystem::perms{0444});
}

TEST(TemporaryPath, OfADirectoryIsReportedAndLeft)
{
    expect_obstacle_left(status_with([] { mkdir(own_socket_path(0), 0700); }));
}

TEST_F(OtherUser, LeavesASocketThatRootRemovesAndOthersReport)
{
    EXPECT_EQ(status_with(put_socket_of_other_user), twins);
    const Outcome outcome = status_with([] {
        put_socket_of_other_user();
        become(ordinary_user);
    });
    if (outcome.status == 127)
        GTEST_SKIP() << "other users have no access to the program";
    expect_obstacle_left(outcome);
}

TEST(ForgedReply, OfAnotherProcessOfTheSameUserIsNotDelivered)
{
    expect_no_forged_reply(geteuid(), EPERM);
}

TEST_F(OtherUser, ForgesNoReplyWhateverTheMask)
{
    expect_no_forged_reply(other_user, EACCES);
}

TEST_F(OtherUser, ForgesNoReplyBeforeTheSocketFileIsProtected)
{
    const Peer supplicant;
    Terminal terminal({"status"}, environment_for(supplicant.path(), fault("chmod", -SIGSTOP)),
                      [] { umask(0); });
    terminal.wait_until_stopped();
    const std::string socket = "/tmp/corvane-wpa-" + std::to_string(terminal.pid()) + "-0";
    EXPECT_EQ(error_of_forgery(socket, other_user), EACCES);
    kill(terminal.pid(), SIGCONT);
    EXPECT_EQ(supplicant.send(next_request(supplicant).sender, "wpa_state=REAL\n"), 0);
    EXPECT_EQ(terminal.finish(), success(on_screen("State: REAL\nNetwork: \nAddress: \n")));
}

TEST(LateReply, FindsNobodyAndDisturbsNoLaterExchange)
{
    const Peer supplicant;
    const Client client(QString::fromStdString(supplicant.path()));
    EXPECT_ANY_THROW(client.command("FIRST", 0));
    const std::string first = next_request(supplicant).sender;
    for (const QByteArray request : {"SECOND", "THIRD"}) {
        auto reply = std::async(std::launch::async, [&] { return client.command(request, 30000); });
        const std::string sender = next_request(supplicant).sender;
        EXPECT_EQ(supplicant.send(first, "to FIRST"), ENOENT);
        EXPECT_EQ(supplicant.send(sender, "to " + request.toStdString()), 0);
        supplicant.send(sender, "again"); // the socket may be closed by now
        EXPECT_EQ(reply.get(), "to " + request);
    }
}

TEST(NamesOfAForgedDaemon, ArePrintedAsTheyAreAndEscapedInJson)
{
    const std::string name = "\x1b[2J\x07\u202egnp.exe\u200f\x7f";
    Script script = replies("LIST_NETWORKS", profile_list("4\t" + name + "\tany\t\n"));
    script.merge(no_networks());
    const FakeSupplicant supplicant(script);
    const Environment environment = environment_for(supplicant.path());
    EXPECT_EQ(run({"list"}, environment),
              success("1.   " + name + "  [unsupported, saved, saved]\n"));
    EXPECT_THAT(run({"list", "--json"}, environment).out,
                testing::HasSubstr("\"ssid\":\"\\u001b[2J\\u0007\u202egnp.exe\u200f\x7f\""));
    EXPECT_EQ(run({"forget", "--yes", name}, environment), success("Forgot " + name + ".\n"));
}
