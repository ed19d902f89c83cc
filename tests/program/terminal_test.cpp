// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

// Entering a password at a terminal.

#include "support/pick.hpp"
#include "support/rows.hpp"
#include "support/temporary_folder.hpp"

#include <gmock/gmock.h>

using testing::EndsWith;

struct Ending {
    std::string name;
    int signal; ///< Sent, or 0.
    char key;   ///< Typed otherwise.
    int status;
};

namespace {

const std::string password = "home2-password";

termios without_echo(termios settings)
{
    settings.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    return settings;
}

Outcome error_at_password(const std::string& message)
{
    return {1, asked_screen + on_screen("\ncorvane-wifi: " + message + "\n"), ""};
}

class SignalAtThePassword : public testing::TestWithParam<Ending> { };

} // namespace

TEST(HiddenEntry, ReadsThePasswordWithoutEchoAndRestoresTheTerminal)
{
    Pick pick;
    pick.choose_home2_and_hide();
    EXPECT_EQ(pick.settings(), without_echo(pick.before));
    pick.type(password + "\n");
    EXPECT_EQ(pick.finish(), success(asked_screen + connected_screen));
    EXPECT_EQ(pick.settings(), pick.before);
    EXPECT_EQ(pick.requests(), scan_listing + join_home2());
}

TEST(HiddenEntry, KeepsUnusualSettings)
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
    EXPECT_EQ(pick.requests(), scan_listing + join_home2());
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
    Pick pick(fault("tcsetattr", -SIGSTOP));
    pick.type("5\ntyped ahead\n");
    pick.wait_until_stopped();
    pick.wait_for("Wi-Fi password: ");
    pick.wait_until_typed();
    EXPECT_EQ(pick.settings(), pick.before);
    EXPECT_EQ(dispositions_of(pick.pid()).caught, ending_signals);
    pick.send_signal(SIGCONT);
    pick.wait_for_echo(false);
    pick.wait_until_reading();
    pick.type(password + "\n");
    EXPECT_THAT(pick.finish().out, EndsWith("Wi-Fi password: " + connected_screen));
    EXPECT_EQ(pick.requests(), scan_listing + join_home2());
}

TEST(HiddenEntry, DropsWhatWasTypedAfterThePassword)
{
    Pick pick(fault("tcsetattr", -SIGSTOP, 2));
    pick.choose_home2_and_hide();
    pick.type(password + "\n");
    pick.wait_until_stopped();
    pick.type("typed without echo\n");
    pick.wait_until_typed();
    pick.send_signal(SIGCONT);
    EXPECT_EQ(pick.finish(), success(asked_screen + connected_screen));
    EXPECT_EQ(pick.unread(), "");
}

TEST(HiddenEntry, TreatsAnEmptyLineAsAnEmptyPassword)
{
    Pick pick;
    pick.choose_home2_and_hide();
    pick.type("\n");
    EXPECT_EQ(pick.finish(), error_at_password("A WPA password must contain 8 to 63 UTF-8 bytes."));
    EXPECT_EQ(pick.settings(), pick.before);
}

TEST(HiddenEntry, KeepsStandardOutputToTheTableAndTheResult)
{
    const FakeSupplicant supplicant;
    const TemporaryFolder folder;
    const std::string file = folder.path() + "/out";
    Terminal terminal({"pick"}, environment_for(supplicant.path()), nullptr,
                      {"/bin/sh", "-c", "exec \"$@\" >" + file, "sh"});
    terminal.finish({{"Network number: ", "5\n"}, {"Wi-Fi password: ", "home2-password\n"}});
    EXPECT_EQ(contents(file), network_table + "Connected to Home2.\n");
}

TEST(HiddenEntry, ReportsTheEndOfInput)
{
    Pick pick;
    pick.choose_home2_and_hide();
    pick.type("\x04");
    EXPECT_EQ(pick.finish(), error_at_password("Could not read input."));
    EXPECT_EQ(pick.settings(), pick.before);
    EXPECT_EQ(pick.requests(), scan_listing);
}

TEST(HiddenEntry, AcceptsAPasswordThatEndsWithTheInput)
{
    Pick pick;
    pick.choose_home2_and_hide();
    pick.type(password + "\x04\x04");
    EXPECT_EQ(pick.finish(), success(asked_screen + connected_screen));
    EXPECT_EQ(pick.settings(), pick.before);
    EXPECT_EQ(pick.requests(), scan_listing + join_home2());
}

TEST(HiddenEntry, CatchesTheFourSignalsForItsDurationOnly)
{
    const Dispositions none = {0, 0};
    Pick pick({}, {{"ADD_NETWORK", {silence()}}});
    EXPECT_EQ(dispositions_of(pick.pid()), none);
    pick.choose_home2_and_hide();
    EXPECT_EQ(dispositions_of(pick.pid()), (Dispositions{0, ending_signals}));
    pick.type(password + "\n");
    ASSERT_TRUE(pick.wait_for_request("ADD_NETWORK"));
    EXPECT_EQ(dispositions_of(pick.pid()), none);
    EXPECT_TRUE(pick.echoes());
    EXPECT_EQ(pick.finish(), error_at_password("Timed out waiting for wpa_supplicant."));
}

TEST(HiddenEntry, LeavesSignalsIgnoredThatWereIgnored)
{
    Pick pick({}, {{"ADD_NETWORK", {silence()}}}, [] {
        std::signal(SIGHUP, SIG_IGN);
        std::signal(SIGINT, SIG_IGN);
    });
    pick.choose_home2_and_hide();
    EXPECT_EQ(dispositions_of(pick.pid()), (Dispositions{0, ending_signals}));
    pick.type(password + "\n");
    ASSERT_TRUE(pick.wait_for_request("ADD_NETWORK"));
    EXPECT_EQ(dispositions_of(pick.pid()), (Dispositions{signal_set({SIGHUP, SIGINT}), 0}));
    pick.send_signal(SIGINT);
    EXPECT_EQ(pick.finish().status, 1);
}

