// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

// Proves what the window shows, says to a screen reader, and does for a finger and for keys.

#include "window.hpp"
#include "words.hpp"

#include "support/daemon.hpp"
#include "support/fake_supplicant.hpp"
#include "support/program.hpp"

#include <QAccessible>
#include <QGuiApplication>
#include <QPalette>
#include <QQuickItem>
#include <QTest>
#include <QtQml/qqmlextensionplugin.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <random>

Q_IMPORT_QML_PLUGIN(Corvane_PanelPlugin)

using namespace Qt::StringLiterals;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

/// As gtest prints it.
void PrintTo(const QString& text, std::ostream* stream)
{
    *stream << text.toStdString();
}

namespace {

constexpr int patience_ms = 60000;

/// What a screen reader knows of an item.
struct Heard {
    QAccessibleInterface* item;
    QString name() const
    {
        return item->text(QAccessible::Name);
    }
    bool is_enabled() const // Qt 6.4 does not tell screen readers
    {
        return qobject_cast<QQuickItem*>(item->object())->isEnabled();
    }
    /// Rows are called by the name of their network and what follows it.
    bool is_called(const QString& wanted) const
    {
        return name() == wanted || name().startsWith(wanted + u", "_s)
            || name().startsWith(wanted + u" - "_s);
    }
    bool is_for_fingers() const
    {
        return item->role() == QAccessible::Button || item->role() == QAccessible::EditableText
            || item->role() == QAccessible::ListItem;
    }
};

void hear(QAccessibleInterface* item, std::vector<Heard>& all)
{
    if (item->state().invisible)
        return;
    all.push_back({item});
    for (int i = 0; i < item->childCount(); ++i)
        hear(item->child(i), all);
}

/// The window, with whatever listens at `socket`.
class Panel {
public:
    /// An attempt to connect is given up after `connect_ms`.
    explicit Panel(const std::string& socket, int connect_ms = 15000, QSize size = {480, 720})
    {
        qputenv("CORVANE_WPA_SOCKET", socket.c_str());
        qputenv("CORVANE_WIFI_CONNECT_TIMEOUT_MS", QByteArray::number(connect_ms));
        wifi_ = std::make_unique<Wifi>();
        QAccessible::setActive(true);
        load_window(engine_, *wifi_);
        window().resize(size);
        wifi_->watch(window());
        window().show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&window(), patience_ms));
        window().requestActivate();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window(), patience_ms));
    }

    QQuickWindow& window()
    {
        return *qobject_cast<QQuickWindow*>(engine_.rootObjects().constFirst());
    }
    Wifi& wifi()
    {
        return *wifi_;
    }
    std::vector<Heard> heard()
    {
        std::vector<Heard> all;
        hear(QAccessible::queryAccessibleInterface(&window()), all);
        return all;
    }
    std::vector<std::string> names(QAccessible::Role role)
    {
        std::vector<std::string> names;
        for (const Heard& one : heard())
            if (one.item->role() == role)
                names.push_back(one.name().toStdString());
        return names;
    }
    std::optional<Heard> find(const QString& name)
    {
        for (const Heard& one : heard())
            if (one.is_called(name))
                return one;
        return {};
    }
    bool shows(const QString& name)
    {
        return find(name).has_value();
    }
    Heard get(const QString& name)
    {
        wait_until_(name + u" is shown"_s, [&] { return shows(name); });
        return *find(name);
    }
    void wait_for(const QString& name)
    {
        get(name);
    }
    void wait_until_(const QString& what, const std::function<bool()>& condition)
    {
        if (QTest::qWaitFor(condition, patience_ms))
            return;
        std::string all;
        for (const Heard& one : heard())
            all += "\n  " + one.name().toStdString();
        throw std::runtime_error("waited in vain until " + what.toStdString()
                                 + "; there is:" + all);
    }
    void wait_until_idle()
    {
        wait_until_(u"nothing is under way"_s,
                    [&] { return wifi().property("activity").toString().isEmpty(); });
    }

    QPoint centre(const QString& name)
    {
        return window().mapFromGlobal(get(name).item->rect().center());
    }
    void press(QPoint place)
    {
        QTest::touchEvent(&window(), finger()).press(0, place, &window());
    }
    void release(QPoint place)
    {
        QTest::touchEvent(&window(), finger()).release(0, place, &window());
    }
    void tap(const QString& name)
    {
        wait_until_(name + u" can be tapped"_s,
                    [&] { return shows(name) && find(name)->is_enabled(); });
        const QPoint place = centre(name);
        press(place);
        release(place);
    }
    void drag(QPoint from, QPoint to)
    {
        press(from);
        for (int step = 1; step <= 10; ++step) {
            QTest::touchEvent(&window(), finger())
                .move(0, from + (to - from) * step / 10, &window());
            QTest::qWait(5);
        }
        release(to);
    }
    void keys(const std::vector<Qt::Key>& keys)
    {
        for (const Qt::Key key : keys)
            QTest::keyClick(&window(), key);
    }
    void type(const QString& text)
    {
        for (const QChar c : text)
            QTest::keyClick(&window(), c.toLatin1());
    }
    void tab_to(const QString& name)
    {
        for (int i = 0; i < 10 && focused() != name; ++i)
            keys({Qt::Key_Tab});
        EXPECT_EQ(focused(), name);
    }
    QString focused()
    {
        QAccessibleInterface* item = QAccessible::queryAccessibleInterface(
            window().activeFocusItem());
        return item == nullptr ? QString() : item->text(QAccessible::Name);
    }
    QQuickItem& list()
    {
        return *window().findChild<QQuickItem*>(u"list"_s);
    }

