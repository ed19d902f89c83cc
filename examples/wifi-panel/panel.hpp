// SPDX-License-Identifier: MIT

#pragma once

#include <cvn/wifi.hpp>

#include <QInputDialog>
#include <QLabel>
#include <QListWidget>
#include <QMessageBox>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>
#include <QtConcurrentRun>

/// A window for touch screens. The library's calls block, so they run in a worker thread, one at a
/// time. Their results come back to the window's thread, which stays responsive meanwhile.
class Panel : public QWidget {
    using Client = cvn::wifi::Client;
    using Network = cvn::wifi::Network;
    using Security = cvn::wifi::Security;

public:
    Panel()
    {
        setWindowTitle("Wi-Fi");
        setStyleSheet("* { font-size: 14pt } QPushButton { min-height: 56px }"); // for fingers
        worker_.setMaxThreadCount(1);
        list_.setIconSize({64, 40});
        message_.setWordWrap(true);
        message_.setTextFormat(Qt::PlainText); // names are chosen by strangers
        auto* layout = new QVBoxLayout(this);
        layout->addWidget(&list_);
        layout->addWidget(&message_);
        auto* row = new QHBoxLayout;
        layout->addLayout(row);
        for (QPushButton* button : {&connect_, &forget_, &disconnect_, &scan_})
            row->addWidget(button);
        connect(&list_, &QListWidget::itemSelectionChanged, this, [this] { set_busy(false); });
        connect(&connect_, &QPushButton::clicked, this, [this] { ask_password(chosen()); });
        connect(&forget_, &QPushButton::clicked, this, [this] { ask_forget(chosen().ssid); });
        connect(&disconnect_, &QPushButton::clicked, this, [this] {
            run([](const Client& client) { client.disconnect(); }, "Disconnected.");
        });
        connect(&scan_, &QPushButton::clicked, this, [this] { run([](auto&) {}, {}, true); });
        scan_.click();
    }

private:
    /// Calls `action` and then reads the list, both in the worker thread.
    void run(const std::function<void(const Client&)>& action, const QString& success,
             bool scan = false)
    {
        set_busy(true);
        message_.setText(scan ? "Scanning..." : "Please wait...");
        QtConcurrent::run(&worker_, [=] {
            const Client client{QString()};
            std::pair<std::vector<Network>, QString> result{{}, success};
            const auto attempt = [&](const auto& call) {
                try {
                    call();
                } catch (const std::exception& error) {
                    result.second = QString::fromUtf8(error.what());
                }
            };
            attempt([&] { action(client); });
            attempt([&] { result.first = client.networks(scan); });
            return result;
        }).then(this, [this](const std::pair<std::vector<Network>, QString>& result) {
            show_list(result.first);
            message_.setText(result.second);
        });
    }

    void set_busy(bool busy)
    {
        const bool ready = !busy && !list_.selectedItems().isEmpty();
        list_.setDisabled(busy);
        scan_.setDisabled(busy);
        connect_.setEnabled(ready && !chosen().current);
        forget_.setEnabled(ready && chosen().saved_id >= 0);
        disconnect_.setEnabled(!busy && !networks_.empty() && networks_.front().current);
    }

    const Network& chosen() const
    {
        return networks_.at(static_cast<size_t>(list_.currentRow()));
    }

    void show_list(const std::vector<Network>& networks)
    {
        list_.clear();
        networks_ = networks;
        for (const Network& network : networks_) {
            const char* saved = network.saved_id >= 0 ? "  (saved)" : "";
            const QString text = network.ssid + (network.current ? "  (current)" : saved);
            list_.addItem(new QListWidgetItem(icon_of(network), text));
        }
        set_busy(false);
    }

    /// Four bars for the signal, and a padlock for a protected network.
    QIcon icon_of(const Network& network) const
    {
        const QColor colour = palette().text().color();
        QPixmap pixmap(64, 40);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        for (int bar = 0; bar < 4; ++bar) {
            painter.setOpacity(network.signal > -90 + 12 * bar ? 1 : 0.2);
            painter.fillRect(bar * 9, 30 - bar * 8, 6, 6 + bar * 8, colour);
        }
        painter.setOpacity(network.security == Security::Open ? 0 : 1);
        painter.fillRect(44, 20, 18, 16, colour);
        painter.setPen(QPen(colour, 3));
        painter.drawArc(47, 8, 12, 22, 0, 180 * 16);
        return pixmap;
    }

    void join(const Network& network, const QString& password)
    {
        run(
            [=](const Client& client) {
                if (network.saved_id >= 0)
                    client.connect_saved(network.saved_id, network.ssid, 15000);
                else
                    client.connect_new(network.ssid, network.security, password, 15000);
            },
            "Connected to " + network.ssid + ".");
    }

    void ask_password(const Network& network)
    {
        if (network.saved_id >= 0 || network.security != Security::Personal) {
            join(network, {});
            return;
        }
        auto* dialog = new QInputDialog(this);
        dialog->setAttribute(Qt::WA_DeleteOnClose);
        dialog->setWindowTitle(network.ssid);
        dialog->setLabelText("Password:");
        dialog->setTextEchoMode(QLineEdit::Password);
        connect(dialog, &QInputDialog::textValueSelected, this,
                [=, this](const QString& password) { join(network, password); });
        dialog->open();
        auto* show = new QPushButton("Show");
        show->setCheckable(true);
        dialog->layout()->addWidget(show);
        connect(show, &QPushButton::toggled, dialog, [=](bool on) {
            dialog->setTextEchoMode(on ? QLineEdit::Normal : QLineEdit::Password);
        });
    }

    void ask_forget(const QString& name)
    {
        auto* question = new QMessageBox(QMessageBox::Question, "Wi-Fi", "Forget " + name + "?",
                                         QMessageBox::Yes | QMessageBox::No, this);
        question->setAttribute(Qt::WA_DeleteOnClose);
        question->setTextFormat(Qt::PlainText);
        connect(question, &QDialog::accepted, this, [=, this] {
            run([=](const Client& client) { client.forget(name); }, "Forgot " + name + ".");
        });
        question->open();
    }

    QListWidget list_;
    QLabel message_;
    QPushButton connect_{"Connect"}, forget_{"Forget"}, disconnect_{"Disconnect"}, scan_{"Scan"};
    std::vector<Network> networks_;
    QThreadPool worker_; // last: its destructor waits for the call that is running
};
