// SPDX-License-Identifier: MIT
// Runs every tst_*.qml beside this file against the window's QML module.
#include "KestruneQml.h"
#include "QuickHarness.h"

#include <QQmlContext>
#include <QQmlEngine>
#include <QtQml/QQmlExtensionPlugin>
#include <QtQuickTest>

#include <memory>

Q_IMPORT_QML_PLUGIN(KestrunePlugin)

class Setup : public QObject {
    Q_OBJECT
public Q_SLOTS:
    // The sample Mac is written once the application exists: the generator runs as a child process.
    void applicationAvailable() { m_harness = std::make_unique<QuickHarness>(); }

    void qmlEngineAvailable(QQmlEngine *engine)
    {
        KestruneQml::prepareEngine(*engine);
        engine->rootContext()->setContextProperty(QStringLiteral("harness"), m_harness.get());
    }

private:
    std::unique_ptr<QuickHarness> m_harness;
};

QUICK_TEST_MAIN_WITH_SETUP(kestrune_quick, Setup)

#include "main.moc"
