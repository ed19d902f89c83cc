// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

// Runs the tests under a process id for which /tmp holds no socket files: an earlier process with
// the same id may have been killed and have left some.

#include "support/program.hpp"

#include <gmock/gmock.h>

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>

namespace {

/// In the parent, ends as the child does.
void continue_in_a_child()
{
    const pid_t child = fork();
    if (child == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        return;
    }
    int status = 0;
    waitpid(child, &status, 0);
    if (WIFSIGNALED(status))
        raise(WTERMSIG(status));
    std::_Exit(WIFEXITED(status) ? WEXITSTATUS(status) : EXIT_FAILURE);
}

} // namespace

int main(int argc, char** argv)
{
    while (!remove_socket_files_of(getpid()))
        continue_in_a_child();
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
