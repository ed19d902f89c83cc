// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

#include "support/fake_supplicant.hpp"
#include "support/program.hpp"
#include "support/rows.hpp"

#include <gmock/gmock.h>

#include <csignal>

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

struct Ending {
    std::string name;
    int signal; ///< Sent, or 0.
    char key;   ///< Else typed.
    int status;
};

namespace {

const std::uint64_t ending_signals = signal_set({SIGHUP, SIGINT, SIGQUIT, SIGTERM});
const std::string asked = on_screen(network_table + "Network number: 5\nWi-Fi password: ");
const std::string connected_line = on_screen("\nConnected to Home2.\n");
const std::string bad_length = "corvane-wifi: A WPA password must contain 8 to 63 UTF-8 bytes.\n";
const std::string password = "home2-password";

/// `pick` up to the question for a password.
class Pick : public FakeSupplicant, public Terminal {
public:
    explicit Pick(const Environment& more = {}, const Script& script = {},
                  Preparation prepare = nullptr)
        : FakeSupplicant(script)
        , Terminal({"pick"}, environment_for(path(), more), prepare)
    {
        wait_for("Network number: ");
        before = settings();
        type("5\n");
        wait_for("Wi-Fi password: ");
    }

    /// As far as the read of the password, echo off.
    void hide()
    {
        wait_for_echo(false);
        wait_until_reading();
    }

    termios before{}; ///< The settings at the first question.
};

termios without_echo(termios settings)
{
    settings.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    return settings;
}

void send_signal(const Terminal& terminal, int signal)
{
    ASSERT_EQ(kill(terminal.pid(), signal), 0);
}

class SignalAtThePassword : public testing::TestWithParam<Ending> { };

} // namespace

TEST(HiddenEntry, ReadsThePasswordUnseenAndPutsEverythingBack)
{
    Pick pick;
    pick.hide();
    EXPECT_EQ(pick.settings(), without_echo(pick.before));
    pick.type(password + "\n");
    EXPECT_EQ(pick.finish(), success(asked + connected_line));
    EXPECT_EQ(pick.settings(), pick.before);
    EXPECT_EQ(pick.requests(), scan_listing + join_home2("\"home2-password\""));
}

TEST(HiddenEntry, KeepsUnusualSettings)
{
    FakeSupplicant supplicant;
    Terminal terminal({"pick"}, environment_for(supplicant.path()));
    terminal.wait_for("Network number: ");
    termios unusual = terminal.settings();
    unusual.c_lflag |= ECHONL | NOFLSH;
    unusual.c_lflag &= ~static_cast<tcflag_t>(ECHOK | ECHOE);
    unusual.c_iflag ^= IXON;
    unusual.c_cc[VKILL] = '!';
    unusual.c_cc[VINTR] = 'Q' - '@';
    terminal.set(unusual);
    terminal.type("5\n");
    terminal.wait_for("Wi-Fi password: ");
    terminal.wait_for_echo(false);
    EXPECT_EQ(terminal.settings(), without_echo(unusual));
    terminal.wait_until_reading();
    terminal.type("forget it!" + password + "\n");
    EXPECT_EQ(terminal.finish(), success(asked + "\r\n" + connected_line));
    EXPECT_EQ(terminal.settings(), unusual);
    EXPECT_EQ(supplicant.requests(), scan_listing + join_home2("\"home2-password\""));
}

TEST(HiddenEntry, LeavesEchoOffThatWasOff)
{
    FakeSupplicant supplicant;
    Terminal terminal({"pick"}, environment_for(supplicant.path()));
    terminal.wait_for("Network number: ");
    const termios silent = without_echo(terminal.settings());
    terminal.set(silent);
    terminal.type("5\n");
    terminal.wait_for("Wi-Fi password: ");
    terminal.wait_until_reading();
    terminal.type(password + "\n");
    EXPECT_EQ(
        terminal.finish(),
        success(on_screen(network_table + "Network number: Wi-Fi password: ") + connected_line));
    EXPECT_EQ(terminal.settings(), silent);
}

TEST(HiddenEntry, PromptsThenDropsWhatWasTypedAheadAndTurnsEchoOff)
{
    FakeSupplicant supplicant;
    Terminal terminal({"pick"}, environment_for(supplicant.path(), fault("tcsetattr", -SIGSTOP)));
    terminal.wait_for("Network number: ");
    const termios before = terminal.settings();
    terminal.type("5\ntyped ahead\n");
    terminal.wait_until_stopped();
    terminal.wait_for("Wi-Fi password: ");
    terminal.wait_until_typed();
    EXPECT_EQ(terminal.settings(), before);
    EXPECT_EQ(dispositions_of(terminal.pid()).caught, ending_signals);
    send_signal(terminal, SIGCONT);
    terminal.wait_for_echo(false);
    terminal.wait_until_reading();
    terminal.type(password + "\n");
    EXPECT_THAT(terminal.finish().out, EndsWith("Wi-Fi password: " + connected_line));
    EXPECT_EQ(supplicant.requests(), scan_listing + join_home2("\"home2-password\""));
}

