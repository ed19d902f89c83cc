// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

// Proves what each call of the library sends, waits for, reports and leaves behind, in process.

#include "support/describe.hpp"
#include "support/fake_supplicant.hpp"
#include "support/program.hpp"
#include "support/replies.hpp"
#include "support/rows.hpp"

#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <future>
#include <iterator>
#include <limits>
#include <map>
#include <optional>
#include <span>
#include <thread>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace std::string_literals;
using cvn::wifi::Client;
using cvn::wifi::Security;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// Connected to the network that is added.
const std::string home2_status = connected_status("Home2", 5);

constexpr const char* socket_variable = "CORVANE_WPA_SOCKET";
constexpr const char* scan_delay_variable = "CORVANE_WIFI_SCAN_DELAY_MS";
constexpr const char* connect_timeout_variable = "CORVANE_WIFI_CONNECT_TIMEOUT_MS";

const std::string timed_out = "Timed out waiting for wpa_supplicant.";
const std::string nobody_there = "Could not connect to wpa_supplicant: No such file or directory";

void set_variable(const char* name, const std::optional<std::string>& value)
{
    if (value)
        setenv(name, value->c_str(), 1);
    else
        unsetenv(name);
}

Client client_at(const std::string& path)
{
    return {QString::fromStdString(path)};
}

unsigned int number_of(const std::string& sender)
{
    return static_cast<unsigned int>(std::stoul(sender.substr(sender.rfind('-') + 1)));
}

std::vector<std::string> socket_files()
{
    constexpr int more_than_any_test_sends = 1000;
    return socket_files_of(getpid(), more_than_any_test_sends);
}

auto open_descriptors()
{
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

template <typename Function> std::chrono::milliseconds duration_of(const Function& function)
{
    const auto start = std::chrono::steady_clock::now();
    function();
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now()
                                                                 - start);
}

const Script idle_script = {{"STATUS", {reply(idle_status)}},
                            {"SCAN_RESULTS", {reply(scan_results(""))}},
                            {"LIST_NETWORKS", {reply(profile_list(""))}},
                            {"ADD_NETWORK", {reply("5\n")}}};

/// A client of a supplicant without networks, which refuses nothing and calls each new profile 5.
class WithSupplicant : public testing::Test {
protected:
    void SetUp() override
    {
        set_variable(socket_variable, {});
        set_variable(scan_delay_variable, "0");
        set_variable(connect_timeout_variable, {});
    }
    void TearDown() override
    {
        EXPECT_THAT(socket_files(), IsEmpty());
        EXPECT_EQ(open_descriptors(), descriptors_);
    }

    auto polls() const
    {
        return std::ranges::count(supplicant.requests(), "STATUS");
    }

    FakeSupplicant supplicant{idle_script};
    Client client = client_at(supplicant.path());

private:
    const std::ptrdiff_t descriptors_ = open_descriptors();
};

} // namespace

class Transport : public WithSupplicant { };

TEST_F(Transport, SendsTheRequestAsItIs)
{
    const std::string all = "PING  \t\x01\xff\"%1 " + std::string(4000, 'x') + ' ';
    client.command(QByteArray::fromStdString(all), 3000);
    EXPECT_THAT(supplicant.requests(), ElementsAre(all));
}

TEST_F(Transport, RefusesARequestThatIsNotOneLineWhateverThePath)
{
    const Client nowhere = client_at(std::string(200, 'x'));
    for (const QByteArray& request : {""_ba, "STATUS\n"_ba, "STATUS\r"_ba, "STATUS\0"_ba, "\n"_ba,
                                      "\nSTATUS"_ba, "STA\0TUS"_ba, "STA\rTUS"_ba})
        EXPECT_EQ(error_of([&] { nowhere.command(request, 3000); }),
                  "Invalid wpa_supplicant control command.");
}

TEST_F(Transport, AcceptsAPathOf107BytesAndRefusesOneOf108)
{
    const std::string start = supplicant.folder() + "/";
    const std::string longest = start + std::string(107 - start.size(), 'x');
    std::filesystem::create_symlink(supplicant.path(), longest);
    supplicant.on("PING", {reply("PONG\n")});
    EXPECT_EQ(client_at(longest).command("PING", 3000), "PONG");

    const std::string two_bytes_each = start + std::string(start.size() % 2, 'x')
        + QString(50, u'é').toStdString();
    for (const std::string& path : {longest + 'x', std::string(5000, 'x'), two_bytes_each})
        EXPECT_EQ(error_of([&] { client_at(path).command("PING", 3000); }),
                  "Wi-Fi control socket path is too long.");
}

