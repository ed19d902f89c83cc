// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

#include "support/daemon.hpp"

#include "support/program.hpp"
#include "support/unix_address.hpp"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <fstream>
#include <stdexcept>
#include <system_error>
#include <thread>

namespace {

using Words = std::vector<std::string>;

constexpr std::chrono::seconds patience(30);

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

pid_t start(Words words, const std::string& log)
{
    std::vector<char*> arguments;
    for (std::string& word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, log.c_str(), O_CREAT | O_WRONLY,
                                     0600);
    posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
    pid_t pid = -1;
    const int error = posix_spawnp(&pid, arguments[0], &actions, nullptr, arguments.data(),
                                   environ);
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0)
        throw std::system_error(error, std::generic_category(), arguments[0]);
    return pid;
}

std::string wpa_supplicant()
{
    const char* chosen = getenv("CORVANE_WPA_SUPPLICANT");
    return chosen == nullptr ? "wpa_supplicant" : chosen;
}

/// Why the real one cannot run here; empty when it can.
std::string obstacle()
{
    try {
        const Daemon daemon(Kind::Real, {});
    } catch (const std::runtime_error& error) {
        std::string reason = error.what();
        std::ranges::replace(reason, '\n', ' ');
        return reason;
    }
    return "";
}

struct Descriptor {
    int number;
    explicit Descriptor(int opened)
        : number(opened)
    {
    }
    ~Descriptor()
    {
        close(number);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
};

} // namespace

std::string profile(const std::string& ssid, const std::string& key, bool disabled)
{
    return "\nnetwork={\n\tssid=" + ssid + "\n\t" + key + '\n' + (disabled ? "\tdisabled=1\n" : "")
        + "}\n";
}

void skip_without_real()
{
    const std::string reason = obstacle();
    if (reason.empty())
        return;
    if (getenv("CORVANE_REQUIRE_REAL") != nullptr)
        FAIL() << reason;
    GTEST_SKIP() << reason;
}

Daemon::Daemon(Kind kind, const Setup& setup)
{
    std::ofstream(config_path(), std::ios::binary)
        << "ctrl_interface=DIR=" << folder() << "\nupdate_config=" << setup.update_config << '\n'
        << setup.profiles;
    const std::string log = folder() + "/log";
    if (kind == Kind::Simulator)
        pid_ = start({simulator(), path(), config_path()}, log);
    else
        pid_ = start(
            in_namespace(setup.address,
                         {wpa_supplicant(), "-D" + setup.driver, "-iwlan0", "-c" + config_path()}),
            log);
    if (wait_for("PING", "PONG").empty()) {
        end(SIGKILL);
        throw std::runtime_error("no answer from the daemon, which said: " + contents(log));
    }
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
    const Descriptor asker(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    const std::string own = folder() + "/asker";
    unlink(own.c_str());
    if (bind(asker.number, UnixAddress(own).get(), UnixAddress::size) != 0
        || connect(asker.number, UnixAddress(path()).get(), UnixAddress::size) != 0
        || send(asker.number, request.data(), request.size(), 0) < 0)
        return {};
    // Readable once the process has ended, which sends no reply then.
    const Descriptor process(static_cast<int>(syscall(SYS_pidfd_open, pid_, 0)));
    std::array<pollfd, 2> waiting{{{asker.number, POLLIN, 0}, {process.number, POLLIN, 0}}};
    std::array<char, 65536> reply;
    poll(waiting.data(), waiting.size(), std::chrono::milliseconds(patience).count());
    if ((waiting[0].revents & POLLIN) == 0)
        return {};
    const ssize_t size = recv(asker.number, reply.data(), reply.size(), 0);
    return {reply.data(), size < 0 ? 0 : static_cast<size_t>(size)};
}

std::string Daemon::wait_for(const std::string& request, const std::string& text) const
{
    const auto deadline = std::chrono::steady_clock::now() + patience;
    for (;;) {
        const std::string reply = ask(request);
        siginfo_t ended{};
        waitid(P_PID, static_cast<id_t>(pid_), &ended, WEXITED | WNOHANG | WNOWAIT);
        if (reply.find(text) != std::string::npos || ended.si_pid != 0
            || std::chrono::steady_clock::now() > deadline)
            return reply;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
}

void Daemon::end(int signal)
{
    if (pid_ < 0)
        return;
    kill(pid_, signal);
    const Descriptor process(static_cast<int>(syscall(SYS_pidfd_open, pid_, 0)));
    pollfd ended{process.number, POLLIN, 0};
    if (poll(&ended, 1, std::chrono::milliseconds(patience).count()) != 1) {
        ADD_FAILURE() << "the daemon did not end after signal " << signal;
        kill(pid_, SIGKILL);
    }
    while (waitpid(pid_, nullptr, 0) < 0 && errno == EINTR) { }
    pid_ = -1;
}