private:
    static QPointingDevice* finger()
    {
        static QPointingDevice* const device = QTest::createTouchDevice();
        return device;
    }

    std::unique_ptr<Wifi> wifi_;
    QQmlApplicationEngine engine_;
};

const std::string home = profile("\"Home\"", "psk=\"home-password\"");

/// With the simulator, connected to Home.
class WithSimulator : public testing::Test {
protected:
    Daemon daemon{Kind::Simulator, {.profiles = home}};
    std::string connected = daemon.wait_for("STATUS", "ip_address");
    Panel panel{daemon.path()};
};
using Window = WithSimulator;

std::string access_point(int number, const std::string& name, const std::string& flags = "[ESS]")
{
    char bssid[18];
    std::snprintf(bssid, sizeof bssid, "02:00:00:00:01:%02x", number & 255);
    return std::string(bssid) + "\t2412\t" + std::to_string(-40 - number / 2) + '\t' + flags + '\t'
        + name + '\n';
}
/// No network is in use or saved; those of `lines` are in range.
Script around(const std::string& lines)
{
    return {{"STATUS", {reply("wpa_state=DISCONNECTED\n")}},
            {"LIST_NETWORKS", {reply("network id / ssid / bssid / flags\n")}},
            {"SCAN_RESULTS", {reply("bssid / frequency / signal level / flags / ssid\n" + lines)}}};
}
Script many_networks()
{
    std::string lines;
    for (int i = 10; i < 77; ++i)
        lines += access_point(i, "Network " + std::to_string(i));
    return around(lines);
}

TEST_F(Window, ShowsTheConnectionThenSavedNetworksThenOthers)
{
    panel.wait_for(u"Home, Connected - 10.66.2.48"_s);
    panel.wait_for(u"Café du Nord"_s);
    const auto rows = panel.names(QAccessible::ListItem);
    EXPECT_THAT(rows, Contains(HasSubstr("Cafe, very good signal, open")));
    EXPECT_THAT(rows, Contains(HasSubstr("Bob \"5G\" C:\\net, ")));
    EXPECT_THAT(rows, Contains(testing::MatchesRegex("Office, .* signal, enterprise")));
    EXPECT_THAT(rows, Contains(testing::StartsWith("Home,")).Times(1));
}

TEST_F(Window, JoinsAnOpenNetworkWithOneTap)
{
    panel.tap(u"Cafe"_s);
    panel.wait_for(u"Connecting to \u2068Cafe\u2069"_s);
    panel.wait_for(u"Cafe, Connected - 10.66.2.48"_s);
    EXPECT_EQ(daemon.saved(), home + "\nnetwork={\n\tssid=\"Cafe\"\n\tkey_mgmt=NONE\n}\n");
}

