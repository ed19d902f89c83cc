// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

// Every action with one of its system calls failing, with a signal at one of them, or without
// memory at one of its allocations: each of them in turn, as an undisturbed run made them.

#include "cvn/wifi.hpp"
#include "support/fake_supplicant.hpp"
#include "support/program.hpp"
#include "support/replies.hpp"
#include "support/rows.hpp"
#include "support/temporary_folder.hpp"

#include <gmock/gmock.h>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fstream>
#include <iterator>
#include <limits>
#include <map>
#include <sstream>
#include <tuple>

struct Action {
    std::string name;
    std::vector<std::string> arguments;
    Requests requests;
    std::string input = {};
    std::vector<Question> questions = {}; ///< Where there are any, they are answered at a terminal.
    Script script = {};
};

namespace {

const std::vector<std::string> home2 = {"connect", "--password-stdin", "Home2"};
const std::string password = "home2-password\n";
const Script mixed_comes_up = {
    {"STATUS", {reply(connected_status("Twins", 1)), reply(connected_status("Mixed", 2))}}};
const Script cafe_comes_up = {
    {"STATUS", {reply(connected_status("Twins", 1)), reply(connected_status("Cafe", 3))}}};

const std::string removal = "REMOVE_NETWORK 3";
const Requests add_home2 = join_home2("\"home2-password\"");
const Requests mixed = {"SELECT_NETWORK 2", "STATUS"};
const std::vector<Action> actions = {
    {"Status", {"status"}, {"STATUS"}},
    {"List", {"list"}, scan_listing},
    {"ConnectSaved", {"connect", "Mixed"}, listing + mixed, {}, {}, mixed_comes_up},
    {"ConnectOpen",
     {"connect", "--open", "Cafe"},
     listing + add_profile("43616665", "NONE") + activate_and_save,
     {},
     {},
     cafe_comes_up},
    {"ConnectNew", home2, listing + add_home2, password},
    {"PickSaved",
     {"pick"},
     scan_listing + mixed,
     {},
     {{"Network number: ", "2\n"}},
     mixed_comes_up},
    {"PickNew",
     {"pick"},
     scan_listing + add_home2,
     {},
     {{"Network number: ", "5\n"}, {"Wi-Fi password: ", password}}},
    {"Disconnect", {"disconnect"}, {"DISCONNECT"}},
    {"Forget",
     {"forget", "--yes", "Home"},
     {"LIST_NETWORKS", "STATUS", "REMOVE_NETWORK 0", "SAVE_CONFIG"}},
};

const Action refused = {"Refused", home2, listing + add_home2 + Requests{removal},
                        password,  {},    {{"SAVE_CONFIG", {reply("FAIL\n")}}}};

struct Fault {
    std::string call;
    std::vector<int> errors;
    std::string message; ///< The system's text follows ": ". Empty where it does not matter.
};

/// The calls to disturb. Some have another name on other processors.
const std::vector<Fault> faults = {
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

struct Trial {
    Outcome outcome; ///< Of the paths that were left, the number at the end.
    Requests requests;
    bool terminal_kept = true;
    std::string trace = {};
};

const TemporaryFolder kept;
const int kept_descriptor = open(kept.path().c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
std::vector<std::string> to_inherit; ///< Files in the kept, called by their number.

/// Gives a run just the files that an earlier one with its process id would have left it.
void inherit()
{
    char own[64];
    for (int number = 0; number < 16; ++number) {
        snprintf(own, sizeof(own), "/tmp/corvane-wpa-%d-%d", getpid(), number);
        unlink(own);
    }
    for (const std::string& number : to_inherit) {
        snprintf(own, sizeof(own), "/tmp/corvane-wpa-%d-%s", getpid(), number.c_str());
        renameat(kept_descriptor, number.c_str(), AT_FDCWD, own);
    }
}

/// Waits for the program as a shell with job control does: once stopped it goes on in the
/// background, and in the foreground again where it asks for the terminal.
void under_a_shell()
{
    const pid_t program = fork();
    signal(SIGTTOU, SIG_IGN); // either moves the foreground from the background
    if (program == 0) {
        setpgid(0, 0);
        tcsetpgrp(STDIN_FILENO, getpid());
        signal(SIGTTOU, SIG_DFL);
        return inherit();
    }
    int status = 0;
    while (waitpid(program, &status, WUNTRACED) == program && WIFSTOPPED(status)) {
        tcsetpgrp(STDIN_FILENO, WSTOPSIG(status) == SIGTSTP ? getpid() : program);
        kill(-program, SIGCONT);
    }
    _exit(WIFEXITED(status) ? WEXITSTATUS(status) : 126);
}

Trial attempt(const Action& action, size_t answers, const Environment& more = {},
              Preparation prepare = inherit, const std::vector<std::string>& strace = {})
{
    FakeSupplicant supplicant(action.script);
    const Environment environment = environment_for(supplicant.path(), more);
    std::vector<std::string> tracer = strace;
    const std::string log = supplicant.folder() + "/trace";
    if (!strace.empty())
        tracer.insert(tracer.begin(), {"/usr/bin/strace", "-DDD", "-o", log});

    Trial trial;
    if (action.questions.empty()) {
        trial.outcome = run(action.arguments, environment, action.input, prepare, tracer);
    } else {
        Terminal terminal(action.arguments, environment, prepare, tracer);
        const termios before = terminal.settings();
        const auto first = action.questions.begin();
        trial.outcome = terminal.finish(
            {first, first + static_cast<ptrdiff_t>(std::min(answers, action.questions.size()))});
        trial.terminal_kept = terminal.settings() == before;
    }
    if (!strace.empty())
        wait_until("the trace is complete", [&] {
            std::ifstream file(log);
            trial.trace.assign(std::istreambuf_iterator<char>(file), {});
            return trial.trace.find("+++ ") != std::string::npos;
        });

    // What is answered behind them says that all earlier requests have been read.
    cvn::wifi::Client(QString::fromStdString(supplicant.path())).command("PING", 30000);
    trial.requests = supplicant.requests();
    trial.requests.pop_back();
    // Behind a shell the process id is the shell's, and what the program left is known by its
    // requests.
    if (prepare == under_a_shell)
        trial.outcome.left.clear();
    for (const Request& record : supplicant.records())
        if (prepare == under_a_shell && access(record.sender.c_str(), F_OK) == 0)
            trial.outcome.left.push_back(record.sender);
    for (std::string& path : trial.outcome.left) {
        const std::string number = path.substr(path.rfind('-') + 1);
        renameat(AT_FDCWD, path.c_str(), kept_descriptor, number.c_str());
        path = number;
    }
    return trial;
}

constexpr size_t all_answers = std::numeric_limits<size_t>::max();

/// A system call of the undisturbed run.
struct Call {
    const Fault* fault;
    int nth; ///< Of that name in the whole run.
    std::string line;
};

/// What an undisturbed run did from the first socket on, and had done before each of its calls.
class Undisturbed {
public:
    explicit Undisturbed(const Action& action)
    {
        trial = attempt(action, all_answers, {}, inherit, {"-q"});
        EXPECT_EQ(trial.requests, action.requests);
        std::map<std::string, int> count;
        std::istringstream lines(trial.trace);
        for (std::string line; std::getline(lines, line);) {
            const std::string name = line.substr(0, line.find('('));
            const auto fault = std::ranges::find(faults, name, &Fault::call);
            if (fault == faults.end())
                continue;
            ++count[name];
            const bool begun = !calls.empty() || line.starts_with("socket(AF_UNIX, SOCK_DGRAM");
            if (begun && (name != "read" || line.starts_with("read(0,")))
                calls.push_back({&*fault, count[name], line});
        }
    }

    /// How many of the first `done` calls hold `text`.
    size_t count(const std::string& text, size_t done) const
    {
        return static_cast<size_t>(std::count_if(
            calls.begin(), calls.begin() + static_cast<ptrdiff_t>(done),
            [&](const Call& call) { return call.line.find(text) != call.line.npos; }));
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
    std::vector<Call> calls;
};

/// With the error on the screen where it belongs, and nothing of an output that was cut short.
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

/// Where echo could not be turned off, or it was not known whether it was.
std::string without_password(std::string screen)
{
    std::erase_if(screen, [](char c) { return c == '\r' || c == '\n'; });
    const size_t shown = screen.find("home2-password");
    return shown == screen.npos ? screen : screen.erase(shown, strlen("home2-password"));
}

/// Of many trials one in so many is made: where CORVANE_EVERY is 1, all.
size_t every(size_t ordinarily = 8)
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

/// Skips the tests where processes may not be traced, or fails them where they have to run.
template <typename Row> class Traced : public testing::TestWithParam<Row> {
protected:
    void SetUp() override
    {
        if (system("/usr/bin/strace -o /dev/null true 2>/dev/null") == 0)
            return;
        const std::string reason = "strace cannot be run here";
        if (getenv("CORVANE_REQUIRE_REAL") != nullptr)
            FAIL() << reason;
        GTEST_SKIP() << reason;
    }
};

class FaultAtAnyCall : public Traced<Action> { };
class SignalAtAnyCall : public Traced<std::tuple<Action, int>> { };
class NoMemoryAtAnyAllocation : public testing::TestWithParam<Action> { };

} // namespace

TEST_P(FaultAtAnyCall, IsReportedOrDoesNotMatter)
{
    const Action& action = GetParam();
    const Undisturbed undisturbed(action);
    const Requests& requests = undisturbed.trial.requests;
    const auto add = std::ranges::find(requests, "ADD_NETWORK") - requests.begin();
    size_t number = 0;
    int tried = 0;
    for (size_t i = 0; i < undisturbed.calls.size(); ++i) {
        const auto& [fault, nth, line] = undisturbed.calls[i];
        const auto request = static_cast<ptrdiff_t>(undisturbed.count("socket(", i + 1)) - 1;
        const bool removing = requests[static_cast<size_t>(request)] == removal;
        const bool fatal = !fault->message.empty() && !removing;
        for (const int error : fault->errors) {
            if (number++ % every() != 0)
                continue;
            ++tried;
            SCOPED_TRACE(line + " -> " + strerror(error));
            Trial trial = attempt(action, fatal ? undisturbed.count("read(", i) : all_answers, {},
                                  inherit,
                                  {"-q", "-f", "--seccomp-bpf", "-e", "trace=" + fault->call, "-e",
                                   "inject=" + fault->call + ":error=" + std::to_string(error)
                                       + ":when=" + std::to_string(nth)});
            EXPECT_THAT(trial.trace, testing::HasSubstr("(INJECTED)"));

            Outcome expected = undisturbed.trial.outcome;
            if (fatal)
                expected = failure(fault->message
                                   + (fault->message.ends_with(' ') ? strerror(error) : ""));
            if (fault->call.starts_with("unlink"))
                expected.left = undisturbed.left(i);
            if (fault->call == "ioctl" || fault->call == "rt_sigaction")
                for (std::string* out : {&trial.outcome.out, &expected.out})
                    *out = without_password(*out);
            EXPECT_EQ(comparable(trial.outcome, undisturbed.trial.outcome), expected);

            Requests wire = fault->message.empty() ? requests : undisturbed.sent(i);
            if (fatal && add < request)
                wire.push_back(removal);
            EXPECT_EQ(trial.requests, wire);
            // Nothing is left to try where echo cannot be turned on again.
            EXPECT_EQ(trial.terminal_kept,
                      line.find("TCSETSF") == line.npos || undisturbed.count("TCSETSF", i) == 0);
        }
    }
    report(tried, "faults");
}

INSTANTIATE_TEST_SUITE_P(Each, FaultAtAnyCall, testing::ValuesIn(actions), by_name);
INSTANTIATE_TEST_SUITE_P(Undoing, FaultAtAnyCall, testing::Values(refused), by_name);

TEST_P(SignalAtAnyCall, LeavesTheTerminalAsItWasAndNothingThatHindersTheNextRun)
{
    const auto& [action, signal] = GetParam();
    const Undisturbed undisturbed(action);
    const std::string name = sigabbrev_np(signal);
    const bool ends = signal != SIGTSTP && signal != SIGWINCH;
    int tried = 0;
    for (size_t i = static_cast<size_t>(signal) % every(); i < undisturbed.calls.size();
         i += every()) {
        ++tried;
        const auto& [fault, nth, line] = undisturbed.calls[i];
        SCOPED_TRACE(line);
        const Trial trial = attempt(
            action, ends ? undisturbed.count("read(", i) : all_answers, {},
            signal == SIGTSTP ? under_a_shell : inherit,
            {"-q", "-e", "trace=" + fault->call, "-e",
             "inject=" + fault->call + ":signal=" + name + ":when=" + std::to_string(nth)});
        // The call does its work before the signal comes, except that SIGKILL leaves it no time.
        const size_t done = signal == SIGKILL ? i : i + 1;
        // No exchange goes on while echo is off.
        const bool handled = undisturbed.count("rt_sigaction(SIG" + name, done) == 1
            && (line.find("(0, ") != line.npos || fault->call == "rt_sigaction");
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
        EXPECT_EQ(trial.terminal_kept,
                  signal != SIGKILL || undisturbed.count("TCSETSF", done) != 1);
        if (trial.outcome.left.empty())
            continue;
        to_inherit = trial.outcome.left;
        const Trial next = attempt(action, all_answers);
        to_inherit.clear();
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
                                 + sigabbrev_np(std::get<1>(row.param));
                         });

TEST_P(NoMemoryAtAnyAllocation, IsReportedOrDoesNotMatter)
{
    const Action& action = GetParam();
    const Trial undisturbed = attempt(action, all_answers);
    const Outcome& quiet = undisturbed.outcome;
    const Requests& requests = undisturbed.requests;
    int last = 0;
    for (int step = 1 << 12; step > 0; step /= 2)
        if (attempt(action, all_answers, fault("malloc", -SIGKILL, last + step)).outcome.status
            == -SIGKILL)
            last += step;
    // One action's, which are most of the library's, at any rate.
    const size_t step = every(action.name == "ConnectOpen" ? 1 : 8);
    int tried = 0;
    for (int nth = 1; nth <= last; nth += static_cast<int>(step)) {
        ++tried;
        SCOPED_TRACE("allocation " + std::to_string(nth) + " of " + std::to_string(last));
        const Trial trial = attempt(action, all_answers, fault("malloc", ENOMEM, nth));
        EXPECT_TRUE(trial.terminal_kept);
        if (trial.outcome == quiet) {
            EXPECT_EQ(trial.requests, requests);
            continue;
        }
        // An exchange that runs out of memory leaves its file, and one that adds a profile does
        // not tell its number.
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
