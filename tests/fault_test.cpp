// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

#include "support/fake_supplicant.hpp"
#include "support/program.hpp"
#include "support/replies.hpp"
#include "support/rows.hpp"

#include <gmock/gmock.h>

#include <cerrno>
#include <csignal>

struct Fault {
    std::string name;
    std::string call;
    int error;
    std::string message;
    bool sent = false; ///< The request reaches the supplicant all the same.
};

namespace {

class Transport : public testing::TestWithParam<Fault> { };

const std::string bind_failed = "Could not bind temporary Wi-Fi control socket: ";
const std::string no_reply = "Timed out waiting for wpa_supplicant.";

const std::vector<std::string> connect_home2 = {"connect", "--password-stdin", "Home2"};

void ignore_all_four()
{
    for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM})
        std::signal(signal, SIG_IGN);
}

const Dispositions four_ignored = {signal_set({SIGHUP, SIGINT, SIGQUIT, SIGTERM}), 0};

/// Picks Home2 where echo could not be turned off: the password is read all the same.
void expect_password_read_with_echo(const Environment& more)
{
    FakeSupplicant supplicant;
    Terminal terminal({"pick"}, environment_for(supplicant.path(), more), ignore_all_four);
    const termios before = terminal.settings();
    terminal.wait_for("Network number: ");
    terminal.type("5\n");
    terminal.wait_for("Wi-Fi password: ");
    terminal.wait_until_reading();
    EXPECT_EQ(terminal.settings(), before);
    EXPECT_EQ(dispositions_of(terminal.pid()), four_ignored);
    terminal.type("home2-password\n");
    EXPECT_EQ(terminal.finish(),
              success(on_screen(network_table
                                + "Network number: 5\nWi-Fi password: home2-password\n\n"
                                  "Connected to Home2.\n")));
    EXPECT_EQ(terminal.settings(), before);
    EXPECT_EQ(supplicant.requests(), scan_listing + join_home2("\"home2-password\""));
}

} // namespace

TEST_P(Transport, FailsWithItsMessageAndLeavesNothing)
{
    const auto& [name, call, error, message, sent] = GetParam();
    FakeSupplicant first;
    EXPECT_EQ(run({"list"}, environment_for(first.path(), fault(call, error))), failure(message));
    EXPECT_TRUE(!sent
                || first.wait_for_request("SCAN")); // the program may be gone before it is read
    EXPECT_EQ(first.requests(), sent ? Requests{"SCAN"} : Requests{});

    // SET_NETWORK key_mgmt is the sixth; the removal after it goes through.
    FakeSupplicant sixth;
    EXPECT_EQ(run(connect_home2, environment_for(sixth.path(), fault(call, error, 6)),
                  "home2-password\n"),
              failure(message));
    Requests requests = listing + Requests{"ADD_NETWORK", "SET_NETWORK 3 ssid 486f6d6532"};
    if (sent)
        requests.push_back("SET_NETWORK 3 key_mgmt WPA-PSK");
    EXPECT_EQ(sixth.requests(), requests + Requests{"REMOVE_NETWORK 3"});
}

INSTANTIATE_TEST_SUITE_P(
    Calls, Transport,
    testing::Values(
        Fault{"Socket", "socket", EMFILE,
              "Could not open Wi-Fi control socket: Too many open files"},
        Fault{"Bind", "bind", ENOSPC, bind_failed + "No space left on device"},
        Fault{"BindToATakenPath", "bind", EADDRINUSE, bind_failed + "Address already in use"},
        Fault{"Chmod", "chmod", EROFS,
              "Could not protect temporary Wi-Fi control socket: Read-only file system"},
        Fault{"Connect", "connect", EACCES,
              "Could not connect to wpa_supplicant: Permission denied"},
        Fault{"Send", "send", ENOBUFS, "Could not send Wi-Fi command: No buffer space available"},
        Fault{"InterruptedPoll", "poll", EINTR, no_reply, true},
        Fault{"FailingPoll", "poll", ENOMEM, no_reply, true},
        Fault{"SilentPoll", "poll", 0, no_reply, true},
        Fault{"Recv", "recv", ECONNRESET, "Could not read Wi-Fi response: Connection reset by peer",
              true}),
    by_name);

TEST(ShortSend, IsAFailure)
{
    FakeSupplicant supplicant;
    EXPECT_EQ(run({"list"}, environment_for(supplicant.path(), fault("send", 0))),
              failure("Could not send Wi-Fi command: Success"));
    EXPECT_TRUE(supplicant.wait_for_request("SCA"));
    EXPECT_EQ(supplicant.requests(), Requests{"SCA"});
}

