// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

// Proves what the window shows, says to a screen reader, and does for a finger and for keys.

#include "window.hpp"
#include "words.hpp"

#include "support/daemon.hpp"
#include "support/fake_supplicant.hpp"

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

namespace {

constexpr int patience_ms = 60000;

std::string name_of(const QAccessibleInterface* item)
{
    return item == nullptr ? "" : item->text(QAccessible::Name).toStdString();
}

bool is_enabled(const QAccessibleInterface* item) // Qt 6.4 does not tell screen readers
{
    return item != nullptr && qobject_cast<QQuickItem*>(item->object())->isEnabled();
}

/// The window, with whatever listens at `socket`. Its items are those of a screen reader.
struct Panel {
    QQmlApplicationEngine engine;
    QQuickWindow* window;

    /// An attempt to connect is given up after `connect_ms`.
    explicit Panel(const std::string& socket, int connect_ms = 15000, QSize size = {480, 720},
                   bool right_to_left = false, bool dark = false)
    {
        qputenv("CORVANE_WPA_SOCKET", socket.c_str());
        qputenv("CORVANE_WIFI_CONNECT_TIMEOUT_MS", QByteArray::number(connect_ms));
        QGuiApplication::setLayoutDirection(right_to_left ? Qt::RightToLeft : Qt::LeftToRight);
        QGuiApplication::setPalette(dark ? QPalette(QColor(40, 40, 40)) : QPalette());
        QAccessible::setActive(true);
        window = load_window(engine);
        window->resize(size);
        window->show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(window, patience_ms));
        window->requestActivate();
        EXPECT_TRUE(QTest::qWaitForWindowActive(window, patience_ms));
    }

    std::vector<QAccessibleInterface*> items()
    {
        std::vector all = {QAccessible::queryAccessibleInterface(window)};
        for (size_t i = 0; i < all.size(); ++i)
            for (int child = all[i]->childCount() - 1; child >= 0; --child)
                if (QAccessibleInterface* item = all[i]->child(child); !item->state().invisible)
                    all.insert(all.begin() + static_cast<std::ptrdiff_t>(i) + 1, item);
        return all;
    }
    /// Null if there is none. Rows are called by the name of their network and what follows it.
    QAccessibleInterface* find(const std::string& wanted)
    {
        for (QAccessibleInterface* item : items())
            if (const std::string name = name_of(item); name == wanted
                || name.starts_with(wanted + ", ") || name.starts_with(wanted + " - "))
                return item;
        return nullptr;
    }
    void wait_until(const std::string& what, const std::function<bool()>& condition)
    {
        if (QTest::qWaitFor(condition, patience_ms))
            return;
        std::string all;
        for (const QAccessibleInterface* item : items())
            all += "\n  " + name_of(item);
        throw std::runtime_error("waited in vain until " + what + "; there is:" + all);
    }
    QAccessibleInterface* wait_for(const std::string& name)
    {
        wait_until(name + " is shown", [&] { return find(name) != nullptr; });
        return find(name);
    }
    void wait_until_idle()
    {
        wait_until("nothing is under way",
                   [&] { return wifi_of(engine).property("activity").toString().isEmpty(); });
    }
    std::string focused()
    {
        return name_of(QAccessible::queryAccessibleInterface(window->activeFocusItem()));
    }
    /// What the pages call `name`.
    QObject& object(const char* name)
    {
        return *window->findChild<QObject*>(QString::fromLatin1(name));
    }

    QTest::QTouchEventSequence touch()
    {
        static QPointingDevice* const finger = QTest::createTouchDevice();
        return QTest::touchEvent(window, finger);
    }
    void tap(QPoint place)
    {
        touch().press(0, place);
        touch().release(0, place);
    }
    QPoint centre(const std::string& name)
    {
        return window->mapFromGlobal(wait_for(name)->rect().center());
    }
    void tap(const std::string& name)
    {
        wait_until(name + " can be tapped", [&] { return is_enabled(find(name)); });
        tap(centre(name));
    }
    void drag(QPoint from, QPoint to)
    {
        touch().press(0, from);
        for (int step = 1; step <= 10; ++step) {
            touch().move(0, from + (to - from) * step / 10);
            QTest::qWait(5);
        }
        touch().release(0, to);
    }
    void keys(const std::vector<Qt::Key>& keys)
    {
        for (const Qt::Key key : keys)
            QTest::keyClick(window, key);
    }
    void type(const std::string& text)
    {
        for (const char c : text)
            QTest::keyClick(window, c);
    }
    void tab_to(const std::string& name)
    {
        for (int i = 0; i < 10 && focused() != name; ++i)
            keys({Qt::Key_Tab});
        EXPECT_EQ(focused(), name);
    }
};

