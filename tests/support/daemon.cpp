// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

#include "support/daemon.hpp"

#include "support/fake_supplicant.hpp"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <thread>

namespace {

using Words = std::vector<std::string>;

/// `command` where it can do no harm: at its end wpa_supplicant takes its interface down. Every
/// step replaces the process before it, so the process that is started is the one to end.
Words in_namespace(const std::string& address, const Words& command)
{
    std::string script = "PATH=$PATH:/usr/sbin:/sbin\n"
                         "ip link add wlan0 type veth peer name peer0 && ip link set wlan0 up && "
                         "ip link set peer0 up && ";
    if (!address.empty())
        script += "ip addr add " + address + " dev wlan0 && ";
    // In a root made by chroot(2) the mounts cannot be made private, and need not be.
    Words words = {"unshare", "-n", "-m", "--propagation=unchanged"};
    if (geteuid() != 0)
        words.push_back("-r");
    // A test that crashes takes its daemon along.
    script += "exec setpriv --pdeathsig TERM \"$@\"";
    words.insert(words.end(), {"sh", "-c", script, "sh"});
    words.insert(words.end(), command.begin(), command.end());
    return words;
}

} // namespace

std::string profile(const std::string& ssid, const std::string& key, bool disabled)
{
    return "\nnetwork={\n\tssid=" + ssid + "\n\t" + key + '\n' + (disabled ? "\tdisabled=1\n" : "")
        + "}\n";
}

void skip_without_real()
{
    try {
        const Daemon daemon(Kind::Real, {});
    } catch (const std::runtime_error& error) {
        std::string reason = error.what();
        std::ranges::replace(reason, '\n', ' ');
        if (getenv("CORVANE_REQUIRE_REAL") != nullptr)
            FAIL() << reason;
        GTEST_SKIP() << reason;
    }
}

Daemon::Daemon(Kind kind, const Setup& setup)
{
    std::ofstream(config_path(), std::ios::binary)
        << "ctrl_interface=DIR=" << folder() << "\nupdate_config=" << setup.update_config << '\n'
        << setup.profiles;
    Words words = {simulator(), path(), config_path()};
    if (kind == Kind::Real) {
        const char* chosen = getenv("CORVANE_WPA_SUPPLICANT");
        const std::string program = chosen == nullptr ? "wpa_supplicant" : chosen;
        words = in_namespace(setup.address,
                             {program, "-D" + setup.driver, "-iwlan0", "-c" + config_path()});
    }
    const std::vector<char*> arguments = pointers(words);
    const std::string log = folder() + "/log";
    process_ = std::make_unique<Process>([&] {
        const int output = open(log.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
        dup2(output, STDOUT_FILENO);
        dup2(output, STDERR_FILENO);
        execvp(arguments[0], arguments.data());
        dprintf(STDERR_FILENO, "%s cannot be run", arguments[0]);
        _exit(127);
    });
    if (wait_for("PING", "PONG").empty())
        throw std::runtime_error("no answer from the daemon, which said: " + contents(log));
}

Daemon::~Daemon()
{
    end();
}

std::string Daemon::simulator()
{
    return CORVANE_SIMULATOR;
}

std::string Daemon::folder() const
{
    return folder_.path();
}

std::string Daemon::path() const
{
    return folder() + "/wlan0";
}

std::string Daemon::config_path() const
{
    return folder() + "/wpa.conf";
}

std::string Daemon::config() const
{
    // Some releases write this line into each profile, others cannot read it.
    const std::string line = "\tmesh_fwding=1\n";
    std::string config = contents(config_path());
    for (size_t at = config.find(line); at != std::string::npos; at = config.find(line))
        config.erase(at, line.size());
    return config;
}

std::string Daemon::saved() const
{
    const std::string all = config();
    const size_t start_of_profiles = all.find("\nnetwork={");
    return start_of_profiles == std::string::npos ? "" : all.substr(start_of_profiles);
}

std::string Daemon::ask(const std::string& request) const
{
    const Peer asker;
    if (asker.send(path(), request) != 0)
        return {};
    Request answer;
    wait_until("the daemon has answered " + request, [&] {
        const bool ended = process_->has_ended();
        answer = asker.receive(100);
        return ended || !answer.sender.empty();
    });
    return answer.bytes;
}

std::string Daemon::wait_for(const std::string& request, const std::string& text) const
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    for (;;) {
        const bool ended = process_->has_ended();
        const std::string reply = ask(request);
        if (reply.find(text) != std::string::npos || ended
            || std::chrono::steady_clock::now() > deadline)
            return reply;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
}

void Daemon::end(int signal)
{
    process_->end_by(signal);
}
