// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

#include "support/fake_supplicant.hpp"

#include "support/replies.hpp"

#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>

namespace {

sockaddr_un unix_address(const std::string& path)
{
    sockaddr_un address{AF_UNIX, {}};
    path.copy(address.sun_path, sizeof(address.sun_path) - 1);
    return address;
}

} // namespace

Peer::Peer()
    : socket_(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0))
{
    const sockaddr_un address = unix_address(path());
    if (bind(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0)
        throw std::system_error(errno, std::generic_category(), "bind");
}

Peer::~Peer()
{
    close_socket();
}

std::string Peer::path() const
{
    return folder() + "/wlan0";
}

std::string Peer::folder() const
{
    return folder_.path();
}

Request Peer::receive(int timeout_ms) const
{
    pollfd waiting{socket_, POLLIN, 0};
    if (poll(&waiting, 1, timeout_ms) <= 0)
        return {};
    std::array<char, 65536> bytes;
    sockaddr_un sender{};
    socklen_t length = sizeof(sender);
    const ssize_t size = recvfrom(socket_, bytes.data(), bytes.size(), 0,
                                  reinterpret_cast<sockaddr*>(&sender), &length);
    if (size <= 0)
        return {};
    struct stat file { };
    stat(sender.sun_path, &file);
    return {{bytes.data(), static_cast<size_t>(size)}, sender.sun_path, file.st_mode & 07777};
}

int Peer::send(const std::string& to, const std::string& bytes) const
{
    const sockaddr_un address = unix_address(to);
    const ssize_t sent = sendto(socket_, bytes.data(), bytes.size(), 0,
                                reinterpret_cast<const sockaddr*>(&address), sizeof(address));
    return sent < 0 ? errno : 0;
}

void Peer::stop() const
{
    shutdown(socket_, SHUT_RD);
}

void Peer::close_socket()
{
    if (socket_ >= 0)
        close(socket_);
    socket_ = -1;
}

Answer reply(std::string datagram, std::chrono::milliseconds delay)
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

Script replies(const std::string& words, const std::string& text)
{
    return {{words, {reply(text)}}};
}

Script then_connected(const std::string& ssid, int id)
{
    return {{"STATUS", {reply(connected_status("Twins", 1)), reply(connected_status(ssid, id))}}};
}

Script no_networks()
{
    return {{"SCAN_RESULTS", {reply(scan_results(""))}},
            {"LIST_NETWORKS", {reply(profile_list(""))}}};
}

FakeSupplicant::FakeSupplicant(Script changes)
    : answers_(std::move(changes))
{
    answers_.merge(Script{
        {"SCAN", {reply("OK\n")}},
        {"SCAN_RESULTS",
         {reply(scan_results("02:00:00:00:0a:00\t2417\t-40\t[WPA2-PSK-CCMP][ESS]\tTwins\n"
                             "02:00:00:00:02:00\t2437\t-50\t[WPA2-PSK-CCMP][ESS]\tHome2\n"
                             "02:00:00:00:09:00\t2452\t-50\t[WPA2-EAP-CCMP][ESS]\tOffice\n"
                             "02:00:00:00:03:00\t2462\t-50\t[WPA2-PSK+SAE-CCMP][ESS]\tMixed\n"
                             "02:00:00:00:0b:00\t5220\t-81\t[WPA2-PSK-CCMP][ESS]\tTwins\n"
                             "02:00:00:00:01:00\t2412\t-45\t[ESS]\tCafe\n"))}},
        {"LIST_NETWORKS",
         {reply(profile_list("0\tHome\tany\t[DISABLED]\n1\tTwins\tany\t[CURRENT]\n"
                             "2\tMixed\tany\t[DISABLED]\n"))}},
        {"STATUS", {reply(connected_status("Twins", 1)), reply(connected_status("Home2", 3))}},
        {"ADD_NETWORK", {reply("3\n")}},
    });
    for (const char* request : {"SET_NETWORK", "ENABLE_NETWORK", "SELECT_NETWORK", "REMOVE_NETWORK",
                                "SAVE_CONFIG", "DISCONNECT"})
        answers_.try_emplace(request, std::vector{reply("OK\n")});
    thread_ = std::thread([this] { serve(); });
}

FakeSupplicant::~FakeSupplicant()
{
    {
        const std::lock_guard lock(mutex_);
        stop();
    }
    thread_.join();
}

void FakeSupplicant::on(const std::string& words, std::vector<Answer> answers)
{
    const std::lock_guard lock(mutex_);
    answers_[words] = std::move(answers);
}

std::vector<Request> FakeSupplicant::records() const
{
    const std::lock_guard lock(mutex_);
    return records_;
}

Requests FakeSupplicant::requests() const
{
    Requests result;
    for (const Request& record : records())
        result.push_back(record.bytes);
    return result;
}

bool FakeSupplicant::wait_for_request(const std::string& bytes)
{
    std::unique_lock lock(mutex_);
    return arrived_.wait_for(lock, std::chrono::seconds(30), [&] {
        return std::ranges::find(records_, bytes, &Request::bytes) != records_.end();
    });
}

void FakeSupplicant::serve()
{
    for (Request request = receive(-1); !request.sender.empty(); request = receive(-1)) {
        const Answer answer = next_answer(request.bytes);
        {
            const std::lock_guard lock(mutex_);
            records_.push_back(request);
        }
        arrived_.notify_all();

        std::this_thread::sleep_for(answer.delay);
        if (answer.last)
            unlink(path().c_str()); // before the reply: the next request must not arrive here
        for (const std::string& datagram : answer.datagrams)
            send(request.sender, datagram);
        if (answer.last)
            break;
    }
    const std::lock_guard lock(mutex_);
    close_socket();
}

Answer FakeSupplicant::next_answer(const std::string& request)
{
    const std::lock_guard lock(mutex_);
    std::string words = request;
    auto entry = answers_.find(words);
    while (entry == answers_.end() && !words.empty()) {
        const size_t space = words.rfind(' ');
        words.erase(space == std::string::npos ? 0 : space);
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
