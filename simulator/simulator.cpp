// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <limits>
#include <map>
#include <optional>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

using std::string;
using std::string_view;

constexpr std::int64_t never = std::numeric_limits<std::int64_t>::max();
constexpr size_t reply_limit = 4096;
constexpr std::int64_t scan_time = 1000; // milliseconds, as all times are
constexpr const char* ok = "OK\n";
constexpr const char* fail = "FAIL\n";

struct AccessPoint {
    string_view bssid;
    int frequency, level;
    string_view flags, ssid, password;
    string_view hidden_name{};

    bool is_open() const
    {
        return flags == "[ESS]";
    }
    bool offers(string_view word) const
    {
        return flags.find(word) != string_view::npos;
    }
};

// Of two with the same name, the stronger one comes first.
constexpr AccessPoint access_points[] = {
    {"02:00:00:00:04:00", 5180, -58, "[WPA2-SAE-CCMP][ESS]", "Modern", "modern-password"},
    {"02:00:00:00:0a:00", 2417, -42, "[WPA2-PSK-CCMP][ESS]", "Twins", "twins-password"},
    {"02:00:00:00:06:00", 2427, -63, "[WPA2-PSK-CCMP][ESS]", R"(Bob "5G" C:\net)", "bob-password"},
    {"02:00:00:00:02:00", 2437, -48, "[WPA2-PSK-CCMP][ESS]", "Home", "home-password"},
    {"02:00:00:00:09:00", 2452, -60, "[WPA2-EAP-CCMP][ESS]", "Office", ""},
    {"02:00:00:00:03:00", 2462, -52, "[WPA2-PSK+SAE-CCMP][ESS]", "Library", "library-password"},
    {"02:00:00:00:05:00", 2422, -66, "[WPA2-PSK-CCMP][ESS]", "Café du Nord", "nord-password"},
    {"02:00:00:00:07:00", 2442, -77, "[WPA2-PSK-CCMP][ESS]", "", "attic-password", "Attic"},
    {"02:00:00:00:0b:00", 5220, -81, "[WPA2-PSK-CCMP][ESS]", "Twins", "twins-password"},
    {"02:00:00:00:08:00", 2447, -70, "[WEP][ESS]", "Antique", ""},
    {"02:00:00:00:01:00", 2412, -45, "[ESS]", "Cafe", ""},
};

std::int64_t monotonic_milliseconds()
{
    return std::chrono::steady_clock::now().time_since_epoch() / std::chrono::milliseconds(1);
}

bool is_printable(char c)
{
    return c >= ' ' && c <= '~';
}

string hex_of(string_view bytes)
{
    constexpr string_view digits = "0123456789abcdef";
    string hex;
    for (const char c : bytes)
        hex += {digits[(c >> 4) & 15], digits[c & 15]};
    return hex;
}

string escaped(string_view bytes)
{
    static const std::map<char, string> escapes{{'"', "\\\""}, {'\\', "\\\\"}, {'\x1b', "\\e"},
                                                {'\n', "\\n"}, {'\r', "\\r"},  {'\t', "\\t"}};
    string text;
    for (const char c : bytes) {
        if (escapes.contains(c))
            text += escapes.at(c);
        else
            text += is_printable(c) ? string(1, c) : "\\x" + hex_of({&c, 1});
    }
    return text;
}

// The bytes of a quoted or hexadecimal value.
std::optional<string> decoded(const string& value)
{
    if (value.size() > 1 && value.starts_with('"') && value.ends_with('"'))
        return value.substr(1, value.size() - 2);
    if (value.size() % 2 != 0 || value.find_first_not_of("0123456789abcdefABCDEF") != string::npos)
        return std::nullopt;
    string bytes;
    for (size_t i = 0; i < value.size(); i += 2)
        bytes += static_cast<char>(std::stoi(value.substr(i, 2), nullptr, 16));
    return bytes;
}

// Has the fields that corvane-wifi and its panel set, and those that wpa_supplicant adds when it
// saves them.
struct Profile {
    string ssid{}, psk{};
    string key_mgmt{}; // empty: wpa_supplicant's default, any kind that needs a key
    string scan_ssid{}, ieee80211w{};
    bool disabled = false;

