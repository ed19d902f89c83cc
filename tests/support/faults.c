// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

// Preloaded into the program under test: makes one system call fail, as CORVANE_TEST_FAULT says
// in "CALL NTH ERROR". From the NTH call of that name on, each one fails with errno ERROR; with
// ERROR 0, send() takes a byte less than it got and poll() times out. close() and unlink() work,
// and leave an errno of their own behind, as they may.

#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <poll.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

/// The error to fail with, 0 for the milder failure, or -1 to do the real thing.
static int fault_in(const char* call)
{
    static int calls = 0;
    const char* fault = getenv("CORVANE_TEST_FAULT");
    char name[32];
    int nth = 0;
    int error = 0;
    if (fault == NULL || sscanf(fault, "%31s %d %d", name, &nth, &error) != 3)
        return -1;
    return strcmp(name, call) == 0 && ++calls >= nth ? error : -1;
}

static int failed(const char* call)
{
    const int error = fault_in(call);
    if (error < 0)
        return 0;
    errno = error;
    return 1;
}

static void* real(const char* name)
{
    return dlsym(RTLD_NEXT, name);
}

int socket(int domain, int type, int protocol)
{
    int (*const call)(int, int, int) = real("socket");
    return failed("socket") ? -1 : call(domain, type, protocol);
}

int bind(int descriptor, const struct sockaddr* address, socklen_t length)
{
    int (*const call)(int, const struct sockaddr*, socklen_t) = real("bind");
    return failed("bind") ? -1 : call(descriptor, address, length);
}

int chmod(const char* path, mode_t mode)
{
    int (*const call)(const char*, mode_t) = real("chmod");
    return failed("chmod") ? -1 : call(path, mode);
}

int connect(int descriptor, const struct sockaddr* address, socklen_t length)
{
    int (*const call)(int, const struct sockaddr*, socklen_t) = real("connect");
    return failed("connect") ? -1 : call(descriptor, address, length);
}

ssize_t send(int descriptor, const void* bytes, size_t size, int flags)
{
    ssize_t (*const call)(int, const void*, size_t, int) = real("send");
    const int error = fault_in("send");
    if (error > 0) {
        errno = error;
        return -1;
    }
    return call(descriptor, bytes, error == 0 ? size - 1 : size, flags);
}

int poll(struct pollfd* descriptors, nfds_t count, int timeout)
{
    int (*const call)(struct pollfd*, nfds_t, int) = real("poll");
    const int error = fault_in("poll");
    if (error < 0)
        return call(descriptors, count, timeout);
    errno = error;
    return error == 0 ? 0 : -1;
}

ssize_t recv(int descriptor, void* buffer, size_t size, int flags)
{
    ssize_t (*const call)(int, void*, size_t, int) = real("recv");
    return failed("recv") ? -1 : call(descriptor, buffer, size, flags);
}

int tcgetattr(int descriptor, struct termios* settings)
{
    int (*const call)(int, struct termios*) = real("tcgetattr");
    return failed("tcgetattr") ? -1 : call(descriptor, settings);
}

int tcsetattr(int descriptor, int when, const struct termios* settings)
{
    int (*const call)(int, int, const struct termios*) = real("tcsetattr");
    return failed("tcsetattr") ? -1 : call(descriptor, when, settings);
}

int sigaction(int signal, const struct sigaction* action, struct sigaction* old)
{
    int (*const call)(int, const struct sigaction*, struct sigaction*) = real("sigaction");
    return failed("sigaction") ? -1 : call(signal, action, old);
}

int close(int descriptor)
{
    int (*const call)(int) = real("close");
    const int result = call(descriptor);
    errno = EDOM;
    return result;
}

int unlink(const char* path)
{
    int (*const call)(const char*) = real("unlink");
    const int result = call(path);
    errno = EDOM;
    return result;
}