TEST_F(Transport, CutsLineEndsAtTheEndOfTheReplyOnly)
{
    const std::vector<std::pair<std::string, QByteArray>> rows{{"OK\n", "OK"},
                                                               {"OK", "OK"},
                                                               {"OK\r\n", "OK"},
                                                               {"OK\n\n\n", "OK"},
                                                               {"OK\n\r\r\n", "OK"},
                                                               {"\n\n", ""},
                                                               {"\r", ""},
                                                               {"", ""},
                                                               {"\r\n\n OK \t\n", "\r\n\n OK \t"},
                                                               {"a\r\nb\n", "a\r\nb"},
                                                               {"a\0b\0\n"s, "a\0b\0"_ba},
                                                               {"\xff\xfe\xc3\n", "\xff\xfe\xc3"}};
    for (const auto& [sent, received] : rows) {
        supplicant.on("PING", {reply(sent)});
        EXPECT_EQ(client.command("PING", 3000), received) << testing::PrintToString(sent);
    }
}

TEST_F(Transport, CutsAReplyAfter65536Bytes)
{
    const std::string longest(65536, 'x');
    const std::string ends_in_a_line = std::string(65535, 'x') + '\n';
    supplicant.on("PING", {reply(longest), reply(longest + "y"), reply(ends_in_a_line + "y")});
    EXPECT_EQ(client.command("PING", 3000), QByteArray(65536, 'x'));
    EXPECT_EQ(client.command("PING", 3000), QByteArray(65536, 'x'));
    EXPECT_EQ(client.command("PING", 3000), QByteArray(65535, 'x'));
}

TEST_F(Transport, ReadsOneDatagramOnly)
{
    supplicant.on("PING", {{{"first\n", "second\n"}}});
    EXPECT_EQ(client.command("PING", 3000), "first");
    EXPECT_EQ(client.command("PING", 3000), "first");
}

TEST_F(Transport, CountsOnlyRequestsThatGetASocket)
{
    client.command("PING", 3000);
    EXPECT_ANY_THROW(client.command("PING\n", 3000));
    EXPECT_ANY_THROW(client_at(std::string(108, 'x')).command("PING", 3000));
    rlimit descriptors{};
    getrlimit(RLIMIT_NOFILE, &descriptors);
    const rlimit one{1, descriptors.rlim_max};
    setrlimit(RLIMIT_NOFILE, &one);
    EXPECT_ANY_THROW(client.command("PING", 3000));
    setrlimit(RLIMIT_NOFILE, &descriptors);
    client.command("PING", 3000);
    EXPECT_ANY_THROW(client_at(supplicant.folder() + "/none").command("PING", 3000));
    client.command("PING", 3000);
    const auto records = supplicant.records();
    ASSERT_EQ(records.size(), 3U);
    const unsigned int first = number_of(records[0].sender);
    EXPECT_EQ(number_of(records[1].sender), first + 1);
    EXPECT_EQ(number_of(records[2].sender), first + 3);
}

TEST_F(Transport, SaysWhyItCannotConnect)
{
    const std::string dead = supplicant.folder() + "/dead";
    ASSERT_EQ(mknod(dead.c_str(), S_IFSOCK | 0600, 0), 0);
    const std::vector<std::pair<std::string, std::string>> rows{
        {supplicant.folder() + "/none", "No such file or directory"},
        {dead, "Connection refused"},
        {dead + "/wlan0", "Not a directory"},
    };
    for (const auto& [path, reason] : rows) {
        const Client nowhere = client_at(path);
        EXPECT_EQ(error_of([&] { nowhere.command("PING", 3000); }),
                  "Could not connect to wpa_supplicant: " + reason);
        EXPECT_THAT(socket_files(), IsEmpty());
    }
}

TEST_F(Transport, SaysWhyItCannotSend)
{
    EXPECT_EQ(error_of([&] { client.command(QByteArray(1 << 24, 'x'), 3000); }),
              "Could not send Wi-Fi command: Message too long");
}

