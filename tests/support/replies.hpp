// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

/// Replies of wpa_supplicant 2.10.

#pragma once

#include <string>

inline const std::string idle_status =
    "wpa_state=DISCONNECTED\np2p_device_address=42:00:00:00:00:00\n"
    "address=02:00:00:00:00:00\nuuid=362db47b-a53a-5191-88fb-5458b986b2e4\n";

inline std::string connected_status(const std::string& ssid, int id)
{
    return "bssid=02:00:00:00:02:00\nfreq=2437\nssid=" + ssid + "\nid=" + std::to_string(id)
        + "\nmode=station\nwifi_generation=4\npairwise_cipher=CCMP\ngroup_cipher=CCMP\n"
          "key_mgmt=WPA2-PSK\nwpa_state=COMPLETED\nip_address=10.66.2.48\n"
          "p2p_device_address=42:00:00:00:00:00\naddress=02:00:00:00:00:00\n"
          "uuid=362db47b-a53a-5191-88fb-5458b986b2e4\n";
}

inline const std::string home_status = connected_status("Home", 0);

inline std::string scan_results(const std::string& rows)
{
    return "bssid / frequency / signal level / flags / ssid\n" + rows;
}

inline std::string profile_list(const std::string& rows)
{
    return "network id / ssid / bssid / flags\n" + rows;
}

inline const std::string scan_table = scan_results(
    "02:00:00:00:04:00\t5180\t-58\t[WPA2-SAE-CCMP][SAE-H2E][ESS]\tModern\n"
    "02:00:00:00:0a:00\t2417\t-40\t[WPA2-PSK-CCMP][ESS]\tTwins\n"
    "02:00:00:00:06:00\t2427\t-50\t[WPA2-PSK-CCMP][ESS]\tBob \\\"5G\\\" C:\\\\net\n"
    "02:00:00:00:02:00\t2437\t-50\t[WPA2-PSK-CCMP][ESS]\tHome\n"
    "02:00:00:00:05:00\t2422\t-66\t[WPA2-PSK-CCMP][ESS][UTF-8]\t"
    "Caf\\xc3\\xa9 du Nord \\xe2\\x98\\x95\n"
    "02:00:00:00:07:00\t2442\t-77\t[WPA2-PSK-CCMP][ESS]\t\n"
    "02:00:00:00:0b:00\t5220\t-81\t[WPA2-PSK-CCMP][ESS]\tTwins\n"
    "02:00:00:00:01:00\t2412\t-45\t[ESS]\tCafe\n"
    "02:00:00:00:0d:00\t2457\t-50\t[ESS]\t\\xff\\xfe\\n\\e[31mred\\x00\\t\n"
    "02:00:00:00:0d:02\t2457\t-50\t[ESS]\t padded \n"
    "02:00:00:00:0d:04\t2457\t-50\t[ESS]\t\\x00\\x00\\x00\\x00\\x00\\x00\\x00\\x00\n");

inline const std::string saved_table = profile_list(
    "0\tHome\tany\t[CURRENT]\n"
    "1\tCaf\\xc3\\xa9 du Nord \\xe2\\x98\\x95\tany\t[DISABLED]\n"
    "2\tBob \\\"5G\\\" C:\\\\net\tany\t[DISABLED]\n"
    "3\t\\xff\\xfe\\n\\e[31mred\\x00\\t\tany\t[DISABLED]\n"
    "4\t\tany\t[DISABLED]\n");