TEST_F(Window, AsksForAPasswordAndKeepsItUntilItIsRight)
{
    qputenv("CORVANE_WIFI_CONNECT_TIMEOUT_MS", "2500");
    panel.tap(u"Modern"_s);
    panel.type(u"1234567"_s);
    EXPECT_FALSE(panel.get(u"Connect"_s).is_enabled());
    panel.type(u"8"_s);
    EXPECT_TRUE(panel.get(u"Connect"_s).is_enabled());
    panel.tap(u"Show"_s);
    panel.wait_for(u"Hide"_s);
    EXPECT_EQ(panel.focused(), u"Password"_s);
    panel.tap(u"Connect"_s);
    panel.wait_for(u"Connecting to \u2068Modern\u2069"_s);
    panel.wait_for(u"Could not connect. Check the password."_s);
    EXPECT_THAT(daemon.config(), Not(HasSubstr("Modern")));
    auto* field = panel.window().findChild<QQuickItem*>(u"password"_s);
    EXPECT_EQ(field->property("text").toString(), u"12345678"_s);
    daemon.wait_for("STATUS", "ssid=Home"); // it went back
    field->setProperty("text", u"modern-password"_s);
    panel.tap(u"Connect"_s);
    panel.wait_for(u"Modern, Connected - 10.66.2.48"_s);
    EXPECT_THAT(daemon.config(), HasSubstr("ssid=\"Modern\"\n\tpsk=\"modern-password\"\n"));
    EXPECT_THAT(daemon.config(), Not(HasSubstr("disabled")));
}

TEST_F(Window, JoinsNamesAndPasswordsThatTheCommandLineCannot)
{
    panel.tap(u"Café du Nord"_s);
    panel.type(u"nord-password"_s);
    panel.tap(u"Connect"_s);
    panel.wait_for(u"Café du Nord, Connected"_s);
    EXPECT_THAT(daemon.config(), HasSubstr("ssid=436166c3a9206475204e6f7264\n"));
}

TEST_F(Window, JoinsAHiddenNetwork)
{
    panel.tap(u"Hidden network"_s);
    panel.type(u"Attic"_s);
    panel.keys({Qt::Key_Return});
    panel.type(u"attic-password"_s);
    panel.keys({Qt::Key_Return});
    panel.wait_for(u"Attic, Connected"_s);
    EXPECT_THAT(daemon.config(), HasSubstr("ssid=\"Attic\"\n\tscan_ssid=1\n"));
}

TEST_F(Window, ForgetsAfterAQuestionWhoseSafeAnswerHasTheFocus)
{
    panel.tap(u"Home"_s);
    panel.tap(u"Forget"_s);
    panel.wait_for(u"Forget Home? Its password is deleted."_s);
    panel.wait_until_(u"Keep has the focus"_s, [&] { return panel.focused() == u"Keep"_s; });
    panel.keys({Qt::Key_Return});
    EXPECT_EQ(daemon.saved(), home);
    panel.tap(u"Forget"_s);
    panel.wait_until_(u"Keep has the focus"_s, [&] { return panel.focused() == u"Keep"_s; });
    panel.keys({Qt::Key_Tab, Qt::Key_Return});
    panel.wait_for(u"Wi-Fi, Not connected"_s);
    EXPECT_EQ(daemon.saved(), "");
}

TEST_F(Window, OffersANewPasswordWhenASavedNetworkFails)
{
    qputenv("CORVANE_WIFI_CONNECT_TIMEOUT_MS", "2500");
    ASSERT_EQ(daemon.ask("ADD_NETWORK"), "1\n");
    ASSERT_EQ(daemon.ask("SET_NETWORK 1 ssid \"Twins\""), "OK\n");
    ASSERT_EQ(daemon.ask("SET_NETWORK 1 psk \"out-of-date\""), "OK\n");
    panel.tap(u"Scan"_s);
    panel.wait_for(u"Twins, saved"_s);
    panel.tap(u"Twins"_s);
    panel.wait_for(
        u"Could not connect to \u2068Twins\u2069. It may be out of range, or its password "
        "has changed."_s);
    EXPECT_FALSE(panel.shows(u"Twins, Connected"_s));
    panel.tap(u"New password"_s);
    panel.type(u"twins-password"_s);
    panel.tap(u"Connect"_s);
    panel.wait_for(u"Twins, Connected"_s);
    EXPECT_THAT(daemon.config(), HasSubstr("twins-password"));
    EXPECT_THAT(daemon.config(), Not(HasSubstr("out-of-date")));
}

