// SPDX-License-Identifier: MIT
// Runs every tst_*.qml beside this file against the window's QML module, with the harness below as the
// context property "harness".
#include "Futures.h"
#include "KestruneQml.h"
#include "TestSupport.h"
#include "state/AppViewModel.h"

#include <QFileInfo>
#include <QMimeData>
#include <QQmlContext>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTemporaryDir>
#include <QtQml/QQmlExtensionPlugin>
#include <QtQuickTest>

#include <sys/stat.h>

#include <cstdio>
#include <memory>

Q_IMPORT_QML_PLUGIN(KestrunePlugin)

// Hands the Qt Quick tests real state objects on one sample Mac. Discovery, scans and dropped bundles
// are real; the Trash, the sound, the update check and the browser are stand-ins, so no test moves a
// file, plays a sound or reaches the network.
class QuickHarness : public QObject {
    Q_OBJECT
    // When set, every item "moves" (nothing is touched) and can be put back; else every item fails.
    Q_PROPERTY(bool trashMoves MEMBER m_trashMoves NOTIFY changed)
    Q_PROPERTY(QUrl lastOpenedUrl MEMBER m_lastOpenedUrl NOTIFY changed)
    // Set when the run was started under a dark desktop colour scheme, which the window must follow.
    Q_PROPERTY(bool expectsDarkScheme READ expectsDarkScheme CONSTANT)

public:
    [[nodiscard]] static bool expectsDarkScheme() { return qEnvironmentVariableIntValue("KESTRUNE_EXPECT_DARK_SCHEME") == 1; }

    // A fresh state object owned by the caller's JavaScript. Options: "offeredVersion", the version its
    // update check offers (none when absent); "syntheticApps", a count of made-up apps discovery lists
    // instead of the sample's; "syntheticItems", a count of items every scan finds, spread over the
    // categories (for empty results and the lists' laziness).
    Q_INVOKABLE QObject *newViewModel(const QVariantMap &options = {})
    {
        AppViewModelServices services;
        services.moveToTrash = [this](const QList<LeftoverItem> &items) {
            DeletionReport report;
            for (const LeftoverItem &item : items) {
                if (m_trashMoves) {
                    report.deleted.append(item);
                    report.trashedPaths.append(QStringLiteral("/Trash/files/") + item.name());
                } else {
                    report.failed.append({item, QStringLiteral("Operation not permitted")});
                }
            }
            return finished(report);
        };
        services.putBack = [](const QList<TrashedItem> &items) {
            RestoreReport report;
            for (const TrashedItem &entry : items)
                report.restored.append(entry.item);
            return finished(report);
        };
        services.playDeletionComplete = [] {};
        services.checkForUpdate = [version = options.value(QStringLiteral("offeredVersion")).toString()] {
            std::optional<AppUpdateInfo> offer;
            if (!version.isEmpty())
                offer = AppUpdateInfo{version, QUrl(QStringLiteral("https://example.com/kestrune.dmg")), std::nullopt};
            return finished(offer);
        };
        services.currentVersion = [] { return QStringLiteral("1.0.0"); };
        services.openUrl = [this](const QUrl &url) {
            m_lastOpenedUrl = url;
            Q_EMIT changed();
        };
        if (const int count = options.value(QStringLiteral("syntheticApps")).toInt(); count > 0) {
            QList<InstalledApp> apps;
            for (int i = 0; i < count; ++i) {
                const QString path = QStringLiteral("/Applications/Made Up %1.app").arg(i, 5, 10, QLatin1Char('0'));
                apps.append(InstalledApp{path, QStringLiteral("Made Up %1").arg(i, 5, 10, QLatin1Char('0')),
                                         QUrl::fromLocalFile(path), std::nullopt, 1000 + i});
            }
            services.discoverInstalledApps = [apps] { return finished(apps); };
        }
        if (options.contains(QStringLiteral("syntheticItems"))) {
            services.scanApp = [count = options.value(QStringLiteral("syntheticItems")).toInt()](const InstalledApp &app) {
                ScanResult result;
                for (int i = 0; i < count; ++i) {
                    const auto category = LeftoverCategories::allCases[i % LeftoverCategories::allCases.size()];
                    result.items.append(LeftoverItem::at(QStringLiteral("%1/item %2").arg(app.id).arg(i), category, i));
                }
                return finished(result);
            };
        }
        auto *model = new AppViewModel(std::move(services));
        QQmlEngine::setObjectOwnership(model, QQmlEngine::JavaScriptOwnership);
        return model;
    }

