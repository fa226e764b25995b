// SPDX-License-Identifier: MIT
#include "ScreenshotTour.h"
#include "platform/FileSystemLayout.h"
#include "state/AppViewModel.h"

#include <QCommandLineParser>
#include <cstdio>
#include <QDir>
#include <QFontDatabase>
#include <QQmlEngine>
#include <QQuickWindow>
#include <QTimer>
#include <QGuiApplication>
#include <QQmlApplicationEngine>

int main(int argc, char *argv[])
{
    QGuiApplication application(argc, argv);
    QGuiApplication::setApplicationName(QStringLiteral("Kestrune"));
    QGuiApplication::setApplicationVersion(QStringLiteral(KESTRUNE_VERSION));

    QCommandLineParser parser;
    parser.addHelpOption();
    const QCommandLineOption root(QStringLiteral("root"), QStringLiteral("The folder that stands for \"/\"."), QStringLiteral("DIR"), QStringLiteral("/"));
    const QCommandLineOption home(QStringLiteral("home"), QStringLiteral("The user's home folder."), QStringLiteral("DIR"), QDir::homePath());
    const QCommandLineOption screenshot(QStringLiteral("screenshot"), QStringLiteral("Save a picture of the window into DIR and quit."), QStringLiteral("DIR"));
    parser.addOptions({root, home, screenshot});
    parser.process(application);
    FileSystemLayout::setRoot(parser.value(root));
    FileSystemLayout::setHome(parser.value(home));

    qmlRegisterTypesAndRevisions<AppViewModel, InstalledAppListModel, OrphanGroupListModel, LeftoverItemListModel,
                                 CategorySectionListModel>("Kestrune", 1);
    qmlRegisterNamespaceAndRevisions(&SidebarModes::staticMetaObject, "Kestrune", 1);
    QFontDatabase::addApplicationFont(
        QStringLiteral("/usr/share/fonts/truetype/material-design-icons-iconfont/MaterialIcons-Regular.ttf"));

    AppViewModel viewModel;
    QQmlApplicationEngine engine;
    engine.setInitialProperties({{QStringLiteral("viewModel"), QVariant::fromValue(&viewModel)}});
    // Loaded by its resource URL: loadFromModule arrived after Qt 6.4.
    engine.load(QUrl(QStringLiteral("qrc:/qt/qml/Kestrune/qml/Main.qml")));
    if (engine.rootObjects().isEmpty())
        return 1;
    if (parser.isSet(screenshot))
        ScreenshotTour::start(engine, parser.value(screenshot));
    return QGuiApplication::exec();
}
