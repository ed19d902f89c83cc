// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

// Proves that the simulator behaves like wpa_supplicant wherever the program relies on it.

#include "support/daemon.hpp"

#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

using testing::AnyOf;
using testing::MatchesRegex;

namespace {

struct Exchange {
    std::string request;
    testing::Matcher<std::string> reply;
};

void expect(const Daemon& daemon, const std::vector<Exchange>& exchanges)
{
    for (const auto& [request, expected] : exchanges)
        EXPECT_THAT(daemon.ask(request), expected) << request;
}

/// The reply to LIST_NETWORKS: a line per profile, with '|' for a tab.
std::string profile_table(const std::vector<std::string>& lines)
{
    std::string text = "network id / ssid / bssid / flags\n";
    for (std::string line : lines) {
        for (char& c : line)
            c = c == '|' ? '\t' : c;
        text += line + '\n';
    }
    return text;
}

const std::string mac = "([0-9a-f][0-9a-f]:){5}[0-9a-f][0-9a-f]";
/// Only a radio has peer-to-peer; with the others the line is missing.
const std::string status_end = "(p2p_device_address=" + mac + "\n)?address=" + mac
    + "\nuuid=[0-9a-f-]{36}\n";

const std::string cafe = profile("\"Cafe\"", "key_mgmt=NONE", true);
const std::string home = profile("\"Home\"", "psk=\"home-password\"", true);
const std::string nord = profile("436166c3a9206475204e6f7264", "key_mgmt=NONE", true);
const std::string no_profiles = profile_table({});

class Contract : public testing::TestWithParam<Kind> {
protected:
    void SetUp() override
    {
        if (GetParam() == Kind::Real)
            skip_without_real();
    }
};

INSTANTIATE_TEST_SUITE_P(Of, Contract, testing::Values(Kind::Simulator, Kind::Real),
                         [](const auto& which) {
                             return which.param == Kind::Real ? "WpaSupplicant" : "Simulator";
                         });

TEST_P(Contract, AnswersWithoutNetworksWhenIdle)
{
    const Daemon daemon(GetParam(), {});
    expect(daemon,
           {{"PING", "PONG\n"},
            {"STATUS", MatchesRegex("wpa_state=(DISCONNECTED|INACTIVE)\n" + status_end)},
            {"LIST_NETWORKS", no_profiles},
            {"SCAN_RESULTS", "bssid / frequency / signal level / flags / ssid\n"},
            {"DISCONNECT", "OK\n"},
            {"STATUS", MatchesRegex("wpa_state=DISCONNECTED\n" + status_end)}});
}

TEST_P(Contract, ReportsUnknownCommands)
{
    const Daemon daemon(GetParam(), {});
    for (const char* request : {"NOSUCH", "ping", "PING ", "ADD_NETWORK x", "SET_NETWORK",
                                "REMOVE_NETWORK", "SELECT_NETWORK", "ENABLE_NETWORK"})
        EXPECT_EQ(daemon.ask(request), "UNKNOWN COMMAND\n") << request;
}

TEST_P(Contract, StartsAScanUnlessOneIsUnderWay)
{
    const Daemon daemon(GetParam(), {});
    expect(daemon,
           {
               {"SCAN", "OK\n"},
               {"SCAN", AnyOf("FAIL-BUSY\n", "OK\n")} // without a radio it may be over by now
           });
    EXPECT_EQ(daemon.wait_for("SCAN", "OK"), "OK\n");
}

TEST_P(Contract, NumbersNewProfilesFromTheHighestId)
{
    const Daemon daemon(GetParam(), {});
    expect(daemon,
           {{"ADD_NETWORK", "0\n"},
            {"ADD_NETWORK", "1\n"},
            {"ADD_NETWORK", "2\n"},
            {"REMOVE_NETWORK 1", "OK\n"},
            {"ADD_NETWORK", "3\n"},
            {"LIST_NETWORKS",
             profile_table({"0||any|[DISABLED]", "2||any|[DISABLED]", "3||any|[DISABLED]"})},
            {"REMOVE_NETWORK 2", "OK\n"},
            {"ADD_NETWORK", "4\n"},
            {"REMOVE_NETWORK 4", "OK\n"},
            {"ADD_NETWORK", "4\n"},
            {"REMOVE_NETWORK 0", "OK\n"},
            {"REMOVE_NETWORK 3", "OK\n"},
            {"REMOVE_NETWORK 4", "OK\n"},
            {"LIST_NETWORKS", no_profiles},
            {"ADD_NETWORK", "0\n"}});
}

TEST_P(Contract, RefusesAnUnknownId)
{
    const Daemon daemon(GetParam(), {.profiles = cafe});
    for (const char* request :
         {"SET_NETWORK 7 ssid \"x\"", "REMOVE_NETWORK 99", "REMOVE_NETWORK -1", "ENABLE_NETWORK 99",
          "SELECT_NETWORK 99", "SELECT_NETWORK -1"})
        EXPECT_EQ(daemon.ask(request), "FAIL\n") << request;
    EXPECT_EQ(daemon.ask("LIST_NETWORKS"), profile_table({"0|Cafe|any|[DISABLED]"}));
}

struct Setting {
    std::string value;
    std::string stored; ///< In the configuration file.
    std::string listed; ///< In LIST_NETWORKS.
};

TEST_P(Contract, AcceptsNamesQuotedOrInHexadecimalAndListsThemEscaped)
{
    const Daemon daemon(GetParam(), {});
    expect(daemon, {{"ADD_NETWORK", "0\n"}, {"SET_NETWORK 0 key_mgmt NONE", "OK\n"}});
    const std::string longest = "ABCDEFGHIJKLMNOPQRSTUVWXYZ012345";
    const std::vector<Setting> settings = {
        {R"("Home")", R"("Home")", "Home"},
        {"486f6d65", R"("Home")", "Home"},
        {"486F6D65", R"("Home")", "Home"},
        {"436166c3a9", "436166c3a9", R"(Caf\xc3\xa9)"},
        {"\"Caf\xc3\xa9\"", "436166c3a9", R"(Caf\xc3\xa9)"},
        {"fffe0a1b0d09007f", "fffe0a1b0d09007f", R"(\xff\xfe\n\e\r\t\x00\x7f)"},
        {R"("a"b\c")", R"("a"b\c")", R"(a\"b\\c)"},
        {R"("  padded  ")", R"("  padded  ")", "  padded  "},
        {"\"tab\there\"", "7461620968657265", R"(tab\there)"},
        {'"' + longest + '"', '"' + longest + '"', longest},
        {R"("")", R"("")", ""},
        {"", R"("")", ""},
    };
    for (const Setting& setting : settings) {
        expect(daemon,
               {{"SET_NETWORK 0 ssid " + setting.value, "OK\n"},
                {"LIST_NETWORKS", profile_table({"0|" + setting.listed + "|any|[DISABLED]"})},
                {"SAVE_CONFIG", "OK\n"}});
        EXPECT_EQ(daemon.saved(), profile(setting.stored, "key_mgmt=NONE", true));
    }
}

TEST_P(Contract, RefusesInvalidNamesAndKeepsTheOldOne)
{
    const Daemon daemon(GetParam(), {.profiles = cafe});
    for (const char* value :
         {" Home", " \"Home", " Home\"", " abc", " zz", " \"tail\" junk", "",
          " \"123456789012345678901234567890123\"",
          " 787878787878787878787878787878787878787878787878787878787878787878"})
        expect(daemon,
               {{std::string("SET_NETWORK 0 ssid") + value, "FAIL\n"},
                {"LIST_NETWORKS", profile_table({"0|Cafe|any|[DISABLED]"})}});
}

TEST_P(Contract, StoresPasswordsAsTheyAreBetweenTheQuotes)
{
    const Daemon daemon(GetParam(), {.profiles = home});
    const std::string most(63, 'x');
    for (const std::string& value :
         {std::string(R"("12345678")"), '"' + most + '"', std::string("\"p\xc3\xa4ssw\xc3\xb6rd\""),
          std::string(R"("pass\"word")"), std::string(R"("pass\\word")")}) {
        expect(daemon, {{"SET_NETWORK 0 psk " + value, "OK\n"}, {"SAVE_CONFIG", "OK\n"}});
        EXPECT_EQ(daemon.saved(), profile("\"Home\"", "psk=" + value, true));
    }
}

TEST_P(Contract, RefusesInvalidPasswordsAndKeepsTheOldOne)
{
    const Daemon daemon(GetParam(), {.profiles = home});
    for (const std::string& value :
         {std::string("\"1234567\""), '"' + std::string(64, 'x') + '"', std::string("0123"),
          std::string("home-password"), std::string(64, 'g')})
        EXPECT_EQ(daemon.ask("SET_NETWORK 0 psk " + value), "FAIL\n") << value;
    EXPECT_EQ(daemon.ask("SAVE_CONFIG"), "OK\n");
    EXPECT_EQ(daemon.saved(), home);
}

TEST_P(Contract, ChecksOtherSettings)
{
    const Daemon daemon(GetParam(), {.profiles = home});
    expect(daemon,
           {{"SET_NETWORK 0 key_mgmt NONE", "OK\n"},
            {"SET_NETWORK 0 key_mgmt WPA-PSK", "OK\n"},
            {"SET_NETWORK 0 key_mgmt NOSUCH", "FAIL\n"},
            {"SET_NETWORK 0 key_mgmt", "FAIL\n"},
            {"SET_NETWORK 0 nosuch 1", "FAIL\n"},
            {"SET_NETWORK 0", "FAIL\n"}});
}

TEST_P(Contract, DisablesTheOtherProfilesWhenOneIsSelected)
{
    const Daemon daemon(GetParam(), {.profiles = cafe + home + nord});
    const auto flags = [](const std::string& first, const std::string& second,
                          const std::string& third) {
        return profile_table({"0|Cafe|any|" + first, "1|Home|any|" + second,
                              R"(2|Caf\xc3\xa9 du Nord|any|)" + third});
    };
    expect(daemon,
           {{"LIST_NETWORKS", flags("[DISABLED]", "[DISABLED]", "[DISABLED]")},
            {"SELECT_NETWORK 1", "OK\n"},
            {"LIST_NETWORKS", flags("[DISABLED]", "[CURRENT]", "[DISABLED]")},
            {"ENABLE_NETWORK 2", "OK\n"},
            {"LIST_NETWORKS", flags("[DISABLED]", "[CURRENT]", "")},
            {"SELECT_NETWORK 2", "OK\n"},
            {"LIST_NETWORKS", flags("[DISABLED]", "[DISABLED]", "[CURRENT]")},
            {"ENABLE_NETWORK 0", "OK\n"},
            {"ENABLE_NETWORK 1", "OK\n"},
            {"LIST_NETWORKS", flags("", "", "[CURRENT]")},
            {"DISCONNECT", "OK\n"},
            {"LIST_NETWORKS", flags("", "", "")},
            {"STATUS", MatchesRegex("wpa_state=DISCONNECTED\n" + status_end)},
            {"SELECT_NETWORK 0", "OK\n"},
            {"DISCONNECT", "OK\n"},
            {"LIST_NETWORKS", flags("", "[DISABLED]", "[DISABLED]")},
            {"ENABLE_NETWORK all", "OK\n"},
            {"LIST_NETWORKS", flags("", "", "")},
            {"STATUS", MatchesRegex("wpa_state=DISCONNECTED\n" + status_end)}});
}

TEST_P(Contract, SavesWhatHiddenNetworksAndWpa3Need)
{
    const Daemon daemon(GetParam(), {.profiles = home});
    expect(daemon,
           {{"SET_NETWORK 0 scan_ssid 1", "OK\n"},
            {"SET_NETWORK 0 scan_ssid 2", "FAIL\n"},
            {"SET_NETWORK 0 key_mgmt WPA-PSK SAE", "OK\n"},
            {"SET_NETWORK 0 ieee80211w 1", "OK\n"},
            {"SAVE_CONFIG", "OK\n"}});
    EXPECT_EQ(daemon.saved(),
              "\nnetwork={\n\tssid=\"Home\"\n\tscan_ssid=1\n\tpsk=\"home-password\"\n"
              "\tkey_mgmt=WPA-PSK SAE\n\tdisabled=1\n\tieee80211w=1\n}\n");
}

TEST_P(Contract, WritesTheFileInOneForm)
{
    const Daemon daemon(GetParam(), {.profiles = "# lost\n" + cafe + home});
    expect(daemon,
           {{"SELECT_NETWORK 0", "OK\n"},
            {"ADD_NETWORK", "2\n"},
            {"SET_NETWORK 2 ssid 426f622022354722", "OK\n"},
            {"SET_NETWORK 2 key_mgmt WPA-PSK", "OK\n"},
            {R"(SET_NETWORK 2 psk "bobs\"-password")", "OK\n"},
            {"ADD_NETWORK", "3\n"},
            {"SET_NETWORK 3 ssid 436166c3a9", "OK\n"},
            {"SET_NETWORK 3 key_mgmt NONE", "OK\n"},
            {"ENABLE_NETWORK 3", "OK\n"},
            {"ADD_NETWORK", "4\n"}, // without a key: neither usable nor saved
            {"SAVE_CONFIG", "OK\n"}});
    const std::string bob = "psk=\"bobs\\\"-password\"\n\tkey_mgmt=WPA-PSK";
    EXPECT_EQ(daemon.config(),
              "ctrl_interface=DIR=" + daemon.folder() + "\nupdate_config=1\n"
                  + profile("\"Cafe\"", "key_mgmt=NONE") + home
                  + profile("\"Bob \"5G\"\"", bob, true) + profile("436166c3a9", "key_mgmt=NONE"));
}

TEST_P(Contract, RefusesToSaveIfTheFileForbidsIt)
{
    const Daemon daemon(GetParam(), {.profiles = cafe + home, .update_config = false});
    const std::string before = daemon.config();
    expect(daemon,
           {{"REMOVE_NETWORK 0", "OK\n"},
            {"SAVE_CONFIG", "FAIL\n"},
            {"LIST_NETWORKS", profile_table({"1|Home|any|[DISABLED]"})}});
    EXPECT_EQ(daemon.config(), before);
}

TEST_P(Contract, EndsAReplyAfterTheLastLineThatFitsIn4095Bytes)
{
    const std::string name(32, 'x');
    std::string profiles;
    std::vector<std::string> lines;
    for (int i = 0; i < 79; ++i) {
        profiles += profile('"' + name + '"', "key_mgmt=NONE", true);
        lines.push_back(std::to_string(i) + '|' + name + "|any|[DISABLED]");
    }
    const std::string too_long(24, 'y');
    const std::string fitting(23, 'y');
    const auto reply = [&](const std::string& last) {
        const std::string profiles_and_one_more = profiles
            + profile('"' + last + '"', "key_mgmt=NONE", true);
        return Daemon(GetParam(), {.profiles = profiles_and_one_more}).ask("LIST_NETWORKS");
    };
    EXPECT_EQ(reply(too_long), profile_table(lines));
    lines.push_back("79|" + fitting + "|any|[DISABLED]");
    EXPECT_EQ(reply(fitting), profile_table(lines));
    EXPECT_EQ(profile_table(lines).size(), 4095U);
}

/// The real one is connected by cable here: at once, without a channel or a radio mode.
TEST_P(Contract, CompletesAnOpenProfile)
{
    const Daemon daemon(GetParam(),
                        {.profiles = home + cafe, .driver = "wired", .address = "10.66.2.48/24"});
    EXPECT_EQ(daemon.ask("SELECT_NETWORK 1"), "OK\n");
    daemon.wait_for("STATUS", "wpa_state=COMPLETED\n");
    EXPECT_THAT(daemon.wait_for("STATUS", "ip_address="),
                MatchesRegex("bssid=" + mac
                             + "\nfreq=[0-9]+\nssid=Cafe\nid=1\nmode=station\n"
                               "(wifi_generation=[0-9]\n)?pairwise_cipher=NONE\ngroup_cipher=NONE\n"
                               "key_mgmt=NONE\nwpa_state=COMPLETED\nip_address=10.66.2.48\n"
                             + status_end));
    expect(daemon,
           {{"LIST_NETWORKS", profile_table({"0|Home|any|[DISABLED]", "1|Cafe|any|[CURRENT]"})},
            {"SELECT_NETWORK 1", "OK\n"}, // again: the connection stays up
            {"STATUS", testing::HasSubstr("\nwpa_state=COMPLETED\n")},
            {"REMOVE_NETWORK 1", "OK\n"},
            {"LIST_NETWORKS", profile_table({"0|Home|any|[DISABLED]"})},
            // INACTIVE with a radio
            {"STATUS", testing::ContainsRegex("^wpa_state=(DISCONNECTED|INACTIVE)\n")}});
}

TEST(Simulator, RemovesItsSocketWhenItIsEndedWhileItBinds)
{
    if (system("strace -o /dev/null true 2>/dev/null") != 0)
        GTEST_SKIP() << "strace cannot be run here";
    const Daemon other(Kind::Simulator, {}); // for its configuration file
    const std::string path = other.folder() + "/bound";
    const std::string traced = "exec timeout 30 strace -o /dev/null -e inject=bind:signal=TERM "
        + Daemon::simulator() + ' ' + path + ' ' + other.config_path();
    EXPECT_EQ(system(traced.c_str()), 0);
    EXPECT_FALSE(std::filesystem::exists(path));
}

} // namespace
