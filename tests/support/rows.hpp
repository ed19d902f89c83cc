// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

#pragma once

#include <csignal>
#include <map>
#include <string>

/// The last argument of INSTANTIATE_TEST_SUITE_P. The rows have a `name` of letters and digits.
inline constexpr auto by_name = [](const auto& row) { return row.param.name; };

/// SIGTERM is TERM. musl has no sigabbrev_np.
inline std::string signal_name(int signal)
{
    const std::map<int, std::string> names{{SIGHUP, "HUP"},    {SIGINT, "INT"},   {SIGQUIT, "QUIT"},
                                           {SIGTERM, "TERM"},  {SIGKILL, "KILL"}, {SIGTSTP, "TSTP"},
                                           {SIGWINCH, "WINCH"}};
    return names.at(signal);
}