TEST_F(Transport, WaitsForTheGivenTime)
{
    supplicant.on("PING", {reply("late\n", 1500ms)});
    for (const int timeout_ms : {0, 200}) {
        const auto ask = [&] { client.command("PING", timeout_ms); };
        const auto duration = duration_of([&] { EXPECT_EQ(error_of(ask), timed_out); });
        EXPECT_GE(duration.count(), timeout_ms);
        EXPECT_THAT(socket_files(), IsEmpty());
    }
}

TEST_F(Transport, WaitsForEverWithANegativeTimeout)
{
    supplicant.on("PING", {reply("late\n", 3500ms)});
    EXPECT_EQ(client.command("PING", -1), "late");
}

class SocketPath : public WithSupplicant { };

TEST_F(SocketPath, ComesFromTheEnvironmentOnceIfNoneIsGiven)
{
    set_variable(socket_variable, supplicant.path());
    const Client clients[] = {QString(), u""_s};
    set_variable(socket_variable, {});
    for (const Client& without_path : clients)
        EXPECT_EQ(without_path.command("PING", 3000), "UNKNOWN COMMAND");
}

TEST_F(SocketPath, IsTheGivenOneWhateverTheEnvironmentSays)
{
    set_variable(socket_variable, supplicant.folder() + "/none");
    EXPECT_EQ(client_at(supplicant.path()).command("PING", 3000), "UNKNOWN COMMAND");
}

TEST_F(SocketPath, StaysEmptyWhenTheVariableIs)
{
    // What the kernel makes of an empty path is an abstract address, which needs no permission.
    const int anyone = socket(AF_UNIX, SOCK_DGRAM, 0);
    const sockaddr_un abstract{AF_UNIX, {}};
    ASSERT_EQ(bind(anyone, reinterpret_cast<const sockaddr*>(&abstract),
                   offsetof(sockaddr_un, sun_path) + 1),
              0);
    set_variable(socket_variable, "");
    EXPECT_EQ(error_of([] { Client(QString()).command("PING", 3000); }),
              "Could not connect to wpa_supplicant: Connection refused");
    close(anyone);
}

/// One request of an operation.
struct Step {
    std::string request;
    std::string reply;
    std::string refusal = {}; ///< The error after a reply of "FAIL %1"; empty if that is no error.
};

static Step confirmed(const std::string& request, const std::string& operation)
{
    return {request, "OK\n", "Could not " + operation + ": FAIL %1"};
}

struct Operation {
    std::string name;
    std::function<void(const Client&)> run;
    std::vector<Step> steps;
    std::string undo = {}; ///< Sent after a failure of any step but the first.
};

static std::vector<Operation> operations()
{
    const Step results{"SCAN_RESULTS", scan_table};
    const Step list{"LIST_NETWORKS", saved_table};
    const Step status{"STATUS", home_status};
    const Step joined{"STATUS", home2_status};
    const Step add{"ADD_NETWORK", "5\n", "wpa_supplicant did not create a network profile."};
    const Step name = confirmed("SET_NETWORK 5 ssid 486f6d6532", "set Wi-Fi network name");
    const Step enable = confirmed("ENABLE_NETWORK 5", "enable Wi-Fi network");
    const Step select = confirmed("SELECT_NETWORK 5", "select Wi-Fi network");
    const Step save = confirmed("SAVE_CONFIG", "save Wi-Fi network");
    const Step open = confirmed("SET_NETWORK 5 key_mgmt NONE", "set open-network security");
    const Step wpa = confirmed("SET_NETWORK 5 key_mgmt WPA-PSK", "set WPA security");
    const Step password = confirmed("SET_NETWORK 5 psk \"home2-\\\"pass\\\\word\"",
                                    "set WPA password");
    const Step scan = confirmed("SCAN", "start Wi-Fi scan");
    const Step select_saved = confirmed("SELECT_NETWORK 0", "select saved Wi-Fi network");
    const Step disconnect = confirmed("DISCONNECT", "disconnect Wi-Fi");
    const Step remove = confirmed("REMOVE_NETWORK 2", "remove Wi-Fi network");
    const Step save_removed = confirmed("SAVE_CONFIG", "save removed Wi-Fi network");
    return {
        {"Status", [](const Client& client) { client.status(); }, {status}},
        {"Listing",
         [](const Client& client) { client.networks(true); },
         {scan, results, list, status}},
        {"CachedListing",
         [](const Client& client) { client.networks(false); },
         {results, list, status}},
        {"ConnectingSaved",
         [](const Client& client) { client.connect_saved(0, u"Home"_s, 60000); },
         {select_saved, status}},
        {"ConnectingPersonal",
         [](const Client& client) {
             client.connect_new(u"Home2"_s, Security::Personal, u"home2-\"pass\\word"_s, 60000);
         },
         {add, name, wpa, password, enable, select, joined, save},
         "REMOVE_NETWORK 5"},
        {"ConnectingOpen",
         [](const Client& client) {
             client.connect_new(u"Home2"_s, Security::Open, u"never\nused"_s, 60000);
         },
         {add, name, open, enable, select, joined, save},
         "REMOVE_NETWORK 5"},
        {"Disconnecting", [](const Client& client) { client.disconnect(); }, {disconnect}},
        {"Forgetting",
         [](const Client& client) { client.forget(u"Bob \\\"5G\\\" C:\\\\net"_s); },
         {list, status, remove, save_removed}},
    };
}

