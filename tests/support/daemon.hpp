// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

/// A supplicant process with a control socket and a configuration file of its own.
///
///     Daemon daemon(Kind::Real, { .profiles = profile("\"Guest\"", "key_mgmt=NONE") });
///     ...run the library or the program against daemon.path()...
///     EXPECT_EQ(daemon.ask("LIST_NETWORKS"), "...");

#pragma once

#include "support/program.hpp"
#include "support/temporary_folder.hpp"

#include <csignal>
#include <memory>
#include <string>
#include <vector>

enum class Kind {
    Simulator, ///< corvane-simulator: access points around, but invented.
    Real,      ///< wpa_supplicant itself, in a network namespace without a radio.
};

struct Setup {
    std::string profiles = {}; ///< What the configuration file holds below its settings.
    bool update_config = true;
    /// For the real one: with "none" it never connects, with "wired" it is connected to any open
    /// profile at once and comes no further than ASSOCIATED with one that has a password.
    std::string driver = "none";
    std::string address = {}; ///< Of the real one's interface: "10.66.2.48/24".
};

/// A profile as wpa_supplicant saves it. `ssid` is quoted or hexadecimal, `key` one line or more.
std::string profile(const std::string& ssid, const std::string& key, bool disabled = false);

/// Skips the test that calls it last in its SetUp() where the real one cannot run, and says why.
/// With CORVANE_REQUIRE_REAL in the environment the test fails instead. CORVANE_WPA_SUPPLICANT
/// names another program than this machine's wpa_supplicant.
void skip_without_real();

class Daemon {
public:
    Daemon(Kind kind, const Setup& setup); ///< Returns when the daemon answers.
    ~Daemon();
    Daemon(const Daemon&) = delete;
    Daemon& operator=(const Daemon&) = delete;

    static std::string simulator(); ///< The program.

    std::string folder() const; ///< Holds all of the daemon's files; goes away with it.
    std::string path() const;   ///< The control socket.
    std::string config_path() const;
    std::string config() const; ///< The file, without what only some releases write.
    std::string saved() const;  ///< The part of them that `profiles` was.

    /// The reply to one request, line end included; empty from a daemon that has ended.
    std::string ask(const std::string& request) const;
    /// Asks for 30 s until the reply holds `text`; returns the last reply, with or without it.
    std::string wait_for(const std::string& request, const std::string& text) const;

    /// SIGKILL leaves a dead socket behind.
    void end(int signal = SIGTERM);

private:
    TemporaryFolder folder_;
    std::unique_ptr<Process> process_;
};
