// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

#include <poll.h>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <limits>
#include <map>
#include <random>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

using std::string;

constexpr long never = std::numeric_limits<long>::max();
constexpr size_t reply_limit = 4096;
const string ok = "OK\n", fail = "FAIL\n", unknown = "UNKNOWN COMMAND\n";

struct AccessPoint {
    string bssid;
    int frequency;
    int level;
    string flags;
    string ssid;
    string password;
};

const std::vector<AccessPoint> air{
    { "02:00:00:00:04:00", 5180, -58, "[WPA2-SAE-CCMP][SAE-H2E][ESS]", "Modern",
      "modern-password" },
    { "02:00:00:00:0a:00", 2417, -42, "[WPA2-PSK-CCMP][ESS]", "Twins", "twins-password" },
    { "02:00:00:00:06:00", 2427, -63, "[WPA2-PSK-CCMP][ESS]", R"(Bob "5G" C:\net)",
      "bobs-password" },
    { "02:00:00:00:02:00", 2437, -48, "[WPA2-PSK-CCMP][ESS]", "Home2", "home2-password" },
    { "02:00:00:00:09:00", 2452, -60, "[WPA2-EAP-CCMP][ESS]", "Office", "" },
    { "02:00:00:00:03:00", 2462, -52, "[WPA2-PSK+SAE-CCMP][ESS]", "Mixed", "mixed-password" },
    { "02:00:00:00:05:00", 2422, -66, "[WPA2-PSK-CCMP][ESS][UTF-8]", "Café du Nord",
      "nord-password" },
    { "02:00:00:00:07:00", 2442, -77, "[WPA2-PSK-CCMP][ESS]", "", "hidden-password" },
    { "02:00:00:00:0b:00", 5220, -81, "[WPA2-PSK-CCMP][ESS]", "Twins", "twins-password" },
    { "02:00:00:00:08:00", 2447, -70, "[WEP][ESS]", "Antique", "" },
    { "02:00:00:00:01:00", 2412, -45, "[ESS]", "Cafe", "" },
};

struct Field {
    string name;
    string initial; // empty: GET_NETWORK fails until it is set
    string unsaved;
    long highest;
};

// In the order of the saved file.
const std::vector<Field> fields{
    { "ssid", "", "", 0 },
    { "scan_ssid", "0", "0", 1 },
    { "psk", "", "", 0 },
    { "key_mgmt", "WPA-PSK WPA-EAP", "WPA-PSK WPA-EAP", 0 },
    { "priority", "0", "0", never },
    { "mesh_fwding", "1", "0", 1 },
    { "disabled", "0", "0", 1 },
    { "ieee80211w", "3", "3", 3 },
};

bool has(const string& text, const string& part)
{
    return text.find(part) != string::npos;
}

bool is_printable(char c)
{
    return c >= ' ' && c <= '~';
}

string hex_of(const string& bytes)
{
    string hex;
    for (const char c : bytes) {
        hex += "0123456789abcdef"[(c >> 4) & 15];
        hex += "0123456789abcdef"[c & 15];
    }
    return hex;
}

string escaped(const string& bytes)
{
    static const string plain = "\"\\\x1b\n\r\t";
    string text;
    for (const char c : bytes) {
        if (const size_t at = plain.find(c); at != string::npos)
            text += { '\\', "\"\\enrt"[at] };
        else
            text += is_printable(c) ? string(1, c) : "\\x" + hex_of({ c });
    }
    return text;
}

bool decode(const string& value, string& bytes)
{
    bytes.clear();
    if (value.starts_with('"')) {
        bytes = value.substr(1, value.size() - 2);
        return value.size() > 1 && value.ends_with('"');
    }
    for (size_t i = 0; i + 1 < value.size(); i += 2)
        bytes += static_cast<char>(std::strtol(value.substr(i, 2).c_str(), nullptr, 16));
    return value.size() % 2 == 0
        && value.find_first_not_of("0123456789abcdefABCDEF") == string::npos;
}

bool set_ssid(string& field, const string& value)
{
    string bytes;
    if (!decode(value, bytes) || bytes.size() > 32)
        return false;
    field = std::ranges::all_of(bytes, is_printable) ? '"' + bytes + '"' : hex_of(bytes);
    return true;
}

