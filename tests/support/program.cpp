// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

#include "support/program.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utmp.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <tuple>
#include <utility>

namespace {

constexpr std::chrono::seconds patience(60);

/// Made before the fork: a child of a process with threads must not allocate.
class Invocation {
public:
    Invocation(const std::vector<std::string>& arguments, Environment environment,
               Preparation prepare, std::vector<std::string> tracer)
        : words_(std::move(tracer))
        , prepare_(prepare)
    {
        // In coverage builds, for the _exit() that saves the counters.
        if (getenv("CORVANE_TEST_PRELOAD") != nullptr)
            environment.emplace("LD_PRELOAD", FAULTS_LIBRARY);
        const char* another = getenv("CORVANE_TEST_PROGRAM");
        words_.push_back(another != nullptr ? another : CORVANE_WIFI);
        words_.insert(words_.end(), arguments.begin(), arguments.end());
        for (const auto& [name, value] : environment)
            settings_.push_back(name + '=' + value);
        argv_ = pointers(words_);
        envp_ = pointers(settings_);
    }

    [[noreturn]] void execute()
    {
        // The parent process may have ignored or blocked some.
        for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGPIPE})
            std::signal(signal, SIG_DFL);
        sigset_t none;
        sigemptyset(&none);
        sigprocmask(SIG_SETMASK, &none, nullptr);
        const rlimit no_core{0, 0};
        setrlimit(RLIMIT_CORE, &no_core);
        if (prepare_ != nullptr)
            prepare_();
        execve(argv_[0], argv_.data(), envp_.data());
        _exit(127);
    }

private:
    std::vector<std::string> words_;
    std::vector<std::string> settings_;
    std::vector<char*> argv_;
    std::vector<char*> envp_;
    Preparation prepare_;
};

bool remove_whole(const std::string& path)
{
    std::error_code error;
    std::filesystem::remove_all(path, error);
    return !error;
}

bool reads(pid_t pid)
{
    const std::string call = contents("/proc/" + std::to_string(pid) + "/syscall");
    return call.starts_with(std::to_string(SYS_read) + " 0x0 ");
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

/// Returns 0 in the new process. Ids come round: the sockets of an earlier process are removed, and
/// if they cannot be, another id is tried.
pid_t fork_with_free_id()
{
    pid_t pid = 0;
    wait_until("there is a process id without socket files of another user", [&] {
        Pipe start;
        char byte = 0;
        pid = fork();
        if (pid < 0)
            throw std::system_error(errno, std::generic_category(), "fork");
        if (pid == 0) {
            start.close_end(1);
            if (read(start.ends[0], &byte, 1) != 1)
                _exit(126);
            return true;
        }
        if (remove_socket_files_of(pid) && write(start.ends[1], &byte, 1) == 1)
            return true;
        kill(pid, SIGKILL);
        status_of(pid);
        return false;
    });
    return pid;
}

/// Appends what can be read now. False at the end.
bool read_some(int descriptor, std::string& text)
{
    std::array<char, 65536> buffer;
    const ssize_t size = read(descriptor, buffer.data(), buffer.size());
    if (size > 0)
        text.append(buffer.data(), static_cast<size_t>(size));
    return size > 0;
}

Signals signals_in(pid_t pid, const std::string& field)
{
    const std::string status = contents("/proc/" + std::to_string(pid) + "/status");
    const size_t at = status.find(field);
    if (at == std::string::npos)
        throw std::runtime_error("no " + field + " of process " + std::to_string(pid));
    const auto bits = std::stoull(status.substr(at + field.size()), nullptr, 16);
    Signals result;
    for (int signal = 1; signal < 32; ++signal) // the others are for real time
        if ((bits >> (signal - 1) & 1) != 0)
            result.insert(signal);
    for (const int of_sanitizers : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTRAP})
        result.erase(of_sanitizers);
    return result;
}

/// The options of a sanitizer so far, ready for one more.
std::string options_before(const char* name)
{
    const char* options = getenv(name);
    return options == nullptr ? "" : std::string(options) + ':';
}

} // namespace

std::ostream& operator<<(std::ostream& stream, const Outcome& outcome)
{
    stream << "status " << outcome.status << "\nout [" << outcome.out << "]\nerr [" << outcome.err
           << "]";
    for (const std::string& number : outcome.left)
        stream << "\nleft socket " << number;
    return stream;
}

std::vector<char*> pointers(std::vector<std::string>& strings)
{
    std::vector<char*> result;
    for (std::string& string : strings)
        result.push_back(string.data());
    result.push_back(nullptr);
    return result;
}