TEST_P(SignalAtThePassword, RestoresTheTerminalAndEndsTheProgram)
{
    Pick pick;
    pick.choose_home2_and_hide();
    pick.type("half a pass");
    if (GetParam().signal != 0)
        pick.send_signal(GetParam().signal);
    else
        pick.type(std::string(1, GetParam().key));
    EXPECT_EQ(pick.finish(), (Outcome{GetParam().status, asked_screen, ""}));
    EXPECT_EQ(pick.settings(), pick.before);
    EXPECT_EQ(pick.requests(), scan_listing);
}

INSTANTIATE_TEST_SUITE_P(
    Each, SignalAtThePassword,
    testing::Values(Ending{"HangUp", SIGHUP, 0, 129}, Ending{"Interrupt", SIGINT, 0, 130},
                    Ending{"Quit", SIGQUIT, 0, 131}, Ending{"Termination", SIGTERM, 0, 143},
                    Ending{"InterruptKey", 0, '\x03', 130}, Ending{"QuitKey", 0, '\x1c', 131}),
    by_name);

TEST(SignalAtAnyStep, EndsTheProgramWithTheTerminalAsItWas)
{
    struct Step {
        std::string call;
        int nth;
        int signal;
        int status;
    };
    // Calls 1 to 4 install a handler each: a signal before its own call kills the program. Calls
    // 5 to 8 restore the earlier dispositions in the same order.
    const std::vector<Step> steps = {
        {"sigaction", 1, SIGHUP, -SIGHUP},   {"sigaction", 2, SIGHUP, 129},
        {"sigaction", 2, SIGINT, -SIGINT},   {"sigaction", 3, SIGINT, 130},
        {"sigaction", 3, SIGQUIT, -SIGQUIT}, {"sigaction", 4, SIGQUIT, 131},
        {"sigaction", 4, SIGTERM, -SIGTERM}, {"tcsetattr", 1, SIGTERM, 143},
        {"tcsetattr", 2, SIGTERM, 143},      {"sigaction", 5, SIGHUP, 129},
        {"sigaction", 6, SIGHUP, -SIGHUP},   {"sigaction", 6, SIGINT, 130},
        {"sigaction", 7, SIGINT, -SIGINT},   {"sigaction", 7, SIGQUIT, 131},
        {"sigaction", 8, SIGQUIT, -SIGQUIT}, {"sigaction", 8, SIGTERM, 143},
    };
    for (const auto& [call, nth, signal, status] : steps) {
        SCOPED_TRACE(call + ' ' + std::to_string(nth) + ' ' + std::to_string(signal));
        Pick pick(fault(call, -signal, nth));
        pick.choose_home2();
        const bool after_the_read = nth > 4 || (call == "tcsetattr" && nth == 2);
        if (after_the_read) {
            pick.wait_for_echo(false);
            pick.wait_until_reading();
            pick.type(password + "\n");
        }
        EXPECT_EQ(pick.finish(), (Outcome{status, asked_screen + (after_the_read ? "\r\n" : "")}));
        EXPECT_EQ(pick.settings(), pick.before);
    }
}

TEST(SignalHandler, RunsNoExitHandlers)
{
    Pick pick(fault("_exit", -SIGKILL)); // exit() does not call the _exit() that is replaced
    pick.choose_home2_and_hide();
    pick.send_signal(SIGTERM);
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
    pick.send_signal(SIGTERM);
    pick.send_signal(SIGCONT);
    EXPECT_EQ(pick.finish(), (Outcome{143, asked_screen + "\r\n"}));
    EXPECT_EQ(pick.settings(), pick.before);
    EXPECT_EQ(pick.unread(), "for the next program\n");
}

TEST(SignalAfterTheRestoration, LeavesTheTerminalAlone)
{
    Pick pick(fault("sigaction", -SIGSTOP, 5));
    pick.choose_home2_and_hide();
    pick.type(password + "\n");
    pick.wait_until_stopped();
    termios changed = pick.before;
    changed.c_cc[VKILL] = '!';
    pick.set(changed);
    pick.send_signal(SIGTERM);
    pick.send_signal(SIGCONT);
    EXPECT_EQ(pick.finish(), (Outcome{143, asked_screen + "\r\n"}));
    EXPECT_EQ(pick.settings(), changed);
}

TEST(SignalAtTheNumber, KillsTheProgram)
{
    Pick pick;
    pick.wait_until_reading();
    pick.send_signal(SIGINT);
    EXPECT_EQ(pick.finish(), (Outcome{-SIGINT, on_screen(network_table + "Network number: ")}));
    EXPECT_EQ(pick.settings(), pick.before);
}

TEST(PasswordOption, ReadsFromATerminalWithEcho)
{
    const FakeSupplicant supplicant;
    Terminal terminal({"connect", "--password-stdin", "Home2"}, environment_for(supplicant.path()));
    const termios before = terminal.settings();
    terminal.wait_until_reading();
    EXPECT_EQ(terminal.settings(), before);
    EXPECT_EQ(dispositions_of(terminal.pid()), (Dispositions{0, 0}));
    terminal.type(password + "\n");
    EXPECT_EQ(terminal.finish(), success(password + "\r\nConnected to Home2.\r\n"));
    EXPECT_EQ(terminal.settings(), before);
    EXPECT_EQ(supplicant.requests(), listing + join_home2());
}
