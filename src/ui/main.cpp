// SPDX-License-Identifier: MIT
#include "AppIconProvider.h"
#include "KestruneQml.h"
#include "platform/FileSystemLayout.h"
#include "services/UpdateCheckService.h"
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

#ifdef Q_OS_MACOS
#include "platform/MacPlatform.h"

#include <QApplication>
#include <QMenuBar>
#include <QWindow>
// Widgets only for the screen's menu bar.
using Application = QApplication;
#else
using Application = QGuiApplication;
#endif

Q_IMPORT_QML_PLUGIN(KestrunePlugin)

#ifdef Q_OS_MACOS
namespace {

// The Mac's own menu bar: Qt 6.4-6.7 would draw the window's QML MenuBar inside the window. About,
// Check for Updates… and Quit move into the application menu by their roles; Close Window stays.
void installMenuBar(QMenuBar &bar, AppViewModel &viewModel)
{
    QMenu *file = bar.addMenu(QStringLiteral("File"));
    QAction *about = file->addAction(QStringLiteral("About Kestrune"), &bar, [] { (void)MacPlatform::showAboutPanel(); });
    about->setMenuRole(QAction::AboutRole);
    QAction *updates = file->addAction(QStringLiteral("Check for Updates…"), &viewModel,
                                       [&viewModel] { viewModel.checkForUpdates(true); });
    updates->setMenuRole(QAction::ApplicationSpecificRole);
    QAction *quit = file->addAction(QStringLiteral("Quit Kestrune"), &bar, [] { QCoreApplication::quit(); });
    quit->setMenuRole(QAction::QuitRole);
    QAction *close = file->addAction(QStringLiteral("Close Window"), &bar, [] {
        if (QWindow *window = QGuiApplication::focusWindow())
            window->close();
    });
    close->setShortcut(QKeySequence::Close);
    close->setMenuRole(QAction::NoRole);
}

} // namespace
#endif

int main(int argc, char *argv[])
{
    Application application(argc, argv);
    QGuiApplication::setApplicationName(QStringLiteral("Kestrune"));
    QGuiApplication::setApplicationVersion(UpdateCheckService::currentVersion());
    // An icon the platform already gave the program is left alone; on a Mac the bundle's icon is the
    // Dock's, so none is set there.
#ifndef Q_OS_MACOS
    if (QGuiApplication::windowIcon().isNull())
        QGuiApplication::setWindowIcon(QIcon(QPixmap::fromImage(AppIconProvider::image())));
#endif

    QCommandLineParser parser;
    parser.addHelpOption();
    const QCommandLineOption root(QStringLiteral("root"), QStringLiteral("The folder that stands for \"/\"."), QStringLiteral("DIR"), QStringLiteral("/"));
    const QCommandLineOption home(QStringLiteral("home"), QStringLiteral("The user's home folder."), QStringLiteral("DIR"), QDir::homePath());
    parser.addOptions({root, home});
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

    AppViewModel viewModel;
    QQmlApplicationEngine engine;
    KestruneQml::prepareEngine(engine);
    engine.setInitialProperties({{QStringLiteral("viewModel"), QVariant::fromValue(&viewModel)}});
    // Loaded by its resource URL: loadFromModule arrived after Qt 6.4.
    engine.load(QUrl(QStringLiteral("qrc:/qt/qml/Kestrune/qml/Main.qml")));
    if (engine.rootObjects().isEmpty())
        return 1;
#ifdef Q_OS_MACOS
    QMenuBar menuBar;
    installMenuBar(menuBar, viewModel);
#endif
    return QGuiApplication::exec();
}