std::vector<std::string> socket_files_of(pid_t pid, int numbers)
{
    // With the names of many files in it, reading /tmp takes long, and on a tmpfs may never end
    // while others remove files.
    std::vector<std::string> result;
    for (int number = 0; number < numbers; ++number) {
        const std::string path = "/tmp/corvane-wpa-" + std::to_string(pid) + '-'
            + std::to_string(number);
        if (std::filesystem::symlink_status(path).type() != std::filesystem::file_type::not_found)
            result.push_back(path);
    }
    return result;
}

bool remove_socket_files_of(pid_t pid)
{
    return std::ranges::all_of(socket_files_of(pid), remove_whole);
}

Outcome success(const std::string& out, const std::string& err)
{
    return {0, out, err};
}

Outcome failure(const std::string& message, const std::string& out, const std::string& prompt)
{
    return {1, out, prompt + "corvane-wifi: " + message + "\n"};
}

std::string on_screen(const std::string& text)
{
    std::string result;
    for (const char c : text)
        result += c == '\n' ? std::string("\r\n") : std::string(1, c);
    return result;
}

Environment environment_for(const std::string& socket, const Environment& more)
{
    Environment result = more;
    for (const char* inherited : {"ASAN_OPTIONS", "TSAN_OPTIONS"})
        if (const char* value = getenv(inherited))
            result.emplace(inherited, value);
    result.merge(Environment{
        {"CORVANE_WPA_SOCKET", socket},
        {"CORVANE_WIFI_SCAN_DELAY_MS", "0"},
        {"CORVANE_WIFI_CONNECT_TIMEOUT_MS", "200"},
        {"LC_ALL", "C"},
    });
    return result;
}

Environment fault(const std::string& call, int error, int nth)
{
    return {
        {"LD_PRELOAD", FAULTS_LIBRARY},
        {"CORVANE_TEST_FAULT", call + ' ' + std::to_string(nth) + ' ' + std::to_string(error)},
        {"ASAN_OPTIONS", options_before("ASAN_OPTIONS") + "verify_asan_link_order=0"},
        // Looking up the real call is not async-signal-safe, but works.
        {"TSAN_OPTIONS", options_before("TSAN_OPTIONS") + "report_signal_unsafe=0"},
    };
}

Signals ignored_signals(pid_t pid)
{
    return signals_in(pid, "SigIgn:");
}

Signals caught_signals(pid_t pid)
{
    return signals_in(pid, "SigCgt:");
}