    bool set(const string& field, const string& value)
    {
        const std::optional<string> bytes = decoded(value);
        if (field == "ssid" && bytes && bytes->size() <= 32)
            ssid = *bytes;
        else if (field == "psk" && value.starts_with('"') && bytes && bytes->size() >= 8
                 && bytes->size() <= 63)
            psk = *bytes;
        else if (field == "key_mgmt"
                 && (value == "NONE" || value == "WPA-PSK" || value == "WPA-PSK SAE"))
            key_mgmt = value;
        else if (field == "scan_ssid" && (value == "0" || value == "1"))
            scan_ssid = value;
        else if (field == "ieee80211w" && (value == "0" || value == "1" || value == "2"))
            ieee80211w = value;
        else if (field == "disabled")
            disabled = value == "1";
        else
            return field == "mesh_fwding";
        return true;
    }

    // wpa_supplicant neither tries nor saves such a profile.
    bool lacks_key() const
    {
        return key_mgmt != "NONE" && psk.empty();
    }

    // The simulator connects only to open networks and those with a pre-shared key.
    bool fits(const AccessPoint& point) const
    {
        const bool is_suitable = key_mgmt == "NONE" ? point.is_open()
                                                    : !lacks_key()
                && (point.offers("-PSK") || (key_mgmt.ends_with("SAE") && point.offers("SAE")));
        const bool is_seen = ssid == point.ssid || (ssid == point.hidden_name && scan_ssid == "1");
        return !ssid.empty() && is_seen && is_suitable;
    }

    string block() const
    {
        const bool plain = std::ranges::all_of(ssid, is_printable);
        return "\nnetwork={\n\tssid=" + (plain ? '"' + ssid + '"' : hex_of(ssid)) + '\n'
            + (scan_ssid == "1" ? "\tscan_ssid=1\n" : "")
            + (psk.empty() ? "" : "\tpsk=\"" + psk + "\"\n")
            + (key_mgmt.empty() ? "" : "\tkey_mgmt=" + key_mgmt + '\n')
            + (disabled ? "\tdisabled=1\n" : "")
            + (ieee80211w.empty() ? "" : "\tieee80211w=" + ieee80211w + '\n') + "}\n";
    }
};

class Simulator {
public:
    /// Only access points of the names in `in_range` are in range, or all if it is empty.
    Simulator(string config_path, const std::set<string_view>& in_range)
        : config_path_(std::move(config_path))
    {
        for (const AccessPoint& point : access_points)
            if (in_range.empty() || in_range.contains(point.ssid))
                in_range_.push_back(point);
        std::ifstream file(config_path_);
        if (!file)
            throw std::runtime_error("cannot read " + config_path_);
        for (string line; std::getline(file >> std::ws, line);)
            load(line);
        connect_any();
    }

    string answer(const string& request)
    {
        now_ = monotonic_milliseconds();
        string reply = dispatch(request);
        if (reply.size() >= reply_limit)
            reply.resize(reply.rfind('\n', reply_limit - 2) + 1);
        return reply;
    }

private:
    void load(const string& line)
    {
        const size_t equals = line.find('=');
        if (line.starts_with('#') || line == "}")
            return;
        if (line == "network={")
            profiles_[next_id()] = {};
        else if (profiles_.empty())
            settings_ += line + '\n';
        else if (!profiles_.rbegin()->second.set(line.substr(0, equals), line.substr(equals + 1)))
            throw std::runtime_error("cannot read " + config_path_ + ": " + line);
    }

    int next_id() const
    {
        return profiles_.empty() ? 0 : profiles_.rbegin()->first + 1;
    }

    // From here on the state depends only on the time: see state().
    void connect(int id)
    {
        const Profile& profile = profiles_.at(id);
        const auto fitting = std::ranges::find_if(in_range_,
                                                  [&](auto& p) { return profile.fits(p); });
        point_ = fitting == in_range_.end() ? nullptr : &*fitting;
        completed_at_ = point_ && profile.psk == point_->password ? now_ + 1300 : never;
        current_ = id;
        since_ = now_;
        scan_end_ = now_ + scan_time;
    }

    void connect_any()
    {
        current_ = -1;
        idle_state_ = "INACTIVE";
        for (const auto& [id, profile] : profiles_)
            if (!profile.disabled && (current_ < 0 || !point_))
                connect(id);
    }

    // After a wrong password the network is left alone until it is selected again.
    bool is_refused() const
    {
        return point_ && completed_at_ == never && now_ - since_ >= 5200;
    }