const std::string home = profile("\"Home\"", "psk=\"home-password\"");

/// With the simulator, connected to Home.
class Window : public testing::Test {
protected:
    Daemon daemon{Kind::Simulator, {.profiles = home}};
    std::string connected = daemon.wait_for("STATUS", "ip_address");
    Panel panel{daemon.path()};
};

std::string access_point(int number, const std::string& name, const std::string& flags = "[ESS]")
{
    return "02:00:00:00:01:" + std::to_string(number + 10) + "\t2412\t"
        + std::to_string(-40 - number / 2) + '\t' + flags + '\t' + name + '\n';
}

/// No network is in use or saved; those of `lines` are in range.
Script around(const std::string& lines)
{
    return {{"STATUS", {reply("wpa_state=DISCONNECTED\n")}},
            {"LIST_NETWORKS", {reply("network id / ssid / bssid / flags\n")}},
            {"SCAN_RESULTS", {reply("bssid / frequency / signal level / flags / ssid\n" + lines)}}};
}

auto times(const FakeSupplicant& supplicant, const std::string& request)
{
    return std::ranges::count(supplicant.requests(), request);
}

TEST_F(Window, ShowsTheConnectionThenSavedNetworksThenOthers)
{
    panel.wait_for("Home, Connected - 10.66.2.48");
    panel.wait_for("Café du Nord");
    std::vector<std::string> rows;
    for (const QAccessibleInterface* item : panel.items())
        if (item->role() == QAccessible::ListItem)
            rows.push_back(name_of(item));
    EXPECT_THAT(rows, Contains(HasSubstr("Cafe, very good signal, open")));
    EXPECT_THAT(rows, Contains(HasSubstr("Bob \"5G\" C:\\net, ")));
    EXPECT_THAT(rows, Contains(testing::MatchesRegex("Office, .* signal, enterprise")));
    EXPECT_THAT(rows, Contains(testing::StartsWith("Home,")).Times(1));
}

TEST_F(Window, JoinsAnOpenNetworkWithOneTap)
{
    panel.tap("Cafe");
    panel.wait_for("Connecting to \u2068Cafe\u2069");
    panel.wait_for("Cafe, Connected - 10.66.2.48");
    EXPECT_EQ(daemon.saved(), home + "\nnetwork={\n\tssid=\"Cafe\"\n\tkey_mgmt=NONE\n}\n");
}

TEST_F(Window, AsksForAPasswordAndKeepsItUntilItIsRight)
{
    qputenv("CORVANE_WIFI_CONNECT_TIMEOUT_MS", "2500");
    panel.tap("Modern");
    panel.type("1234567");
    EXPECT_FALSE(is_enabled(panel.wait_for("Connect")));
    panel.type("8");
    EXPECT_TRUE(is_enabled(panel.wait_for("Connect")));
    panel.tap("Show");
    panel.wait_for("Hide");
    EXPECT_EQ(panel.focused(), "Password");
    panel.tap("Connect");
    panel.wait_for("Connecting to \u2068Modern\u2069");
    panel.wait_for("Could not connect. Check the password.");
    EXPECT_THAT(daemon.config(), Not(HasSubstr("Modern")));
    EXPECT_EQ(panel.object("password").property("text").toString().toStdString(), "12345678");
    EXPECT_THAT(daemon.wait_for("STATUS", "ssid=Home"), HasSubstr("ssid=Home")); // it went back
    panel.object("password").setProperty("text", u"modern-password"_s);
    panel.tap("Connect");
    panel.wait_for("Modern, Connected - 10.66.2.48");
    EXPECT_THAT(daemon.config(), HasSubstr("ssid=\"Modern\"\n\tpsk=\"modern-password\"\n"));
    EXPECT_THAT(daemon.config(), Not(HasSubstr("disabled")));
}

TEST_F(Window, JoinsNamesAndPasswordsThatTheCommandLineCannot)
{
    panel.tap("Café du Nord");
    panel.type("nord-password");
    panel.tap("Connect");
    panel.wait_for("Café du Nord, Connected");
    EXPECT_THAT(daemon.config(), HasSubstr("ssid=436166c3a9206475204e6f7264\n"));
}

