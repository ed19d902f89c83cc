// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

// Proves what the program adds to the library: arguments, input, output and exit status.

#include "support/fake_supplicant.hpp"
#include "support/program.hpp"
#include "support/replies.hpp"
#include "support/rows.hpp"

#include <gmock/gmock.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <future>
#include <map>

using testing::ElementsAre;
using namespace std::chrono_literals;
using namespace std::string_literals;

using Arguments = std::vector<std::string>;

struct Case {
    std::string name;
    Arguments arguments;
    Outcome outcome;
    Requests requests;
    std::string input;
    Script script;
};

namespace {

Case row(const std::string& name, const Arguments& arguments, const Outcome& outcome,
         const Requests& requests = {}, const std::string& input = {}, const Script& script = {})
{
    return {name, arguments, outcome, requests, input, script};
}

class Command : public testing::TestWithParam<Case> { };

const std::string ok_json = "{\"ok\":true}\n";
const std::string number_prompt = "Network number: ";
const std::string both_prompts = number_prompt + "Wi-Fi password: ";
const std::string not_read = "Could not read input.";
const std::string bad_byte = "Wi-Fi passwords cannot contain NUL or newline characters.";
const Outcome connected = success("Connected to Home2.\n");

const Requests list_saved = {"LIST_NETWORKS", "STATUS"};
const Requests join_cafe = add_profile("43616665", "NONE") + activate_and_save;
const Requests refuse_password = add_profile("486f6d6532", "WPA-PSK")
    + Requests{"REMOVE_NETWORK 3"};

Requests select_saved(int id)
{
    return {"SELECT_NETWORK " + std::to_string(id), "STATUS"};
}

/// What `pick` prints in the end.
Outcome picked(const std::string& line, const std::string& prompts = number_prompt)
{
    return success(network_table + line + "\n", prompts);
}

Outcome not_picked(const std::string& message, const std::string& prompts = number_prompt)
{
    return failure(message, network_table, prompts);
}

std::string json_row(const std::string& bssid, bool current, int frequency, int saved_id,
                     const std::string& security, int signal, const std::string& ssid)
{
    const auto word = [](bool value) { return std::string(value ? "true" : "false"); };
    return R"({"bssid":")" + bssid + R"(","current":)" + word(current) + R"(,"frequency":)"
        + std::to_string(frequency) + R"(,"saved":)" + word(saved_id >= 0) + R"(,"saved_id":)"
        + std::to_string(saved_id) + R"(,"security":")" + security + R"(","signal":)"
        + std::to_string(signal) + R"(,"ssid":")" + ssid + R"(","supported":)"
        + word(security != "unsupported") + "}";
}

std::vector<Case> syntax_cases()
{
    const Outcome usage = success(
        "Usage: corvane-wifi status [--json]\n"
        "       corvane-wifi list [--json] [--cached]\n"
        "       corvane-wifi pick\n"
        "       corvane-wifi connect [--open|--password-stdin] SSID\n"
        "       corvane-wifi disconnect\n"
        "       corvane-wifi forget --yes SSID\n"
        "\n"
        "Scanning and switching saved networks do not write storage. Adding or\n"
        "forgetting a network deliberately updates the firmware Wi-Fi file once.\n");
    const Outcome unknown_action = failure("Unknown action. Run corvane-wifi --help.");
    const Outcome twins = success("State: COMPLETED\nNetwork: Twins\nAddress: 10.66.2.48\n");
    const Outcome json = success(
        R"({"address":"10.66.2.48","saved_id":1,"ssid":"Twins","state":"COMPLETED"})"
        "\n");
    const Requests status = {"STATUS"};
    return {
        row("NoWordsPrintTheUsage", {}, usage),
        row("AllTheFlagsPrintTheUsage",
            {"--json", "--cached", "--password-stdin", "--open", "--yes", "--yes"}, usage),
        row("ShortHelpPrintsTheUsage", {"-h"}, usage),
        row("TheHelpWordPrintsTheUsage", {"help"}, usage),
        row("LongHelpPrintsTheUsage", {"--help"}, usage),
        row("AFlagBeforeHelpPrintsTheUsage", {"--yes", "--help"}, usage),
        row("OnlyTheFirstWordCountsForHelp", {"help", "status"}, usage),
        row("HelpAfterAnActionIsAnOperand", {"status", "-h"}, twins, status),
        row("StatusIgnoresExtraWords", {"status", "extra"}, twins, status),
        row("StatusIgnoresTheFlagsOfOthers", {"--cached", "status", "--yes"}, twins, status),
        row("StatusPrintsJson", {"status", "--json"}, json, status),
        row("AFlagMayBeRepeated", {"--json", "status", "--json", "--json"}, json, status),
        row("StatusPrintsFourMembersWhenNotConnected", {"status", "--json"},
            success(R"({"address":"","saved_id":-1,"ssid":"","state":"DISCONNECTED"})"
                    "\n"),
            status, "", replies("STATUS", idle_status)),
        row("ActionsAreCaseSensitive", {"Status"}, unknown_action),
        row("AnEmptyWordIsNoAction", {""}, unknown_action),
        row("AnActionMustMatchWhole", {"status "}, unknown_action),
        row("AFlagWithAValueIsAWord", {"--json=1"}, unknown_action),
        row("AShortFlagIsAWord", {"-j"}, unknown_action),
        row("AFlagInCapitalsIsAWord", {"--JSON", "status"}, unknown_action),
        row("TwoDashesAreAWord", {"--", "status"}, unknown_action),
    };
}

std::vector<Case> list_cases()
{
    const std::string json = "["
        + json_row("02:00:00:00:0a:00", true, 2417, 1, "WPA personal", -40, "Twins") + ","
        + json_row("02:00:00:00:03:00", false, 2462, 2, "WPA personal", -50, "Mixed") + ","
        + json_row("", false, 0, 0, "unsupported", -100, "Home") + ","
        + json_row("02:00:00:00:01:00", false, 2412, -1, "open", -45, "Cafe") + ","
        + json_row("02:00:00:00:02:00", false, 2437, -1, "WPA personal", -50, "Home2") + ","
        + json_row("02:00:00:00:09:00", false, 2452, -1, "unsupported", -50, "Office") + "]\n";
    const Outcome takes_no_name = failure("list takes no network name.");
    const Outcome table = success(network_table);
    Script levels = no_networks();
    levels["SCAN_RESULTS"] = {
        reply(scan_results("02:00:00:00:01:00\t2412\t-100\t[ESS]\tFaint\n"
                           "02:00:00:00:02:00\t2437\t-99\t[ESS]\tCaf\u00e9 \"\\\\ \u2615\n"))};
    const std::string levels_json = "["
        + json_row("02:00:00:00:02:00", false, 2437, -1, "open", -99,
                   "Caf\u00e9 \\\"\\\\\\\\ \u2615")
        + "," + json_row("02:00:00:00:01:00", false, 2412, -1, "open", -100, "Faint") + "]\n";
    return {
        row("ListScansAndPrintsTheTable", {"list"}, table, list_requests),
        row("ListPrintsJson", {"list", "--json"}, success(json), list_requests),
        row("ListOfNothingPrintsNothing", {"list"}, success(""), list_requests, "", no_networks()),
        row("ListOfNothingIsAnEmptyArray", {"list", "--json"}, success("[]\n"), list_requests, "",
            no_networks()),
        row("ListCachedDoesNotScan", {"list", "--cached"}, table, cached_list_requests),
        row("ListTakesNoName", {"list", "Home"}, takes_no_name),
        row("AFlagWithAValueIsAnOperand", {"list", "--json=1"}, takes_no_name),
        row("ARefusedScanEndsTheListing", {"list", "--json"},
            failure("Could not start Wi-Fi scan: FAIL"), {"SCAN"}, "", replies("SCAN", "FAIL\n")),
        row("TheTableTellsALevelFromNone", {"list"},
            success("1.   Caf\u00e9 \"\\\\ \u2615  [open, -99 dBm]\n2.   Faint  [open, saved]\n"),
            list_requests, "", levels),
        row("JsonEscapesNoMoreThanItMust", {"list", "--json"}, success(levels_json), list_requests,
            "", levels),
    };
}

std::vector<Case> connect_cases()
{
    const Outcome bad_operands = failure("connect requires one SSID and one security choice.");
    const Outcome not_found = failure("Network was not found. Run corvane-wifi list first.");
    const Outcome home = success("Connected to Home.\n");
    const Requests select_home = cached_list_requests + select_saved(0);
    const Script to_home = then_connected("Home", 0);
    return {
        row("ConnectNeedsAName", {"connect"}, bad_operands),
        row("ConnectTakesOneNameOnly", {"connect", "Home", "Office"}, bad_operands),
        row("TwoDashesAreAnOperand", {"connect", "--", "Home"}, bad_operands),
        row("ConnectTakesOneChoiceOnly", {"connect", "--open", "--password-stdin", "Home"},
            bad_operands),
        row("ASavedNetworkNeedsNoFlag", {"connect", "Home"}, home, select_home, "", to_home),
        row("ConnectPrintsJson", {"connect", "Home", "--json"}, success(ok_json), select_home, "",
            to_home),
        row("OpenIsIgnoredForASavedNetwork", {"connect", "--open", "Home"}, home, select_home, "",
            to_home),
        row("TheCurrentNetworkIsSelectedAgain", {"connect", "Twins"},
            success("Connected to Twins.\n"), cached_list_requests + select_saved(1), "",
            then_connected("Twins", 1)),
        row("AnUnsavedNetworkNeedsAChoice", {"connect", "Cafe"},
            failure("Use --password-stdin so the password does not enter shell history, or --open "
                    "for an open network."),
            cached_list_requests),
        row("NamesAreCaseSensitive", {"connect", "home"}, not_found, cached_list_requests),
        row("NamesAreNotTrimmed", {"connect", "Home "}, not_found, cached_list_requests),
        row("AnEmptyNameIsNotFound", {"connect", "--open", ""}, not_found, cached_list_requests),
        row("AnOpenNetworkIsAdded", {"connect", "--open", "Cafe"}, success("Connected to Cafe.\n"),
            cached_list_requests + join_cafe, "a password that nobody asked for\n",
            then_connected("Cafe", 3)),
    };
}

std::vector<Case> password_cases()
{
    const Arguments home2 = {"connect", "--password-stdin", "Home2"};
    const Requests join = cached_list_requests + join_home2();
    const Requests join_in_vain = Requests(join.begin(), join.end() - 1)
        + Requests{"REMOVE_NETWORK 3"};
    return {
        row("ThePasswordIsReadWithoutAPrompt", home2, connected, join, "home2-password\n"),
        row("JsonReplacesTheSentence", {"--json", "connect", "--password-stdin", "Home2"},
            success(ok_json), join, "home2-password\n"),
        row("TheFlagDecidesOnTheSecurity", {"connect", "--password-stdin", "Office"},
            success("Connected to Office.\n"),
            cached_list_requests + add_profile("4f6666696365", "WPA-PSK")
                + Requests{"SET_NETWORK 3 psk \"home2-password\""} + activate_and_save,
            "home2-password\n", then_connected("Office", 3)),
        row("OnlyTheFirstLineIsThePassword", home2, connected, join, "home2-password\nmore\n"),
        row("TheLastLineNeedsNoEnd", home2, connected, join, "home2-password"),
        row("BlanksBelongToThePassword", home2, connected,
            cached_list_requests + join_home2("\" pass \tword \""), " pass \tword \n"),
        row("FourTwoByteLettersAreAPassword", home2, connected,
            cached_list_requests + join_home2("\"\u00e4\u00f6\u00fc\u00df\""),
            "\u00e4\u00f6\u00fc\u00df\n"),
        row("AnEmptyLineIsAnEmptyPassword", home2,
            failure("A WPA password must contain 8 to 63 UTF-8 bytes."), cached_list_requests,
            "\n"),
        row("NoInputIsReported", home2, failure(not_read), cached_list_requests),
        row("ANulReachesTheCheckThatRefusesIt", home2, failure(bad_byte),
            cached_list_requests + refuse_password, "pass\0word\n"s),
        row("ACarriageReturnStaysInThePassword", home2, failure(bad_byte),
            cached_list_requests + refuse_password, "home2-password\r\n"),
        row("ANetworkThatDoesNotComeUpIsRemoved", home2, failure("Timed out connecting to Home2."),
            join_in_vain, "home2-password\n", replies("STATUS", idle_status)),
    };
}

std::vector<Case> pick_number_cases()
{
    const std::string invalid = "Invalid network number.";
    std::string rows;
    std::string long_table;
    for (int i = 1; i <= 12; ++i) {
        const std::string name = "Net" + std::to_string(i);
        rows += "02:00:00:00:00:01\t2412\t-50\t[ESS]\t" + name + "\n";
        long_table += std::to_string(i) + ".   " + name + "  [open, -50 dBm]\n";
    }
    Script twelve_networks = replies("SCAN_RESULTS", scan_results(rows));
    twelve_networks.merge(no_networks());
    std::vector<Case> cases = {row("PickFromNothing", {"pick"}, failure(invalid, "", number_prompt),
                                   list_requests, "1\n", no_networks()),
                               row("PickBeyondALongTable", {"pick"},
                                   failure(invalid, long_table, number_prompt), list_requests,
                                   "13\n", twelve_networks)};
    const std::map<std::string, std::string> inputs = {
        {"Zero", "0"},           {"ANegative", "-1"},
        {"AWord", "abc"},        {"ANumberWithATail", "1x"},
        {"AHexadecimal", "0x1"}, {"AnEmptyLine", ""},
        {"OneTooMany", "7"},     {"FarTooMany", "4294967297"}};
    for (const auto& [name, input] : inputs)
        cases.push_back(
            row("Pick" + name, {"pick"}, not_picked(invalid), list_requests, input + "\n"));
    return cases;
}

std::vector<Case> pick_cases()
{
    const Arguments pick = {"pick"};
    const Outcome already = picked("Already connected.");
    const Requests join = list_requests + join_home2();
    const std::string placeholders = "%1 100%2 %%L1";
    Script saved_placeholders = then_connected(placeholders, 4);
    saved_placeholders.merge(replies("SCAN_RESULTS", scan_results("")));
    saved_placeholders.merge(
        replies("LIST_NETWORKS", profile_list("4\t" + placeholders + "\tany\t\n")));
    return {
        row("PickTakesNoArguments", {"pick", "1"}, failure("pick takes no arguments.")),
        row("PickOneIsTheFirstLine", pick, already, list_requests, "1\n"),
        row("PickPrintsTheTableInJsonModeToo", {"--json", "pick"}, already, list_requests, "1\n"),
        row("PickScansInCachedModeToo", {"pick", "--cached"}, already, list_requests, "1"),
        row("PickWithoutInputIsReported", pick, not_picked(not_read), list_requests),
        row("PickASavedNetworkSelectsIt", pick, picked("Connected to Mixed."),
            list_requests + select_saved(2), "2\n", then_connected("Mixed", 2)),
        row("PickASavedNetworkOutOfRangeSelectsIt", pick, picked("Connected to Home."),
            list_requests + select_saved(0), "3\n", then_connected("Home", 0)),
        row("PickAnOpenNetworkAsksForNoPassword", pick, picked("Connected to Cafe."),
            list_requests + join_cafe, "4\n", then_connected("Cafe", 3)),
        row("PickReadsTwoAnswersFromOnePipe", {"pick", "--json"},
            picked("Connected to Home2.", both_prompts), join, "5\nhome2-password\nmore\n"),
        row("PickTakesAPasswordWithoutALineEnd", pick, picked("Connected to Home2.", both_prompts),
            join, "5\nhome2-password"),
        row("PickRefusesANulInThePassword", pick, not_picked(bad_byte, both_prompts),
            list_requests + refuse_password, "5\npass\0word\n"s),
        row("PickWithoutAPasswordIsReported", pick, not_picked(not_read, both_prompts),
            list_requests, "5\n"),
        row("PickAnUnsupportedNetworkAsksForNoPassword", pick,
            not_picked("That network uses an unsupported security mode."), list_requests, "6\n"),
        row("PickPrintsPlaceholdersAsTheyAre", pick,
            success("1.   " + placeholders + "  [unsupported, saved, saved]\nConnected to "
                        + placeholders + ".\n",
                    number_prompt),
            list_requests + select_saved(4), "1\n", saved_placeholders),
    };
}

std::vector<Case> disconnect_and_forget_cases()
{
    const Outcome disconnected = success("Wi-Fi disconnected.\n");
    const Requests disconnect = {"DISCONNECT"};
    const Outcome bad_forget = failure(
        "Forgetting writes the saved Wi-Fi file. Use: corvane-wifi forget --yes SSID");
    const Outcome forgot = success("Forgot Home.\n");
    const Requests forget = list_saved + Requests{"REMOVE_NETWORK 0", "SAVE_CONFIG"};
    return {
        row("DisconnectDisconnects", {"disconnect"}, disconnected, disconnect),
        row("DisconnectPrintsJson", {"disconnect", "--json"}, success(ok_json), disconnect),
        row("DisconnectTakesNoArguments", {"disconnect", "now"},
            failure("disconnect takes no arguments.")),
        row("ARefusedDisconnectionPrintsNoJson", {"disconnect", "--json"},
            failure("Could not disconnect Wi-Fi: FAIL"), disconnect, "",
            replies("DISCONNECT", "FAIL\n")),
        row("ForgetNeedsYes", {"forget", "Home"}, bad_forget),
        row("ForgetNeedsAName", {"forget", "--yes"}, bad_forget),
        row("ForgetTakesOneNameOnly", {"forget", "--yes", "Home", "Office"}, bad_forget),
        row("ForgetForgets", {"--yes", "forget", "Home"}, forgot, forget),
        row("YesMayComeLast", {"forget", "Home", "--yes"}, forgot, forget),
        row("ForgetPrintsJson", {"forget", "--json", "--yes", "Home"}, success(ok_json), forget),
        row("ForgetTakesBlanksAsTheyAre", {"forget", "--yes", " padded  name "},
            success("Forgot  padded  name .\n"),
            list_saved + Requests{"REMOVE_NETWORK 4", "SAVE_CONFIG"}, "",
            replies("LIST_NETWORKS", profile_list("4\t padded  name \tany\t[DISABLED]\n"))),
        row("ForgetFindsSavedNetworksOnly", {"forget", "--json", "--yes", "Cafe"},
            failure("Cafe is not a saved network."), list_saved),
    };
}

Outcome run_against(const FakeSupplicant& supplicant, const Arguments& arguments,
                    const std::string& input = {}, Preparation prepare = nullptr)
{
    return run(arguments, environment_for(supplicant.path()), input, prepare);
}

} // namespace

