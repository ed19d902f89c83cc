// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

// A password shows up nowhere but on its way to the supplicant, whatever fails on that way.

#include "support/fake_supplicant.hpp"
#include "support/program.hpp"
#include "support/replies.hpp"
#include "support/rows.hpp"

#include <gmock/gmock.h>
#include <sys/resource.h>

#include <cstdlib>
#include <future>
#include <memory>

using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

/// A way to hand the program a password; gives what it printed.
struct Way {
    std::string name;
    Requests before; ///< Of the first step.
    Outcome (*join)(const std::string& socket, const std::string& password);
};

namespace {

/// In every password here, and in nothing else. Too short for a password.
const std::string secret = "Zq#7~v&";

/// From here on a byte that goes into a file ends the program. What counts coverage, and the thread
/// sanitizer, have files of their own.
void write_no_file()
{
#ifndef __SANITIZE_THREAD__
    const rlimit nothing{0, 0};
    if (getenv("CORVANE_TEST_PRELOAD") == nullptr)
        setrlimit(RLIMIT_FSIZE, &nothing);
#endif
}

Outcome connect_by_pipe(const std::string& socket, const std::string& password)
{
    return run({"connect", "--password-stdin", "Home2"}, environment_for(socket), password + "\n",
               write_no_file);
}

Outcome pick_by_pipe(const std::string& socket, const std::string& password)
{
    return run({"pick"}, environment_for(socket), "5\n" + password + "\n", write_no_file);
}

Outcome pick_at_terminal(const std::string& socket, const std::string& password)
{
    Terminal terminal({"pick"}, environment_for(socket), write_no_file);
    return terminal.finish({{"Network number: ", "5\n"}, {"Wi-Fi password: ", password + "\n"}});
}

/// Without the terminal's own echo of the one line.
Outcome connect_at_terminal(const std::string& socket, const std::string& password)
{
    Terminal terminal({"connect", "--password-stdin", "Home2"}, environment_for(socket),
                      write_no_file);
    terminal.wait_until_reading();
    terminal.type(password + "\n");
    Outcome outcome = terminal.finish();
    EXPECT_THAT(outcome.out, StartsWith(secret));
    outcome.out.erase(0, outcome.out.find('\n') + 1);
    return outcome;
}

const std::vector<Way> ways = {
    {"ConnectingByPipe", listing, connect_by_pipe},
    {"ConnectingAtATerminal", listing, connect_at_terminal},
    {"PickingByPipe", scan_listing, pick_by_pipe},
    {"PickingAtATerminal", scan_listing, pick_at_terminal},
};

/// What the supplicant is asked from the password on.
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

Script answer(const std::string& step, const Answer& answer)
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

class Password : public testing::TestWithParam<Way> { };

} // namespace

TEST_P(Password, IsNotPrintedWhereAllGoesWell)
{
    FakeSupplicant supplicant;
    expect_no_secret_in(GetParam().join(supplicant.path(), secret + "-home2"), 0);
    EXPECT_TRUE(supplicant.wait_for_request("SET_NETWORK 3 psk \"" + secret + "-home2\""));
}

TEST_P(Password, IsNotPrintedWhereItIsNoPassword)
{
    const std::string nul(1, '\0');
    for (const std::string& password :
         {secret, secret + std::string(57, 'x'), secret + nul + secret, secret + "\u2615" + nul}) {
        FakeSupplicant supplicant;
        expect_no_secret_in(GetParam().join(supplicant.path(), password), 1);
    }
}

TEST_P(Password, IsNotPrintedWhereAStepIsRefusedOrTheSupplicantGoesAway)
{
    for (const std::string& step : steps) {
        SCOPED_TRACE(step);
        for (const Answer& refusal : {reply("FAIL\n"), last_reply("FAIL\n")}) {
            FakeSupplicant supplicant(answer(step, refusal));
            expect_no_secret_in(GetParam().join(supplicant.path(), secret + "-home2"), 1);
        }
    }
}

TEST_P(Password, IsNotHeldWhereOthersCanLookWhileTheSupplicantIsSilent)
{
    const Way& way = GetParam();
    std::vector<std::unique_ptr<FakeSupplicant>> towns;
    std::vector<std::future<Outcome>> ends;
    for (const std::string& step : steps) {
        towns.push_back(std::make_unique<FakeSupplicant>(answer(step, silence())));
        ends.push_back(
            std::async(std::launch::async, way.join, towns.back()->path(), secret + "-home2"));
    }
    for (size_t i = 0; i < steps.size(); ++i) {
        SCOPED_TRACE(steps[i]);
        wait_until("the step is taken",
                   [&] { return towns[i]->records().size() > way.before.size() + i; });
        const Request request = towns[i]->records().back();
        EXPECT_THAT(request.bytes, StartsWith(steps[i]));
        const pid_t pid = std::stoi(request.sender.substr(request.sender.find("wpa-") + 4));
        const std::string seen = process_file(pid, "cmdline") + process_file(pid, "environ");
        EXPECT_THAT(seen,
                    AllOf(HasSubstr("corvane-wifi"), HasSubstr("CORVANE_WPA_SOCKET"),
                          Not(HasSubstr(secret))));
    }
    for (std::future<Outcome>& end : ends)
        expect_no_secret_in(end.get(), 1);
}

INSTANTIATE_TEST_SUITE_P(, Password, testing::ValuesIn(ways), by_name);

// The reply is part of the message. wpa_supplicant's own replies quote no request.
TEST(HostileReply, ThatSaysThePasswordIsPrintedAsItIs)
{
    const std::string request = "SET_NETWORK 3 psk \"" + secret + "-home2\"";
    FakeSupplicant supplicant({{"SET_NETWORK 3 psk", {reply("FAIL " + request + "\n")}}});
    EXPECT_EQ(connect_by_pipe(supplicant.path(), secret + "-home2"),
              failure("Could not set WPA password: FAIL " + request));
}