TEST_F(Window, DoesWithKeysWhatAFingerDoes)
{
    panel.wait_for(u"Cafe"_s);
    panel.keys({Qt::Key_Down, Qt::Key_Up, Qt::Key_Right});
    panel.wait_for(u"Access point"_s);
    EXPECT_EQ(panel.focused(), u"Connect"_s);
    panel.keys({Qt::Key_Escape});
    EXPECT_THAT(panel.focused().toStdString(), testing::StartsWith("Cafe, "));
    panel.tab_to(u"Hidden network"_s);
    panel.keys({Qt::Key_Return});
    EXPECT_EQ(panel.focused(), u"Name"_s);
    panel.tab_to(u"Cancel"_s);
    panel.keys({Qt::Key_Space});
    panel.tab_to(u"Home, Connected - 10.66.2.48"_s);
    panel.keys({Qt::Key_Return});
    panel.tab_to(u"Disconnect"_s);
    panel.keys({Qt::Key_Return});
    panel.wait_for(u"Wi-Fi, Not connected"_s);
    panel.tab_to(u"Scan"_s);
    panel.keys({Qt::Key_Return});
    panel.wait_for(u"Looking for networks"_s);
    panel.wait_until_idle();
    panel.keys({Qt::Key_Backtab, Qt::Key_Up});
    EXPECT_THAT(panel.focused().toStdString(), testing::StartsWith("Home, saved"));
    panel.keys({Qt::Key_Return});
    panel.wait_for(u"Home, Connected"_s);
}

TEST_F(Window, LooksAsInTheDocuments)
{
    const QString folder = qEnvironmentVariable("CORVANE_PICTURES");
    panel.wait_for(u"Antique"_s);
    for (const auto& [name, size] :
         {std::pair(u"phone"_s, QSize(400, 720)), std::pair(u"tablet"_s, QSize(1024, 600))}) {
        panel.window().resize(size);
        QTest::qWait(200); // the layout follows
        const QImage picture = panel.window().grabWindow();
        EXPECT_EQ(picture.size(), size);
        EXPECT_TRUE(folder.isEmpty() || picture.save(folder + u"/panel-"_s + name + u".png"_s));
    }
}

TEST_F(Window, EndsOnlyWhenTheAttemptHasEnded)
{
    panel.tap(u"Cafe"_s);
    panel.wait_for(u"Connecting to \u2068Cafe\u2069"_s);
    panel.window().close();
    EXPECT_FALSE(panel.window().isVisible());
    panel.wait_until_idle();
    EXPECT_THAT(daemon.config(), HasSubstr("Cafe"));
}

TEST(List, ScrollsUnderAFingerAndStaysWhereItIs)
{
    FakeSupplicant supplicant(many_networks());
    Panel panel(supplicant.path());
    panel.wait_for(u"Network 10"_s);
    for (int i = 0; i < 60 && !panel.shows(u"Network 76"_s); ++i)
        panel.drag({240, 550}, {240, 150});
    panel.wait_until_(u"the list is at rest"_s,
                      [&] { return !panel.list().property("moving").toBool(); });
    panel.wait_for(u"Network 76"_s);
    const double place = panel.list().property("contentY").toDouble();
    EXPECT_GT(place, 2000);
    panel.drag({240, 150}, {240, 350});
    panel.wait_until_(u"the list is at rest"_s,
                      [&] { return !panel.list().property("moving").toBool(); });
    const double above = panel.list().property("contentY").toDouble();
    EXPECT_LT(above, place);
    supplicant.on("SCAN_RESULTS", many_networks().at("SCAN_RESULTS"));
    panel.tap(u"Scan"_s);
    panel.wait_until_idle();
    EXPECT_EQ(panel.list().property("contentY").toDouble(), above);
    EXPECT_THAT(supplicant.requests(), Not(Contains("ADD_NETWORK"))); // no row was tapped
}

