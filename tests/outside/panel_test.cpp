// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

// Proves what examples/wifi-panel shows and does when a person clicks, types and waits.

#include "panel.hpp"

#include "support/daemon.hpp"

#include <QApplication>
#include <QDialog>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QMessageBox>
#include <QTest>
#include <QTimer>

#include <gmock/gmock.h>

using testing::HasSubstr;
using testing::IsEmpty;

namespace {

constexpr int patience_ms = 30000;
const std::string home = profile("\"Home\"", "psk=\"home-password\"");
const std::string cafe_disabled = profile("\"Cafe\"", "key_mgmt=NONE", true);

std::string utf8(const QString& text)
{
    return text.toStdString();
}

/// The panel, with a supplicant around it unless `socket` names another.
class Driven {
public:
    explicit Driven(const QString& socket)
    {
        qputenv("CORVANE_WPA_SOCKET", socket.toLocal8Bit());
        qputenv("CORVANE_WIFI_SCAN_DELAY_MS", "100");
        panel_ = std::make_unique<Panel>();
        panel_->resize(480, 640);
        panel_->show();
        wait();
    }

    Panel& panel()
    {
        return *panel_;
    }
    QListWidget& list()
    {
        return *panel_->findChild<QListWidget*>();
    }
    std::string message() const
    {
        return utf8(panel_->findChild<QLabel*>()->text());
    }
    std::vector<std::string> rows()
    {
        std::vector<std::string> rows;
        for (int row = 0; row < list().count(); ++row)
            rows.push_back(utf8(list().item(row)->text()));
        return rows;
    }

    QPushButton& button(const QString& text) const
    {
        for (auto* button : panel_->findChildren<QPushButton*>())
            if (button->text() == text || button->text() == '&' + text)
                return *button;
        throw std::runtime_error("no button " + utf8(text));
    }
    void click(const QString& text) const
    {
        QTest::mouseClick(&button(text), Qt::LeftButton);
    }
    void choose(const QString& name)
    {
        const QList<QListWidgetItem*> items = list().findItems(name, Qt::MatchStartsWith);
        ASSERT_FALSE(items.isEmpty()) << utf8(name);
        QTest::mouseClick(list().viewport(), Qt::LeftButton, {},
                          list().visualItemRect(items.first()).center());
    }
    /// Until the call that is under way has ended.
    void wait() const
    {
        ASSERT_TRUE(QTest::qWaitFor([this] { return button("Scan").isEnabled(); }, patience_ms));
    }
    void type_password(const QString& password) const
    {
        auto* line = panel_->findChild<QLineEdit*>();
        ASSERT_NE(line, nullptr);
        EXPECT_EQ(line->echoMode(), QLineEdit::Password);
        QTest::keyClicks(line, password);
    }

private:
    std::unique_ptr<Panel> panel_;
};

/// With the simulator around it, connected to Home.
class WithSimulator : public testing::Test {
protected:
    Daemon daemon{Kind::Simulator, {.profiles = home + cafe_disabled}};
    std::string connected = daemon.wait_for("STATUS", "COMPLETED");
    Driven driven{QString::fromStdString(daemon.path())};
};

using WifiPanel = WithSimulator;

} // namespace

TEST_F(WifiPanel, ShowsTheListWithTheCurrentNetworkFirst)
{
    ASSERT_GE(driven.rows().size(), 8U);
    EXPECT_THAT(driven.rows()[0], "Home  (current)");
    EXPECT_THAT(driven.rows()[1], "Cafe  (saved)");
    EXPECT_THAT(driven.rows(), testing::Contains(R"(Bob \"5G\" C:\\net)"));
    EXPECT_THAT(driven.rows(), testing::Contains(R"(Caf\xc3\xa9 du Nord)"));
    EXPECT_EQ(driven.message(), "");
    driven.choose("Home");
    EXPECT_FALSE(driven.button("Connect").isEnabled());
    EXPECT_TRUE(driven.button("Forget").isEnabled());
    driven.choose("Twins");
    EXPECT_TRUE(driven.button("Connect").isEnabled());
    EXPECT_FALSE(driven.button("Forget").isEnabled());
}

