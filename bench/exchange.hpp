// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

/// One exchange as corvane-wifi makes it, with nothing but the C library.

#pragma once

#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>

inline sockaddr_un address_of(const char* path)
{
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    std::strncpy(address.sun_path, path, sizeof address.sun_path - 1);
    return address;
}

/// The size of the reply, or -1.
inline ssize_t exchange(const char* server, const char* request, char* reply, size_t size)
{
    static unsigned int serial = 0;
    char path[64];
    std::snprintf(path, sizeof path, "/tmp/exchange-%d-%u", getpid(), serial++);
    const int client = socket(AF_UNIX, SOCK_DGRAM, 0);
    const sockaddr_un own = address_of(path), peer = address_of(server);
    pollfd waiting{client, POLLIN, 0};
    unlink(path);
    if (bind(client, reinterpret_cast<const sockaddr*>(&own), sizeof own) != 0
        || chmod(path, S_IRUSR | S_IWUSR) != 0
        || connect(client, reinterpret_cast<const sockaddr*>(&peer), sizeof peer) != 0
        || send(client, request, std::strlen(request), 0) < 0 || poll(&waiting, 1, 3000) <= 0)
        return -1;
    const ssize_t received = recv(client, reply, size, 0);
    close(client);
    unlink(path);
    return received;
}
