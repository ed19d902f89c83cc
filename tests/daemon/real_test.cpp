// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

// Proves that the program and the library work with the real wpa_supplicant, and what it saves in
// its configuration file.

#include "cvn/wifi.hpp"
#include "support/daemon.hpp"
#include "support/describe.hpp"
#include "support/program.hpp"
#include "support/rows.hpp"

#include <gmock/gmock.h>

#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <string>
#include <vector>

using cvn::wifi::Client;
using cvn::wifi::Security;

struct Failing {
    const char* name;
    Setup setup;
    const char* ssid;
    Security security;
    const char* password;
    int timeout_ms;
    const char* message;
};

namespace {

const std::string no_key = "key_mgmt=NONE";
const std::string home = profile("\"Home\"", "psk=\"home-password\"", true);
const std::string cafe = profile("\"Cafe\"", no_key, true);
const std::string guest = profile("\"Guest\"", no_key, true);
const std::string no_profiles = "network id / ssid / bssid / flags\n";

/// Connected as soon as an open profile is selected.
Setup wired(const std::string& profiles)
{
    return {.profiles = profiles, .driver = "wired", .address = "10.66.2.48/24"};
}

Outcome printed(const std::string& line)
{
    return success(line + '\n');
}

class Supplicant : public Daemon {
public:
    explicit Supplicant(const Setup& setup)
        : Daemon(Kind::Real, setup)
    {
        // The kernel merges equal events that follow each other: each save has two.
        EXPECT_GE(inotify_add_watch(watch_, folder().c_str(), IN_CLOSE_WRITE | IN_MOVED_TO), 0);
    }
    ~Supplicant()
    {
        close(watch_);
    }

    Outcome command(const std::vector<std::string>& words) const
    {
        const Environment patient = {{"CORVANE_WIFI_CONNECT_TIMEOUT_MS", "30000"}};
        return run(words, environment_for(path(), patient));
    }

    Client client() const
    {
        return {QString::fromStdString(path())};
    }

