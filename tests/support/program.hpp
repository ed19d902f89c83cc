// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

/// Runs the built corvane-wifi as a user would: with pipes, or at a terminal.

#pragma once

#include <sys/types.h>
#include <termios.h>

#include <map>
#include <ostream>
#include <string>
#include <vector>

using Environment = std::map<std::string, std::string>;

/// How one run ended. `status` is the exit status; a signal's number is negative.
struct Outcome {
    int status = 0;
    std::string out;
    std::string err;
    std::vector<std::string> left = {}; ///< Temporary socket files that the process left behind.

    bool operator==(const Outcome&) const = default;
};

std::ostream& operator<<(std::ostream& stream, const Outcome& outcome);

/// The whole environment of a run: the socket, no delay after a scan, a short time-out for
/// connections, LC_ALL=C, and what `more` sets on top.
Environment environment_for(const std::string& socket, const Environment& more = {});

/// Runs the program to its end with `input` on a pipe as standard input.
Outcome run(const std::vector<std::string>& arguments, const Environment& environment,
            const std::string& input = {});

/// Makes system calls of the program fail from the `nth` on (1 is the first), see faults.c:
/// `fault("bind", ENOSPC)`. An error of 0 makes send() short and poll() time out.
Environment fault(const std::string& call, int error, int nth = 1);

/// The program at a pseudo-terminal of its own, which is its standard input, output and error.
class Terminal {
public:
    Terminal(const std::vector<std::string>& arguments, const Environment& environment);
    ~Terminal(); ///< Ends the program if it still runs.
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    pid_t pid() const
    {
        return pid_;
    }
    termios settings() const; ///< As they are now.
    bool echoes() const;

    void type(const std::string& keys);
    /// Reads until the screen ends in `text`, or holds it. Throws after 30 s without.
    void wait_for(const std::string& text);
    /// Waits until echo is as asked. Throws after 30 s.
    void wait_for_echo(bool on);
    /// Waits for the end: the screen in `out` with "\r\n" line ends, `err` empty.
    Outcome finish();

private:
    bool read_some(int timeout_ms);

    pid_t pid_ = -1;
    int master_ = -1;
    int slave_ = -1; ///< Kept open so that the settings can be read after the end.
    std::string screen_;
};
