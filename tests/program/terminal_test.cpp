// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

// Proves that the password prompt hides what is typed, and restores the terminal settings and the
// signal handlers.

#include "support/pick.hpp"
#include "support/rows.hpp"
#include "support/temporary_folder.hpp"

#include <gtest/gtest.h>

namespace {

const std::string password = "home2-password";

termios without_echo(termios settings)
{
    settings.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    return settings;
}

class SignalAtThePassword : public testing::TestWithParam<int> { };

} // namespace

TEST(HiddenEntry, ReadsThePasswordWithoutEchoAndKeepsAllOtherSettings)
{
    Pick pick;
    termios unusual = pick.before;
    unusual.c_lflag |= ECHONL | NOFLSH;
    unusual.c_lflag &= ~static_cast<tcflag_t>(ECHOK | ECHOE);
    unusual.c_iflag ^= IXON;
    unusual.c_cc[VKILL] = '!';
    unusual.c_cc[VINTR] = 'Q' - '@';
    pick.set(unusual);
    pick.choose_home2_and_hide();
    EXPECT_EQ(pick.settings(), without_echo(unusual));
    pick.type("forget it!" + password + "\n");
    EXPECT_EQ(pick.finish(), success(asked_screen + "\r\n" + connected_screen));
    EXPECT_EQ(pick.settings(), unusual);
    EXPECT_EQ(pick.requests(), list_requests + join_home2());
}

TEST(HiddenEntry, LeavesEchoOffThatWasOff)
{
    Pick pick;
    pick.set(without_echo(pick.before));
    pick.choose_home2_and_hide();
    pick.type(password + "\n");
    EXPECT_EQ(
        pick.finish(),
        success(on_screen(network_table + "Network number: Wi-Fi password: ") + connected_screen));
    EXPECT_EQ(pick.settings(), without_echo(pick.before));
}

TEST(HiddenEntry, PromptsThenDropsWhatWasTypedAheadAndTurnsEchoOff)
{
    const std::string ahead = "typed ahead\n";
    Pick pick(fault("tcsetattr", -SIGSTOP));
    pick.choose_home2();
    pick.wait_until_stopped();
    pick.type(ahead); // only now: a terminal may echo it before or after what is printed meanwhile
    pick.wait_for(on_screen(ahead));
    pick.wait_until_typed();
    EXPECT_EQ(pick.settings(), pick.before);
    EXPECT_EQ(caught_signals(pick.pid()), ending_signals);
    kill(pick.pid(), SIGCONT);
    pick.wait_for_echo(false);
    pick.wait_until_reading();
    pick.type(password + "\n");
    EXPECT_EQ(pick.finish(), success(asked_screen + on_screen(ahead) + connected_screen));
    EXPECT_EQ(pick.requests(), list_requests + join_home2());
}

TEST(HiddenEntry, DropsWhatWasTypedAfterThePassword)
{
    Pick pick(fault("tcsetattr", -SIGSTOP, 2));
    pick.choose_home2_and_hide();
    pick.type(password + "\n");
    pick.wait_until_stopped();
    pick.type("typed without echo\n");
    pick.wait_until_typed();
    kill(pick.pid(), SIGCONT);
    EXPECT_EQ(pick.finish(), success(asked_screen + connected_screen));
    EXPECT_EQ(pick.unread(), "");
}

TEST(HiddenEntry, KeepsStandardOutputToTheTableAndTheResult)
{
    const FakeSupplicant supplicant;
    const TemporaryFolder folder;
    const std::string file = folder.path() + "/out";
    Terminal terminal({"pick"}, environment_for(supplicant.path()), nullptr,
                      {"/bin/sh", "-c", "exec \"$@\" >" + file, "sh"});
    EXPECT_EQ(terminal.finish({{"Network number: ", "5\n"}, {"Wi-Fi password: ", password + "\n"}}),
              success(on_screen("Network number: 5\nWi-Fi password: \n")));
    EXPECT_EQ(contents(file), network_table + "Connected to Home2.\n");
}