// The daemon forgives a missing closing quote and drops what follows the last one.
bool set_psk(string& field, const string& value)
{
    string bytes;
    if (!value.starts_with('"')) {
        if (value.size() != 64 || !decode(value, bytes))
            return false;
        field = hex_of(bytes);
        return true;
    }
    const size_t end = value.rfind('"');
    bytes = value.substr(1, end == 0 ? string::npos : end - 1);
    const auto is_control = [](unsigned char c) { return c < 32 || c == 127; };
    if (bytes.size() < 8 || bytes.size() > 63 || std::ranges::any_of(bytes, is_control))
        return false;
    field = '"' + bytes + '"';
    return true;
}

// The daemon keeps the words it knows even when it answers FAIL.
bool set_key_mgmt(string& field, const string& value)
{
    std::istringstream words(value);
    std::set<string> chosen{ std::istream_iterator<string>(words), {} };
    field.clear();
    for (const char* known : { "WPA-PSK", "WPA-EAP", "IEEE8021X", "NONE", "SAE", "OWE" }) {
        if (chosen.erase(known) > 0)
            field += (field.empty() ? "" : " ") + string(known);
    }
    return chosen.empty() && !field.empty();
}

bool set_number(string& field, const string& value, long highest)
{
    char* end = nullptr;
    const long number = std::strtol(value.c_str(), &end, 0);
    if (*end != '\0' || number > highest)
        return false;
    field = std::to_string(number);
    return true;
}

struct Profile {
    int id = 0;
    std::map<string, string> values{};
    int failures = 0;
    long held_until = 0;

    explicit Profile(int number)
        : id(number)
    {
        for (const Field& field : fields)
            values[field.name] = field.initial;
    }

    const string& get(const string& name) const
    {
        return values.at(name);
    }

    bool set(const string& name, const string& value)
    {
        const auto field = std::ranges::find(fields, name, &Field::name);
        if (field == fields.end())
            return false;
        string& target = values[name];
        if (name == "ssid")
            return set_ssid(target, value);
        if (name == "psk")
            return set_psk(target, value);
        return name == "key_mgmt" ? set_key_mgmt(target, value)
                                  : set_number(target, value, field->highest);
    }

    // Such a profile is neither tried nor saved.
    bool lacks_key() const
    {
        const string& key_mgmt = get("key_mgmt");
        return (has(key_mgmt, "WPA-PSK") || has(key_mgmt, "SAE")) && get("psk").empty();
    }

    bool is_usable() const
    {
        return get("disabled") == "0" && !lacks_key();
    }

    void enable()
    {
        values["disabled"] = "0";
        failures = 0;
        held_until = 0;
    }

    string ssid() const
    {
        string bytes;
        decode(get("ssid"), bytes);
        return bytes;
    }

    // Only open networks and those with a pre-shared key can be joined here.
    bool fits(const AccessPoint& point) const
    {
        const bool is_open = point.flags == "[ESS]";
        return !point.ssid.empty() && ssid() == point.ssid && (is_open || has(point.flags, "-PSK"))
            && has(get("key_mgmt"), is_open ? "NONE" : "WPA-PSK");
    }

    string block() const
    {
        string text = "\nnetwork={\n";
        for (const Field& field : fields) {
            if (get(field.name) != field.unsaved)
                text += '\t' + field.name + '=' + get(field.name) + '\n';
        }
        return text + "}\n";
    }
};

// STATUS names the network from Handshake on.
enum State { Disconnected, Inactive, Scanning, Associating, Handshake, Completed };
constexpr std::array state_names{ "DISCONNECTED", "INACTIVE",       "SCANNING",
                                  "ASSOCIATING",  "4WAY_HANDSHAKE", "COMPLETED" };

class Simulator {
public:
    Simulator(const string& socket_path, string config_path)
        : config_path_(std::move(config_path))
        , globals_("ctrl_interface=" + socket_path.substr(0, socket_path.rfind('/'))
                   + "\nupdate_config=1\n")
    {
        if (std::ifstream file(config_path_); file)
            load(file);
    }

    string answer(const string& request, long now)
    {
        advance(now);
        string reply = dispatch(request);
        if (reply.size() >= reply_limit)
            reply.resize(reply.rfind('\n', reply_limit - 2) + 1);
        return reply;
    }

