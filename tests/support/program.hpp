// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

/// Runs the built corvane-wifi as a user does: with pipes or at a terminal. The environment
/// variable CORVANE_TEST_PROGRAM names another file to run instead, such as a static binary.
/// Every wait throws an error after a minute; the process it waited for is then killed.

#pragma once

#include <sys/types.h>
#include <termios.h>

#include <functional>
#include <map>
#include <memory>
#include <ostream>
#include <set>
#include <string>
#include <vector>

using Environment = std::map<std::string, std::string>;

/// How one run ended. `status` is the exit status; a signal's number is negative.
struct Outcome {
    int status = 0;
    std::string out;
    std::string err = {};
    /// Numbers in the names of the socket files that the process left. They are removed.
    std::vector<std::string> left = {};

    bool operator==(const Outcome&) const = default;
};

std::ostream& operator<<(std::ostream& stream, const Outcome& outcome);
Outcome success(const std::string& out, const std::string& err = {});
Outcome failure(const std::string& message, const std::string& out = {},
                const std::string& prompt = {});
/// With line ends as a terminal shows them.
std::string on_screen(const std::string& text);

/// The whole environment of a run: the socket, no delay after a scan, a short time-out for
/// connections, LC_ALL=C, and what `more` sets on top.
Environment environment_for(const std::string& socket, const Environment& more = {});

/// What execve() takes. They point into `strings`.
std::vector<char*> pointers(std::vector<std::string>& strings);

/// Called in the new process just before it becomes the program. Only async-signal-safe functions
/// may be used there.
using Preparation = void (*)();

/// The socket file that the calling process uses for its nth request, from 0. For a Preparation.
const char* own_socket_path(int nth);

/// Runs the program to its end with `input` on a pipe as standard input. With `tracer`, that
/// command becomes the program and leaves a child to trace it, as strace -D does.
Outcome run(const std::vector<std::string>& arguments, const Environment& environment,
            const std::string& input = {}, Preparation prepare = nullptr,
            const std::vector<std::string>& tracer = {});

/// Makes the `nth` call of that name fail, see faults.c: `fault("tcsetattr", EIO)`. An error of -N
/// raises signal N before the call.
Environment fault(const std::string& call, int error, int nth = 1);

using Signals = std::set<int>;
/// Without those that sanitizers use.
Signals ignored_signals(pid_t pid);
Signals caught_signals(pid_t pid);

/// The whole file; empty if it cannot be read.
std::string contents(const std::string& path);

/// Waits until `condition` is true. After a minute, throws an error that names `what`.
void wait_until(const std::string& what, const std::function<bool()>& condition);

/// Those with the first `numbers`, which are more than one run of the program uses.
std::vector<std::string> socket_files_of(pid_t pid, int numbers = 32);
/// False if one of another user stays: /tmp lets only its owner and root remove it.
bool remove_socket_files_of(pid_t pid);

/// Waits for the end of a child: its exit status, or a signal's number, negative.
int status_of(pid_t child);

/// Root in a container may lack the right to start a program as another user.
bool may_change_user();

/// A process that a test starts. Ends with the object at the latest; its socket files, too.
class Process {
public:
    /// Starts at `main`, which must not return, with an id that no socket file stands in the way
    /// of.
    explicit Process(const std::function<void()>& main);
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    pid_t id() const
    {
        return id_;
    }
    bool has_ended() const;
    Outcome end(); ///< Waits for the end; without the outputs.
    /// Sends the signal and waits for the end, if it has not ended. If it goes on, the test fails.
    void end_by(int signal);

private:
    pid_t id_;
};

bool operator==(const termios& left, const termios& right);

struct Question {
    std::string prompt;
    std::string answer;
};

/// The program at a pseudo-terminal of its own, which is its standard input, output and error.
class Terminal {
public:
    Terminal(const std::vector<std::string>& arguments, const Environment& environment,
             Preparation prepare = nullptr, const std::vector<std::string>& tracer = {});
    ~Terminal(); ///< Kills the program if it still runs.
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    pid_t pid() const
    {
        return process_->id();
    }
    termios settings() const; ///< As they are now.
    void set(const termios& settings);
    bool echoes() const;
    std::string unread() const; ///< Removes and returns the line that waits for a reader, if any.

    void type(const std::string& keys);
    /// Reads until the screen contains `text`.
    void wait_for(const std::string& text);
    /// Waits until echo is on or off.
    void wait_for_echo(bool on);
    /// Waits until a whole line waits for a reader.
    void wait_until_typed() const;
    /// Waits until the program sleeps in a read of its standard input.
    void wait_until_reading() const;
    /// Waits until SIGSTOP has taken effect.
    void wait_until_stopped() const;
    /// Waits for the end: the screen in `out` with "\r\n" line ends, `err` empty. Types the answer
    /// to each question in turn, once the foreground process reads it.
    Outcome finish(const std::vector<Question>& questions = {});

private:
    size_t waiting() const; ///< Bytes in whole lines that nobody has read.
    void read_screen();
    /// Throws at once if the program ends before.
    void wait_while_running(const std::string& what, const std::function<bool()>& condition) const;

    std::unique_ptr<Process> process_;
    int master_ = -1;
    int slave_ = -1; ///< Kept open so that the settings can be read after the end.
    std::string screen_;
};