TEST_P(Command, EndsAsItShould)
{
    const FakeSupplicant supplicant(GetParam().script);
    EXPECT_EQ(run_against(supplicant, GetParam().arguments, GetParam().input), GetParam().outcome);
    EXPECT_EQ(supplicant.requests(), GetParam().requests);
}

INSTANTIATE_TEST_SUITE_P(Syntax, Command, testing::ValuesIn(syntax_cases()), by_name);
INSTANTIATE_TEST_SUITE_P(List, Command, testing::ValuesIn(list_cases()), by_name);
INSTANTIATE_TEST_SUITE_P(Connect, Command, testing::ValuesIn(connect_cases()), by_name);
INSTANTIATE_TEST_SUITE_P(Password, Command, testing::ValuesIn(password_cases()), by_name);
INSTANTIATE_TEST_SUITE_P(PickInvalid, Command, testing::ValuesIn(pick_number_cases()), by_name);
INSTANTIATE_TEST_SUITE_P(Pick, Command, testing::ValuesIn(pick_cases()), by_name);
INSTANTIATE_TEST_SUITE_P(Leave, Command, testing::ValuesIn(disconnect_and_forget_cases()), by_name);

TEST(Connecting, LeavesStandardInputAloneForASavedNetwork)
{
    const FakeSupplicant supplicant(then_connected("Home", 0));
    const std::string line = "not for the program\n";
    static int input[2];
    ASSERT_EQ(pipe(input), 0);
    ASSERT_EQ(write(input[1], line.data(), line.size()), static_cast<ssize_t>(line.size()));
    EXPECT_EQ(run_against(supplicant, {"connect", "--password-stdin", "Home"}, "",
                          [] { dup2(input[0], STDIN_FILENO); }),
              success("Connected to Home.\n"));
    std::string left(2 * line.size(), ' ');
    EXPECT_EQ(read(input[0], left.data(), left.size()), static_cast<ssize_t>(line.size()));
    close(input[0]);
    close(input[1]);
}