std::string contents(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void wait_until(const std::string& what, const std::function<bool()>& condition)
{
    const auto deadline = std::chrono::steady_clock::now() + patience;
    const std::chrono::microseconds longest(1000);
    for (std::chrono::microseconds pause(1); !condition(); pause = std::min(2 * pause, longest)) {
        if (std::chrono::steady_clock::now() > deadline)
            throw std::runtime_error("timed out waiting until " + what);
        std::this_thread::sleep_for(pause);
    }
}

int status_of(pid_t child)
{
    int status = 0;
    try {
        wait_until("process " + std::to_string(child) + " has ended",
                   [&] { return waitpid(child, &status, WNOHANG) != 0; });
    } catch (...) {
        kill(child, SIGKILL);
        throw;
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

bool may_change_user()
{
    const pid_t child = fork();
    if (child == 0)
        _exit(setuid(65534) == 0 && geteuid() == 65534 ? 0 : 1);
    return status_of(child) == 0;
}

Process::Process(const std::function<void()>& main)
    : id_(fork_with_free_id())
{
    if (id_ == 0)
        main();
}

Process::~Process()
{
    end_by(SIGKILL);
}

void Process::end_by(int signal)
{
    if (id_ == 0)
        return;
    kill(id_, signal);
    try {
        end();
    } catch (const std::exception& error) {
        ADD_FAILURE() << error.what();
    }
}

bool Process::has_ended() const
{
    siginfo_t ended{};
    waitid(P_PID, static_cast<id_t>(id_), &ended, WEXITED | WNOHANG | WNOWAIT);
    return ended.si_pid != 0;
}

Outcome Process::end()
{
    wait_until("process " + std::to_string(id_) + " has ended", [this] { return has_ended(); });
    Outcome outcome;
    for (const std::string& path : socket_files_of(id_)) // no other process can have its id yet
        if (remove_whole(path))
            outcome.left.push_back(path.substr(path.rfind('-') + 1));
    outcome.status = status_of(std::exchange(id_, 0));
    return outcome;
}

const char* own_socket_path(int nth)
{
    static char path[64];
    std::snprintf(path, sizeof(path), "/tmp/corvane-wpa-%d-%d", static_cast<int>(getpid()), nth);
    return path;
}

Outcome run(const std::vector<std::string>& arguments, const Environment& environment,
            const std::string& input, Preparation prepare, const std::vector<std::string>& tracer)
{
    Pipe in;
    Pipe out;
    Pipe err;
    Invocation invocation(arguments, environment, prepare, tracer);
    Process process([&] {
        dup2(in.ends[0], STDIN_FILENO);
        dup2(out.ends[1], STDOUT_FILENO);
        dup2(err.ends[1], STDERR_FILENO);
        invocation.execute();
    });
    in.close_end(0);
    out.close_end(1);
    err.close_end(1);
    // A program that does not read its input may end before it is written.
    signal(SIGPIPE, SIG_IGN);
    [[maybe_unused]] const ssize_t written = write(in.ends[1], input.data(), input.size());
    in.close_end(1);

    std::array<std::string, 2> texts;
    std::array<pollfd, 2> outputs{{{out.ends[0], POLLIN, 0}, {err.ends[0], POLLIN, 0}}};
    wait_until("the program has closed its outputs", [&] {
        poll(outputs.data(), outputs.size(), 1000);
        for (size_t i = 0; i < outputs.size(); ++i)
            if (outputs[i].revents != 0 && !read_some(outputs[i].fd, texts[i]))
                outputs[i].fd = -1; // poll() skips it
        return outputs[0].fd < 0 && outputs[1].fd < 0;
    });
    Outcome outcome = process.end();
    outcome.out = texts[0];
    outcome.err = texts[1];
    return outcome;
}

bool operator==(const termios& left, const termios& right)
{
    const auto flags = [](const termios& settings) {
        return std::tuple(settings.c_iflag, settings.c_oflag, settings.c_cflag, settings.c_lflag,
                          cfgetispeed(&settings), cfgetospeed(&settings));
    };
    return flags(left) == flags(right) && std::ranges::equal(left.c_cc, right.c_cc);
}

Terminal::Terminal(const std::vector<std::string>& arguments, const Environment& environment,
                   Preparation prepare, const std::vector<std::string>& tracer)
{
    if (openpty(&master_, &slave_, nullptr, nullptr, nullptr) != 0)
        throw std::system_error(errno, std::generic_category(), "openpty");
    fcntl(master_, F_SETFD, FD_CLOEXEC);
    fcntl(slave_, F_SETFD, FD_CLOEXEC);
    Invocation invocation(arguments, environment, prepare, tracer);
    process_ = std::make_unique<Process>([&] {
        login_tty(dup(slave_));
        invocation.execute();
    });
}

Terminal::~Terminal()
{
    process_.reset();
    close(master_);
    close(slave_);
}

termios Terminal::settings() const
{
    termios result{};
    tcgetattr(slave_, &result);
    return result;
}

void Terminal::set(const termios& settings)
{
    tcsetattr(slave_, TCSANOW, &settings);
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

size_t Terminal::waiting() const
{
    int size = 0;
    ioctl(slave_, FIONREAD, &size);
    return static_cast<size_t>(size);
}

std::string Terminal::unread() const
{
    std::string result(waiting(), '\0');
    if (!result.empty())
        result.resize(static_cast<size_t>(read(slave_, result.data(), result.size())));
    return result;
}

void Terminal::read_screen()
{
    pollfd waiting{master_, POLLIN, 0};
    while (poll(&waiting, 1, 0) > 0 && read_some(master_, screen_)) { }
}

void Terminal::wait_while_running(const std::string& what,
                                  const std::function<bool()>& condition) const
{
    wait_until(what, [&] {
        const bool ended = process_->has_ended();
        if (condition())
            return true;
        if (ended)
            throw std::runtime_error("the program has ended before " + what);
        return false;
    });
}

void Terminal::wait_for(const std::string& text)
{
    wait_while_running("the screen holds \"" + text + '"', [&] {
        read_screen();
        return screen_.find(text) != std::string::npos;
    });
}

void Terminal::wait_for_echo(bool on)
{
    wait_while_running(on ? "echo is on" : "echo is off", [&] { return echoes() == on; });
}

void Terminal::wait_until_typed() const
{
    wait_while_running("a line has been typed", [this] { return waiting() > 0; });
}

void Terminal::wait_until_reading() const
{
    wait_while_running("standard input is read", [this] { return reads(pid()); });
}

void Terminal::wait_until_stopped() const
{
    wait_while_running("the program has stopped", [this] {
        siginfo_t stopped{};
        waitid(P_PID, static_cast<id_t>(pid()), &stopped, WSTOPPED | WNOHANG);
        return stopped.si_pid == pid();
    });
}

Outcome Terminal::finish(const std::vector<Question>& questions)
{
    auto next = questions.begin();
    // This process keeps the terminal open, so no end of file shows that the program has ended.
    wait_until("the program has ended", [&] {
        read_screen();
        if (next != questions.end() && screen_.find(next->prompt) != std::string::npos
            && reads(tcgetpgrp(master_)))
            type((next++)->answer);
        return process_->has_ended();
    });
    read_screen();
    Outcome outcome = process_->end();
    outcome.out = screen_;
    return outcome;
}
