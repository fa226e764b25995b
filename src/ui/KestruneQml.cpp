// SPDX-License-Identifier: MIT
#include "KestruneQml.h"

#include "AppIconProvider.h"

#include <QFontDatabase>
#include <QQmlEngine>
#include <QQuickStyle>

namespace KestruneQml {

void prepareEngine(QQmlEngine &engine)
{
    // Fonts and the style are process-wide; engines come and go (one per Qt Quick test).
    static const bool prepared = [] {
        QFontDatabase::addApplicationFont(QStringLiteral(":/fonts/MaterialIcons-Regular.ttf"));
        // Every control is restyled on the Fusion look the views were drawn in. Left to itself Qt
        // picks the native macOS style on a Mac, which it documents as not customisable.
        QQuickStyle::setStyle(QStringLiteral("Fusion"));
        return true;
    }();
    Q_UNUSED(prepared);
    // Where the modules' QML files live. Qt 6.5 made it a default import path
    // (https://doc.qt.io/qt-6/qt-cmake-policy-qtp0001.html); Debian's 6.4 still needs telling.
    engine.addImportPath(QStringLiteral("qrc:/qt/qml"));
    engine.addImageProvider(QStringLiteral("appicon"), new AppIconImageProvider);
}

} // namespace KestruneQml
