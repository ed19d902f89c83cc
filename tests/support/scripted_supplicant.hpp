// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

/// A wpa_supplicant that says what a test tells it to, on a socket of its own.
///
///     ScriptedSupplicant supplicant;
///     supplicant.on("STATUS", {reply(connected_to_home)});
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

/// What the supplicant does about one request.
struct Answer {
    std::vector<std::string> datagrams; ///< Sent to the requester one after another.
    std::chrono::milliseconds delay{0}; ///< Passes before the first of them.
    bool last = false; ///< Whoever has the answer finds nobody there, socket file and all.
};

Answer reply(std::string datagram);
Answer late_reply(std::chrono::milliseconds delay, std::string datagram);
Answer silence();
Answer last_reply(std::string datagram); ///< A reply, and nobody there from then on.
Answer death();                          ///< No reply, and nobody there from now on.

class ScriptedSupplicant {
public:
    /// Knows the replies of an idle wpa_supplicant without networks; everything else is
    /// "UNKNOWN COMMAND".
    ScriptedSupplicant();
    ~ScriptedSupplicant();
    ScriptedSupplicant(const ScriptedSupplicant&) = delete;
    ScriptedSupplicant& operator=(const ScriptedSupplicant&) = delete;

    /// Answers the requests that are `words` or begin with `words` and a blank, the longest such
    /// `words` deciding. The n-th of them gets the n-th answer; the last answer is used again.
    void on(const std::string& words, std::vector<Answer> answers);

    std::string path() const;
    std::string folder() const; ///< Holds the socket; goes away with the supplicant.
    std::vector<Request> records() const;
    std::vector<std::string> requests() const; ///< The bytes of records().

    /// Waits until `count` requests that equal `bytes` have come in. False after 30 s without.
    bool wait_for(const std::string& bytes, size_t count = 1);

private:
    void serve();
    void handle(const std::string& bytes, const std::string& sender);
    Answer next_answer(const std::string& request);
    void leave();

    TemporaryFolder folder_;
    int socket_ = -1;
    int stop_ = -1; ///< An eventfd that ends serve().
    mutable std::mutex mutex_;
    std::condition_variable arrived_;
    std::map<std::string, std::vector<Answer>> answers_;
    std::vector<Request> records_;
    std::thread thread_;
};