TEST(HiddenEntry, ReportsTheEndOfInput)
{
    Pick pick;
    pick.choose_home2_and_hide();
    pick.type("\x04");
    EXPECT_EQ(pick.finish(),
              (Outcome{1, asked_screen + on_screen("\ncorvane-wifi: Could not read input.\n")}));
    EXPECT_EQ(pick.settings(), pick.before);
    EXPECT_EQ(pick.requests(), list_requests);
}

TEST(HiddenEntry, CatchesTheFourSignalsForItsDurationOnly)
{
    const Signals two = {SIGHUP, SIGINT};
    Pick pick({}, {{"ADD_NETWORK", {silence()}}}, [] {
        std::signal(SIGHUP, SIG_IGN);
        std::signal(SIGINT, SIG_IGN);
    });
    EXPECT_EQ(ignored_signals(pick.pid()), two);
    EXPECT_EQ(caught_signals(pick.pid()), Signals{});
    pick.choose_home2_and_hide();
    EXPECT_EQ(ignored_signals(pick.pid()), Signals{});
    EXPECT_EQ(caught_signals(pick.pid()), ending_signals);
    pick.type(password + "\n");
    ASSERT_TRUE(pick.wait_for_request("ADD_NETWORK"));
    EXPECT_EQ(ignored_signals(pick.pid()), two);
    EXPECT_EQ(caught_signals(pick.pid()), Signals{});
    EXPECT_EQ(pick.settings(), pick.before);
}

TEST_P(SignalAtThePassword, RestoresTheTerminalAndEndsTheProgram)
{
    Pick pick;
    pick.choose_home2_and_hide();
    pick.type("half a pass");
    kill(pick.pid(), GetParam());
    EXPECT_EQ(pick.finish(), (Outcome{128 + GetParam(), asked_screen}));
    EXPECT_EQ(pick.settings(), pick.before);
    EXPECT_EQ(pick.requests(), list_requests);
}

INSTANTIATE_TEST_SUITE_P(Each, SignalAtThePassword, testing::ValuesIn(ending_signals),
                         [](const auto& row) { return signal_name(row.param); });

TEST(SignalHandler, RunsNoExitHandlers)
{
    Pick pick(fault("_exit", -SIGKILL)); // exit() does not call the _exit() that is replaced
    pick.choose_home2_and_hide();
    kill(pick.pid(), SIGTERM);
    EXPECT_EQ(pick.finish().status, -SIGKILL);
    EXPECT_EQ(pick.settings(), pick.before);
}

TEST(SignalAfterThePassword, KeepsWhatWasTyped)
{
    Pick pick(fault("tcsetattr", -SIGSTOP, 2));
    pick.choose_home2_and_hide();
    pick.type(password + "\n");
    pick.wait_until_stopped();
    pick.type("for the next program\n");
    pick.wait_until_typed();
    kill(pick.pid(), SIGTERM);
    kill(pick.pid(), SIGCONT);
    EXPECT_EQ(pick.finish(), (Outcome{143, asked_screen + "\r\n"}));
    EXPECT_EQ(pick.settings(), pick.before);
    EXPECT_EQ(pick.unread(), "for the next program\n");
}

TEST(PasswordOption, ReadsFromATerminalWithEcho)
{
    const FakeSupplicant supplicant;
    Terminal terminal({"connect", "--password-stdin", "Home2"}, environment_for(supplicant.path()));
    const termios before = terminal.settings();
    terminal.wait_until_reading();
    EXPECT_EQ(terminal.settings(), before);
    EXPECT_EQ(ignored_signals(terminal.pid()), Signals{});
    EXPECT_EQ(caught_signals(terminal.pid()), Signals{});
    terminal.type(password + "\n");
    EXPECT_EQ(terminal.finish(), success(password + "\r\nConnected to Home2.\r\n"));
    EXPECT_EQ(terminal.settings(), before);
    EXPECT_EQ(supplicant.requests(), cached_list_requests + join_home2());
}
