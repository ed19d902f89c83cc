// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

// Preloaded into the program under test. CORVANE_TEST_FAULT="CALL NTH ERROR" makes the NTH call of
// that name fail with errno ERROR, or raises signal N before the call if ERROR is -N. send() does
// not fail but drops the last byte. Only the program's own calls count: on standard input, and for
// the signals that end a program. "malloc" is any allocation. "setlocale" lets Qt warn at start, as
// some builds do in a locale that is not UTF-8.

#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <locale.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

/// Whether this call is to fail. Sets errno then.
static int failed(const char* call)
{
    static int calls = 0;
    const char* fault = getenv("CORVANE_TEST_FAULT");
    char name[32];
    int nth = 0;
    int error = 0;
    if (fault == NULL || sscanf(fault, "%31s %d %d", name, &nth, &error) != 3)
        return 0;
    if (strcmp(name, call) != 0 || ++calls != nth)
        return 0;
    if (error < 0) {
        raise(-error);
        return 0;
    }
    errno = error;
    return 1;
}

static void* real(const char* name)
{
    return dlsym(RTLD_NEXT, name);
}

int chmod(const char* path, mode_t mode)
{
    int (*const call)(const char*, mode_t) = real("chmod");
    return failed("chmod") ? -1 : call(path, mode);
}

ssize_t send(int descriptor, const void* bytes, size_t size, int flags)
{
    ssize_t (*const call)(int, const void*, size_t, int) = real("send");
    return call(descriptor, bytes, failed("send") ? size - 1 : size, flags);
}

int tcgetattr(int descriptor, struct termios* settings)
{
    int (*const call)(int, struct termios*) = real("tcgetattr");
    const int ours = descriptor == STDIN_FILENO;
    return ours && failed("tcgetattr") ? -1 : call(descriptor, settings);
}

int tcsetattr(int descriptor, int when, const struct termios* settings)
{
    int (*const call)(int, int, const struct termios*) = real("tcsetattr");
    const int ours = descriptor == STDIN_FILENO;
    return ours && failed("tcsetattr") ? -1 : call(descriptor, when, settings);
}

int sigaction(int signal, const struct sigaction* action, struct sigaction* old)
{
    int (*const call)(int, const struct sigaction*, struct sigaction*) = real("sigaction");
    const int ours = signal == SIGHUP || signal == SIGINT || signal == SIGQUIT || signal == SIGTERM;
    return ours && failed("sigaction") ? -1 : call(signal, action, old);
}

#if defined FAULTS_IN_ALLOCATIONS && defined __GLIBC__

#define INSTALL "_Z22qInstallMessageHandlerPFv9QtMsgTypeRK18QMessageLogContextRK7QStringE"

/// main() calls it a second time once Qt has started: allocations count from there.
void* install_message_handler(void* handler) __asm__(INSTALL);

static int installed = 0;

void* install_message_handler(void* handler)
{
    void* (*const call)(void*) = real(INSTALL);
    void* const previous = call(handler);
    ++installed;
    return previous;
}

void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* memory, size_t size);

void* malloc(size_t size)
{
    return installed == 2 && failed("malloc") ? NULL : __libc_malloc(size);
}

void* calloc(size_t count, size_t size)
{
    return installed == 2 && failed("malloc") ? NULL : __libc_calloc(count, size);
}

void* realloc(void* memory, size_t size)
{
    return installed == 2 && failed("malloc") ? NULL : __libc_realloc(memory, size);
}

#endif

char* setlocale(int category, const char* locale)
{
    char* (*const call)(int, const char*) = real("setlocale");
    // qErrnoWarning(int, const char*, ...)
    void (*const warn)(int, const char*, ...) = dlsym(RTLD_DEFAULT, "_Z13qErrnoWarningiPKcz");
    if (failed("setlocale"))
        warn(EINVAL, "Detected locale \"%s\"", "C");
    return call(category, locale);
}

void _exit(int status)
{
    failed("_exit");
    // Without this, a program that is counted for coverage loses its counters here.
    void (*const dump)(void) = dlsym(RTLD_DEFAULT, "__gcov_dump");
    if (dump != NULL)
        dump();
    void (*const call)(int) = real("_exit");
    call(status);
    abort();
}