class AnyOperation : public WithSupplicant, public testing::WithParamInterface<Operation> {
protected:
    Requests first_requests(size_t count) const
    {
        Requests result;
        for (const Step& step : std::span(steps).first(count))
            result.push_back(step.request);
        return result;
    }
    /// Without a reply to that step, or with "FAIL %1".
    Requests requests_until_failure(size_t index) const
    {
        Requests result = first_requests(index + 1);
        if (index > 0 && !GetParam().undo.empty())
            result.push_back(GetParam().undo);
        return result;
    }
    /// The answer to the step at that index, and success for all others.
    Script script_with(size_t index, const Answer& answer) const
    {
        Script result = idle_script;
        for (const Step& step : steps)
            result[step.request] = {reply(step.reply)};
        result[steps[index].request] = {answer};
        return result;
    }
    std::string error_with(const FakeSupplicant& peer) const
    {
        return error_of([&] { GetParam().run(client_at(peer.path())); });
    }

    const std::vector<Step>& steps = GetParam().steps;
};

TEST_P(AnyOperation, SendsItsRequestsInOrderUntilOneIsRefused)
{
    const FakeSupplicant willing(script_with(0, reply(steps[0].reply)));
    EXPECT_EQ(error_with(willing), "no error");
    EXPECT_EQ(willing.requests(), first_requests(steps.size()));
    for (size_t i = 0; i < steps.size(); ++i) {
        if (steps[i].refusal.empty())
            continue;
        SCOPED_TRACE(steps[i].request);
        const FakeSupplicant peer(script_with(i, reply("FAIL %1\n")));
        EXPECT_EQ(error_with(peer), steps[i].refusal);
        EXPECT_EQ(peer.requests(), requests_until_failure(i));
    }
}

TEST_P(AnyOperation, EndsWhenTheSupplicantIsGone)
{
    EXPECT_EQ(error_of([&] { GetParam().run(client_at("/nowhere")); }), nobody_there);
    for (size_t done = 1; done < steps.size(); ++done) {
        SCOPED_TRACE(steps[done].request);
        const FakeSupplicant peer(script_with(done - 1, last_reply(steps[done - 1].reply)));
        EXPECT_EQ(error_with(peer), nobody_there);
        EXPECT_EQ(peer.requests(), first_requests(done));
    }
}

TEST_P(AnyOperation, EndsThreeSecondsAfterARequestWithoutAReply)
{
    std::vector<std::future<void>> attempts; // at once
    for (size_t i = 0; i < steps.size(); ++i)
        attempts.push_back(std::async(std::launch::async, [this, i] {
            SCOPED_TRACE(steps[i].request);
            const FakeSupplicant peer(script_with(i, silence()));
            EXPECT_GE(duration_of([&] { EXPECT_EQ(error_with(peer), timed_out); }), 3000ms);
            EXPECT_EQ(peer.requests(), requests_until_failure(i));
        }));
    for (std::future<void>& attempt : attempts)
        attempt.get();
}

INSTANTIATE_TEST_SUITE_P(, AnyOperation, testing::ValuesIn(operations()), by_name);

class StatusQuery : public WithSupplicant { };

TEST_F(StatusQuery, HasThreeSecondsForTheReply)
{
    supplicant.on("STATUS", {reply(home_status, 2000ms), reply("", 5000ms)});
    EXPECT_EQ(client.status().state, u"COMPLETED"_s);
    EXPECT_EQ(error_of([&] { client.status(); }), timed_out);
}

