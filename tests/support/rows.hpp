// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

/// Rows of parameterized tests have a `name` of letters and digits. Declare them outside of any
/// namespace: GoogleTest does not find the operator below otherwise.

#pragma once

#include <csignal>
#include <map>
#include <ostream>
#include <string>

template <typename Row>
requires requires(const Row& row)
{
    row.name;
}
std::ostream& operator<<(std::ostream& stream, const Row& row)
{
    return stream << row.name;
}

/// The last argument of INSTANTIATE_TEST_SUITE_P.
inline constexpr auto by_name = [](const auto& row) { return row.param.name; };

/// SIGTERM is TERM. musl has no sigabbrev_np.
inline std::string signal_name(int signal)
{
    const std::map<int, std::string> names{{SIGHUP, "HUP"},    {SIGINT, "INT"},   {SIGQUIT, "QUIT"},
                                           {SIGTERM, "TERM"},  {SIGKILL, "KILL"}, {SIGTSTP, "TSTP"},
                                           {SIGWINCH, "WINCH"}};
    return names.at(signal);
}