TEST_F(Window, JoinsAHiddenNetwork)
{
    panel.tap("Hidden network");
    panel.type("Attic\rattic-password\r");
    panel.wait_for("Attic, Connected");
    EXPECT_THAT(daemon.config(), HasSubstr("ssid=\"Attic\"\n\tscan_ssid=1\n"));
}

TEST_F(Window, ForgetsAfterAQuestionWhoseSafeAnswerHasTheFocus)
{
    panel.tap("Home");
    panel.wait_for("10.66.2.48");
    panel.tap("Forget");
    panel.wait_for("Forget \u2068Home\u2069? Its password is deleted.");
    panel.wait_until("Keep has the focus", [&] { return panel.focused() == "Keep"; });
    panel.keys({Qt::Key_Return});
    EXPECT_EQ(daemon.saved(), home);
    panel.tap("Forget");
    panel.wait_until("Keep has the focus", [&] { return panel.focused() == "Keep"; });
    panel.keys({Qt::Key_Tab, Qt::Key_Return});
    panel.wait_for("Wi-Fi, Not connected");
    EXPECT_EQ(daemon.saved(), "");
}

TEST_F(Window, OffersANewPasswordWhenASavedNetworkFails)
{
    qputenv("CORVANE_WIFI_CONNECT_TIMEOUT_MS", "2500");
    ASSERT_EQ(daemon.ask("ADD_NETWORK"), "1\n");
    ASSERT_EQ(daemon.ask("SET_NETWORK 1 ssid \"Twins\""), "OK\n");
    ASSERT_EQ(daemon.ask("SET_NETWORK 1 psk \"out-of-date\""), "OK\n");
    panel.tap("Scan");
    panel.wait_for("Twins, saved");
    panel.tap("Twins");
    panel.wait_for(
        "Could not connect to \u2068Twins\u2069. It may be out of range, or its password "
        "has changed.");
    EXPECT_EQ(panel.find("Twins, Connected"), nullptr);
    panel.tap("New password");
    panel.type("twins-password");
    panel.tap("Connect");
    panel.wait_for("Twins, Connected");
    EXPECT_THAT(daemon.config(), HasSubstr("twins-password"));
    EXPECT_THAT(daemon.config(), Not(HasSubstr("out-of-date")));
}

TEST_F(Window, DoesWithKeysWhatAFingerDoes)
{
    panel.wait_for("Cafe");
    panel.keys({Qt::Key_Down, Qt::Key_Up, Qt::Key_Right});
    panel.wait_for("Access point");
    EXPECT_EQ(panel.focused(), "Connect");
    panel.keys({Qt::Key_Escape});
    EXPECT_THAT(panel.focused(), testing::StartsWith("Cafe, "));
    panel.tab_to("Hidden network");
    panel.keys({Qt::Key_Return});
    EXPECT_EQ(panel.focused(), "Name");
    panel.tab_to("Cancel");
    panel.keys({Qt::Key_Space});
    panel.tab_to("Home, Connected - 10.66.2.48");
    panel.keys({Qt::Key_Return});
    panel.tab_to("Disconnect");
    panel.keys({Qt::Key_Return});
    panel.wait_for("Wi-Fi, Not connected");
    panel.tab_to("Scan");
    panel.keys({Qt::Key_Return});
    panel.wait_for("Looking for networks");
    panel.wait_until_idle();
    panel.keys({Qt::Key_Backtab, Qt::Key_Up});
    EXPECT_THAT(panel.focused(), testing::StartsWith("Home, saved"));
    panel.keys({Qt::Key_Return});
    panel.wait_for("Home, Connected");
}

TEST_F(Window, LooksAsInTheDocuments)
{
    const QString folder = qEnvironmentVariable("CORVANE_PICTURES");
    panel.wait_for("Antique");
    for (const auto& [name, size] :
         {std::pair(u"phone"_s, QSize(400, 720)), std::pair(u"tablet"_s, QSize(1024, 600))}) {
        panel.window->resize(size);
        QTest::qWait(200); // the layout follows
        const QImage picture = panel.window->grabWindow();
        EXPECT_EQ(picture.size(), size);
        EXPECT_TRUE(folder.isEmpty() || picture.save(folder + u"/panel-%1.png"_s.arg(name)));
    }
}