class Refusal : public WithSupplicant { };

TEST_F(Refusal, IsEveryReplyButOk)
{
    const std::vector<std::pair<std::string, std::string>> rows{
        {"FAIL\n", "FAIL"},
        {"FAIL-BUSY\n", "FAIL-BUSY"},
        {"", ""},
        {"ok\n", "ok"},
        {"OK \n", "OK "},
        {" OK", " OK"},
        {"OK 1\n", "OK 1"},
        {"OKAY\n", "OKAY"},
        {"OK\nOK\n", "OK\nOK"},
        {"%1 %2 %3\n", "%1 %2 %3"},
        {"\r\n\n\r", ""},
        {"Café \xff\n", "Café \xef\xbf\xbd"},
        {std::string(65537, 'x'), std::string(65536, 'x')},
        {"\t\t\n\t\n=\nid=x\n==", "\t\t\n\t\n=\nid=x\n=="},
        {"F\0AIL\n"s, "F"}}; // what() ends there
    for (const auto& [refusal, shown] : rows) {
        supplicant.on("DISCONNECT", {reply(refusal)});
        EXPECT_EQ(error_of([&] { client.disconnect(); }), "Could not disconnect Wi-Fi: " + shown);
    }
}

class Listing : public WithSupplicant { };

TEST_F(Listing, MergesTheThreeReplies)
{
    supplicant.on("SCAN_RESULTS", {reply(scan_table)});
    supplicant.on("LIST_NETWORKS", {reply(saved_table)});
    supplicant.on("STATUS", {reply(home_status)});
    const auto networks = describe(client.networks(false));
    ASSERT_EQ(networks.size(), 9U);
    EXPECT_EQ(networks.front(),
              "current|Home|02:00:00:00:02:00|2437|-50|0|WPA personal|[WPA2-PSK-CCMP][ESS]");
    EXPECT_EQ(describe(client.networks(true)), networks);
}

TEST_F(Listing, AcceptsAScanThatIsAlreadyUnderWay)
{
    supplicant.on("SCAN", {reply("FAIL-BUSY\n"), reply("FAIL-BUSY for a while\n")});
    for (int i = 0; i < 2; ++i)
        EXPECT_THAT(client.networks(true), IsEmpty());
    EXPECT_EQ(supplicant.requests(), list_requests + list_requests);
}

TEST_F(Listing, StopsWhenTheScanIsRefused)
{
    for (const std::string refusal :
         {"FAIL", "FAIL-BUS", "fail-busy", " FAIL-BUSY", "OK FAIL-BUSY", "", "%1 %2"}) {
        supplicant.on("SCAN", {reply(refusal + '\n')});
        EXPECT_EQ(error_of([&] { client.networks(true); }),
                  "Could not start Wi-Fi scan: " + refusal);
    }
    EXPECT_THAT(supplicant.requests(), Each("SCAN"));
}

TEST_F(Listing, DoesNotSleepWithoutAScan)
{
    set_variable(scan_delay_variable, "20000");
    EXPECT_LT(duration_of([&] { client.networks(false); }), 10s);
}

TEST_F(Listing, SleepsAlsoWhenAScanIsUnderWay)
{
    set_variable(scan_delay_variable, "300");
    supplicant.on("SCAN", {reply("FAIL-BUSY\n")});
    EXPECT_GE(duration_of([&] { client.networks(true); }), 300ms);
}

struct Delay {
    std::string name;
    std::optional<std::string> value;
    std::chrono::milliseconds least;
    std::chrono::milliseconds most;
};

class ScanDelay : public WithSupplicant, public testing::WithParamInterface<Delay> { };

TEST_P(ScanDelay, ComesFromTheEnvironment)
{
    set_variable(scan_delay_variable, GetParam().value);
    const auto duration = duration_of([&] { client.networks(true); });
    EXPECT_GE(duration, GetParam().least);
    EXPECT_LT(duration, GetParam().most);
}

