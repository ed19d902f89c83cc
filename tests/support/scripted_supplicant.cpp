// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

#include "support/scripted_supplicant.hpp"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <system_error>

namespace {

sockaddr_un address_of(const std::string& path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof(address.sun_path) - 1);
    return address;
}

void check(bool good, const char* what)
{
    if (!good)
        throw std::system_error(errno, std::generic_category(), what);
}

} // namespace

Answer reply(std::string datagram)
{
    return {{std::move(datagram)}};
}

Answer late_reply(std::chrono::milliseconds delay, std::string datagram)
{
    return {{std::move(datagram)}, delay};
}

Answer silence()
{
    return {};
}

Answer last_reply(std::string datagram)
{
    return {{std::move(datagram)}, {}, true};
}

Answer death()
{
    return {{}, {}, true};
}

ScriptedSupplicant::ScriptedSupplicant()
    : socket_(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0))
    , stop_(eventfd(0, EFD_CLOEXEC))
{
    check(socket_ >= 0 && stop_ >= 0, "socket");
    const sockaddr_un address = address_of(path());
    check(bind(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0, "bind");
    on("STATUS", {reply("wpa_state=DISCONNECTED\naddress=02:00:00:00:00:00\n")});
    on("SCAN", {reply("OK\n")});
    on("SCAN_RESULTS", {reply("bssid / frequency / signal level / flags / ssid\n")});
    on("LIST_NETWORKS", {reply("network id / ssid / bssid / flags\n")});
    thread_ = std::thread([this] { serve(); });
}

ScriptedSupplicant::~ScriptedSupplicant()
{
    const uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = write(stop_, &one, sizeof(one));
    thread_.join();
    leave();
    close(stop_);
}

void ScriptedSupplicant::on(const std::string& words, std::vector<Answer> answers)
{
    const std::lock_guard lock(mutex_);
    answers_[words] = std::move(answers);
}

std::string ScriptedSupplicant::path() const
{
    return folder_.path() + "/wlan0";
}

std::string ScriptedSupplicant::folder() const
{
    return folder_.path();
}

std::vector<Request> ScriptedSupplicant::records() const
{
    const std::lock_guard lock(mutex_);
    return records_;
}

std::vector<std::string> ScriptedSupplicant::requests() const
{
    std::vector<std::string> result;
    for (const Request& record : records())
        result.push_back(record.bytes);
    return result;
}

bool ScriptedSupplicant::wait_for(const std::string& bytes, size_t count)
{
    std::unique_lock lock(mutex_);
    return arrived_.wait_for(lock, std::chrono::seconds(30), [&] {
        return static_cast<size_t>(std::ranges::count(records_, bytes, &Request::bytes)) >= count;
    });
}

void ScriptedSupplicant::serve()
{
    std::string buffer(1 << 17, '\0');
    while (socket_ >= 0) {
        pollfd waiting[] = {{socket_, POLLIN, 0}, {stop_, POLLIN, 0}};
        if (poll(waiting, 2, -1) < 0 || waiting[1].revents != 0)
            return;
        sockaddr_un sender{};
        socklen_t length = sizeof(sender);
        const ssize_t size = recvfrom(socket_, buffer.data(), buffer.size(), 0,
                                      reinterpret_cast<sockaddr*>(&sender), &length);
        if (size >= 0)
            handle(buffer.substr(0, static_cast<size_t>(size)), sender.sun_path);
    }
}

void ScriptedSupplicant::handle(const std::string& bytes, const std::string& sender)
{
    struct stat file { };
    stat(sender.c_str(), &file);
    const Answer answer = next_answer(bytes);
    {
        const std::lock_guard lock(mutex_);
        records_.push_back({bytes, sender, file.st_mode & 07777});
    }
    arrived_.notify_all();

    std::this_thread::sleep_for(answer.delay);
    if (answer.last)
        unlink(path().c_str()); // first, so that no further request gets in behind the reply
    const sockaddr_un address = address_of(sender);
    for (const std::string& datagram : answer.datagrams)
        sendto(socket_, datagram.data(), datagram.size(), 0,
               reinterpret_cast<const sockaddr*>(&address), sizeof(address));
    if (answer.last)
        leave();
}

Answer ScriptedSupplicant::next_answer(const std::string& request)
{
    const std::lock_guard lock(mutex_);
    std::string words = request;
    auto entry = answers_.find(words);
    while (entry == answers_.end() && !words.empty()) {
        const size_t blank = words.rfind(' ');
        words.erase(blank == std::string::npos ? 0 : blank);
        entry = answers_.find(words);
    }
    if (entry == answers_.end())
        return reply("UNKNOWN COMMAND\n");
    std::vector<Answer>& answers = entry->second;
    const Answer answer = answers.front();
    if (answers.size() > 1)
        answers.erase(answers.begin());
    return answer;
}

void ScriptedSupplicant::leave()
{
    if (socket_ < 0)
        return;
    unlink(path().c_str());
    close(socket_);
    socket_ = -1;
}
