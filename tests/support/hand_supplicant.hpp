// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

#pragma once

#include "support/temporary_folder.hpp"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <stdexcept>
#include <string>

/// A supplicant whose part the test plays itself, datagram by datagram.
class HandSupplicant {
public:
    struct Request {
        std::string bytes;
        std::string sender; ///< Empty when there was none.
    };

    HandSupplicant()
        : socket_(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0))
    {
        const sockaddr_un address = address_of(path());
        if (bind(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0)
            throw std::runtime_error("supplicant's socket");
    }
    ~HandSupplicant()
    {
        close(socket_);
    }
    HandSupplicant(const HandSupplicant&) = delete;
    HandSupplicant& operator=(const HandSupplicant&) = delete;

    static sockaddr_un address_of(const std::string& path)
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        path.copy(address.sun_path, sizeof(address.sun_path) - 1);
        return address;
    }

    std::string path() const
    {
        return folder_.path() + "/wlan0";
    }

    /// Waits for a request: 30 s, or to the call of stop().
    Request receive() const
    {
        pollfd waiting{socket_, POLLIN, 0};
        if (poll(&waiting, 1, 30000) <= 0)
            return {};
        std::array<char, 256> bytes;
        sockaddr_un sender{};
        socklen_t length = sizeof(sender);
        const ssize_t size = recvfrom(socket_, bytes.data(), bytes.size(), 0,
                                      reinterpret_cast<sockaddr*>(&sender), &length);
        if (size <= 0)
            return {};
        return {{bytes.data(), static_cast<size_t>(size)}, sender.sun_path};
    }

    /// Sends to the socket file `to`; 0, or the error.
    int send(const std::string& to, const std::string& bytes) const
    {
        const sockaddr_un address = address_of(to);
        const ssize_t size = sendto(socket_, bytes.data(), bytes.size(), 0,
                                    reinterpret_cast<const sockaddr*>(&address), sizeof(address));
        return size < 0 ? errno : 0;
    }

    void stop() const
    {
        shutdown(socket_, SHUT_RD);
    }

private:
    TemporaryFolder folder_;
    int socket_;
};
