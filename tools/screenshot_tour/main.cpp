// SPDX-License-Identifier: MIT
#include "KestruneQml.h"
#include "ScreenshotTour.h"
#include "platform/FileSystemLayout.h"
#include "services/UpdateCheckService.h"
#include "state/AppViewModel.h"

#include <QCommandLineParser>
#include <QFileInfo>
#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQuickWindow>
#include <QtQml/QQmlExtensionPlugin>

#include <cstdio>

Q_IMPORT_QML_PLUGIN(KestrunePlugin)

namespace {

int usageError(const QString &message)
{
    std::fprintf(stderr, "kestrune-screenshots: %s (see --help)\n", qPrintable(message));
    return 2;
}

} // namespace

int main(int argc, char *argv[])
{
    // Pictures need no display: unless a platform is named, the window is drawn off screen.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication application(argc, argv);
    // The window's own names, which its views show.
    QGuiApplication::setApplicationName(QStringLiteral("Kestrune"));
    QGuiApplication::setApplicationVersion(UpdateCheckService::currentVersion());

    const QStringList pictures = ScreenshotTour::pictureNames();
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Opens Kestrune's window on a sample Mac, walks it through its views and saves a picture of "
                       "each into FOLDER as NAME-light.png or NAME-dark.png, after the desktop's colour scheme."));
    parser.addHelpOption();
    const QCommandLineOption root(QStringLiteral("root"), QStringLiteral("The sample Mac's folder that stands for \"/\"."),
                                  QStringLiteral("DIR"));
    const QCommandLineOption home(QStringLiteral("home"), QStringLiteral("The sample Mac's home folder."), QStringLiteral("DIR"));
    parser.addOptions({root, home});
    parser.addPositionalArgument(QStringLiteral("FOLDER"), QStringLiteral("Where the pictures go; created when missing."));
    parser.addPositionalArgument(QStringLiteral("NAME"),
                                 QStringLiteral("Save only these pictures, of: %1.").arg(pictures.join(QStringLiteral(", "))),
                                 QStringLiteral("[NAME...]"));
    parser.process(application);

    for (const QCommandLineOption *folder : {&root, &home}) {
        const QString name = folder->names().constFirst();
        if (!parser.isSet(*folder))
            return usageError(QStringLiteral("--%1 is required").arg(name));
        if (!QFileInfo(parser.value(*folder)).isDir())
            return usageError(QStringLiteral("--%1: \"%2\" is not a folder").arg(name, parser.value(*folder)));
    }
    QStringList names = parser.positionalArguments();
    if (names.isEmpty())
        return usageError(QStringLiteral("no FOLDER given"));
    const QString folder = names.takeFirst();
    for (const QString &name : std::as_const(names)) {
        if (!pictures.contains(name))
            return usageError(QStringLiteral("no picture is named \"%1\"").arg(name));
    }
    FileSystemLayout::setRoot(parser.value(root));
    FileSystemLayout::setHome(parser.value(home));

    ScreenshotTour tour(folder, names);
    AppViewModel viewModel(tour.services());
    QQmlApplicationEngine engine;
    KestruneQml::prepareEngine(engine);
    engine.setInitialProperties({{QStringLiteral("viewModel"), QVariant::fromValue(&viewModel)}});
    // Loaded by its resource URL: loadFromModule arrived after Qt 6.4.
    engine.load(QUrl(QStringLiteral("qrc:/qt/qml/Kestrune/qml/Main.qml")));
    auto *window = qobject_cast<QQuickWindow *>(engine.rootObjects().value(0));
    if (!window)
        return 1;
    // Queued: the tour can end before the event loop runs, which exit() would not end.
    QObject::connect(&tour, &ScreenshotTour::finished, &application, &QCoreApplication::exit, Qt::QueuedConnection);
    tour.start(viewModel, *window);
    return QGuiApplication::exec();
}