    void connect_saved(long now)
    {
        now_ = now;
        if (is_any_usable())
            seek();
    }

private:
    void load(std::ifstream& file)
    {
        bool inside = false;
        globals_.clear();
        for (string line; std::getline(file, line);) {
            line.erase(0, line.find_first_not_of(" \t"));
            const size_t equals = line.find('=');
            if (line.empty() || line.starts_with('#'))
                continue;
            if (line == "}" || line == "network={")
                inside = line != "}";
            else if (!inside)
                globals_ += line + '\n';
            else if (!profiles_.back().set(line.substr(0, equals), line.substr(equals + 1)))
                throw std::runtime_error("cannot read " + config_path_ + ": " + line);
            if (line == "network={")
                profiles_.emplace_back(next_id());
        }
    }

    string save_config()
    {
        const string temporary = config_path_ + ".tmp";
        if (!has(globals_, "update_config=1\n"))
            return fail;
        std::ofstream file(temporary);
        file << globals_;
        for (const Profile& profile : profiles_)
            file << (profile.lacks_key() ? "" : profile.block());
        file.close();
        if (file && std::rename(temporary.c_str(), config_path_.c_str()) == 0)
            return ok;
        unlink(temporary.c_str());
        return fail;
    }

    int next_id() const
    {
        return profiles_.empty() ? 0 : profiles_.back().id + 1;
    }

    Profile* find(int id)
    {
        const auto found = std::ranges::find(profiles_, id, &Profile::id);
        return found == profiles_.end() ? nullptr : &*found;
    }

    bool is_any_usable() const
    {
        return std::ranges::any_of(profiles_, &Profile::is_usable);
    }

    // Makes up in order for what became due since the last request.
    void advance(long now)
    {
        while (std::min(scan_end_, step_at_) <= now) {
            now_ = std::min(scan_end_, step_at_);
            if (scan_end_ <= step_at_)
                finish_scan();
            else
                step();
        }
        now_ = now;
    }

    void enter(State state, long delay = 0)
    {
        state_ = state;
        since_ = now_;
        step_at_ = delay > 0 ? now_ + delay : never;
    }

    void search()
    {
        enter(Scanning);
        if (scan_end_ == never)
            scan_end_ = now_ + 1000;
    }

    void finish_scan()
    {
        scan_end_ = never;
        scanned_at_ = now_;
        for (int& drift : drifts_)
            drift = static_cast<int>(random_() % 7) - 3;
        if (state_ != Scanning)
            return;
        if (stopped_ || !is_any_usable())
            enter(stopped_ ? Disconnected : Inactive);
        else if (!join())
            enter(Scanning, 5000);
    }

    void seek()
    {
        const bool fresh = scanned_at_ != never && now_ - scanned_at_ < 5000;
        if (!is_any_usable())
            enter(Inactive);
        else if (!fresh || !join())
            search();
    }

    bool join()
    {
        std::pair<long, int> best;
        point_ = nullptr;
        for (const Profile& profile : profiles_) {
            for (size_t i = 0; i < air.size(); ++i) {
                const std::pair rank(std::stol(profile.get("priority")), level(i));
                if (!profile.is_usable() || profile.held_until > now_ || !profile.fits(air[i])
                    || (point_ && rank <= best))
                    continue;
                best = rank;
                point_ = &air[i];
                current_ = profile.id;
                accepted_ = profile.get("psk") == '"' + point_->password + '"';
            }
        }
        if (point_)
            enter(Associating, 200);
        return point_ != nullptr;
    }

    void step()
    {
        if (state_ == Scanning)
            search();
        else if (state_ == Associating && !is_open())
            enter(Handshake, accepted_ ? 300 : 4100);
        else if (state_ == Associating || accepted_)
            enter(Completed);
        else
            refuse();
    }

    void refuse()
    {
        Profile& profile = *find(current_);
        profile.held_until = now_ + 10000 * ++profile.failures;
        current_ = -1;
        enter(Scanning, 100);
    }

    bool is_open() const
    {
        return point_->flags == "[ESS]";
    }

    int level(size_t index) const
    {
        return air[index].level + drifts_[index];
    }