TEST_F(Window, EndsOnlyWhenTheAttemptHasEnded)
{
    panel.tap("Cafe");
    panel.wait_for("Connecting to \u2068Cafe\u2069");
    panel.window->close();
    EXPECT_FALSE(panel.window->isVisible());
    panel.wait_until_idle();
    EXPECT_THAT(daemon.config(), HasSubstr("Cafe"));
}

TEST(List, ScrollsUnderAFingerAndStaysWhereItIs)
{
    std::string many;
    for (int i = 10; i < 77; ++i)
        many += access_point(i, "Network " + std::to_string(i));
    FakeSupplicant supplicant(around(many));
    Panel panel(supplicant.path());
    const auto place_at_rest = [&] {
        const QObject& list = panel.object("list");
        panel.wait_until("the list is at rest", [&] { return !list.property("moving").toBool(); });
        return list.property("contentY").toDouble();
    };
    panel.wait_for("Network 10");
    for (int i = 0; i < 60 && panel.find("Network 76") == nullptr; ++i)
        panel.drag({240, 550}, {240, 150});
    const double end = place_at_rest();
    panel.wait_for("Network 76");
    EXPECT_GT(end, 2000);
    panel.drag({240, 150}, {240, 350});
    const double above = place_at_rest();
    EXPECT_LT(above, end);
    panel.tap("Scan");
    panel.wait_until_idle();
    EXPECT_EQ(place_at_rest(), above);
    EXPECT_EQ(times(supplicant, "ADD_NETWORK"), 0); // no row was tapped
}

TEST(List, ScansWhenItIsPulledDown)
{
    qputenv("CORVANE_WIFI_SCAN_DELAY_MS", "3000"); // so long is the scan shown
    FakeSupplicant supplicant(around(access_point(1, "Only")));
    Panel panel(supplicant.path());
    panel.wait_for("Only");
    panel.drag({240, 300}, {240, 640});
    panel.wait_for("Looking for networks");
}

TEST(List, StaysAsItIsWhileAFingerIsDown)
{
    FakeSupplicant supplicant(around(access_point(1, "Cafe")));
    Panel panel(supplicant.path());
    const auto looks = [&] { return times(supplicant, "SCAN_RESULTS"); };
    panel.wait_until("it has looked and scanned", [&] { return looks() >= 2; });
    const QPoint blank(240, 500);
    panel.touch().press(0, blank);
    supplicant.on("SCAN_RESULTS", {reply("")});
    supplicant.on("STATUS", {reply("wpa_state=INACTIVE\n")});
    panel.wait_until("it has looked again", [&] { return looks() >= 3; });
    QTest::qWait(500);
    EXPECT_NE(panel.find("Cafe"), nullptr);
    panel.touch().release(0, blank);
    panel.wait_until("the row is gone", [&] { return panel.find("Cafe") == nullptr; });
}

TEST(List, TakesADoubleTapForOne)
{
    FakeSupplicant supplicant(around(access_point(1, "Cafe")));
    Panel panel(supplicant.path(), 2000);
    const QPoint place = panel.centre("Cafe");
    panel.tap(place);
    panel.tap(place);
    panel.wait_for("Could not connect to \u2068Cafe\u2069.");
    panel.tap("Scan"); // after whatever else was begun
    panel.wait_until_idle();
    EXPECT_EQ(times(supplicant, "ADD_NETWORK"), 1);
}

TEST(List, SaysThatASavedNetworkIsOutOfRange)
{
    FakeSupplicant supplicant;
    Panel panel(supplicant.path());
    panel.tap("Home");
    panel.wait_for("\u2068Home\u2069 is out of range.");
}

TEST(List, IsLeftAloneByARefusedScan)
{
    FakeSupplicant supplicant(around(access_point(1, "Cafe")));
    supplicant.on("SCAN", {reply("FAIL")});
    Panel panel(supplicant.path());
    panel.tap("Scan");
    panel.wait_for("Could not start Wi-Fi scan: FAIL");
    EXPECT_NE(panel.find("Cafe"), nullptr);
}

TEST(Requests, SaveOnceAndRemoveWhatDoesNotWork)
{
    FakeSupplicant supplicant(around(access_point(1, R"(Caf\xc3\xa9)", "[WPA2-SAE-CCMP][ESS]")));
    Panel panel(supplicant.path(), 1);
    panel.tap("Café");
    panel.type("pass \"word\" \\o/");
    panel.tap("Connect");
    panel.wait_for("Could not connect. Check the password.");
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
    panel.tap("Hidden network");
    panel.type("Home2\rnew-password\r");
    panel.wait_for("Could not save Wi-Fi network: FAIL");
    EXPECT_THAT(supplicant.requests(), testing::IsSupersetOf({"REMOVE_NETWORK 5", "RECONFIGURE"}));
}