TEST(RefusedSocket, DoesNotUseUpANumber)
{
    // Only the removal after a failure shows the number that follows it.
    FakeSupplicant supplicant;
    run(connect_home2, environment_for(supplicant.path(), fault("socket", EMFILE, 6)),
        "home2-password\n");
    EXPECT_THAT(supplicant.records().back().sender, testing::EndsWith("-5"));
    run(connect_home2, environment_for(supplicant.path(), fault("bind", ENOSPC, 6)),
        "home2-password\n");
    EXPECT_THAT(supplicant.records().back().sender, testing::EndsWith("-6"));
}

TEST(FailingRemoval, ChangesNoMessage)
{
    FakeSupplicant supplicant({{"SET_NETWORK", {reply("FAIL\n")}}});
    EXPECT_EQ(run(connect_home2, environment_for(supplicant.path(), fault("poll", 0, 6)),
                  "home2-password\n"),
              failure("Could not set Wi-Fi network name: FAIL"));
}

TEST(HiddenEntry, ReadsWithEchoWhereSettingsCannotBeRead)
{
    expect_password_read_with_echo(fault("tcgetattr", EIO));
}

TEST(HiddenEntry, ReadsWithEchoWhereSettingsCannotBeChanged)
{
    expect_password_read_with_echo(fault("tcsetattr", EIO));
}

TEST(HiddenEntry, ReadsWithEchoWhereTheFirstHandlerCannotBeInstalled)
{
    expect_password_read_with_echo(fault("sigaction", EINVAL, 1));
}

TEST(HiddenEntry, PutsOneHandlerBackWhereTheSecondCannotBeInstalled)
{
    expect_password_read_with_echo(fault("sigaction", EINVAL, 2));
}

TEST(HiddenEntry, PutsTwoHandlersBackWhereTheThirdCannotBeInstalled)
{
    expect_password_read_with_echo(fault("sigaction", EINVAL, 3));
}

TEST(HiddenEntry, PutsThreeHandlersBackWhereTheFourthCannotBeInstalled)
{
    expect_password_read_with_echo(fault("sigaction", EINVAL, 4));
}

TEST(HiddenEntry, LeavesSignalsAloneAfterAHandlerThatCannotBeInstalled)
{
    FakeSupplicant supplicant({{"ADD_NETWORK", {silence()}}});
    Terminal terminal({"pick"}, environment_for(supplicant.path(), fault("sigaction", EINVAL, 3)),
                      ignore_all_four);
    terminal.wait_for("Network number: ");
    terminal.type("5\n");
    terminal.wait_for("Wi-Fi password: ");
    terminal.wait_until_reading();
    terminal.type("home2-password\n");
    ASSERT_TRUE(supplicant.wait_for_request("ADD_NETWORK"));
    EXPECT_EQ(dispositions_of(terminal.pid()), four_ignored);
    EXPECT_EQ(terminal.finish().status, 1);
}

TEST(HiddenEntry, EndsNormallyWhereEchoCannotBeTurnedOn)
{
    FakeSupplicant supplicant;
    Terminal terminal({"pick"}, environment_for(supplicant.path(), fault("tcsetattr", EIO, 2)));
    terminal.wait_for("Network number: ");
    terminal.type("5\n");
    terminal.wait_for("Wi-Fi password: ");
    terminal.wait_for_echo(false);
    terminal.type("home2-password\n");
    EXPECT_EQ(terminal.finish(),
              success(on_screen(network_table
                                + "Network number: 5\nWi-Fi password: \nConnected to Home2.\n")));
    EXPECT_FALSE(terminal.echoes());
}

TEST(OpenEntry, TouchesNeitherTerminalNorSignals)
{
    for (const char* call : {"tcgetattr", "tcsetattr", "sigaction"}) {
        SCOPED_TRACE(call);
        FakeSupplicant supplicant({{"STATUS", {reply(connected_status("Twins", 1))}}});
        Environment environment = environment_for(supplicant.path(), fault(call, -SIGKILL));
        environment["CORVANE_WIFI_CONNECT_TIMEOUT_MS"] = "0";
        Terminal number({"pick"}, environment);
        number.type("1\n");
        EXPECT_EQ(number.finish().status, 0);
        Terminal password(connect_home2, environment);
        password.wait_until_reading();
        password.type("home2-password\n");
        EXPECT_EQ(password.finish(), success("home2-password\r\nConnected to Home2.\r\n"));
        EXPECT_EQ(run({"pick"}, environment, "5\nhome2-password\n").status, 0);
    }
}

TEST(QtAtStart, IsNotHeard)
{
    FakeSupplicant supplicant;
    EXPECT_EQ(run({"status"}, environment_for(supplicant.path(), fault("setlocale", 1))),
              success("State: COMPLETED\nNetwork: Twins\nAddress: 10.66.2.48\n"));
}
