// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

#include "window.hpp"

using namespace Qt::StringLiterals;

QQuickWindow* load_window(QQmlApplicationEngine& engine)
{
    engine.addImportPath(u":/qt/qml"_s);
    if (qgetenv("QT_IM_MODULE") == "qtvirtualkeyboard")
        engine.setInitialProperties({{u"onScreenKeyboard"_s, u"Keyboard.qml"_s}});
    engine.load(u"qrc:/qt/qml/Corvane/Panel/Main.qml"_s);
    auto* window = qobject_cast<QQuickWindow*>(engine.rootObjects().value(0));
    if (window != nullptr)
        window->installEventFilter(&wifi_of(engine));
    return window;
}

Wifi& wifi_of(QQmlApplicationEngine& engine)
{
    return *engine.singletonInstance<Wifi*>(qmlTypeId("Corvane.Panel", 1, 0, "Wifi"));
}