TEST(Locale, ChangesNeitherOutputNorNames)
{
    const std::string name = "Caf\u00e9 \u2615";
    const std::vector<Environment> locales = {{},
                                              {{"LC_ALL", "C"}},
                                              {{"LC_ALL", "POSIX"}},
                                              {{"LANG", "C"}},
                                              {{"LC_ALL", "C.UTF-8"}},
                                              {{"LC_ALL", "xx_XX.ISO-8859-1"}},
                                              {{"LANG", "de_DE.UTF-8"}, {"LC_CTYPE", "nonsense"}}};
    for (Environment environment : locales) {
        Script script = then_connected(name + "!", 3);
        script.merge(replies("LIST_NETWORKS", profile_list("4\t" + name + "\tany\t\n")));
        script.merge(replies("SCAN_RESULTS",
                             scan_results("02:00:00:00:01:00\t2412\t-45\t[ESS]\t" + name + "!\n")));
        const FakeSupplicant supplicant(script);
        const std::string socket = supplicant.folder() + "/" + name;
        std::filesystem::create_symlink(supplicant.path(), socket);
        environment.emplace("CORVANE_WPA_SOCKET", socket);
        EXPECT_EQ(run({"connect", "--open", name + "!"}, environment),
                  success("Connected to " + name + "!.\n"));
        EXPECT_EQ(run({"forget", "--yes", name}, environment), success("Forgot " + name + ".\n"));
        EXPECT_EQ(run({"forget", "--yes", name + "?"}, environment),
                  failure(name + "? is not a saved network."));
        EXPECT_EQ(supplicant.requests(),
                  (cached_list_requests + add_profile("436166c3a920e2989521", "NONE")
                   + activate_and_save + list_saved + Requests{"REMOVE_NETWORK 4", "SAVE_CONFIG"}
                   + list_saved));
        environment["CORVANE_WPA_SOCKET"] = socket + "/nothing";
        EXPECT_EQ(run({"status"}, environment),
                  failure("Could not connect to wpa_supplicant: Not a directory"));
    }
}