    string dispatch(const string& request)
    {
        using Plain = string (Simulator::*)();
        using WithId = string (Simulator::*)(const string&);
        static const std::map<string, Plain> plain{
            { "STATUS", &Simulator::status },
            { "SCAN", &Simulator::scan },
            { "SCAN_RESULTS", &Simulator::scan_results },
            { "LIST_NETWORKS", &Simulator::list_networks },
            { "ADD_NETWORK", &Simulator::add_network },
            { "DISCONNECT", &Simulator::disconnect },
            { "SAVE_CONFIG", &Simulator::save_config },
        };
        static const std::map<string, WithId> with_id{
            { "SET_NETWORK", &Simulator::set_network },
            { "GET_NETWORK", &Simulator::get_network },
            { "ENABLE_NETWORK", &Simulator::enable_network },
            { "SELECT_NETWORK", &Simulator::select_network },
            { "REMOVE_NETWORK", &Simulator::remove_network },
        };
        if (request == "PING")
            return "PONG\n";
        if (const auto found = plain.find(request); found != plain.end())
            return (this->*found->second)();
        const size_t space = request.find(' ');
        const auto found = with_id.find(request.substr(0, space));
        if (found == with_id.end() || space == string::npos)
            return unknown;
        return (this->*found->second)(request.substr(space + 1));
    }

    string connection() const
    {
        const string cipher = is_open() ? "NONE" : "CCMP";
        return "bssid=" + point_->bssid + "\nfreq=" + std::to_string(point_->frequency)
            + "\nssid=" + escaped(point_->ssid) + "\nid=" + std::to_string(current_)
            + "\nmode=station\nwifi_generation=4\npairwise_cipher=" + cipher
            + "\ngroup_cipher=" + cipher + "\nkey_mgmt=" + (is_open() ? "NONE" : "WPA2-PSK") + '\n';
    }

    string status()
    {
        const bool addressed = state_ == Completed && now_ - since_ >= 400;
        return (state_ >= Handshake ? connection() : "") + "wpa_state=" + state_names[state_] + '\n'
            + (addressed ? "ip_address=10.66.2.48\n" : "")
            + "p2p_device_address=42:00:00:00:00:00\naddress=02:00:00:00:00:00\n"
              "uuid=362db47b-a53a-5191-88fb-5458b986b2e4\n";
    }

    string scan()
    {
        if (scan_end_ != never || state_ == Associating || state_ == Handshake)
            return "FAIL-BUSY\n";
        if (state_ != Completed)
            enter(Scanning);
        scan_end_ = now_ + 1000;
        return ok;
    }

    string scan_results()
    {
        string text = "bssid / frequency / signal level / flags / ssid\n";
        for (size_t i = 0; i < air.size() && scanned_at_ != never; ++i) {
            text += air[i].bssid + '\t' + std::to_string(air[i].frequency) + '\t'
                + std::to_string(level(i)) + '\t' + air[i].flags + '\t' + escaped(air[i].ssid)
                + '\n';
        }
        return text;
    }

    string list_networks()
    {
        string text = "network id / ssid / bssid / flags\n";
        for (const Profile& profile : profiles_) {
            text += std::to_string(profile.id) + '\t' + escaped(profile.ssid()) + "\tany\t"
                + (profile.id == current_ ? "[CURRENT]" : "")
                + (profile.get("disabled") == "0" ? "" : "[DISABLED]")
                + (profile.held_until > now_ ? "[TEMP-DISABLED]" : "") + '\n';
        }
        return text;
    }

    string add_network()
    {
        profiles_.emplace_back(next_id()).values["disabled"] = "1";
        return std::to_string(profiles_.back().id) + '\n';
    }

    string set_network(const string& arguments)
    {
        const size_t name = arguments.find(' ');
        const size_t value = arguments.find(' ', name + 1);
        Profile* profile = find(std::atoi(arguments.c_str()));
        if (!profile || name == string::npos || value == string::npos)
            return fail;
        const bool good = profile->set(arguments.substr(name + 1, value - name - 1),
                                       arguments.substr(value + 1));
        return good ? ok : fail;
    }

    string get_network(const string& arguments)
    {
        const size_t space = arguments.find(' ');
        const string name = space == string::npos ? "" : arguments.substr(space + 1);
        const Profile* profile = find(std::atoi(arguments.c_str()));
        if (!profile || !profile->values.contains(name) || profile->get(name).empty())
            return fail;
        return name == "psk" ? "*" : profile->get(name);
    }

    string enable_network(const string& which)
    {
        Profile* profile = find(std::atoi(which.c_str()));
        if (!profile && which != "all")
            return fail;
        for (Profile& each : profiles_) {
            if (&each == profile || which == "all")
                each.enable();
        }
        // After DISCONNECT only SELECT_NETWORK connects again.
        if (!stopped_ && current_ < 0 && !has(which, " no-connect"))
            seek();
        return ok;
    }

