// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

// Proves that the program writes a password to no output and no file, whatever fails.

#include "support/fake_supplicant.hpp"
#include "support/program.hpp"
#include "support/replies.hpp"
#include "support/rows.hpp"

#include <gmock/gmock.h>
#include <sys/resource.h>

#include <cstdlib>

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

/// A way to enter a password.
struct Entry {
    std::string name;
    Outcome (*join)(const std::string& socket, const std::string& password);
};

namespace {

/// Part of every password here and of nothing else. Too short to be a password itself.
const std::string secret = "Zq#7~v&";
const std::string password = secret + "-home2";
const std::vector<std::string> connect_home2 = {"connect", "--password-stdin", "Home2"};

/// Kills the program as soon as it writes to a file. Coverage counters and the thread sanitizer
/// write files of their own.
void forbid_writing_files()
{
#ifndef __SANITIZE_THREAD__
    const rlimit nothing{0, 0};
    if (getenv("CORVANE_TEST_PRELOAD") == nullptr)
        setrlimit(RLIMIT_FSIZE, &nothing);
#endif
}

Outcome connect_by_pipe(const std::string& socket, const std::string& line)
{
    return run(connect_home2, environment_for(socket), line + "\n", forbid_writing_files);
}

Outcome pick_by_pipe(const std::string& socket, const std::string& line)
{
    return run({"pick"}, environment_for(socket), "5\n" + line + "\n", forbid_writing_files);
}

Outcome pick_at_terminal(const std::string& socket, const std::string& line)
{
    Terminal terminal({"pick"}, environment_for(socket), forbid_writing_files);
    return terminal.finish({{"Network number: ", "5\n"}, {"Wi-Fi password: ", line + "\n"}});
}

/// The line that the terminal itself echoes is left out.
Outcome connect_at_terminal(const std::string& socket, const std::string& line)
{
    Terminal terminal(connect_home2, environment_for(socket), forbid_writing_files);
    terminal.wait_until_reading();
    terminal.type(line + "\n");
    Outcome outcome = terminal.finish();
    EXPECT_THAT(outcome.out, StartsWith(secret));
    outcome.out.erase(0, outcome.out.find('\n') + 1);
    return outcome;
}

/// The requests after the password has been read.
const std::vector<std::string> steps = {
    "ADD_NETWORK",
    "SET_NETWORK 3 ssid",
    "SET_NETWORK 3 key_mgmt",
    "SET_NETWORK 3 psk",
    "ENABLE_NETWORK 3",
    "SELECT_NETWORK 3",
    "STATUS",
    "SAVE_CONFIG",
};

Script script_for(const std::string& step, const Answer& answer)
{
    if (step == "STATUS")
        return {{step, {reply(connected_status("Twins", 1)), answer}}};
    return {{step, {answer}}};
}

void expect_no_secret_in(const Outcome& outcome, int status)
{
    EXPECT_EQ(outcome.status, status);
    EXPECT_THAT(outcome.out + outcome.err, Not(HasSubstr(secret)));
    EXPECT_THAT(outcome.left, IsEmpty());
}

class Password : public testing::TestWithParam<Entry> { };

} // namespace

TEST_P(Password, IsNotPrintedOnSuccess)
{
    FakeSupplicant supplicant;
    expect_no_secret_in(GetParam().join(supplicant.path(), password), 0);
    EXPECT_TRUE(supplicant.wait_for_request("SET_NETWORK 3 psk \"" + password + '"'));
}

TEST_P(Password, IsNotPrintedWhenItIsInvalid)
{
    const std::string nul(1, '\0');
    for (const std::string& line :
         {secret, secret + std::string(57, 'x'), secret + nul + secret, secret + "\u2615" + nul}) {
        const FakeSupplicant supplicant;
        expect_no_secret_in(GetParam().join(supplicant.path(), line), 1);
    }
}

TEST_P(Password, IsNotPrintedWhenAStepIsRefusedOrTheSupplicantExits)
{
    for (const std::string& step : steps) {
        SCOPED_TRACE(step);
        for (const Answer& refusal : {reply("FAIL\n"), last_reply("FAIL\n")}) {
            const FakeSupplicant supplicant(script_for(step, refusal));
            expect_no_secret_in(GetParam().join(supplicant.path(), password), 1);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(, Password,
                         testing::Values(Entry{"ConnectByPipe", connect_by_pipe},
                                         Entry{"ConnectAtATerminal", connect_at_terminal},
                                         Entry{"PickByPipe", pick_by_pipe},
                                         Entry{"PickAtATerminal", pick_at_terminal}),
                         by_name);