TEST(Socket, OfTheProgramIsNumberedAndPrivate)
{
    const std::vector<Preparation> masks = {[] { umask(0); }, [] { umask(0777); }};
    for (const Preparation mask : masks) {
        FakeSupplicant supplicant;
        Terminal terminal({"list"}, environment_for(supplicant.path()), mask);
        const std::string prefix = "/tmp/corvane-wpa-" + std::to_string(terminal.pid()) + "-";
        EXPECT_EQ(terminal.finish(), success(on_screen(network_table)));
        Requests senders;
        for (const Request& request : supplicant.records()) {
            senders.push_back(request.sender);
            EXPECT_EQ(request.sender_mode, 0600U);
        }
        EXPECT_THAT(senders, ElementsAre(prefix + "0", prefix + "1", prefix + "2", prefix + "3"));
    }
}

TEST(Connecting, IsGivenUpAfterFifteenSeconds)
{
    const std::string timed_out = "Timed out connecting to ";
    const std::vector<Case> cases = {
        row("Saved", {"connect", "Home"}, failure(timed_out + "Home.")),
        row("Open", {"connect", "--open", "Cafe"}, failure(timed_out + "Cafe.")),
        row("Personal", {"connect", "--password-stdin", "Home2"}, failure(timed_out + "Home2."), {},
            "home2-password\n"),
        row("PickedSaved", {"pick"}, not_picked(timed_out + "Home."), {}, "3\n"),
        row("PickedPersonal", {"pick"}, not_picked(timed_out + "Home2.", both_prompts), {},
            "5\nhome2-password\n"),
    };
    std::vector<std::future<void>> running; // at once
    for (const Case& attempt : cases)
        running.push_back(std::async(std::launch::async, [&attempt] {
            const FakeSupplicant supplicant(then_connected("Twins", 1));
            Environment environment = environment_for(supplicant.path());
            environment.erase("CORVANE_WIFI_CONNECT_TIMEOUT_MS");
            const auto start = std::chrono::steady_clock::now();
            EXPECT_EQ(run(attempt.arguments, environment, attempt.input), attempt.outcome);
            const auto elapsed = std::chrono::steady_clock::now() - start;
            EXPECT_TRUE(elapsed >= 15s && elapsed < 60s) << elapsed / 1ms;
        }));
    for (std::future<void>& attempt : running)
        attempt.get();
}