TEST(Requests, EndWhenNoProfileIsMade)
{
    FakeSupplicant supplicant(around(access_point(1, "Cafe")));
    supplicant.on("ADD_NETWORK", {reply("FAIL")});
    Panel panel(supplicant.path());
    panel.tap("Cafe");
    panel.wait_for("wpa_supplicant did not create a network profile.");
}

TEST(Requests, SaveAtOnceIfThereIsNoTimeToWait)
{
    FakeSupplicant supplicant(around(access_point(1, "Cafe")));
    Panel panel(supplicant.path(), 0);
    panel.tap("Cafe");
    panel.wait_until("it is saved", [&] { return times(supplicant, "SAVE_CONFIG") == 1; });
}

TEST(Requests, StopWhileTheWindowIsHidden)
{
    FakeSupplicant supplicant(around(access_point(1, "Cafe")));
    Panel panel(supplicant.path());
    panel.wait_for("Cafe");
    const auto count = [&] { return supplicant.requests().size(); };
    panel.window->hide();
    QTest::qWait(2500); // the scan of the start ends
    const size_t before = count();
    QTest::qWait(7000);
    EXPECT_EQ(count(), before);
    panel.window->show();
    panel.wait_until("it looks again", [&] { return count() > before; });
    const size_t shown = count();
    QTest::qWait(7000);
    EXPECT_GT(count(), shown);
    EXPECT_LE(count(), shown + 3);
}

TEST(Situations, AreNamedInWords)
{
    for (const auto& [answer, words] : std::vector<std::pair<Answer, std::string>>{
             {reply("wpa_state=INTERFACE_DISABLED\n"), "Wi-Fi is switched off."},
             {reply("wpa_state=COMPLETED\nssid=Twins\nid=1\n"),
              "Connected, but no address. Is a DHCP client running?"},
             {reply("wpa_state=ASSOCIATING\nssid=x\n"), "Connecting to \u2068x\u2069"},
             {reply("wpa_state=SCANNING\n"), "Not connected"},
             {silence(), "The Wi-Fi service does not answer."}}) {
        FakeSupplicant supplicant({{"STATUS", {answer}}});
        Panel panel(supplicant.path());
        panel.wait_for(words);
    }
}

TEST(Situations, TellWhatHelpsWithoutAServiceAndEndWhenItStarts)
{
    const TemporaryFolder folder;
    const std::string path = folder.path() + "/wlan0";
    Panel panel(path);
    panel.tap("Scan");
    panel.wait_for("Wi-Fi, The Wi-Fi service is not running.");
    FakeSupplicant supplicant(around(""));
    ASSERT_EQ(symlink(supplicant.path().c_str(), path.c_str()), 0);
    panel.wait_for("Wi-Fi, Not connected");
    EXPECT_EQ(panel.find("The Wi-Fi service is not running."), nullptr);
    EXPECT_EQ(explained(u"Could not connect to wpa_supplicant: Permission denied"_s),
              u"You may not control Wi-Fi. Your user must be in the group netdev."_s);
}

TEST(Names, AreShownAsPeopleWriteThem)
{
    for (const auto& [printed, shown] : std::vector<std::pair<const char*, std::string>>{
             {"Home", "Home"},
             {R"(Caf\xc3\xa9)", "Café"},
             {R"(\xe7\xbd\x91\xe7\xbb\x9c)", "网络"},
             {R"(a\"b\\c)", "a\"b\\c"},
             {" Hotel ", "\u2423Hotel\u2423"},
             {"a  b c", "a\u2423\u2423b c"},
             {R"(\xff)", R"(\xff)"},                     // not UTF-8
             {R"(a\tb)", R"(a\tb)"},                     // a control character
             {R"(a\xe2\x80\xaeb)", R"(a\xe2\x80\xaeb)"}, // turns the direction
             {R"(a\xc2\xa0b)", R"(a\xc2\xa0b)"},         // a blank that looks like a space
             {R"(a\xe3\x85\xa4)", R"(a\xe3\x85\xa4)"},   // a letter that is blank
             {R"(\xe2\x90\xa3)", R"(\xe2\x90\xa3)"},     // what stands for a space
         })
        EXPECT_EQ(readable(QString::fromUtf8(printed)).toStdString(), shown);
    EXPECT_EQ(bytes_of(uR"(\"\\\e\n\r\t\x00\xc3\xa9)"_s),
              QByteArray("\"\\\x1b\n\r\t\0\xc3\xa9", 9));
}