    // An update offer as the banner receives it; notes left undefined are absent.
    Q_INVOKABLE static QVariant update(const QString &version, const QVariant &notes)
    {
        std::optional<QString> releaseNotes;
        if (notes.isValid() && !notes.isNull())
            releaseNotes = notes.toString();
        return QVariant::fromValue(UpdateValue(AppUpdateInfo{version, QUrl(QStringLiteral("https://example.com/k.dmg")), releaseNotes}));
    }

    Q_INVOKABLE QString applicationPath(const QString &bundleName) const { return m_folder->path() + QStringLiteral("/Applications/") + bundleName; }

    // A bundle outside the sample whose icon file is a pipe nobody writes to, as a hostile bundle could ship.
    Q_INVOKABLE QString bundleWithPipedIcon() const
    {
        const QString bundle = m_folder->path() + QStringLiteral("/Elsewhere/Piped.app");
        TestSupport::writeFile(bundle + QStringLiteral("/Contents/Info.plist"), TestSupport::infoPlist({{"CFBundleIconFile", "Piped"}}));
        const QString icon = bundle + QStringLiteral("/Contents/Resources/Piped.icns");
        TestSupport::makeFolder(bundle + QStringLiteral("/Contents/Resources"));
        if (!QFileInfo::exists(icon))
            ::mkfifo(QFile::encodeName(icon).constData(), 0600);
        return bundle;
    }

    // A drag from another program, delivered through the item's window as the platform delivers it:
    // enter and move over the item's centre, then a drop or a leave. The data may hold "urls" (a list)
    // and "text". Each returns whether the window accepted the event.
    Q_INVOKABLE bool dragOver(QQuickItem *item, const QVariantMap &data)
    {
        m_dragData = std::make_unique<QMimeData>();
        if (data.contains(QStringLiteral("urls"))) {
            QList<QUrl> urls;
            for (const QVariant &url : data.value(QStringLiteral("urls")).toList())
                urls.append(url.toUrl());
            m_dragData->setUrls(urls);
        }
        if (data.contains(QStringLiteral("text")))
            m_dragData->setText(data.value(QStringLiteral("text")).toString());
        const QPoint where = centreInWindow(item).toPoint();
        QDragEnterEvent enter(where, kActions, m_dragData.get(), Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(item->window(), &enter);
        QDragMoveEvent move(where + QPoint(1, 1), kActions, m_dragData.get(), Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(item->window(), &move);
        return enter.isAccepted() && move.isAccepted();
    }
    Q_INVOKABLE bool dropOn(QQuickItem *item)
    {
        QDropEvent drop(centreInWindow(item), kActions, m_dragData.get(), Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(item->window(), &drop);
        return drop.isAccepted();
    }
    Q_INVOKABLE static void dragAway(QQuickItem *item)
    {
        QDragLeaveEvent leave;
        QCoreApplication::sendEvent(item->window(), &leave);
    }

public Q_SLOTS:
    // Called by Qt Quick Test. The sample Mac is written once the application exists: the generator
    // runs as a child process.
    void applicationAvailable()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        // The sample holds read-only files; the sweep at exit removes them, QTemporaryDir cannot.
        m_folder->setAutoRemove(false);
        QString log;
        if (!TestSupport::generateSampleMac(m_folder->path(), 1, QStringLiteral("small"), &log))
            std::fprintf(stderr, "sample Mac not written: %s\n", qPrintable(log));
        TestSupport::useLayout(m_folder->path(), TestSupport::sampleHome(m_folder->path()));
    }
    void qmlEngineAvailable(QQmlEngine *engine)
    {
        KestruneQml::prepareEngine(*engine);
        engine->rootContext()->setContextProperty(QStringLiteral("harness"), this);
    }

Q_SIGNALS:
    void changed();

private:
    static constexpr Qt::DropActions kActions = Qt::CopyAction | Qt::MoveAction | Qt::LinkAction;
    static QPointF centreInWindow(const QQuickItem *item) { return item->mapToScene(QPointF(item->width() / 2, item->height() / 2)); }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<QMimeData> m_dragData;
    bool m_trashMoves = false;
    QUrl m_lastOpenedUrl;
};

QUICK_TEST_MAIN_WITH_SETUP(kestrune_quick, QuickHarness)

#include "main.moc"
