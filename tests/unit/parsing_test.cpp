// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

// Proves how the library parses replies and encodes names and passwords, without a socket.

#include "support/describe.hpp"
#include "support/replies.hpp"
#include "support/rows.hpp"

#include <gmock/gmock.h>

using namespace Qt::StringLiterals;
using cvn::wifi::Client;
using cvn::wifi::Network;
using cvn::wifi::Security;
using cvn::wifi::Status;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using Lines = std::vector<std::string>;

std::vector<Network> parse(const std::string& scan, const std::string& saved = {},
                           const Status& status = {})
{
    return Client::parse_networks(QByteArray::fromStdString(scan), QByteArray::fromStdString(saved),
                                  status);
}

Lines names(const std::vector<Network>& networks)
{
    Lines result;
    for (const Network& network : networks)
        result.push_back(network.ssid.toStdString());
    return result;
}

const std::string profile_0 = "0\tHome\tany\t\n";
const std::string profile_3 = "3\tHome\tany\t\n";

std::string row(const std::string& bssid, int signal, const std::string& ssid)
{
    return bssid + "\t2412\t" + std::to_string(signal) + "\t[ESS]\t" + ssid + '\n';
}

} // namespace

TEST(Records, StartEmpty)
{
    EXPECT_EQ(describe(Status{}), "|||-1");
    EXPECT_EQ(describe(Network{}), "||0|-100|-1|unsupported|");
}

TEST(Records, NumberAndNameTheSecurityClasses)
{
    EXPECT_EQ(Client::security_name(Security{0}), u"open"_s);
    EXPECT_EQ(Client::security_name(Security{1}), u"WPA personal"_s);
    EXPECT_EQ(Client::security_name(Security{2}), u"unsupported"_s);
    EXPECT_EQ(Client::security_name(Security{7}), u"unsupported"_s);
    EXPECT_EQ(Security::Unsupported, Security{2});
}

struct Parsed {
    std::string name;
    QByteArray input;
    std::string expected;
};

class StatusReply : public testing::TestWithParam<Parsed> { };