    string select_network(const string& which)
    {
        const Profile* chosen = which == "any" ? nullptr : find(std::atoi(which.c_str()));
        if (!chosen && which != "any")
            return fail;
        for (Profile& each : profiles_) {
            if (!chosen || &each == chosen)
                each.enable();
            else
                each.values["disabled"] = "1";
        }
        stopped_ = false;
        if (state_ >= Associating && (!chosen || chosen->id == current_))
            return ok;
        current_ = chosen ? chosen->id : -1;
        seek();
        return ok;
    }

    string disconnect()
    {
        stopped_ = true;
        current_ = -1;
        enter(Disconnected);
        return ok;
    }

    string remove_network(const string& which)
    {
        const int id = std::atoi(which.c_str());
        if (which != "all" && !find(id))
            return fail;
        std::erase_if(profiles_, [&](const Profile& p) { return which == "all" || p.id == id; });
        if (current_ >= 0 && !find(current_)) {
            current_ = -1;
            seek();
        }
        return ok;
    }

    string config_path_;
    string globals_;
    std::vector<Profile> profiles_{};
    std::minstd_rand random_{};
    std::vector<int> drifts_ = std::vector<int>(air.size());
    State state_ = Disconnected;
    long now_ = 0;
    long since_ = 0;
    long step_at_ = never;
    long scan_end_ = never;
    long scanned_at_ = never;
    bool stopped_ = false;
    bool accepted_ = false;
    int current_ = -1;
    const AccessPoint* point_ = nullptr;
};

long monotonic_now()
{
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

int listen_at(const string& path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const auto* target = reinterpret_cast<const sockaddr*>(&address);
    if (path.empty() || path.size() >= sizeof address.sun_path)
        throw std::runtime_error("the socket path must have 1 to 107 characters");
    path.copy(address.sun_path, path.size());
    const int descriptor = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (bind(descriptor, target, sizeof address) != 0)
        throw std::runtime_error("cannot listen at " + path + ": " + std::strerror(errno));
    return descriptor;
}

void answer_one(int descriptor, Simulator& simulator)
{
    std::array<char, reply_limit> buffer{};
    sockaddr_un sender{};
    socklen_t length = sizeof sender;
    auto* from = reinterpret_cast<sockaddr*>(&sender);
    if (recvfrom(descriptor, buffer.data(), buffer.size() - 1, 0, from, &length) < 0)
        return;
    const string reply = simulator.answer(buffer.data(), monotonic_now());
    sendto(descriptor, reply.data(), reply.size(), 0, from, length);
}

int signal_descriptor()
{
    sigset_t set;
    sigemptyset(&set);
    for (const int number : { SIGTERM, SIGINT, SIGHUP })
        sigaddset(&set, number);
    sigprocmask(SIG_BLOCK, &set, nullptr);
    return signalfd(-1, &set, SFD_CLOEXEC);
}

void run(const string& socket_path, const string& config_path, pid_t parent)
{
    const int signals = signal_descriptor();
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    // The parent may have died before the kernel was asked to tell of it.
    if (getppid() != parent)
        return;
    Simulator simulator(socket_path, config_path);
    const int descriptor = listen_at(socket_path);
    simulator.connect_saved(monotonic_now());
    std::array<pollfd, 2> waiting{ { { signals, POLLIN, 0 }, { descriptor, POLLIN, 0 } } };
    while (waiting[0].revents == 0) {
        if (poll(waiting.data(), waiting.size(), -1) > 0 && waiting[1].revents != 0)
            answer_one(descriptor, simulator);
    }
    unlink(socket_path.c_str());
}

} // namespace

int main(int argc, char** argv)
{
    const pid_t parent = getppid();
    if (argc == 2 && string(argv[1]) == "--help") {
        std::puts(
            "Usage: corvane-simulator SOCKET CONFIG_FILE\n"
            "Answers at SOCKET as wpa_supplicant would, with invented networks around. Saved\n"
            "networks are read from and written to CONFIG_FILE. Ends on SIGTERM, SIGINT or\n"
            "SIGHUP, or with the process that started it.");
        return 0;
    }
    if (argc != 3 || *argv[1] == '-' || *argv[2] == '-') {
        std::fputs("corvane-simulator: expected SOCKET and CONFIG_FILE, see --help\n", stderr);
        return 2;
    }
    try {
        run(argv[1], argv[2], parent);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "corvane-simulator: %s\n", error.what());
        return 1;
    }
    return 0;
}