TEST(List, ScansWhenItIsPulledDown)
{
    FakeSupplicant supplicant(around(access_point(1, "Only")));
    Panel panel(supplicant.path());
    panel.wait_for(u"Only"_s);
    panel.wait_until_(u"it has scanned by itself"_s,
                      [&] { return supplicant.wait_for_request("SCAN"); });
    const auto scans = [&] { return std::ranges::count(supplicant.requests(), "SCAN"); };
    const auto before = scans();
    panel.drag({240, 300}, {240, 640});
    panel.wait_until_(u"it scans"_s, [&] { return scans() > before; });
}

TEST(List, StaysAsItIsWhileAFingerIsDown)
{
    FakeSupplicant supplicant(around(access_point(1, "Cafe")));
    Panel panel(supplicant.path());
    const auto looks = [&] { return std::ranges::count(supplicant.requests(), "SCAN_RESULTS"); };
    panel.wait_until_(u"it has looked and scanned"_s, [&] { return looks() == 2; });
    const QPoint blank(240, 500);
    panel.press(blank);
    supplicant.on("SCAN_RESULTS", {reply("")});
    supplicant.on("STATUS", {reply("wpa_state=INACTIVE\n")});
    panel.wait_until_(u"it has looked again"_s, [&] { return looks() == 3; });
    QTest::qWait(500);
    EXPECT_TRUE(panel.shows(u"Cafe"_s));
    panel.release(blank);
    panel.wait_until_(u"the row is gone"_s, [&] { return !panel.shows(u"Cafe"_s); });
}

TEST(List, TakesADoubleTapForOne)
{
    FakeSupplicant supplicant(around(access_point(1, "Cafe")));
    Panel panel(supplicant.path(), 1);
    const QPoint place = panel.centre(u"Cafe"_s);
    for (int i = 0; i < 2; ++i) {
        panel.press(place);
        panel.release(place);
    }
    panel.wait_until_(u"it joins"_s, [&] { return supplicant.wait_for_request("ADD_NETWORK"); });
    panel.wait_until_idle();
    EXPECT_EQ(std::ranges::count(supplicant.requests(), "ADD_NETWORK"), 1);
    panel.wait_for(u"Could not connect to \u2068Cafe\u2069."_s);
}

TEST(List, IsLeftAloneByARefusedScan)
{
    FakeSupplicant supplicant(around(access_point(1, "Cafe")));
    supplicant.on("SCAN", {reply("FAIL")});
    Panel panel(supplicant.path());
    panel.tap(u"Scan"_s);
    panel.wait_for(u"Could not start Wi-Fi scan: FAIL"_s);
    EXPECT_TRUE(panel.shows(u"Cafe"_s));
}

TEST(Requests, SaveOnceAndRemoveWhatDoesNotWork)
{
    FakeSupplicant supplicant(around(access_point(1, R"(Caf\xc3\xa9)", "[WPA2-SAE-CCMP][ESS]")));
    Panel panel(supplicant.path(), 1);
    panel.tap(u"Café"_s);
    panel.type(u"pass \"word\" \\o/"_s);
    panel.tap(u"Connect"_s);
    panel.wait_for(u"Could not connect. Check the password."_s);
    Requests changes = supplicant.requests();
    std::erase_if(changes, [](const std::string& request) {
        return request == "STATUS" || request == "SCAN" || request == "SCAN_RESULTS"
            || request == "LIST_NETWORKS";
    });
    EXPECT_THAT(changes,
                ElementsAre("ADD_NETWORK", "SET_NETWORK 3 ssid 436166c3a9",
                            "SET_NETWORK 3 key_mgmt WPA-PSK SAE", "SET_NETWORK 3 ieee80211w 1",
                            R"(SET_NETWORK 3 psk "pass "word" \o/")", "SELECT_NETWORK 3",
                            "REMOVE_NETWORK 3", "ENABLE_NETWORK all"));
}

