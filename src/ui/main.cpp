// SPDX-License-Identifier: MIT
#include "AppIconProvider.h"
#include "KestruneQml.h"
#include "platform/FileSystemLayout.h"
#include "state/AppViewModel.h"

#include <QCommandLineParser>
#include <cstdio>
#include <QDir>
#include <QIcon>
#include <QPixmap>
#include <QQmlEngine>
#include <QtQml/QQmlExtensionPlugin>
#include <QQuickWindow>
#include <QTimer>
#include <QGuiApplication>
#include <QQmlApplicationEngine>

Q_IMPORT_QML_PLUGIN(KestrunePlugin)

int main(int argc, char *argv[])
{
    QGuiApplication application(argc, argv);
    QGuiApplication::setApplicationName(QStringLiteral("Kestrune"));
    QGuiApplication::setApplicationVersion(QStringLiteral(KESTRUNE_VERSION));
    // An icon the platform already gave the program is left alone.
    if (QGuiApplication::windowIcon().isNull())
        QGuiApplication::setWindowIcon(QIcon(QPixmap::fromImage(AppIconProvider::image())));

    QCommandLineParser parser;
    parser.addHelpOption();
    const QCommandLineOption root(QStringLiteral("root"), QStringLiteral("The folder that stands for \"/\"."), QStringLiteral("DIR"), QStringLiteral("/"));
    const QCommandLineOption home(QStringLiteral("home"), QStringLiteral("The user's home folder."), QStringLiteral("DIR"), QDir::homePath());
    const QCommandLineOption screenshot(QStringLiteral("screenshot"), QStringLiteral("Save a picture of the window into DIR and quit."), QStringLiteral("DIR"));
    parser.addOptions({root, home, screenshot});
    parser.process(application);
    FileSystemLayout::setRoot(parser.value(root));
    FileSystemLayout::setHome(parser.value(home));

    AppViewModel viewModel;
    QQmlApplicationEngine engine;
    KestruneQml::prepareEngine(engine);
    engine.setInitialProperties({{QStringLiteral("viewModel"), QVariant::fromValue(&viewModel)}});
    // Loaded by its resource URL: loadFromModule arrived after Qt 6.4.
    engine.load(QUrl(QStringLiteral("qrc:/qt/qml/Kestrune/qml/Main.qml")));
    if (engine.rootObjects().isEmpty())
        return 1;
    if (parser.isSet(screenshot)) {
        auto *window = qobject_cast<QQuickWindow *>(engine.rootObjects().constFirst());
        const QString folder = parser.value(screenshot);
        // Gives the app list time to load before the picture is taken.
        QTimer::singleShot(2000, &application, [window, folder] {
            QDir().mkpath(folder);
            const QString file = QDir(folder).filePath(QStringLiteral("installed.png"));
            window->grabWindow().save(file);
            std::printf("%s\n", qPrintable(file));
            QGuiApplication::quit();
        });
    }
    return QGuiApplication::exec();
}