INSTANTIATE_TEST_SUITE_P(
    , ScanDelay,
    testing::Values(Delay{"Unset", {}, 1400ms, 20s}, Delay{"Empty", "", 1400ms, 20s},
                    Delay{"Word", "abc", 1400ms, 20s},
                    Delay{"WordAfterNumber", "10ms", 1400ms, 20s},
                    Delay{"Fraction", "0.5", 1400ms, 20s}, Delay{"Negative", "-5", 1400ms, 20s},
                    Delay{"OutOfRange", "2147483648", 1400ms, 20s},
                    Delay{"NotOctal", "08", 1400ms, 20s}, Delay{"Zero", "0", 0ms, 1400ms},
                    Delay{"Hexadecimal", "0x10", 16ms, 1400ms}, Delay{"Octal", "010", 8ms, 1400ms},
                    Delay{"Longer", "2000", 2000ms, 20s}),
    by_name);

class Connecting : public WithSupplicant { };

TEST_F(Connecting, NeedsASavedProfile)
{
    for (const int id : {-1, std::numeric_limits<int>::min()})
        EXPECT_EQ(error_of([&] { client.connect_saved(id, u"Home"_s, 60000); }),
                  "The selected network is not saved.");
    EXPECT_THAT(supplicant.requests(), IsEmpty());
}

TEST_F(Connecting, ChecksItsArgumentsInOrderBeforeItSendsAnything)
{
    struct Row {
        QString ssid;
        Security security;
        QString password;
        std::string error;
    };
    const std::string no_name = "The network name cannot be empty.";
    const std::string unsupported =
        "Corvane does not configure enterprise, WEP, or SAE-only networks yet.";
    const std::string no_password = "A WPA password must contain 8 to 63 UTF-8 bytes.";
    const std::vector<Row> rows{
        {u""_s, Security::Open, u""_s, no_name},
        {u""_s, Security::Personal, u"password"_s, no_name},
        {u""_s, Security::Unsupported, u"short"_s, no_name},
        {u"Home2"_s, Security::Unsupported, u"password"_s, unsupported},
        {u"Home2"_s, Security::Unsupported, u"short"_s, unsupported},
        {u"Home2"_s, Security::Personal, u""_s, no_password},
        {u"Home2"_s, Security::Personal, u"1234567"_s, no_password},
        {u"Home2"_s, Security::Personal, u"123456\n"_s, no_password},
        {u"Home2"_s, Security::Personal, u"éé123"_s, no_password},
        {u"Home2"_s, Security::Personal, QString(64, u'x'), no_password},
        {u"Home2"_s, Security::Personal, QString(32, u'é'), no_password},
        {u"Home2"_s, Security::Personal, QString(32, u'☕'), no_password},
    };
    for (const Row& row : rows)
        EXPECT_EQ(error_of([&] { client.connect_new(row.ssid, row.security, row.password, 0); }),
                  row.error);
    EXPECT_THAT(supplicant.requests(), IsEmpty());
}

TEST_F(Connecting, AcceptsPasswordsOf8To63Bytes)
{
    for (const QString& password : {u"12345678"_s, u"éééé"_s, u"☕☕12"_s, QString(63, u'x'),
                                    QString(21, u'☕'), QString(31, u'é') + u'x'}) {
        client.connect_new(u"Home2"_s, Security::Personal, password, 0);
        EXPECT_THAT(supplicant.requests(),
                    testing::Contains("SET_NETWORK 5 psk \"" + password.toStdString() + '"'));
    }
}

TEST_F(Connecting, StopsWithoutAProfileId)
{
    const std::vector<std::string> replies{"FAIL\n", "",      "\n",    "OK\n",         "-1\n",
                                           "5x\n",   "0x5\n", "5 6\n", "2147483648\n", "5.0\n"};
    for (const std::string& bad : replies) {
        supplicant.on("ADD_NETWORK", {reply(bad)});
        EXPECT_EQ(error_of([&] { client.connect_new(u"Home2"_s, Security::Open, u""_s, 0); }),
                  "wpa_supplicant did not create a network profile.")
            << bad;
    }
    EXPECT_EQ(supplicant.requests(), Requests(replies.size(), "ADD_NETWORK"));
}

TEST_F(Connecting, AcceptsProfile0)
{
    supplicant.on("ADD_NETWORK", {reply("0\n")});
    client.connect_new(u"Home"_s, Security::Open, u""_s, 0);
    EXPECT_THAT(supplicant.requests(), testing::Contains("SELECT_NETWORK 0"));
}

