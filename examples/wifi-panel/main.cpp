// SPDX-License-Identifier: MIT
// Needs Qt Widgets, and access to wpa_supplicant's control socket as corvane-wifi does.

#include "panel.hpp"
#include <QApplication>

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    Panel panel;
    panel.show();
    return QApplication::exec();
}
