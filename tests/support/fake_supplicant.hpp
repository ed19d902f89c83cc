// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

/// Stand-ins for wpa_supplicant, each with a control socket of its own.
///
///     FakeSupplicant supplicant({{"STATUS", {reply(connected_status("Home", 0))}}});
///     ...run the library or the program against supplicant.path()...
///     EXPECT_THAT(supplicant.requests(), ElementsAre("STATUS"));

#pragma once

#include "support/temporary_folder.hpp"

#include <sys/types.h>

#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

struct Request {
    std::string bytes;
    std::string sender;     ///< Path of the socket file it came from.
    mode_t sender_mode = 0; ///< Permission bits of that file when the request was read.
};

/// A datagram socket with a file of its own. Receives and sends only when the test says so.
class Peer {
public:
    Peer();
    ~Peer();
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;

    std::string path() const;
    std::string folder() const; ///< Holds the socket; removed with it.

    /// Waits for the next one. Without one in time, or after stop(), `sender` is empty.
    Request receive(int timeout_ms = 30000) const;
    /// Sends to the socket file `to`. Returns 0 or the error number.
    int send(const std::string& to, const std::string& bytes) const;
    void stop() const; ///< Ends receive() in another thread.
    void close_socket();

private:
    TemporaryFolder folder_;
    int socket_;
};

/// What the fake supplicant does about one request.
struct Answer {
    std::vector<std::string> datagrams; ///< Sent to the requester one after another.
    std::chrono::milliseconds delay{0}; ///< Before the first of them.
    bool last = false; ///< The socket is removed before the requester gets the answer.
};

Answer reply(std::string datagram, std::chrono::milliseconds delay = {});
Answer silence();
Answer last_reply(std::string datagram); ///< A reply from a supplicant that exits.

using Script = std::map<std::string, std::vector<Answer>>;
using Requests = std::vector<std::string>;

/// The one answer to `words` is the reply `text`.
Script replies(const std::string& words, const std::string& text);
/// Connected to Twins when first asked, then to `ssid`.
Script then_connected(const std::string& ssid, int id);
Script no_networks(); ///< Neither scanned nor saved.

/// Connected to Twins as profile 1, with the networks of `network_table` around. It replies OK to
/// whatever changes something, and is connected to Home2 as profile 3 from the second STATUS on.
class FakeSupplicant : private Peer {
public:
    explicit FakeSupplicant(Script changes = {});
    ~FakeSupplicant();

    /// Sets the answers to requests that equal `words` or start with `words` and a space; the
    /// longest match wins. The n-th such request gets the n-th answer; the last one is repeated.
    void on(const std::string& words, std::vector<Answer> answers);

    using Peer::folder;
    using Peer::path;
    std::vector<Request> records() const;
    Requests requests() const; ///< The bytes of records().

    /// Waits for a request that equals `bytes`. False if there is none within 30 s.
    bool wait_for_request(const std::string& bytes);

private:
    void serve();
    Answer next_answer(const std::string& request);

    mutable std::mutex mutex_;
    std::condition_variable arrived_;
    Script answers_;
    std::vector<Request> records_;
    std::thread thread_;
};

/// What `list` prints about the networks of the fake supplicant.
inline const std::string network_table = "1. * Twins  [WPA personal, -40 dBm, saved]\n"
                                         "2.   Mixed  [WPA personal, -50 dBm, saved]\n"
                                         "3.   Home  [unsupported, saved, saved]\n"
                                         "4.   Cafe  [open, -45 dBm]\n"
                                         "5.   Home2  [WPA personal, -50 dBm]\n"
                                         "6.   Office  [unsupported, -50 dBm]\n";

inline Requests operator+(Requests first, const Requests& more)
{
    first.insert(first.end(), more.begin(), more.end());
    return first;
}

/// The requests of `list --cached`, with which `connect` starts, too.
inline const Requests cached_list_requests = {"SCAN_RESULTS", "LIST_NETWORKS", "STATUS"};
/// The requests of `list`, with which `pick` starts, too.
inline const Requests list_requests = Requests{"SCAN"} + cached_list_requests;

inline Requests add_profile(const std::string& hexadecimal_name, const std::string& key_mgmt)
{
    return {"ADD_NETWORK", "SET_NETWORK 3 ssid " + hexadecimal_name,
            "SET_NETWORK 3 key_mgmt " + key_mgmt};
}

inline const Requests activate_and_save = {"ENABLE_NETWORK 3", "SELECT_NETWORK 3", "STATUS",
                                           "SAVE_CONFIG"};

inline Requests join_home2(const std::string& quoted_password = "\"home2-password\"")
{
    return add_profile("486f6d6532", "WPA-PSK") + Requests{"SET_NETWORK 3 psk " + quoted_password}
    + activate_and_save;
}