/// Width and height; whether the layout runs from right to left, and the colours are dark.
class Sizes : public testing::TestWithParam<std::tuple<QSize, bool, bool>> { };
INSTANTIATE_TEST_SUITE_P(Of, Sizes,
                         testing::Combine(testing::Values(QSize(320, 480), QSize(480, 320),
                                                          QSize(1200, 1920), QSize(2560, 1600)),
                                          testing::Bool(), testing::Bool()));
void check_layout(Panel& panel)
{
    const QRect window = panel.window->geometry();
    for (const QAccessibleInterface* item : panel.items()) {
        const QRect place = item->rect();
        const bool is_for_fingers = item->role() == QAccessible::Button
            || item->role() == QAccessible::EditableText || item->role() == QAccessible::ListItem;
        EXPECT_TRUE(place.left() >= window.left() && place.right() <= window.right()
                    && (place.height() >= 48 || !is_for_fingers))
            << name_of(item);
    }
}
TEST_P(Sizes, HoldEveryPage)
{
    const auto [size, right_to_left, dark] = GetParam();
    const std::string name(32, 'W');
    FakeSupplicant supplicant(around(access_point(1, name, "[WPA2-PSK-CCMP][ESS]")
                                     + access_point(2, R"(\xff)", "[WPA2-EAP-CCMP][ESS]")));
    Panel panel(supplicant.path(), 15000, size, right_to_left, dark);
    panel.wait_for(name);
    check_layout(panel);
    const QImage image = panel.window->grabWindow();
    EXPECT_EQ(image.size(), size * panel.window->devicePixelRatio());
    EXPECT_EQ(image.pixelColor(1, 1).lightness() < 128, dark);
    panel.tap("Details of \u2068" + name + "\u2069");
    panel.wait_for("Channel");
    check_layout(panel);
    panel.tap("Back");
    panel.tap(name);
    panel.wait_for("Password");
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
            panel.touch().release(0, place);
        else
            panel.touch().press(0, place);
        down = !down;
    }
    if (down)
        panel.touch().release(0, place);
    panel.wait_until_idle();
    for (int i = 0; i < 5; ++i)
        panel.keys({Qt::Key_Escape});
    panel.wait_for("Scan");
    panel.tap("Hidden network");
    panel.wait_for("Name");
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
    panel.tap("Home");
    const auto key = [&] { return find_key(panel.window->contentItem(), u"h"_s); };
    panel.wait_until("there is a keyboard", [&] { return key() != nullptr; });
    QTest::qWait(500); // it slides in
    const QRectF place = key()->mapRectToScene(key()->boundingRect());
    for (int i = 0; i < 8; ++i) {
        panel.touch().press(0, place.center().toPoint());
        QTest::qWait(50);
        panel.touch().release(0, place.center().toPoint());
    }
    EXPECT_EQ(panel.object("password").property("text").toString().toStdString(), "hhhhhhhh");
    panel.tap("Connect");
    panel.wait_until("it joins",
                     [&] { return times(supplicant, "SET_NETWORK 3 psk \"hhhhhhhh\"") == 1; });
}

/// In the lab's machine: joins CORVANE_PANEL_SSID, which may be hidden, on the real radio.
TEST(OnRadios, Joins)
{
    const std::string ssid = qgetenv("CORVANE_PANEL_SSID").toStdString();
    if (ssid.empty())
        GTEST_SKIP() << "CORVANE_PANEL_SSID names no network to join";
    Panel panel(qgetenv("CORVANE_WPA_SOCKET").toStdString(), 30000, {480, 1600});
    panel.tap("Scan");
    panel.wait_until_idle();
    if (qEnvironmentVariableIsSet("CORVANE_PANEL_HIDDEN")) {
        panel.tap("Hidden network");
        panel.type(ssid + '\r');
    } else {
        panel.tap(ssid);
    }
    panel.type(qgetenv("CORVANE_PANEL_PASSWORD").toStdString());
    panel.tap("Connect");
    panel.wait_until_idle();
    panel.wait_for(qEnvironmentVariableIsSet("CORVANE_PANEL_RESULT")
                       ? qgetenv("CORVANE_PANEL_RESULT").toStdString()
                       : ssid + ", Connected");
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