TEST_F(Connecting, LeavesTheSelectionWhenTheTimeIsUp)
{
    EXPECT_EQ(error_of([&] { client.connect_saved(2, u"%1 %2 Café"_s, 300); }),
              "Timed out connecting to %1 %2 Café.");
    EXPECT_EQ(supplicant.requests().front(), "SELECT_NETWORK 2");
    EXPECT_EQ(supplicant.requests().back(), "STATUS");
}

TEST_F(Connecting, RequestsTheStatusEvery400Milliseconds)
{
    supplicant.on("STATUS", {reply(idle_status), reply(idle_status), reply(home_status)});
    const auto duration = duration_of([&] { client.connect_saved(0, u"Home"_s, 60000); });
    EXPECT_EQ(polls(), 3);
    EXPECT_GE(duration, 800ms);
    EXPECT_LT(duration, 8s);
}

TEST_F(Connecting, RequestsTheFirstStatusAtOnce)
{
    supplicant.on("STATUS", {reply(home_status)});
    const auto duration = duration_of([&] {
        for (int i = 0; i < 15; ++i)
            client.connect_saved(0, u"Home"_s, 60000);
    });
    EXPECT_LT(duration, 15 * 400ms);
}

TEST_F(Connecting, GivesUpOnlyWhenTheTimeIsUp)
{
    const auto duration = duration_of(
        [&] { EXPECT_ANY_THROW(client.connect_saved(0, u"Home"_s, 1500)); });
    EXPECT_GE(duration, 1500ms);
    EXPECT_GE(polls(), 2);
    EXPECT_LE(polls(), 4);
}

TEST_F(Connecting, WaitsForTheStateAndTheNameExactly)
{
    std::vector<Answer> answers;
    for (const std::string& status :
         {idle_status, "ssid=Home\nwpa_state=4WAY_HANDSHAKE\n"s,
          "ssid=Cafe\nid=0\nwpa_state=COMPLETED\n"s, "ssid=home\nwpa_state=COMPLETED\n"s,
          "ssid=Home2\nwpa_state=COMPLETED\n"s, "ssid=Hom\nwpa_state=COMPLETED\n"s,
          "id=0\nwpa_state=COMPLETED\n"s, "ssid=Home\nid=0\nwpa_state=completed\n"s,
          "wpa_state=COMPLETED\r\nssid=Home\nid=0\n"s, "FAIL\n"s, ""s, home_status})
        answers.push_back(reply(status));
    supplicant.on("STATUS", answers);
    client.connect_saved(0, u"Home"_s, 60000);
    EXPECT_EQ(supplicant.requests().size(), 1 + answers.size());
}

TEST_F(Connecting, ReportsTheFirstErrorEvenIfTheRemovalFails)
{
    const std::string error = "Could not enable Wi-Fi network: FAIL";
    const auto fail = [this] { client.connect_new(u"Home"_s, Security::Open, u""_s, 60000); };
    supplicant.on("ENABLE_NETWORK", {reply("FAIL\n")});
    supplicant.on("REMOVE_NETWORK", {reply("no way\n"), silence()});
    EXPECT_EQ(error_of(fail), error);
    EXPECT_EQ(error_of(fail), error);
    EXPECT_EQ(std::ranges::count(supplicant.requests(), "REMOVE_NETWORK 5"), 2);
    EXPECT_EQ(supplicant.requests().back(), "REMOVE_NETWORK 5");
}

struct Budget {
    std::string name;
    std::optional<std::string> variable;
    int timeout_ms;
    std::optional<int> polls; ///< None when the time is up before the second.
};

class ConnectTimeout : public WithSupplicant, public testing::WithParamInterface<Budget> { };

