// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

#include "support/program.hpp"

#include <fcntl.h>
#include <glob.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utmp.h>

#include <array>
#include <chrono>
#include <csignal>
#include <stdexcept>
#include <system_error>
#include <thread>

namespace {

constexpr std::chrono::seconds patience(30);

/// Made before the fork: a child of a process with threads must not allocate.
class Invocation {
public:
    Invocation(const std::vector<std::string>& arguments, const Environment& environment)
    {
        words_.push_back(CORVANE_WIFI);
        words_.insert(words_.end(), arguments.begin(), arguments.end());
        for (const auto& [name, value] : environment)
            settings_.push_back(name + '=' + value);
        argv_ = pointers(words_);
        envp_ = pointers(settings_);
    }

    [[noreturn]] void execute()
    {
        execve(argv_[0], argv_.data(), envp_.data());
        _exit(127);
    }

private:
    static std::vector<char*> pointers(std::vector<std::string>& strings)
    {
        std::vector<char*> result;
        for (std::string& string : strings)
            result.push_back(string.data());
        result.push_back(nullptr);
        return result;
    }

    std::vector<std::string> words_;
    std::vector<std::string> settings_;
    std::vector<char*> argv_;
    std::vector<char*> envp_;
};

std::vector<std::string> files_left_by(pid_t pid)
{
    glob_t found{};
    glob(("/tmp/corvane-wpa-" + std::to_string(pid) + "-*").c_str(), 0, nullptr, &found);
    std::vector<std::string> result(found.gl_pathv, found.gl_pathv + found.gl_pathc);
    globfree(&found);
    return result;
}

int wait_for_end(pid_t pid)
{
    int status = 0;
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR) { }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

struct Pipe {
    std::array<int, 2> ends{};
    Pipe()
    {
        if (pipe2(ends.data(), O_CLOEXEC) != 0)
            throw std::system_error(errno, std::generic_category(), "pipe2");
    }
    ~Pipe()
    {
        close_end(0);
        close_end(1);
    }
    void close_end(size_t end)
    {
        if (ends[end] >= 0)
            close(ends[end]);
        ends[end] = -1;
    }
};

std::string read_all(int descriptor)
{
    std::string result;
    std::array<char, 65536> buffer;
    ssize_t size = 0;
    while ((size = read(descriptor, buffer.data(), buffer.size())) > 0)
        result.append(buffer.data(), static_cast<size_t>(size));
    return result;
}

} // namespace

std::ostream& operator<<(std::ostream& stream, const Outcome& outcome)
{
    stream << "status " << outcome.status << "\nout [" << outcome.out << "]\nerr [" << outcome.err
           << "]";
    for (const std::string& path : outcome.left)
        stream << "\nleft " << path;
    return stream;
}

Environment environment_for(const std::string& socket, const Environment& more)
{
    Environment result = more;
    for (const char* inherited : { "ASAN_OPTIONS", "TSAN_OPTIONS", "GCOV_PREFIX" })
        if (const char* value = getenv(inherited))
            result.emplace(inherited, value);
    result.merge(Environment{
        { "CORVANE_WPA_SOCKET", socket },
        { "CORVANE_WIFI_SCAN_DELAY_MS", "0" },
        { "CORVANE_WIFI_CONNECT_TIMEOUT_MS", "200" },
        { "LC_ALL", "C" },
    });
    return result;
}

Environment fault(const std::string& call, int error, int nth)
{
    return {
        { "LD_PRELOAD", FAULTS_LIBRARY },
        { "CORVANE_TEST_FAULT", call + ' ' + std::to_string(nth) + ' ' + std::to_string(error) },
        { "ASAN_OPTIONS", "verify_asan_link_order=0" },
    };
}

Outcome run(const std::vector<std::string>& arguments, const Environment& environment,
            const std::string& input)
{
    Pipe in;
    Pipe out;
    Pipe err;
    Invocation invocation(arguments, environment);
    const pid_t pid = fork();
    if (pid == 0) {
        dup2(in.ends[0], STDIN_FILENO);
        dup2(out.ends[1], STDOUT_FILENO);
        dup2(err.ends[1], STDERR_FILENO);
        invocation.execute();
    }
    in.close_end(0);
    out.close_end(1);
    err.close_end(1);
    // A program that does not read its input may be gone before it is written.
    signal(SIGPIPE, SIG_IGN);
    [[maybe_unused]] const ssize_t written = write(in.ends[1], input.data(), input.size());
    in.close_end(1);

    Outcome outcome;
    std::thread errors([&] { outcome.err = read_all(err.ends[0]); });
    outcome.out = read_all(out.ends[0]);
    errors.join();
    outcome.status = wait_for_end(pid);
    outcome.left = files_left_by(pid);
    return outcome;
}

Terminal::Terminal(const std::vector<std::string>& arguments, const Environment& environment)
{
    if (openpty(&master_, &slave_, nullptr, nullptr, nullptr) != 0)
        throw std::system_error(errno, std::generic_category(), "openpty");
    fcntl(master_, F_SETFD, FD_CLOEXEC);
    fcntl(slave_, F_SETFD, FD_CLOEXEC);
    Invocation invocation(arguments, environment);
    pid_ = fork();
    if (pid_ == 0) {
        login_tty(dup(slave_));
        invocation.execute();
    }
}

Terminal::~Terminal()
{
    if (pid_ > 0) {
        kill(pid_, SIGKILL);
        wait_for_end(pid_);
    }
    close(master_);
    close(slave_);
}

termios Terminal::settings() const
{
    termios result{};
    tcgetattr(slave_, &result);
    return result;
}

bool Terminal::echoes() const
{
    return (settings().c_lflag & ECHO) != 0;
}

void Terminal::type(const std::string& keys)
{
    if (write(master_, keys.data(), keys.size()) != static_cast<ssize_t>(keys.size()))
        throw std::system_error(errno, std::generic_category(), "write");
}

bool Terminal::read_some(int timeout_ms)
{
    pollfd waiting{ master_, POLLIN, 0 };
    if (poll(&waiting, 1, timeout_ms) <= 0)
        return false;
    std::array<char, 4096> buffer;
    const ssize_t size = read(master_, buffer.data(), buffer.size());
    if (size > 0)
        screen_.append(buffer.data(), static_cast<size_t>(size));
    return size > 0;
}

void Terminal::wait_for(const std::string& text)
{
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (screen_.find(text) == std::string::npos) {
        read_some(100);
        if (std::chrono::steady_clock::now() > deadline)
            throw std::runtime_error("no \"" + text + "\" in: " + screen_);
    }
}

void Terminal::wait_for_echo(bool on)
{
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (echoes() != on) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        if (std::chrono::steady_clock::now() > deadline)
            throw std::runtime_error("echo stayed as it was");
    }
}

Outcome Terminal::finish()
{
    // The terminal stays open on our side, so the end of the program is asked for, not read.
    siginfo_t ended{};
    do {
        read_some(10);
        ended.si_pid = 0;
        waitid(P_PID, static_cast<id_t>(pid_), &ended, WEXITED | WNOHANG | WNOWAIT);
    } while (ended.si_pid == 0);
    while (read_some(0)) { }
    Outcome outcome{ wait_for_end(pid_), screen_, "", files_left_by(pid_) };
    pid_ = -1;
    return outcome;
}
