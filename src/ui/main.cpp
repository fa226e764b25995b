// SPDX-License-Identifier: MIT
#include "platform/FileSystemLayout.h"
#include "state/AppViewModel.h"

#include <QCommandLineParser>
#include <QDir>
#include <QFontDatabase>
#include <QQmlEngine>
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
    parser.addOptions({root, home});
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
    return QGuiApplication::exec();
}
