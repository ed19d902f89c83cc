// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

#pragma once

#include <sys/socket.h>
#include <sys/un.h>

#include <string>

/// The address of a socket file, as bind(), connect() and sendto() take it.
class UnixAddress {
public:
    explicit UnixAddress(const std::string& path)
    {
        address_.sun_family = AF_UNIX;
        path.copy(address_.sun_path, sizeof(address_.sun_path) - 1);
    }

    const sockaddr* get() const
    {
        return reinterpret_cast<const sockaddr*>(&address_);
    }
    static constexpr socklen_t size = sizeof(sockaddr_un);

private:
    sockaddr_un address_{};
};