TEST_P(ConnectTimeout, ComesFromTheEnvironmentOrTheCaller)
{
    set_variable(connect_timeout_variable, GetParam().variable);
    const std::map<std::string, std::function<void()>> connects = {
        {"Home", [&] { client.connect_saved(0, u"Home"_s, GetParam().timeout_ms); }},
        {"Home2",
         [&] { client.connect_new(u"Home2"_s, Security::Open, u""_s, GetParam().timeout_ms); }}};
    for (const auto& [ssid, connect] : connects) {
        const auto before = polls();
        supplicant.on("STATUS", {reply(idle_status), reply(connected_status(ssid, 0))});
        const std::string error = error_of(connect);
        if (GetParam().polls) {
            EXPECT_EQ(error, "no error");
            EXPECT_EQ(polls() - before, *GetParam().polls);
        } else {
            EXPECT_EQ(error, "Timed out connecting to " + ssid + '.');
            EXPECT_LE(polls() - before, 1);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    , ConnectTimeout,
    testing::Values(Budget{"Unset", {}, 60000, 2}, Budget{"UnsetAndShort", {}, 200, {}},
                    Budget{"UnsetAndShortest", {}, 1, {}}, Budget{"UnsetAndZero", {}, 0, 0},
                    Budget{"UnsetAndNegative", {}, -5, 0}, Budget{"Empty", "", 60000, 2},
                    Budget{"Word", "abc", 60000, 2}, Budget{"Negative", "-1", 60000, 2},
                    Budget{"Zero", "0", 60000, 0}, Budget{"Shorter", "200", 60000, {}},
                    Budget{"Hexadecimal", "0x10", 60000, {}},
                    Budget{"LongerThanZero", "60000", 0, 2},
                    Budget{"LongerThanNegative", "60000", -1, 2}),
    by_name);

TEST_F(Connecting, ReadsTheTimeoutAfterTheSelection)
{
    const Peer peer;
    std::thread replies([&] {
        for (Request request = peer.receive(); !request.sender.empty(); request = peer.receive()) {
            if (request.bytes.starts_with("SELECT_NETWORK"))
                qputenv(connect_timeout_variable, "0");
            peer.send(request.sender, request.bytes == "ADD_NETWORK" ? "5\n" : "OK\n");
        }
    });
    const Client other = client_at(peer.path());
    const std::function<void()> connects[] = {
        [&] { other.connect_saved(0, u"Home"_s, 500); },
        [&] { other.connect_new(u"Home2"_s, Security::Open, u""_s, 500); }};
    for (const auto& connect : connects) {
        set_variable(connect_timeout_variable, {});
        EXPECT_EQ(error_of(connect), "no error");
    }
    peer.stop();
    replies.join();
}

class Forgetting : public WithSupplicant { };

TEST_F(Forgetting, NeedsAProfileOfExactlyThatName)
{
    supplicant.on("SCAN_RESULTS", {reply(scan_table)});
    supplicant.on("LIST_NETWORKS", {reply(saved_table + "-1\tNegative\tany\t\n")});
    supplicant.on("STATUS", {reply(home_status)});
    const std::vector<std::string> names{"Cafe",     "home",           "Hom",   "Home ",
                                         "Negative", "Café du Nord ☕", "%1 %2", ""};
    for (const std::string& name : names) {
        const QString ssid = QString::fromStdString(name);
        EXPECT_EQ(error_of([&] { client.forget(ssid); }), name + " is not a saved network.");
    }
    EXPECT_EQ(supplicant.requests().size(), 2 * names.size());
    EXPECT_THAT(supplicant.requests(), Each(testing::AnyOf("LIST_NETWORKS", "STATUS")));
}

TEST_F(Forgetting, RemovesTheProfileThatIsListedLast)
{
    supplicant.on("LIST_NETWORKS",
                  {reply("network id / ssid / bssid / flags\n"
                         "0\tTwins\t02:00:00:00:0b:00\t[CURRENT]\n3\tTwins\tany\t[DISABLED]\n"
                         "4\tOther\tany\t[DISABLED]\n"),
                   reply("0\tTwins\t02:00:00:00:0b:00\t[CURRENT]\n4\tOther\tany\t\n")});
    client.forget(u"Twins"_s);
    client.forget(u"Twins"_s);
    EXPECT_THAT(supplicant.requests(),
                ElementsAre("LIST_NETWORKS", "STATUS", "REMOVE_NETWORK 3", "SAVE_CONFIG",
                            "LIST_NETWORKS", "STATUS", "REMOVE_NETWORK 0", "SAVE_CONFIG"));
}

TEST_F(Forgetting, NeedsNoStatus)
{
    supplicant.on("LIST_NETWORKS", {reply(saved_table)});
    supplicant.on("STATUS", {reply("FAIL\n")});
    client.forget(u"Caf\\xc3\\xa9 du Nord \\xe2\\x98\\x95"_s);
    EXPECT_THAT(supplicant.requests(),
                ElementsAre("LIST_NETWORKS", "STATUS", "REMOVE_NETWORK 1", "SAVE_CONFIG"));
}
