// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

// Proves how the program handles failures that interruption_test cannot cause or observe: a
// truncated request, a prompt that cannot hide input, and messages of Qt.

#include "support/pick.hpp"
#include "support/rows.hpp"

#include <gmock/gmock.h>

#include <unistd.h>

#include <cerrno>
#include <csignal>

struct FailingCall {
    std::string name;
    std::string call;
    int error;
    int nth = 1;
};

namespace {

void ignore_ending_signals()
{
    for (const int signal : ending_signals)
        std::signal(signal, SIG_IGN);
}

class HiddenEntry : public testing::TestWithParam<FailingCall> { };

} // namespace

TEST(ShortSend, IsAFailure)
{
    FakeSupplicant supplicant;
    EXPECT_EQ(run({"list"}, environment_for(supplicant.path(), fault("send", 0))),
              failure("Could not send Wi-Fi command: Success"));
    EXPECT_TRUE(supplicant.wait_for_request("SCA"));
    EXPECT_EQ(supplicant.requests(), Requests{"SCA"});
}

TEST_P(HiddenEntry, ShowsTheInputWhenACallFails)
{
    const auto& [name, call, error, nth] = GetParam();
    Pick pick(fault(call, error, nth), {}, ignore_ending_signals);
    pick.choose_home2();
    pick.wait_until_reading();
    EXPECT_EQ(pick.settings(), pick.before);
    EXPECT_EQ(ignored_signals(pick.pid()), ending_signals);
    pick.type("home2-password\n");
    EXPECT_EQ(pick.finish(), success(asked_screen + "home2-password\r\n" + connected_screen));
    EXPECT_EQ(pick.settings(), pick.before);
    EXPECT_EQ(pick.requests(), list_requests + join_home2());
}

INSTANTIATE_TEST_SUITE_P(
    Each, HiddenEntry,
    testing::Values(FailingCall{"SettingsNotRead", "tcgetattr", EIO},
                    FailingCall{"SettingsNotChanged", "tcsetattr", EIO},
                    FailingCall{"FirstHandlerNotInstalled", "sigaction", EINVAL},
                    FailingCall{"SecondHandlerNotInstalled", "sigaction", EINVAL, 2},
                    FailingCall{"ThirdHandlerNotInstalled", "sigaction", EINVAL, 3},
                    FailingCall{"FourthHandlerNotInstalled", "sigaction", EINVAL, 4}),
    by_name);

TEST(WarningOfQt, IsNotPrintedAtStart)
{
    FakeSupplicant supplicant;
    EXPECT_EQ(run({"status"}, environment_for(supplicant.path(), fault("setlocale", 1))),
              success("State: COMPLETED\nNetwork: Twins\nAddress: 10.66.2.48\n"));
}

TEST(FatalMessageOfQt, IsPrintedAtStart)
{
    if (!may_change_user())
        GTEST_SKIP() << "only root can start a program under another real user id";
    const Outcome outcome = run({"status"}, environment_for("/nowhere"), "", [] {
        if (setreuid(65534, 0) != 0) // as if it were a setuid program, which Qt refuses
            _exit(126);
    });
    EXPECT_EQ(outcome.status, -SIGABRT);
    EXPECT_EQ(outcome.out, "");
    EXPECT_THAT(outcome.err, testing::MatchesRegex("corvane-wifi: .*setuid.*\n"));
}