TEST(Output, ComesInTheOrderOfTheConversation)
{
    const auto on_one_pipe = [](const std::string& input) {
        return run_against(FakeSupplicant(), {"pick"}, input,
                           [] { dup2(STDOUT_FILENO, STDERR_FILENO); });
    };
    EXPECT_EQ(on_one_pipe("5\nhome2-password\n"),
              success(network_table + both_prompts + "Connected to Home2.\n"));
    EXPECT_EQ(on_one_pipe("none\n"),
              (Outcome{1, network_table + number_prompt + "corvane-wifi: Invalid network number.\n",
                       ""}));
}

TEST(Output, ThatCannotBeWrittenIsLost)
{
    const FakeSupplicant supplicant;
    const auto status_with = [&](Preparation prepare) {
        return run_against(supplicant, {"status"}, "", prepare);
    };
    EXPECT_EQ(status_with([] { close(STDOUT_FILENO); }), success(""));
    EXPECT_EQ(status_with([] { dup2(open("/dev/full", O_WRONLY), STDOUT_FILENO); }), success(""));
    const auto close_pipe = [] {
        int ends[2];
        if (pipe(ends) == 0) {
            close(ends[0]);
            dup2(ends[1], STDOUT_FILENO);
        }
    };
    EXPECT_EQ(status_with(close_pipe), (Outcome{-SIGPIPE, "", ""}));
    EXPECT_EQ(run_against(FakeSupplicant(), {"pick"}, "5\nhome2-password\n",
                          [] { close(STDOUT_FILENO); }),
              success("", both_prompts));
}

TEST(Errors, ThatCannotBeWrittenStillShowInTheExitStatus)
{
    const Preparation close_errors = [] { close(STDERR_FILENO); };
    EXPECT_EQ(run_against(FakeSupplicant(), {"nonsense"}, "", close_errors), (Outcome{1, "", ""}));
    EXPECT_EQ(run_against(FakeSupplicant(), {"pick"}, "5\nhome2-password\n", close_errors),
              picked("Connected to Home2.", ""));
}

TEST(Input, ThatIsClosedIsReported)
{
    const Preparation close_input = [] { close(STDIN_FILENO); };
    EXPECT_EQ(run_against(FakeSupplicant(), {"pick"}, "", close_input), not_picked(not_read));
    EXPECT_EQ(
        run_against(FakeSupplicant(), {"connect", "--password-stdin", "Home2"}, "", close_input),
        failure(not_read));
}