TEST_P(StatusReply, IsParsed)
{
    EXPECT_EQ(describe(Client::parse_status(GetParam().input)), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    , StatusReply,
    testing::Values(
        Parsed{"Connected", QByteArray::fromStdString(home_status), "COMPLETED|Home|10.66.2.48|0"},
        Parsed{"Idle", QByteArray::fromStdString(idle_status), "DISCONNECTED|||-1"},
        Parsed{"Empty", "", "|||-1"}, Parsed{"Refused", "FAIL", "|||-1"},
        Parsed{"OnlyLineFeeds", "\n\n\n", "|||-1"},
        Parsed{"LineWithoutEqualsSign", "ssid\nwpa_state=SCANNING\nid", "SCANNING|||-1"},
        Parsed{"EqualsSignInTheValue", "ssid=a=b", "|a=b||-1"},
        Parsed{"EmptyValue", "ssid=Home\nssid=", "|||-1"}, Parsed{"EmptyName", "=ssid", "|||-1"},
        Parsed{"CapitalName", "SSID=Home\nWPA_STATE=COMPLETED\nID=3", "|||-1"},
        Parsed{"BlankBeforeTheName", " ssid=Home\n id=3", "|||-1"},
        Parsed{"BlankAfterTheName", "ssid =Home\nid =3", "|||-1"},
        Parsed{"LongerAndShorterNames", "bssid=02:00:00:00:02:00\nid_str=3\nip=x\nstate=x",
               "|||-1"},
        Parsed{"BlanksOfTheValueStay", "ssid= padded \n", "| padded ||-1"},
        Parsed{"HardwareAddressIsNoAddress", "address=02:00:00:00:00:00", "|||-1"},
        Parsed{"IpAddressBeforeHardwareAddress", "ip_address=10.66.2.48\naddress=02:00",
               "||10.66.2.48|-1"},
        Parsed{"CarriageReturnInsideStays", "wpa_state=COMPLETED\r\nid=0", "COMPLETED\r|||0"},
        Parsed{"IdThatIsNoNumber", "id=abc", "|||-1"}, Parsed{"EmptyId", "id=", "|||-1"},
        Parsed{"HexadecimalId", "id=0x10", "|||-1"},
        Parsed{"DecimalIdWithLeadingZero", "id=010", "|||10"},
        Parsed{"LaterIdThatIsNoNumber", "id=3\nid=x", "|||3"},
        Parsed{"NegativeId", "id=-5", "|||-5"},
        Parsed{"GreatestId", "id=2147483647", "|||2147483647"},
        Parsed{"IdOutOfRange", "id=2147483648", "|||-1"},
        Parsed{"LastOccurrenceCounts", "wpa_state=A\nid=1\nssid=a\nwpa_state=B\nid=2\nssid=b",
               "B|b||2"},
        Parsed{"EscapesStay", "ssid=Caf\\xc3\\xa9 \\\"x\\\"", "|Caf\\xc3\\xa9 \\\"x\\\"||-1"},
        Parsed{"Utf8", "ssid=Café ☕", "|Café ☕||-1"},
        Parsed{"InvalidUtf8", "ssid=a\xff\nid=0", "|a\xef\xbf\xbd||0"},
        Parsed{"NulBytes", "ss\0id=a\nssid=\0b\n"_ba, std::string("|\0b||-1", 7)}),
    by_name);

struct FlagColumn {
    const char* flags;
    const char* security;
};

// What wpa_supplicant 2.9 to 2.11 print for access points of hostapd, and, where simulated radios
// cannot produce it, what the words in those programs make up. Then each word alone, and pairs that
// only a hostile access point sends.
constexpr FlagColumn flag_columns[] = {
    {"[ESS]", "open"},
    {"[ESS][UTF-8]", "open"},
    {"[WPS][ESS]", "open"},
    {"[WPS-PBC][ESS]", "open"},
    {"[IBSS]", "open"},
    {"[MESH]", "open"},
    {"[DMG][PBSS]", "open"},
    {"[ESS][P2P]", "open"},
    {"[ESS][HS20]", "open"},
    {"[ESS][FILS]", "open"},
    {"[OWE-TRANS][ESS]", "open"},
    {"[OWE-TRANS-OPEN][ESS]", "open"},
    {"[OSEN-OSEN-CCMP][ESS]", "open"},
    {"[OSEN-OSEN-CCMP][ESS][HS20]", "open"},
    {"[WPA-PSK-TKIP][ESS]", "WPA personal"},
    {"[WPA-PSK-CCMP][ESS]", "WPA personal"},
    {"[WPA2-PSK-TKIP][ESS]", "WPA personal"},
    {"[WPA2-PSK-CCMP][ESS]", "WPA personal"},
    {"[WPA2-PSK-GCMP][ESS]", "WPA personal"},
    {"[WPA2-PSK-CCMP-256+GCMP-256][ESS]", "WPA personal"},
    {"[WPA2-PSK-CCMP][ESS][UTF-8]", "WPA personal"},
    {"[WPA2-PSK-CCMP][WPS][ESS]", "WPA personal"},
    {"[WPA2-PSK-CCMP][WPS-AUTH][ESS]", "WPA personal"},
    {"[WPA2-PSK-CCMP][ESS][P2P]", "WPA personal"},
    {"[WPA2-PSK-CCMP-preauth][ESS]", "WPA personal"},
    {"[WPA-PSK-TKIP][WPA2-PSK-CCMP][ESS]", "WPA personal"},
    {"[WPA-PSK-CCMP+TKIP][WPA2-PSK-CCMP+TKIP][ESS]", "WPA personal"},
    {"[WPA2-PSK-SHA256-CCMP][ESS]", "WPA personal"},
    {"[WPA2-PSK+FT/PSK-CCMP][ESS]", "WPA personal"},
    {"[WPA2-PSK+SAE-CCMP][ESS]", "WPA personal"},
    {"[WPA2-PSK+SAE-CCMP][SAE-H2E][ESS]", "WPA personal"},
    {"[WPA2-PSK+SAE+DPP-CCMP][ESS]", "WPA personal"},
    {"[WPA2-SAE-CCMP][ESS]", "unsupported"},
    {"[WPA2-SAE-CCMP][SAE-H2E][ESS]", "unsupported"},
    {"[WPA2-SAE-CCMP][SAE-H2E][SAE-PK][ESS]", "unsupported"},
    {"[WPA2-SAE+FT/SAE-CCMP][ESS]", "unsupported"},
    {"[WPA2-SAE+SAE-EXT-KEY-CCMP][SAE-H2E][ESS]", "unsupported"},
    {"[WPA2-FT/SAE-EXT-KEY-GCMP-256][SAE-H2E][ESS]", "unsupported"},
    {"[RSN-SAE-CCMP][MESH]", "unsupported"},
    {"[WPA2-OWE-CCMP][ESS]", "unsupported"},
    {"[WPA2-OWE-CCMP][OWE-TRANS][ESS]", "unsupported"},
    {"[WPA2-DPP-CCMP][ESS]", "unsupported"},
    {"[WPA-None-TKIP][IBSS]", "unsupported"},
    {"[WEP][ESS]", "unsupported"},
    {"[WEP][IBSS]", "unsupported"},
    {"[WPA-EAP-TKIP][WPA2-EAP-CCMP][ESS]", "unsupported"},
    {"[WPA2-EAP-CCMP][ESS]", "unsupported"},
    {"[WPA2-EAP-CCMP][ESS][HS20]", "unsupported"},
    {"[WPA2-EAP-CCMP-preauth][ESS]", "unsupported"},
    {"[WPA2-EAP+PSK-CCMP][ESS]", "unsupported"},
    {"[WPA2-EAP+FT/EAP-CCMP][ESS]", "unsupported"},
    {"[WPA2-EAP+EAP-SHA256-CCMP][ESS]", "unsupported"},
    {"[WPA2-EAP-SHA384-CCMP][ESS]", "unsupported"},
    {"[WPA2-EAP-SUITE-B-GCMP][ESS]", "unsupported"},
    {"[WPA2-EAP-SUITE-B-192-GCMP-256][ESS]", "unsupported"},
    {"[WPA2-EAP+FILS-SHA256+FILS-SHA384-CCMP][ESS][FILS]", "unsupported"},
    {"[WPA2-FT-FILS-SHA256-CCMP][ESS][FILS]", "unsupported"},
    {"", "open"},
    {"[PSK]", "WPA personal"},
    {"[EAP]", "unsupported"},
    {"[SAE-H2E]", "unsupported"},
    {"[RSN--CCMP]", "unsupported"},
    {"[WPA-CCMP]", "unsupported"},
    {"[WPA2-PSK+EAP-CCMP]", "unsupported"},
    {"[WEP][WPA2-PSK-CCMP]", "unsupported"},
};

TEST(FlagColumns, AreClassifiedInEitherCaseAndKept)
{
    for (const auto& [upper, security] : flag_columns) {
        for (const QByteArray& flags : {QByteArray(upper), QByteArray(upper).toLower()}) {
            const auto networks = parse("02:00\t2412\t-45\t" + flags.toStdString() + "\tName\n");
            EXPECT_THAT(describe(networks),
                        ElementsAre("Name|02:00|2412|-45|-1|" + std::string(security) + '|'
                                    + flags.toStdString()));
        }
    }
}

TEST(NetworkTables, OfARealPlaceAreMerged)
{
    const Status status = Client::parse_status(QByteArray::fromStdString(home_status));
    EXPECT_THAT(
        describe(parse(scan_table, saved_table, status)),
        ElementsAre(
            "current|Home|02:00:00:00:02:00|2437|-50|0|WPA personal|[WPA2-PSK-CCMP][ESS]",
            "Bob \\\"5G\\\" C:\\\\net|02:00:00:00:06:00|2427|-50|2|WPA personal|"
            "[WPA2-PSK-CCMP][ESS]",
            "\\xff\\xfe\\n\\e[31mred\\x00\\t|02:00:00:00:0d:00|2457|-50|3|open|[ESS]",
            "Caf\\xc3\\xa9 du Nord \\xe2\\x98\\x95|02:00:00:00:05:00|2422|-66|1|WPA personal|"
            "[WPA2-PSK-CCMP][ESS][UTF-8]",
            "Twins|02:00:00:00:0a:00|2417|-40|-1|WPA personal|[WPA2-PSK-CCMP][ESS]",
            "Cafe|02:00:00:00:01:00|2412|-45|-1|open|[ESS]",
            " padded |02:00:00:00:0d:02|2457|-50|-1|open|[ESS]",
            "\\x00\\x00\\x00\\x00\\x00\\x00\\x00\\x00|02:00:00:00:0d:04|2457|-50|-1|open|[ESS]",
            "Modern|02:00:00:00:04:00|5180|-58|-1|unsupported|[WPA2-SAE-CCMP][SAE-H2E][ESS]"));
}

TEST(NetworkTables, MayBeEmptyOrErrorReplies)
{
    EXPECT_THAT(parse("", ""), IsEmpty());
    EXPECT_THAT(parse("FAIL", "UNKNOWN COMMAND"), IsEmpty());
    EXPECT_THAT(parse("\n\n", "\n\n"), IsEmpty());
    EXPECT_THAT(parse(scan_table.substr(0, 48), saved_table.substr(0, 34)), IsEmpty());
}

TEST(NetworkTables, SkipMalformedScanLines)
{
    const std::string good = row("02:01", -50, "Good");
    for (const std::string bad :
         {"02:02\tabc\t-40\t[ESS]\tBad\n", "02:02\t2412\tabc\t[ESS]\tBad\n",
          "02:02\t\t-40\t[ESS]\tBad\n", "02:02\t2412\t\t[ESS]\tBad\n",
          "02:02\t2412.5\t-40\t[ESS]\tBad\n", "02:02\t0x96c\t-40\t[ESS]\tBad\n",
          "02:02\t2412\t0x10\t[ESS]\tBad\n", "02:02\t2412\t99999999999\t[ESS]\tBad\n",
          "02:02\t2412\t-40\t[ESS]\t\n", "02:02\t2412\t-40\t[ESS]\n", "02:02\t2412\t-40\n",
          "02:02\t2412\t-40\t[ESS]\t\tBad\n", "02:02 2412 -40 [ESS] Bad\n", "\t\t\t\t\n",
          "bssid\t2412\t-40\t[ESS]\tBad\n", "bssid of something\t2412\t-40\t[ESS]\tBad\n"})
        EXPECT_THAT(names(parse(bad + good + bad)), ElementsAre("Good")) << bad;
}

TEST(NetworkTables, TakeOddButCompleteScanLines)
{
    EXPECT_THAT(
        describe(parse("\t0\t5\t\tName\tmore\n02:00\t010\t-010\t[ESS]\t\xff\xfe\r")),
        ElementsAre("Name||0|5|-1|open|", "\xef\xbf\xbd\xef\xbf\xbd\r|02:00|10|-10|-1|open|[ESS]"));
}

TEST(NetworkTables, SkipMalformedProfileLines)
{
    const std::string good = "1\tGood\tany\t\n";
    for (const std::string bad :
         {"\tBad\tany\t\n", "x\tBad\tany\t\n", "0x1\tBad\tany\t\n", "2147483648\tBad\tany\t\n",
          "2\t\tany\t[DISABLED]\n", "2\n", "2\t\n", "2 Bad any\n", "network id\tBad\tany\t\n"})
        EXPECT_THAT(names(parse("", bad + good + bad)), ElementsAre("Good")) << bad;
}

TEST(NetworkTables, GiveAProfileOutOfRangeTheDefaultsWhateverFollowsTheName)
{
    for (const std::string rest : {"", "\t02:00:00:00:0b:00\t[CURRENT]\n"})
        EXPECT_THAT(describe(parse("", "7\tHome" + rest)),
                    ElementsAre("Home||0|-100|7|unsupported|"));
}

TEST(NetworkTables, KeepTheStrongestAccessPointOfAName)
{
    const std::string weak = "02:01\t2412\t-60\t[ESS]\tTwins\n";
    const std::string strong = "02:02\t5220\t-50\t[WPA2-PSK-CCMP]\tTwins\n";
    const auto expected = ElementsAre("Twins|02:02|5220|-50|-1|WPA personal|[WPA2-PSK-CCMP]");
    EXPECT_THAT(describe(parse(weak + strong)), expected);
    EXPECT_THAT(describe(parse(strong + weak)), expected);
    EXPECT_THAT(describe(parse(weak + strong + weak)), expected);
}

TEST(NetworkTables, KeepTheFirstOfEquallyStrongAccessPoints)
{
    EXPECT_THAT(describe(parse(row("02:01", -50, "Twins") + row("02:02", -50, "Twins"))),
                ElementsAre("Twins|02:01|2412|-50|-1|open|[ESS]"));
}

TEST(NetworkTables, LeaveANameInItsPlaceWhenAStrongerAccessPointComes)
{
    EXPECT_THAT(
        describe(parse(row("02:01", -60, "Twins") + row("02:02", -50, "Other")
                       + row("02:03", -50, "Twins"))),
        ElementsAre("Twins|02:03|2412|-50|-1|open|[ESS]", "Other|02:02|2412|-50|-1|open|[ESS]"));
}

TEST(NetworkTables, TellNamesApartByCaseAndBlanks)
{
    EXPECT_THAT(names(parse(row("02:01", -50, "home") + row("02:02", -50, "Home")
                                + row("02:03", -50, "Home "),
                            "0\tHOME\tany\t\n")),
                ElementsAre("HOME", "home", "Home", "Home "));
}

TEST(NetworkTables, GiveANameTheProfileListedLast)
{
    EXPECT_THAT(describe(parse(row("02:01", -50, "Twins"), "0\tTwins\tany\t\n3\tTwins\tany\t\n")),
                ElementsAre("Twins|02:01|2412|-50|3|open|[ESS]"));
    EXPECT_THAT(describe(parse("", "3\tTwins\tany\t\n0\tTwins\tany\t\n")),
                ElementsAre("Twins||0|-100|0|unsupported|"));
}

struct Marking {
    std::string name;
    Status status;
    std::string saved;
    bool current;
};

class CurrentNetwork : public testing::TestWithParam<Marking> { };

TEST_P(CurrentNetwork, IsMarked)
{
    const auto networks = parse(row("02:01", -50, "Home"), GetParam().saved, GetParam().status);
    ASSERT_EQ(networks.size(), 1U);
    EXPECT_EQ(networks[0].current, GetParam().current);
}

INSTANTIATE_TEST_SUITE_P(
    , CurrentNetwork,
    testing::Values(
        Marking{"ById", {"COMPLETED", "Home", "", 0}, profile_0, true},
        Marking{"ByIdInAnyState", {"SCANNING", "", "", 0}, profile_0, true},
        Marking{"ByIdUnderAnotherName", {"COMPLETED", "Cafe", "", 0}, profile_0, true},
        Marking{"ByName", {"COMPLETED", "Home", "", -1}, profile_0, true},
        Marking{"ByNameUnderAnotherId", {"COMPLETED", "Home", "", 7}, profile_0, true},
        Marking{"NotByNameInAnotherState", {"ASSOCIATED", "Home", "", -1}, profile_0, false},
        Marking{"NotByNameInLowerCaseState", {"completed", "Home", "", -1}, profile_0, false},
        Marking{"NotByNameInOtherCase", {"COMPLETED", "home", "", -1}, profile_0, false},
        Marking{"NotByEmptyName", {"COMPLETED", "", "", -1}, profile_0, false},
        Marking{"NotWhenIdle", {"DISCONNECTED", "", "", -1}, profile_0, false},
        Marking{"NotWhenUnsaved", {"COMPLETED", "Home", "", -1}, "", false},
        Marking{"NotWhenUnsavedWithAnId", {"COMPLETED", "Home", "", 0}, "", false},
        Marking{"NotByTheFirstOfTwoIds", {"SCANNING", "", "", 0}, profile_0 + profile_3, false},
        Marking{"ByTheLastOfTwoIds", {"SCANNING", "", "", 3}, profile_0 + profile_3, true},
        Marking{"ByNameOfTwoProfiles", {"COMPLETED", "Home", "", 0}, profile_0 + profile_3, true}),
    by_name);

TEST(NetworkOrder, IsCurrentThenSavedThenStrongest)
{
    const std::string scan = row("02:01", -30, "strong") + row("02:02", -90, "weak")
        + row("02:03", -70, "saved, weak") + row("02:04", -95, "current")
        + row("02:05", -60, "saved, strong");
    const std::string saved = "5\tout of range\tany\t\n1\tsaved, weak\tany\t\n"
                              "0\tsaved, strong\tany\t\n2\tcurrent\tany\t\n";
    EXPECT_THAT(
        names(parse(scan, saved, {"SCANNING", "", "", 2})),
        ElementsAre("current", "saved, strong", "saved, weak", "out of range", "strong", "weak"));
}

TEST(NetworkOrder, CountsProfile0AsSavedAndANegativeIdAsNot)
{
    const std::string scan = row("02:01", -30, "unsaved") + row("02:02", -90, "zero")
        + row("02:03", -80, "negative");
    EXPECT_THAT(names(parse(scan, "0\tzero\tany\t\n-5\tnegative\tany\t\n")),
                ElementsAre("zero", "unsaved", "negative"));
}

TEST(NetworkOrder, KeepsTheOrderOfTheRepliesAmongEquals)
{
    // More than the few elements that an unstable sort happens to leave in order.
    std::string scan;
    std::string saved;
    Lines expected;
    for (int i = 0; i < 100; ++i) {
        scan += row("02:01", -50 - i % 2, "scanned " + std::to_string(i));
        saved += std::to_string(100 - i) + "\tsaved " + std::to_string(i) + "\tany\t\n";
        expected.push_back("saved " + std::to_string(i));
    }
    for (const int parity : {0, 1})
        for (int i = parity; i < 100; i += 2)
            expected.push_back("scanned " + std::to_string(i));
    EXPECT_EQ(names(parse(scan, saved)), expected);
}

TEST(EncodedName, IsHexadecimal)
{
    EXPECT_EQ(Client::encode_ssid(u"Home"_s), "486f6d65");
    EXPECT_EQ(Client::encode_ssid(u""_s), "");
    EXPECT_EQ(Client::encode_ssid(u"a \"b\"\n"_s), "61202262220a");
    EXPECT_EQ(Client::encode_ssid(u"Café du Nord ☕"_s), "436166c3a9206475204e6f726420e29895");
    EXPECT_EQ(Client::encode_ssid(QString(40, u'z')), QByteArray("7a").repeated(40));
}

TEST(EncodedPassword, IsQuoted)
{
    EXPECT_EQ(Client::encode_password(u""_s), "\"\"");
    EXPECT_EQ(Client::encode_password(u"home2-password"_s), "\"home2-password\"");
    EXPECT_EQ(Client::encode_password(u"pa\"s\\w"_s), "\"pa\\\"s\\\\w\"");
    EXPECT_EQ(Client::encode_password(u"\"\\"_s), "\"\\\"\\\\\"");
    EXPECT_EQ(Client::encode_password(u"café-au-lait\t\x1b'%1"_s), "\"café-au-lait\t\x1b'%1\"");
    EXPECT_EQ(Client::encode_password(QString(100, u'x')), '"' + QByteArray(100, 'x') + '"');
}

TEST(EncodedPassword, HoldsNoNulOrLineEnd)
{
    for (const char16_t forbidden : {u'\0', u'\n', u'\r'})
        for (const QString& password :
             {QString(forbidden), u"pass"_s + forbidden + u"word"_s, u"password"_s + forbidden})
            EXPECT_EQ(error_of([&] { Client::encode_password(password); }),
                      "Wi-Fi passwords cannot contain NUL or newline characters.");
}