TEST_F(WifiPanel, JoinsANewNetworkWithAPasswordThatCanBeShown)
{
    driven.choose("Twins");
    driven.click("Connect");
    driven.type_password("twins-password");
    driven.click("Show");
    EXPECT_EQ(driven.panel().findChild<QLineEdit*>()->echoMode(), QLineEdit::Normal);
    driven.click("OK");
    driven.wait();
    EXPECT_EQ(driven.message(), "Connected to Twins.");
    EXPECT_EQ(driven.rows()[0], "Twins  (current)");
    EXPECT_THAT(daemon.config(), HasSubstr("psk=\"twins-password\""));
}

TEST_F(WifiPanel, StaysResponsiveWhileItConnects)
{
    QElapsedTimer since_tick;
    qint64 longest_gap_ms = 0;
    QTimer ticks;
    QObject::connect(&ticks, &QTimer::timeout,
                     [&] { longest_gap_ms = std::max(longest_gap_ms, since_tick.restart()); });
    driven.choose("Cafe");
    ticks.start(10);
    since_tick.start();
    QElapsedTimer whole;
    whole.start();
    driven.click("Connect");
    EXPECT_FALSE(driven.button("Connect").isEnabled());
    driven.wait();
    longest_gap_ms = std::max(longest_gap_ms, since_tick.elapsed());
    EXPECT_EQ(driven.message(), "Connected to Cafe.");
    EXPECT_GE(whole.elapsed(), 1000); // the simulator takes its time
    EXPECT_LT(longest_gap_ms, whole.elapsed() / 2);
}

TEST_F(WifiPanel, ReportsAWrongPasswordInTheWordsOfTheLibrary)
{
    qputenv("CORVANE_WIFI_CONNECT_TIMEOUT_MS", "500");
    driven.choose("Library");
    driven.click("Connect");
    driven.type_password("not-the-password");
    driven.click("OK");
    driven.wait();
    qunsetenv("CORVANE_WIFI_CONNECT_TIMEOUT_MS");
    EXPECT_EQ(driven.message(), "Timed out connecting to Library.");
    EXPECT_GE(driven.rows().size(), 8U);
    EXPECT_EQ(daemon.saved(), home + cafe_disabled);
}

TEST_F(WifiPanel, ForgetsOnlyWhenTheQuestionIsAnsweredWithYes)
{
    driven.choose("Cafe");
    driven.click("Forget");
    driven.click("No");
    EXPECT_EQ(daemon.saved(), home + cafe_disabled);
    driven.click("Forget");
    driven.click("Yes");
    driven.wait();
    EXPECT_EQ(driven.message(), "Forgot Cafe.");
    EXPECT_EQ(daemon.saved(), home);
}

TEST_F(WifiPanel, LooksAsInTheDocuments)
{
    driven.choose("Twins");
    const QByteArray file = qgetenv("CORVANE_SCREENSHOT");
    const QPixmap picture = driven.panel().grab();
    EXPECT_EQ(picture.size(), QSize(480, 640));
    EXPECT_TRUE(file.isEmpty() || picture.save(QString::fromLocal8Bit(file)));
}

TEST(WifiPanelWithoutASupplicant, ReportsThatItCannotConnect)
{
    Driven driven("/nonexistent/wlan0");
    EXPECT_THAT(driven.rows(), IsEmpty());
    EXPECT_EQ(driven.message(), "Could not connect to wpa_supplicant: No such file or directory");
    EXPECT_FALSE(driven.button("Connect").isEnabled());
}

/// In the lab's machine: joins CORVANE_PANEL_SSID on the real radio, and says so.
TEST(WifiPanelOnRadios, Connects)
{
    const QString ssid = qEnvironmentVariable("CORVANE_PANEL_SSID");
    if (ssid.isEmpty())
        GTEST_SKIP() << "CORVANE_PANEL_SSID names no network to join";
    Driven driven(qEnvironmentVariable("CORVANE_WPA_SOCKET"));
    driven.click("Scan");
    driven.wait();
    driven.choose(ssid);
    driven.click("Connect");
    driven.type_password(qEnvironmentVariable("CORVANE_PANEL_PASSWORD"));
    driven.click("OK");
    driven.wait();
    EXPECT_EQ(driven.message(), utf8("Connected to " + ssid + "."));
    EXPECT_THAT(driven.rows(), testing::Contains(utf8(ssid + "  (current)")));
}

int main(int argc, char** argv)
{
    const TemporaryFolder runtime; // Qt would make one in /tmp and leave it
    qputenv("XDG_RUNTIME_DIR", runtime.path().c_str());
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
