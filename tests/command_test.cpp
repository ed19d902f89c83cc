// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

#include "support/fake_supplicant.hpp"
#include "support/program.hpp"
#include "support/replies.hpp"
#include "support/rows.hpp"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <gmock/gmock.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <future>

using testing::Each;
using testing::ElementsAre;
using testing::Field;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using namespace std::chrono_literals;

struct Case {
    std::string name;
    std::vector<std::string> arguments;
    Outcome outcome;
    Requests requests;
    std::string input;
    Script script;
};

namespace {

const std::string usage_text =
    "Usage: corvane-wifi status [--json]\n"
    "       corvane-wifi list [--json] [--cached]\n"
    "       corvane-wifi pick\n"
    "       corvane-wifi connect [--open|--password-stdin] SSID\n"
    "       corvane-wifi disconnect\n"
    "       corvane-wifi forget --yes SSID\n"
    "\n"
    "Scanning and switching saved networks do not write storage. Adding or\n"
    "forgetting a network deliberately updates the firmware Wi-Fi file once.\n";

const std::string twins_status = "State: COMPLETED\nNetwork: Twins\nAddress: 10.66.2.48\n";
const std::string twins_json =
    "{\"address\":\"10.66.2.48\",\"saved_id\":1,\"ssid\":\"Twins\",\"state\":\"COMPLETED\"}\n";
const std::string ok_json = "{\"ok\":true}\n";
const std::string number_prompt = "Network number: ";

const Outcome unknown_action = failure("Unknown action. Run corvane-wifi --help.");
const Outcome bad_connect = failure("connect requires one SSID and one security choice.");
const Outcome not_found = failure("Network was not found. Run corvane-wifi list first.");
const Outcome no_choice = failure("Use --password-stdin so the password does not enter shell "
                                  "history, or --open for an open network.");
const Outcome bad_forget = failure("Forgetting writes the saved Wi-Fi file. Use: corvane-wifi "
                                   "forget --yes SSID");
const Outcome bad_number = failure("Invalid network number.", network_table, number_prompt);
const Outcome bad_length = failure("A WPA password must contain 8 to 63 UTF-8 bytes.");
const Outcome bad_byte = failure("Wi-Fi passwords cannot contain NUL or newline characters.");
const Outcome connected = success("Connected to Home2.\n");

const Requests list_saved = {"LIST_NETWORKS", "STATUS"};
const Requests add_cafe = add_profile("43616665", "NONE") + activate_and_save;
const Requests add_and_remove_home2 = add_profile("486f6d6532", "WPA-PSK")
    + Requests{"REMOVE_NETWORK 3"};

std::vector<Answer> then_connected_to(const std::string& ssid, int id)
{
    return {reply(connected_status("Twins", 1)), reply(connected_status(ssid, id))};
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

const std::string networks_json = "["
    + json_row("02:00:00:00:0a:00", true, 2417, 1, "WPA personal", -40, "Twins") + ","
    + json_row("02:00:00:00:03:00", false, 2462, 2, "WPA personal", -50, "Mixed") + ","
    + json_row("", false, 0, 0, "unsupported", -100, "Home") + ","
    + json_row("02:00:00:00:01:00", false, 2412, -1, "open", -45, "Cafe") + ","
    + json_row("02:00:00:00:02:00", false, 2437, -1, "WPA personal", -50, "Home2") + ","
    + json_row("02:00:00:00:09:00", false, 2452, -1, "unsupported", -50, "Office") + "]\n";

Case row(const std::string& name, const std::vector<std::string>& arguments, const Outcome& outcome,
         const Requests& requests = {}, const std::string& input = {}, const Script& script = {})
{
    return {name, arguments, outcome, requests, input, script};
}

class Command : public testing::TestWithParam<Case> { };

std::vector<Case> syntax_cases()
{
    const Script idle = {{"STATUS", {reply(idle_status)}}};
    const Outcome twins = success(twins_status);
    const Outcome json = success(twins_json);
    const Requests status = {"STATUS"};
    return {
        row("NoWordsPrintTheUsage", {}, success(usage_text)),
        row("OnlyFlagsPrintTheUsage", {"--json"}, success(usage_text)),
        row("AllTheFlagsPrintTheUsage",
            {"--json", "--cached", "--password-stdin", "--open", "--yes", "--yes"},
            success(usage_text)),
        row("ShortHelpPrintsTheUsage", {"-h"}, success(usage_text)),
        row("TheHelpWordPrintsTheUsage", {"help"}, success(usage_text)),
        row("LongHelpPrintsTheUsage", {"--help"}, success(usage_text)),
        row("AFlagBeforeHelpPrintsTheUsage", {"--yes", "--help"}, success(usage_text)),
        row("HelpLooksAtTheFirstWordOnly", {"help", "status"}, success(usage_text)),
        row("HelpAfterAnActionIsAnOperand", {"status", "-h"}, twins, status),
        row("LongHelpAfterAnActionIsAnOperand", {"status", "--help"}, twins, status),
        row("StatusIgnoresExtraWords", {"status", "extra"}, twins, status),
        row("StatusIgnoresTheFlagsOfOthers", {"--cached", "status", "--yes"}, twins, status),
        row("StatusPrintsJson", {"status", "--json"}, json, status),
        row("AFlagMayComeFirst", {"--json", "status"}, json, status),
        row("AFlagMayBeRepeated", {"--json", "status", "--json", "--json"}, json, status),
        row("StatusPrintsThreeLinesWhenNotConnected", {"status"},
            success("State: DISCONNECTED\nNetwork: \nAddress: \n"), status, "", idle),
        row("StatusPrintsFourMembersWhenNotConnected", {"status", "--json"},
            success(
                "{\"address\":\"\",\"saved_id\":-1,\"ssid\":\"\",\"state\":\"DISCONNECTED\"}\n"),
            status, "", idle),
        row("StatusTakesAnErrorReplyForNoConnection", {"status"},
            success("State: \nNetwork: \nAddress: \n"), status, "",
            {{"STATUS", {reply("FAIL\n")}}}),
        row("ActionsAreCaseSensitive", {"Status"}, unknown_action),
        row("ActionsInCapitalsAreUnknown", {"LIST"}, unknown_action),
        row("AnEmptyWordIsNoAction", {""}, unknown_action),
        row("AnActionMustMatchWhole", {"status "}, unknown_action),
        row("AFlagWithAValueIsAWord", {"--json=1"}, unknown_action),
        row("AShortFlagIsAWord", {"-j"}, unknown_action),
        row("AFlagInCapitalsIsAWord", {"--JSON", "status"}, unknown_action),
        row("TwoDashesAreAWord", {"--", "status"}, unknown_action),
        row("AFlagWithAValueIsAnOperand", {"list", "--json=1"},
            failure("list takes no network name.")),
        row("TwoDashesAreAnOperand", {"connect", "--", "Home"}, bad_connect),
    };
}

std::vector<Case> list_cases()
{
    const Outcome no_scan = failure("Could not start Wi-Fi scan: FAIL");
    const Script nothing = {{"SCAN_RESULTS", {reply(scan_results(""))}},
                            {"LIST_NETWORKS", {reply(profile_list(""))}},
                            {"STATUS", {reply(idle_status)}}};
    const Script levels = {
        {"SCAN_RESULTS",
         {reply(scan_results("02:00:00:00:01:00\t2412\t-100\t[ESS]\tFaint\n"
                             "02:00:00:00:02:00\t2437\t-99\t[ESS]\tCaf\u00e9 \"\\ \u2615\n"))}},
        {"LIST_NETWORKS", {reply(profile_list(""))}},
    };
    return {
        row("ListScansAndPrintsTheTable", {"list"}, success(network_table), scan_listing),
        row("ListPrintsJson", {"list", "--json"}, success(networks_json), scan_listing),
        row("ListOfNothingPrintsNothing", {"list"}, success(""), scan_listing, "", nothing),
        row("ListOfNothingIsAnEmptyArray", {"list", "--json"}, success("[]\n"), scan_listing, "",
            nothing),
        row("ListCachedDoesNotScan", {"list", "--cached"}, success(network_table), listing),
        row("CachedMayComeFirst", {"--cached", "list"}, success(network_table), listing),
        row("ListTakesNoName", {"list", "Home"}, failure("list takes no network name.")),
        row("ABusyScanIsAsGoodAsANewOne", {"list"}, success(network_table), scan_listing, "",
            {{"SCAN", {reply("FAIL-BUSY\n")}}}),
        row("ARefusedScanEndsTheListing", {"list", "--json"}, no_scan, {"SCAN"}, "",
            {{"SCAN", {reply("FAIL\n")}}}),
        row("ARefusedScanEndsThePicking", {"pick"}, no_scan, {"SCAN"}, "",
            {{"SCAN", {reply("FAIL\n")}}}),
        row("TheTableTellsALevelFromNone", {"list"},
            success("1.   Caf\u00e9 \"\\ \u2615  [open, -99 dBm]\n2.   Faint  [open, saved]\n"),
            scan_listing, "", levels),
        row("JsonEscapesNoMoreThanItMust", {"list", "--json"},
            success("["
                    + json_row("02:00:00:00:02:00", false, 2437, -1, "open", -99,
                               "Caf\u00e9 \\\"\\\\ \u2615")
                    + "," + json_row("02:00:00:00:01:00", false, 2412, -1, "open", -100, "Faint")
                    + "]\n"),
            scan_listing, "", levels),
    };
}

std::vector<Case> connect_cases()
{
    const Requests select_home = listing + Requests{"SELECT_NETWORK 0", "STATUS"};
    const Requests select_twins = listing + Requests{"SELECT_NETWORK 1", "STATUS"};
    const Script to_home = {{"STATUS", then_connected_to("Home", 0)}};
    const Script to_cafe = {{"STATUS", then_connected_to("Cafe", 3)}};
    const Script to_office = {{"STATUS", then_connected_to("Office", 3)}};
    const Script refused = {{"SELECT_NETWORK", {reply("FAIL\n")}}};
    const Outcome not_created = failure("wpa_supplicant did not create a network profile.");
    const Outcome timed_out = failure("Timed out connecting to Home2.");
    const Outcome home = success("Connected to Home.\n");
    const std::string letters(63, 'x');
    const std::vector<std::string> home2 = {"connect", "--password-stdin", "Home2"};
    const Requests join = listing + join_home2("\"home2-password\"");
    const Requests drop_unready = Requests(join.begin(), join.end() - 1)
        + Requests{"REMOVE_NETWORK 3"};
    const auto answered = [](const std::string& words, const std::string& text) {
        return Script{{words, {reply(text)}}};
    };
    return {
        row("ConnectNeedsAName", {"connect"}, bad_connect),
        row("ConnectTakesOneNameOnly", {"connect", "Home", "Office"}, bad_connect),
        row("ConnectTakesOneChoiceOnly", {"connect", "--open", "--password-stdin", "Home"},
            bad_connect),
        row("ASavedNetworkNeedsNoFlag", {"connect", "Home"}, home, select_home, "", to_home),
        row("ConnectPrintsJson", {"connect", "Home", "--json"}, success(ok_json), select_home, "",
            to_home),
        row("OpenIsIgnoredForASavedNetwork", {"connect", "--open", "Home"}, home, select_home, "",
            to_home),
        row("TheCurrentNetworkIsSelectedAgain", {"connect", "Twins"},
            success("Connected to Twins.\n"), select_twins, "",
            {{"STATUS", {reply(connected_status("Twins", 1))}}}),
        row("ARefusedSelectionIsReported", {"connect", "Home"},
            failure("Could not select saved Wi-Fi network: FAIL"),
            listing + Requests{"SELECT_NETWORK 0"}, "", refused),
        row("ASavedNetworkThatDoesNotComeUpStaysSelected", {"connect", "Home"},
            failure("Timed out connecting to Home."), select_home, "",
            {{"STATUS", {reply(connected_status("Twins", 1))}}}),
        row("AnUnsavedNetworkNeedsAChoice", {"connect", "Cafe"}, no_choice, listing),
        row("NamesAreCaseSensitive", {"connect", "home"}, not_found, listing),
        row("NamesAreNotTrimmed", {"connect", "Home "}, not_found, listing),
        row("AnEmptyNameIsNotFound", {"connect", "--open", ""}, not_found, listing),
        row("AnOpenNetworkIsAdded", {"connect", "--open", "Cafe"}, success("Connected to Cafe.\n"),
            listing + add_cafe, "a password that nobody asked for\n", to_cafe),
        row("ThePasswordIsReadWithoutAPrompt", home2, connected, join, "home2-password\n"),
        row("JsonStandsForTheSentence", {"--json", "connect", "--password-stdin", "Home2"},
            success(ok_json), join, "home2-password\n"),
        row("TheFlagDecidesOnTheSecurity", {"connect", "--password-stdin", "Office"},
            success("Connected to Office.\n"),
            listing + add_profile("4f6666696365", "WPA-PSK")
                + Requests{"SET_NETWORK 3 psk \"home2-password\""} + activate_and_save,
            "home2-password\n", to_office),
        row("OnlyTheFirstLineIsThePassword", home2, connected, join, "home2-password\nmore\n"),
        row("TheLastLineNeedsNoEnd", home2, connected, join, "home2-password"),
        row("BlanksBelongToThePassword", home2, connected,
            listing + join_home2("\" pass \tword \""), " pass \tword \n"),
        row("QuotesAndBackslashesAreEscaped", home2, connected,
            listing + join_home2(R"("pa\"s\\w%1%2")"), "pa\"s\\w%1%2\n"),
        row("FourTwoByteLettersAreAPassword", home2, connected,
            listing + join_home2("\"\u00e4\u00f6\u00fc\u00df\""), "\u00e4\u00f6\u00fc\u00df\n"),
        row("SixtyThreeBytesAreAPassword", home2, connected,
            listing + join_home2('"' + letters + '"'), letters + "\n"),
        row("SixtyFourBytesAreNoPassword", home2, bad_length, listing, letters + "x\n"),
        row("SevenBytesAreNoPassword", home2, bad_length, listing, "1234567\n"),
        row("AnEmptyLineIsAnEmptyPassword", home2, bad_length, listing, "\n"),
        row("NoInputIsReported", home2, failure("Could not read input."), listing),
        row("ANulReachesTheCheckThatRefusesIt", home2, bad_byte, listing + add_and_remove_home2,
            std::string("pass\0word\n", 10)),
        row("ALeadingNulDoesNotEndThePassword", home2, bad_byte, listing + add_and_remove_home2,
            std::string("\0password\n", 10)),
        row("ACarriageReturnStaysInThePassword", home2, bad_byte, listing + add_and_remove_home2,
            "home2-password\r\n"),
        row("ARefusedProfileIsReported", home2, not_created, listing + Requests{"ADD_NETWORK"},
            "home2-password\n", answered("ADD_NETWORK", "FAIL\n")),
        row("AnEmptyProfileNumberIsReported", home2, not_created, listing + Requests{"ADD_NETWORK"},
            "home2-password\n", answered("ADD_NETWORK", "\n")),
        row("ANegativeProfileNumberIsReported", home2, not_created,
            listing + Requests{"ADD_NETWORK"}, "home2-password\n", answered("ADD_NETWORK", "-1\n")),
        row("ANetworkThatDoesNotComeUpIsRemoved", home2, timed_out, drop_unready,
            "home2-password\n", answered("STATUS", idle_status)),
        row("ARefusedRemovalChangesNoMessage", home2, timed_out, drop_unready, "home2-password\n",
            {{"STATUS", {reply(idle_status)}}, {"REMOVE_NETWORK", {reply("FAIL\n")}}}),
        row("AnImpossibleRemovalChangesNoMessage", home2,
            failure("Could not set Wi-Fi network name: FAIL"),
            listing + Requests{"ADD_NETWORK", "SET_NETWORK 3 ssid 486f6d6532"}, "home2-password\n",
            {{"SET_NETWORK", {last_reply("FAIL\n")}}}),
    };
}

std::vector<Case> pick_cases()
{
    const Outcome already = success(network_table + "Already connected.\n", number_prompt);
    const std::string both = number_prompt + "Wi-Fi password: ";
    const Outcome unsupported = failure("That network uses an unsupported security mode.",
                                        network_table, number_prompt);
    return {
        row("PickTakesNoArguments", {"pick", "1"}, failure("pick takes no arguments.")),
        row("PickOneIsTheFirstLine", {"pick"}, already, scan_listing, "1\n"),
        row("PickPrintsTheTableInJsonModeToo", {"--json", "pick"}, already, scan_listing, "1\n"),
        row("PickScansInCachedModeToo", {"pick", "--cached"}, already, scan_listing, "1"),
        row("PickZeroIsNoNumber", {"pick"}, bad_number, scan_listing, "0\n"),
        row("PickANegativeIsNoNumber", {"pick"}, bad_number, scan_listing, "-1\n"),
        row("PickAWordIsNoNumber", {"pick"}, bad_number, scan_listing, "abc\n"),
        row("PickWithMoreBehindIsNoNumber", {"pick"}, bad_number, scan_listing, "1x\n"),
        row("PickAHexadecimalIsNoNumber", {"pick"}, bad_number, scan_listing, "0x1\n"),
        row("PickAnEmptyLineIsNoNumber", {"pick"}, bad_number, scan_listing, "\n"),
        row("PickOneTooManyIsNoNumber", {"pick"}, bad_number, scan_listing, "7\n"),
        row("PickFarTooManyIsNoNumber", {"pick"}, bad_number, scan_listing, "4294967297\n"),
        row("PickFromNothingHasNoNumber", {"pick"},
            failure("Invalid network number.", "", number_prompt), scan_listing, "1\n",
            {{"SCAN_RESULTS", {reply(scan_results(""))}},
             {"LIST_NETWORKS", {reply(profile_list(""))}}}),
        row("PickWithoutInputIsReported", {"pick"},
            failure("Could not read input.", network_table, number_prompt), scan_listing),
        row("PickASavedNetworkSelectsIt", {"pick"},
            success(network_table + "Connected to Mixed.\n", number_prompt),
            scan_listing + Requests{"SELECT_NETWORK 2", "STATUS"}, "2\n",
            {{"STATUS", then_connected_to("Mixed", 2)}}),
        row("PickASavedNetworkOutOfRangeSelectsIt", {"pick"},
            success(network_table + "Connected to Home.\n", number_prompt),
            scan_listing + Requests{"SELECT_NETWORK 0", "STATUS"}, "3\n",
            {{"STATUS", then_connected_to("Home", 0)}}),
        row("PickAnOpenNetworkAsksForNoPassword", {"pick"},
            success(network_table + "Connected to Cafe.\n", number_prompt), scan_listing + add_cafe,
            "4\n", {{"STATUS", then_connected_to("Cafe", 3)}}),
        row("PickReadsTwoAnswersFromOnePipe", {"pick", "--json"},
            success(network_table + "Connected to Home2.\n", both),
            scan_listing + join_home2("\"home2-password\""), "5\nhome2-password\nmore\n"),
        row("PickTakesAPasswordWithoutALineEnd", {"pick"},
            success(network_table + "Connected to Home2.\n", both),
            scan_listing + join_home2("\"home2-password\""), "5\nhome2-password"),
        row("PickRefusesANulInThePassword", {"pick"},
            failure("Wi-Fi passwords cannot contain NUL or newline characters.", network_table,
                    both),
            scan_listing + add_and_remove_home2, std::string("5\npass\0word\n", 12)),
        row("PickRefusesACarriageReturnInThePassword", {"pick"},
            failure("Wi-Fi passwords cannot contain NUL or newline characters.", network_table,
                    both),
            scan_listing + add_and_remove_home2, "5\nhome2-password\r\n"),
        row("PickChecksTheLengthOfThePassword", {"pick"},
            failure("A WPA password must contain 8 to 63 UTF-8 bytes.", network_table, both),
            scan_listing, "5\nshort\n"),
        row("PickWithoutAPasswordIsReported", {"pick"},
            failure("Could not read input.", network_table, both), scan_listing, "5\n"),
        row("PickAnUnsupportedNetworkAsksForNoPassword", {"pick"}, unsupported, scan_listing,
            "6\n"),
    };
}

std::vector<Case> disconnect_and_forget_cases()
{
    const Requests forget_home = list_saved + Requests{"REMOVE_NETWORK 0", "SAVE_CONFIG"};
    const Script twins = {
        {"LIST_NETWORKS",
         {reply(profile_list(
             "0\tTwins\t02:00:00:00:0b:00\t[DISABLED]\n3\tTwins\tany\t[DISABLED]\n"))}}};
    return {
        row("DisconnectDisconnects", {"disconnect"}, success("Wi-Fi disconnected.\n"),
            {"DISCONNECT"}),
        row("DisconnectPrintsJson", {"disconnect", "--json"}, success(ok_json), {"DISCONNECT"}),
        row("DisconnectIgnoresTheFlagsOfOthers", {"--yes", "disconnect", "--open"},
            success("Wi-Fi disconnected.\n"), {"DISCONNECT"}),
        row("DisconnectTakesNoArguments", {"disconnect", "now"},
            failure("disconnect takes no arguments.")),
        row("ARefusedDisconnectionPrintsNoJson", {"disconnect", "--json"},
            failure("Could not disconnect Wi-Fi: FAIL"), {"DISCONNECT"}, "",
            {{"DISCONNECT", {reply("FAIL\n")}}}),
        row("OnlyTheWholeWordIsOk", {"disconnect"}, failure("Could not disconnect Wi-Fi: OK "),
            {"DISCONNECT"}, "", {{"DISCONNECT", {reply("OK \r\n\n")}}}),
        row("ForgetNeedsYes", {"forget", "Home"}, bad_forget),
        row("ForgetNeedsAName", {"forget", "--yes"}, bad_forget),
        row("ForgetTakesOneNameOnly", {"forget", "--yes", "Home", "Office"}, bad_forget),
        row("ForgetForgets", {"--yes", "forget", "Home"}, success("Forgot Home.\n"), forget_home),
        row("YesMayComeLast", {"forget", "Home", "--yes"}, success("Forgot Home.\n"), forget_home),
        row("ForgetPrintsJson", {"forget", "--json", "--yes", "Home"}, success(ok_json),
            forget_home),
        row("ForgetOfSeveralTakesTheLast", {"forget", "--yes", "Twins"}, success("Forgot Twins.\n"),
            list_saved + Requests{"REMOVE_NETWORK 3", "SAVE_CONFIG"}, "", twins),
        row("ForgetTakesBlanksAsTheyAre", {"forget", "--yes", " padded  name "},
            success("Forgot  padded  name .\n"),
            list_saved + Requests{"REMOVE_NETWORK 4", "SAVE_CONFIG"}, "",
            {{"LIST_NETWORKS", {reply(profile_list("4\t padded  name \tany\t[DISABLED]\n"))}}}),
        row("ForgetIsCaseSensitive", {"forget", "--yes", "home"},
            failure("home is not a saved network."), list_saved),
        row("ForgetLooksAtSavedNetworksOnly", {"forget", "--json", "--yes", "Cafe"},
            failure("Cafe is not a saved network."), list_saved),
        row("ForgetDoesNotExpandTheName", {"forget", "--yes", "%1 %2"},
            failure("%1 %2 is not a saved network."), list_saved),
        row("ARefusedRemovalIsNotSaved", {"forget", "--yes", "Home"},
            failure("Could not remove Wi-Fi network: FAIL"),
            list_saved + Requests{"REMOVE_NETWORK 0"}, "", {{"REMOVE_NETWORK", {reply("FAIL\n")}}}),
        row("ARefusedSaveIsReported", {"forget", "--yes", "Home"},
            failure("Could not save removed Wi-Fi network: FAIL"), forget_home, "",
            {{"SAVE_CONFIG", {reply("FAIL\n")}}}),
    };
}

} // namespace

TEST_P(Command, EndsAsItShould)
{
    FakeSupplicant supplicant(GetParam().script);
    EXPECT_EQ(run(GetParam().arguments, environment_for(supplicant.path()), GetParam().input),
              GetParam().outcome);
    EXPECT_EQ(supplicant.requests(), GetParam().requests);
}

INSTANTIATE_TEST_SUITE_P(Syntax, Command, testing::ValuesIn(syntax_cases()), by_name);
INSTANTIATE_TEST_SUITE_P(Listing, Command, testing::ValuesIn(list_cases()), by_name);
INSTANTIATE_TEST_SUITE_P(Connecting, Command, testing::ValuesIn(connect_cases()), by_name);
INSTANTIATE_TEST_SUITE_P(Picking, Command, testing::ValuesIn(pick_cases()), by_name);
INSTANTIATE_TEST_SUITE_P(Leaving, Command, testing::ValuesIn(disconnect_and_forget_cases()),
                         by_name);

TEST(Usage, HasItsSize)
{
    EXPECT_EQ(usage_text.size(), 377U);
}

TEST(Json, CanBeParsed)
{
    FakeSupplicant supplicant;
    const auto parsed = [&](const std::vector<std::string>& arguments) {
        const Outcome outcome = run(arguments, environment_for(supplicant.path()));
        return QJsonDocument::fromJson(QByteArray::fromStdString(outcome.out));
    };
    const QJsonObject status = parsed({"status", "--json"}).object();
    EXPECT_EQ(status.size(), 4);
    EXPECT_TRUE(status.value(u"saved_id").isDouble());
    EXPECT_EQ(status.value(u"ssid").toString(), QStringLiteral("Twins"));
    const QJsonArray list = parsed({"list", "--json"}).array();
    ASSERT_EQ(list.size(), 6);
    for (const QJsonValue& row : list)
        EXPECT_EQ(row.toObject().size(), 9);
    EXPECT_EQ(list[3].toObject().value(u"supported"), QJsonValue(true));
    EXPECT_EQ(list[2].toObject().value(u"signal"), QJsonValue(-100));
    EXPECT_TRUE(parsed({"disconnect", "--json"}).object().value(u"ok").toBool());
}

TEST(Joining, StopsAtTheFirstRefusalAndRemovesTheProfile)
{
    const Requests requests = join_home2("\"home2-password\"");
    const std::map<size_t, std::string> operations = {
        {1, "set Wi-Fi network name"}, {2, "set WPA security"},     {3, "set WPA password"},
        {4, "enable Wi-Fi network"},   {5, "select Wi-Fi network"}, {7, "save Wi-Fi network"},
    };
    for (const auto& [step, operation] : operations) {
        FakeSupplicant supplicant({{requests[step], {reply("FAIL %1 %2\n")}}});
        EXPECT_EQ(run({"connect", "--json", "--password-stdin", "Home2"},
                      environment_for(supplicant.path()), "home2-password\n"),
                  failure("Could not " + operation + ": FAIL %1 %2"));
        const auto end = requests.begin() + static_cast<std::ptrdiff_t>(step) + 1;
        EXPECT_EQ(supplicant.requests(),
                  listing + Requests(requests.begin(), end) + Requests{"REMOVE_NETWORK 3"});
    }
    FakeSupplicant supplicant({{"SET_NETWORK 3 key_mgmt", {reply("FAIL\n")}}});
    EXPECT_EQ(run({"connect", "--open", "Cafe"}, environment_for(supplicant.path())),
              failure("Could not set open-network security: FAIL"));
}

TEST(Joining, WaitsForNothingWhereTheBudgetIsZero)
{
    FakeSupplicant supplicant;
    EXPECT_EQ(run({"connect", "--open", "Cafe"},
                  environment_for(supplicant.path(), {{"CORVANE_WIFI_CONNECT_TIMEOUT_MS", "0"}})),
              success("Connected to Cafe.\n"));
    EXPECT_EQ(supplicant.requests(),
              (listing + add_profile("43616665", "NONE")
               + Requests{"ENABLE_NETWORK 3", "SELECT_NETWORK 3", "SAVE_CONFIG"}));
}

TEST(Joining, LeavesStandardInputAloneForASavedNetwork)
{
    FakeSupplicant supplicant({{"STATUS", then_connected_to("Home", 0)}});
    static int input[2];
    ASSERT_EQ(pipe(input), 0);
    ASSERT_EQ(write(input[1], "not-for-us\n", 11), 11);
    EXPECT_EQ(run({"connect", "--password-stdin", "Home"}, environment_for(supplicant.path()), "",
                  [] { dup2(input[0], STDIN_FILENO); }),
              success("Connected to Home.\n"));
    char left[16];
    close(input[1]);
    EXPECT_EQ(read(input[0], left, sizeof(left)), 11);
    close(input[0]);
}

TEST(Names, AreNeverTakenForPlaceholders)
{
    const std::string name = "%1 100%2 %%L1";
    const Script script = {{"LIST_NETWORKS", {reply(profile_list("4\t" + name + "\tany\t\n"))}},
                           {"SCAN_RESULTS", {reply(scan_results(""))}}};
    const std::vector<std::string> connect = {"connect", name};
    FakeSupplicant away(script);
    EXPECT_EQ(run(connect, environment_for(away.path())),
              failure("Timed out connecting to " + name + "."));
    FakeSupplicant near(script);
    near.on("STATUS", then_connected_to(name, 4));
    EXPECT_EQ(
        run({"pick"}, environment_for(near.path()), "1\n"),
        success("1.   " + name + "  [unsupported, saved, saved]\nConnected to " + name + ".\n",
                number_prompt));
}

TEST(Names, AreShownAsTheSupplicantPrintsThem)
{
    const std::string escaped = R"(Caf\xc3\xa9 du Nord \xe2\x98\x95)";
    FakeSupplicant supplicant(
        {{"LIST_NETWORKS", {reply(profile_list("7\t" + escaped + "\tany\t\n"))}}});
    EXPECT_EQ(run({"forget", "--yes", escaped}, environment_for(supplicant.path())),
              success("Forgot " + escaped + ".\n"));
    EXPECT_EQ(supplicant.requests(), list_saved + Requests({"REMOVE_NETWORK 7", "SAVE_CONFIG"}));
}

TEST(Replies, OfAnyKindAndToAnyRequestCrashNothing)
{
    const std::map<std::string, std::string> garbage = {
        {"", ""},
        {"\r\n\n\r", ""},
        {std::string(65537, 'x'), std::string(65536, 'x')},
        {std::string("OK\0OK", 5), "OK"},
        {"\xff\xfe OK", "\xef\xbf\xbd\xef\xbf\xbd OK"},
        {"\t\t\t\t\t\n\t\t\n=\nid=x\n==", "\t\t\t\t\t\n\t\t\n=\nid=x\n=="},
    };
    const std::string nowhere = "Timed out connecting to Home2.";
    const std::map<std::string, std::string> confirmed = {
        {"SET_NETWORK", "set Wi-Fi network name"},
        {"ENABLE_NETWORK", "enable Wi-Fi network"},
        {"SELECT_NETWORK", "select Wi-Fi network"},
        {"SAVE_CONFIG", "save Wi-Fi network"},
    };
    for (const auto& [bytes, shown] : garbage) {
        const auto ends = [&bytes = bytes](const std::vector<std::string>& arguments,
                                           const std::string& request) {
            FakeSupplicant supplicant({{request, {reply(bytes)}}});
            return run(arguments, environment_for(supplicant.path()), "home2-password\n");
        };
        const std::vector<std::string> connect = {"connect", "--password-stdin", "Home2"};
        const std::vector<std::string> forget = {"forget", "--yes", "Home"};
        for (const auto& [request, operation] : confirmed)
            EXPECT_EQ(ends(connect, request), failure("Could not " + operation + ": " + shown));
        EXPECT_EQ(ends(connect, "SCAN_RESULTS"), not_found);
        EXPECT_EQ(ends(connect, "LIST_NETWORKS"), connected);
        EXPECT_EQ(ends(connect, "ADD_NETWORK"),
                  failure("wpa_supplicant did not create a network profile."));
        EXPECT_EQ(ends(connect, "STATUS"), failure(nowhere));
        EXPECT_EQ(ends(forget, "LIST_NETWORKS"), failure("Home is not a saved network."));
        EXPECT_EQ(ends(forget, "STATUS"), success("Forgot Home.\n"));
        EXPECT_EQ(ends(forget, "REMOVE_NETWORK"),
                  failure("Could not remove Wi-Fi network: " + shown));
        EXPECT_EQ(ends({"list"}, "SCAN"), failure("Could not start Wi-Fi scan: " + shown));
        EXPECT_EQ(ends({"status"}, "STATUS"), success("State: \nNetwork: \nAddress: \n"));
        EXPECT_EQ(ends({"disconnect"}, "DISCONNECT"),
                  failure("Could not disconnect Wi-Fi: " + shown));
    }
}

TEST(Locale, ChangesNeitherOutputNorNames)
{
    const std::string name = "Caf\u00e9 \u2615";
    for (Environment environment : {
             Environment{},
             Environment{{"LC_ALL", "C"}},
             Environment{{"LC_ALL", "POSIX"}},
             Environment{{"LANG", "C"}},
             Environment{{"LC_ALL", "C.UTF-8"}},
             Environment{{"LC_ALL", "xx_XX.ISO-8859-1"}},
             Environment{{"LANG", "de_DE.UTF-8"}, {"LC_CTYPE", "nonsense"}},
         }) {
        FakeSupplicant supplicant(
            {{"LIST_NETWORKS", {reply(profile_list("4\t" + name + "\tany\t\n"))}},
             {"SCAN_RESULTS",
              {reply(scan_results("02:00:00:00:01:00\t2412\t-45\t[ESS]\t" + name + "!\n"))}},
             {"STATUS", then_connected_to(name + "!", 3)}});
        const std::string socket = supplicant.folder() + "/" + name;
        std::filesystem::create_symlink(supplicant.path(), socket);
        environment.emplace("CORVANE_WPA_SOCKET", socket);
        EXPECT_EQ(run({"forget", "--yes", name}, environment), success("Forgot " + name + ".\n"));
        EXPECT_EQ(run({"forget", "--yes", name + "?"}, environment),
                  failure(name + "? is not a saved network."));
        supplicant.on("STATUS", then_connected_to(name + "!", 3));
        EXPECT_EQ(run({"connect", "--open", name + "!"}, environment),
                  success("Connected to " + name + "!.\n"));
        EXPECT_EQ(supplicant.requests(),
                  (list_saved + Requests{"REMOVE_NETWORK 4", "SAVE_CONFIG"} + list_saved + listing
                   + add_profile("436166c3a920e2989521", "NONE") + activate_and_save));
        environment["CORVANE_WPA_SOCKET"] = socket + "/nothing";
        EXPECT_EQ(run({"status"}, environment),
                  failure("Could not connect to wpa_supplicant: Not a directory"));
    }
}

TEST(Socket, MustBeThere)
{
    const TemporaryFolder folder;
    const std::string path = folder.path() + "/wlan0";
    const auto outcome = [](const std::string& text) {
        return failure("Could not connect to wpa_supplicant: " + text);
    };
    EXPECT_EQ(run({"status"}, environment_for(path)), outcome("No such file or directory"));
    std::ofstream file(path);
    EXPECT_EQ(run({"list"}, environment_for(path)), outcome("Connection refused"));
    EXPECT_EQ(run({"status"}, environment_for("")), outcome("Connection refused"));
}

TEST(Socket, PathHasAtMost107Bytes)
{
    FakeSupplicant supplicant;
    std::string path = supplicant.folder() + "/\u00e9";
    path.resize(107, 'x');
    std::filesystem::create_symlink(supplicant.path(), path);
    EXPECT_EQ(run({"status"}, environment_for(path)), success(twins_status));
    std::filesystem::create_symlink(supplicant.path(), path + "x");
    EXPECT_EQ(run({"status"}, environment_for(path + "x")),
              failure("Wi-Fi control socket path is too long."));
}

TEST(Socket, OfTheProgramIsNumberedAndPrivate)
{
    const std::vector<Preparation> masks = {[] { umask(0); }, [] { umask(0777); }};
    for (const Preparation mask : masks) {
        FakeSupplicant supplicant;
        Terminal terminal({"list"}, environment_for(supplicant.path()), mask);
        const std::string prefix = "/tmp/corvane-wpa-" + std::to_string(terminal.pid()) + "-";
        EXPECT_EQ(terminal.finish(), success(on_screen(network_table)));
        EXPECT_THAT(supplicant.records(),
                    ElementsAre(Field(&Request::sender, prefix + "0"),
                                Field(&Request::sender, prefix + "1"),
                                Field(&Request::sender, prefix + "2"),
                                Field(&Request::sender, prefix + "3")));
        EXPECT_THAT(supplicant.records(), Each(Field(&Request::sender_mode, 0600)));
    }
}

TEST(Socket, OfAnEarlierProcessIsReplaced)
{
    FakeSupplicant supplicant;
    const auto leave_one = [] {
        char path[64];
        std::snprintf(path, sizeof(path), "/tmp/corvane-wpa-%d-0", static_cast<int>(getpid()));
        close(open(path, O_CREAT | O_WRONLY, 0600));
    };
    EXPECT_EQ(run({"status"}, environment_for(supplicant.path()), "", leave_one),
              success(twins_status));
}

TEST(Silence, EndsTheProgramAfterThreeSeconds)
{
    FakeSupplicant supplicant({{"STATUS", {silence()}}});
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(run({"status"}, environment_for(supplicant.path())),
              failure("Timed out waiting for wpa_supplicant."));
    const auto elapsed = std::chrono::steady_clock::now() - start;
    EXPECT_TRUE(elapsed >= 3s && elapsed < 20s) << elapsed / 1ms;
}

TEST(Connecting, IsGivenUpAfterFifteenSeconds)
{
    const std::string asked = number_prompt + "Wi-Fi password: ";
    struct Attempt {
        std::vector<std::string> arguments;
        std::string input;
        Outcome outcome;
    };
    const auto given_up = [](const Attempt& attempt) {
        FakeSupplicant supplicant({{"STATUS", {reply(connected_status("Twins", 1))}}});
        Environment environment = environment_for(supplicant.path());
        environment.erase("CORVANE_WIFI_CONNECT_TIMEOUT_MS");
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(run(attempt.arguments, environment, attempt.input), attempt.outcome);
        const auto elapsed = std::chrono::steady_clock::now() - start;
        EXPECT_TRUE(elapsed >= 15s && elapsed < 60s) << elapsed / 1ms;
    };
    std::vector<std::future<void>> running;
    for (const Attempt& attempt : {
             Attempt{{"connect", "Home"}, "", failure("Timed out connecting to Home.")},
             Attempt{{"connect", "--open", "Cafe"}, "", failure("Timed out connecting to Cafe.")},
             Attempt{{"connect", "--password-stdin", "Home2"},
                     "home2-password\n",
                     failure("Timed out connecting to Home2.")},
             Attempt{{"pick"},
                     "3\n",
                     failure("Timed out connecting to Home.", network_table, number_prompt)},
             Attempt{{"pick"},
                     "5\nhome2-password\n",
                     failure("Timed out connecting to Home2.", network_table, asked)},
         })
        running.push_back(std::async(std::launch::async, given_up, attempt));
    for (std::future<void>& attempt : running)
        attempt.get();
}

TEST(Output, ComesInTheOrderOfTheConversation)
{
    const auto on_one_pipe = [](const std::string& input) {
        FakeSupplicant supplicant;
        return run({"pick"}, environment_for(supplicant.path()), input,
                   [] { dup2(STDOUT_FILENO, STDERR_FILENO); });
    };
    EXPECT_EQ(on_one_pipe("5\nhome2-password\n"),
              success(network_table + number_prompt + "Wi-Fi password: Connected to Home2.\n"));
    EXPECT_EQ(on_one_pipe("none\n"),
              (Outcome{1, network_table + number_prompt + "corvane-wifi: Invalid network number.\n",
                       ""}));
}

TEST(Output, ThatCannotBeWrittenIsLost)
{
    FakeSupplicant supplicant;
    EXPECT_EQ(run({"status"}, environment_for(supplicant.path()), "", [] { close(STDOUT_FILENO); }),
              success(""));
    EXPECT_EQ(run({"status"}, environment_for(supplicant.path()), "",
                  [] { dup2(open("/dev/full", O_WRONLY), STDOUT_FILENO); }),
              success(""));
    const auto close_pipe = [] {
        int ends[2];
        if (pipe(ends) == 0) {
            close(ends[0]);
            dup2(ends[1], STDOUT_FILENO);
        }
    };
    EXPECT_EQ(run({"status"}, environment_for(supplicant.path()), "", close_pipe),
              (Outcome{-SIGPIPE, "", ""}));
}

TEST(Output, ThatCannotBeWrittenDoesNotKeepThePickFromEnding)
{
    FakeSupplicant supplicant;
    EXPECT_EQ(run({"pick"}, environment_for(supplicant.path()), "5\nhome2-password\n",
                  [] { close(STDOUT_FILENO); }),
              success("", number_prompt + "Wi-Fi password: "));
}

TEST(Errors, ThatCannotBeWrittenStillShowInTheExitStatus)
{
    FakeSupplicant supplicant;
    EXPECT_EQ(
        run({"nonsense"}, environment_for(supplicant.path()), "", [] { close(STDERR_FILENO); }),
        (Outcome{1, "", ""}));
    EXPECT_EQ(run({"pick"}, environment_for(supplicant.path()), "5\nhome2-password\n",
                  [] { close(STDERR_FILENO); }),
              success(network_table + "Connected to Home2.\n"));
}

TEST(Input, ThatIsClosedIsReported)
{
    FakeSupplicant supplicant;
    EXPECT_EQ(run({"pick"}, environment_for(supplicant.path()), "", [] { close(STDIN_FILENO); }),
              failure("Could not read input.", network_table, number_prompt));
    EXPECT_EQ(run({"connect", "--password-stdin", "Home2"}, environment_for(supplicant.path()), "",
                  [] { close(STDIN_FILENO); }),
              failure("Could not read input."));
}

TEST(Password, IsSeenByTheSupplicantAlone)
{
    const std::string password = "home2-password";
    FakeSupplicant supplicant({{"SELECT_NETWORK", {silence()}}});
    const Environment environment = environment_for(supplicant.path());
    auto ended = std::async(std::launch::async, [&] {
        return run({"connect", "--password-stdin", "Home2"}, environment, password + "\n");
    });
    ASSERT_TRUE(supplicant.wait_for_request("SELECT_NETWORK 3"));
    const std::string sender = supplicant.records().back().sender;
    const pid_t pid = std::stoi(sender.substr(sender.find("wpa-") + 4));
    EXPECT_THAT(process_file(pid, "cmdline"), HasSubstr("--password-stdin"));
    EXPECT_THAT(process_file(pid, "cmdline"), Not(HasSubstr(password)));
    EXPECT_THAT(process_file(pid, "environ"), HasSubstr("CORVANE_WPA_SOCKET"));
    EXPECT_THAT(process_file(pid, "environ"), Not(HasSubstr(password)));
    EXPECT_EQ(ended.get(), failure("Timed out waiting for wpa_supplicant."));
}

TEST(Password, IsNotShownWhereItIsRefused)
{
    const std::string refused = "home2-password\r\n";
    FakeSupplicant supplicant({{"SET_NETWORK 3 psk", {reply("FAIL\n")}}});
    for (const std::string& input : {refused, std::string("home2-password\n")}) {
        const Outcome outcome = run({"connect", "--password-stdin", "Home2"},
                                    environment_for(supplicant.path()), input);
        EXPECT_EQ(outcome.status, 1);
        EXPECT_THAT(outcome.out + outcome.err, Not(HasSubstr("home2-password")));
    }
}
