// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

#include "window.hpp"

using namespace Qt::StringLiterals;

QQuickWindow* load_window(QQmlApplicationEngine& engine, Wifi& wifi)
{
    engine.addImportPath(u":/qt/qml"_s);
    const bool has_keyboard = qgetenv("QT_IM_MODULE") == "qtvirtualkeyboard";
    engine.setInitialProperties(
        {{u"wifi"_s, QVariant::fromValue(&wifi)},
         {u"onScreenKeyboard"_s, has_keyboard ? u"Keyboard.qml"_s : u""_s}});
    engine.load(u"qrc:/qt/qml/Corvane/Panel/Main.qml"_s);
    if (engine.rootObjects().isEmpty())
        return nullptr;
    return qobject_cast<QQuickWindow*>(engine.rootObjects().constFirst());
}
