// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

/// What the tests of the program share: a supplicant with networks around it, and the outcomes
/// and requests that come up again and again.

#pragma once

#include "support/program.hpp"
#include "support/scripted_supplicant.hpp"

#include <map>
#include <string>
#include <vector>

using Requests = std::vector<std::string>;
using Script = std::map<std::string, std::vector<Answer>>;

inline const std::string disconnected =
    "wpa_state=DISCONNECTED\np2p_device_address=42:00:00:00:00:00\n"
    "address=02:00:00:00:00:00\nuuid=362db47b-a53a-5191-88fb-5458b986b2e4\n";

inline std::string connected(const std::string& ssid, int id)
{
    return "bssid=02:00:00:00:02:00\nfreq=2437\nssid=" + ssid + "\nid=" + std::to_string(id)
        + "\nmode=station\nwifi_generation=4\npairwise_cipher=CCMP\ngroup_cipher=CCMP\n"
          "key_mgmt=WPA2-PSK\nwpa_state=COMPLETED\nip_address=10.66.2.48\n"
          "p2p_device_address=42:00:00:00:00:00\naddress=02:00:00:00:00:00\n"
          "uuid=362db47b-a53a-5191-88fb-5458b986b2e4\n";
}

inline std::string scanned(const std::string& rows)
{
    return "bssid / frequency / signal level / flags / ssid\n" + rows;
}

inline std::string saved(const std::string& rows)
{
    return "network id / ssid / bssid / flags\n" + rows;
}

/// Connected to Twins, ready to join Home2 as profile 3; says OK to everything.
class Town : public ScriptedSupplicant {
public:
    explicit Town(const Script& script = {})
    {
        on("SCAN_RESULTS",
           {reply(scanned("02:00:00:00:0a:00\t2417\t-40\t[WPA2-PSK-CCMP][ESS]\tTwins\n"
                          "02:00:00:00:02:00\t2437\t-50\t[WPA2-PSK-CCMP][ESS]\tHome2\n"
                          "02:00:00:00:09:00\t2452\t-50\t[WPA2-EAP-CCMP][ESS]\tOffice\n"
                          "02:00:00:00:03:00\t2462\t-50\t[WPA2-PSK+SAE-CCMP][ESS]\tMixed\n"
                          "02:00:00:00:0b:00\t5220\t-81\t[WPA2-PSK-CCMP][ESS]\tTwins\n"
                          "02:00:00:00:01:00\t2412\t-45\t[ESS]\tCafe\n"))});
        on("LIST_NETWORKS",
           {reply(saved("0\tHome\tany\t[DISABLED]\n1\tTwins\tany\t[CURRENT]\n"
                        "2\tMixed\tany\t[DISABLED]\n"))});
        on("STATUS", {reply(connected("Twins", 1)), reply(connected("Home2", 3))});
        on("ADD_NETWORK", {reply("3\n")});
        for (const char* request : {"SET_NETWORK", "ENABLE_NETWORK", "SELECT_NETWORK",
                                    "REMOVE_NETWORK", "SAVE_CONFIG", "DISCONNECT"})
            on(request, {reply("OK\n")});
        for (const auto& [words, answers] : script)
            on(words, answers);
    }
};

inline const std::string table = "1. * Twins  [WPA personal, -40 dBm, saved]\n"
                                 "2.   Mixed  [WPA personal, -50 dBm, saved]\n"
                                 "3.   Home  [unsupported, saved, saved]\n"
                                 "4.   Cafe  [open, -45 dBm]\n"
                                 "5.   Home2  [WPA personal, -50 dBm]\n"
                                 "6.   Office  [unsupported, -50 dBm]\n";

inline Outcome success(const std::string& out, const std::string& err = {})
{
    return {0, out, err};
}

inline Outcome failure(const std::string& message, const std::string& out = {},
                       const std::string& prompt = {})
{
    return {1, out, prompt + "corvane-wifi: " + message + "\n"};
}

inline Requests operator+(Requests first, const Requests& more)
{
    first.insert(first.end(), more.begin(), more.end());
    return first;
}

inline const Requests look = {"SCAN_RESULTS", "LIST_NETWORKS", "STATUS"};
inline const Requests scan = Requests{"SCAN"} + look;

inline Requests add(const std::string& hexadecimal_name, const std::string& security)
{
    return {"ADD_NETWORK", "SET_NETWORK 3 ssid " + hexadecimal_name,
            "SET_NETWORK 3 key_mgmt " + security};
}

inline const Requests enable = {"ENABLE_NETWORK 3", "SELECT_NETWORK 3", "STATUS", "SAVE_CONFIG"};

inline Requests join_home2(const std::string& quoted_password)
{
    return add("486f6d6532", "WPA-PSK") + Requests{"SET_NETWORK 3 psk " + quoted_password} + enable;
}

/// Names the tests of a table, whose rows have a `name`.
inline constexpr auto by_name = [](const auto& row) { return row.param.name; };

/// As a terminal shows it.
inline std::string on_screen(const std::string& text)
{
    std::string result;
    for (const char c : text)
        result += c == '\n' ? std::string("\r\n") : std::string(1, c);
    return result;
}