TEST(HiddenEntry, DropsWhatWasTypedBehindThePassword)
{
    Pick pick(fault("tcsetattr", -SIGSTOP, 2));
    pick.hide();
    pick.type(password + "\n");
    pick.wait_until_stopped();
    pick.type("typed unseen\n");
    pick.wait_until_typed();
    send_signal(pick, SIGCONT);
    EXPECT_EQ(pick.finish(), success(asked + connected_line));
    EXPECT_EQ(pick.unread(), "");
}

TEST(HiddenEntry, TakesAnEmptyLineForAnEmptyPassword)
{
    Pick pick;
    pick.hide();
    pick.type("\n");
    EXPECT_EQ(pick.finish(), (Outcome{1, asked + "\r\n" + on_screen(bad_length), ""}));
    EXPECT_EQ(pick.settings(), pick.before);
}

TEST(HiddenEntry, ReportsTheEndOfInput)
{
    Pick pick;
    pick.hide();
    pick.type("\x04");
    EXPECT_EQ(pick.finish(),
              (Outcome{1, asked + "\r\ncorvane-wifi: Could not read input.\r\n", ""}));
    EXPECT_EQ(pick.settings(), pick.before);
    EXPECT_EQ(pick.requests(), scan_listing);
}

TEST(HiddenEntry, TakesWhatStandsBeforeTheEndOfInput)
{
    Pick pick;
    pick.hide();
    pick.type(password + "\x04\x04");
    EXPECT_EQ(pick.finish(), success(asked + connected_line));
    EXPECT_EQ(pick.settings(), pick.before);
    EXPECT_EQ(pick.requests(), scan_listing + join_home2("\"home2-password\""));
}

TEST(HiddenEntry, CatchesTheFourSignalsForItsDurationOnly)
{
    FakeSupplicant supplicant({{"ADD_NETWORK", {silence()}}});
    Terminal terminal({"pick"}, environment_for(supplicant.path()));
    terminal.wait_for("Network number: ");
    EXPECT_EQ(dispositions_of(terminal.pid()), (Dispositions{0, 0}));
    terminal.type("5\n");
    terminal.wait_for("Wi-Fi password: ");
    terminal.wait_for_echo(false);
    EXPECT_EQ(dispositions_of(terminal.pid()), (Dispositions{0, ending_signals}));
    terminal.wait_until_reading();
    terminal.type(password + "\n");
    ASSERT_TRUE(supplicant.wait_for_request("ADD_NETWORK"));
    EXPECT_EQ(dispositions_of(terminal.pid()), (Dispositions{0, 0}));
    EXPECT_TRUE(terminal.echoes());
    EXPECT_EQ(
        terminal.finish(),
        (Outcome{1, asked + "\r\ncorvane-wifi: Timed out waiting for wpa_supplicant.\r\n", ""}));
}

TEST(HiddenEntry, LeavesSignalsIgnoredThatWereIgnored)
{
    const Dispositions two = {signal_set({SIGHUP, SIGINT}), 0};
    Pick pick({}, {{"ADD_NETWORK", {silence()}}}, [] {
        std::signal(SIGHUP, SIG_IGN);
        std::signal(SIGINT, SIG_IGN);
    });
    pick.hide();
    EXPECT_EQ(dispositions_of(pick.pid()), (Dispositions{0, ending_signals}));
    pick.type(password + "\n");
    ASSERT_TRUE(pick.wait_for_request("ADD_NETWORK"));
    EXPECT_EQ(dispositions_of(pick.pid()), two);
    send_signal(pick, SIGINT);
    EXPECT_EQ(pick.finish().status, 1);
}