TEST(Requests, BringBackTheOldProfileIfTheNewOneCannotBeSaved)
{
    FakeSupplicant supplicant({{"SAVE_CONFIG", {reply("FAIL")}},
                               {"LIST_NETWORKS", {reply("network id / ssid\n5\tHome2\tany\t\n")}}});
    Panel panel(supplicant.path());
    panel.tap(u"Hidden network"_s);
    panel.type(u"Home2"_s);
    panel.keys({Qt::Key_Return});
    panel.type(u"new-password"_s);
    panel.keys({Qt::Key_Return});
    panel.wait_for(u"Could not save Wi-Fi network: FAIL"_s);
    EXPECT_THAT(supplicant.requests(), testing::IsSupersetOf({"REMOVE_NETWORK 5", "RECONFIGURE"}));
}

TEST(Requests, StopWhileTheWindowIsHidden)
{
    FakeSupplicant supplicant(around(access_point(1, "Cafe")));
    Panel panel(supplicant.path());
    panel.wait_for(u"Cafe"_s);
    const auto count = [&] { return supplicant.requests().size(); };
    panel.window().hide();
    QTest::qWait(2500); // the scan of the start ends
    const size_t before = count();
    QTest::qWait(7000);
    EXPECT_EQ(count(), before);
    panel.window().show();
    panel.wait_until_(u"it looks again"_s, [&] { return count() > before; });
    const size_t shown = count();
    QTest::qWait(7000);
    EXPECT_GT(count(), shown);
    EXPECT_LE(count(), shown + 3);
}

struct Situation {
    const char* name;
    Script script;
    QString words;
};
void PrintTo(const Situation& situation, std::ostream* stream)
{
    *stream << situation.name;
}
class Situations : public testing::TestWithParam<Situation> { };
Script status(const std::string& lines)
{
    return {{"STATUS", {reply(lines)}}};
}
INSTANTIATE_TEST_SUITE_P(
    Of, Situations,
    testing::Values(
        Situation{"RadioOff", status("wpa_state=INTERFACE_DISABLED\n"),
                  u"Wi-Fi is switched off."_s},
        Situation{"NoAddress", status("wpa_state=COMPLETED\nssid=Twins\nid=1\n"),
                  u"Connected, but no address. Is a DHCP client running?"_s},
        Situation{"OnTheWay", status("wpa_state=ASSOCIATING\nssid=x\n"),
                  u"Connecting to \u2068x\u2069"_s},
        Situation{"Failed", status("wpa_state=SCANNING\n"), u"Not connected"_s},
        Situation{"Silent", {{"STATUS", {silence()}}}, u"The Wi-Fi service does not answer."_s}),
    [](const auto& situation) { return situation.param.name; });
TEST_P(Situations, AreNamedInWords)
{
    FakeSupplicant supplicant(GetParam().script);
    Panel panel(supplicant.path());
    panel.wait_for(GetParam().words);
}

TEST(Situations, TellWhatHelpsWithoutAServiceAndEndWhenItStarts)
{
    const TemporaryFolder folder;
    const std::string path = folder.path() + "/wlan0";
    Panel panel(path);
    panel.tap(u"Scan"_s);
    panel.wait_for(u"Wi-Fi, The Wi-Fi service is not running."_s);
    FakeSupplicant supplicant(around(""));
    ASSERT_EQ(symlink(supplicant.path().c_str(), path.c_str()), 0);
    panel.wait_for(u"Wi-Fi, Not connected"_s);
    EXPECT_FALSE(panel.shows(u"The Wi-Fi service is not running."_s));
    EXPECT_EQ(explained(u"Could not connect to wpa_supplicant: Permission denied"_s),
              u"You may not control Wi-Fi. Your user must be in the group netdev."_s);
}

