// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

// Proves that a failure of any system call or allocation is reported or harmless, and that a signal
// at any system call restores the terminal and does not disturb the next run.
//
// strace works on static binaries, too; only failing allocations need the preloaded library.

#include "cvn/wifi.hpp"
#include "support/fake_supplicant.hpp"
#include "support/program.hpp"
#include "support/rows.hpp"

#include <gmock/gmock.h>

#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <limits>
#include <map>
#include <sstream>
#include <tuple>

struct Action {
    std::string name;
    std::vector<std::string> arguments;
    Requests requests;
    std::string input = {};
    std::vector<Question> questions = {}; ///< If there are any, they are answered at a terminal.
    Script script = {};
};

namespace {

const std::vector<std::string> connect_home2 = {"connect", "--password-stdin", "Home2"};
const std::string password = "home2-password\n";
const std::string removal = "REMOVE_NETWORK 3";
const Requests select_mixed = {"SELECT_NETWORK 2", "STATUS"};
const Requests join_cafe = add_profile("43616665", "NONE") + activate_and_save;
const std::vector<Question> choose_mixed = {{"Network number: ", "2\n"}};
const std::vector<Question> choose_home2 = {{"Network number: ", "5\n"},
                                            {"Wi-Fi password: ", password}};
const Script to_mixed = then_connected("Mixed", 2);
const std::vector<Action> actions = {
    {"Status", {"status"}, {"STATUS"}},
    {"List", {"list"}, list_requests},
    {"ConnectSaved", {"connect", "Mixed"}, cached_list_requests + select_mixed, "", {}, to_mixed},
    {"ConnectOpen",
     {"connect", "--open", "Cafe"},
     cached_list_requests + join_cafe,
     "",
     {},
     then_connected("Cafe", 3)},
    {"ConnectNew", connect_home2, cached_list_requests + join_home2(), password},
    {"PickSaved", {"pick"}, list_requests + select_mixed, "", choose_mixed, to_mixed},
    {"PickNew", {"pick"}, list_requests + join_home2(), "", choose_home2},
    {"Disconnect", {"disconnect"}, {"DISCONNECT"}},
    {"Forget",
     {"forget", "--yes", "Home"},
     {"LIST_NETWORKS", "STATUS", "REMOVE_NETWORK 0", "SAVE_CONFIG"}},
};

const Action refused_save = {"RefusedSave",
                             connect_home2,
                             cached_list_requests + join_home2() + Requests{removal},
                             password,
                             {},
                             replies("SAVE_CONFIG", "FAIL\n")};

/// The ways in which a system call can fail.
struct FailureModes {
    std::string call;
    std::vector<int> errors;
    std::string message; ///< Followed by the system's text after ": ". Empty if it does not matter.
};

/// Some calls have another name on other processors.
const std::vector<FailureModes> failure_modes = {
    {"socket", {EMFILE, ENOBUFS}, "Could not open Wi-Fi control socket: "},
    {"bind", {EADDRINUSE, ENOSPC}, "Could not bind temporary Wi-Fi control socket: "},
    {"fchmod", {EINVAL, EINTR}, ""},
    {"chmod", {EROFS, EINTR}, "Could not protect temporary Wi-Fi control socket: "},
    {"fchmodat", {EROFS, EINTR}, "Could not protect temporary Wi-Fi control socket: "},
    {"connect", {ECONNREFUSED, ENOENT, EINTR}, "Could not connect to wpa_supplicant: "},
    {"sendto", {ENOBUFS, ECONNREFUSED, EINTR}, "Could not send Wi-Fi command: "},
    {"poll", {ENOMEM, EINTR}, "Timed out waiting for wpa_supplicant."},
    {"ppoll", {ENOMEM, EINTR}, "Timed out waiting for wpa_supplicant."},
    {"recvfrom", {ECONNRESET, EINTR}, "Could not read Wi-Fi response: "},
    {"read", {EIO, EINTR}, "Could not read input."},
    {"close", {EIO, EINTR}, ""},
    {"unlink", {EROFS, EINTR}, ""},
    {"unlinkat", {EROFS, EINTR}, ""},
    {"ioctl", {EIO, EINTR}, ""},
    {"rt_sigaction", {EINVAL, EFAULT}, ""},
};

int left_number = -1; ///< Of the socket file that an earlier process left, if any.

void place_left_file()
{
    if (left_number >= 0)
        mknod(own_socket_path(left_number), S_IFSOCK | 0600, 0);
}

/// False if a file of another user stays.
bool remove_left_files()
{
    for (int number = 0; number < 16; ++number)
        if (unlink(own_socket_path(number)) != 0 && errno != ENOENT)
            return false;
    return true;
}

constexpr int needs_other_id = 125;

/// The status of its child, as a shell with job control waits for it: once stopped it goes on in
/// the background, and again in the foreground when it asks for the terminal.
int status_under_job_control(pid_t program)
{
    int status = 0;
    while (waitpid(program, &status, WUNTRACED) == program && WIFSTOPPED(status)) {
        tcsetpgrp(STDIN_FILENO, WSTOPSIG(status) == SIGTSTP ? getpid() : program);
        kill(-program, SIGCONT);
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 126;
}

/// Returns in a child of a shell.
void under_a_shell()
{
    signal(SIGTTOU, SIG_IGN); // either moves the foreground from the background
    int status = needs_other_id;
    while (status == needs_other_id) {
        const pid_t program = fork();
        if (program == 0) {
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            setpgid(0, 0);
            tcsetpgrp(STDIN_FILENO, getpid());
            signal(SIGTTOU, SIG_DFL);
            if (!remove_left_files())
                _exit(needs_other_id);
            return;
        }
        status = status_under_job_control(program);
    }
    _exit(status);
}

constexpr size_t all_answers = std::numeric_limits<size_t>::max();

struct Disturbance {
    std::vector<std::string> strace = {}; ///< Arguments; without any it is not used.
    Environment environment = {};
    Preparation prepare = place_left_file;
    size_t answers = all_answers; ///< Given at the terminal.
};

struct Trial {
    Outcome outcome;
    Requests requests;
    bool terminal_restored = true;
    std::string trace = {};
};

Trial attempt(const Action& action, const Disturbance& disturbance = {})
{
    const FakeSupplicant supplicant(action.script);
    const Environment environment = environment_for(supplicant.path(), disturbance.environment);
    std::vector<std::string> tracer = disturbance.strace;
    const std::string log = supplicant.folder() + "/trace";
    if (!tracer.empty())
        tracer.insert(tracer.begin(), {"/usr/bin/strace", "-q", "-DDD", "-o", log});

    Trial trial;
    if (action.questions.empty()) {
        trial.outcome = run(action.arguments, environment, action.input, disturbance.prepare,
                            tracer);
    } else {
        std::vector<Question> questions = action.questions;
        questions.resize(std::min(disturbance.answers, questions.size()));
        Terminal terminal(action.arguments, environment, disturbance.prepare, tracer);
        const termios before = terminal.settings();
        trial.outcome = terminal.finish(questions);
        trial.terminal_restored = terminal.settings() == before;
    }
    wait_until("the trace is complete", [&] {
        trial.trace = contents(log);
        return tracer.empty() || trial.trace.find("+++ ") != std::string::npos;
    });

    // Once this is answered, all earlier requests have been read.
    cvn::wifi::Client(QString::fromStdString(supplicant.path())).command("PING", 30000);
    trial.requests = supplicant.requests();
    trial.requests.pop_back();
    if (disturbance.prepare == under_a_shell) // the process id was that of the shell
        for (const Request& request : supplicant.records())
            if (unlink(request.sender.c_str()) == 0)
                trial.outcome.left.push_back(request.sender);
    return trial;
}

/// A system call of the undisturbed run.
struct TracedCall {
    const FailureModes* modes;
    std::string line;
    int nth; ///< Of that name in the whole run.
};

/// Arguments of strace that do `what` at that call.
std::vector<std::string> inject(const std::string& what, const TracedCall& call)
{
    const std::string& name = call.modes->call;
    const std::string nth = std::to_string(call.nth);
    return {"-e", "trace=" + name, "-e", "inject=" + name + ":" + what + ":when=" + nth};
}

/// What an undisturbed run did from the first socket on, and had done before each of its calls.
class Undisturbed {
public:
    explicit Undisturbed(const Action& action)
    {
        trial = attempt(action, {.strace = {"-e", "trace=all"}});
        EXPECT_EQ(trial.requests, action.requests);
        std::map<std::string, int> count;
        std::istringstream lines(trial.trace);
        for (std::string line; std::getline(lines, line);) {
            const std::string name = line.substr(0, line.find('('));
            const auto modes = std::ranges::find(failure_modes, name, &FailureModes::call);
            if (modes == failure_modes.end())
                continue;
            ++count[name];
            const bool started = !calls.empty() || line.starts_with("socket(AF_UNIX, SOCK_DGRAM");
            if (started && (name != "read" || line.starts_with("read(0,")))
                calls.push_back({&*modes, line, count[name]});
        }
    }

    /// How many of the first `done` calls contain `text`.
    size_t count(const std::string& text, size_t done) const
    {
        return static_cast<size_t>(std::count_if(
            calls.begin(), calls.begin() + static_cast<ptrdiff_t>(done),
            [&](const TracedCall& call) { return call.line.find(text) != call.line.npos; }));
    }

    Requests sent(size_t done) const
    {
        const auto first = trial.requests.begin();
        return {first, first + static_cast<ptrdiff_t>(count("sendto(", done))};
    }

    /// The number of the socket file that is there then, if any.
    std::vector<std::string> left(size_t done) const
    {
        const size_t bound = count("bind(", done);
        if (count("unlink", done) + 1 != 2 * bound)
            return {};
        return {std::to_string(bound - 1)};
    }

    Trial trial;
    std::vector<TracedCall> calls;
};

/// With the error moved from the screen to `err`, and without an output that was cut short.
Outcome comparable(Outcome outcome, const Outcome& undisturbed)
{
    const size_t error = outcome.out.find("corvane-wifi: ");
    if (error != std::string::npos) {
        outcome.err += outcome.out.substr(error);
        outcome.out.erase(error);
        std::erase(outcome.err, '\r');
    }
    if (outcome.status != 0 && undisturbed.out.starts_with(outcome.out))
        outcome.out.clear();
    return outcome;
}

/// Without the echoed password: it shows if echo could not be turned off.
std::string without_password(std::string screen)
{
    std::erase_if(screen, [](char c) { return c == '\r' || c == '\n'; });
    const size_t shown = screen.find("home2-password");
    return shown == screen.npos ? screen : screen.erase(shown, strlen("home2-password"));
}

/// Only every nth trial is made: an exchange has 24, so 7 reaches each kind in turn. CORVANE_EVERY
/// sets another n.
size_t stride(size_t ordinarily = 7)
{
    const char* other = getenv("CORVANE_EVERY");
    return other == nullptr ? ordinarily : std::stoul(other);
}

void report(int tried, const std::string& what)
{
    EXPECT_GT(tried, 0) << what;
    testing::Test::RecordProperty(what, tried);
    std::cout << "[ " << tried << ' ' << what << " ]\n";
}

/// Skips the tests if processes cannot be traced; with CORVANE_REQUIRE_REAL, fails them.
template <typename Row> class Traced : public testing::TestWithParam<Row> {
protected:
    void SetUp() override
    {
        if (system("/usr/bin/strace -o /dev/null true 2>/dev/null") == 0)
            return;
        const std::string reason = access("/usr/bin/strace", X_OK) == 0
            ? "processes may not be traced here"
            : "strace is missing";
        if (getenv("CORVANE_REQUIRE_REAL") != nullptr)
            FAIL() << reason;
        GTEST_SKIP() << reason;
    }
};

class FaultAtAnyCall : public Traced<Action> { };
class SignalAtAnyCall : public Traced<std::tuple<Action, int>> { };
class NoMemoryAtAnyAllocation : public testing::TestWithParam<Action> { };

} // namespace

TEST_P(FaultAtAnyCall, IsReportedOrHarmless)
{
    const Action& action = GetParam();
    const Undisturbed undisturbed(action);
    const Requests& requests = undisturbed.trial.requests;
    const auto add = std::ranges::find(requests, "ADD_NETWORK") - requests.begin();
    size_t number = 0;
    int tried = 0;
    for (size_t i = 0; i < undisturbed.calls.size(); ++i) {
        const TracedCall& call = undisturbed.calls[i];
        const auto& [modes, line, nth] = call;
        const auto request = static_cast<ptrdiff_t>(undisturbed.count("socket(", i + 1)) - 1;
        const bool removing = requests[static_cast<size_t>(request)] == removal;
        const bool fatal = !modes->message.empty() && !removing;
        for (const int error : modes->errors) {
            if (number++ % stride() != 0)
                continue;
            ++tried;
            SCOPED_TRACE(line + " -> " + strerror(error));
            Trial trial = attempt(action,
                                  {.strace = Requests{"-f", "--seccomp-bpf"}
                                       + inject("error=" + std::to_string(error), call),
                                   .answers = fatal ? undisturbed.count("read(", i) : all_answers});
            EXPECT_THAT(trial.trace, testing::HasSubstr("(INJECTED)"));

            Outcome expected = undisturbed.trial.outcome;
            if (fatal)
                expected = failure(modes->message
                                   + (modes->message.ends_with(' ') ? strerror(error) : ""));
            if (modes->call.starts_with("unlink"))
                expected.left = undisturbed.left(i);
            if (modes->call == "ioctl" || modes->call == "rt_sigaction")
                for (std::string* out : {&trial.outcome.out, &expected.out})
                    *out = without_password(*out);
            EXPECT_EQ(comparable(trial.outcome, undisturbed.trial.outcome), expected);

            Requests wire = modes->message.empty() ? requests : undisturbed.sent(i);
            if (fatal && add < request)
                wire.push_back(removal);
            EXPECT_EQ(trial.requests, wire);
            // Nothing can be done if echo cannot be turned on again.
            EXPECT_EQ(trial.terminal_restored,
                      line.find("TCSETSF") == line.npos || undisturbed.count("TCSETSF", i) == 0);
        }
    }
    report(tried, "faults");
}

INSTANTIATE_TEST_SUITE_P(Each, FaultAtAnyCall, testing::ValuesIn(actions), by_name);
INSTANTIATE_TEST_SUITE_P(Undoing, FaultAtAnyCall, testing::Values(refused_save), by_name);

TEST_P(SignalAtAnyCall, RestoresTheTerminalAndDoesNotDisturbTheNextRun)
{
    const auto& [action, signal] = GetParam();
    const Undisturbed undisturbed(action);
    const std::string name = signal_name(signal);
    const bool ends = signal != SIGTSTP && signal != SIGWINCH;
    int tried = 0;
    for (size_t i = static_cast<size_t>(signal) % stride(); i < undisturbed.calls.size();
         i += stride()) {
        ++tried;
        const TracedCall& call = undisturbed.calls[i];
        const auto& [modes, line, nth] = call;
        SCOPED_TRACE(line);
        const Trial trial = attempt(
            action,
            {.strace = inject("signal=" + name, call),
             .prepare = signal == SIGTSTP ? under_a_shell : place_left_file,
             .answers = ends ? undisturbed.count("read(", i) : all_answers});
        // The call completes before the signal is delivered, except with SIGKILL.
        const size_t done = signal == SIGKILL ? i : i + 1;
        // The handlers are installed only around the calls on standard input.
        const bool handled = undisturbed.count("rt_sigaction(SIG" + name, done) == 1
            && (line.find("(0, ") != line.npos || modes->call == "rt_sigaction");
        Outcome expected = undisturbed.trial.outcome;
        Requests wire = undisturbed.trial.requests;
        if (ends) {
            expected = {handled ? 128 + signal : -signal, "", "", undisturbed.left(done)};
            wire = undisturbed.sent(done);
        } else {
            EXPECT_THAT(trial.trace, testing::HasSubstr("--- SIG" + name));
        }
        EXPECT_EQ(trial.trace.find("--- stopped by SIGTSTP") != std::string::npos,
                  signal == SIGTSTP);
        EXPECT_EQ(comparable(trial.outcome, undisturbed.trial.outcome), expected);
        EXPECT_EQ(trial.requests, wire);
        EXPECT_EQ(trial.terminal_restored,
                  signal != SIGKILL || undisturbed.count("TCSETSF", done) != 1);
        if (trial.outcome.left.empty())
            continue;
        left_number = std::stoi(trial.outcome.left.front());
        const Trial next = attempt(action);
        left_number = -1;
        EXPECT_EQ(next.outcome, undisturbed.trial.outcome);
        EXPECT_EQ(next.requests, undisturbed.trial.requests);
    }
    report(tried, "signals");
}

INSTANTIATE_TEST_SUITE_P(Each, SignalAtAnyCall,
                         testing::Combine(testing::ValuesIn(actions),
                                          testing::Values(SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGKILL,
                                                          SIGWINCH, SIGTSTP)),
                         [](const auto& row) {
                             return std::get<0>(row.param).name + "_SIG"
                                 + signal_name(std::get<1>(row.param));
                         });

TEST_P(NoMemoryAtAnyAllocation, IsReportedOrHarmless)
{
#ifndef __GLIBC__
    GTEST_SKIP() << "needs glibc, whose allocations can be made to fail";
#endif
    const Action& action = GetParam();
    const Trial undisturbed = attempt(action);
    const Outcome& quiet = undisturbed.outcome;
    const Requests& requests = undisturbed.requests;
    int last = 0;
    for (int step = 1 << 12; step > 0; step /= 2)
        if (attempt(action, {.environment = fault("malloc", -SIGKILL, last + step)}).outcome.status
            == -SIGKILL)
            last += step;
    // Always all of this action, which uses most of the library.
    const size_t step = stride(action.name == "ConnectOpen" ? 1 : 7);
    int tried = 0;
    for (int nth = 1; nth <= last; nth += static_cast<int>(step)) {
        ++tried;
        SCOPED_TRACE("allocation " + std::to_string(nth) + " of " + std::to_string(last));
        const Trial trial = attempt(action, {.environment = fault("malloc", ENOMEM, nth)});
        EXPECT_TRUE(trial.terminal_restored);
        if (trial.outcome == quiet) {
            EXPECT_EQ(trial.requests, requests);
            continue;
        }
        // An exchange that runs out of memory leaves its file. If it was to add a profile, the
        // profile's number is not known.
        const bool within = trial.outcome.left.size() == 1;
        Outcome expected = failure("std::bad_alloc");
        if (within)
            expected.left = trial.outcome.left;
        EXPECT_EQ(comparable(trial.outcome, quiet), expected);

        Requests wire(requests.begin(), std::ranges::mismatch(requests, trial.requests).in1);
        const auto add = std::ranges::find(wire, "ADD_NETWORK");
        const bool added = add != wire.end() && (add + 1 != wire.end() || !within);
        if (added && (wire != requests || within))
            wire.push_back(removal);
        EXPECT_EQ(trial.requests, wire);
    }
    report(tried, "allocations");
}

INSTANTIATE_TEST_SUITE_P(Each, NoMemoryAtAnyAllocation, testing::ValuesIn(actions), by_name);