TEST_P(SignalAtThePassword, PutsTheTerminalBackAndEndsTheProgram)
{
    Pick pick;
    pick.hide();
    pick.type("half a pass");
    if (GetParam().signal != 0)
        send_signal(pick, GetParam().signal);
    else
        pick.type(std::string(1, GetParam().key));
    EXPECT_EQ(pick.finish(), (Outcome{GetParam().status, asked, ""}));
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
    // The first ending_signals install a handler each, before the signal's own it still kills. The
    // next ending_signals put the earlier dispositions back in the same order.
    for (const Step& step : {
             Step{"sigaction", 1, SIGHUP, -SIGHUP},
             Step{"sigaction", 2, SIGHUP, 129},
             Step{"sigaction", 2, SIGINT, -SIGINT},
             Step{"sigaction", 3, SIGINT, 130},
             Step{"sigaction", 3, SIGQUIT, -SIGQUIT},
             Step{"sigaction", 4, SIGQUIT, 131},
             Step{"sigaction", 4, SIGTERM, -SIGTERM},
             Step{"tcsetattr", 1, SIGTERM, 143},
             Step{"tcsetattr", 2, SIGTERM, 143},
             Step{"sigaction", 5, SIGHUP, 129},
             Step{"sigaction", 6, SIGHUP, -SIGHUP},
             Step{"sigaction", 6, SIGINT, 130},
             Step{"sigaction", 7, SIGINT, -SIGINT},
             Step{"sigaction", 7, SIGQUIT, 131},
             Step{"sigaction", 8, SIGQUIT, -SIGQUIT},
             Step{"sigaction", 8, SIGTERM, 143},
         }) {
        SCOPED_TRACE(step.call + ' ' + std::to_string(step.nth) + ' '
                     + std::to_string(step.signal));
        Pick pick(fault(step.call, -step.signal, step.nth));
        const bool after_the_read = step.nth > 4 || (step.call == "tcsetattr" && step.nth == 2);
        if (after_the_read) {
            pick.hide();
            pick.type(password + "\n");
        }
        EXPECT_EQ(pick.finish(),
                  (Outcome{step.status, asked + (after_the_read ? "\r\n" : ""), ""}));
        EXPECT_EQ(pick.settings(), pick.before);
    }
}

TEST(SignalHandler, RunsNoExitHandlers)
{
    Pick pick(fault("_exit", -SIGKILL)); // exit() does not come by there
    pick.hide();
    send_signal(pick, SIGTERM);
    EXPECT_EQ(pick.finish().status, -SIGKILL);
    EXPECT_EQ(pick.settings(), pick.before);
}

TEST(SignalBehindThePassword, KeepsWhatWasTyped)
{
    Pick pick(fault("tcsetattr", -SIGSTOP, 2));
    pick.hide();
    pick.type(password + "\n");
    pick.wait_until_stopped();
    pick.type("for the next program\n");
    pick.wait_until_typed();
    send_signal(pick, SIGTERM);
    send_signal(pick, SIGCONT);
    EXPECT_EQ(pick.finish(), (Outcome{143, asked + "\r\n", ""}));
    EXPECT_EQ(pick.settings(), pick.before);
    EXPECT_EQ(pick.unread(), "for the next program\n");
}

TEST(SignalAfterTheRestoration, LeavesTheTerminalAlone)
{
    Pick pick(fault("sigaction", -SIGSTOP, 5));
    pick.hide();
    pick.type(password + "\n");
    pick.wait_until_stopped();
    termios changed = pick.before;
    changed.c_cc[VKILL] = '!';
    pick.set(changed);
    send_signal(pick, SIGTERM);
    send_signal(pick, SIGCONT);
    EXPECT_EQ(pick.finish(), (Outcome{143, asked + "\r\n", ""}));
    EXPECT_EQ(pick.settings(), changed);
}

TEST(SignalAtTheNumber, KillsTheProgram)
{
    FakeSupplicant supplicant;
    Terminal terminal({"pick"}, environment_for(supplicant.path()));
    terminal.wait_for("Network number: ");
    terminal.wait_until_reading();
    const termios before = terminal.settings();
    send_signal(terminal, SIGINT);
    EXPECT_EQ(terminal.finish(),
              (Outcome{-SIGINT, on_screen(network_table + "Network number: "), ""}));
    EXPECT_EQ(terminal.settings(), before);
}

TEST(PasswordOption, ReadsFromATerminalWithEcho)
{
    FakeSupplicant supplicant;
    Terminal terminal({"connect", "--password-stdin", "Home2"}, environment_for(supplicant.path()));
    const termios before = terminal.settings();
    terminal.wait_until_reading();
    EXPECT_EQ(terminal.settings(), before);
    EXPECT_EQ(dispositions_of(terminal.pid()), (Dispositions{0, 0}));
    terminal.type(password + "\n");
    EXPECT_EQ(terminal.finish(), success(password + "\r\nConnected to Home2.\r\n"));
    EXPECT_EQ(terminal.settings(), before);
    EXPECT_EQ(supplicant.requests(), listing + join_home2("\"home2-password\""));
}

TEST(Password, IsNeitherShownNorHeldWhereOthersCanLook)
{
    Pick pick({}, {{"SET_NETWORK 3 psk", {silence()}}});
    pick.hide();
    pick.type(password + "\n");
    ASSERT_TRUE(pick.wait_for_request("SET_NETWORK 3 psk \"home2-password\""));
    EXPECT_THAT(process_file(pick.pid(), "cmdline"), HasSubstr("pick"));
    EXPECT_THAT(process_file(pick.pid(), "cmdline"), Not(HasSubstr(password)));
    EXPECT_THAT(process_file(pick.pid(), "environ"), HasSubstr("CORVANE_WPA_SOCKET"));
    EXPECT_THAT(process_file(pick.pid(), "environ"), Not(HasSubstr(password)));
    EXPECT_THAT(pick.finish().out, Not(HasSubstr(password)));
}