    string state() const
    {
        const std::int64_t elapsed = now_ - since_;
        if (current_ < 0)
            return now_ < scan_end_ ? "SCANNING" : idle_state_;
        if (!point_ || elapsed < scan_time || is_refused())
            return "SCANNING";
        if (now_ >= completed_at_)
            return "COMPLETED";
        return elapsed < 1100 || point_->is_open() ? "ASSOCIATING" : "4WAY_HANDSHAKE";
    }

    string dispatch(const string& request)
    {
        using Handler = string (Simulator::*)(const string& arguments);
        static const std::map<string, Handler> handlers{
            {"STATUS", &Simulator::status},
            {"SCAN", &Simulator::scan},
            {"SCAN_RESULTS", &Simulator::scan_results},
            {"LIST_NETWORKS", &Simulator::list_networks},
            {"ADD_NETWORK", &Simulator::add_network},
            {"SET_NETWORK ", &Simulator::set_network},
            {"ENABLE_NETWORK ", &Simulator::enable_network},
            {"SELECT_NETWORK ", &Simulator::select_network},
            {"REMOVE_NETWORK ", &Simulator::remove_network},
            {"DISCONNECT", &Simulator::disconnect},
            {"SAVE_CONFIG", &Simulator::save_config}};
        if (request == "PING")
            return "PONG\n";
        const size_t space = request.find(' ');
        const size_t end = space == string::npos ? request.size() : space + 1;
        const auto found = handlers.find(request.substr(0, end));
        if (found == handlers.end())
            return "UNKNOWN COMMAND\n";
        try {
            return (this->*found->second)(request.substr(end));
        } catch (const std::logic_error&) { // no profile has that id
            return fail;
        }
    }

    string status(const string&)
    {
        const string now = state();
        std::ostringstream text;
        if (now == "4WAY_HANDSHAKE" || now == "COMPLETED") {
            const string cipher = point_->is_open() ? "NONE" : "CCMP";
            text << "bssid=" << point_->bssid << "\nfreq=" << point_->frequency
                 << "\nssid=" << escaped(profiles_.at(current_).ssid) << "\nid=" << current_
                 << "\nmode=station"
                 << "\npairwise_cipher=" << cipher << "\ngroup_cipher=" << cipher
                 << "\nkey_mgmt=" << (point_->is_open() ? "NONE" : "WPA2-PSK") << '\n';
        }
        text << "wpa_state=" << now << '\n';
        if (now == "COMPLETED" && now_ >= completed_at_ + 400)
            text << "ip_address=10.66.2.48\n";
        text << "address=02:00:00:00:00:00\nuuid=362db47b-a53a-5191-88fb-5458b986b2e4\n";
        return text.str();
    }

    string scan(const string&)
    {
        const string now = state();
        if (now_ < scan_end_ || now == "ASSOCIATING" || now == "4WAY_HANDSHAKE")
            return "FAIL-BUSY\n";
        scan_end_ = now_ + scan_time;
        return ok;
    }

    // Signals drift by up to 3 dB from one scan to the next.
    string scan_results(const string&)
    {
        std::ostringstream text;
        text << "bssid / frequency / signal level / flags / ssid\n";
        for (const AccessPoint& point : in_range_)
            if (scan_end_ > 0)
                text << point.bssid << '\t' << point.frequency << '\t'
                     << point.level + (scan_end_ + point.frequency) % 7 - 3 << '\t' << point.flags
                     << '\t' << escaped(point.ssid) << '\n';
        return text.str();
    }

    string list_networks(const string&)
    {
        const char* mark = is_refused() ? "[TEMP-DISABLED]" : "[CURRENT]";
        std::ostringstream text;
        text << "network id / ssid / bssid / flags\n";
        for (const auto& [id, profile] : profiles_)
            text << id << '\t' << escaped(profile.ssid) << "\tany\t" << (id == current_ ? mark : "")
                 << (profile.disabled ? "[DISABLED]" : "") << '\n';
        return text.str();
    }

    string add_network(const string&)
    {
        profiles_[next_id()].disabled = true;
        return std::to_string(profiles_.rbegin()->first) + '\n';
    }

    string set_network(const string& arguments)
    {
        std::istringstream words(arguments);
        int id = -1;
        string field, value;
        words >> id >> field;
        if (words.get() != ' ')
            return fail;
        std::getline(words, value);
        return profiles_.at(id).set(field, value) ? ok : fail;
    }