struct Name {
    const char* printed;
    QString shown;
};
TEST(Names, AreShownAsPeopleWriteThem)
{
    for (const auto& [printed, shown] : std::vector<Name>{
             {"Home", u"Home"_s},
             {R"(Caf\xc3\xa9)", u"Café"_s},
             {R"(\xe7\xbd\x91\xe7\xbb\x9c)", u"网络"_s},
             {R"(a\"b\\c)", u"a\"b\\c"_s},
             {" Hotel ", u"\u2423Hotel\u2423"_s},
             {"a  b c", u"a\u2423\u2423b c"_s},
             {R"(\xff)", uR"(\xff)"_s},                     // not UTF-8
             {R"(a\tb)", uR"(a\tb)"_s},                     // a control character
             {R"(a\xe2\x80\xaeb)", uR"(a\xe2\x80\xaeb)"_s}, // turns the direction
             {R"(a\xc2\xa0b)", uR"(a\xc2\xa0b)"_s},         // a blank that looks like a space
             {R"(a\xe3\x85\xa4)", uR"(a\xe3\x85\xa4)"_s},   // a letter that is blank
             {R"(\xe2\x90\xa3)", uR"(\xe2\x90\xa3)"_s},     // what stands for a space
         })
        EXPECT_EQ(readable(QString::fromUtf8(printed)), shown);
    EXPECT_EQ(bytes_of(uR"(\"\\\e\n\r\t\x00\xc3\xa9)"_s),
              QByteArray("\"\\\x1b\n\r\t\0\xc3\xa9", 9));
}

/// Width and height; whether the layout runs from right to left, and the colours are dark.
class Sizes : public testing::TestWithParam<std::tuple<QSize, bool, bool>> {
protected:
    void SetUp() override
    {
        const auto [size, right_to_left, dark] = GetParam();
        if (right_to_left)
            QGuiApplication::setLayoutDirection(Qt::RightToLeft);
        if (dark)
            QGuiApplication::setPalette(QPalette(QColor(40, 40, 40)));
    }
    void TearDown() override
    {
        QGuiApplication::setLayoutDirection(Qt::LeftToRight);
        QGuiApplication::setPalette(QPalette());
    }
};
INSTANTIATE_TEST_SUITE_P(Of, Sizes,
                         testing::Combine(testing::Values(QSize(320, 480), QSize(480, 320),
                                                          QSize(1200, 1920), QSize(2560, 1600)),
                                          testing::Bool(), testing::Bool()));
void check_layout(Panel& panel)
{
    const QRect window = panel.window().geometry();
    for (const Heard& one : panel.heard()) {
        const QRect place = one.item->rect();
        EXPECT_TRUE(place.left() >= window.left() && place.right() <= window.right())
            << one.name().toStdString();
        EXPECT_TRUE(place.height() >= 48 || !one.is_for_fingers()) << one.name().toStdString();
    }
}
TEST_P(Sizes, HoldEveryPage)
{
    const std::string wide(32, 'W');
    FakeSupplicant supplicant(around(access_point(1, wide, "[WPA2-PSK-CCMP][ESS]")
                                     + access_point(2, R"(\xff)", "[WPA2-EAP-CCMP][ESS]")));
    Panel panel(supplicant.path(), 15000, std::get<QSize>(GetParam()));
    const QString name = QString::fromStdString(wide);
    panel.wait_for(name);
    check_layout(panel);
    const QImage image = panel.window().grabWindow();
    EXPECT_EQ(image.size(), std::get<QSize>(GetParam()) * panel.window().devicePixelRatio());
    EXPECT_EQ(image.pixelColor(1, 1).lightness() < 128, std::get<2>(GetParam()));
    panel.tap(u"Details of "_s + name);
    panel.wait_for(u"Channel"_s);
    check_layout(panel);
    panel.tap(u"Back"_s);
    panel.tap(name);
    panel.wait_for(u"Password"_s);
    check_layout(panel);
}