    /// How often the file was written or replaced: it is first written under another name.
    int count_saves() const
    {
        alignas(inotify_event) std::array<char, 65536> buffer;
        const ssize_t size = read(watch_, buffer.data(), buffer.size());
        int count = 0;
        for (ssize_t at = 0; at < size;) {
            const auto* event = reinterpret_cast<const inotify_event*>(buffer.data() + at);
            count += event->name == std::string("wpa.conf") ? 1 : 0;
            at += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
        }
        return count;
    }

private:
    int watch_ = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
};

class Real : public testing::Test {
protected:
    void SetUp() override
    {
        unsetenv("CORVANE_WIFI_CONNECT_TIMEOUT_MS");
        skip_without_real();
    }
};

TEST_F(Real, StatusWithAConnection)
{
    const Supplicant supplicant(wired(home + profile("\"Cafe\"", no_key)));
    supplicant.ask("SELECT_NETWORK 1");
    supplicant.wait_for("STATUS", "wpa_state=COMPLETED\n");
    EXPECT_EQ(supplicant.command({"status"}),
              printed("State: COMPLETED\nNetwork: Cafe\nAddress: 10.66.2.48"));
}

TEST_F(Real, ListShowsNamesAsWpaSupplicantPrintsThem)
{
    const Supplicant supplicant({.profiles = profile("\"  two  blanks \"", no_key, true)
                                     + profile(R"("Bob "5G" C:\net")", no_key, true)
                                     + profile("436166c3a9", "psk=\"caf\xc3\xa9-au-lait\"", true)
                                     + profile("fffe0a1b5b33316d00", no_key, true)});
    EXPECT_EQ(supplicant.command({"list", "--cached"}),
              printed("1.     two  blanks   [unsupported, saved, saved]\n"
                      "2.   Bob \\\"5G\\\" C:\\\\net  [unsupported, saved, saved]\n"
                      "3.   Caf\\xc3\\xa9  [unsupported, saved, saved]\n"
                      "4.   \\xff\\xfe\\n\\e[31m\\x00  [unsupported, saved, saved]"));
}

TEST_F(Real, ListMarksTheNetworkThatIsNotYetCompleted)
{
    const Supplicant supplicant(wired(cafe + home));
    supplicant.ask("SELECT_NETWORK 1");
    supplicant.wait_for("STATUS", "wpa_state=ASSOCIATED\n");
    EXPECT_EQ(supplicant.command({"list"}),
              printed("1. * Home  [unsupported, saved, saved]\n"
                      "2.   Cafe  [unsupported, saved, saved]"));
}

TEST_F(Real, ForgetRemovesTheProfileOfThePrintedNameOnly)
{
    const std::string blanks = profile("\"  two  blanks \"", no_key, true);
    const std::string bob = profile(R"("Bob "5G" C:\net")", no_key, true);
    const std::string accent = profile("436166c3a9", "psk=\"caf\xc3\xa9-au-lait\"", true);
    const Supplicant supplicant({.profiles = home + blanks + bob + accent + cafe});
    EXPECT_EQ(supplicant.command({"forget", "--yes", R"(Caf\xc3\xa9)"}),
              printed(R"(Forgot Caf\xc3\xa9.)"));
    EXPECT_EQ(supplicant.saved(), home + blanks + bob + cafe);
    EXPECT_EQ(supplicant.command({"forget", "--yes", R"(Bob \"5G\" C:\\net)"}),
              printed(R"(Forgot Bob \"5G\" C:\\net.)"));
    EXPECT_EQ(supplicant.saved(), home + blanks + cafe);
    EXPECT_EQ(supplicant.command({"forget", "--yes", "--json", "  two  blanks "}),
              printed(R"({"ok":true})"));
    EXPECT_EQ(supplicant.saved(), home + cafe);
    EXPECT_EQ(supplicant.count_saves(), 3);
    EXPECT_EQ(supplicant.command({"forget", "--yes", "home"}),
              failure("home is not a saved network."));
    EXPECT_EQ(supplicant.saved(), home + cafe);
}

TEST_F(Real, SwitchingBetweenSavedNetworksWritesNothing)
{
    const Supplicant supplicant(wired(home + cafe + guest));
    EXPECT_EQ(supplicant.command({"connect", "Guest"}), printed("Connected to Guest."));
    EXPECT_EQ(supplicant.command({"connect", "Cafe"}), printed("Connected to Cafe."));
    EXPECT_EQ(supplicant.command({"list"}),
              printed("1. * Cafe  [unsupported, saved, saved]\n"
                      "2.   Home  [unsupported, saved, saved]\n"
                      "3.   Guest  [unsupported, saved, saved]"));
    EXPECT_EQ(supplicant.command({"disconnect"}), printed("Wi-Fi disconnected."));
    EXPECT_THAT(supplicant.ask("STATUS"), testing::StartsWith("wpa_state=DISCONNECTED\n"));
    EXPECT_EQ(supplicant.command({"connect", "--json", "Cafe"}), printed(R"({"ok":true})"));
    EXPECT_THAT(supplicant.ask("STATUS"), testing::HasSubstr("\nwpa_state=COMPLETED\n"));
    EXPECT_EQ(supplicant.count_saves(), 0);
}

TEST_F(Real, SwitchingDisablesTheOthersAndALaterSaveStoresThat)
{
    const std::string enabled = profile("\"Home\"", "psk=\"home-password\"");
    const Supplicant supplicant(wired(enabled + cafe + guest));
    EXPECT_EQ(supplicant.command({"connect", "Guest"}), printed("Connected to Guest."));
    EXPECT_EQ(supplicant.command({"forget", "--yes", "Cafe"}), printed("Forgot Cafe."));
    EXPECT_EQ(supplicant.saved(), home + profile("\"Guest\"", no_key));
}

TEST_F(Real, ANewOpenNetworkIsSavedOnceItIsConnected)
{
    const Supplicant supplicant(wired(cafe));
    supplicant.client().connect_new(" Bob's  Bar ", Security::Open, "", 30000);
    EXPECT_THAT(supplicant.ask("STATUS"),
                testing::ContainsRegex("\nssid= Bob's  Bar \nid=1\n.*\nwpa_state=COMPLETED\n"));
    EXPECT_EQ(supplicant.saved(), cafe + profile("\" Bob's  Bar \"", no_key));
    EXPECT_EQ(supplicant.count_saves(), 1);
}

const Setup idle = {};
const Setup read_only = {.update_config = false};

class ANewNetwork : public Real, public testing::WithParamInterface<Failing> { };

TEST_P(ANewNetwork, IsRemovedAgainAndTheFileIsUntouched)
{
    const Failing& failing = GetParam();
    const Supplicant supplicant(failing.setup);
    EXPECT_EQ(error_of([&] {
                  supplicant.client().connect_new(failing.ssid, failing.security, failing.password,
                                                  failing.timeout_ms);
              }),
              failing.message);
    EXPECT_EQ(supplicant.ask("LIST_NETWORKS"), no_profiles);
    EXPECT_EQ(supplicant.count_saves(), 0);
}

INSTANTIATE_TEST_SUITE_P(
    That, ANewNetwork,
    testing::Values(Failing{"CannotBeSaved", read_only, "Home", Security::Personal, "home-password",
                            0, "Could not save Wi-Fi network: FAIL"},
                    Failing{"IsNotConnectedInTime", wired(""), "Home", Security::Personal,
                            "home-password", 1, "Timed out connecting to Home."},
                    // It is connected, but wpa_supplicant calls it Caf\xc3\xa9.
                    Failing{"IsPrintedEscaped", wired(""), "Caf\xc3\xa9", Security::Open, "", 1000,
                            "Timed out connecting to Caf\xc3\xa9."},
                    Failing{"HasAControlCharacterInThePassword", idle, "Home", Security::Personal,
                            "pass\tword", 0, "Could not set WPA password: FAIL"}),
    by_name);

TEST_F(Real, OtherUsersHaveNoAccess)
{
    const Supplicant supplicant({});
    const bool is_root = geteuid() == 0;
    // Ordinary users can take away their own access; root has to become another user.
    chmod(supplicant.folder().c_str(), 0755);
    if (!is_root)
        chmod(supplicant.path().c_str(), 0);
    const auto ask_as_another = [&] {
        remove_socket_files_of(getpid()); // which the other user could not
        if (is_root && (setregid(65534, 65534) != 0 || setreuid(65534, 65534) != 0))
            _exit(2);
        std::fputs(error_of([&] { supplicant.client().status(); }).c_str(), stderr);
        _exit(0);
    };
    EXPECT_EXIT(ask_as_another(), testing::ExitedWithCode(0),
                "^Could not connect to wpa_supplicant: Permission denied$");
}

TEST_F(Real, ADaemonThatEndedOrWasKilledIsReported)
{
    const std::pair<int, std::string> ends[] = {{SIGTERM, "No such file or directory"},
                                                {SIGKILL, "Connection refused"}};
    for (const auto& [signal, reason] : ends) {
        Supplicant supplicant({});
        supplicant.end(signal);
        EXPECT_EQ(supplicant.command({"status"}),
                  failure("Could not connect to wpa_supplicant: " + reason));
    }
}

} // namespace