    string enable_network(const string& argument)
    {
        if (argument != "all") {
            profiles_.at(std::stoi(argument)).disabled = false;
            return ok;
        }
        for (auto& [id, profile] : profiles_)
            profile.disabled = false;
        const bool is_idle = current_ < 0 ? idle_state_ != "DISCONNECTED" : !point_ || is_refused();
        if (is_idle)
            connect_any();
        return ok;
    }

    string select_network(const string& argument)
    {
        const int selected = std::stoi(argument);
        if (selected != current_ || state() != "COMPLETED")
            connect(selected);
        for (auto& [id, profile] : profiles_)
            profile.disabled = id != selected;
        return ok;
    }

    string remove_network(const string& argument)
    {
        const int id = std::stoi(argument);
        if (profiles_.erase(id) == 0)
            return fail;
        if (id == current_)
            connect_any();
        return ok;
    }

    string disconnect(const string&)
    {
        current_ = -1;
        scan_end_ = std::min(scan_end_, now_);
        idle_state_ = "DISCONNECTED";
        return ok;
    }

    string save_config(const string&)
    {
        if (settings_.find("update_config=1\n") == string::npos)
            return fail;
        const string temporary = config_path_ + ".tmp";
        std::ofstream file(temporary);
        file << settings_;
        for (const auto& [id, profile] : profiles_)
            file << (profile.lacks_key() ? "" : profile.block());
        file.close();
        return file && std::rename(temporary.c_str(), config_path_.c_str()) == 0 ? ok : fail;
    }

    string config_path_;
    string settings_{}, idle_state_{};
    std::vector<AccessPoint> in_range_{};
    std::map<int, Profile> profiles_{};
    int current_ = -1;
    const AccessPoint* point_ = nullptr;
    std::int64_t now_ = monotonic_milliseconds();
    std::int64_t since_ = never, completed_at_ = never;
    std::int64_t scan_end_ = 0; // of the last scan, which may be under way
};

const char* socket_path = nullptr;

extern "C" void remove_socket_and_exit(int)
{
    unlink(socket_path);
    _exit(0);
}

int listen_at(const char* path)
{
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    if (std::strlen(path) >= sizeof address.sun_path)
        throw std::runtime_error("the socket path is too long");
    std::memcpy(address.sun_path, path, std::strlen(path));
    const int descriptor = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    // A signal during bind() waits for its handler, which removes the socket file.
    sigset_t ending;
    sigemptyset(&ending);
    for (const int number : {SIGTERM, SIGINT, SIGHUP})
        sigaddset(&ending, number);
    sigprocmask(SIG_BLOCK, &ending, nullptr);
    if (bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        // cppcheck-suppress resourceLeak ; the program ends
        throw std::runtime_error("cannot listen at " + string(path) + ": " + std::strerror(errno));
    socket_path = path;
    for (const int number : {SIGTERM, SIGINT, SIGHUP})
        static_cast<void>(std::signal(number, remove_socket_and_exit));
    sigprocmask(SIG_UNBLOCK, &ending, nullptr);
    return descriptor;
}

void answer_one(int descriptor, Simulator& simulator)
{
    char request[reply_limit] = {};
    sockaddr_un sender{};
    socklen_t length = sizeof sender;
    auto* from = reinterpret_cast<sockaddr*>(&sender);
    if (recvfrom(descriptor, request, sizeof request - 1, 0, from, &length) < 0)
        return;
    const string reply = simulator.answer(request);
    sendto(descriptor, reply.data(), reply.size(), MSG_DONTWAIT, from, length);
}

} // namespace

int main(int argc, char** argv)
{
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (argc == 2 && string(argv[1]) == "--help") {
        std::cout
            << "Usage: corvane-simulator SOCKET CONFIG_FILE [SSID...]\n"
               "Answers at SOCKET as wpa_supplicant would, with simulated networks in range and\n"
               "the saved ones in CONFIG_FILE. With SSIDs, only networks of these names are in\n"
               "range. Ends with the process that started it.\n";
        return 0;
    }
    try {
        if (argc < 3 || *argv[1] == '\0')
            throw std::runtime_error("expected SOCKET and CONFIG_FILE, see --help");
        Simulator simulator(argv[2], {argv + 3, argv + argc});
        const int descriptor = listen_at(argv[1]);
        for (;;)
            answer_one(descriptor, simulator);
    } catch (const std::exception& error) {
        std::cerr << "corvane-simulator: " << error.what() << '\n';
    }
    return 1;
}
