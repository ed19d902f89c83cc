// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

// Proves that a signal before any instruction of the password prompt ends the program and restores
// the terminal, however the compiler has reordered the code.

#include "support/pick.hpp"
#include "support/rows.hpp"

#include <gtest/gtest.h>

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
#include <utility>

namespace {

void be_traced()
{
    if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0)
        _exit(126);
}

void wait_for_stop(pid_t pid)
{
    int status = 0;
    wait_until("the traced process has stopped",
               [&] { return waitpid(pid, &status, WNOHANG) == pid; });
    if (!WIFSTOPPED(status))
        throw std::runtime_error("the traced process has ended");
}

void resume(auto until, pid_t pid) // an enumeration of glibc, a number of musl
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
        const bool called = std::exchange(
            calls_,
            (ptrace(PTRACE_PEEKTEXT, pid(), registers(pid()).rip, nullptr) & 0xffff) == 0x050f);
        if (!called)
            return;
        caught = caught_signals(pid());
        if (!typed && !echoes()) {
            type("home2-password\n");
            typed = true;
        }
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
        ptrace(PTRACE_SETREGS, pid(), nullptr, &clone);
        resume(PTRACE_SINGLESTEP, pid());
        const auto copy = static_cast<pid_t>(registers(pid()).rax);
        ptrace(PTRACE_SETREGS, pid(), nullptr, &here);

        wait_for_stop(copy);
        ptrace(PTRACE_SETREGS, copy, nullptr, &here);
        ptrace(PTRACE_DETACH, copy, nullptr, signal);
        return status_of(copy);
    }

    bool typed = false;
    Signals caught;

private:
    unsigned long long syscall_instruction_ = 0;
    bool calls_ = true; ///< The next instruction is a system call.
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

class SignalAtAnyInstruction : public testing::TestWithParam<int> { };

} // namespace

TEST_P(SignalAtAnyInstruction, RestoresTheTerminalAndEndsTheProgram)
{
    if (!may_trace())
        GTEST_SKIP() << "processes may not be traced here";
    setenv("CORVANE_TEST_PROGRAM", OPTIMIZED_PROGRAM, 0);
    const int signal = GetParam();
    FakeSupplicant supplicant;
    SteppedPick pick(supplicant.path());
    const termios before = pick.settings();
    int tried = 0;
    while (!pick.typed || !pick.caught.empty()) {
        pick.step();
        SCOPED_TRACE(++tried);
        const termios now = pick.settings();
        termios expected = before;
        // Once handlers are removed, it stays as whatever has changed the terminal since left it.
        if (pick.typed && pick.caught != ending_signals) {
            expected.c_cc[VKILL] = '!';
            pick.set(expected);
        }
        EXPECT_EQ(pick.status_of_copy_after(signal),
                  pick.caught.contains(signal) ? 128 + signal : -signal);
        EXPECT_EQ(pick.settings(), expected);
        pick.set(now);
    }
    std::cout << "[ " << tried << " instructions ]\n";
}

INSTANTIATE_TEST_SUITE_P(Each, SignalAtAnyInstruction, testing::ValuesIn(ending_signals),
                         [](const auto& row) { return signal_name(row.param); });

#else

TEST(SignalAtAnyInstruction, RestoresTheTerminalAndEndsTheProgram)
{
    GTEST_SKIP() << "needs an x86-64 processor";
}

#endif
