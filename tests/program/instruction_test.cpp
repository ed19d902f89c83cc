// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

// A signal before each instruction of the hidden entry, from the first handler installed to the
// last one removed. Compilers reorder code that the handlers depend on, so this runs an optimized
// program. With CORVANE_EVERY=1 really each instruction; without, one in eight once echo is off.

#include "support/pick.hpp"

#include <gmock/gmock.h>

#ifdef __x86_64__

#include <sched.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <stdexcept>

namespace {

void be_traced()
{
    if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0)
        _exit(126);
}

int status_of(pid_t pid)
{
    int status = 0;
    waitpid(pid, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

void wait_for_stop(pid_t pid)
{
    int status = 0;
    if (waitpid(pid, &status, 0) != pid || !WIFSTOPPED(status))
        throw std::runtime_error("the process should have stopped");
}

void resume(__ptrace_request until, pid_t pid)
{
    ptrace(until, pid, nullptr, nullptr);
    wait_for_stop(pid);
}

user_regs_struct registers(pid_t pid)
{
    user_regs_struct result{};
    ptrace(PTRACE_GETREGS, pid, nullptr, &result);
    return result;
}

void set_registers(pid_t pid, const user_regs_struct& values)
{
    ptrace(PTRACE_SETREGS, pid, nullptr, &values);
}

/// `pick` at a terminal, stopped where it installs its first handler.
class SteppedPick : public Terminal {
public:
    explicit SteppedPick(const std::string& socket)
        : Terminal({"pick"}, environment_for(socket), be_traced)
    {
        type("5\n");
        wait_for_stop(pid());
        user_regs_struct call{};
        do {
            resume(PTRACE_SYSCALL, pid());
            call = registers(pid());
        } while (call.orig_rax != SYS_rt_sigaction || call.rdi != SIGHUP);
        syscall_instruction_ = call.rip - 2;
    }

    /// Executes one instruction. Types the password as soon as echo is off.
    void step()
    {
        resume(PTRACE_SINGLESTEP, pid());
        if (typed_) {
            caught_ = dispositions_of(pid()).caught;
        } else if (!echoes()) {
            type("home2-password\n");
            typed_ = true;
        }
    }

    bool turns_echo_off() const
    {
        return !typed_;
    }
    bool removes_handlers() const
    {
        return caught_ != ending_signals;
    }
    bool has_removed_handlers() const
    {
        return caught_ == 0;
    }

    /// Sends the signal to a copy of the process, so that the original can go on.
    int status_of_copy_after(int signal) const
    {
        const user_regs_struct here = registers(pid());
        user_regs_struct clone = here;
        clone.rip = syscall_instruction_;
        clone.rax = SYS_clone;
        clone.rdi = CLONE_PARENT | CLONE_PTRACE | SIGCHLD;
        clone.rsi = clone.rdx = clone.r10 = clone.r8 = 0;
        set_registers(pid(), clone);
        resume(PTRACE_SINGLESTEP, pid());
        const auto copy = static_cast<pid_t>(registers(pid()).rax);
        set_registers(pid(), here);

        wait_for_stop(copy);
        set_registers(copy, here);
        ptrace(PTRACE_DETACH, copy, nullptr, signal);
        return status_of(copy);
    }

private:
    unsigned long long syscall_instruction_ = 0;
    bool typed_ = false;
    std::uint64_t caught_ = ending_signals;
};

bool may_trace()
{
    const pid_t child = fork();
    if (child == 0) {
        be_traced();
        _exit(0);
    }
    return status_of(child) == 0;
}

int every()
{
    const char* other = getenv("CORVANE_EVERY");
    return other == nullptr ? 8 : std::stoi(other);
}

class SignalAtAnyInstruction : public testing::TestWithParam<int> { };

} // namespace

TEST_P(SignalAtAnyInstruction, EndsTheProgramWithTheTerminalAsItWas)
{
    if (!may_trace())
        GTEST_SKIP() << "processes may not be traced here";
    setenv("CORVANE_TEST_PROGRAM", OPTIMIZED_PROGRAM, 0);
    const int signal = GetParam();
    FakeSupplicant supplicant;
    SteppedPick pick(supplicant.path());
    const termios before = pick.settings();
    int tried = 0;
    for (int number = signal; !pick.has_removed_handlers(); ++number) {
        pick.step();
        if (!pick.turns_echo_off() && number % every() != 0)
            continue;
        ++tried;
        SCOPED_TRACE(number - signal);
        const termios now = pick.settings();
        termios expected = before;
        if (pick.removes_handlers()) { // whatever has changed the terminal since, it stays so
            expected.c_cc[VKILL] = '!';
            pick.set(expected);
        }
        EXPECT_THAT(pick.status_of_copy_after(signal), testing::AnyOf(128 + signal, -signal));
        EXPECT_EQ(pick.settings(), expected);
        pick.set(now);
    }
    std::cout << "[ " << tried << " instructions ]\n";
}

INSTANTIATE_TEST_SUITE_P(Each, SignalAtAnyInstruction,
                         testing::Values(SIGHUP, SIGINT, SIGQUIT, SIGTERM),
                         [](const auto& row) { return sigabbrev_np(row.param); });

#else

TEST(SignalAtAnyInstruction, EndsTheProgramWithTheTerminalAsItWas)
{
    GTEST_SKIP() << "needs an x86-64 processor";
}

#endif
