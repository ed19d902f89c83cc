// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

#pragma once

#include "support/fake_supplicant.hpp"
#include "support/program.hpp"

#include <csignal>

/// `pick` at a terminal with a supplicant of its own, from the prompt for a number on.
class Pick : public FakeSupplicant, public Terminal {
public:
    explicit Pick(const Environment& more = {}, const Script& script = {},
                  Preparation prepare = nullptr)
        : FakeSupplicant(script)
        , Terminal({"pick"}, environment_for(path(), more), prepare)
    {
        wait_for("Network number: ");
        before = settings();
    }

    /// Returns at the prompt for the password, before or after echo is turned off.
    void choose_home2()
    {
        type("5\n");
        wait_for("Wi-Fi password: ");
    }
    /// Returns when the program reads the password without echo.
    void choose_home2_and_hide()
    {
        choose_home2();
        wait_for_echo(false);
        wait_until_reading();
    }

    termios before{}; ///< The settings at the first prompt.
};

/// The signals on which the program restores the terminal.
inline const Signals ending_signals = {SIGHUP, SIGINT, SIGQUIT, SIGTERM};
/// The screen up to the password.
inline const std::string asked_screen = on_screen(network_table
                                                  + "Network number: 5\nWi-Fi password: ");
inline const std::string connected_screen = on_screen("\nConnected to Home2.\n");