class RandomEvents : public testing::TestWithParam<unsigned> { };
INSTANTIATE_TEST_SUITE_P(Of, RandomEvents, testing::Values(1U, 2U, 3U));
TEST_P(RandomEvents, LeaveAWindowThatWorks)
{
    FakeSupplicant supplicant; // connects to what is saved
    Panel panel(supplicant.path(), 1);
    std::mt19937 random(GetParam());
    const auto below = [&](int limit) { return static_cast<int>(random() % unsigned(limit)); };
    const std::vector keys = {Qt::Key_Tab,  Qt::Key_Backtab, Qt::Key_Up,     Qt::Key_Down,
                              Qt::Key_Left, Qt::Key_Right,   Qt::Key_Return, Qt::Key_Escape,
                              Qt::Key_A,    Qt::Key_Space};
    bool down = false;
    QPoint place;
    for (int i = 0; i < 5000; ++i) {
        if (below(3) == 0) {
            panel.keys({keys[static_cast<size_t>(below(static_cast<int>(keys.size())))]});
            continue;
        }
        place = {below(480), below(720)};
        if (down)
            panel.release(place);
        else
            panel.press(place);
        down = !down;
    }
    if (down)
        panel.release(place);
    panel.wait_until_idle();
    for (int i = 0; i < 5; ++i)
        panel.keys({Qt::Key_Escape});
    panel.wait_for(u"Scan"_s);
    panel.tap(u"Hidden network"_s);
    panel.wait_for(u"Name"_s);
}

QQuickItem* find_key(QQuickItem* item, const QString& text)
{
    if (!item->isVisible())
        return nullptr;
    if (item->property("displayText").toString() == text && item->property("key").isValid())
        return item;
    for (QQuickItem* child : item->childItems())
        if (QQuickItem* found = find_key(child, text))
            return found;
    return nullptr;
}

/// Run by itself, because Qt chooses its input method when the program starts.
TEST(OnScreenKeyboard, TypesThePassword)
{
    if (qgetenv("QT_IM_MODULE") != "qtvirtualkeyboard")
        GTEST_SKIP() << "QT_IM_MODULE does not name the on-screen keyboard";
    FakeSupplicant supplicant(around(access_point(1, "Home", "[WPA2-PSK-CCMP][ESS]")));
    Panel panel(supplicant.path(), 1);
    panel.tap(u"Home"_s);
    panel.wait_until_(u"there is a keyboard"_s,
                      [&] { return find_key(panel.window().contentItem(), u"h"_s) != nullptr; });
    QTest::qWait(500); // it slides in
    QQuickItem* key = find_key(panel.window().contentItem(), u"h"_s);
    for (int i = 0; i < 8; ++i) {
        const QPoint place = key->mapToScene({key->width() / 2, key->height() / 2}).toPoint();
        panel.press(place);
        QTest::qWait(50);
        panel.release(place);
    }
    auto* field = panel.window().findChild<QQuickItem*>(u"password"_s);
    EXPECT_EQ(field->property("text").toString(), u"hhhhhhhh"_s);
    panel.tap(u"Connect"_s);
    panel.wait_until_(u"it joins"_s, [&] {
        return supplicant.wait_for_request("SET_NETWORK 3 psk \"hhhhhhhh\"");
    });
}

/// In the lab's machine: joins CORVANE_PANEL_SSID, which may be hidden, on the real radio.
TEST(OnRadios, Joins)
{
    const QString ssid = qEnvironmentVariable("CORVANE_PANEL_SSID");
    if (ssid.isEmpty())
        GTEST_SKIP() << "CORVANE_PANEL_SSID names no network to join";
    Panel panel(qgetenv("CORVANE_WPA_SOCKET").toStdString(), 30000, {480, 1600});
    panel.tap(u"Scan"_s);
    panel.wait_until_idle();
    if (qEnvironmentVariableIsSet("CORVANE_PANEL_HIDDEN")) {
        panel.tap(u"Hidden network"_s);
        panel.type(ssid);
        panel.keys({Qt::Key_Return});
    } else {
        panel.tap(ssid);
    }
    panel.type(qEnvironmentVariable("CORVANE_PANEL_PASSWORD"));
    panel.tap(u"Connect"_s);
    panel.wait_until_idle();
    panel.wait_for(qEnvironmentVariable("CORVANE_PANEL_RESULT", ssid + u", Connected"_s));
}

} // namespace

int main(int argc, char** argv)
{
    const TemporaryFolder runtime; // Qt would make one in /tmp and leave it
    qputenv("XDG_RUNTIME_DIR", runtime.path().c_str());
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_QUICK_BACKEND", "software");
    if (!qEnvironmentVariableIsSet("CORVANE_WIFI_SCAN_DELAY_MS"))
        qputenv("CORVANE_WIFI_SCAN_DELAY_MS", "100");
    const QGuiApplication application(argc, argv);
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
