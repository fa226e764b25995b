// SPDX-License-Identifier: MIT
#include "AppIconProvider.h"
#include "KestruneQml.h"
#include "ScreenshotTour.h"
#include "platform/FileSystemLayout.h"
#include "state/AppViewModel.h"

#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QIcon>
#include <QPixmap>
#include <QQmlApplicationEngine>
#include <QtQml/QQmlExtensionPlugin>

#include <cstdio>

Q_IMPORT_QML_PLUGIN(KestrunePlugin)

int main(int argc, char *argv[])
{
    // Pictures need no display: unless a platform is named, the tour draws off screen.
    for (int i = 1; i < argc; ++i) {
        const QByteArray argument(argv[i]);
        if ((argument == "--screenshot" || argument.startsWith("--screenshot=")) && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
            qputenv("QT_QPA_PLATFORM", "offscreen");
    }
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
    const QCommandLineOption screenshot(QStringLiteral("screenshot"), QStringLiteral("Walk the window through its views, save a picture of each into DIR and quit."), QStringLiteral("DIR"));
    parser.addOptions({root, home, screenshot});
    parser.process(application);
    for (const QCommandLineOption *folder : {&root, &home}) {
        if (parser.isSet(*folder) && !QFileInfo(parser.value(*folder)).isDir()) {
            std::fprintf(stderr, "kestrune: --%s: \"%s\" is not a folder\n", qPrintable(folder->names().constFirst()),
                         qPrintable(parser.value(*folder)));
            return 2;
        }
    }
    FileSystemLayout::setRoot(parser.value(root));
    FileSystemLayout::setHome(parser.value(home));

    AppViewModel viewModel(parser.isSet(screenshot) ? ScreenshotTour::idleServices() : AppViewModelServices());
    QQmlApplicationEngine engine;
    KestruneQml::prepareEngine(engine);
    engine.setInitialProperties({{QStringLiteral("viewModel"), QVariant::fromValue(&viewModel)}});
    // Loaded by its resource URL: loadFromModule arrived after Qt 6.4.
    engine.load(QUrl(QStringLiteral("qrc:/qt/qml/Kestrune/qml/Main.qml")));
    if (engine.rootObjects().isEmpty())
        return 1;
    if (parser.isSet(screenshot))
        ScreenshotTour::start(engine, parser.value(screenshot));
    return QGuiApplication::exec();
}
